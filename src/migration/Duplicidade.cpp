#include "Duplicidade.h"

#include <optional>
#include <utility>

#include "Texto.h"

namespace wkd {

namespace {

using TPar = std::pair<std::string, std::string>;

TPar Par(const TClientDataSet& sarquivo) { return {sarquivo.Texto("COD_MODULO"), sarquivo.Texto("NOME_ARQUIVO")}; }

TResultado ApagaPar(TContexto& ctx, const TPar& par) {
    return ctx.dm.Executa("DELETE FROM SARQUIVO WHERE cod_modulo = " + Aspas(par.first) +
                          " and NOME_ARQUIVO = " + Aspas(par.second));
}

}  // namespace

/// A pair that cannot be deleted does not keep the others; its error is raised at the end. That of an open rebuild
/// stays until the rebuild has ended.
void VerificaDuplicidadeSarquivo(TContexto& ctx) {
    TClientDataSet duplicidade;
    duplicidade.SetProvedor({&ctx.Conexao(), "select * from SARQUIVO", "SARQUIVO", {"COD_MODULO", "NOME_ARQUIVO"}});
    duplicidade.SetIndexFieldNames("COD_MODULO;NOME_ARQUIVO");

    std::optional<TErroBanco> falha;
    std::optional<TPar> anterior;
    duplicidade.Open();
    for (duplicidade.First(); !duplicidade.Eof(); duplicidade.Next()) {
        const TPar par = Par(duplicidade);
        if (par == anterior && !ctx.abertas.contains(ChaveDeNome(par.second)))
            if (const TResultado apagou = ApagaPar(ctx, par); !apagou) falha = apagou.Erro();
        anterior = par;
    }
    if (falha) throw *falha;
}

}  // namespace wkd
