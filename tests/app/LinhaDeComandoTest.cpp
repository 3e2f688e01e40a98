#include "commands/LinhaDeComando.h"

#include <gtest/gtest.h>

namespace wkd {
namespace {

TEST(LinhaDeComando, TellsWizardUpdateAndOptionsApart) {
    EXPECT_TRUE(std::holds_alternative<TPedeJanela>(LeLinhaDeComando({})));
    EXPECT_EQ(std::get<TPedeJanela>(LeLinhaDeComando({"LOJA;nobkp"})).argumento, "LOJA;nobkp");

    const auto pedido = std::get<TPedeAtualizacao>(LeLinhaDeComando({"Loja São João;nobkp", "p.zip", "sobra"}));
    EXPECT_EQ(pedido.alias, "Loja São João");
    EXPECT_EQ(pedido.pacote, "p.zip");

    EXPECT_TRUE(std::holds_alternative<TPedeAjuda>(LeLinhaDeComando({"--help"})));
    EXPECT_TRUE(std::holds_alternative<TPedeVersao>(LeLinhaDeComando({"--version"})));
    EXPECT_EQ(std::get<TPedeTestaAlias>(LeLinhaDeComando({"--testa-alias", "A"})).nome, "A");
}

TEST(LinhaDeComando, SaysWhatIsMissingOrTooMuch) {
    const std::pair<std::vector<std::string>, const char*> casos[] = {
        {{"LOJA", "p.zip"}, "LOJA;"},
        {{"--nada"}, "--nada"},
        {{"--testa-alias"}, "--testa-alias"},
        {{"--novo-alias"}, "valor de --novo-alias"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "--usuario", "u"}, "valor de --database"},
        {{"--plan", "A", "p.zip"}, "Quis dizer --plano?"},
        {{"--CONFERRE=A"}, "Quis dizer --confere?"},
        {{"--plano", "A", "p.zip", "--jsom"}, "Quis dizer --json?"},
        {{"--plano", "A", "p.zip", "--menu"}, "--menu"},
        {{"--plano", "A", "p.zip", "--json=sim"}, "--json não leva valor"},
        {{"--plano", "A"}, "Número errado de argumentos"},
        {{"--plano", "A", "p.zip", "q.zip"}, "Número errado de argumentos"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "d"}, "--usuario"},
        {{"--novo-alias", " ", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u"}, "Insira"},
        {{"--novo-alias", "menu", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u"}, "outro nome"},
        {{"--novo-alias", "A;B", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u"}, "não pode ter"},
        {{"--novo-alias", "A", "--tipo", "tbOracle", "--database", "d", "--usuario", "u"}, "não tem driver"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database=", "--usuario", "u"}, "Falta o banco"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--hostname=s", "--database=d", "--usuario="},
         "Falta o usuário"},
        {{"--novo-alias", "A", "--tipo", "tbSQLServer", "--database", "d", "--usuario", "u"}, "Falta o servidor"},
        {{"--novo-alias", "A", "--tipo", "tbODBC", "--database", "d", "--usuario", "u"}, "fonte de dados"},
        {{"--novo-alias", "A", "--tipo", "tbSQLServer", "--hostname", "s,x", "--database", "d", "--usuario", "u"},
         "número da porta"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u", "--autenticacao", "2"},
         "-1, 0 ou 1"},
        {{"--novo-alias", "A", "--tipo", "firebird", "--database", "d", "--usuario", "u"}, "firebird"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u", "--senha", "s"},
         "--senha"},
        {{"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "d", "--usuario"}, "--usuario"},
        {{"LOJA;", "--todas"}, "PACOTE.zip"},
        {{"LOJA;", "p.zip", "--toda"}, "Quis dizer --todas?"},
        {{"LOJA;", "p.zip", "--tabelas"}, "valor de --tabelas"},
        {{"LOJA;", "p.zip", "--tabelas", " , "}, "separados por vírgula"},
        {{"--plano", "A", "p.zip", "--todas", "--tabelas=T"}, "--todas ou --tabelas"},
        {{"--plano", "A", "p.zip", "--json", "--silencioso"}, "Use só uma"},
        {{"--plano", "A", "p.zip", "--sql", "--html"}, "Use só uma"},
        {{"--confere", "A", "--todas"}, "--todas"},
    };
    for (const auto& [argumentos, mencao] : casos) {
        const TPedido pedido = LeLinhaDeComando(argumentos);
        ASSERT_TRUE(std::holds_alternative<TUsoIncorreto>(pedido)) << argumentos.front();
        EXPECT_NE(std::get<TUsoIncorreto>(pedido).mensagem.find(mencao), std::string::npos)
            << std::get<TUsoIncorreto>(pedido).mensagem;
    }
}

TEST(LinhaDeComando, SuggestsNothingUnlike) {
    const TPedido pedido = LeLinhaDeComando({"--desfaz"});
    EXPECT_EQ(std::get<TUsoIncorreto>(pedido).mensagem, "Opção desconhecida: --desfaz.");
}

TEST(LinhaDeComando, TakesValuesJoinedOrApartAndSwitchesAnywhere) {
    const std::vector<std::string> linhas[] = {{"--plano", "LOJA;", "a=b.zip", "--json"},
                                               {"--plano=LOJA", "--json", "a=b.zip"},
                                               {"--plano=LOJA", "a=b.zip", "--json"}};
    for (const auto& linha : linhas) {
        const auto plano = std::get<TPedePlano>(LeLinhaDeComando(linha));
        EXPECT_EQ(plano.alias, "LOJA");
        EXPECT_EQ(plano.pacote, "a=b.zip");
        EXPECT_EQ(plano.forma, TFormaDoPlano::Json);
    }
    const auto novo =
        std::get<TPedeNovoAlias>(LeLinhaDeComando({"--novo-alias=A", "--tipo=tbInterbase", "--database=--x=y",
                                                   "--usuario", "velho", "--usuario=novo", "--path="}));
    EXPECT_EQ(novo.alias.database, "--x=y");
    EXPECT_EQ(novo.alias.usuario, "novo") << "the last one counts";
    EXPECT_EQ(novo.alias.path, "");
}

TEST(LinhaDeComando, APathWithoutItsSeparatorGetsOne) {
    const std::pair<const char*, const char*> casos[] = {
        {"/dados", "/dados/"},
        {"/dados/", "/dados/"},
        {"D:\\dados", "D:\\dados\\"},
        {"D:\\dados\\", "D:\\dados\\"},
        {"D:/dados/", "D:/dados/"},
        {" /dados ", "/dados/"},
        {"C:", "C:\\"},
        {"", ""},
    };
    for (const auto& [dado, esperado] : casos) {
        const auto pedido = std::get<TPedeNovoAlias>(LeLinhaDeComando(
            {"--novo-alias", "A", "--tipo", "tbInterbase", "--database", "d", "--usuario", "u", "--path", dado}));
        EXPECT_EQ(pedido.alias.path, esperado);
    }
}

TEST(LinhaDeComando, ReadsTheWholeNewAlias) {
    const auto pedido = std::get<TPedeNovoAlias>(
        LeLinhaDeComando({"--novo-alias", "FILIAL", "--menu", "--usuario", "SYSDBA", "--tipo", "tbInterbase", "--path",
                          "/dados/", "--hostname", "srv/3055", "--database", "loja.fdb", "--autenticacao", "1"}));
    EXPECT_EQ(pedido.alias.nome, "FILIAL");
    EXPECT_EQ(pedido.alias.hostname, "srv/3055");
    EXPECT_EQ(pedido.alias.path, "/dados/");
    EXPECT_EQ(pedido.alias.autenticacao, TTipoAutenticacao::Servidor);
    EXPECT_TRUE(pedido.tambemPadrao);
}

}  // namespace
}  // namespace wkd
