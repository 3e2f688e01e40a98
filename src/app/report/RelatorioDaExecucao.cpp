#include "report/RelatorioDaExecucao.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "process/EscritaSegura.h"
#include "process/Programa.h"
#include "run/RegistroDaExecucao.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

/// The first row with a text that the message holds counts. In capitals.
struct TRegra {
    std::string_view texto, providencia;
};

constexpr std::string_view kFeche =
    "Feche o sistema em todas as estações e os outros programas que usam o banco, e rode a atualização de novo.";
constexpr std::string_view kRepetidos =
    "Corrija os registros repetidos (--plano mostra exemplos) e rode a atualização de novo.";
constexpr std::string_view kRejeitados =
    "Veja os registros em AtualizaWKD.rejeitados.jsonl, corrija a causa e lance-os de novo no sistema.";
constexpr std::string_view kPacote = "Peça um pacote completo a quem o forneceu e rode a atualização de novo.";
constexpr std::string_view kDisco =
    "Libere espaço no disco, ou dê permissão de gravação na pasta, e rode de novo. Se um disco do Firebird encheu, "
    "confira antes o banco com gfix -v -full.";

constexpr TRegra kRegras[] = {
    {"TOO MANY VERSIONS", "Faça backup e restauração do banco, o que zera as versões da tabela, e rode de novo."},
    {"IS IN USE", kFeche},
    {"EM USO POR OUTRA CONEX", kFeche},
    {"LOCK CONFLICT", kFeche},
    {"LOCK TIME", kFeche},
    {"DEADLOCK", kFeche},
    {"USUÁRIOS FECHEM O SISTEMA", kFeche},
    {"PODE ESTAR EM USO", kFeche},
    {"OUTRA ATUALIZAÇÃO", "Espere a outra atualização terminar e rode de novo."},
    {"DEPENDEM DELA", "Apague ou desfaça o que depende da tabela, rode de novo e recrie depois."},
    {"CONTEÚDO DIFERENTE", "Não apague a tabela de backup \"B\" + nome: chame o suporte com o relatório da execução."},
    {"Nº DE REGISTROS ANTES",
     "Não apague a tabela de backup \"B\" + nome; confira AtualizaWKD.rejeitados.jsonl e chame o suporte."},
    {"RECONSTRUÇÃO NÃO CONCLUÍDA",
     "Rode a atualização de novo: ela continua da tabela de backup, onde estão todos os registros."},
    {"COLUNAS QUE FICARAM SÓ EM", "Guarde a tabela de backup enquanto o conteúdo dessas colunas for preciso."},
    {"GATILHOS NÃO RECRIADOS", "Recrie os gatilhos a partir da fonte em AtualizaWKD.rejeitados.jsonl."},
    {"FONTE NO ARQUIVO DE REJEITADOS",
     "Recrie o que falta, se ainda for preciso, a partir da fonte em AtualizaWKD.rejeitados.jsonl."},
    {"REPETIDO", kRepetidos},
    {"DUPLICATE", kRepetidos},
    {"PRIMARY OR UNIQUE KEY", kRepetidos},
    {"SEM VALOR", "Preencha os valores que faltam na chave e rode a atualização de novo."},
    {"TRUNCATION", kRejeitados},
    {"CONVERSION ERROR", kRejeitados},
    {"NÃO CABE NA COLUNA", kRejeitados},
    {"NÃO FOI POSSÍVEL GRAVAR", kDisco},
    {"PERMISSÃO DE GRAVAÇÃO", kDisco},
    {"NO SPACE LEFT", kDisco},
    {"QUASE CHEIO", kDisco},
    {"NO PERMISSION", "Use no alias um usuário que possa alterar tabelas (o dono do banco) e rode de novo."},
    {"PACOTE", kPacote},
    {"ARQUIVO DE ATUALIZ", "Confira o caminho do pacote e rode a atualização de novo."},
    {"COLUMN UNKNOWN", "Confira se o pacote é desta versão do sistema; se for, chame o suporte."},
    {"TABLE UNKNOWN", "Confira se o pacote é desta versão do sistema; se for, chame o suporte."},
    {"CONNECTION", "Confira o servidor e a rede e rode de novo: a atualização continua de onde parou."},
    {"CONEXÃO", "Confira o servidor e a rede e rode de novo: a atualização continua de onde parou."},
};

