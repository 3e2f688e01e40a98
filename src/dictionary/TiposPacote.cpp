#include "TiposPacote.h"

#include "Texto.h"

namespace wkd {

namespace {

// The first line of a fieldtype is the one that is written.
constexpr TTipoPacote kTipos[] = {
    {"i1", TFormato::Inteiro, 1, 1, TTipoDado::Inteiro},
    {"i2", TFormato::Inteiro, 1, 2, TTipoDado::Inteiro},
    {"i4", TFormato::Inteiro, 1, 4, TTipoDado::Inteiro},
    {"i8", TFormato::Inteiro, 1, 8, TTipoDado::Inteiro},
    {"ui1", TFormato::SemSinal, 2, 1, TTipoDado::Inteiro},
    {"ui2", TFormato::SemSinal, 2, 2, TTipoDado::Inteiro},
    {"ui4", TFormato::SemSinal, 2, 4, TTipoDado::Inteiro},
    {"ui8", TFormato::SemSinal, 2, 8, TTipoDado::Inteiro},
    {"boolean", TFormato::Logico, 3, 2, TTipoDado::Logico},
    {"r4", TFormato::Flutuante, 0x1B, 4, TTipoDado::Flutuante},
    {"r4", TFormato::Flutuante, 4, 4, TTipoDado::Flutuante},
    {"r8", TFormato::Flutuante, 4, 8, TTipoDado::Flutuante},
    {"r10", TFormato::Flutuante, 4, 10, TTipoDado::Flutuante},
    {"fixed", TFormato::Bcd, 5, 0, TTipoDado::Decimal},
    {"fixedFMT", TFormato::Bcd, 0x12, 0, TTipoDado::Decimal},
    {"date", TFormato::Data, 6, 4, TTipoDado::Data},
    {"time", TFormato::Hora, 7, 4, TTipoDado::Hora},
    {"dateTime", TFormato::DataHora, 8, 8, TTipoDado::DataHora},
    {"SQLdateTime", TFormato::DataHoraSql, 0x11, 16, TTipoDado::DataHora},
    {"string", TFormato::TextoAnsi, 0x49, 1, TTipoDado::Texto},
    {"string", TFormato::TextoAnsi, 0x49, 2, TTipoDado::Texto},
    {"string.uni", TFormato::TextoUnicode, 0x4A, 1, TTipoDado::Texto},
    {"string.uni", TFormato::TextoUnicode, 0x4A, 2, TTipoDado::Texto},
    {"bin.hex", TFormato::Blob, 0x4B, 4, TTipoDado::Blob},
    {"bin.hex", TFormato::Bytes, 0x4B, 2, TTipoDado::Bytes},
    {"bin.hex", TFormato::Bytes, 0x0B, 0, TTipoDado::Bytes},
};

std::string_view NomeDoCodigo(std::uint16_t codigo) {
    if (codigo & kMatriz) return "matriz de valores";
    switch (codigo & 0x3F) {
        case 12:
            return "tabela aninhada";
        case 13:
            return "matriz";
        case 14:
            return "referência";
        case 0x24:
            return "data e hora com fuso";
        default:
            return "desconhecido";
    }
}

}  // namespace

const TTipoPacote* TipoPorXml(std::string_view fieldtype) {
    for (const auto& tipo : kTipos)
        if (IgualSemCaixa(tipo.xml, fieldtype)) return &tipo;
    return nullptr;
}

const TTipoPacote* TipoPorCodigo(std::uint16_t codigo, std::uint16_t tamanho) {
    for (const auto& tipo : kTipos)
        if (tipo.codigo == codigo && (tipo.tamanho == tamanho || tipo.tamanho == 0)) return &tipo;
    return nullptr;
}

std::string NomeDoTipo(std::uint16_t codigo, std::uint16_t tamanho) {
    return std::to_string(codigo) + " de " + std::to_string(tamanho) + " bytes (" + std::string(NomeDoCodigo(codigo)) +
           ")";
}

bool ParametroDeLista(std::string_view nome) {
    return IgualSemCaixa(nome, "CHANGE_LOG") || IgualSemCaixa(nome, "DEFAULT_ORDER") ||
           IgualSemCaixa(nome, "PRIMARY_KEY");
}

bool ParametroConhecido(std::string_view nome) {
    return ParametroDeLista(nome) || IgualSemCaixa(nome, "LCID") || IgualSemCaixa(nome, "AUTOINCVALUE");
}

bool MemoAnsi(std::string_view subtipo) { return IgualSemCaixa(subtipo, "Text"); }

bool MemoUnicode(std::string_view subtipo) { return IgualSemCaixa(subtipo, "WideText"); }

TTipoDado DadoDoCampo(const TTipoPacote& tipo, std::string_view subtipo) {
    const bool memo = tipo.formato == TFormato::Blob && (MemoAnsi(subtipo) || MemoUnicode(subtipo));
    return memo ? TTipoDado::Memo : tipo.dado;
}

}  // namespace wkd
