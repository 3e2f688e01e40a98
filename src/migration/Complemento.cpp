#include "Complemento.h"

#include "ColunasDaCopia.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kIndice = "WKD_COMPLETA_BACKUP";

void ApagaIndice(TContexto& ctx, const std::string& backup) {
    const bool sqlServer = ctx.Banco() == TTipoBanco::tbSQLServer;
    ctx.dm.Executa("drop index " + std::string(kIndice) + (sqlServer ? " on " + backup : ""));
}

}  // namespace

void CompletaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    TConnection& conexao = ctx.Conexao();
    const std::string backup = NomeDaBackup(tabela);
    if (ContaRegistros(conexao, "select count(*) as total from " + tabela) == 0) return;

    std::vector<std::string> iguais;
    for (const auto& coluna : chave) iguais.push_back("b." + coluna + " = t." + coluna);
    const std::string lista = ListaDaOrigem(ColunasDaCopia(conexao, tabela, backup), ctx.Banco());
    // Without an index over the backup's key every row would read the whole backup. A killed run may have left one.
    ApagaIndice(ctx, backup);
    ctx.dm.Executa("create index " + std::string(kIndice) + " on " + backup + " (" + Junta(chave, ",") + ")");
    {
        const auto comando = conexao.Prepara("insert into " + backup + " (" + lista + ") select " + lista + " from " +
                                             tabela + " t where not exists (select 1 from " + backup + " b where " +
                                             Junta(iguais, " and ") + ")");
        TTransacao transacao(conexao);
        comando->Executa();
        transacao.Commit();
    }
    ApagaIndice(ctx, backup);
}

}  // namespace wkd
