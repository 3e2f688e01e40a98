#include "VoltaBackup.h"

#include "CopiaDeLinhas.h"
#include "TBComandos.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::size_t kLinhasPorLote = 11;

}  // namespace

std::set<std::string> VoltaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    const std::string backup = NomeDaBackup(tabela);
    if (!ctx.dm.ExisteTabela(backup)) {
        ctx.Tela().SetLog("Não existe tabela de backup", tabela, "VOLTAR BACKUP");
        return {};
    }
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Voltar backup";
    ctx.Tela().LblAtual("Restaurando backup da tabela: " + tabela);

    TRenumeracao renumeracao(ctx.dm.SatribNovo);
    TCopiaDeLinhas copia(ctx,
                         {.tabela = tabela,
                          .origem = backup,
                          .destino = tabela,
                          .chave = chave,
                          .etapa = ctx.acaoAtual,
                          .inicioDoErro = "Erro ao Voltar backup: ",
                          .linhasPorLote = kLinhasPorLote},
                         renumeracao);
    auto resultado = copia.Executa(ContaRegistros(ctx.Conexao(), "select count(*) as total from " + backup));
    ctx.Tela().PbAtual().Posicao(0);
    ctx.Tela().LblAtual("Parado.");
    return std::move(resultado.alteradas);
}

}  // namespace wkd
