// Backup, proof and the way back, on the embedded engine and on a server.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "Explicacao.h"
#include "Intermediario.h"
#include "LojaDeBackup.h"
#include "process/Sha256.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

bool Contem(const std::string& texto, std::string_view parte) { return texto.find(parte) != std::string::npos; }

/// What the person reads when it does not succeed.
std::string Falha(const std::function<void()>& trabalho) {
    try {
        trabalho();
        return "";
    } catch (const std::exception& erro) {
        return ExplicaFalha(erro);
    }
}

/// The engine's own threads may hold its locks when the process ends: these are in a folder of the run's own.
int Corre(const fs::path& pasta, int passo, const std::string& arquivo = "", const std::string& desde = "") {
    const fs::path travas = pasta / ("travas" + std::to_string(passo));
    fs::create_directories(travas);
    const std::string comando = "FIREBIRD_LOCK='" + travas.string() + "' '" WKD_CORRIDA_DE_BACKUP "' '" +
                                pasta.string() + "' " + std::to_string(passo) +
                                (arquivo.empty() ? "" : " '" + arquivo + "' '" + desde + "'") + " 2>>'" +
                                (pasta / "erros").string() + "'";
    const int estado = std::system(comando.c_str());
    return WIFEXITED(estado) ? WEXITSTATUS(estado) : -1;
}

TEST(Sha256, IsThatOfTheStandard) {
    const std::pair<std::string, const char*> casos[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& [texto, esperado] : casos) {
        TSha256 soma;
        for (std::size_t i = 0; i < texto.size(); i += 61) soma.Soma(std::string_view(texto).substr(i, 61));
        EXPECT_EQ(soma.Valor(), esperado);
    }
}

class NosDoisMotores : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        if (GetParam() && !TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    }
    static std::string Servidor() { return GetParam() ? TServidorFirebird::DoProcesso().Endereco() : ""; }
};
INSTANTIATE_TEST_SUITE_P(Motor, NosDoisMotores, testing::Bool(),
                         [](const auto& p) { return p.param ? "servidor" : "embutido"; });

