#include "ArquivosSistema.h"

#include "AssetsApoio.h"
#include "packet/DataPacket.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class ArquivosSistemaTest : public TAssetsTest {
  protected:
    using TAssetsTest::TAssetsTest;
    void Pacote(std::vector<TLinha> linhas, TFormaPacote forma = TFormaPacote::Binario, const char* nome = "Arquivos") {
        TDataPacket pacote;
        pacote.campos = {CampoDePacote("Arquivo", TTipoDado::Texto, 100), CampoDePacote("VERSAO", TTipoDado::Texto, 20),
                         CampoDePacote("CONTEUDO", TTipoDado::Blob)};
        pacote.linhas = std::move(linhas);
        GravaPacote(pacote, pacote_.Caminho() / nome, forma);
    }
    void Atualiza() { AtualizaArquivosSistema(Dm(), pacote_); }
    std::string Tabela() { return Linhas("select ARQUIVO, VERSAO, DATA from TARQ_VER order by 1, 2"); }
};

TEST_F(ArquivosSistemaTest, TheRecordsOfThePackageReplaceThoseOfTheSameName) {
    for (const std::string nome : {"menu.CFG", "MENU.cfg", "fica.dll", "relação.dll", "AÇÃO.DLL", "d''água.txt"})
        Executa("insert into TARQ_VER (ARQUIVO, VERSAO) values ('" + nome + "', 'velha')");
    Pacote({{"Menu.cfg", "1", "um"},
            {"RELAçãO.dll", "1", ""},
            {"D'água.txt", TValor(), TValor()},
            {"Menu.cfg", "2", "dois"}});
    comandos_.clear();
    Atualiza();
    EXPECT_EQ(Tabela(),
              "AÇÃO.DLL|velha|<null>;D'água.txt|nova|<null>;Menu.cfg|2|<null>;RELAçãO.dll|1|<null>;fica.dll|velha|"
              "<null>")
        << "what is NULL in the package keeps the table's default";
    EXPECT_EQ(Bytes("select CONTEUDO from TARQ_VER where ARQUIVO = 'Menu.cfg'"), "dois");
    EXPECT_EQ(Linhas("select CONTEUDO is null, octet_length(CONTEUDO) from TARQ_VER where ARQUIVO starting 'RELA'"),
              "False|0");
    EXPECT_EQ(comandos_.front(), "select * from TARQ_VER");
    EXPECT_EQ(Executados("delete from tarq_ver where upper(arquivo) = 'MENU.CFG'"), 4) << "twice for each record";
    EXPECT_EQ(Executados("delete from tarq_ver where upper(arquivo) = 'RELAçãO.DLL'"), 2);
    EXPECT_EQ(Executados("delete from tarq_ver where upper(arquivo) = 'D''áGUA.TXT'"), 2);
    EXPECT_EQ(Tela().memo1, (std::vector<std::string>{"Extraindo arquivos....", "Menu.cfg", "RELAçãO.dll", "D'água.txt",
                                                      "Menu.cfg"}));
    EXPECT_EQ(Tela().atuais, std::vector<std::string>{"Extraindo arquivos do sistema"});
    EXPECT_EQ(Tela().geral.Maximo(), 4);
    EXPECT_EQ(Tela().geral.Posicao(), 4);
    EXPECT_EQ(Tela().mensagensServidas, 4);
    EXPECT_TRUE(Tela().memo2.empty()) << Tela().memo2.front();

    const std::string depois = Tabela();
    Atualiza();
    EXPECT_EQ(Tabela(), depois);
}

TEST_F(ArquivosSistemaTest, ARecordThatTheTableRefusesIsReportedAndTheNextOneFollows) {
    Executa("insert into TARQ_VER (ARQUIVO) values ('longa.dll')");
    Pacote({{"longa.dll", std::string(50, 'x'), "a"}, {"cabe.dll", "1", "b"}}, TFormaPacote::Xml);
    Atualiza();
    EXPECT_EQ(Tabela(), "cabe.dll|1|<null>") << "the earlier record of that name went before";
    ASSERT_EQ(Tela().log.size(), 1u);
    EXPECT_EQ(Tela().log[0].tabela + ", " + Tela().log[0].acao, "TARQ_VER, Extraindo arquivos: longa.dll");
    EXPECT_TRUE(Tela().memo2.at(0).starts_with("longa.dll: "));

    Executa("alter table TARQ_VER drop CONTEUDO");
    Pacote({{"sem.dll", "1", "a"}, {"cabe.dll", "2", "b"}, {"sem coluna.dll", "3", TValor()}});
    Atualiza();
    EXPECT_EQ(Tabela(), "sem coluna.dll|3|<null>") << "only a value needs its column";
    ASSERT_EQ(Tela().log.size(), 3u);
    EXPECT_NE(Tela().log[1].mensagem.find("CONTEUDO"), std::string::npos);
}

