// What may happen beside a run or to it on the SQL Server that the environment variable WKD_SQLSERVER names.
#include <algorithm>
#include <set>

#include "Arquivos.h"
#include "LojaSqlServer.h"
#include "NovaApoio.h"
#include "odbc/ConexaoOdbc.h"

namespace wkd {
namespace {

constexpr std::string_view kColunasDoDicionario =
    " (ARQUIVO varchar(50), SEQUENCIA integer, NOME varchar(25), TIPO varchar(25), TAMANHO integer, CHAVE_DE_PESQUISA"
    " integer, MASCARA varchar(40), DISCRIMINACAO varchar(40), VALOR_PADRAO varchar(20), SOMENTE_LEITURA integer,"
    " VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO integer, LOOKUP_ARQUIVO varchar(50),"
    " LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), LOOKUP_CP_CHAVE varchar(25), LOOKUP_CP_RETORNO"
    " varchar(25), LOG integer, CALCULO varchar(250));\n";

/// The dictionary's tables and one of the business, in which a number becomes a text.
std::string Roteiro() {
    std::string roteiro;
    for (const auto* sufixo : {"", "_USER"})
        roteiro += "create table SARQUIVO" + std::string(sufixo) +
                   " (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer);\ncreate table SATRIB" + sufixo +
                   std::string(kColunasDoDicionario);
    return roteiro +
           "create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer default 0);\n"
           "create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), CAMPO varchar(25), SEQUENCIA integer);\n"
           "create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(50));\n"
           "create table TCHAVE (CODIGO varchar(10) not null primary key, QUANTO integer);\n"
           "insert into TCHAVE values ('A', 42);\n"
           "insert into TCHAVE values ('B', 7);\n"
           "insert into SARQUIVO values ('1', 'TCHAVE', 1);\n"
           "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
           " ('TCHAVE', 1, 'CODIGO', 'ftString', 10, 1);\n"
           "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
           " ('TCHAVE', 2, 'QUANTO', 'ftInteger', 0, 0);\n";
}

/// A server with one table to rebuild, and what happens to it meanwhile.
class SqlServerAdverso : public testing::Test {
  protected:
    void SetUp() override {
        if (!TBancoSqlServer::Instalado()) GTEST_SKIP() << "WKD_SQLSERVER is not set";
        Monta();
    }

    void Monta() {
        EscreveArquivo(pasta_ / "roteiro.sql", Roteiro());
        loja_.reset();
        loja_ = std::make_unique<TLojaSqlServer>(pasta_ / "roteiro.sql");
        opcoes_.pastaPrograma = opcoes_.pastaCorrente = loja_->Pasta().Caminho();
        Modulo().Atualiza.SetPastaComandos(loja_->Pasta().Caminho());
        CarregaPacote(Modulo(), "TCHAVE", {{"CODIGO", "ftString", 12, 1}, {"QUANTO", "ftString", 20}});
    }

    void Reconstroi() {
        Modulo().AtualizaListaDeTabelas();
        Modulo().SarquivoVelho.Open();
        Modulo().SatribVelho.Open();
        Modulo().SArquivoNovo.First();
        TContexto ctx{Modulo(), opcoes_, estado_, {}, {}};
        Nova(ctx, "TCHAVE");
    }

    static std::unique_ptr<TConnection> Outra() {
        auto conexao = CriaConexaoOdbc(TBancoSqlServer::Parametros());
        conexao->Open();
        return conexao;
    }
    TDataModulo& Modulo() { return loja_->Modulo(); }
    TConnection& Conexao() { return loja_->Conexao(); }
    std::string Le(std::string_view sql) { return Linhas(Conexao(), sql); }

    TPastaTemporaria pasta_;
    std::unique_ptr<TLojaSqlServer> loja_;
    TOpcoes opcoes_;
    TEstado estado_;
};

/// Another program, which writes into TCHAVE before each statement of the run whenever the server lets it.
class TEscritor {
  public:
    explicit TEscritor(std::unique_ptr<TConnection> conexao) : conexao_(std::move(conexao)) {
        conexao_->ExecuteDirect("set lock_timeout 20");
    }

