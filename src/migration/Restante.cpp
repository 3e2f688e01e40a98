#include "Restante.h"

#include <algorithm>
#include <vector>

#include "EstadoDaReconstrucao.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

std::int64_t Conta(TContexto& ctx, const std::string& tabela) {
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from " + tabela);
}

/// Whether a key value comes back as it is: neither converted, nor filled in where it is missing.
bool MesmaChave(const TColunaFisica* daBackup, const TColunaFisica* daTabela) {
    return daBackup && daTabela && daBackup->tipo == daTabela->tipo && daBackup->conjunto == daTabela->conjunto &&
           daBackup->requerido;
}

/// Alias and where clause of the backup's rows whose key the table lacks; empty when the key cannot tell.
std::string CondicaoPelaChave(TContexto& ctx, const std::string& tabela) {
    const auto daBackup = ctx.Conexao().Colunas(NomeDaBackup(tabela));
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    std::vector<std::string> iguais;
    for (const auto& coluna : ctx.Conexao().ChavePrimaria(tabela).colunas) {
        const TColunaFisica* daChave = ColunaDeNome(daBackup, coluna);
        if (!MesmaChave(daChave, ColunaDeNome(daTabela, coluna))) return "";
        iguais.push_back("t." + Identificador(coluna, ctx.Banco()) + " = b." +
                         Identificador(daChave->nome, ctx.Banco()));
    }
    if (iguais.empty()) return "";
    return " b where not exists (select 1 from " + tabela + " t where " + Junta(iguais, " and ") + ")";
}

/// Whether rows of the backup share a key of the table, which takes one of them alone: its key then does not tell
/// that the others are not back.
bool RepeteChave(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chaveAntiga) {
    std::vector<std::string> chave = ctx.Conexao().ChavePrimaria(tabela).colunas;
    const auto naChave = [&](const std::string& antiga) {
        return std::ranges::any_of(chave, [&](const std::string& coluna) { return IgualSemCaixa(coluna, antiga); });
    };
    if (!chaveAntiga.empty() && std::ranges::all_of(chaveAntiga, naChave)) return false;
    for (auto& coluna : chave) coluna = Identificador(coluna, ctx.Banco());
    const std::string grupos = Junta(chave, ", ");
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from (select " + grupos + " from " +
                                             NomeDaBackup(tabela) + " group by " + grupos +
                                             " having count(*) > 1) repetidas") > 0;
}

}  // namespace

TRestante RestauracaoInteira(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chaveAntiga) {
    TRestante restante;
    restante.conta = CondicaoPelaChave(ctx, tabela).empty() || RepeteChave(ctx, tabela, chaveAntiga);
    restante.linhas = Conta(ctx, NomeDaBackup(tabela));
    return restante;
}

bool RestauracaoInterrompida(TContexto& ctx, const std::string& tabela) {
    if (!ctx.dm.ExisteTabela(tabela) || !ctx.dm.ExisteTabela(NomeDaBackup(tabela))) return false;
    if (!ReconstrucaoPendente(ctx, tabela) || Conta(ctx, tabela) == 0) return false;
    const auto etapa = EtapaDaReconstrucao(ctx, tabela);
    return etapa == TEtapaDaReconstrucao::Restaurando ||
           (etapa == TEtapaDaReconstrucao::Desconhecida && !CondicaoPelaChave(ctx, tabela).empty());
}

TRestante RestauracaoQueFalta(TContexto& ctx, const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    TRestante restante;
    restante.retomada = true;
    const auto feitas = LinhasRestauradas(ctx, tabela);
    if (!feitas) restante.condicao = CondicaoPelaChave(ctx, tabela);
    restante.conta = restante.condicao.empty();
    restante.pula = feitas.value_or(0);
    restante.linhas = std::max<std::int64_t>(Conta(ctx, backup + restante.condicao) - restante.pula, 0);
    return restante;
}

}  // namespace wkd
