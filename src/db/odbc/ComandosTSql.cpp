#include "ComandosTSql.h"

#include "TBComandos.h"
#include "Texto.h"

namespace wkd {
namespace {

std::string DaTabela(std::string_view tabela) {
    return tabela.empty() ? std::string() : " where c.object_id = object_id(" + Aspas(tabela) + ")";
}

}  // namespace

std::string MarcaPontoTSql(std::string_view nome) { return "SAVE TRANSACTION " + std::string(nome); }

std::string VoltaAoPontoTSql(std::string_view nome) { return "ROLLBACK TRANSACTION " + std::string(nome); }

std::string ReservaTSql(std::string_view tabela) {
    return "select top 1 1 as um from " + Identificador(tabela, TTipoBanco::tbSQLServer) + " with (tablock, holdlock)";
}

std::string PadroesTSql(std::string_view tabela) {
    return "select object_name(d.parent_object_id), c.name, d.definition from sys.default_constraints d"
           " join sys.columns c on c.object_id = d.parent_object_id and c.column_id = d.parent_column_id" +
           DaTabela(tabela);
}

std::string ComputadasTSql(std::string_view tabela) {
    return "select object_name(c.object_id), c.name, c.definition from sys.computed_columns c" + DaTabela(tabela);
}

std::string RestricoesTSql(std::string_view tabela) {
    return "select name from sys.key_constraints where type = 'UQ' and parent_object_id = object_id(" + Aspas(tabela) +
           ")";
}

}  // namespace wkd
