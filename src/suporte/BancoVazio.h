#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Mascara.h"
#include "ServidorDeBackup.h"
#include "server/HBNConnection.h"

namespace wkd {

// A database without any customer's row: its schema, and the rows of its dictionary.

/// Tables, columns, keys and indexes, and the names of whatever else there is, as one JSON object. The mask learns
/// their names. Throws TErroBanco.
std::string EsquemaEmJson(TConnection& conexao, TMascara& mascara);

/// File of the schema that the server itself makes.
inline constexpr std::string_view kBancoVazio = "banco.fbk";

/// A table whose rows go along: those of the dictionary, and of TINI what the program itself keeps there.
struct TTabelaGuardada {
    std::string nome, arquivo;  // data packet
    std::size_t registros = 0;
};
/// Writes their rows into the folder. Throws TErroBanco, TErroPacote.
std::vector<TTabelaGuardada> GuardaDicionario(TConnection& conexao, const std::filesystem::path& pasta);

/// What came of a bundle.
struct TReproduzido {
    std::string banco;
    std::size_t tabelas = 0, registros = 0;  // those of the dictionary
};
/// Makes the database of the connection's alias, which must not exist, from the files of a bundle; a failure leaves
/// none. Throws TErroDeBackup, TErroPacote, TErroBanco, std::system_error.
TReproduzido ReproduzBanco(THBNConnection& conexao, const std::filesystem::path& pasta, const TAcompanha& acompanha);

}  // namespace wkd
