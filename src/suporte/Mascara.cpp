#include "Mascara.h"

#include <algorithm>
#include <array>

#include "values/Texto.h"

namespace wkd {

extern const std::string_view kPalavras;

namespace {

constexpr std::string_view kMascarado = "…";

/// Letters beyond ASCII count, whatever their alphabet.
bool DePalavra(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           byte >= 0x80;
}

bool Numero(std::string_view palavra) {
    return std::ranges::all_of(palavra, [](char c) { return c >= '0' && c <= '9'; });
}

/// A to Z and what Portuguese has beyond it: À to Þ stand 0x20 before their small letters.
std::string EmMinusculas(std::string_view palavra) {
    std::string texto = Minusculas(palavra);
    for (std::size_t i = 1; i < texto.size(); ++i) {
        const auto byte = static_cast<unsigned char>(texto[i]);
        if (texto[i - 1] == '\xC3' && byte >= 0x80 && byte <= 0x9E) texto[i] = static_cast<char>(byte + 0x20);
    }
    return texto;
}

/// Words of which a number in parentheses is the size: "varchar(40)".
bool Dimensionado(std::string_view palavra) {
    constexpr std::array kTipos = {"varchar", "char", "nvarchar", "nchar", "numeric", "decimal"};
    return std::ranges::find(kTipos, palavra) != kTipos.end();
}

}  // namespace

TMascara::TMascara() {
    for (const auto& palavra : Divide(kPalavras, '\n')) palavras_.insert(palavra);
    for (const char* curta : {"a", "e", "o", "é", "à", "n", "t"}) palavras_.insert(curta);
}

void TMascara::Conhece(std::string_view nome) {
    if (NomeDeSql(nome) && !Numero(nome)) nomes_.insert(EmMinusculas(nome));
}

namespace {

/// Where in a text names alone stay: between quotes, and behind "... key value is (", to the end.
class TLugar {
  public:
    explicit TLugar(std::string_view texto) : texto_(texto) {}

    void Passa(std::size_t i, std::string_view anterior) {
        const char c = texto_[i];
        if (c == '(' && anterior == "is") chave_ = true;
        if (aspas_ != 0)
            aspas_ = c == aspas_ ? '\0' : aspas_;
        else if (c == '"' || (c == '\'' && !Apostrofo(i, anterior)))
            aspas_ = c;
    }
    bool SoNomes() const { return chave_ || aspas_ != 0; }

  private:
    /// "can't"; of N'text' in T-SQL it is a quote.
    bool Apostrofo(std::size_t i, std::string_view anterior) const {
        return i > 0 && DePalavra(texto_[i - 1]) && i + 1 < texto_.size() && DePalavra(texto_[i + 1]) &&
               anterior != "N";
    }

    std::string_view texto_;
    char aspas_ = 0;
    bool chave_ = false;
};

}  // namespace

bool TMascara::Conhecida(std::string_view palavra, bool soNomes) const {
    const std::string minuscula = EmMinusculas(palavra);
    return nomes_.contains(minuscula) || (!soNomes && palavras_.contains(minuscula));
}

/// What stands between two words that are taken out goes with them, so that not even their number is told.
std::string TMascara::Texto(std::string_view texto) const {
    std::string saida, separador;
    std::string_view anterior;
    TLugar lugar(texto);
    bool mascarada = false;
    for (std::size_t i = 0; i < texto.size();) {
        std::size_t fim = i;
        while (fim < texto.size() && DePalavra(texto[fim])) ++fim;
        if (fim == i) {
            lugar.Passa(i, anterior);
            separador += texto[i++];
            continue;
        }
        const std::string_view palavra = texto.substr(i, fim - i);
        const bool tamanho = Numero(palavra) && Dimensionado(Minusculas(anterior)) && Apara(separador) == "(";
        const bool fica = tamanho || Conhecida(palavra, lugar.SoNomes());
        if (fica || !mascarada) saida.append(separador).append(fica ? palavra : kMascarado);
        mascarada = !fica;
        separador.clear();
        anterior = palavra;
        i = fim;
    }
    return saida + separador;
}

std::string TMascara::Comando(std::string_view sql) const {
    const std::string inicio = Minusculas(Apara(sql).substr(0, 7));
    for (const char* definicao : {"create ", "alter t", "drop ta", "drop in"})
        if (inicio.starts_with(definicao)) return std::string(sql);
    return Texto(sql);
}

}  // namespace wkd
