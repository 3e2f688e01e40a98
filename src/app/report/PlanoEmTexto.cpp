#include "report/PlanoEmTexto.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "copy/CopiaDeLinhas.h"
#include "process/Programa.h"
#include "report/RelatorioDaExecucao.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

TJson EmJson(const TAchado& achado) {
    return {{"tipo", achado.tipo},
            {"coluna", achado.coluna},
            {"texto", achado.texto},
            {"quantos", achado.quantos},
            {"exemplos", achado.exemplos}};
}

TJson EmJson(const TPlanoDaTabela& tabela) {
    TJson json = {{"tabela", tabela.nome},       {"acao", NomeDaAcao(tabela.acao)}, {"motivo", tabela.motivo},
                  {"comandos", tabela.comandos}, {"mudancas", TJson::array()},      {"exclusivas", tabela.exclusivas}};
    if (tabela.acao == TAcaoDaTabela::Reconstroi) {
        json["registros"] = tabela.registros;
        json["bytes"] = tabela.bytes;
        json["segundos"] = tabela.segundos;
        json["retoma"] = tabela.retoma;
    }
    for (const auto& mudanca : tabela.mudancas)
        json["mudancas"].push_back({{"sinal", std::string(1, mudanca.sinal)},
                                    {"coluna", mudanca.coluna},
                                    {"de", mudanca.de},
                                    {"para", mudanca.para}});
    json["achados"] = TJson::array();
    for (const auto& achado : tabela.achados) json["achados"].push_back(EmJson(achado));
    return json;
}

TJson AvisosEmJson(const TAvisos& avisos) {
    TJson json = TJson::array();
    for (const auto& aviso : avisos) json.push_back({{"tipo", aviso.tipo}, {"texto", aviso.texto}});
    return json;
}

TJson EmJson(const std::optional<TCopiasDoPlano>& copias) {
    if (!copias) return {};
    return {{"registros", copias->registros},
            {"confirmacoes", copias->commits},
            {"linhasPorCommit", copias->linhasPorCommit ? TJson(*copias->linhasPorCommit) : TJson()},
            {"segundos", copias->segundos},
            {"segundosCom10000", copias->segundosComMuitas}};
}

}  // namespace

