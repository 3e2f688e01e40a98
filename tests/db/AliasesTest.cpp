#include "aliases/Aliases.h"

#include <gtest/gtest.h>

#include <functional>

#include "Arquivos.h"
#include "PastaTemporaria.h"

namespace wkd {
namespace {

class AliasesTest : public ::testing::Test {
  protected:
    std::string Erro(const std::function<void()>& acao) {
        try {
            acao();
        } catch (const TErroConfiguracao& erro) {
            return erro.what();
        }
        return "";
    }

    TPastaTemporaria pasta_;
    TAliases aliases_{pasta_ / "WKD.ini"};
};

TEST_F(AliasesTest, TheSettingsFileIsFoundInTheOrderOfItsPlaces) {
    const auto raiz = pasta_.Caminho();
    const TLocaisDoIni locais{raiz / "app" / "bin/", raiz / "opt", raiz / "svn" / "WKD.Ini"};
    std::filesystem::create_directories(raiz / "app" / "bin");

    const std::string semNenhum = Erro([&] { LocalizaIni(locais); });
    EXPECT_TRUE(semNenhum.starts_with("Nao encontrou o arquivo" + (raiz / "svn" / "WKD.Ini").string() + "\n"))
        << semNenhum;
    EXPECT_NE(Erro([&] { LocalizaIni({raiz, raiz / "opt", "SVN/WKD.Ini"}); }).find("WKD Software"), std::string::npos);

    for (const char* lugar : {"svn/wkd.ini", "opt/wkd software/Hbn/WKD.INI", "opt/wkd software/wkd.ini", "app/wkd.INI",
                              "app/bin/Wkd.ini"}) {
        std::filesystem::create_directories((raiz / lugar).parent_path());
        EscreveArquivo(pasta_ / lugar, "");
        EXPECT_TRUE(std::filesystem::equivalent(LocalizaIni(locais), raiz / lugar)) << LocalizaIni(locais);
    }
    EscreveArquivo(pasta_ / "app/bin/WKD.ini", "");
    EXPECT_EQ(LocalizaIni(locais), raiz / "app" / "bin" / "WKD.ini") << "the exact name wins";
}

TEST(SemBarrasDobradas, KeepsOnlyTheLeadingPairOfANetworkPath) {
    EXPECT_EQ(SemBarrasDobradas("\\\\srv\\\\dados\\\\\\WKD.ini"), "\\\\srv\\dados\\WKD.ini");
    EXPECT_EQ(SemBarrasDobradas("\\\\\\srv"), "\\\\srv");
    EXPECT_EQ(SemBarrasDobradas("/opt//x/WKD.ini"), "/opt/x/WKD.ini");
    EXPECT_EQ(SemBarrasDobradas("C:\\\\x"), "C:\\x");
}

TEST_F(AliasesTest, AnAliasReadsBackEqualAndItsPasswordIsNotInTheFile) {
    TAlias alias{.nome = " Matriz São Paulo ",
                 .tipoBanco = "tbInterbase",
                 .hostname = "srv/3055",
                 .path = "C:\\dados\\",
                 .database = "a;b=\"c\".fdb",
                 .usuario = "SYSDBA",
                 .senha = "çhave;=\"x\"",
                 .characterSet = "WIN1252",
                 .driver = "",
                 .encrypt = "strict",
                 .trustServerCertificate = "yes"};
    alias.autenticacao = TTipoAutenticacao::Servidor;
    aliases_.AdicionaAlias(alias, true);

    for (const char* secao : {"matriz são paulo", "MENU"}) {
        const TAlias lido = aliases_.CarregaAlias(secao);
        EXPECT_EQ(lido.nome, "Matriz São Paulo");
        EXPECT_EQ(lido.encrypt + lido.trustServerCertificate, "strictyes");
        EXPECT_EQ(
            std::tie(lido.hostname, lido.path, lido.database, lido.senha, lido.autenticacao, lido.characterSet),
            std::tie(alias.hostname, alias.path, alias.database, alias.senha, alias.autenticacao, alias.characterSet));
    }
    EXPECT_EQ(LeArquivo(pasta_ / "WKD.ini").find("chave"), std::string::npos);
    EXPECT_EQ(aliases_.INILeString("MENU", "Versao"), "0");
    EXPECT_EQ(aliases_.INILeString("Matriz São Paulo", "Versao", "nenhuma"), "nenhuma");
    EXPECT_EQ(aliases_.ListaAlias(true), std::vector<std::string>{"Matriz São Paulo"});

    EXPECT_TRUE(aliases_.RemoveAlias("MATRIZ São paulo"));
    EXPECT_FALSE(aliases_.RemoveAlias("Matriz São Paulo"));
    EXPECT_TRUE(aliases_.ListaAlias(true).empty()) << "MENU alone is not offered";
    EXPECT_EQ(aliases_.ListaAlias(false), std::vector<std::string>{"MENU"});
}

TEST_F(AliasesTest, UnusableNamesAreRefusedAndNothingIsWritten) {
    TAlias alias;
    alias.nome = " ";
    EXPECT_EQ(Erro([&] { aliases_.AdicionaAlias(alias, true); }), "Insira corretamento o nome do Alias!");
    alias.nome = "A";
    alias.path = "x\ny";
    EXPECT_NE(Erro([&] { aliases_.AdicionaAlias(alias, false); }), "");
    EXPECT_FALSE(std::filesystem::exists(aliases_.Caminho()));

    const std::string erro = Erro([&] { aliases_.CarregaAlias("Filial"); });
    for (const std::string& parte : {std::string("Filial"), aliases_.Caminho().string(), std::string("--novo-alias")})
        EXPECT_NE(erro.find(parte), std::string::npos) << erro;
}

TEST_F(AliasesTest, DriverParametersFollowTheKind) {
    const struct {
        const char* secao;
        std::vector<std::pair<std::string, std::string>> pares;
    } casos[] = {
        {"TipoBanco=tbInterbase\nHostname=srv/3055\nPath=C:\\d\\\nDataBase=e.fdb\nUser_Name=U\nPassword=clara",
         {{"User_Name", "U"}, {"Password", "clara"}, {"Database", "srv/3055:C:\\d\\e.fdb"}}},
        {"TipoBanco=tbInterbase\nPath=/d/\nDataBase=e.fdb\nCharacterSet=WIN1252",
         {{"User_Name", ""}, {"Password", ""}, {"Database", "/d/e.fdb"}, {"CharacterSet", "WIN1252"}}},
        {"TipoBanco=tbSQLServer\nHostname=srv\\sql,1433\nPath=x\nDataBase=ERP\nDriver=FreeTDS",
         {{"User_Name", ""},
          {"Password", ""},
          {"Database", "ERP"},
          {"Server", "srv\\sql,1433"},
          {"SchemaOverride", "sa.dbo"},
          {"Prepare SQL", "False"},
          {"ConnectTimeout", "60"},
          {"Mars_Connection", "True"},
          {"HostName", "srv\\sql,1433"},
          {"BlobSize", "-1"},
          {"ErrorResourceFile", ""},
          {"LocaleCode", "0000"},
          {"IsolationLevel", "ReadCommitted"},
          {"Trusted_Connection", "yes"},
          {"Driver", "FreeTDS"}}},
        {"TipoBanco=tbSQLServer\nHostname=srv\nDataBase=ERP\nTipoAutenticacao=1",
         {{"User_Name", ""},
          {"Password", ""},
          {"Database", "ERP"},
          {"Server", "srv"},
          {"SchemaOverride", "sa.dbo"},
          {"Prepare SQL", "False"},
          {"ConnectTimeout", "60"},
          {"Mars_Connection", "True"},
          {"HostName", "srv"},
          {"BlobSize", "-1"},
          {"ErrorResourceFile", ""},
          {"LocaleCode", "0000"},
          {"IsolationLevel", "ReadCommitted"}}},
        {"TipoBanco=tbODBC\nHostname=DSN1\nDataBase=ERP",
         {{"User_Name", ""}, {"Password", ""}, {"Database", "ERP"}, {"DataSource", "DSN1"}}},
        {"TipoBanco=tbOracle\nHostname=h", {}},
        {"TipoBanco=TBINTERBASE\nHostname=h", {}},
    };
    for (const auto& caso : casos) {
        EscreveArquivo(pasta_ / "WKD.ini", "[A]\n" + std::string(caso.secao) + "\n");
        EXPECT_EQ(ParametrosDoAlias(aliases_.CarregaAlias("A")).Pares(), caso.pares) << caso.secao;
    }
}

TEST(Senha, ComesBackOnlyUnderItsUserAndIsSafeInAnIniFile) {
    for (const std::string& senha :
         {std::string("a"), std::string("ação;=\"' "), std::string("\0\xFF\n", 3), std::string("W1-00")}) {
        const std::string texto = MontaSenha("sysdba", senha);
        EXPECT_EQ(DesmontaSenha("SYSDBA ", texto), senha);
        EXPECT_NE(DesmontaSenha("outro", texto), senha);
        EXPECT_EQ(texto.find_first_not_of("W1-0123456789ABCDEF"), std::string::npos) << texto;
        EXPECT_NE(texto, MontaSenha("outro", senha));
    }
    EXPECT_EQ(MontaSenha("U", ""), "");
    for (const char* alheio : {"", "clara", "W1-", "W1-XY", "W1-0011223344"})
        EXPECT_EQ(DesmontaSenha("U", alheio), alheio);
}

TEST(TipoAutenticacao, TextsAndNumbersConvertBothWays) {
    const struct {
        TTipoAutenticacao tipo;
        const char* texto;
        int numero, noServidor;
    } casos[] = {{TTipoAutenticacao::Nenhuma, "-1", -1, 0},
                 {TTipoAutenticacao::Windows, "0", 0, 1},
                 {TTipoAutenticacao::Servidor, "1", 1, 0}};
    for (const auto& caso : casos) {
        EXPECT_EQ(TipoAutenticacaoToStr(caso.tipo), caso.texto);
        EXPECT_EQ(StrToTipoAutenticacao(caso.texto), caso.tipo);
        EXPECT_EQ(IntToTipoAutenticacao(caso.numero), caso.tipo);
        EXPECT_EQ(TipoAutenticacaoToInt(TTipoBanco::tbSQLServer, caso.tipo), caso.noServidor);
        EXPECT_EQ(TipoAutenticacaoToInt(TTipoBanco::tbOracle, caso.tipo), -1);
    }
}

}  // namespace
}  // namespace wkd
