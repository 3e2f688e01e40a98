#include "layout/IndicesRetirados.h"

#include "layout/Tini.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

TIndicesRetirados PorTabela(const TTabelaEmMemoria& sindsec) {
    TIndicesRetirados indices;
    const int arquivo = IndiceDoCampo(sindsec.campos, "ARQUIVO"), nome = IndiceDoCampo(sindsec.campos, "NOME");
    if (arquivo < 0 || nome < 0) return indices;
    const auto texto = [](const TLinha& linha, int campo) {
        return ChaveDeNome(Apara(linha[static_cast<std::size_t>(campo)].ComoTexto()));
    };
    for (const TLinha& linha : sindsec.linhas) indices[texto(linha, arquivo)].insert(texto(linha, nome));
    return indices;
}

TIndicesRetirados Guardados(TConnection& conexao) {
    TIndicesRetirados indices;
    TWKDQuery q(conexao, "select ARQUIVO, NOME from SINDSEC");
    for (q.Open(); !q.Eof(); q.Next())
        indices[ChaveDeNome(Apara(q.Texto("ARQUIVO")))].insert(ChaveDeNome(Apara(q.Texto("NOME"))));
    return indices;
}

/// One that a constraint stands on is not the dictionary's, whatever its name.
std::set<std::string> Fisicos(TDataModulo& dm, const std::string& tabela) {
    std::set<std::string> nomes;
    if (!dm.ExisteTabela(tabela)) return nomes;
    for (const TIndice& indice : dm.SQLConnection1.Indices(tabela))
        if (indice.restricao.empty()) nomes.insert(ChaveDeNome(indice.nome));
    return nomes;
}

}  // namespace

TIndicesRetirados RetiradosPor(TDataModulo& dm, const TTabelaEmMemoria& nova) {
    TIndicesRetirados retirados;
    if (!dm.ExisteTabela("TINI") || !dm.ExisteTabela("SINDSEC")) return retirados;
    auto novos = PorTabela(nova);
    for (auto& [tabela, nomes] : Guardados(dm.SQLConnection1)) {
        std::erase_if(nomes, [&, &daTabela = novos[tabela]](const auto& nome) { return daTabela.contains(nome); });
        if (nomes.empty()) continue;
        const auto fisicos = Fisicos(dm, tabela);
        std::erase_if(nomes, [&](const auto& nome) { return !fisicos.contains(nome); });
        if (!nomes.empty()) retirados[tabela] = nomes;
    }
    return retirados;
}

void GravaRetirados(TConnection& conexao, const TIndicesRetirados& retirados) {
    for (const auto& [tabela, nomes] : retirados)
        for (const auto& nome : nomes) GravaParametro(kSecaoDosRetirados, nome, tabela, &conexao);
}

void ApagaRetirados(TConnection& conexao, const std::set<std::string>& nomes) {
    ApagaParametros(conexao, kSecaoDosRetirados, {nomes.begin(), nomes.end()});
}

}  // namespace wkd
