#include "report/RelatorioDaExecucao.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

#include "Explicacao.h"
#include "process/EscritaSegura.h"
#include "process/Programa.h"
#include "report/Historico.h"
#include "run/RegistroDaExecucao.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

struct TProvidencia {
    TFalha falha;
    std::string_view nome, texto;  // empty: the one of the backups
};

constexpr std::string_view kFeche =
    "Feche o sistema em todas as estações e os outros programas que usam o banco, e rode a atualização de novo.";
constexpr std::string_view kServidor =
    "Confira o servidor e a rede e tente de novo; uma atualização interrompida continua de onde parou.";
constexpr std::string_view kRepetidos =
    "Corrija os registros repetidos (--plano mostra exemplos) e rode a atualização de novo.";
constexpr std::string_view kOutraVersao = "Confira se o pacote é desta versão do sistema; se for, chame o suporte.";
constexpr std::string_view kDisco =
    "Libere espaço no disco, ou dê permissão de gravação na pasta, e rode de novo. Se um disco do Firebird encheu, "
    "confira antes o banco com gfix -v -full.";
constexpr std::string_view kGeral =
    "Corrija a causa e rode a atualização de novo: ela continua de onde parou. Se repetir, chame o suporte com o "
    "arquivo que AtualizaWKD --suporte faz.";

constexpr TProvidencia kProvidencias[] = {
    {TFalha::Conexao, "conexao", kServidor},
    {TFalha::ServidorDesconhecido, "servidor-desconhecido",
     "Corrija o nome do servidor no alias, ou a rede, e tente de novo."},
    {TFalha::BancoInexistente, "banco-inexistente",
     "Corrija o caminho e o nome do banco no alias, como o servidor os conhece; se estão certos, dê ao servidor "
     "permissão no arquivo e na pasta. Depois tente de novo."},
    {TFalha::BancoNegado, "banco-negado",
     "Dê permissão de leitura e gravação no arquivo e na pasta a quem abre o banco, ou acesso a ele ao usuário do "
     "alias, e tente de novo."},
    {TFalha::AcessoRemoto, "acesso-remoto",
     "Peça ao administrador do servidor que a configuração dele permita o banco (RemoteAccess, DatabaseAccess), e "
     "tente de novo."},
    {TFalha::NaoEBanco, "nao-e-banco",
     "Confira o arquivo que o alias indica e a versão do servidor que o abre, e tente de novo."},
    {TFalha::BancoFechado, "banco-fechado",
     "Se alguém o restaura ou o mantém, espere o fim; senão, reabra o banco no servidor, e tente de novo."},
    {TFalha::SemDriver, "sem-driver",
     "Instale o driver, ou crie a fonte de dados, que a mensagem nomeia e tente de novo."},
    {TFalha::Configuracao, "configuracao", "Corrija o alias, ou o WKD.ini, e tente de novo."},
    {TFalha::Autenticacao, "autenticacao", "Corrija o usuário e a senha do alias e tente de novo."},
    {TFalha::SemPermissao, "sem-permissao",
     "Use no alias um usuário que possa alterar tabelas (o dono do banco) e tente de novo."},
    {TFalha::ObjetoInexistente, "objeto-inexistente", kOutraVersao},
    {TFalha::ColunaInexistente, "coluna-inexistente", kOutraVersao},
    {TFalha::ObjetoExistente, "objeto-existente", kGeral},
    {TFalha::Sintaxe, "sintaxe", kGeral},
    {TFalha::ChaveDuplicada, "chave-duplicada", kRepetidos},
    {TFalha::Restricao, "restricao",
     "Corrija na tabela os valores que a restrição recusa e rode a atualização de novo."},
    {TFalha::Conversao, "conversao",
     "Corrija na tabela os valores que não cabem no tipo novo (--plano mostra exemplos) e rode a atualização de novo."},
    {TFalha::EmUso, "em-uso", kFeche},
    {TFalha::Dependencia, "dependencia", "Apague ou desfaça o que depende da tabela, rode de novo e recrie depois."},
    {TFalha::VersoesDemais, "versoes-demais",
     "Faça backup e restauração do banco, o que zera as versões da tabela, e rode de novo."},
    {TFalha::DiscoCheio, "disco-cheio", kDisco},
    {TFalha::BancoExistente, "banco-existente", {}},
    {TFalha::BancoSoLeitura, "banco-so-leitura", {}},
    {TFalha::LugarSemAcesso, "lugar-sem-acesso", {}},
    {TFalha::SemServico, "sem-servico", {}},
    {TFalha::NaoEBackup, "nao-e-backup", {}},
    {TFalha::BackupCortado, "backup-cortado", {}},
    {TFalha::SemBackup, "sem-backup", {}},
    {TFalha::Arquivo, "arquivo", kDisco},
    {TFalha::PacoteAusente, "pacote-ausente", "Confira o caminho do pacote e rode a atualização de novo."},
    {TFalha::Pacote, "pacote", "Peça um pacote completo a quem o forneceu e rode a atualização de novo."},
    {TFalha::Dicionario, "dicionario",
     "Chame quem forneceu o pacote, com o relatório da execução: o dicionário descreve o que o banco não pode fazer."},
    {TFalha::OutroBanco, "outro-banco", "Confira o alias: ele deve levar a um banco do sistema."},
    {TFalha::OutraAtualizacao, "outra-atualizacao", "Espere a outra atualização terminar e rode de novo."},
    {TFalha::UsuariosConectados, "usuarios-conectados", kFeche},
    {TFalha::NaoConfirmada, "nao-confirmada", "Rode de novo com alguém à frente, que confirme."},
    {TFalha::Interrompida, "interrompida", "Rode a atualização de novo: ela continua de onde parou."},
    {TFalha::Impedimento, "impedimento", "Desfaça o que a mensagem diz e rode a atualização de novo."},
    {TFalha::ReconstrucaoAberta, "reconstrucao-aberta",
     "Rode a atualização de novo: ela continua da tabela de backup, onde estão todos os registros."},
    {TFalha::SemValor, "sem-valor", "Preencha os valores que faltam na chave e rode a atualização de novo."},
    {TFalha::LinhaRecusada, "linha-recusada",
     "Veja os registros em AtualizaWKD.rejeitados.jsonl, corrija a causa e lance-os de novo no sistema."},
    {TFalha::ConteudoDiferente, "conteudo-diferente",
     "Não apague a tabela de backup \"B\" + nome: chame o suporte com o relatório da execução."},
    {TFalha::RegistrosAMenos, "registros-a-menos",
     "Não apague a tabela de backup \"B\" + nome; confira AtualizaWKD.rejeitados.jsonl e chame o suporte."},
    {TFalha::SobraNoBackup, "sobra-no-backup",
     "Guarde a tabela de backup enquanto o conteúdo dessas colunas for preciso."},
    {TFalha::NaoRecriado, "nao-recriado",
     "Recrie o que falta, se ainda for preciso, a partir da fonte em AtualizaWKD.rejeitados.jsonl."},
    {TFalha::Outra, "outra", kGeral},
};

