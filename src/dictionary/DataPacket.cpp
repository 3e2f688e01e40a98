#include "DataPacket.h"

#include <algorithm>

#include "Caminho.h"
#include "EscritoresPacote.h"
#include "LeitoresPacote.h"
#include "Texto.h"

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

void GravaPacote(const TDataPacket& pacote, const std::filesystem::path& arquivo, TFormaPacote forma) {
    std::vector<TCampoPacote> campos;
    for (const auto& campo : pacote.campos) campos.push_back(campo.tipoXml.empty() ? CampoDePacote(campo) : campo);
    TSaidaPacote saida(arquivo);
    if (forma == TFormaPacote::Binario)
        GravaBinario(campos, pacote, saida);
    else
        GravaXml(campos, pacote, saida);
    saida.Conclui();
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

}  // namespace wkd
