#include "layout/Tini.h"

#include <algorithm>

#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

std::string LeParametro(std::string_view secao, std::string_view chave, std::string_view padrao, TConnection* conexao) {
    if (!conexao) return "";
    TWKDQuery q(*conexao, "select * from tini WHERE CHAVE = :pCHAVE AND SESSAO =:pSESSAO");
    q.Param("pSESSAO", secao).Param("pCHAVE", chave).Open();
    const std::string valor = q.Eof() ? "" : q.Texto("VALOR");
    return valor.empty() ? std::string(padrao) : valor;
}

void GravaParametro(std::string_view secao, std::string_view chave, std::string_view valor, TConnection* conexao) {
    if (!conexao) return;
    const auto executa = [&](std::string_view sql) {
        TWKDQuery q(*conexao, sql);
        return q.Param("pSESSAO", secao).Param("pCHAVE", chave).Param("pVALOR", valor).ExecSQL();
    };
    const auto alterados = executa(
        "Update TINI set SESSAO = :pSESSAO, CHAVE = :pCHAVE, VALOR = :pVALOR WHERE"
        " CHAVE = :pCHAVE AND SESSAO =:pSESSAO");
    if (alterados == 0) executa("INSERT INTO TINI(SESSAO ,CHAVE ,VALOR) VALUES (:pSESSAO,:pCHAVE, :pVALOR)");
}

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
    TWKDQuery q(conexao, "delete from tini where sessao = :pSESSAO and chave = :pCHAVE");
    for (const auto& nome : nomes) q.Param("pSESSAO", kSecaoDosRetirados).Param("pCHAVE", nome).ExecSQL();
}

namespace {

bool TemNomeDeBackup(const std::string& tabela) { return ChaveDeNome(tabela).starts_with(NomeDaBackup("")); }

void AcrescentaNomes(TDataModulo& dm, const std::string& sql, TReconstrucoesAbertas& abertas) {
    TWKDQuery q(dm.SQLConnection1, sql);
    for (q.Open(); !q.Eof(); q.Next()) abertas.insert(ChaveDeNome(q.Texto("NOME")));
}

}  // namespace

TReconstrucoesAbertas ReconstrucoesAbertas(TDataModulo& dm) {
    TReconstrucoesAbertas abertas;
    if (dm.ExisteTabela("SARQUIVO"))
        AcrescentaNomes(
            dm, "select NOME_ARQUIVO as NOME from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente), abertas);
    if (dm.ExisteTabela("TINI"))
        AcrescentaNomes(dm, "select CHAVE as NOME from TINI where SESSAO = " + Aspas(kSecaoDaReconstrucao), abertas);
    if (std::ranges::none_of(dm.ListaDeTabelas(), TemNomeDeBackup)) return abertas;
    for (const std::string& backup : BackupsQueGuardam(dm.SQLConnection1))
        if (TemNomeDeBackup(backup)) abertas.insert(ChaveDeNome(backup).substr(1));
    return abertas;
}

bool ReconstrucaoPendente(TConnection& conexao, std::string_view tabela) {
    return ContaRegistros(conexao,
                          "select count(*) as total from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente) +
                              " and Upper(NOME_ARQUIVO) = " + Aspas(Maiusculas(tabela))) > 0;
}

bool GuardaAberta(const TReconstrucoesAbertas& abertas, std::string_view tabela) {
    const std::string nome = ChaveDeNome(tabela);
    return abertas.contains(nome) || (TemNomeDeBackup(nome) && abertas.contains(nome.substr(1)));
}

}  // namespace wkd