TEST_P(NosDoisMotores, ABackupComesBackAsItWas) {
    TLojaDeBackup loja(Servidor());
    loja.Conexao().ExecuteDirect("create descending index IX_TESTE on TVENDA (DATA_VENDA)");
    loja.Conexao().ExecuteDirect("create table TBLOB (COD integer not null primary key, FOTO blob sub_type 0)");
    loja.Conexao().ExecuteDirect("insert into TBLOB select NUMERO, cast('ação ' || NUMERO as blob) from TVENDA");
    const auto antes = loja.Conteudo();
    const auto feito = loja.Backup();
    EXPECT_EQ(loja.Arquivos(loja.Backups()),
              (std::vector<std::string>{feito.manifesto.arquivo, feito.manifesto.arquivo + ".json"}));
    EXPECT_EQ(feito.manifesto.antes, antes);
    EXPECT_TRUE(feito.manifesto.depois.empty());
    EXPECT_EQ(Sha256DoArquivo(feito.arquivo), feito.manifesto.sha256);
    EXPECT_EQ(fs::status(feito.arquivo).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(LeManifesto(feito.arquivo)->prova);

    const auto veredito = loja.Prova(feito.arquivo);
    EXPECT_TRUE(veredito.bom) << veredito.frase << Junta(veredito.achados, "\n");
    EXPECT_EQ(LeManifesto(feito.arquivo)->prova->frase, veredito.frase);
    EXPECT_EQ(loja.Arquivos(loja.Pasta()), std::vector<std::string>{"loja.fdb"});  // the copy is gone

    EXPECT_TRUE(loja.Prova(feito.arquivo, loja.Banco("LOJA_res.fdb")).bom);
    EXPECT_EQ(loja.Conteudo("LOJA_res.fdb"), antes);
    EXPECT_EQ(loja.Conteudo(), antes);
}

TEST_P(NosDoisMotores, ADatabaseThatNobodyChangesIsReadOnce) {
    TLojaDeBackup loja(Servidor());
    int vezes = 0;
    FazBackup(loja.Conexao(), {"LOJA", loja.Backups(), 0},
              [&](const TProgresso& progresso) { vezes += progresso.texto == "Lendo TCIDADE: 0 registros"; });
    EXPECT_EQ(vezes, 1);
}

TEST_P(NosDoisMotores, ACopyThatDiffersIsNotGood) {
    const std::pair<const char*, const char*> casos[] = {
        {"update TCIDADE set NOME = 'X' where CODIGO = 1", "TCIDADE: o conteúdo dos registros é outro"},
        {"delete from TVENDA_ITENS where ITEM = 1", "TVENDA_ITENS: "},
        {"insert into TESTADO select first 1 * from TESTADO", ""},
        {"alter table TPRODUTO add SOBRA integer", "TPRODUTO: sobra SOBRA integer"},
        {"create index IX_SOBRA on TVENDA (DATA_VENDA)", "TVENDA: sobra índice IX_SOBRA"},
        {"alter index IX_DORME inactive", "TVENDA: falta índice IX_DORME (DATA_VENDA); sobra índice IX_DORME inativo"},
        {"drop table CSENHA", "CSENHA: falta na cópia"},
        {"create table TINTRUSA (A integer)", "TINTRUSA: sobra na cópia"},
    };
    TLojaDeBackup loja(Servidor());
    loja.Conexao().ExecuteDirect("create index IX_DORME on TVENDA (DATA_VENDA)");
    const auto feito = loja.Backup();
    const auto servidor = CriaServidorDeBackup(loja.Conexao());
    const std::string banco = loja.Banco("LOJA_res.fdb");
    for (const auto& [comando, achado] : casos) {
        ASSERT_TRUE(loja.Prova(feito.arquivo, banco).bom);
        std::string recusa;
        try {
            loja.Outra("LOJA_res.fdb")->ExecuteDirect(comando);
        } catch (const TErroBanco& erro) {
            recusa = erro.what();  // a key that refuses what would differ
        }
        const auto veredito = ConfereCopia(*servidor, banco, feito.manifesto, kNinguem);
        EXPECT_EQ(veredito.bom, !recusa.empty()) << comando;
        if (recusa.empty()) {
            EXPECT_TRUE(Contem(Junta(veredito.achados, "\n"), achado)) << Junta(veredito.achados, "\n");
        }
        servidor->Apaga(banco);
    }
}

TEST_P(NosDoisMotores, ATableChangedMeanwhileIsNamedAndDoesNotFail) {
    TLojaDeBackup loja(Servidor());
    auto feito = loja.Backup();
    feito.manifesto.depois["TCIDADE"] = {{}, 1, "1"};
    const std::string banco = loja.Banco("LOJA_res.fdb");
    loja.Prova(feito.arquivo, banco);
    loja.Outra("LOJA_res.fdb")->ExecuteDirect("delete from TCIDADE");
    const auto veredito = ConfereCopia(*CriaServidorDeBackup(loja.Conexao()), banco, feito.manifesto, kNinguem);
    EXPECT_TRUE(veredito.bom);
    EXPECT_TRUE(Contem(Junta(veredito.achados, "\n"), "TCIDADE: outros a mudaram")) << Junta(veredito.achados, "\n");
}

TEST(Backup, OthersMayWriteMeanwhile) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    loja.Conexao().ExecuteDirect("create table TMOVIMENTO (COD integer not null primary key)");
    std::atomic<bool> fim = false;
    std::thread escritor([&] {
        const auto outra = loja.Outra();
        for (int i = 0; !fim; ++i) outra->ExecuteDirect("insert into TMOVIMENTO values (" + std::to_string(i) + ")");
    });
    std::vector<TBackupFeito> feitos;
    std::string falha = Falha([&] { feitos.push_back(loja.Backup()); });
    fim = true;
    escritor.join();
    ASSERT_EQ(falha, "");
    const auto veredito = loja.Prova(feitos.front().arquivo);
    EXPECT_TRUE(veredito.bom) << veredito.frase << Junta(veredito.achados, "\n");
}

TEST(Backup, OldOnesGoOnlyWhenAsked) {
    TLojaDeBackup loja;
    for (const char* nome : {"LOJA_20200101_000000.fbk", "LOJA_20210101_000000.fbk", "LOJA2_20200101_000000.fbk"}) {
        EscreveArquivo(loja.Backups() / nome, "x");
        EscreveArquivo(loja.Backups() / (std::string(nome) + ".json"), "x");
    }
    EscreveArquivo(loja.Backups() / "LOJA_20220101_000000.fbk.parcial", "x");
    const auto feito = loja.Backup();
    EXPECT_TRUE(feito.apagados.empty());
    ASSERT_EQ(feito.restos.size(), 1u);
    fs::remove(feito.arquivo);
    const auto outro = loja.Backup(2);
    EXPECT_EQ(outro.apagados, std::vector<fs::path>{loja.Backups() / "LOJA_20200101_000000.fbk"});
    EXPECT_TRUE(fs::exists(loja.Backups() / "LOJA2_20200101_000000.fbk"));
    EXPECT_TRUE(fs::exists(loja.Backups() / "LOJA_20210101_000000.fbk"));
    EXPECT_FALSE(fs::exists(loja.Backups() / "LOJA_20200101_000000.fbk.json"));
}

TEST_P(NosDoisMotores, ACancelledBackupLeavesNothing) {
    TLojaDeBackup loja(Servidor());
    const auto antes = loja.Conteudo();
    for (int passo = 1; passo < 40; passo += 3) {
        int resta = passo;
        const auto cancela = [&](const TProgresso&) {
            if (--resta == 0) throw TCancelada();
        };
        try {
            FazBackup(loja.Conexao(), {"LOJA", loja.Backups(), 0}, cancela);
            break;
        } catch (const TCancelada&) {
        }
        EXPECT_EQ(loja.Arquivos(loja.Backups()), std::vector<std::string>{}) << passo;
    }
    fs::remove_all(loja.Backups());
    fs::create_directory(loja.Backups());
    const auto feito = loja.Backup();
    for (int passo = 1; passo < 60; passo += 4) {
        int resta = passo;
        const auto cancela = [&](const TProgresso&) {
            if (--resta == 0) throw TCancelada();
        };
        try {
            ProvaBackup(loja.Conexao(), {feito.arquivo, ""}, cancela);
            break;
        } catch (const TCancelada&) {
        }
        EXPECT_EQ(loja.Arquivos(loja.Pasta()), std::vector<std::string>{"loja.fdb"}) << passo;
    }
    EXPECT_EQ(loja.Conteudo(), antes);
}

