#include "odbc/ComandosTSql.h"

#include "dialect/Dialeto.h"
#include "values/Texto.h"

namespace wkd {
namespace {

std::string DaTabela(const std::string& numero, std::string_view tabela) {
    return tabela.empty() ? std::string() : " where " + numero + " = object_id(" + Aspas(tabela) + ")";
}

constexpr std::size_t kBytesDoAnuncio = 128;

std::string Hexa(std::string_view bytes) {
    std::string texto = "0x";
    for (const char byte : bytes) {
        texto += "0123456789ABCDEF"[static_cast<unsigned char>(byte) >> 4];
        texto += "0123456789ABCDEF"[static_cast<unsigned char>(byte) & 15];
    }
    return texto;
}

}  // namespace

std::string AnuncioTSql(std::string_view texto) {
    return "set context_info " + Hexa((std::string(kMarcaDoAnuncio) + std::string(texto)).substr(0, kBytesDoAnuncio));
}

std::string QuemTravaTSql() {
    return "select context_info, login_name, cast(session_id as varchar(10)) from sys.dm_exec_sessions"
           " where session_id <> @@spid and database_id = db_id()"
           " and substring(context_info, 1, " +
           std::to_string(kMarcaDoAnuncio.size()) + ") = " + Hexa(kMarcaDoAnuncio);
}

std::string TrabalhaTSql(std::string_view numero) {
    return "select count(*) from sys.dm_exec_requests where session_id in (" + std::string(numero) + ")";
}

std::string DerrubaTSql(std::string_view numero) {
    return "if exists (select 1 from sys.dm_exec_sessions where session_id = " + std::string(numero) +
           " and program_name = 'AtualizaWKD' and host_name = host_name() and login_name = suser_sname()) kill " +
           std::string(numero);
}

std::string MarcaPontoTSql(std::string_view nome) { return "SAVE TRANSACTION " + std::string(nome); }

std::string VoltaAoPontoTSql(std::string_view nome) { return "ROLLBACK TRANSACTION " + std::string(nome); }

std::string ReservaTSql(std::string_view tabela) {
    return "select top 1 1 as um from " + Dialeto(TTipoBanco::tbSQLServer).Identificador(tabela) +
           " with (tablock, holdlock)";
}

std::string TabelasTSql(std::string_view esquema) {
    return "select name from sys.tables where schema_id = " + std::string(esquema) + " order by name";
}

std::string ChavesTSql(std::string_view esquema) {
    return "select o.name, i.name, col_name(k.object_id, k.column_id) from sys.indexes i"
           " join sys.tables o on o.object_id = i.object_id"
           " join sys.index_columns k on k.object_id = i.object_id and k.index_id = i.index_id"
           " where i.is_primary_key = 1 and k.key_ordinal > 0 and o.schema_id = " +
           std::string(esquema) + " order by o.name, k.key_ordinal";
}

std::string PadroesTSql(std::string_view tabela) {
    return "select object_name(d.parent_object_id), col_name(d.parent_object_id, d.parent_column_id), d.definition"
           " from sys.default_constraints d" +
           DaTabela("d.parent_object_id", tabela);
}

std::string ComputadasTSql(std::string_view tabela) {
    return "select object_name(c.object_id), c.name, c.definition from sys.computed_columns c" +
           DaTabela("c.object_id", tabela);
}

std::string RestricoesTSql(std::string_view tabela) {
    return "select name from sys.key_constraints where type = 'UQ' and parent_object_id = object_id(" + Aspas(tabela) +
           ")";
}

}  // namespace wkd