std::string PlanoEmJson(const TPlano& plano) {
    auto preparacao = plano.ajustes;
    preparacao.insert(preparacao.end(), plano.dicionario.begin(), plano.dicionario.end());
    TJson json = {{"formato", kFormatoJson},
                  {"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"alias", plano.alias},
                  {"banco", plano.banco},
                  {"servidor", plano.servidor},
                  {"pacote", plano.pacote},
                  {"muda", plano.Muda()},
                  {"achados", plano.TemAchados()},
                  {"usuariosConectados", plano.usuarios},
                  {"recusadaPorUsuarios", plano.EsperaUsuarios()},
                  {"copias", EmJson(plano.copias)},
                  {"preparacao", preparacao},
                  {"correcoes", plano.correcoes},
                  {"trocas", TJson::array()},
                  {"achadosAntes", TJson::array()},
                  {"avisos", AvisosEmJson(plano.avisos)},
                  {"tabelas", TJson::array()},
                  {"layouts", plano.layouts},
                  {"arquivos", plano.arquivos},
                  {"passos", plano.passos}};
    for (const auto& troca : plano.trocas)
        json["trocas"].push_back(
            {{"tabela", troca.tabela}, {"arquivo", troca.arquivo}, {"saem", troca.saem}, {"entram", troca.entram}});
    for (const auto& achado : plano.achados) json["achadosAntes"].push_back(EmJson(achado));
    for (const auto& tabela : plano.tabelas) json["tabelas"].push_back(EmJson(tabela));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

std::string DesviosEmTexto(const std::string& alias, const std::vector<TDesvio>& desvios) {
    if (desvios.empty()) return "O banco de " + alias + " é o que o dicionário diz.\n";
    std::string texto;
    for (const auto& desvio : desvios)
        texto += desvio.tabela + (desvio.objeto.empty() ? "" : "." + desvio.objeto) + ": " + desvio.tipo + ": " +
                 desvio.texto + "\n";
    return texto + "\n" + ComMilhares(static_cast<std::int64_t>(desvios.size())) +
           (desvios.size() == 1 ? " desvio" : " desvios") + " do dicionário em " + alias + ".\n";
}

std::string ReposicaoEmTexto(const TReposicao& reposicao) {
    const auto quantos = [](std::int64_t numero, const char* um, const char* varios) {
        return ComMilhares(numero) + (numero == 1 ? um : varios);
    };
    std::string texto =
        quantos(reposicao.repostas, " registro reposto", " registros repostos") + "; " +
        quantos(reposicao.presentes, " já estava na tabela", " já estavam na tabela") + "; " +
        quantos(static_cast<std::int64_t>(reposicao.ficam.size()), " ainda não cabe", " ainda não cabem") + ".\n";
    if (!reposicao.ficam.empty()) texto += "Corrija o que cada linha diz e rode --repoe de novo.\n";
    if (reposicao.antigas > 0)
        texto += quantos(reposicao.antigas, " linha de uma versão anterior não diz",
                         " linhas de versões anteriores não dizem") +
                 " de que banco é: lance-as no sistema.\n";
    if (reposicao.valores > 0)
        texto += "O arquivo tem também " +
                 quantos(reposicao.valores, " valor solto ou fonte", " valores soltos ou fontes") +
                 ", que não voltam sozinhos: confira-os nele (\"campo\") e lance no sistema o que falta.\n";
    if (reposicao.iguais > 0)
        texto += quantos(reposicao.iguais, " linha", " linhas") +
                 " de tabelas sem chave, iguais a outra do arquivo, contaram com ela como um registro só: confira na "
                 "tabela B se eram mais.\n";
    return texto;
}

std::string DesviosEmJson(const std::string& alias, const std::vector<TDesvio>& desvios) {
    TJson json = {{"formato", kFormatoJson},
                  {"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"alias", alias},
                  {"desvios", TJson::array()}};
    for (const auto& desvio : desvios)
        json["desvios"].push_back(
            {{"tipo", desvio.tipo}, {"tabela", desvio.tabela}, {"objeto", desvio.objeto}, {"texto", desvio.texto}});
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

namespace {

using TJson = nlohmann::ordered_json;

std::string Tempo(double segundos) {
    if (segundos < 60) {
        const auto decimos = std::lround(segundos * 10);
        return std::to_string(decimos / 10) + "," + std::to_string(decimos % 10) + " s";
    }
    return FormataDuracao(std::chrono::seconds(std::lround(segundos)));
}

std::string Tabelas(const TEnsaio& ensaio) {
    std::string texto;
    for (const auto& tabela : ensaio.evidencia.tabelas) {
        if (tabela.desfecho == TDesfecho::NaoSeAplica) continue;
        texto += "  " + tabela.nome + ": " + std::string(NomeDaAcao(tabela.acao)) + ", " + Tempo(tabela.segundos);
        if (tabela.desfecho != TDesfecho::Feito) texto += ", " + std::string(NomeDoDesfecho(tabela.desfecho));
        if (tabela.depois) texto += ", " + ComMilhares(*tabela.depois) + " registros";
        texto += "\n";
    }
    return texto.empty() ? "" : "Tabelas que mudam:\n" + texto;
}

std::string Achados(const TEnsaio& ensaio) {
    std::string texto;
    for (const auto& erro : ensaio.evidencia.erros)
        texto += "Erro: " + (erro.tabela.empty() ? "" : erro.tabela + ": ") + erro.erro.mensagem + "\n";
    for (const auto& linha : ensaio.rejeitadas)
        texto += "Rejeitado: " + linha.tabela + " " + linha.chave + ": " + linha.motivo + "\n";
    for (const auto& desvio : ensaio.desvios)
        texto += "Desvio: " + desvio.tabela + (desvio.objeto.empty() ? "" : "." + desvio.objeto) + ": " + desvio.texto +
                 "\n";
    for (const auto& nome : ensaio.mudaria) texto += "Por terminar: " + nome + " mudaria de novo na próxima vez\n";
    return texto;
}

}  // namespace

namespace {

std::string Copias(const TEnsaio& ensaio) {
    const TCopiasConfirmadas& copias = ensaio.evidencia.copias;
    if (copias.commits == 0) return "";
    std::string texto = "Cópias das reconstruções: " + ComMilhares(copias.registros) + " registros em " +
                        ComMilhares(copias.commits) + " confirmações, que esperaram " + Tempo(copias.segundos) + "\n";
    if (copias.Economia() >= 1)
        texto += "    com LinhasPorCommit=" + std::to_string(kMuitasPorCommit) + " no alias, ou --linhas-por-commit " +
                 std::to_string(kMuitasPorCommit) + ", a atualização levaria cerca de " +
                 Tempo(ensaio.segundosDaAtualizacao - copias.Economia()) + "\n";
    return texto;
}

}  // namespace

std::string EnsaioEmTexto(const TEnsaio& ensaio) {
    std::string texto = "Ensaio da atualização de " + ensaio.evidencia.alias + " numa cópia do banco\n" +
                        ensaio.copia.frase + "\n" + Tabelas(ensaio) + Achados(ensaio);
    texto += "Backup: " + Tempo(ensaio.segundosDoBackup) + ", " + TamanhoEmTexto(ensaio.bytesDoBackup) +
             "; restauração e prova: " + Tempo(ensaio.segundosDaRestauracao) + "\n" + "A atualização levaria " +
             Tempo(ensaio.segundosDaAtualizacao) + " e mais " + TamanhoEmTexto(ensaio.DiscoNecessario()) +
             " no disco do banco\n" + Copias(ensaio);
    if (!ensaio.backupNoServidor.empty())
        texto += "O backup do ensaio ficou no servidor, em " + ensaio.backupNoServidor + ": apague-o lá\n";
    if (!ensaio.banco.empty()) texto += "A cópia atualizada ficou em " + ensaio.banco + "\n";
    return texto + "\nResultado: " + ensaio.Frase() + ".\n";
}

std::string EnsaioEmJson(const TEnsaio& ensaio) {
    TJson json = {{"formato", kFormatoJson},
                  {"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"pode", ensaio.Pode()},
                  {"frase", ensaio.Frase()},
                  {"muda", ensaio.Muda()},
                  {"usuarios", ensaio.usuarios},
                  {"copia", ensaio.copia.frase},
                  {"segundosDoBackup", ensaio.segundosDoBackup},
                  {"segundosDaRestauracao", ensaio.segundosDaRestauracao},
                  {"segundosDaAtualizacao", ensaio.segundosDaAtualizacao},
                  {"copias",
                   {{"registros", ensaio.evidencia.copias.registros},
                    {"confirmacoes", ensaio.evidencia.copias.commits},
                    {"segundos", ensaio.evidencia.copias.segundos},
                    {"economiaCom10000", ensaio.evidencia.copias.Economia()}}},
                  {"bytesDoBackup", ensaio.bytesDoBackup},
                  {"discoNecessario", ensaio.DiscoNecessario()},
                  {"banco", ensaio.banco.empty() ? TJson() : TJson(ensaio.banco)},
                  {"backupNoServidor", ensaio.backupNoServidor.empty() ? TJson() : TJson(ensaio.backupNoServidor)},
                  {"rejeitadas", TJson::array()},
                  {"desvios", TJson::array()},
                  {"porTerminar", ensaio.mudaria}};
    for (const auto& linha : ensaio.rejeitadas)
        json["rejeitadas"].push_back(
            {{"tabela", linha.tabela}, {"chave", TJson::parse(linha.chave, nullptr, false)}, {"motivo", linha.motivo}});
    for (const auto& desvio : ensaio.desvios)
        json["desvios"].push_back(
            {{"tipo", desvio.tipo}, {"tabela", desvio.tabela}, {"objeto", desvio.objeto}, {"texto", desvio.texto}});
    json["execucao"] = TJson::parse(RelatorioEmJson(ensaio.evidencia));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace wkd
