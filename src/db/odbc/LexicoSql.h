#pragma once

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

}  // namespace wkd
