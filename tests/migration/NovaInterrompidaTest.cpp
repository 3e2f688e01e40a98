#include <filesystem>

#include "NovaApoio.h"

namespace wkd {
namespace {

const TAtributos kVelhos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 20}, {"ANTIGO", "ftString", 5}};
const TAtributos kNovos = {
    {"CODIGO", "ftInteger", 0, 1, "", 1, 1}, {"NOME", "ftString", 30}, {"TIPO", "ftString", 1, 0, "n"}};
struct TMorte {};  // no std::exception: nothing on the way may swallow the end of a process

/// A table with everything that a rebuild has to bring back; `chave` 0 leaves it without key.
struct TBancoInterrompido : TBancoDaNova {
    explicit TBancoInterrompido(int chave, bool comTini) : TBancoDaNova("UTF8", comTini) {
        TAtributos velhos = kVelhos, novos = kNovos;
        velhos[0].chave = novos[0].chave = chave;
        Guardada("TCLI", velhos);
        Executa("create table TCLI (CODIGO integer not null, NOME varchar(20), ANTIGO varchar(5)" +
                std::string(chave == 1 ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        std::vector<std::string> comandos = {"insert into SINDSEC values ('TCLI', 'ICLI_NOME', 0)",
                                             "insert into SINDSECA values ('TCLI', 'ICLI_NOME', 'NOME', 1)"};
        for (int i = 1; i <= 13; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'José', 'v')");
        ExecutaTudo(comandos);
        Executa("create index ICLI_A_MAO on TCLI (CODIGO, NOME)");
        Executa("grant select on TCLI to MARIA");
        Executa("alter table TCLI add check (CODIGO > 0)");
        Executa("alter table TCLI add constraint DO_PAR unique (CODIGO, NOME)");
        Executa("comment on table TCLI is 'Clientes'");
        Executa("comment on column TCLI.NOME is 'Nome do cliente'");
        Pacote("TCLI", novos);
    }

    std::string Tudo() {
        return Retrato("TCLI") + Le("select * from BTCLI") +
               Le("select rdb$privilege from rdb$user_privileges where rdb$relation_name = 'TCLI' and rdb$user = "
                  "'MARIA'") +
               Le("select rdb$description from rdb$relations where rdb$relation_name in ('TCLI', 'BTCLI')"
                  " order by rdb$relation_name") +
               Le("select rdb$description from rdb$relation_fields where rdb$relation_name in ('TCLI', 'BTCLI')"
                  " and rdb$description is not null") +
               Le("select rdb$constraint_type from rdb$relation_constraints where rdb$relation_name = 'TCLI' order by"
                  " rdb$constraint_type");
    }

    /// A rebuild that a view stopped at the drop has left a complete backup; the table has changed since.
    void RecusaUmaVez() {
        Executa("create view VCLI as select NOME from TCLI");
        Reconstroi();
        EXPECT_EQ(Le("select VALOR from TINI where CHAVE = 'TCLI'"), "GUARDADA");
        Executa("drop view VCLI");
        ExecutaTudo({"update TCLI set NOME = 'mudou' where CODIGO = 1", "delete from TCLI where CODIGO = 2",
                     "insert into TCLI values (14, 'novo', 'n')"});
    }

    /// Statements from the n-th on are not executed any more, or only the n-th fails.
    template <class TErro>
    void Interrompe(int n, const TErro& erro, bool sempre) {
        int executados = 0;
        Conexao().Observa([&, n, sempre](std::string_view) {
            ++executados;
            if (executados == n || (sempre && executados > n)) throw erro;
        });
        chegou_ = false;
        try {
            Reconstroi();
        } catch (const TErro&) {
        }
        chegou_ = executados >= n;
        Conexao().Observa({});
    }

    /// Keeps the database as it is now, for Descongela to come back to.
    void Congela() {
        banco_.Conexao().Close();
        Conexao().Close();
        std::filesystem::copy_file(banco_.Arquivo(), Congelado());
    }
    void Descongela() {
        Conexao().Close();
        std::filesystem::remove(banco_.Arquivo());
        std::filesystem::copy_file(Congelado(), banco_.Arquivo());
        Conexao().Open();
        tela_.memo2.clear();
    }
    std::filesystem::path Congelado() const { return Pasta() / "congelado.fdb"; }

    bool chegou_ = false;
};

/// What is rebuilt, and what happens to it before and behind the interruption.
struct TVarredura {
    const char* nome;
    int chave = 1;
    bool comTini = true;
    bool segunda = false;   // it has a complete backup already, which the rebuild makes anew
    bool recriada = false;  // somebody creates the table that the drop has left missing
    std::optional<std::size_t> linhasPorCommit = {};
};

void PrintTo(const TVarredura& varredura, std::ostream* saida) { *saida << varredura.nome; }

/// Breaks off a rebuild at each of its statements in turn, runs it again, and compares with one that went through.
template <class TErro>
void Varre(const TVarredura& varredura, const TErro& erro, bool sempre) {
    TBancoInterrompido banco(varredura.chave, varredura.comTini);
    banco.ctx_.linhasPorCommit = varredura.linhasPorCommit;
    if (varredura.segunda) banco.RecusaUmaVez();
    banco.Congela();
    banco.Descongela();
    banco.Reconstroi();
    ASSERT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
    const std::string esperado = banco.Tudo();
    ASSERT_NE(esperado.find("1|TCLI|2\n"), std::string::npos) << esperado;
    ASSERT_EQ(varredura.segunda, esperado.find("1|mudou|v;3|José|v") != std::string::npos) << esperado;
    int n = 1;
    for (bool chegou = true; chegou; ++n) {
        banco.Descongela();
        banco.Interrompe(n, erro, sempre);
        chegou = banco.chegou_;
        if (varredura.recriada) banco.dm_.Atualiza.CriaTabela("TCLI", false);
        banco.Reconstroi();
        const std::string tudo = banco.Tudo();
        ASSERT_TRUE(tudo == esperado) << "statement " << n << "\n"
                                      << tudo << "\ninstead of\n"
                                      << esperado << "\n"
                                      << Junta(banco.tela_.memo2, "\n");
    }
    EXPECT_GT(n, 60);
}

class NovaInterrompidaTest : public ::testing::TestWithParam<TVarredura> {};

TEST_P(NovaInterrompidaTest, KilledAtAnyStatementTheNextRunEndsInTheSameState) { Varre(GetParam(), TMorte(), true); }

INSTANTIATE_TEST_SUITE_P(Tabelas, NovaInterrompidaTest,
                         ::testing::Values(TVarredura{"Key"}, TVarredura{"NoKey", 0}, TVarredura{"NoMarks", 1, false},
                                           TVarredura{"NoKeyNoMarks", 0, false},
                                           TVarredura{"SecondBackup", 1, true, true},
                                           TVarredura{"SecondBackupNoKey", 0, true, true},
                                           TVarredura{"CreatedBySomebody", 1, true, false, true},
                                           TVarredura{"CreatedBySomebodyNoMarks", 0, false, false, true},
                                           TVarredura{"ManyRowsACommit", 0, true, false, true, 10'000},
                                           TVarredura{"ThreeRowsACommit", 1, true, false, false, 3}),
                         [](const auto& caso) { return caso.param.nome; });

class NovaRecusadaTest : public NovaInterrompidaTest {};

TEST_P(NovaRecusadaTest, AnErrorAtAnyStatementIsRepairedByTheNextRun) {
    Varre(GetParam(), TErroBanco({"recusado", 0, "HY000", "", TFalha::Outra, false}), false);
}

INSTANTIATE_TEST_SUITE_P(Tabelas, NovaRecusadaTest,
                         ::testing::Values(TVarredura{"Key"}, TVarredura{"CreatedBySomebody", 1, true, false, true}),
                         [](const auto& caso) { return caso.param.nome; });

}  // namespace
}  // namespace wkd
