#include "RelatoDoPacote.h"

#include <nlohmann/json.hpp>

#include "process/Programa.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

const char* NomeDaForma(TFormaPacote forma) { return forma == TFormaPacote::Xml ? "xml" : "binario"; }

TJson ParaJson(const TColunaDicionario& coluna) {
    TJson json = {{"nome", coluna.nome}, {"tipo", coluna.tipo}, {"tamanho", coluna.tamanho}};
    if (coluna.chave == 1) json["chave"] = true;
    if (!coluna.valorPadrao.empty()) json["valorPadrao"] = coluna.valorPadrao;
    if (!coluna.calculo.empty()) json["calculo"] = coluna.calculo;
    return json;
}

TJson ParaJson(const TTabelaDoPacote& tabela) {
    TJson json = {{"nome", tabela.nome},     {"modulo", tabela.modulo},   {"descricao", tabela.descricao},
                  {"versao", tabela.versao}, {"colunas", TJson::array()}, {"indices", TJson::array()}};
    for (const auto& coluna : tabela.colunas) json["colunas"].push_back(ParaJson(coluna));
    for (const auto& indice : tabela.indices)
        json["indices"].push_back({{"nome", indice.nome}, {"unico", indice.unico}, {"colunas", indice.colunas}});
    return json;
}

TJson ParaJson(const TPacoteDeTabela& pacote) {
    TJson json = {{"tabela", pacote.tabela}, {"arquivo", pacote.arquivo}, {"forma", NomeDaForma(pacote.forma)},
                  {"bytes", pacote.bytes},   {"linhas", pacote.linhas},   {"campos", pacote.campos}};
    if (!pacote.erro.empty()) json["erro"] = pacote.erro;
    return json;
}

TJson ParaJson(const TArquivoDoPacote& arquivo) {
    TJson json = {{"nome", arquivo.nome}, {"bytes", arquivo.bytes}};
    if (!arquivo.versao.empty()) json["versao"] = arquivo.versao;
    return json;
}

template <class T>
TJson Lista(const std::vector<T>& itens) {
    auto json = TJson::array();
    for (const auto& item : itens) json.push_back(ParaJson(item));
    return json;
}

void EmJson(const TInventario& pacote, std::ostream& saida) {
    ImprimeJson({{"bytes", pacote.bytes},
                 {"tabelas", Lista(pacote.tabelas)},
                 {"semTabela", Lista(pacote.semTabela)},
                 {"sistema", Lista(pacote.sistema)},
                 {"layouts", Lista(pacote.layouts)},
                 {"arquivos", Lista(pacote.arquivos)},
                 {"outros", Lista(pacote.outros)},
                 {"recusadas", pacote.relatos}},
                saida);
}

void EmTexto(const TTabelaDoPacote& tabela, std::ostream& saida) {
    saida << "  " << tabela.nome << "  versão " << tabela.versao << "  módulo " << tabela.modulo << "  "
          << tabela.descricao << '\n';
    for (const auto& coluna : tabela.colunas) {
        saida << "    " << coluna.nome << "  " << coluna.tipo;
        if (!coluna.tamanho.empty() && coluna.tamanho != "0") saida << '(' << coluna.tamanho << ')';
        saida << (coluna.chave == 1 ? "  chave" : "") << (ColunaFisica(coluna) ? "" : "  calculada") << '\n';
    }
    for (const auto& indice : tabela.indices)
        saida << "    índice " << indice.nome << (indice.unico ? " único" : "") << " (" << Junta(indice.colunas, ", ")
              << ")\n";
}

void EmTexto(const char* titulo, const std::vector<TArquivoDoPacote>& arquivos, std::ostream& saida) {
    saida << titulo << ": " << arquivos.size() << '\n';
    for (const auto& arquivo : arquivos)
        saida << "  " << arquivo.nome << "  " << arquivo.bytes << " bytes"
              << (arquivo.versao.empty() ? "" : "  versão " + arquivo.versao) << '\n';
}

void EmTexto(const TInventario& pacote, std::ostream& saida) {
    std::size_t colunas = 0;
    for (const auto& tabela : pacote.tabelas) colunas += tabela.colunas.size();
    saida << "Pacote: " << pacote.bytes << " bytes\nTabelas: " << pacote.tabelas.size() << ", " << colunas
          << " colunas\n";
    for (const auto& tabela : pacote.tabelas) EmTexto(tabela, saida);
    if (!pacote.semTabela.empty()) saida << "Fora de SARQUIVO: " << pacote.semTabela.size() << '\n';
    for (const auto& tabela : pacote.semTabela) EmTexto(tabela, saida);
    saida << "Pacotes de dados: " << pacote.sistema.size() << '\n';
    for (const auto& dados : pacote.sistema)
        saida << "  " << dados.tabela << "  "
              << (dados.erro.empty() ? std::to_string(dados.linhas) + " linhas" : dados.erro) << "  " << dados.bytes
              << " bytes  " << NomeDaForma(dados.forma) << '\n';
    EmTexto("Layouts", pacote.layouts, saida);
    EmTexto("Arquivos de sistema", pacote.arquivos, saida);
    EmTexto("Outros arquivos", pacote.outros, saida);
    for (const auto& relato : pacote.relatos) saida << relato << '\n';
}

}  // namespace

void ImprimeJson(const TJson& campos, std::ostream& saida) {
    TJson json = {{"formato", kFormatoJson}, {"programa", "PacoteWKD " + std::string(kVersao)}};
    json.update(campos);
    saida << json.dump(2, ' ', false, TJson::error_handler_t::replace) << '\n';
}

void Mostra(const TInventario& pacote, bool json, std::ostream& saida) {
    json ? EmJson(pacote, saida) : EmTexto(pacote, saida);
}

void Mostra(const std::vector<TAchadoDaRevisao>& achados, bool json, std::ostream& saida) {
    auto lista = TJson::array();
    for (const auto& achado : achados) {
        if (!json)
            saida << achado.regra << ": " << achado.tabela << (achado.objeto.empty() ? "" : "." + achado.objeto) << ": "
                  << achado.texto << '\n';
        lista.push_back(
            {{"regra", achado.regra}, {"tabela", achado.tabela}, {"objeto", achado.objeto}, {"texto", achado.texto}});
    }
    if (json)
        ImprimeJson({{"achados", lista}}, saida);
    else
        saida << (achados.empty() ? "Nada apontado." : "Apontamentos: " + std::to_string(achados.size())) << '\n';
}

}  // namespace wkd
