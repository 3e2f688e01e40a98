// What may happen beside a run or to it on the SQL Server that the environment variable WKD_SQLSERVER names.
#include <algorithm>
#include <set>

#include "Arquivos.h"
#include "Intermediario.h"
#include "LojaSqlServer.h"
#include "NovaApoio.h"
#include "OpcoesDeTeste.h"
#include "alter/ObjetosDaTabela.h"
#include "context/CargaDoPacote.h"
#include "copy/Conferencia.h"
#include "odbc/ConexaoOdbc.h"
#include "package/Pacote.h"
#include "packet/DataPacket.h"
#include "process/Interrupcao.h"
#include "run/Atualizacao.h"
#include "server/Vigia.h"
#include "tables/MarcaDaBackup.h"

namespace wkd {
namespace {

using namespace std::chrono_literals;

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
           "create table CSENHA (CODIGO integer, FLAG1 integer);\n"
           "create table TDEPOIS (CODIGO varchar(10) not null primary key);\n"
           "insert into TDEPOIS values ('D');\n"
           "insert into SARQUIVO values ('1', 'TCHAVE', 1);\n"
           "insert into SARQUIVO values ('1', 'TDEPOIS', 1);\n"
           "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
           " ('TDEPOIS', 1, 'CODIGO', 'ftString', 10, 1);\n"
           "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
           " ('TCHAVE', 1, 'CODIGO', 'ftString', 10, 1);\n"
           "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
           " ('TCHAVE', 2, 'QUANTO', 'ftInteger', 0, 0);\n";
}

/// Appends a row of the values named; the other fields have none.
void Acrescenta(TDataPacket& pacote, const std::map<std::string, TValor>& valores) {
    TLinha linha;
    for (const auto& campo : pacote.campos) {
        const auto achado = valores.find(Maiusculas(campo.nome));
        linha.push_back(achado == valores.end() ? TValor() : achado->second);
    }
    pacote.linhas.push_back(std::move(linha));
}

/// A package for both tables, whose keys get two letters more.
void Empacota(const std::filesystem::path& pacote) {
    const TPastaTemporaria pasta;
    const auto exemplo = std::filesystem::path(WKD_EXEMPLOS) / "pacote";
    auto tabelas = LePacote(exemplo / "SARQUIVO.WKD"), colunas = LePacote(exemplo / "SAtrib.WKD");
    tabelas.linhas.clear();
    colunas.linhas.clear();
    for (const char* tabela : {"TCHAVE", "TDEPOIS"}) {
        Acrescenta(tabelas, {{"COD_MODULO", "1"}, {"NOME_ARQUIVO", tabela}, {"VERSAO", 2}});
        Acrescenta(colunas, {{"ARQUIVO", tabela},
                             {"SEQUENCIA", 1},
                             {"NOME", "CODIGO"},
                             {"TIPO", "ftString"},
                             {"TAMANHO", 12},
                             {"CHAVE_DE_PESQUISA", 1}});
    }
    Acrescenta(colunas, {{"ARQUIVO", "TCHAVE"}, {"SEQUENCIA", 2}, {"NOME", "QUANTO"}, {"TIPO", "ftInteger"}});
    GravaPacote(tabelas, pasta / "SARQUIVO.WKD", TFormaPacote::Xml);
    GravaPacote(colunas, pasta / "SAtrib.WKD", TFormaPacote::Xml);
    CompactaZip({pasta / "SARQUIVO.WKD", pasta / "SAtrib.WKD"}, pacote);
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

    TCopiasConfirmadas Reconstroi(std::string_view tabela = "TCHAVE") {
        Modulo().AtualizaListaDeTabelas();
        TContexto ctx{Modulo(), opcoes_, estado_, {}, {}};
        LeDicionarioNovo(ctx);
        LeDicionarioGravado(ctx);
        Modulo().SArquivoNovo.First();
        Nova(ctx, tabela);
        return ctx.evidencia.copias;
    }

    /// A table of forty rows with a number for its key, from -57 on, some of whose names are too long for the package.
    void MontaNumeros(const std::string& chave) {
        Monta();
        for (const std::string& comando :
             {"create table TNUMERO (CODIGO integer not null" + chave + ", NOME nvarchar(20), QUANTO float)",
              std::string("with n as (select 1 as i union all select i + 1 from n where i < 40) insert into TNUMERO "
                          "select (i - 20) * 3, replicate('x', i % 15), i / 3e0 from n"),
              std::string("update TNUMERO set NOME = null where CODIGO = 9"),
              std::string("insert into SARQUIVO values ('1', 'TNUMERO', 1)"),
              std::string("insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values"
                          " ('TNUMERO', 1, 'CODIGO', 'ftInteger', 0, 1)")})
            Conexao().ExecuteDirect(comando);
        CarregaPacote(
            Modulo(), "TNUMERO",
            {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 10}, {"QUANTO", "ftFloat"}, {"NOVA", "ftInteger"}});
    }

