#include "Relatorio.h"

#include <atomic>
#include <thread>

#include "AssetsApoio.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class RelatorioTest : public TAssetsTest {
  protected:
    void Layout(const std::string& nome, std::string_view bytes) {
        EscreveArquivo(pacote_.Caminho() / CaminhoDoTexto(nome), bytes);
    }
    void Atualiza() { AtualizaRelatorio(Dm(), pacote_); }
    std::string NoArquivo(const std::string& nome) { return LeArquivo(Relatorios() / CaminhoDoTexto(nome)); }
    /// Names in the reports folder, sorted.
    std::string NaPasta() {
        std::vector<std::string> nomes;
        for (const auto& item : fs::directory_iterator(Relatorios())) nomes.push_back(NomeDoArquivo(item.path()));
        std::ranges::sort(nomes);
        return Junta(nomes, ";");
    }
    std::string Erro() {
        try {
            Atualiza();
        } catch (const TErroPacote& erro) {
            return erro.what();
        }
        return "";
    }
};

TEST_F(RelatorioTest, EveryLayoutEndsInTableAndFolderByteByByte) {
    std::string todos;
    for (int i = 0; i < 3 * 256; ++i) todos += static_cast<char>(i);
    const struct {
        std::string nome, naTabela, bytes;
    } casos[] = {
        {"Vazio.rtm", "VAZIO.RTM", ""},
        {"um.RTM", "UM.RTM", std::string(1, '\0')},
        {"Ação é.Rtm", "AçãO é.RTM", todos},
        {"d'água.rtm", "D'áGUA.RTM", "aspas simples"},
        {"a \"b\" ;c--.rtm", "A \"B\" ;C--.RTM", "aspas duplas\r\n"},
        {"Vendas por cidade.rtm", "VENDAS POR CIDADE.RTM", std::string(100'000, 'x')},
    };
    for (const auto& caso : casos) Layout(caso.nome, caso.bytes);
    Layout("leia.txt", "não é um layout");
    for (int vez = 0; vez < 2; ++vez) {
        Atualiza();
        EXPECT_EQ(Linhas("select count(*) from TRELATORIOS"), "6");
        for (const auto& caso : casos) {
            EXPECT_EQ(Bytes("select ARQUIVO from TRELATORIOS where NOME = " + Aspas(caso.naTabela)), caso.bytes)
                << caso.nome;
            EXPECT_EQ(NoArquivo(caso.nome), caso.bytes) << caso.nome;
        }
        EXPECT_EQ(NaPasta(), "Ação é.Rtm;Vazio.rtm;Vendas por cidade.rtm;a \"b\" ;c--.rtm;d'água.rtm;um.RTM");
    }
    EXPECT_TRUE(Tela().memo1.empty() && Tela().memo2.empty() && Tela().log.empty());
}

TEST_F(RelatorioTest, AnEarlierLayoutIsReplacedWhateverItsLetterCaseAndThoseOfZeroGo) {
    for (const std::string nome : {"clientes.rtm", "NOTAS0.RTM", "velho0.rtm", "AÇÃO.RTM", "outro.rtm"})
        Executa("insert into TRELATORIOS values ('" + nome + "', 'descrição', 'antigo', 7)");
    EscreveArquivo(Relatorios() / "CLIENTES.rtm", std::string(5000, 'a'));
    comandos_.clear();
    Layout("Clientes.rtm", "novo");
    Layout("Notas0.rtm", "de zero");
    Layout("ação.rtm", "com acento");
    Atualiza();
    EXPECT_EQ(comandos_.front(), "DELETE FROM trelatorios where upper(nome) like '%0.RTM'");
    EXPECT_EQ(Executados("select 1 as um from TRELATORIOS where Upper(nome) = 'CLIENTES.RTM'"), 1);
    EXPECT_EQ(Linhas("select NOME, DESCRICAO, cast(ARQUIVO as varchar(10)), EXPORTA from TRELATORIOS order by 1"),
              "AçãO.RTM|descrição|com acento|7;CLIENTES.RTM|descrição|novo|7;NOTAS0.RTM|<null>|de zero|<null>;"
              "outro.rtm|descrição|antigo|7");
    EXPECT_EQ(NaPasta(), "CLIENTES.rtm;Notas0.rtm;ação.rtm");
    EXPECT_EQ(NoArquivo("CLIENTES.rtm"), "novo");
}

TEST_F(RelatorioTest, AHugeLayoutPassesInBoundedMemory) {
    EscreveGrande(pacote_.Caminho() / "grande.rtm", 100u << 20);
    {
        const TLimiteDeMemoria limite(12u << 20);
        Atualiza();
    }
    TWKDQuery q(Dm().SQLConnection1, "select ARQUIVO from TRELATORIOS");
    q.Open();
    EXPECT_TRUE(Iguais(q.Campo("ARQUIVO"), pacote_.Caminho() / "grande.rtm"));
    EXPECT_EQ(fs::file_size(Relatorios() / "grande.rtm"), 100u << 20);
}

TEST_F(RelatorioTest, AReaderOfTheFolderSeesTheOldFileOrTheNewOne) {
    const std::string inteiros[] = {std::string(300'000, 'a'), std::string(300'000, 'b')};
    Layout("r.rtm", inteiros[0]);
    Atualiza();
    std::atomic<bool> fim = false;
    std::atomic<int> lidos = 0, partidos = 0;
    std::thread leitor([&] {
        for (; !fim; ++lidos)
            if (const std::string lido = NoArquivo("r.rtm"); lido != inteiros[0] && lido != inteiros[1]) ++partidos;
    });
    for (int vez = 1; vez <= 20 || (lidos < 20 && vez < 500); ++vez) {
        Layout("r.rtm", inteiros[vez % 2]);
        Atualiza();
    }
    fim = true;
    leitor.join();
    EXPECT_GE(lidos, 20);
    EXPECT_EQ(partidos, 0);
}

TEST_F(RelatorioTest, WhatAKilledCopyLeftGoesAndTheOldFilesModeStays) {
    for (const char* resto : {"Velho.RTM.novo", "clientes.rtm.novo", "notas.novo"})
        EscreveArquivo(Relatorios() / resto, std::string(9999, 'x'));
    EscreveArquivo(Relatorios() / "clientes.rtm", "velho");
    fs::permissions(Relatorios() / "clientes.rtm", fs::perms(0640));
    Layout("clientes.rtm", "novo");
    Atualiza();
    EXPECT_EQ(NaPasta(), "clientes.rtm;notas.novo");
    EXPECT_EQ(NoArquivo("clientes.rtm"), "novo");
    EXPECT_EQ(fs::status(Relatorios() / "clientes.rtm").permissions(), fs::perms(0640));
}

TEST_F(RelatorioTest, AFolderThatCannotTakeALayoutEndsThePassWithItsFilesWhole) {
    Layout("a.rtm", std::string(300'000, 'n'));
    Layout("b.rtm", "depois");
    fs::remove(Relatorios());
    EXPECT_NE(Erro().find("relatórios/a.rtm': No such file or directory. Verifique a pasta"), std::string::npos);
    EscreveArquivo(Relatorios(), "um arquivo");
    EXPECT_NE(Erro().find("relatórios/a.rtm': Not a directory"), std::string::npos);
    fs::remove(Relatorios());
    EXPECT_EQ(Linhas("select NOME from TRELATORIOS"), "A.RTM") << "the layout is in the table before it is copied";

    const TSistemaDeArquivos pequeno(Relatorios(), "size=128k");
    if (!pequeno.Montado()) GTEST_SKIP() << "a full folder and one of read only need root";
    EscreveArquivo(Relatorios() / "a.rtm", "velho");
    EXPECT_NE(Erro().find("a.rtm.novo': disco cheio. Libere"), std::string::npos) << Erro();
    EXPECT_EQ(NaPasta() + ":" + NoArquivo("a.rtm"), "a.rtm:velho");
    Layout("a.rtm", "cabe");
    ASSERT_TRUE(pequeno.SoLeitura());
    EXPECT_NE(Erro().find("Read-only file system. Verifique"), std::string::npos);
    EXPECT_EQ(NoArquivo("a.rtm"), "velho");
}

TEST_F(RelatorioTest, TheFolderSettingDecidesWhetherAndWhereLayoutsAreCopied) {
    Layout("a.rtm", "x");
    Ini().INIGravaString("MENU", "RELATORIO_CENTRAL", "\\\\10.0.0.9\\1\\");
    DefineRelatorios("\\\\10.0.0.9\\1\\2");
    Atualiza();
    EXPECT_TRUE(comandos_.empty()) << "nothing is done for the maker's own share";

    DefineRelatorios("");
    Ini().INIGravaString("MENU", "RELATORIO_CENTRAL", TextoDoCaminho(Relatorios()));
    Atualiza();
    EXPECT_EQ(Tela().memo1, std::vector<std::string>{"Cópia dos relatórios para a pasta não feita: falta a chave "
                                                     "RELATORIO no alias  tbInterbase "});
    EXPECT_EQ(Linhas("select NOME from TRELATORIOS"), "A.RTM");
    EXPECT_EQ(NaPasta(), "");

    DefineRelatorios(TextoDoCaminho(Relatorios()));
    Atualiza();
    EXPECT_EQ(NaPasta(), "a.rtm") << "the share's letters are compared with capitals, so it is never found";
}

TEST_F(RelatorioTest, ARefusedLayoutEndsThePass) {
    Executa("create exception RECUSA 'layout recusado'");
    Executa(
        "create trigger TR for TRELATORIOS before insert as begin if (new.NOME = 'B.RTM') then exception RECUSA; "
        "end");
    for (const std::string nome : {"a.rtm", "b.rtm", "c.rtm"}) Layout(nome, "x");
    EXPECT_THROW(Atualiza(), TErroBanco);
    EXPECT_EQ(Linhas("select NOME from TRELATORIOS"), "A.RTM");
    EXPECT_EQ(NaPasta(), "a.rtm");

    Executa("drop table TRELATORIOS");
    EXPECT_THROW(Atualiza(), TErroBanco);
    ASSERT_EQ(Tela().log.size(), 1u);
    EXPECT_TRUE(TTelaDeTeste::Contem(Tela().memo2, "TRELATORIOS"));
}

class BackupDosRelatoriosTest : public ::testing::Test {
  protected:
    BackupDosRelatoriosTest() {
        fs::create_directory(Pasta());
        EscreveGrande(Pasta() / "Ação d'água.RTM", 300'000);
        EscreveArquivo(Pasta() / "vazio.rtm", "");
        EscreveArquivo(Pasta() / "leia.txt", "não é um layout");
        fs::create_directory(Pasta() / "pasta.rtm");
    }
    fs::path Pasta() const { return pasta_ / "relatórios"; }
    /// What an ordinary unzip makes of the archive in an empty folder.
    std::string Descompacta(const fs::path& zip) const {
        const fs::path destino = pasta_ / "saída";
        fs::remove_all(destino);
        const std::string comando = "unzip -q '" + zip.string() + "' -d '" + destino.string() + "'";
        if (std::system(comando.c_str()) != 0) return "recusado";
        std::string nomes;
        for (const auto& item : fs::recursive_directory_iterator(destino)) {
            const bool igual = LeArquivo(item.path()) == LeArquivo(Pasta() / item.path().filename());
            nomes += NomeDoArquivo(item.path()) + (igual ? ";" : " difere;");
        }
        return nomes;
    }
    std::string Erro(const fs::path& zip) const {
        try {
            FazBackupDosRelatorios(Pasta(), zip);
        } catch (const TErroPacote& erro) {
            return erro.what();
        }
        return "";
    }

    TPastaTemporaria pasta_;
};

TEST_F(BackupDosRelatoriosTest, AnOrdinaryUnzipGivesTheLayoutsBack) {
    const fs::path zip = pasta_ / "nova/Relatorios_010126.zip";
    FazBackupDosRelatorios(Pasta(), zip);
    EXPECT_EQ(Descompacta(zip).size(), std::string("Ação d'água.RTM;vazio.rtm;").size()) << Descompacta(zip);
    EscreveArquivo(Pasta() / "mais.rtm", "mais");
    fs::remove(Pasta() / "vazio.rtm");
    FazBackupDosRelatorios(Pasta(), zip);
    const std::string nomes = Descompacta(zip);
    EXPECT_TRUE(nomes == "Ação d'água.RTM;mais.rtm;" || nomes == "mais.rtm;Ação d'água.RTM;") << nomes;
    EXPECT_EQ(std::distance(fs::directory_iterator(zip.parent_path()), {}), 1) << "nothing else is left";
}

TEST_F(BackupDosRelatoriosTest, WithoutACompleteNewArchiveTheEarlierOneStays) {
    const fs::path zip = pasta_ / "velho.zip";
    FazBackupDosRelatorios(Pasta(), zip);
    const std::string velho = LeArquivo(zip);
    fs::remove(Pasta() / "vazio.rtm");
    fs::remove(Pasta() / "Ação d'água.RTM");
    EXPECT_NE(Erro(zip).find("Não há relatórios (*.rtm) na pasta"), std::string::npos);
    fs::remove_all(Pasta());
    EXPECT_NE(Erro(zip).find("Verifique a chave RELATORIO do alias"), std::string::npos);
    EXPECT_EQ(LeArquivo(zip), velho);
    EXPECT_NE(Erro(zip / "dentro.zip").size(), 0u);

    fs::create_directory(Pasta());
    const TSistemaDeArquivos pequeno(pasta_ / "disco", "size=64k");
    if (!pequeno.Montado()) GTEST_SKIP() << "a full folder needs root";
    const fs::path noDisco = pasta_ / "disco/rel.zip";
    EscreveArquivo(Pasta() / "a.rtm", "cabe");
    FazBackupDosRelatorios(Pasta(), noDisco);
    const std::string antes = LeArquivo(noDisco);
    fs::copy_file("/proc/self/exe", Pasta() / "grande.rtm");
    EXPECT_NE(Erro(noDisco).find("No space left"), std::string::npos) << Erro(noDisco);
    EXPECT_EQ(LeArquivo(noDisco), antes);
    EXPECT_EQ(std::distance(fs::directory_iterator(noDisco.parent_path()), {}), 1) << "nothing else is left";
}

}  // namespace
}  // namespace wkd