TEST_F(ArquivosSistemaTest, AFieldWhoseNameIsMoreThanANameReachesNoStatement) {
    Executa("insert into TARQ_VER (ARQUIVO, VERSAO) values ('a.dll', 'velha')");
    TDataPacket pacote;
    pacote.campos = {CampoDePacote("ARQUIVO", TTipoDado::Texto, 100),
                     CampoDePacote("VERSAO) select 'x', :p1 from TARQ_VER --", TTipoDado::Texto, 20)};
    pacote.linhas = {{"a.dll", "1"}};
    GravaPacote(pacote, pacote_.Caminho() / "ARQUIVOS", TFormaPacote::Xml);
    EXPECT_THROW(Atualiza(), TErroPacote);
    EXPECT_EQ(Tabela(), "a.dll|velha|<null>");
}

class ArquivosSistemaEmNoneTest : public ArquivosSistemaTest {
  protected:
    ArquivosSistemaEmNoneTest() : ArquivosSistemaTest("") {}
};

TEST_F(ArquivosSistemaEmNoneTest, ANameThatTheDatabaseCannotHoldIsReportedAndTheNextOneFollows) {
    Pacote({{"relac\u0327a\u0303o.dll", "1", "a"}, {"relação.dll", "2", "b"}});
    Atualiza();
    EXPECT_EQ(Tabela(), "relação.dll|2|<null>");
    EXPECT_EQ(Tela().log.size(), 1u);
}

TEST_F(ArquivosSistemaTest, AnOldRecordThatCannotGoKeepsTheNewOneOut) {
    Executa("insert into TARQ_VER (ARQUIVO, VERSAO) values ('presa.dll', 'velha')");
    Executa("create exception RECUSA 'presa'");
    Executa("create trigger TR for TARQ_VER before delete as begin exception RECUSA; end");
    Pacote({{"Presa.dll", "1", "a"}, {"livre.dll", "1", "b"}});
    Atualiza();
    EXPECT_EQ(Tabela(), "livre.dll|1|<null>;presa.dll|velha|<null>");
    EXPECT_EQ(Tela().memo2.size(), 1u);
}

TEST_F(ArquivosSistemaTest, AHugeFilePassesInBoundedMemory) {
    const struct {
        TFormaPacote forma;
        std::size_t tamanho;
    } casos[] = {{TFormaPacote::Binario, 100u << 20}, {TFormaPacote::Xml, 20u << 20}};
    for (const auto& [forma, tamanho] : casos) {
        const fs::path grande = temporaria_ / "grande.bin";
        EscreveGrande(grande, tamanho);
        Pacote({{"grande.bin", "1", LeArquivo(grande)}, {"um.bin", "1", "x"}}, forma);
        {
            const TLimiteDeMemoria limite(12u << 20);
            Atualiza();
        }
        EXPECT_TRUE(Tela().memo2.empty()) << Tela().memo2.front();
        TWKDQuery q(Dm().SQLConnection1, "select CONTEUDO from TARQ_VER where ARQUIVO = 'grande.bin'");
        q.Open();
        ASSERT_FALSE(q.Eof());
        EXPECT_TRUE(Iguais(q.Campo("CONTEUDO"), grande));
    }
}

TEST_F(ArquivosSistemaTest, WithoutAReadableFileOrTableThePassEndsAndNothingIsDeleted) {
    const auto erro = [this] {
        try {
            Atualiza();
        } catch (const std::exception& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    Executa("insert into TARQ_VER (ARQUIVO) values ('velho.dll')");
    EXPECT_NE(erro().find("não contém o arquivo ARQUIVOS"), std::string::npos);
    EscreveArquivo(pacote_.Caminho() / "ARQUIVOS", "<DATAPACKET");
    EXPECT_NE(erro().find("ARQUIVOS"), std::string::npos);
    TDataPacket semNome;
    semNome.campos = {CampoDePacote("NOME", TTipoDado::Texto, 10)};
    semNome.linhas = {{"velho.dll"}};
    GravaPacote(semNome, pacote_.Caminho() / "ARQUIVOS", TFormaPacote::Xml);
    EXPECT_NE(erro().find("arquivo"), std::string::npos);
    EXPECT_EQ(Linhas("select ARQUIVO from TARQ_VER"), "velho.dll");

    Pacote({{"velho.dll", "1", "a"}}, TFormaPacote::Xml, "ARQUIVOS");
    Executa("drop table TARQ_VER");
    EXPECT_NE(erro().find("TARQ_VER"), std::string::npos);
}

}  // namespace
}  // namespace wkd
