#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// Piece of a statement: a word or number, a name in quotes or brackets, a text literal, blanks or a comment, or one
/// other character.
struct TLexema {
    enum class TClasse { Palavra, Nome, Texto, Branco, Sinal };
    TClasse classe;
    std::string_view texto;

    bool Sinal(char c) const { return classe == TClasse::Sinal && texto.starts_with(c); }
    bool Palavra(std::string_view palavra) const;
};

/// All pieces of the statement, one behind the other.
std::vector<TLexema> Lexemas(std::string_view sql);

/// Name that a word, or a name in quotes or brackets, stands for.
std::string NomeDoLexema(const TLexema& lexema);

/// The statement without the braces of ODBC escape sequences ("{ESCAPE '\'}", "{ts '...'}"), which the FreeTDS driver
/// mangles; quoted texts stay as they are.
std::string SemSequenciasOdbc(std::string_view sql);

/// Column that a parameter is stored in: by name, or by its place in an INSERT that names no columns.
struct TAlvo {
    std::string coluna;
    std::optional<std::size_t> posicao;
    bool Conhecido() const { return posicao || !coluna.empty(); }
};

/// Table that a statement with "?" writes into, and for every "?" in order the column that takes it as it is. A "?"
/// inside an expression or a condition has no column.
struct TAlvosDosParametros {
    std::string tabela;
    std::vector<TAlvo> alvos;
};

TAlvosDosParametros AlvosDosParametros(std::string_view sql);

}  // namespace wkd
