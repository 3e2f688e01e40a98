#include "SobraDaBackup.h"

#include <algorithm>
#include <stdexcept>

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

}  // namespace

bool GuardaSobra(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                 const std::vector<std::string>& colunas) {
    if (colunas.empty()) return false;
    const std::string backup = NomeDaBackup(tabela);
    std::vector<std::string> daChave, todas, comValor;
    for (const auto& coluna : ctx.Conexao().Colunas(backup)) todas.push_back(coluna.nome);
    for (const auto& nome : todas)
        if (std::ranges::any_of(chave, [&](const auto& coluna) { return IgualSemCaixa(coluna, nome); }))
            daChave.push_back(nome);
    for (const auto& nome : colunas) comValor.push_back(Identificador(nome, ctx.Banco()) + " is not null");

    TRejeitados rejeitados(ctx, tabela, "Backup refeito");
    TWKDQuery q(ctx.Conexao(), "select * from " + backup + " where " + Junta(comValor, " or "));
    bool guardou = false;
    for (q.Open(); !q.Eof(); q.Next()) {
        guardou = rejeitados.Linha(Campos(q, daChave), "a tabela não tem a coluna e o backup é refeito",
                                   Campos(q, daChave.empty() ? todas : colunas));
        if (!guardou)
            throw std::runtime_error("os valores que só " + backup +
                                     " tem não puderam ser guardados: " + Junta(colunas, ", "));
    }
    return guardou;
}

}  // namespace wkd
