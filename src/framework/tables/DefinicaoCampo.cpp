#include "tables/DefinicaoCampo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include "values/Texto.h"

namespace wkd {

namespace {

enum class TFamilia { Texto, Inteiro, Flutuante, Outra };

/// Type texts by kind of server; blanks are part of them. A text type's size and ")" follow.
struct TTipoColuna {
    std::string_view nome;
    TFamilia familia;
    std::array<std::string_view, 5> textos;  // in the order of TTipoBanco
};

constexpr std::array<std::string_view, 5> kTexto = {" varchar (", " varchar (", " Nvarchar2 (", " Nvarchar (", ""};
constexpr std::array<std::string_view, 5> kInteiro = {" integer ", " int ", " number (9) ", " int ", ""};
constexpr std::array<std::string_view, 5> kFlutuante = {" double Precision ", " double ", " number ", " float  ", ""};
constexpr std::array<std::string_view, 5> kData = {" Date ", " date ", " date  ", " datetime  ", ""};
constexpr std::array<std::string_view, 5> kHora = {" time ", " time ", " TIMESTAMP  ", " datetime  ", ""};
constexpr std::array<std::string_view, 5> kDataHora = {" TIMESTAMP ", " datetime ", " TIMESTAMP  ", " datetime  ", ""};
constexpr std::array<std::string_view, 5> kBlob = {" BLOB SUB_TYPE 0 SEGMENT SIZE 80 ", " LONGBLOB ", " BLOB  ",
                                                   " image ", ""};

constexpr TTipoColuna kTipos[] = {
    {"FTSTRING", TFamilia::Texto, kTexto},
    {"FTGUID", TFamilia::Texto, kTexto},
    {"GUID", TFamilia::Texto, kTexto},
    {"FTINTEGER", TFamilia::Inteiro, kInteiro},
    {"FTSMALLINT", TFamilia::Inteiro, kInteiro},
    {"FTBOOLEAN", TFamilia::Inteiro, kInteiro},
    {"FTWORD", TFamilia::Inteiro, kInteiro},
    {"FTAUTOINC", TFamilia::Inteiro, kInteiro},
    {"FTLARGEINT", TFamilia::Inteiro, kInteiro},
    {"FTFLOAT", TFamilia::Flutuante, kFlutuante},
    {"FTCURRENCY", TFamilia::Flutuante, kFlutuante},
    {"FTDATE", TFamilia::Outra, kData},
    {"FTTIME", TFamilia::Outra, kHora},
    {"FTDATETIME", TFamilia::Outra, kDataHora},
    {"FTBLOB", TFamilia::Outra, kBlob},
    {"FTMEMO", TFamilia::Outra, kBlob},
    {"FTGRAPHIC", TFamilia::Outra, kBlob},
};

const TTipoColuna* Procura(std::string_view tipo) {
    const std::string nome = Maiusculas(Apara(tipo));
    const auto* achado = std::ranges::find(kTipos, nome, &TTipoColuna::nome);
    return achado == std::end(kTipos) ? nullptr : achado;
}

std::string Padrao(const TColunaDicionario& coluna, TFamilia familia) {
    if (familia == TFamilia::Outra || coluna.valorPadrao.empty() || !Apara(coluna.calculo).empty()) return "";
    const bool flutuante = familia == TFamilia::Flutuante;
    return "default " + Aspas(flutuante ? Troca(coluna.valorPadrao, ",", ".") : coluna.valorPadrao);
}

}  // namespace

bool ColunaFisica(const TColunaDicionario& coluna) {
    return Apara(coluna.calculo).empty() && !IgualSemCaixa(Apara(coluna.tipo), "ftAggregate");
}

bool TipoConhecido(std::string_view tipo) { return Procura(tipo) != nullptr; }

int TamanhoDoTexto(std::string_view tamanho) {
    int valor = 0;
    const auto texto = Apara(tamanho);
    std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    return valor > 0 ? valor : kTamanhoPadrao;
}

std::string TipoDaColuna(std::string_view tipo, std::string_view tamanho, TTipoBanco banco) {
    const TTipoColuna* coluna = Procura(tipo);
    if (!coluna) return "";
    const std::string_view texto = coluna->textos[static_cast<std::size_t>(banco)];
    if (coluna->familia != TFamilia::Texto || texto.empty()) return std::string(texto);
    return std::string(texto) + std::to_string(TamanhoDoTexto(tamanho)) + ")";
}

std::string TipoNormal(std::string_view tipo) {
    std::string normal = Minusculas(Troca(tipo, " ", ""));
    for (const std::string_view corte : {"segmentsize", "characterset", "collate"})
        if (const auto onde = normal.find(corte); onde != std::string::npos) normal.resize(onde);
    return normal;
}

std::string DefinicaoCampo(const TColunaDicionario& coluna, TTipoBanco banco) {
    const TTipoColuna* tipo = Procura(coluna.tipo);
    return TipoDaColuna(coluna.tipo, coluna.tamanho, banco) + (tipo ? Padrao(coluna, tipo->familia) : "") +
           (coluna.chave == 1 ? " not null " : "");
}

}  // namespace wkd
