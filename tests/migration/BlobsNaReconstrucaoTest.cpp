// What a blob holds passes a rebuild byte by byte, whatever the character sets of database, column and connection.
#include "NovaApoio.h"

namespace wkd {
namespace {

constexpr const char* kConjuntos[] = {"NONE", "WIN1252", "ISO8859_1", "UTF8"};
constexpr int kLinhas = 26;  // more than two batches of a restore

/// More than a segment of 64 KB, its letters across the borders of whatever reads in pieces.
std::string Longo(std::string_view pedaco) {
    std::string texto = "x";
    while (texto.size() < 70'000) texto += pedaco;
    return texto;
}

/// Contents in turn; a column of UTF-8 takes no others than such a text.
TValor Conteudo(int linha, bool utf8) {
    static const std::vector<TValor> deBytes = {TValor(),
                                                TBytes{""},
                                                TBytes{"a\xE7\xE3o"},
                                                TBytes{"\x80\x81\x8D\x90\xFF"},
                                                TBytes{"a\xC3\xA7\xC3\xA3o"},
                                                TBytes{Longo("a\xE7\xE3o\xC3 ")},
                                                TBytes{"fim  "},
                                                TBytes{std::string("\0zero\0\0", 7)}};
    static const std::vector<TValor> deUtf8 = {TValor(), TBytes{""}, TBytes{"ação €"}, TBytes{Longo("ação €")},
                                               TBytes{"fim  "}};
    const auto& conteudos = utf8 ? deUtf8 : deBytes;
    return conteudos[static_cast<std::size_t>(linha) % conteudos.size()];
}

struct TCaso {
    const char* banco;    // default character set
    const char* conexao;  // "CharacterSet" of the alias, empty without one
};

void PrintTo(const TCaso& caso, std::ostream* saida) { *saida << caso.banco << " by " << caso.conexao; }

class BlobsNaReconstrucao : public testing::TestWithParam<TCaso> {};

std::vector<TCaso> Casos() {
    std::vector<TCaso> casos;
    for (const char* banco : {"", "WIN1252", "ISO8859_1", "UTF8"})
        for (const char* conexao : {"", "UTF8", "WIN1252", "ISO8859_1", "NONE"}) casos.push_back({banco, conexao});
    return casos;
}

INSTANTIATE_TEST_SUITE_P(Bancos, BlobsNaReconstrucao, testing::ValuesIn(Casos()), [](const auto& caso) {
    return std::string("Banco") + caso.param.banco + "Conexao" + caso.param.conexao;
});

std::vector<std::string> Colunas() {
    std::vector<std::string> colunas = {"B0", "FORA"};
    for (const std::string conjunto : kConjuntos) colunas.push_back("M_" + conjunto);
    return colunas;
}

/// The server turns no bytes into another character set.
std::vector<std::string> EmBytes(std::vector<std::string> expressoes, const std::string& inicio = "") {
    for (auto& expressao : expressoes) expressao = "cast(" + inicio + expressao + " as blob sub_type 0)";
    return expressoes;
}

/// A table with text blobs of every set, one of them (FORA) unknown to the dictionary, which knows them as memos.
struct TBancoDeBlobs : TBancoDaNova {
    /// `peloCliente`: a column that the server does not move.
    TBancoDeBlobs(const TCaso& caso, int chave, bool peloCliente) : TBancoDaNova(caso.banco, true, "", caso.conexao) {
        std::string sql = "create table TCLI (CODIGO integer not null, QTD " +
                          std::string(peloCliente ? "char(5)" : "varchar(5)") +
                          ", B0 blob sub_type 0, FORA blob sub_type 1 character set WIN1252";
        TAtributos velhos = {{"CODIGO", "ftInteger", 0, chave}, {"QTD", "ftString", 5}, {"B0", "ftBlob"}};
        for (const std::string conjunto : kConjuntos) {
            sql += ", M_" + conjunto + " blob sub_type 1 character set " + conjunto;
            velhos.push_back({"M_" + conjunto, "ftMemo"});
        }
        Executa(sql + (chave == 1 ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        Guardada("TCLI", velhos);
        velhos[1] = {"QTD", peloCliente ? "ftInteger" : "ftString", 3};
        Pacote("TCLI", velhos);
        Enche();
    }

    void Enche() {
        const auto colunas = Colunas();
        TTransacao transacao(Conexao());
        const auto insere = Conexao().Prepara("insert into TCLI (CODIGO, QTD, " + Junta(colunas, ", ") +
                                              ") values (:CODIGO, '123', " + Junta(EmBytes(colunas, ":"), ", ") + ")");
        for (int linha = 1; linha <= kLinhas; ++linha) {
            insere->Atribui("CODIGO", linha);
            for (std::size_t i = 0; i < colunas.size(); ++i)
                insere->Atribui(colunas[i], Conteudo(linha + static_cast<int>(i), colunas[i] == "M_UTF8"));
            insere->Executa();
        }
        transacao.Commit();
    }

    /// "column of row" of every blob that is not the one it was.
    std::vector<std::string> Diferentes(const std::string& tabela, const std::vector<std::string>& colunas) {
        std::vector<std::string> diferentes;
        const auto le = Conexao().Prepara("select CODIGO, " + Junta(EmBytes(colunas), ", ") + " from " + tabela);
        int linhas = 0;
        for (le->Abre(); le->Proximo(); ++linhas) {
            const auto linha = static_cast<int>(le->Valor(0).ComoInteiro());
            for (std::size_t i = 0; i < colunas.size(); ++i) {
                const auto todas = Colunas();
                const auto lugar = std::ranges::find(todas, colunas[i]) - todas.begin();
                const TValor era = Conteudo(linha + static_cast<int>(lugar), colunas[i] == "M_UTF8");
                const TValor ficou = le->Valor(i + 1);
                if (era.Nulo() != ficou.Nulo() || era.ComoBytes() != ficou.ComoBytes())
                    diferentes.push_back(colunas[i] + " of " + std::to_string(linha) + ": " +
                                         ficou.ComoBytes().substr(0, 20));
            }
        }
        EXPECT_EQ(linhas, kLinhas);
        return diferentes;
    }
};

TEST_P(BlobsNaReconstrucao, ComeBackByteByByteWhenInterruptedToo) {
    for (const bool peloCliente : {false, true}) {
        for (const int chave : {1, 0}) {
            SCOPED_TRACE(std::string(peloCliente ? "client, " : "server, ") + (chave == 1 ? "key" : "no key"));
            TBancoDeBlobs banco(GetParam(), chave, peloCliente);
            ASSERT_EQ(banco.Diferentes("TCLI", Colunas()), std::vector<std::string>());
            bool guardou = false, confirmou = false;
            banco.Conexao().Observa([&](std::string_view sql) {
                confirmou = confirmou || (guardou && sql == "commit");
                if (!Insere(sql, "TCLI")) return;
                if (confirmou) throw 0;
                guardou = true;
            });
            EXPECT_THROW(banco.Reconstroi(), int);
            banco.Conexao().Observa({});
            EXPECT_EQ(banco.Le("select count(*) from TCLI"), "11");
            banco.Reconstroi();

            auto doDicionario = Colunas();
            std::erase(doDicionario, "FORA");
            EXPECT_EQ(banco.Diferentes("TCLI", doDicionario), std::vector<std::string>());
            EXPECT_EQ(banco.Diferentes("BTCLI", Colunas()), std::vector<std::string>());
            EXPECT_EQ(banco.tela_.memo2,
                      std::vector<std::string>{"Tabela TCLI: colunas que ficaram só em BTCLI: FORA"});
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
            EXPECT_EQ(banco.Rejeitados(), "");
        }
    }
}

TEST(BlobsNaReconstrucaoTest, ABackupWithOtherBytesEndsTheRebuildBeforeTheDrop) {
    for (const int chave : {1, 0})
        for (const char* coluna : {"B0", "M_UTF8"}) {
            SCOPED_TRACE(std::string(coluna) + (chave == 1 ? ", key" : ", no key"));
            TBancoDeBlobs banco({"UTF8", "UTF8"}, chave, false);
            bool mudou = false;
            banco.Conexao().Observa([&](std::string_view sql) {
                if (mudou || sql != "select count(*) as total from BTCLI") return;
                mudou = true;
                banco.banco_.Outra()->ExecuteDirect(
                    "update BTCLI set " + std::string(coluna) +
                    " = 'fim1A' where CODIGO = (select min(CODIGO) from BTCLI where octet_length(" + coluna + ") > 0)");
            });
            banco.Reconstroi();
            banco.Conexao().Observa({});
            EXPECT_TRUE(mudou);
            EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "não confere")) << Junta(banco.tela_.memo2, "\n");
            EXPECT_EQ(banco.Diferentes("TCLI", Colunas()), std::vector<std::string>());
        }
}

}  // namespace
}  // namespace wkd