/// Small letters with accents as capitals, too.
std::string ComMaiusculas(std::string_view texto) {
    std::string maiusculas = Maiusculas(texto);
    for (std::size_t i = 0; i + 1 < maiusculas.size(); ++i) {
        const auto segundo = static_cast<unsigned char>(maiusculas[i + 1]);
        if (static_cast<unsigned char>(maiusculas[i]) == 0xC3 && segundo >= 0xA0 && segundo != 0xB7)
            maiusculas[i + 1] = static_cast<char>(segundo - 0x20);
    }
    return maiusculas;
}

}  // namespace

std::string_view Providencia(std::string_view mensagem) {
    const std::string texto = ComMaiusculas(mensagem);
    for (const TRegra& regra : kRegras)
        if (texto.find(regra.texto) != std::string::npos) return regra.providencia;
    return "Corrija a causa e rode a atualização de novo: ela continua de onde parou. Se repetir, chame o suporte com "
           "o relatório da execução.";
}

namespace {

using TJson = nlohmann::ordered_json;

std::string Instante(TDataHora quando) {
    return FormataDataHora(quando, "yyyy-mm-dd") + "T" + FormataDataHora(quando, "hh:mm:ss");
}

double Milesimos(double segundos) { return std::round(segundos * 1000) / 1000; }

TJson EmJson(const std::optional<std::int64_t>& numero) { return numero ? TJson(*numero) : TJson(); }

TJson EmJson(const TComandoRegistrado& comando) {
    TJson json = {{"texto", comando.texto}};
    if (!comando.executado.empty()) json["executado"] = comando.executado;
    json["erro"] = comando.erro.empty() ? TJson() : TJson(comando.erro);
    return json;
}

TJson EmJson(const TTabelaRegistrada& tabela) {
    TJson json = {{"tabela", tabela.nome}, {"acao", NomeDaAcao(tabela.acao)}, {"motivo", tabela.motivo}};
    json["comandos"] = TJson::array();
    for (const auto& comando : tabela.comandos) json["comandos"].push_back(EmJson(comando));
    json["registrosAntes"] = EmJson(tabela.antes);
    json["registrosDepois"] = EmJson(tabela.depois);
    json["hash"] = tabela.hash.empty() ? TJson() : TJson(tabela.hash);
    json["segundos"] = Milesimos(tabela.segundos);
    return json;
}

TJson EmJson(const std::vector<TPassoRegistrado>& passos) {
    TJson json = TJson::array();
    for (const auto& passo : passos)
        json.push_back({{"nome", passo.nome},
                        {"segundos", Milesimos(passo.segundos)},
                        {"erro", passo.erro.empty() ? TJson() : TJson(passo.erro)}});
    return json;
}

TJson EmJson(const TErroRegistrado& erro) {
    return {{"quando", Instante(erro.quando)},
            {"tabela", erro.tabela},
            {"acao", erro.acao},
            {"mensagem", erro.mensagem},
            {"providencia", Providencia(erro.mensagem)}};
}

}  // namespace

std::string RelatorioEmJson(const TEvidencia& evidencia) {
    TJson json = {{"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"alias", evidencia.alias},
                  {"banco", evidencia.banco},
                  {"servidor", evidencia.servidor},
                  {"pacote", evidencia.pacote},
                  {"inicio", Instante(evidencia.inicio)},
                  {"fim", Instante(evidencia.fim)},
                  {"concluida", evidencia.concluida},
                  {"hashMetodo", kMetodoDoHash},
                  {"hashAteRegistros", kLinhasDoHash},
                  {"tabelas", TJson::array()},
                  {"passos", EmJson(evidencia.passos)},
                  {"correcoes", EmJson(evidencia.correcoes)},
                  {"erros", TJson::array()}};
    if (!evidencia.backup.empty()) json["backup"] = {{"arquivo", evidencia.backup}, {"volta", evidencia.volta}};
    for (const auto& tabela : evidencia.tabelas) json["tabelas"].push_back(EmJson(tabela));
    for (const auto& erro : evidencia.erros) json["erros"].push_back(EmJson(erro));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

void GravaRelatorio(const TEvidencia& evidencia, const std::filesystem::path& pasta) {
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.json", RelatorioEmJson(evidencia));
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.html", RelatorioEmHtml(evidencia));
}

}  // namespace wkd
