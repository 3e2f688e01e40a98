#include "report/PlanoEmTexto.h"

#include <nlohmann/json.hpp>

#include "process/Programa.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

std::string Linhas(const std::vector<std::string>& linhas, std::string_view recuo) {
    std::string texto;
    for (const auto& linha : linhas) texto += std::string(recuo) + Troca(linha, "\n", "\n" + std::string(recuo)) + "\n";
    return texto;
}

std::string Registros(std::int64_t registros) {
    return ComMilhares(registros) + (registros == 1 ? " registro" : " registros");
}

std::string Volume(std::int64_t registros, std::int64_t bytes) {
    return Registros(registros) + ", " + ComMilhares(bytes) + " bytes";
}

std::string EmTexto(const TAchado& achado) {
    std::string texto = "    ! " + achado.tipo;
    if (!achado.coluna.empty()) texto += " " + achado.coluna;
    texto += ": " + achado.texto;
    if (achado.quantos > 0) texto += " (" + ComMilhares(achado.quantos) + ")";
    return texto + "\n" + Linhas(achado.exemplos, "        ");
}

std::string EmTexto(const TPlanoDaTabela& tabela) {
    std::string texto = tabela.nome + ": " + std::string(NomeDaAcao(tabela.acao)) + " (" + tabela.motivo + ")\n";
    if (tabela.acao == TAcaoDaTabela::Reconstroi) texto += "    move " + Volume(tabela.registros, tabela.bytes) + "\n";
    texto += Linhas(tabela.comandos, "    ");
    if (!tabela.exclusivas.empty())
        texto += "    Só sem usuários conectados:\n" + Linhas(tabela.exclusivas, "        ");
    for (const auto& achado : tabela.achados) texto += EmTexto(achado);
    return texto + "\n";
}

struct TContagem {
    std::int64_t cria = 0, altera = 0, reconstroi = 0, nada = 0, achados = 0, registros = 0, bytes = 0;
};

TContagem Conta(const TPlano& plano) {
    TContagem conta;
    conta.achados = static_cast<std::int64_t>(plano.achados.size());
    for (const auto& tabela : plano.tabelas) {
        std::int64_t& acao = tabela.acao == TAcaoDaTabela::Cria         ? conta.cria
                             : tabela.acao == TAcaoDaTabela::Altera     ? conta.altera
                             : tabela.acao == TAcaoDaTabela::Reconstroi ? conta.reconstroi
                                                                        : conta.nada;
        ++acao;
        conta.achados += static_cast<std::int64_t>(tabela.achados.size());
        conta.registros += tabela.registros;
        conta.bytes += tabela.bytes;
    }
    return conta;
}

std::string Resumo(const TPlano& plano) {
    const TContagem conta = Conta(plano);
    std::string texto = "Resumo: " + ComMilhares(conta.cria) + " a criar, " + ComMilhares(conta.altera) +
                        " a alterar, " + ComMilhares(conta.reconstroi) + " a reconstruir (" +
                        Volume(conta.registros, conta.bytes) + "), " + ComMilhares(conta.nada) +
                        " sem mudança; achados: " + ComMilhares(conta.achados) + ".\n";
    if (plano.usuarios > 0)
        texto += "Usuários conectados: " + ComMilhares(plano.usuarios) +
                 (plano.EsperaUsuarios() ? ". A atualização seria recusada até que saiam.\n" : ".\n");
    if (!plano.Muda()) texto += "Nada a fazer.\n";
    return texto;
}

TJson EmJson(const TAchado& achado) {
    return {{"tipo", achado.tipo},
            {"coluna", achado.coluna},
            {"texto", achado.texto},
            {"quantos", achado.quantos},
            {"exemplos", achado.exemplos}};
}

TJson EmJson(const TPlanoDaTabela& tabela) {
    TJson json = {{"tabela", tabela.nome},
                  {"acao", NomeDaAcao(tabela.acao)},
                  {"motivo", tabela.motivo},
                  {"comandos", tabela.comandos},
                  {"exclusivas", tabela.exclusivas}};
    if (tabela.acao == TAcaoDaTabela::Reconstroi) {
        json["registros"] = tabela.registros;
        json["bytes"] = tabela.bytes;
    }
    json["achados"] = TJson::array();
    for (const auto& achado : tabela.achados) json["achados"].push_back(EmJson(achado));
    return json;
}

}  // namespace

std::string PlanoEmTexto(const TPlano& plano) {
    std::string texto = "Plano da atualização de " + plano.alias + " com " + plano.pacote + "\nBanco: " + plano.banco +
                        " (" + plano.servidor + ")\n\n";
    if (!plano.preparacao.empty()) texto += "Antes das tabelas\n" + Linhas(plano.preparacao, "    ") + "\n";
    if (!plano.correcoes.empty())
        texto += "Correções que este banco ainda não viu: " + Junta(plano.correcoes, ", ") + "\n\n";
    for (const auto& troca : plano.trocas)
        texto += troca.tabela + ": saem " + Registros(troca.saem) + " e entram " + ComMilhares(troca.entram) + " de " +
                 troca.arquivo + " do pacote\n\n";
    for (const auto& achado : plano.achados) texto += EmTexto(achado) + "\n";
    std::vector<std::string> iguais;
    for (const auto& tabela : plano.tabelas) {
        if (tabela.acao == TAcaoDaTabela::Nada)
            iguais.push_back(tabela.nome);
        else
            texto += EmTexto(tabela);
    }
    if (!iguais.empty()) texto += "Sem mudança: " + Junta(iguais, ", ") + "\n\n";
    return texto + Resumo(plano);
}

std::string PlanoEmJson(const TPlano& plano) {
    TJson json = {{"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"alias", plano.alias},
                  {"banco", plano.banco},
                  {"servidor", plano.servidor},
                  {"pacote", plano.pacote},
                  {"muda", plano.Muda()},
                  {"achados", plano.TemAchados()},
                  {"usuariosConectados", plano.usuarios},
                  {"recusadaPorUsuarios", plano.EsperaUsuarios()},
                  {"preparacao", plano.preparacao},
                  {"correcoes", plano.correcoes},
                  {"trocas", TJson::array()},
                  {"achadosAntes", TJson::array()},
                  {"tabelas", TJson::array()}};
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
    using TJson = nlohmann::ordered_json;
    TJson json = {{"programa", "AtualizaWKD " + std::string(kVersao)}, {"alias", alias}, {"desvios", TJson::array()}};
    for (const auto& desvio : desvios)
        json["desvios"].push_back(
            {{"tipo", desvio.tipo}, {"tabela", desvio.tabela}, {"objeto", desvio.objeto}, {"texto", desvio.texto}});
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace wkd
