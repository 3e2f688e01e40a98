#include "odbc/LexicoSql.h"

#include <algorithm>
#include <cctype>

#include "values/Texto.h"

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

namespace {

class TAnaliseDeAlvos {
  public:
    explicit TAnaliseDeAlvos(std::string_view sql) : lexemas_(Lexemas(sql)) {
        std::erase_if(lexemas_, [](const TLexema& l) { return l.classe == TLexema::TClasse::Branco; });
    }

    TAlvosDosParametros Resultado() {
        if (Palavra("insert"))
            Insercao();
        else if (Palavra("update"))
            Alteracao();
        Resto();
        return std::move(resultado_);
    }

  private:
    bool Ha() const { return lido_ < lexemas_.size(); }
    bool Sinal(char c) const { return Ha() && lexemas_[lido_].Sinal(c); }
    /// Takes the word when it comes next.
    bool Palavra(std::string_view palavra) {
        const bool ha = Ha() && lexemas_[lido_].Palavra(palavra);
        lido_ += ha ? 1 : 0;
        return ha;
    }

    /// "dbo.T", "[dbo].[T]": the last part counts.
    void Tabela() {
        do {
            if (!Ha()) return;
            resultado_.tabela = NomeDoLexema(lexemas_[lido_++]);
        } while (Ha() && (lexemas_[lido_].texto == "." || lexemas_[lido_ - 1].texto.ends_with('.')));
    }

    void Insercao() {
        Palavra("into");
        Tabela();
        const bool lista = Sinal('(');
        std::vector<std::string> colunas;
        for (; lista && Ha() && !Sinal(')'); ++lido_)
            if (lexemas_[lido_].classe != TLexema::TClasse::Sinal) colunas.push_back(NomeDoLexema(lexemas_[lido_]));
        lido_ += lista ? 1 : 0;
        if (!Palavra("values")) return;
        while (Sinal('(')) Valores(lista, colunas);
    }

    /// One "(...)" of values, and the comma behind it.
    void Valores(bool lista, const std::vector<std::string>& colunas) {
        std::size_t posicao = 0;
        int nivel = 0;
        do {
            if (Sinal('(')) ++nivel;
            if (Sinal(')')) --nivel;
            if (nivel == 1 && Sinal(',')) ++posicao;
            if (Sinal('?')) {
                const bool sozinho = nivel == 1 && Entre("(,", ",)");
                if (!sozinho)
                    resultado_.alvos.emplace_back();
                else if (!lista)
                    resultado_.alvos.push_back({"", posicao});
                else
                    resultado_.alvos.push_back({posicao < colunas.size() ? colunas[posicao] : "", std::nullopt});
            }
            ++lido_;
        } while (Ha() && nivel > 0);
        lido_ += Sinal(',') ? 1 : 0;
    }

    void Alteracao() {
        Tabela();
        if (!Palavra("set")) return;
        for (int nivel = 0; Ha(); ++lido_) {
            if (Sinal('(')) ++nivel;
            if (Sinal(')')) --nivel;
            const auto& l = lexemas_[lido_];
            if (nivel == 0 && (l.Palavra("where") || l.Palavra("from"))) return;
            if (!Sinal('?')) continue;
            const bool sozinho =
                nivel == 0 && lido_ >= 2 && Entre("=", ",") && (lexemas_[lido_ - 2].classe != TLexema::TClasse::Sinal);
            resultado_.alvos.push_back({sozinho ? NomeDoLexema(lexemas_[lido_ - 2]) : "", std::nullopt});
        }
    }

    /// Whether the current piece stands between two of these signs; the end, WHERE and FROM count as the second.
    bool Entre(std::string_view antes, std::string_view depois) const {
        const auto sinal = [](const TLexema& l, std::string_view quais) {
            return l.classe == TLexema::TClasse::Sinal && quais.find(l.texto) != std::string_view::npos;
        };
        if (lido_ == 0 || !sinal(lexemas_[lido_ - 1], antes)) return false;
        if (lido_ + 1 == lexemas_.size()) return true;
        const auto& seguinte = lexemas_[lido_ + 1];
        return sinal(seguinte, depois) || seguinte.Palavra("where") || seguinte.Palavra("from");
    }

    void Resto() {
        for (; Ha(); ++lido_)
            if (Sinal('?')) resultado_.alvos.emplace_back();
    }

    std::vector<TLexema> lexemas_;
    std::size_t lido_ = 0;
    TAlvosDosParametros resultado_;
};

}  // namespace

TAlvosDosParametros AlvosDosParametros(std::string_view sql) { return TAnaliseDeAlvos(sql).Resultado(); }

}  // namespace wkd
