#include "LexicoSql.h"

#include <algorithm>
#include <cctype>

#include "Texto.h"

namespace wkd {
namespace {

using TClasse = TLexema::TClasse;

bool DePalavra(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || std::isalnum(byte) || c == '_' || c == '$' || c == '@' || c == '#' || c == '.';
}

bool DeBranco(char c) { return static_cast<unsigned char>(c) <= ' '; }

template <class TCondicao>
std::size_t Enquanto(std::string_view sql, std::size_t inicio, TCondicao condicao) {
    while (inicio < sql.size() && condicao(sql[inicio])) ++inicio;
    return inicio;
}

/// Behind the next `fim`; a text without one goes to the end.
std::size_t Apos(std::string_view sql, std::string_view fim, std::size_t inicio) {
    const auto onde = sql.find(fim, inicio);
    return onde == std::string_view::npos ? sql.size() : onde + fim.size();
}

TLexema Primeiro(std::string_view sql) {
    const char c = sql.front();
    if (c == '\'') return {TClasse::Texto, sql.substr(0, Apos(sql, "'", 1))};
    if (c == '"') return {TClasse::Nome, sql.substr(0, Apos(sql, "\"", 1))};
    if (c == '[') return {TClasse::Nome, sql.substr(0, Apos(sql, "]", 1))};
    if (sql.starts_with("--")) return {TClasse::Branco, sql.substr(0, Apos(sql, "\n", 2))};
    if (sql.starts_with("/*")) return {TClasse::Branco, sql.substr(0, Apos(sql, "*/", 2))};
    if (DeBranco(c)) return {TClasse::Branco, sql.substr(0, Enquanto(sql, 1, DeBranco))};
    if (DePalavra(c)) return {TClasse::Palavra, sql.substr(0, Enquanto(sql, 1, DePalavra))};
    return {TClasse::Sinal, sql.substr(0, 1)};
}

/// Where the next piece that is no blank stands.
std::size_t Seguinte(const std::vector<TLexema>& lexemas, std::size_t i) {
    do ++i;
    while (i < lexemas.size() && lexemas[i].classe == TClasse::Branco);
    return i;
}

}  // namespace

bool TLexema::Palavra(std::string_view palavra) const {
    return classe == TClasse::Palavra && IgualSemCaixa(texto, palavra);
}

std::vector<TLexema> Lexemas(std::string_view sql) {
    std::vector<TLexema> lexemas;
    for (; !sql.empty(); sql.remove_prefix(lexemas.back().texto.size())) lexemas.push_back(Primeiro(sql));
    return lexemas;
}

std::string NomeDoLexema(const TLexema& lexema) {
    auto nome = lexema.texto;
    if (lexema.classe == TClasse::Nome && nome.size() >= 2) return std::string(nome.substr(1, nome.size() - 2));
    return std::string(nome.substr(nome.rfind('.') + 1));
}

std::string SemSequenciasOdbc(std::string_view sql) {
    if (sql.find('{') == std::string_view::npos) return std::string(sql);
    auto lexemas = Lexemas(sql);
    for (std::size_t i = 0; i < lexemas.size(); ++i) {
        if (!lexemas[i].Sinal('{')) continue;
        const auto palavra = Seguinte(lexemas, i);
        const auto texto = Seguinte(lexemas, palavra);
        const auto fim = Seguinte(lexemas, texto);
        if (fim >= lexemas.size() || lexemas[texto].classe != TClasse::Texto || !lexemas[fim].Sinal('}')) continue;
        const bool momento = std::ranges::any_of(std::vector<std::string_view>{"d", "t", "ts"},
                                                 [&](auto nome) { return lexemas[palavra].Palavra(nome); });
        if (!momento && !lexemas[palavra].Palavra("escape")) continue;
        lexemas[i].texto = lexemas[fim].texto = {};
        if (momento) lexemas[palavra].texto = {};
    }
    std::string plano;
    for (const auto& lexema : lexemas) plano += lexema.texto;
    return plano;
}

}  // namespace wkd