TEST_P(NosDoisMotores, TheWayBackKeepsTheDatabaseThatWasInUse) {
    TLojaDeBackup loja(Servidor());
    const auto antigo = loja.Conteudo();
    const auto feito = loja.Backup();
    loja.Conexao().ExecuteDirect("delete from TVENDA_ITENS");
    const auto emUso = loja.Conteudo();
    {
        const auto outro = GetParam() ? loja.Outra() : nullptr;
        if (outro) {
            const std::string falha = Falha([&] { loja.Restaura(feito.arquivo); });
            EXPECT_TRUE(Contem(falha, "Há 1 conexões")) << falha;
            EXPECT_TRUE(Contem(falha, "SYSDBA, de ") && Contem(falha, "backup_tests")) << falha;
        }
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));  // another second, another file name
    const auto restauracao = loja.Restaura(feito.arquivo);
    EXPECT_TRUE(restauracao.veredito.bom);
    EXPECT_EQ(restauracao.antigo, loja.Banco("LOJA_antes.fdb"));
    EXPECT_EQ(loja.Conteudo(), antigo);
    EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);
    EXPECT_EQ(loja.Arquivos(loja.Pasta()), (std::vector<std::string>{"LOJA_antes.fdb", "loja.fdb"}));
    EXPECT_EQ(RestosDeBackup(loja.Conexao()).size(), 1u);

    const std::string falha = Falha([&] { loja.Restaura(feito.arquivo); });
    EXPECT_TRUE(Contem(falha, "Já existe") && Contem(falha, "LOJA_antes.fdb")) << falha;
}

TEST(Restauracao, ADatabaseThatDoesNotOpenAnyMoreIsReplaced) {
    TLojaDeBackup loja;
    const auto antigo = loja.Conteudo();
    const auto feito = loja.Backup();
    loja.Conexao().Close();
    EscreveArquivo(loja / "loja.fdb", "sobrou só isto");
    EXPECT_EQ(loja.Restaura(feito.arquivo).antigo, loja.Banco("LOJA_antes.fdb"));
    EXPECT_EQ(loja.Conteudo(), antigo);
    EXPECT_EQ(LeArquivo(loja / "LOJA_antes.fdb"), "sobrou só isto");

    loja.Conexao().Close();
    fs::remove(loja / "loja.fdb");
    fs::remove(loja / "LOJA_antes.fdb");
    EXPECT_EQ(loja.Restaura(feito.arquivo).antigo, "");
    EXPECT_EQ(loja.Conteudo(), antigo);
}

