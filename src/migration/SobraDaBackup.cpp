#include "SobraDaBackup.h"

#include <algorithm>
#include <stdexcept>

#include "ColunasDaCopia.h"
#include "Conferencia.h"
#include "Rejeitados.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

TPares Campos(TWKDQuery& q, const std::vector<std::string>& nomes) {
    TPares pares;
    for (const auto& nome : nomes) pares.emplace_back(nome, q.Campo(nome));
    return pares;
}

struct TColunasDaBackup {
    std::vector<std::string> todas, lidas, daChave, sobram;
};

TColunasDaBackup ColunasDaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    TColunasDaBackup colunas;
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    for (const auto& coluna : ctx.Conexao().Colunas(NomeDaBackup(tabela))) {
        colunas.todas.push_back(coluna.nome);
        colunas.lidas.push_back(Lida(coluna, ctx.Banco()));
        if (std::ranges::any_of(chave, [&](const auto& nome) { return IgualSemCaixa(nome, coluna.nome); }))
            colunas.daChave.push_back(coluna.nome);
        if (!ColunaDeNome(daTabela, coluna.nome)) colunas.sobram.push_back(coluna.nome);
    }
    return colunas;
}

/// How many rows the query gave.
std::int64_t Guarda(TContexto& ctx, const std::string& tabela, const std::string& sql, std::string_view motivo,
                    const std::vector<std::string>& daChave, const std::vector<std::string>& valores) {
    TRejeitados rejeitados(ctx, tabela, "Backup refeito");
    TWKDQuery q(ctx.Conexao(), sql);
    std::int64_t linhas = 0;
    for (q.Open(); !q.Eof(); q.Next(), ++linhas)
        if (!rejeitados.Linha(Campos(q, daChave), motivo, Campos(q, valores)))
            throw std::runtime_error("o que só " + NomeDaBackup(tabela) +
                                     " tem não pôde ser guardado: " + Junta(valores, ", "));
    LevaRejeitadosAoDisco(ctx);
    return linhas;
}

}  // namespace

void GuardaSobra(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    const auto [todas, lidas, daChave, sobram] = ColunasDaBackup(ctx, tabela, chave);
    if (sobram.empty()) return;
    const std::string backup = NomeDaBackup(tabela);
    std::vector<std::string> comValor;
    for (const auto& nome : sobram) comValor.push_back(Identificador(nome, ctx.Banco()) + " is not null");
    const auto linhas =
        Guarda(ctx, tabela, "select " + Junta(lidas, ",") + " from " + backup + " where " + Junta(comValor, " or "),
               "a tabela não tem a coluna e o backup é refeito", daChave, daChave.empty() ? todas : sobram);
    ctx.Tela().Memo2("Tabela " + tabela + ": colunas que só " + backup + " tinha, " +
                     (linhas > 0 ? "valores no arquivo de rejeitados: " : "sem valores: ") + Junta(sobram, ", "));
}

void GuardaDiferentes(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                      const std::set<std::string>& alteradas) {
    const auto [todas, lidas, daChave, sobram] = ColunasDaBackup(ctx, tabela, chave);
    for (const auto& sql : ConsultasDasDiferentes(ctx.Conexao(), NomeDaBackup(tabela), tabela, alteradas))
        Guarda(ctx, tabela, sql, "a tabela tem outro registro com a mesma chave", daChave, todas);
}

}  // namespace wkd
