#include "NovaApoio.h"

namespace wkd {
namespace {

const TAtributos kVelhos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 10}, {"ANTIGO", "ftString", 5}};
const TAtributos kNovos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 30}, {"TIPO", "ftString", 1, 0, "n"}};
constexpr int kLinhas = 40, kLote = 11, kRestauradas = 22;

/// The restore of a rebuilt table was broken off behind its second batch; people worked in the table afterwards.
struct TBancoEmUso : TBancoDaNova {
    /// `repete`: the old table had no key, and its last row repeats the one of the third.
    explicit TBancoEmUso(int chave, bool comTini = true, bool repete = false) : TBancoDaNova("UTF8", comTini) {
        TAtributos velhos = kVelhos, novos = kNovos;
        velhos[0].chave = novos[0].chave = chave;
        Guardada("TCLI", velhos);
        Executa("create table TCLI (CODIGO integer not null, NOME varchar(10), ANTIGO varchar(5)" +
                std::string(chave == 1 && !repete ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        std::vector<std::string> comandos;
        for (int i = 1; i <= kLinhas; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'nome', 'v')");
        if (repete) comandos.push_back("update TCLI set CODIGO = 3, NOME = 'repete' where CODIGO = 40");
        ExecutaTudo(comandos);
        Pacote("TCLI", novos);
        Interrompe();
        ExecutaTudo({"update TCLI set NOME = 'mudado por alguém', TIPO = 'X' where CODIGO = 1",
                     "delete from TCLI where CODIGO = 2", "insert into TCLI values (99, 'entrou', 'Y')"});
        tela_.memo2.clear();
        tela_.infos.clear();
    }

    void Interrompe() {
        int lotes = 0;
        Conexao().Observa([&](std::string_view sql) {
            if (Insere(sql, "TCLI") && ++lotes > kRestauradas / kLote)
                throw TErroBanco({"caiu", 0, "08006", "", TFalha::Conexao, true});
        });
        EXPECT_THROW(Reconstroi(), TErroBanco);
        Conexao().Observa({});
        Conexao().Close();
        Conexao().Open();
        EXPECT_EQ(Le("select count(*) from TCLI"), std::to_string(kRestauradas));
    }
};

TEST(RetomadaTest, WorkInAHalfRestoredTableStaysAndTheRestComesBack) {
    for (const int chave : {1, 0}) {
        SCOPED_TRACE(chave == 1 ? "with key" : "without key");
        TBancoEmUso banco(chave);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME, TIPO from TCLI where CODIGO in (1, 23, 40, 99) order by 1"),
                  "1|mudado por alguém|X;23|nome|N;40|nome|N;99|entrou|Y");
        // Without a key a deleted row is known to have been back.
        EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), chave == 1 ? "41|41" : "40|40");
        EXPECT_EQ(banco.Le("select count(*) from BTCLI where NOME = 'nome' and ANTIGO = 'v'"), "40");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_EQ(banco.Le("select count(*) from TINI"), "0");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "***** TABELA TCLI Conteúdo diferente de BTCLI"))
            << Junta(banco.tela_.memo2, "\n");
        EXPECT_FALSE(TTelaDeTeste::Contem(banco.tela_.memo2, "ATENÇÃO")) << Junta(banco.tela_.memo2, "\n");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "ANTIGO"));
        EXPECT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
    }
}

TEST(RetomadaTest, AnotherPackageFindsTheTableWholeFirst) {
    for (const bool comTini : {true, false}) {
        SCOPED_TRACE(comTini ? "marked" : "without marks");
        TBancoEmUso banco(1, comTini);
        TAtributos outros = kNovos;
        outros[1].tamanho = 40;
        outros.push_back({"LOJA", "ftInteger", 0, 0, "7"});
        banco.Pacote("TCLI", outros);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME, TIPO, LOJA from TCLI where CODIGO in (1, 23, 40, 99) order by 1"),
                  "1|mudado por alguém|X|7;23|nome|N|7;40|nome|N|7;99|entrou|Y|7");
        EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), "41|41");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "Conteúdo diferente de BTCLI"));
    }
}

TEST(RetomadaTest, ABackupWithValuesOfItsOwnIsNotReplaced) {
    TBancoEmUso banco(1);
    TAtributos outros = kNovos;
    outros.push_back({"ANTIGO", "ftString", 5});
    banco.Pacote("TCLI", outros);
    banco.Reconstroi();
    EXPECT_TRUE(banco.estado_.falhouApagar);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "só BTCLI tem os valores de ANTIGO"));
    EXPECT_EQ(banco.Le("select count(*) from TCLI"), "41");
    EXPECT_EQ(banco.Le("select count(*) from BTCLI where ANTIGO = 'v'"), "40");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "-1");
}

TEST(RetomadaTest, AKeyThatIsTakenIsReportedAndItsRowKept) {
    TBancoEmUso banco(0);
    banco.Executa("create unique index ITCLI on TCLI (CODIGO)");
    banco.Executa("insert into TCLI values (30, 'outro', 'Z')");
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select NOME from TCLI where CODIGO = 30"), "outro");
    EXPECT_EQ(banco.tela_.infos.size(), 1U);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "***** ATENÇÃO *******"));
    EXPECT_NE(banco.Rejeitados().find("\"CODIGO\": 30"), std::string::npos) << banco.Rejeitados();
}

TEST(RetomadaTest, ARowThatRepeatsAKeyBehindTheBreakIsReportedAndKept) {
    TBancoEmUso banco(1, true, true);
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select NOME from TCLI where CODIGO = 3"), "nome");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "***** ATENÇÃO *******")) << Junta(banco.tela_.memo2, "\n");
    EXPECT_NE(banco.Rejeitados().find("\"CODIGO\": 3, \"NOME\": \"repete\""), std::string::npos) << banco.Rejeitados();
}

}  // namespace
}  // namespace wkd