constexpr bool CadaUmaNoSeuLugar() {
    for (std::size_t i = 0; i < std::size(kProvidencias); ++i)
        if (static_cast<std::size_t>(kProvidencias[i].falha) != i) return false;
    return std::size(kProvidencias) == static_cast<std::size_t>(TFalha::Outra) + 1;
}
static_assert(CadaUmaNoSeuLugar());

const TProvidencia& Da(TFalha falha) { return kProvidencias[static_cast<std::size_t>(falha)]; }

}  // namespace

std::string_view Providencia(TFalha falha) {
    const auto texto = Da(falha).texto;
    return texto.empty() ? Explicacao(falha) : texto;
}

std::string_view NomeDaFalha(TFalha falha) { return Da(falha).nome; }

namespace {

std::string Quantos(std::ptrdiff_t numero, std::string_view um, std::string_view varios) {
    return ComMilhares(numero).append(" ").append(numero == 1 ? um : varios);
}

template <class TRegistrados>
std::ptrdiff_t Com(const TRegistrados& registrados, TDesfecho desfecho) {
    return std::ranges::count_if(registrados, [&](const auto& um) { return um.desfecho == desfecho; });
}

}  // namespace

bool TudoFeito(const TEvidencia& evidencia) {
    return evidencia.termino == TFimDaAtualizacao::Concluida && evidencia.erros.empty() &&
           Com(evidencia.correcoes, TDesfecho::NaoFeito) + Com(evidencia.correcoes, TDesfecho::PelaMetade) == 0;
}

std::string Veredicto(const TEvidencia& evidencia) {
    constexpr std::string_view kFins[] = {"Concluída", "Interrompida", "Encerrada antes da hora"};
    const auto erros = std::ranges::count(evidencia.erros, false, &TErroDaExecucao::consequencia);
    std::vector<std::string> partes = {std::string(kFins[static_cast<int>(evidencia.termino)])};
    const bool concluida = evidencia.termino == TFimDaAtualizacao::Concluida;
    if (concluida) partes[0] += erros == 0 ? " sem erros" : " com " + Quantos(erros, "erro", "erros");
    const auto soma = [&](std::ptrdiff_t numero, std::string_view um, std::string_view varios) {
        if (numero > 0) partes.push_back(Quantos(numero, um, varios));
    };
    soma(Com(evidencia.tabelas, TDesfecho::NaoFeito), "tabela não feita", "tabelas não feitas");
    soma(Com(evidencia.tabelas, TDesfecho::PelaMetade), "tabela pela metade", "tabelas pela metade");
    soma(Com(evidencia.correcoes, TDesfecho::NaoFeito), "correção não feita", "correções não feitas");
    soma(Com(evidencia.correcoes, TDesfecho::PelaMetade), "correção pela metade", "correções pela metade");
    soma(std::ssize(evidencia.naoRodaram), "passo não rodou", "passos não rodaram");
    return Junta(partes, ", ");
}

