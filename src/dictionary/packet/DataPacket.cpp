#include "packet/DataPacket.h"

#include <algorithm>
#include <utility>

#include "package/Caminho.h"
#include "packet/EscritoresPacote.h"
#include "packet/LeitoresPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace {

struct TFormaDoTipo {
    TTipoDado tipo;
    const char* xml;
    const char* subtipo;
};

TFormaDoTipo FormaDe(TTipoDado tipo) {
    constexpr TFormaDoTipo kFormas[] = {
        {TTipoDado::Inteiro, "i8", ""},
        {TTipoDado::Decimal, "fixedFMT", ""},
        {TTipoDado::Flutuante, "r8", ""},
        {TTipoDado::Logico, "boolean", ""},
        {TTipoDado::Data, "date", ""},
        {TTipoDado::Hora, "time", ""},
        {TTipoDado::DataHora, "dateTime", ""},
        {TTipoDado::Blob, "bin.hex", "Binary"},
        {TTipoDado::Memo, "bin.hex", "WideText"},
        {TTipoDado::Bytes, "bin.hex", ""},
    };
    for (const auto& forma : kFormas)
        if (forma.tipo == tipo) return forma;
    return {tipo, "string.uni", ""};
}

}  // namespace

TCampoPacote CampoDePacote(const TCampo& campo) {
    const auto forma = FormaDe(campo.tipo);
    TCampoPacote pacote;
    static_cast<TCampo&>(pacote) = campo;
    pacote.tipoXml = forma.xml;
    pacote.subtipo = forma.subtipo;
    return pacote;
}

TCampoPacote CampoDePacote(std::string_view nome, TTipoDado tipo, int tamanho) {
    TCampo campo;
    campo.nome = nome;
    campo.tipo = tipo;
    campo.tamanho = tamanho;
    return CampoDePacote(campo);
}

TTabelaEmMemoria TDataPacket::Tabela() && {
    return {std::vector<TCampo>(campos.begin(), campos.end()), std::move(linhas)};
}

TFormaPacote FormaDoPacote(const std::filesystem::path& arquivo) { return TFontePacote(arquivo).Forma(); }

TDataPacket LePacote(const std::filesystem::path& arquivo, TLinhasDoPacote linhas) {
    const auto fonte = std::make_shared<TFontePacote>(arquivo);
    return fonte->Forma() == TFormaPacote::Binario ? LeBinario(fonte, linhas) : LeXml(fonte, linhas);
}

void GravaPacote(TDataPacket pacote, const std::filesystem::path& arquivo, TFormaPacote forma) {
    std::vector<TCampoPacote> campos;
    for (const auto& campo : pacote.campos) campos.push_back(campo.tipoXml.empty() ? CampoDePacote(campo) : campo);
    TSaidaPacote saida(arquivo);
    if (forma == TFormaPacote::Binario)
        GravaBinario(campos, pacote, saida);
    else
        GravaXml(campos, pacote, saida);
    saida.Conclui(std::move(pacote));
}

void ExigeCampos(const TDataPacket& pacote, const std::filesystem::path& arquivo,
                 std::initializer_list<std::string_view> campos) {
    std::vector<std::string> faltam;
    for (const auto campo : campos)
        if (std::none_of(pacote.campos.begin(), pacote.campos.end(),
                         [&](const TCampoPacote& c) { return IgualSemCaixa(c.nome, campo); }))
            faltam.emplace_back(campo);
    if (!faltam.empty())
        throw TErroPacote("Ao pacote de dados '" + NomeDoArquivo(arquivo) + "' falta(m) o(s) campo(s) " +
                          Junta(faltam, ", ") + ". Confirme que é o pacote de atualização e peça outro ao suporte.");
}

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

bool ParametroInteiro(const TParametroPacote& parametro) {
    const auto& numeros = parametro.numeros;
    if (ParametroDeLista(parametro.nome))
        return std::ranges::all_of(numeros, [](auto numero) { return std::in_range<std::uint32_t>(numero); });
    return numeros.size() == 1 && std::in_range<std::int32_t>(numeros.front());
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
