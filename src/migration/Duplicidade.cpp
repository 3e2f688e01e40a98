#include "Duplicidade.h"

#include <optional>

#include "Texto.h"

namespace wkd {

namespace {

std::string Chave(const TClientDataSet& sarquivo) {
    return sarquivo.Texto("NOME_ARQUIVO") + sarquivo.Texto("COD_MODULO");
}

TResultado ApagaPar(TContexto& ctx, const TClientDataSet& sarquivo) {
    return ctx.dm.Executa("DELETE FROM SARQUIVO WHERE cod_modulo = '" + sarquivo.Texto("COD_MODULO") +
                          "' and NOME_ARQUIVO = '" + sarquivo.Texto("NOME_ARQUIVO") + "'");
}

}  // namespace

/// A pair that cannot be deleted does not keep the others; its error is raised at the end. That of an open rebuild
/// stays until the rebuild has ended.
void VerificaDuplicidadeSarquivo(TContexto& ctx) {
    TClientDataSet duplicidade;
    duplicidade.SetProvedor({&ctx.Conexao(), "select * from SARQUIVO", "SARQUIVO", {"COD_MODULO", "NOME_ARQUIVO"}});
    duplicidade.SetIndexFieldNames("COD_MODULO;NOME_ARQUIVO");

    std::optional<TErroBanco> falha;
    std::optional<std::string> anterior;
    duplicidade.Open();
    for (duplicidade.First(); !duplicidade.Eof(); duplicidade.Next()) {
        const std::string chave = Chave(duplicidade);
        if (chave == anterior && !ctx.abertas.contains(ChaveDeNome(duplicidade.Texto("NOME_ARQUIVO"))))
            if (const TResultado apagou = ApagaPar(ctx, duplicidade); !apagou) falha = apagou.Erro();
        anterior = chave;
    }
    if (falha) throw *falha;
}

}  // namespace wkd