    void Escreve() {
        const std::string numero = std::to_string(++tentativas_);
        if (Executa("insert into TCHAVE (CODIGO, QUANTO) values ('W" + numero + "', '1')"))
            incluidas_.insert("W" + numero);
        if (Executa("update TCHAVE set QUANTO = '" + numero + "' where CODIGO = 'A'")) quanto_ = numero;
    }

    const std::set<std::string>& Incluidas() const { return incluidas_; }
    /// What it wrote into the row "A" at last; empty for nothing.
    const std::string& Quanto() const { return quanto_; }

  private:
    bool Executa(const std::string& sql) {
        try {
            conexao_->ExecuteDirect(sql);
            return true;
        } catch (const TErroBanco&) {
            return false;  // locked, or without table just now
        }
    }

    std::unique_ptr<TConnection> conexao_;
    std::set<std::string> incluidas_;
    std::string quanto_;
    int tentativas_ = 0;
};

TEST_F(SqlServerAdverso, NoRowAndNoUpdateOfAnotherProgramIsLostWhateverTheMomentOfTheRebuild) {
    for (const std::string_view desde : {"Create Table BTCHAVE", "update SARQUIVO set", "drop table TCHAVE"}) {
        Monta();
        TEscritor escritor(Outra());
        bool escreve = false;
        Conexao().Observa([&](std::string_view comando) {
            escreve = escreve || comando.starts_with(desde);
            if (escreve) escritor.Escreve();
        });
        Reconstroi();
        Conexao().Observa(nullptr);
        EXPECT_TRUE(escreve) << desde;
        const auto codigos = Divide(Le("select CODIGO from TCHAVE"), ';');
        const std::set<std::string> naTabela(codigos.begin(), codigos.end());
        EXPECT_TRUE(std::ranges::includes(naTabela, escritor.Incluidas()))
            << desde << ": " << escritor.Incluidas().size() << " written, " << naTabela.size() - 1 << " there";
        EXPECT_EQ(Le("select QUANTO from TCHAVE where CODIGO = 'A'"),
                  escritor.Quanto().empty() ? "42" : escritor.Quanto())
            << desde;
    }
}

TEST_F(SqlServerAdverso, ARowThatTheBackupRefusesEndsTheRebuildBeforeTheDrop) {
    const auto outra = Outra();
    bool criou = false;
    Conexao().Observa([&](std::string_view comando) {
        if (comando.starts_with("insert into BTCHAVE") && !std::exchange(criou, true))
            outra->ExecuteDirect("alter table BTCHAVE add constraint CK_BTCHAVE check (CODIGO <> 'B')");
    });
    Reconstroi();
    Conexao().Observa(nullptr);
    EXPECT_TRUE(criou);
    EXPECT_EQ(Le("select CODIGO, QUANTO from TCHAVE order by CODIGO"), "A|42;B|7");
    EXPECT_EQ(Le("select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TCHAVE'"), "1");
    EXPECT_TRUE(estado_.falhouApagar);
    EXPECT_TRUE(TTelaDeTeste::Contem(loja_->Tela().memo2, "TCHAVE não reconstruída"))
        << Junta(loja_->Tela().memo2, "\n");
    Reconstroi();
    EXPECT_FALSE(estado_.falhouApagar) << "the next run succeeds";
    EXPECT_EQ(Le("select CODIGO, QUANTO from TCHAVE order by CODIGO"), "A|42;B|7");
}

TEST_F(SqlServerAdverso, ANumberOfMoreDigitsThanTheProgramsOwnIsCopiedWhole) {
    const std::string linhas = "A|-12345678901234567890123.45;B|99999999999999999999999999999999.99";
    Conexao().ExecuteDirect("alter table TCHAVE add LARGO decimal(34,2)");
    for (const auto& linha : Divide(linhas, ';'))
        Conexao().ExecuteDirect("update TCHAVE set LARGO = " + linha.substr(2) + " where CODIGO = '" + linha[0] + "'");
    Reconstroi();
    EXPECT_FALSE(estado_.falhouApagar);
    EXPECT_EQ(Le("select CODIGO, LARGO from BTCHAVE order by CODIGO"), linhas);
}

}  // namespace
}  // namespace wkd
