#include "CriaConexao.h"

#include <string>

#include "ArquivoIni.h"
#include "firebird/ConexaoFirebird.h"
#include "odbc/ConexaoOdbc.h"

namespace wkd {

namespace {

[[noreturn]] void Recusa(std::string_view tipoBanco, std::string_view motivo) {
    throw TErroConfiguracao("O tipo de banco \"" + std::string(tipoBanco) + "\" " + std::string(motivo));
}

}  // namespace

std::unique_ptr<TConnection> CriaConexao(std::string_view tipoBanco, const TParametrosConexao& parametros) {
    const auto tipo = StrToTipoBanco(tipoBanco);
    if (!tipo) Recusa(tipoBanco, "não é conhecido. Corrija a chave TipoBanco do alias: tbInterbase ou tbSQLServer.");
    switch (*tipo) {
        case TTipoBanco::tbInterbase:
            return CriaConexaoFirebird(parametros);
        case TTipoBanco::tbSQLServer:
        case TTipoBanco::tbODBC:
            return CriaConexaoOdbc(parametros);
        default:
            Recusa(tipoBanco, "não tem driver. Use um alias de tipo tbInterbase ou tbSQLServer.");
    }
}

}  // namespace wkd
