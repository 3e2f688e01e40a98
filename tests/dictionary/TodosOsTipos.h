#pragma once

#include <random>
#include <tuple>

#include "PacotesDeTeste.h"

namespace wkd {

inline TCampoPacote Campo(std::string nome, TTipoDado tipo, std::string tipoXml, std::string subtipo = {},
                          int tamanho = 0, int escala = 0) {
    TCampoPacote campo;
    campo.nome = std::move(nome);
    campo.tipo = tipo;
    campo.tamanho = tamanho;
    campo.escala = escala;
    campo.tipoXml = std::move(tipoXml);
    campo.subtipo = std::move(subtipo);
    return campo;
}

inline std::string Aleatorio(std::size_t tamanho) {
    std::mt19937 gerador(7);
    std::string bytes(tamanho, '\0');
    for (char& c : bytes) c = static_cast<char>(gerador());
    return bytes;
}

/// Every type with its extremes; names that are no XML names, or equal once made so.
inline TDataPacket DeTodosOsTipos() {
    using enum TTipoDado;
    std::string memo;
    while (memo.size() < 100'000) memo += "linha com ção, € e 😀 & <marca> \"aspas\"\r\n";
    const TDataHora quando{DataDe(2026, 1, 2), THora{12'345'678LL * 10'000}};
    const struct {
        TCampoPacote campo;
        std::vector<TValor> valores;
    } colunas[] = {
        {Campo("I1", Inteiro, "i1"), {-128, 127}},
        {Campo("I2", Inteiro, "i2"), {-32768, 32767}},
        {Campo("I 4", Inteiro, "i4", "Autoinc"), {INT32_MIN, INT32_MAX}},
        {Campo("I-4", Inteiro, "i4"), {1, 2}},
        {Campo("I_4", Inteiro, "i8"), {INT64_MIN, INT64_MAX}},
        {Campo("ui1", Inteiro, "ui1"), {0, 255}},
        {Campo("ui2", Inteiro, "ui2"), {0, 65535}},
        {Campo("ui4", Inteiro, "ui4"), {0, std::int64_t{4294967295}}},
        {Campo("ui8", Inteiro, "ui8"), {0, "18446744073709551615"}},
        {Campo("r4", Flutuante, "r4"), {static_cast<double>(0.1f), -3e38f}},
        {Campo("r8", Flutuante, "r8", "Money"), {0.1, -1.7976931348623157e308}},
        {Campo("r10", Flutuante, "r10"), {1.0 / 3, 5e-324}},
        {Campo("fixed", Decimal, "fixed", {}, 9, 2), {TDecimal{-12345, 2}, TDecimal{5, 2}}},
        {Campo("FMT", Decimal, "fixedFMT", {}, 0, 4), {TDecimal{INT64_MIN, 18}, "-123456789012345678901234567890.5"}},
        {Campo("lógico", Logico, "boolean"), {true, false}},
        {Campo("DATA", Data, "date"), {DataDe(1, 1, 1), DataDe(9999, 12, 31)}},
        {Campo("HORA", Hora, "time"), {THora{0}, THora{863'999'990'000}}},
        {Campo("QUANDO", DataHora, "dateTime"), {TDataHora{DataDe(1900, 1, 1), {}}, quando}},
        {Campo("SQL", DataHora, "SQLdateTime"), {TDataHora{DataDe(9999, 12, 31), THora{863'999'990'000}}, quando}},
        {Campo("ANSI", Texto, "string", "FixedChar", 20), {"", "ação Ã§ 😀"}},
        {Campo("ANSI2", Texto, "string", {}, 10), {std::string(60'000, 'x'), std::string("a\0b", 3)}},
        {Campo("UNI", Texto, "string.uni", "Guid", 127), {"  <&>'\"\t\n\x01\x7F ", "ação 😀"}},
        {Campo("RowState", Memo, "bin.hex", "Text"), {"memo curto", memo}},
        {Campo("1MEMO", Memo, "bin.hex", "WideText"), {memo, "ç"}},
        {Campo("BLOB", Blob, "bin.hex", "Binary"), {TBytes{Aleatorio(100'001)}, TBytes{Aleatorio(2)}}},
        {Campo("BYTES", Bytes, "bin.hex", {}, 16), {TBytes{Aleatorio(16)}, TBytes{Aleatorio(7)}}},
    };
    TDataPacket pacote;
    pacote.linhas.resize(3);
    for (const auto& coluna : colunas) {
        pacote.campos.push_back(coluna.campo);
        for (std::size_t i = 0; i < 2; ++i) pacote.linhas[i].push_back(coluna.valores.at(i));
        pacote.linhas[2].emplace_back();
    }
    pacote.campos[0].requerido = pacote.campos[1].somenteLeitura = true;
    pacote.campos[2].oculto = pacote.campos[3].ligacao = true;
    return pacote;
}

inline void ConfereIguais(const TDataPacket& lido, const TDataPacket& esperado) {
    ASSERT_EQ(lido.campos.size(), esperado.campos.size());
    ASSERT_EQ(lido.linhas.size(), esperado.linhas.size());
    for (std::size_t c = 0; c < lido.campos.size(); ++c) {
        const auto &a = lido.campos[c], &b = esperado.campos[c];
        SCOPED_TRACE(b.nome);
        EXPECT_EQ(a.nome, b.nome);
        EXPECT_EQ(a.tipoXml, b.tipoXml);
        EXPECT_EQ(a.subtipo, b.subtipo);
        EXPECT_EQ(a.escala, b.escala);
        EXPECT_EQ(std::tie(a.requerido, a.somenteLeitura, a.oculto, a.ligacao),
                  std::tie(b.requerido, b.somenteLeitura, b.oculto, b.ligacao));
        for (std::size_t i = 0; i < lido.linhas.size(); ++i)
            EXPECT_TRUE(lido.linhas[i][c] == esperado.linhas[i][c])
                << "linha " << i << ": " << lido.linhas[i][c].ComoTexto().substr(0, 60);
    }
}

}  // namespace wkd