    /// Rebuilds it until the n-th statement that changes something of it, from which on nothing is executed; false when
    /// there are fewer.
    bool ReconstroiNumerosAte(int n) {
        Conexao().Observa([&, mudancas = 0, parou = false](std::string_view comando) mutable {
            const bool muda = comando.find("TNUMERO") != std::string_view::npos && !comando.starts_with("select");
            parou = parou || (muda && ++mudancas == n);
            if (parou) throw TInterrompida();
        });
        bool interrompida = false;
        try {
            Reconstroi("TNUMERO");
        } catch (const TInterrompida&) {
            interrompida = true;
        }
        Conexao().Observa(nullptr);
        return interrompida;
    }

    /// The whole run with the package of both tables.
    void Atualiza() {
        auto opcoes = OpcoesDeTeste(loja_->Pasta().Caminho());
        opcoes.completo = true;
        opcoes.pausaDeReconexao = 100ms;
        opcoes.querysAnteriores = opcoes.querysPosteriores = false;
        Modulo().nomeAlias = "LOJA";
        TAtualizacao(Modulo(), opcoes, estado_).Executa();
    }

    /// From now on the run reaches the server over a network that can fail.
    void PelaRede() {
        const auto servidor = TBancoSqlServer::Parametros().Valor("Server");
        rede_ = std::make_unique<TIntermediario>(std::stoi(servidor.substr(servidor.find(',') + 1)));
        Modulo().SQLConnection1.Aliases().INIGravaString("LOJA", "Hostname",
                                                         "127.0.0.1," + std::to_string(rede_->Porta()));
        Modulo().SQLConnection1.SetAlias("LOJA");
        Modulo().SQLConnection1.Open();
        Modulo().AtualizaListaDeTabelas();
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
    std::unique_ptr<TIntermediario> rede_;
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

TEST_F(SqlServerAdverso, RowsOfANumberedKeyGoInRangesAndAllComeBackWhateverTheMomentOfACut) {
    const auto linhas = [&] { return Le("select CODIGO, NOME, QUANTO, NOVA from TNUMERO order by CODIGO"); };
    MontaNumeros(" primary key");
    const std::string esperadas = Le(
        "select CODIGO, case when len(NOME) > 10 then null else NOME end, QUANTO, null from TNUMERO order by CODIGO");
    int idas = 0, voltas = 0;
    Conexao().Observa([&](std::string_view comando) {
        idas += Insere(comando, "BTNUMERO");
        voltas += Insere(comando, "TNUMERO");
    });
    Reconstroi("TNUMERO");
    Conexao().Observa(nullptr);
    EXPECT_EQ(idas, 1);
    EXPECT_EQ(voltas, 5 + 2 * 8) << "ranges of four batches, and eight rows of the client's in two tries each";
    EXPECT_EQ(linhas(), esperadas);
    const std::string indices = "select count(*) from sys.indexes where object_id = object_id('BTNUMERO')";
    const std::string deles = Le(indices);
    bool interrompida = true;
    for (int n = 1; interrompida; n += 4) {
        MontaNumeros(" primary key");
        interrompida = ReconstroiNumerosAte(n);
        Reconstroi("TNUMERO");
        ASSERT_EQ(linhas(), esperadas) << "cut at change " << n << ": " << Junta(loja_->Tela().memo2, "\n");
        ASSERT_EQ(Le("select count(*) from BTNUMERO"), "40") << n;
        ASSERT_EQ(Le(indices), deles) << n;
    }
}

/// A rehearsal tells what they took.
TEST_F(SqlServerAdverso, CommitsThatAreMeasuredAreWaitedForByThemselves) {
    opcoes_.medeCommits = true;
    MontaNumeros(" primary key");
    const TCopiasConfirmadas copias = Reconstroi("TNUMERO");
    EXPECT_EQ(Le("select count(*) from TNUMERO"), "40");
    EXPECT_EQ(copias.registros, 80);
    EXPECT_EQ(copias.commits, 1 + 4);
    EXPECT_GT(copias.segundos, 0);
}

/// Of those that share a number the table takes one, and the rejects file the others.
TEST_F(SqlServerAdverso, RowsThatShareANumberAreNoRange) {
    MontaNumeros("");
    Conexao().ExecuteDirect("insert into TNUMERO select CODIGO, 'gêmeo', 1 from TNUMERO where CODIGO in (-57, -27, 0)");
    Reconstroi("TNUMERO");
    EXPECT_EQ(Le("select count(*) from TNUMERO"), "40");
    EXPECT_EQ(Le("select count(*) from BTNUMERO"), "43");
    const std::string rejeitados = LeArquivo(loja_->Pasta() / "AtualizaWKD.rejeitados.jsonl");
    for (const char* codigo : {"-57", "-27", "0"})
        EXPECT_NE(rejeitados.find("{\"CODIGO\": " + std::string(codigo) + ", \"NOME\": \"gêmeo\""), std::string::npos)
            << codigo << " in " << rejeitados;
}

TEST_F(SqlServerAdverso, ALostConnectionCostsItsTableAloneAndTheNextRunDoesIt) {
    struct TCaso {
        const char* comando;
        std::function<void()> acao;
    };
    const auto derruba = [this] { Outra()->Derruba(Conexao().Numero()); };
    for (const TCaso& caso :
         {TCaso{"Create Table BTCHAVE", derruba}, TCaso{"Create Table TCHAVE", [this] { rede_->CortaAVolta(); }},
          TCaso{"drop table TCHAVE", [this] { rede_->Emudece(); }}}) {
        SCOPED_TRACE(caso.comando);
        Monta();
        PelaRede();
        Empacota(loja_->Pasta() / "pacote.zip");
        bool caiu = false;
        Conexao().Observa([&](std::string_view comando) {
            if (comando.starts_with(caso.comando) && !std::exchange(caiu, true)) caso.acao();
        });
        {
            const TVigia vigia(Modulo().SQLConnection1, {.aviso = 1s, .pergunta = 500ms, .limite = 4s}, [](auto) {});
            Atualiza();
        }
        Conexao().Observa(nullptr);
        EXPECT_TRUE(caiu);
        EXPECT_TRUE(TTelaDeTeste::Contem(loja_->Tela().memo1, "Conexão com o banco de dados reaberta"));
        EXPECT_NE(Le("select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TCHAVE'"), "2");
        EXPECT_EQ(Le("select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TDEPOIS'"), "2")
            << Junta(loja_->Tela().memo2, "\n");
        EXPECT_EQ(Le("select CODIGO from TDEPOIS"), "D");
        EXPECT_EQ(ColunaDeNome(Conexao().Colunas("TDEPOIS"), "CODIGO")->tamanho, 12);

        Atualiza();
        EXPECT_EQ(Le("select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TCHAVE'"), "2");
        EXPECT_EQ(Le("select CODIGO, QUANTO from TCHAVE order by 1"), "A|42;B|7");
        EXPECT_EQ(ColunaDeNome(Conexao().Colunas("TCHAVE"), "CODIGO")->tamanho, 12);
    }
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

TEST_F(SqlServerAdverso, WhoMayNotSeeWhatTheServerWorksAtCannotTell) {
    const auto conexao = Outra();
    conexao->Observa([](std::string_view comando) {
        if (comando.find("sys.dm_exec_requests") != std::string_view::npos)
            throw TErroBanco({"VIEW SERVER STATE permission was denied", 300, "42000", std::string(comando)});
    });
    EXPECT_FALSE(conexao->Trabalha(Conexao().Numero()));
    EXPECT_FALSE(conexao->InTransaction());
    EXPECT_EQ(Linhas(*conexao, "select count(*) from TCHAVE"), "2");
}

TEST_F(SqlServerAdverso, EveryConnectionOfALostOneIsEndedSoThatNoneKeepsATable) {
    auto perdida = Outra();
    const auto reserva = perdida->Reserva("TCHAVE");
    const auto linhas = perdida->Prepara("select CODIGO from TCHAVE");
    linhas->Abre();
    Outra()->Derruba(perdida->Numero());
    const auto outra = Outra();
    outra->ExecuteDirect("set lock_timeout 3000");
    EXPECT_NO_THROW(outra->ExecuteDirect("drop table TCHAVE"));
}

TEST_F(SqlServerAdverso, AnIndexComesBackWithDirectionsAndTheColumnsThatItKeepsAlong) {
    Conexao().ExecuteDirect("create table TINDICE (A integer not null, B integer, C integer)");
    Conexao().ExecuteDirect("create unique index IX_TINDICE on TINDICE (A, B desc) include (C)");
    TContexto ctx{Modulo(), opcoes_, estado_, {}, {}};
    TIndice indice;
    indice.nome = Le("select name from sys.indexes where object_id = object_id('TINDICE') and index_id > 1");
    auto comoEra = IndicesComoEram(ctx, "TINDICE", {indice}).at(0);
    EXPECT_EQ(Maiusculas(Troca(Troca(comoEra.comando, indice.nome, "IX"), "\"", "")),
              "CREATE UNIQUE INDEX IX ON TINDICE (A,B DESC) INCLUDE (C)");
    std::ranges::sort(comoEra.colunas);
    EXPECT_EQ(Maiusculas(Junta(comoEra.colunas, ",")), "A,B,C") << "all that keep a column from being altered";
    Conexao().ExecuteDirect("drop index IX_TINDICE on TINDICE");
    Conexao().ExecuteDirect(comoEra.comando);
    EXPECT_EQ(Conexao().Indices("TINDICE").size(), 1u);
}

TEST_F(SqlServerAdverso, OnlyACollationThatIsNotTheDatabasesOwnIsToldAsLost) {
    Conexao().ExecuteDirect("create table TCOLACAO (A varchar(10), B varchar(10) collate Latin1_General_BIN2)");
    TContexto ctx{Modulo(), opcoes_, estado_, {}, {}};
    const auto perdidas = PropriedadesPerdidas(ctx, "TCOLACAO");
    ASSERT_EQ(perdidas.size(), 1u);
    EXPECT_EQ(Maiusculas(perdidas[0].nome), "B");
}

TEST_F(SqlServerAdverso, AServerThatFallsSilentIsGivenUpAtTheLimitWhateverTheCall) {
    using TPasso = std::function<void(THBNConnection&, const std::function<void()>&)>;
    const TPasso le = [](auto& conexao, const auto& emudece) {
        Linhas(conexao, "select 1 as um");
        emudece();
        Linhas(conexao, "select QUANTO from TCHAVE");
    };
    const TPasso escreve = [](auto& conexao, const auto& emudece) {
        emudece();
        conexao.ExecuteDirect("update TCHAVE set QUANTO = 1");
    };
    const TPasso termina = [](auto& conexao, const auto& emudece) {
        TTransacao transacao(conexao);
        conexao.Prepara("update TCHAVE set QUANTO = 1")->Executa();
        emudece();
        transacao.Commit();
    };
    const TPasso desfaz = [](auto& conexao, const auto& emudece) {
        TTransacao transacao(conexao);
        conexao.Prepara("update TCHAVE set QUANTO = 1")->Executa();
        emudece();
    };
    int numero = 0;
    for (const auto& passo : {le, escreve, termina, desfaz}) {
        SCOPED_TRACE(numero);
        PelaRede();
        auto& conexao = Modulo().SQLConnection1;
        const TVigia vigia(conexao, {.aviso = 500ms, .pergunta = 500ms, .limite = 2s}, [](auto) {});
        const auto inicio = std::chrono::steady_clock::now();
        try {
            passo(conexao, [&] { rede_->Emudece(); });
            EXPECT_EQ(numero, 3) << "what rolls back tells nothing";
        } catch (const TErroBanco& erro) {
            EXPECT_TRUE(erro.ConexaoPerdida()) << erro.what();
        }
        EXPECT_LT(std::chrono::steady_clock::now() - inicio, 30s);
        ++numero;
    }
}

TEST_F(SqlServerAdverso, TheProofSeesTheLastByteOfALongContentInATableWithoutKey) {
    for (const std::string tabela : {"TLIVRE", "BTLIVRE"}) {
        Conexao().ExecuteDirect("create table " + tabela + " (FOTO image, NOTA ntext)");
        const auto insere = Conexao().Prepara("insert into " + tabela + " (FOTO, NOTA) values (:foto, :nota)");
        insere->Atribui("FOTO", TBytes{std::string(20'000, 'x') + tabela[0]});
        insere->Atribui("NOTA", std::string(20'000, 'y') + tabela[0]);
        insere->Executa();
    }
    const auto diferente = ConfereComBackup(Conexao(), "BTLIVRE", "TLIVRE", {});
    EXPECT_EQ(Maiusculas(Junta(diferente.colunas, ",")), "FOTO,NOTA");
    EXPECT_TRUE(ConfereComBackup(Conexao(), "TLIVRE", "TLIVRE", {}).Igual());
}

}  // namespace
}  // namespace wkd