TEST_P(NosDoisMotores, BadInputIsToldInOneLineAndLosesNothing) {
    TLojaDeBackup loja(Servidor());
    const auto antes = loja.Conteudo();
    const auto feito = loja.Backup();
    const std::string bytes = LeArquivo(feito.arquivo);
    const auto comManifesto = [&](const fs::path& nome, std::string_view conteudo, const std::string& alias) {
        TManifesto manifesto = feito.manifesto;
        manifesto.alias = alias;
        EscreveArquivo(loja / nome, conteudo);
        GravaManifesto(manifesto, loja / nome);
        return loja / nome;
    };
    const auto cortado = comManifesto("cortado.fbk", bytes.substr(0, bytes.size() / 2), "LOJA");
    const auto trocado = comManifesto("trocado.fbk", bytes.substr(0, bytes.size() - 1) + "x", "LOJA");
    const auto alheio = comManifesto("alheio.fbk", bytes, "FILIAL");
    EscreveArquivo(loja / "solto.fbk", bytes.substr(0, bytes.size() / 2));
    EscreveArquivo(loja / "carta.fbk", std::string(100'000, 'a'));
    EscreveArquivo(loja / "arquivo", "x");
    EscreveArquivo(loja / "LOJA_res.fdb", "de outro");
    const auto restantes = loja.Arquivos(loja.Pasta());
    const std::tuple<const char*, std::function<void()>, const char*> casos[] = {
        {"folder missing",
         [&] {
             FazBackup(loja.Conexao(), {"LOJA", loja / "nenhuma", 0}, kNinguem);
         },
         "não existe"},
        {"no folder",
         [&] {
             FazBackup(loja.Conexao(), {"LOJA", loja / "arquivo", 0}, kNinguem);
         },
         "não é uma pasta"},
        {"file missing", [&] { loja.Prova(loja / "nenhum.fbk"); }, "não existe"},
        {"cut", [&] { loja.Prova(cortado); }, "cortado"},
        {"cut, without manifest", [&] { loja.Prova(loja / "solto.fbk"); }, "cortado"},
        {"one byte changed", [&] { loja.Prova(trocado); }, "foi alterado"},
        {"no backup", [&] { loja.Prova(loja / "carta.fbk"); }, "não é um backup"},
        {"of another database", [&] { loja.Restaura(alheio); }, "backup de outro banco (alias FILIAL"},
        {"cut, over the one in use", [&] { loja.Restaura(loja / "solto.fbk"); }, "cortado"},
        {"no backup, over the one in use", [&] { loja.Restaura(loja / "carta.fbk"); }, "não é um backup"},
        {"a copy that exists", [&] { loja.Prova(feito.arquivo, loja.Banco("LOJA_res.fdb")); }, "xist"},
    };
    for (const auto& [nome, trabalho, texto] : casos) {
        const std::string falha = Falha(trabalho);
        EXPECT_TRUE(Contem(falha, texto)) << nome << ": " << falha;
        EXPECT_EQ(loja.Arquivos(loja.Pasta()), restantes) << nome;
    }
    EXPECT_EQ(LeArquivo(loja / "LOJA_res.fdb"), "de outro");
    EXPECT_EQ(loja.Conteudo(), antes);
}

TEST(Backup, OfTwoInOneSecondEachKeepsItsOwnFile) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    constexpr std::size_t kQuantos = 3;
    std::vector<TBackupFeito> feitos(kQuantos);
    std::vector<std::string> falhas(kQuantos);
    std::vector<std::thread> juntos;
    for (std::size_t i = 0; i < kQuantos; ++i)
        juntos.emplace_back([&, i] {
            THBNConnection conexao{TAliases(loja / "WKD.ini")};
            conexao.SetAlias("LOJA");
            falhas[i] = Falha([&] {
                conexao.Open();
                feitos[i] = FazBackup(conexao, {"LOJA", loja.Backups(), 0}, kNinguem);
            });
        });
    for (auto& outro : juntos) outro.join();
    for (std::size_t i = 0; i < kQuantos; ++i) {
        ASSERT_EQ(falhas[i], "");
        EXPECT_EQ(Sha256DoArquivo(feitos[i].arquivo), LeManifesto(feitos[i].arquivo)->sha256);
        EXPECT_EQ(feitos[i].manifesto.sha256, LeManifesto(feitos[i].arquivo)->sha256);
    }
    EXPECT_EQ(loja.Arquivos(loja.Backups()).size(), 2 * kQuantos);
}

TEST(Backup, TheNewOneAndTheLastGoodOneAreNeverAmongTheOldOnes) {
    TLojaDeBackup loja;
    const auto bom = loja.Backup();
    ASSERT_TRUE(loja.Prova(bom.arquivo).bom);
    EscreveArquivo(loja.Backups() / "LOJA_29990101_000000.fbk", "of a clock that was wrong");
    EscreveArquivo(loja.Backups() / "LOJA_20200101_000000.fbk", "old");
    const auto feito = loja.Backup(1);
    EXPECT_TRUE(fs::exists(feito.arquivo));
    EXPECT_TRUE(fs::exists(bom.arquivo));
    EXPECT_EQ(feito.apagados, (std::vector<fs::path>{loja.Backups() / "LOJA_20200101_000000.fbk",
                                                     loja.Backups() / "LOJA_29990101_000000.fbk"}));
    ASSERT_TRUE(loja.Prova(feito.arquivo).bom);
    EXPECT_EQ(loja.Backup(1).apagados, std::vector<fs::path>{bom.arquivo});
}

TEST(Backup, AnOldOneThatCannotBeRemovedIsNoFailure) {
    TLojaDeBackup loja;
    fs::create_directories(loja.Backups() / "LOJA_20200101_000000.fbk" / "cheia");
    const auto feito = loja.Backup(1);
    EXPECT_TRUE(fs::exists(feito.arquivo));
    EXPECT_EQ(feito.naoApagados, std::vector<fs::path>{loja.Backups() / "LOJA_20200101_000000.fbk"});
}

TEST(Backup, AShadowOfTheDatabaseIsLeftAlone) {
    TLojaDeBackup loja;
    loja.Conexao().ExecuteDirect("create shadow 1 '" + (loja / "sombra.shd").string() + "'");
    const auto antes = loja.Conteudo();
    const auto feito = loja.Backup();
    EXPECT_TRUE(loja.Prova(feito.arquivo).bom);
    EXPECT_TRUE(fs::exists(loja / "sombra.shd"));
    EXPECT_EQ(loja.Conteudo(), antes);
}

TEST(Backup, AnAliasMayHaveAnyNameAndAPathOfThisFolder) {
    TLojaDeBackup loja;
    const fs::path daqui = fs::current_path();
    fs::create_directory(loja / "Uma pasta");
    fs::copy_file(loja / "loja.fdb", loja / "Uma pasta/banco.fdb");
    fs::current_path(loja / "Uma pasta");
    const TAliases aliases(loja / "WKD.ini");
    TAlias alias = aliases.CarregaAlias("LOJA");
    alias.nome = "Loja 1/2: Centro";
    alias.path = "";
    alias.database = "banco.fdb";
    aliases.AdicionaAlias(alias, false);
    THBNConnection conexao(aliases);
    conexao.SetAlias(alias.nome);
    std::string resto;
    const std::string falha = Falha([&] {
        conexao.Open();
        const auto feito = FazBackup(conexao, {alias.nome, loja.Backups(), 0}, kNinguem);
        EXPECT_TRUE(ProvaBackup(conexao, {feito.arquivo, ""}, kNinguem).bom);
        EscreveArquivo("Loja 1_2_ Centro_prova_101010.fdb", "x");
        resto = Junta(RestosDeBackup(conexao), "\n");
        EXPECT_EQ(RestauraNaOriginal(conexao, {alias.nome, feito.arquivo, loja.Backups()}, kNinguem).antigo,
                  "Loja 1_2_ Centro_antes.fdb");
    });
    fs::current_path(daqui);
    EXPECT_EQ(falha, "");
    EXPECT_TRUE(Contem(resto, "_prova_101010.fdb")) << resto;
    EXPECT_EQ(loja.Conteudo("Uma pasta/banco.fdb"), loja.Conteudo("Uma pasta/Loja 1_2_ Centro_antes.fdb"));
}

TEST(Backup, AServerWithoutServicesIsTold) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    const std::string endereco = TServidorFirebird::DoProcesso().Endereco();
    TIntermediario rede(std::stoi(endereco.substr(endereco.find('/') + 1)));
    TLojaDeBackup loja("127.0.0.1/" + std::to_string(rede.Porta()));
    rede.RecusaServicos();
    const std::string falha = Falha([&] { loja.Backup(); });
    EXPECT_TRUE(falha.starts_with("O servidor não atende serviços de backup.")) << falha;
    EXPECT_EQ(loja.Arquivos(loja.Backups()), std::vector<std::string>{});
}

