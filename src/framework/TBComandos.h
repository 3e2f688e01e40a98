#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Metadados.h"
#include "TipoBanco.h"

namespace wkd {

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
