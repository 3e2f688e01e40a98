#include "Orfaos.h"

#include "WKDQuery.h"

namespace wkd {

namespace {

void ApagaSemTabela(TConnection& conexao, const std::string& arquivo) {
    TWKDQuery(conexao, "delete\r\nfrom " + arquivo +
                           "\r\nwhere\r\n"
                           "  not exists (\r\n"
                           "    select nome_arquivo\r\n"
                           "    from sarquivo\r\n"
                           "    where nome_arquivo = " +
                           arquivo +
                           ".ARQUIVO\r\n"
                           "  )")
        .ExecSQL();
}

}  // namespace

void ApagaAtributosOrfaos(TContexto& ctx) { ApagaSemTabela(ctx.Conexao(), "satrib"); }

void AtualizaLookup(TContexto& ctx) { ApagaSemTabela(ctx.Conexao(), "slookup"); }

}  // namespace wkd