namespace {

using TJson = nlohmann::ordered_json;

std::string Instante(TDataHora quando) {
    return FormataDataHora(quando, "yyyy-mm-dd") + "T" + FormataDataHora(quando, "hh:mm:ss");
}

double Milesimos(double segundos) { return std::round(segundos * 1000) / 1000; }

TJson TextoOuNada(const std::string& texto) { return texto.empty() ? TJson() : TJson(texto); }

TJson EmJson(const std::optional<std::int64_t>& numero) { return numero ? TJson(*numero) : TJson(); }

TJson EmJson(const TComandoRegistrado& comando) {
    TJson json = {{"texto", comando.texto}};
    if (!comando.executado.empty()) json["executado"] = comando.executado;
    json["erro"] = comando.erro.empty() ? TJson() : TJson(comando.erro);
    return json;
}

TJson EmJson(const TTabelaRegistrada& tabela) {
    TJson json = {{"tabela", tabela.nome},
                  {"acao", NomeDaAcao(tabela.acao)},
                  {"desfecho", NomeDoDesfecho(tabela.desfecho)},
                  {"motivo", tabela.motivo}};
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
                        {"desfecho", NomeDoDesfecho(passo.desfecho)},
                        {"segundos", Milesimos(passo.segundos)},
                        {"erro", TextoOuNada(passo.erro)},
                        {"tipo", passo.erro.empty() ? TJson() : TJson(NomeDaFalha(passo.falha))}});
    return json;
}

TJson EmJson(const TErroDaExecucao& erro) {
    return {{"quando", Instante(erro.quando)},
            {"tipo", NomeDaFalha(erro.erro.falha)},
            {"tabela", erro.tabela},
            {"acao", erro.acao},
            {"mensagem", erro.erro.mensagem},
            {"codigo", erro.erro.codigoNativo == 0 ? TJson() : TJson(erro.erro.codigoNativo)},
            {"sqlstate", TextoOuNada(erro.erro.sqlstate)},
            {"comando", TextoOuNada(erro.erro.comando)},
            {"providencia", Providencia(erro.erro.falha)},
            {"consequencia", erro.consequencia}};
}

}  // namespace

std::string RelatorioEmJson(const TEvidencia& evidencia) {
    TJson json = {{"formato", kFormatoJson},
                  {"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"alias", evidencia.alias},
                  {"banco", evidencia.banco},
                  {"servidor", evidencia.servidor},
                  {"pacote", evidencia.pacote},
                  {"inicio", Instante(evidencia.inicio)},
                  {"fim", Instante(evidencia.fim)},
                  {"concluida", evidencia.termino == TFimDaAtualizacao::Concluida},
                  {"veredicto", Veredicto(evidencia)},
                  {"naoRodaram", evidencia.naoRodaram},
                  {"hashMetodo", kMetodoDoHash},
                  {"hashAteRegistros", kLinhasDoHash},
                  {"tabelas", TJson::array()},
                  {"passos", EmJson(evidencia.passos)},
                  {"correcoes", EmJson(evidencia.correcoes)},
                  {"avisos", TJson::array()},
                  {"erros", TJson::array()}};
    for (const auto& aviso : evidencia.avisos) json["avisos"].push_back({{"tipo", aviso.tipo}, {"texto", aviso.texto}});
    if (!evidencia.backup.empty()) json["backup"] = {{"arquivo", evidencia.backup}, {"volta", evidencia.volta}};
    for (const auto& tabela : evidencia.tabelas) json["tabelas"].push_back(EmJson(tabela));
    for (const auto& erro : evidencia.erros) json["erros"].push_back(EmJson(erro));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

void GravaRelatorio(const TEvidencia& evidencia, const std::filesystem::path& pasta) {
    const std::string json = RelatorioEmJson(evidencia), html = RelatorioEmHtml(evidencia);
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.json", json, TLeitores::GrupoDaPasta);
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.html", html, TLeitores::GrupoDaPasta);
    GuardaNoHistorico(evidencia, json, html, pasta);
}

}  // namespace wkd
