// Columns that count up: rows without a number get the next one.
#include "NovaApoio.h"

namespace wkd {
namespace {

const TAtributo kNome = {"NOME", "ftString", 10}, kValor = {"VALOR", "ftInteger"};

struct TCaso {
    const char* nome;
    TAtributos novos;
    const char* criacao = "create table TNUM (NOME varchar(10), VALOR integer)";
    const char* numeros = "25|1|25";
};

struct TBancoNumerado : TBancoDaNova {
    TBancoNumerado(const TCaso& caso, int linhas) {
        const bool nomeNaChave = std::string_view(caso.criacao).find("primary key (NOME)") != std::string_view::npos;
        Guardada("TNUM", {{"NOME", "ftString", 10, nomeNaChave}, kValor});
        Executa(caso.criacao);
        std::vector<std::string> comandos;
        for (int i = 1; i <= linhas; ++i)
            comandos.push_back("insert into TNUM values ('n" + std::to_string(i) + "', " + std::to_string(i) + ")");
        ExecutaTudo(comandos);
        Pacote("TNUM", caso.novos);
    }
};

TAtributo Numero(int chave, const char* padrao = "") { return {"ID", "ftInteger", 0, chave, padrao, 1, 1}; }

TEST(NumeracaoTest, ANewColumnThatCountsUpNumbersTheRows) {
    const TAtributo real = {"VALOR", "ftFloat"}, nomeChave = {"NOME", "ftString", 10, 1};
    const char* comChave = "create table TNUM (NOME varchar(10) not null, VALOR integer, primary key (NOME))";
    const TCaso casos[] = {
        {"as key", {Numero(1), kNome, kValor}},
        {"as key, rows through the client", {Numero(1), kNome, real}},
        {"as part of the key", {Numero(1), nomeChave, kValor}, comChave},
        {"as part of the key, rows through the client", {Numero(1), nomeChave, real}, comChave},
        {"required, without key", {Numero(0), kNome, {"VALOR", "ftInteger", 0, 1}}},
        {"required, without key, rows through the client", {Numero(0), kNome, real}},
        {"default of zero", {Numero(1, "0"), kNome, kValor}},
        {"default of its own", {Numero(0, "7"), kNome, real}, TCaso{}.criacao, "1|7|7"},
        {"two of them", {Numero(1), {"OUTRO", "ftInteger", 0, 0, "", 1, 1}, kNome, kValor}},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.nome);
        TBancoNumerado banco(caso, 25);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select count(*), count(distinct NOME) from TNUM"), "25|25");
        EXPECT_EQ(banco.Le("select count(distinct ID), min(ID), max(ID) from TNUM"), caso.numeros);
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << Junta(banco.tela_.memo2, "\n");
        EXPECT_EQ(banco.Rejeitados(), "");
    }
}

TEST(NumeracaoTest, AResumedRestoreGoesOnWithTheNumbers) {
    for (const TAtributo& valor : {kValor, TAtributo{"VALOR", "ftFloat"}}) {
        SCOPED_TRACE(valor.tipo);
        TBancoNumerado banco({"", {Numero(1), kNome, valor}}, 40);
        int lotes = 0;
        banco.Conexao().Observa([&](std::string_view sql) {
            if (Insere(sql, "TNUM") && ++lotes == 3) throw TErroBanco({"caiu", 0, "08006", "", TFalha::Conexao, true});
        });
        EXPECT_THROW(banco.Reconstroi(), TErroBanco);
        banco.Conexao().Observa({});
        banco.Conexao().Close();
        banco.Conexao().Open();
        ASSERT_EQ(banco.Le("select count(*), max(ID) from TNUM"), "22|22");
        banco.Executa("insert into TNUM (ID, NOME) values (23, 'entrou')");
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select count(*), count(distinct NOME), min(ID), max(ID) from TNUM"), "41|41|1|41");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << Junta(banco.tela_.memo2, "\n");
        EXPECT_EQ(banco.Rejeitados(), "");
    }
}

TEST(NumeracaoTest, RowsOfABatchThatIsStoredAgainKeepNumbersOfTheirOwn) {
    TBancoNumerado banco({"", {Numero(1), kNome, kValor}}, 25);
    bool restaura = false, falhou = false;
    banco.Conexao().Observa([&](std::string_view sql) {
        restaura = restaura || Insere(sql, "TNUM");
        if (!restaura || falhou || sql != "commit") return;
        falhou = true;
        throw TErroBanco({"recusado", 0, "HY000", "", TFalha::Outra, false});
    });
    banco.Reconstroi();
    EXPECT_TRUE(falhou);
    EXPECT_EQ(banco.Le("select count(*), count(distinct NOME), count(distinct ID) from TNUM where ID > 0"), "25|25|25");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << Junta(banco.tela_.memo2, "\n");
}

}  // namespace
}  // namespace wkd