TEST(Restauracao, AFileThatIsNoDatabaseStaysInItsPlaceOnAServer) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    const auto feito = loja.Backup();
    loja.Conexao().Close();
    EscreveArquivo(loja / "loja.fdb", std::string(3000, 'x'));
    const std::string falha = Falha([&] { loja.Restaura(feito.arquivo); });
    EXPECT_TRUE(Contem(falha, "não abre como banco de dados")) << falha;
    EXPECT_EQ(loja.Arquivos(loja.Pasta()), std::vector<std::string>{"loja.fdb"});
    EXPECT_EQ(LeArquivo(loja / "loja.fdb"), std::string(3000, 'x'));
}

/// What is entered while the old database is being copied would be in neither of the two.
TEST(Restauracao, NobodyWritesIntoADatabaseThatIsAboutToBeReplaced) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    const auto feito = loja.Backup();
    std::this_thread::sleep_for(std::chrono::seconds(1));  // another second, another file name
    bool guardando = false, tentou = false, entrou = false;
    RestauraNaOriginal(loja.Conexao(), {"LOJA", feito.arquivo, loja.Backups()}, [&](const TProgresso& progresso) {
        guardando |= Contem(progresso.texto, "Guardando");
        if (!guardando || tentou || !Contem(progresso.texto, "Restaurando")) return;
        tentou = true;  // the copy of the old one has left its moment behind
        const std::string recusa =
            Falha([&] { loja.Outra()->ExecuteDirect("insert into TCIDADE (CODIGO, NOME) values (777, 'Nova')"); });
        entrou = recusa.empty();
    });
    ASSERT_TRUE(tentou);
    const auto antigo = loja.Outra("LOJA_antes.fdb");
    EXPECT_EQ(ContaRegistros(*antigo, "select count(*) as total from TCIDADE where CODIGO = 777"), entrou ? 1 : 0);
}

TEST(Restauracao, ASwapCutBetweenItsTwoStepsIsTidiedByTheNextOne) {
    TLojaDeBackup loja;
    const auto antigo = loja.Conteudo();
    const auto feito = loja.Backup();
    loja.Conexao().ExecuteDirect("delete from TVENDA_ITENS");
    const auto emUso = loja.Conteudo();
    loja.Conexao().Close();
    fs::create_hard_link(loja / "loja.fdb", loja / "LOJA_antes.fdb");  // killed before the new one took the place
    EXPECT_EQ(loja.Conteudo(), emUso);
    EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);
    const auto restos = RestosDeBackup(loja.Conexao());
    ASSERT_EQ(restos.size(), 1u);
    EXPECT_TRUE(Contem(restos[0], "parou antes da troca")) << restos[0];

    EXPECT_EQ(loja.Restaura(feito.arquivo).antigo, loja.Banco("LOJA_antes.fdb"));
    EXPECT_EQ(loja.Conteudo(), antigo);
    EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);

    loja.Conexao().Close();
    fs::remove(loja / "loja.fdb");  // killed between two renames
    EXPECT_EQ(loja.Restaura(feito.arquivo).antigo, loja.Banco("LOJA_antes.fdb"));
    EXPECT_EQ(loja.Conteudo(), antigo);
    EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);
}

