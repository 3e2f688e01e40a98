#include "RelatorioDaExecucao.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "EscritaSegura.h"
#include "Formato.h"
#include "Providencia.h"
#include "RegistroDaTabela.h"
#include "Versao.h"

namespace wkd {

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
    for (const auto& tabela : evidencia.tabelas) json["tabelas"].push_back(EmJson(tabela));
    for (const auto& erro : evidencia.erros) json["erros"].push_back(EmJson(erro));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

void GravaRelatorio(const TEvidencia& evidencia, const std::filesystem::path& pasta) {
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.json", RelatorioEmJson(evidencia));
    SubstituiArquivo(pasta / "AtualizaWKD.relatorio.html", RelatorioEmHtml(evidencia));
}

}  // namespace wkd
