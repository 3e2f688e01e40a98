#include <map>
#include <random>

#include "TodosOsTipos.h"

namespace wkd {
namespace {

constexpr TFormaPacote kFormas[] = {TFormaPacote::Xml, TFormaPacote::Binario};

std::string Gravado(const TDataPacket& pacote, TFormaPacote forma) {
    const TPastaTemporaria pasta;
    GravaPacote(pacote, pasta / "T.WKD", forma);
    return LeArquivo(pasta / "T.WKD");
}

TEST(PacoteIdaEVolta, AllTypesComeBackEqualFromEachForm) {
    const auto original = DeTodosOsTipos();
    for (const auto primeira : kFormas)
        for (const auto segunda : kFormas) {
            SCOPED_TRACE(static_cast<int>(primeira) * 2 + static_cast<int>(segunda));
            const auto lido = LeBytes(Gravado(original, primeira));
            ConfereIguais(lido, original);
            ConfereIguais(LeBytes(Gravado(lido, segunda)), original);
        }
}

TEST(PacoteIdaEVolta, AllRowsComeBackWithStateAndHistory) {
    // Original, modified (its text did not change), deleted, unused hole, inserted and detail changed; key and log in
    // both widths.
    const auto descricoes = CampoX(4, 1) + "\x01Y" + U16(1) + U16(0x49) + U16(0) + U16(0);
    const auto linhas = DeHexa("01 00 01000000 02 6F6B  08 08 02000000  02 05  20 05  44 00 03000000 00");
    const std::vector<std::uint8_t> estados = {1, 8, 2, 32, 0x44};
    const std::vector<TLinha> todas = {{1, "ok"}, {2, "ok"}, {TValor(), TValor()}, {TValor(), TValor()}, {3, ""}};
    const std::vector<TParametroPacote> parametros = {
        {"CHANGE_LOG", {2, 1, 8, 5, 0, 4}}, {"PRIMARY_KEY", {2, 1}}, {"DEFAULT_ORDER", {}}, {"LCID", {1033}}};
    for (const std::size_t largura : {2u, 4u}) {
        const auto numero = [&](std::size_t n) { return largura == 2 ? U16(n) : U32(n); };
        std::string propriedades = U16(5) + DeHexa("06") + "SORTED" + U16(2) + U16(3) + U16(1);
        for (const auto& parametro : parametros) {
            const bool lista = parametro.nome != "LCID";
            propriedades += static_cast<char>(parametro.nome.size()) + parametro.nome + U16(largura) +
                            U16(lista ? 0x82 : 1) + (lista ? U32(parametro.numeros.size()) : "");
            for (const auto n : parametro.numeros) propriedades += numero(static_cast<std::size_t>(n));
        }
        const TPastaTemporaria pasta;
        EscreveArquivo(pasta / "T.WKD", Binario(2, 5, descricoes, linhas, propriedades));
        for (const auto forma : {TFormaPacote::Xml, TFormaPacote::Xml, TFormaPacote::Binario, TFormaPacote::Binario}) {
            auto lido = LePacote(pasta / "T.WKD", TLinhasDoPacote::Todas);
            EXPECT_EQ(lido.linhas, todas);
            EXPECT_EQ(lido.estados, estados);
            EXPECT_EQ(lido.parametros, parametros);
            EXPECT_EQ(LePacote(pasta / "T.WKD").linhas, (std::vector<TLinha>{{2, "ok"}, {3, ""}}));
            GravaPacote(std::move(lido), pasta / "T.WKD", forma);
        }
    }
}

TEST(PacoteIdaEVolta, WritesOverTheFileThatTheBlobsComeFrom) {
    const TPastaTemporaria pasta;
    const auto original = DeTodosOsTipos();
    GravaPacote(original, pasta / "T.WKD", TFormaPacote::Binario);
    for (const auto forma : kFormas) GravaPacote(LePacote(pasta / "T.WKD"), pasta / "T.WKD", forma);
    ConfereIguais(LePacote(pasta / "T.WKD"), original);
}

TEST(PacoteIdaEVolta, NeutralFieldsGetATypeThatHoldsThem) {
    using enum TTipoDado;
    TDataPacket pacote;
    const std::map<TTipoDado, TValor> valores = {
        {Texto, "ação 😀"},      {Inteiro, INT64_MIN},       {Decimal, TDecimal{-123, 3}}, {Flutuante, 1.0 / 3},
        {Logico, true},         {Data, DataDe(2026, 7, 1)}, {Hora, THora{10'000}},        {DataHora, TDataHora{}},
        {Blob, TBytes{"\xFF"}}, {Memo, "memo ç"},           {Bytes, TBytes{"\x01\x02"}}};
    pacote.linhas.resize(1);
    for (const auto& [tipo, valor] : valores) {
        TCampoPacote campo;
        campo.nome = "C" + std::to_string(pacote.campos.size());
        campo.tipo = tipo;
        campo.tamanho = tipo == Texto ? 10 : 0;
        pacote.campos.push_back(campo);
        pacote.linhas[0].push_back(valor);
    }
    for (const auto forma : kFormas) EXPECT_EQ(LeBytes(Gravado(pacote, forma)).linhas, pacote.linhas);
}

TEST(PacoteIdaEVolta, WhatDoesNotFitTheTypeIsNotWritten) {
    const struct {
        TCampoPacote campo;
        TValor valor;
    } casos[] = {
        {Campo("X", TTipoDado::Inteiro, "i2"), 40000},
        {Campo("X", TTipoDado::Inteiro, "ui1"), -1},
        {Campo("X", TTipoDado::Decimal, "fixed", {}, 5), "1" + std::string(70, '0')},
        {Campo("X", TTipoDado::Texto, "string"), std::string(70'000, 'x')},
        {Campo("X", TTipoDado::Data, "date"), "ontem"},
        {Campo("X", TTipoDado::Texto, "nested"), "x"},
    };
    for (const auto& caso : casos) {
        const TPastaTemporaria pasta;
        EscreveArquivo(pasta / "T.WKD", "antigo");
        try {
            GravaPacote({{caso.campo}, {{caso.valor}}}, pasta / "T.WKD", TFormaPacote::Binario);
            ADD_FAILURE() << caso.campo.tipoXml;
        } catch (const TErroPacote& erro) {
            EXPECT_TRUE(Contem(erro.what(), "campo 'X'")) << erro.what();
        }
        EXPECT_EQ(LeArquivo(pasta / "T.WKD"), "antigo");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(pasta.Caminho()), {}), 1);
    }
}

/// Reads the packet and all its contents; true when it was refused.
bool Recusado(const std::string& bytes, TDataPacket* lido = nullptr) {
    try {
        auto pacote = LeBytes(bytes);
        for (const auto& linha : pacote.linhas)
            for (const auto& valor : linha) valor.ComoBytes();
        if (lido) *lido = std::move(pacote);
        return false;
    } catch (const TErroPacote&) {
        return true;
    }
}

/// The packet of all types with contents short enough for a read at every byte.
TDataPacket Pequeno() {
    auto pacote = DeTodosOsTipos();
    for (auto& linha : pacote.linhas)
        for (auto& valor : linha)
            if (const auto* texto = valor.Se<std::string>(); texto && texto->size() > 100)
                valor = TValor(texto->substr(0, 42));
            else if (const auto* blob = valor.Se<TBytes>(); blob && blob->bytes.size() > 100)
                valor = TBytes{blob->bytes.substr(0, 50)};
    return pacote;
}

TEST(PacoteIdaEVolta, APacketCutAtAnyByteIsRefused) {
    const auto original = Pequeno();
    for (const auto forma : kFormas) {
        const auto bytes = Gravado(original, forma);
        for (std::size_t i = 0; i < bytes.size(); ++i) EXPECT_TRUE(Recusado(bytes.substr(0, i))) << i;
        TDataPacket lido;
        ASSERT_FALSE(Recusado(bytes, &lido));
        ConfereIguais(lido, original);
    }
}

TEST(PacoteIdaEVolta, RandomBytesNeverBringTheReaderDown) {
    std::mt19937 gerador(11);
    int recusados = 0;
    for (const auto forma : kFormas) {
        const auto bytes = Gravado(Pequeno(), forma);
        for (int i = 0; i < 1500; ++i) {
            auto trocado = bytes;
            for (int j = 0; j < 1 + i % 4; ++j) trocado[gerador() % trocado.size()] = static_cast<char>(gerador());
            recusados += Recusado(trocado);
        }
    }
    EXPECT_GT(recusados, 500);
}

TEST(PacoteIdaEVolta, MissingColumnsAreNamed) {
    TDataPacket pacote;
    pacote.campos = {Campo("arquivo", TTipoDado::Texto, "string")};
    EXPECT_NO_THROW(ExigeCampos(pacote, "SAtrib.WKD", {"ARQUIVO"}));
    try {
        ExigeCampos(pacote, "/tmp/SAtrib.WKD", {"ARQUIVO", "NOME", "TIPO"});
        ADD_FAILURE();
    } catch (const TErroPacote& erro) {
        EXPECT_TRUE(Contem(erro.what(), "'SAtrib.WKD'") && Contem(erro.what(), "NOME, TIPO")) << erro.what();
    }
}

}  // namespace
}  // namespace wkd