TEST(Restauracao, ASwapThatFailsLeavesOneNameAndNoRest) {
    TLojaDeBackup loja;
    const auto emUso = loja.Conteudo();
    loja.Conexao().Close();
    const auto servidor = CriaServidorDeBackup(loja.Conexao());
    const std::string antes = loja.Banco("LOJA_antes.fdb");
    EXPECT_NE(Falha([&] { servidor->PoeNoLugar(loja.Banco("LOJA_novo.fdb"), antes); }), "");  // there is none
    EXPECT_TRUE(servidor->MesmoBanco(antes));
    servidor->Devolve(antes);
    EXPECT_EQ(loja.Arquivos(loja.Pasta()), std::vector<std::string>{"loja.fdb"});
    EXPECT_EQ(loja.Conteudo(), emUso);
}

TEST(Restauracao, TwoAtOnceDoNotMeet) {
    TLojaDeBackup loja;
    const auto feito = loja.Backup();
    std::string falha;
    RestauraNaOriginal(loja.Conexao(), {"LOJA", feito.arquivo, loja.Backups()}, [&](const TProgresso&) {
        if (falha.empty()) falha = Falha([&] { loja.Restaura(feito.arquivo); });
    });
    EXPECT_TRUE(Contem(falha, "em andamento")) << falha;
    EXPECT_EQ(loja.Conteudo(), feito.manifesto.antes);
}

/// The piece opens for one, like a whole database.
TEST(Restauracao, APieceInThePlaceIsNotTakenForTheDatabase) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    const auto emUso = loja.Conteudo();
    const auto feito = loja.Backup();
    loja.Conexao().Close();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    ASSERT_EQ(Corre(loja.Pasta(), 40, feito.arquivo.string(), "Trocando os bancos"), 9) << LeArquivo(loja / "erros");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the server notices
    EXPECT_TRUE(CriaServidorDeBackup(loja.Conexao())->FechadoParaUm(*loja.Outra()));
    EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);
    const std::string restos = Junta(RestosDeBackup(loja.Conexao()), "\n");
    EXPECT_TRUE(Contem(restos, "não o use; o de antes está, inteiro, em")) << restos;
    const std::string falha = Falha([&] { loja.Restaura(feito.arquivo); });
    EXPECT_TRUE(Contem(falha, "não o use")) << falha;
    loja.Conexao().Close();
    for (const char* nome : {"loja.fdb", "LOJA_novo.fdb"})
        CriaServidorDeBackup(loja.Conexao())->Apaga(loja.Banco(nome));
    EXPECT_EQ(loja.Restaura(feito.arquivo).antigo, loja.Banco("LOJA_antes.fdb"));
    EXPECT_EQ(loja.Conteudo(), emUso);
}

void Gfix(const std::string& banco, const char* opcoes) {
    const std::string comando = std::string("gfix -user SYSDBA -password masterkey ") + opcoes + " '" + banco + "'";
    ASSERT_EQ(std::system(comando.c_str()), 0) << comando;
}

/// What is done, and the kind of failure that it ends with.
struct TFracasso {
    const char* nome;
    std::function<void()> trabalho;
    TFalha falha;
};

void ConfereFracassos(const std::vector<TFracasso>& casos) {
    for (const auto& [nome, trabalho, falha] : casos) {
        try {
            trabalho();
            ADD_FAILURE() << nome;
        } catch (const std::exception& erro) {
            EXPECT_EQ(wkd::ErroDe(erro).falha, falha) << nome << ": " << erro.what();
            EXPECT_TRUE(ExplicaFalha(erro).starts_with(Explicacao(falha))) << nome << ": " << ExplicaFalha(erro);
        }
    }
}

