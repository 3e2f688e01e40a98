#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "ServidorDeBackup.h"
#include "server/HBNConnection.h"

namespace wkd {

// A database without any customer's row: its schema, and the rows of its dictionary.

/// Files of the schema: the one that the server itself makes, where it can, and the readable one, of which tables,
/// keys, indexes and constraints can be made, too.
inline constexpr std::string_view kBancoVazio = "banco.fbk", kEsquema = "esquema.json";

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
    std::size_t tabelas = 0, registros = 0;   // those of the dictionary
    bool soTabelas = false;                   // without views, triggers and procedures
    std::vector<std::string> recusados = {};  // statements that the server did not take, and why
};
/// Makes the database of the connection's alias, which must not exist, from the files of a bundle; a failure leaves
/// none. Throws TErroDeBackup, TErroPacote, TErroBanco, std::system_error.
TReproduzido ReproduzBanco(THBNConnection& conexao, const std::filesystem::path& pasta, const TAcompanha& acompanha);

}  // namespace wkd
