#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

/// Whether Firebird takes the name, in capitals, for a word of its language unless it stands in quotes. The words are
/// those of 3.0 and 4.0.
bool PalavraReservada(std::string_view nome);

/// Bytes that Firebird gives a row. It refuses a table whose rows need more, but only when the creation is committed.
inline constexpr std::int64_t kBytesDoRegistro = 65'535;

/// Bytes of a row of these columns in the connection's database, whose character set gives the width of a letter.
std::int64_t BytesDoRegistro(TConnection& conexao, const std::vector<TColunaDicionario>& colunas);

/// "B" + table.
std::string NomeDaBackup(std::string_view tabela);
/// Name of the table that shows whether a server takes a CREATE TABLE; empty where preparing the statement shows it.
/// SQL Server looks at types and sizes only when it runs one. A local temporary table stands in a database of its own:
/// nothing of this one is changed or locked, and it may be read-only.
std::string NomeDeEnsaio(std::string_view tabela, TTipoBanco banco);
/// Name from the server's catalogue as statements take it: in double quotes where it needs them. Firebird refuses them
/// in the DDL of databases of dialect 1, whose names never do.
std::string Identificador(std::string_view nome, TTipoBanco banco);
/// Statement that makes the index on a table again.
std::string ComandoCriaIndice(const TIndice& indice, std::string_view tabela, TTipoBanco banco);
/// Statement that drops an index of a table.
std::string ComandoApagaIndice(const TIndice& indice, std::string_view tabela, TTipoBanco banco);
/// Statements that make a column of a table NOT NULL, and nullable again.
std::string ComandoExigeValor(std::string_view tabela, const TColunaFisica& coluna, TTipoBanco banco);
std::string ComandoDispensaValor(std::string_view tabela, const TColunaFisica& coluna, TTipoBanco banco);
/// Column of that name, letter case ignored; null when there is none.
const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome);

}  // namespace wkd