/// The names of databases and folders are what servers say of other failures.
TEST_P(NosDoisMotores, AFailureIsToldByItsKindWhateverNamesItMeets) {
    TLojaDeBackup loja(Servidor());
    const auto feito = loja.Backup();
    const std::string bytes = LeArquivo(feito.arquivo);
    const auto servidor = CriaServidorDeBackup(loja.Conexao());
    const auto restaura = [&](const std::string& conteudo, const char* nome) {
        EscreveArquivo(loja / "x.fbk", conteudo);
        servidor->Restaura(loja / "x.fbk", loja.Banco(nome), kNinguem);
    };
    const auto outraVersao = bytes.substr(0, 3) + '\x7f' + bytes.substr(4);
    for (const char* nome : {"already opened.fdb", "is not a valid.fdb", "read-only database.fdb"})
        restaura(bytes, nome);
    EXPECT_EQ(loja.Conteudo("already opened.fdb"), feito.manifesto.antes);
    Gfix(loja.Banco("is not a valid.fdb"), "-mode read_only");
    Gfix(loja.Banco("read-only database.fdb"), "-shut full -force 0");
    EscreveArquivo(loja / "is in use.fdb", std::string(3000, 'x'));
    ConfereFracassos({
        {"no backup", [&] { restaura(std::string(100'000, 'a'), "n.fdb"); }, TFalha::NaoEBackup},
        {"nothing", [&] { restaura("", "n.fdb"); }, TFalha::NaoEBackup},
        {"another version", [&] { restaura(outraVersao, "n.fdb"); }, TFalha::NaoEBackup},
        {"cut", [&] { restaura(bytes.substr(0, bytes.size() / 2), "n.fdb"); }, TFalha::BackupCortado},
        {"no folder", [&] { restaura(bytes, "no permission, already exists/n.fdb"); }, TFalha::LugarSemAcesso},
        {"no database", [&] { servidor->Abre(loja.Banco("is in use.fdb")); }, TFalha::NaoEBanco},
        {"shut down", [&] { servidor->Abre(loja.Banco("read-only database.fdb")); }, TFalha::BancoFechado},
        {"marked read-only",
         [&] { servidor->Abre(loja.Banco("is not a valid.fdb"))->ExecuteDirect("delete from TVENDA_ITENS"); },
         TFalha::BancoSoLeitura},
        {"in use",
         [&] {
             const auto outra = loja.Outra("already opened.fdb");
             servidor->Apaga(loja.Banco("already opened.fdb"));
         },
         TFalha::EmUso},
    });
}

TEST(Backup, WhatOnlyAServerRefusesIsToldByItsKind) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    const auto feito = loja.Backup();
    loja.Conexao().ExecuteDirect("create or alter user LEITOR password 'leitor'");
    loja.Conexao().Close();
    const TServidorFirebird soLocal("RemoteAccess = false"), soDali("DatabaseAccess = Restrict /nenhuma");
    fs::create_directory(loja / "no permission.fdb");
    const auto em = [&](const std::string& servidor, const char* usuario, const char* senha, const char* nome) {
        const TAliases aliases(loja / "WKD.ini");
        TAlias alias = aliases.CarregaAlias("LOJA");
        alias.nome = "OUTRO";
        alias.hostname = servidor;
        alias.usuario = usuario;
        alias.senha = senha;
        aliases.AdicionaAlias(alias, false);
        THBNConnection conexao(aliases);
        conexao.SetAlias("OUTRO");
        const std::string banco = (servidor.empty() ? "" : servidor + ":") + (loja / nome).string();
        CriaServidorDeBackup(conexao)->Restaura(feito.arquivo, banco, kNinguem);
    };
    const std::string aqui = TServidorFirebird::DoProcesso().Endereco();
    ConfereFracassos({
        {"password", [&] { em(aqui, "SYSDBA", "errada", "n.fdb"); }, TFalha::Autenticacao},
        {"user", [&] { em(aqui, "LEITOR", "leitor", "is not a valid.fdb"); }, TFalha::SemPermissao},
        {"a folder of that name", [&] { em(aqui, "SYSDBA", "masterkey", "no permission.fdb"); },
         TFalha::BancoExistente},
        {"from here alone", [&] { em(soLocal.Endereco(), "SYSDBA", "masterkey", "n.fdb"); }, TFalha::AcessoRemoto},
        {"from there alone", [&] { em(soDali.Endereco(), "SYSDBA", "masterkey", "n.fdb"); }, TFalha::AcessoRemoto},
        {"a server has it",
         [&] {
             const auto outra = loja.Outra();
             CriaConexaoFirebird(ParametrosFirebird(loja / "loja.fdb"))->Open();
         },
         TFalha::EmUso},
    });
}

TEST(Restauracao, ANameIsNotTakenForAnError) {
    TLojaDeBackup loja;
    const auto feito = loja.Backup();
    loja.Conexao().Close();
    const TAliases aliases(loja / "WKD.ini");
    TAlias alias = aliases.CarregaAlias("LOJA");
    alias.database = "already opened.fdb";
    aliases.AdicionaAlias(alias, true);
    EscreveArquivo(loja / "already opened.fdb", "sobrou só isto");
    THBNConnection conexao(aliases);
    conexao.SetAlias("LOJA");
    EXPECT_EQ(Falha([&] { RestauraNaOriginal(conexao, {"LOJA", feito.arquivo, loja.Backups()}, kNinguem); }), "");
    EXPECT_EQ(loja.Conteudo("already opened.fdb"), feito.manifesto.antes);
}

TEST(Backup, AServerThatRefusesIsTold) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    loja.Conexao().ExecuteDirect("create or alter user LEITOR password 'leitor'");
    struct TCaso {
        const char *usuario, *senha, *texto;
    };
    for (const auto& [usuario, senha, texto] :
         {TCaso{"SYSDBA", "errada", "usuário ou a senha"}, TCaso{"LEITOR", "leitor", "recusou o serviço"}}) {
        const TAliases aliases(loja / "WKD.ini");
        TAlias alias = aliases.CarregaAlias("LOJA");
        alias.nome = "OUTRO";
        alias.usuario = usuario;
        alias.senha = senha;
        aliases.AdicionaAlias(alias, false);
        THBNConnection conexao(aliases);
        conexao.SetAlias("OUTRO");
        const std::string falha = Falha([&] {
            conexao.Open();
            FazBackup(conexao, {"OUTRO", loja.Backups(), 0}, kNinguem);
        });
        EXPECT_TRUE(Contem(falha, texto)) << falha;
        EXPECT_EQ(loja.Arquivos(loja.Backups()), std::vector<std::string>{});
    }
}

/// What a full disk does, to this process alone.
std::string ComArquivosDeAte(rlim_t bytes, const std::function<void()>& trabalho) {
    rlimit limite{};
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &limite), 0);
    const auto sinal = signal(SIGXFSZ, SIG_IGN);
    const rlimit pequeno{bytes, limite.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &pequeno), 0);
    std::string falha = Falha(trabalho);
    setrlimit(RLIMIT_FSIZE, &limite);
    signal(SIGXFSZ, sinal);
    return falha;
}

TEST(Backup, AFullDiskLeavesNothing) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no server";
    TLojaDeBackup loja(TServidorFirebird::DoProcesso().Endereco());
    const std::string falha = ComArquivosDeAte(20'000, [&] { loja.Backup(); });
    EXPECT_TRUE(Contem(falha, "O disco encheu")) << falha;
    EXPECT_EQ(loja.Arquivos(loja.Backups()), std::vector<std::string>{});
}

/// A disk that is full from the first page of the copy on, and one that fills while rows come in.
TEST(Backup, AFullDiskLeavesNoPieceOfACopy) {
    TLojaDeBackup loja;
    const auto antes = loja.Conteudo();
    const auto feito = loja.Backup();
    const auto restantes = loja.Arquivos(loja.Pasta());
    const rlim_t tamanho = fs::file_size(loja / "loja.fdb");
    for (const rlim_t limite : {rlim_t{1'150'000}, tamanho * 4 / 5}) {  // less would be too little for the locks
        const std::string falha = ComArquivosDeAte(limite, [&] { loja.Prova(feito.arquivo); });
        EXPECT_TRUE(Contem(falha, "O disco")) << limite << falha;
        EXPECT_EQ(loja.Arquivos(loja.Pasta()), restantes) << limite << falha;
    }
    EXPECT_EQ(loja.Conteudo(), antes);
}

TEST_P(NosDoisMotores, QuedaInABackupLeavesTheDatabaseAndNoHalfFile) {
    TLojaDeBackup loja(Servidor());
    const auto antes = loja.Conteudo();
    loja.Conexao().Close();
    int codigo = 9;
    for (int passo = 1; codigo == 9; passo += 2) {
        codigo = Corre(loja.Pasta(), passo);
        ASSERT_TRUE(codigo == 9 || codigo == 0) << LeArquivo(loja / "erros");
        ASSERT_EQ(loja.Conteudo(), antes) << passo;
        for (const auto& nome : loja.Arquivos(loja.Backups()))
            EXPECT_TRUE(codigo == 0 || nome.ends_with(".parcial")) << nome;
        if (codigo == 9) fs::remove_all(loja.Backups());
        fs::create_directories(loja.Backups());
    }
}

/// Whatever the step: the database in use opens and is the old one or the restored one, or the old one stands whole
/// under its other name and the next start says so.
TEST_P(NosDoisMotores, QuedaInARestoreLeavesOneOfTheTwoWhole) {
    TLojaDeBackup loja(Servidor());
    const auto antigo = loja.Conteudo();
    const auto feito = loja.Backup();
    loja.Conexao().ExecuteDirect("delete from TVENDA_ITENS");
    const auto emUso = loja.Conteudo();
    loja.Conexao().Close();
    const std::string original = LeArquivo(loja / "loja.fdb");
    int codigo = 9, cortes = 0;
    for (int passo = 1; codigo == 9; passo += GetParam() ? 149 : 5, ++cortes) {
        codigo = Corre(loja.Pasta(), passo, feito.arquivo.string());
        ASSERT_TRUE(codigo == 9 || codigo == 0) << passo << LeArquivo(loja / "erros");
        if (GetParam()) std::this_thread::sleep_for(std::chrono::milliseconds(300));  // the server notices
        std::optional<TInstantaneo> noLugar;
        try {
            noLugar = loja.Conteudo();
        } catch (const TErroBanco&) {
        }
        const bool inteiro = noLugar == emUso || noLugar == antigo;
        EXPECT_TRUE(inteiro || loja.Conteudo("LOJA_antes.fdb") == emUso) << passo;
        const auto restos = RestosDeBackup(loja.Conexao());
        EXPECT_TRUE(inteiro || !restos.empty()) << passo;
        if (codigo == 0) {
            EXPECT_EQ(noLugar, antigo);
            EXPECT_EQ(loja.Conteudo("LOJA_antes.fdb"), emUso);
        }
        for (const char* nome : {"LOJA_novo.fdb", "LOJA_antes.fdb", "loja.fdb"}) fs::remove(loja / nome);
        EscreveArquivo(loja / "loja.fdb", original);
    }
    EXPECT_GT(cortes, 3);
}

}  // namespace
}  // namespace wkd
