// What an update meets outside the program: a disk that is full, a server that goes away.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "OpcoesDeTeste.h"
#include "QuedaApoio.h"
#include "ServidorFirebird.h"
#include "TelaDeTeste.h"
#include "run/Atualizacao.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

/// The n-th statement that begins with the text.
struct TQuando {
    const char* comando;
    int vez;
};

class AmbienteAdversoTest : public testing::Test {
  protected:
    AmbienteAdversoTest() {
        molde_.CopiaPara(raiz_ / "inteira");
        EXPECT_EQ(Corre(raiz_ / "inteira", 0), 0) << LeArquivo(raiz_ / "inteira/erros.txt");
        EXPECT_EQ(Corre(raiz_ / "inteira", 0), 0);
        esperado_ = RetratoDe(raiz_ / "inteira");
    }

    /// An update of the folder's database in this process; `servidor` as in ParametrosFirebird.
    void Atualiza(const fs::path& pasta, const std::string& servidor, TQuando quando,
                  const std::function<void()>& acao) {
        EscreveArquivo(pasta / "naocria.wkd", "");
        tela_.memo2.clear();
        TDataModulo dm(TAliases(pasta / "WKD.ini"), tela_,
                       [&](auto...) { return CriaConexaoFirebird(ParametrosFirebird(pasta / "loja.fdb", servidor)); });
        dm.SQLConnection1.SetAlias("LOJA");
        dm.SQLConnection1.Open();
        int vezes = 0;
        dm.SQLConnection1.Observa([&](std::string_view sql) {
            const bool esse = sql.find(quando.comando) != std::string_view::npos;
            if (esse && ++vezes == quando.vez) acao();
        });
        TEstado estado;
        TAtualizacao(dm, OpcoesDeTeste(pasta), estado).Executa();
        EXPECT_GE(vezes, quando.vez) << "the statement was not reached";
    }

    /// A later run ends as one that met nothing.
    void EsperaConserto(const fs::path& pasta) {
        Corre(pasta, 0);
        const int ultima = Corre(pasta, 0);
        EXPECT_EQ(Diferencas(esperado_, RetratoDe(pasta)), "");
        EXPECT_EQ(ultima, 0) << LeArquivo(pasta / "erros.txt");
    }

    const TMolde molde_;
    const TPastaTemporaria raiz_;
    std::string esperado_;
    TTelaDeTeste tela_;
};

/// A disk of its own.
class TDisco {
  public:
    TDisco() : montado_(std::system(("mount -t tmpfs -o size=96m tmpfs '" + Ponto() + "' 2>/dev/null").c_str()) == 0) {}
    ~TDisco() { EXPECT_TRUE(!montado_ || std::system(("umount '" + Ponto() + "'").c_str()) == 0); }
    bool Montado() const { return montado_; }
    fs::path Pasta() const { return pasta_ / "loja"; }

    /// Leaves that many bytes.
    void Enche(std::uintmax_t resta) const {
        const std::string mega(1024 * 1024, 'x');
        std::ofstream arquivo(pasta_ / "enche", std::ios::binary);
        while (fs::space(pasta_.Caminho()).available > resta) arquivo << mega << std::flush;
    }
    void Esvazia() const { fs::remove(pasta_ / "enche"); }

  private:
    std::string Ponto() const { return pasta_.Caminho().string(); }

    TPastaTemporaria pasta_;
    bool montado_;
};

TEST_F(AmbienteAdversoTest, ADiskThatFillsUpLosesNothing) {
    const TDisco disco;
    if (!disco.Montado()) GTEST_SKIP() << "no disk can be mounted here";
    if (!ServidorDosTestes().empty()) GTEST_SKIP() << "what is left of a server's disk is not known";
    const TQuando casos[] = {{"drop table TARQ", 0},
                             {"delete from satrib", 1},
                             {"insert into BTREC", 1},
                             {"drop table TREC", 1},
                             {"insert into TREC", 2}};
    for (const TQuando& quando : casos) {
        SCOPED_TRACE(quando.comando);
        molde_.CopiaPara(disco.Pasta());
        if (quando.vez == 0) disco.Enche(32 * 1024 * 1024);
        Atualiza(disco.Pasta(), "", quando, [&] { disco.Enche(32 * 1024 * 1024); });
        EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "TREC")) << Junta(tela_.memo2, "\n");
        EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "o disco do banco de dados está quase cheio"));
        EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "Tabela: TNOVA")) << "the next table is looked at";
        EXPECT_TRUE(tela_.LogContem("quase cheio"));
        disco.Esvazia();
        EsperaConserto(disco.Pasta());
    }
}

TEST_F(AmbienteAdversoTest, ADatabaseThatCannotGrowIsNotWrittenAnyMore) {
    if (!ServidorDosTestes().empty()) GTEST_SKIP() << "the limit is that of another process";
    const fs::path pasta = raiz_ / "parada";
    molde_.CopiaPara(pasta);
    const std::string blocos = std::to_string(fs::file_size(pasta / "loja.fdb") / 512);
    EXPECT_EQ(Corre(pasta, 0, "", "trap '' XFSZ; ulimit -f " + blocos + ";"), 1);
    EXPECT_NE(LeArquivo(pasta / "erros.txt").find("A conexão com o banco de dados foi encerrada"), std::string::npos);
    EsperaConserto(pasta);
}

TEST_F(AmbienteAdversoTest, AServerThatEndsDuringARebuildLosesNothing) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    const fs::path pasta = raiz_ / "servida";
    for (const TQuando& quando : {TQuando{"insert into BTREC", 1}, TQuando{"drop table TREC", 1},
                                  TQuando{"Create Table TREC", 1}, TQuando{"insert into TREC", 2}}) {
        SCOPED_TRACE(quando.comando);
        molde_.CopiaPara(pasta);
        auto servidor = std::make_unique<TServidorFirebird>();
        Atualiza(pasta, servidor->Endereco(), quando, [&] { servidor.reset(); });
        EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "TREC")) << Junta(tela_.memo2, "\n");
        EXPECT_FALSE(tela_.log.empty());
        EsperaConserto(pasta);
    }
}

}  // namespace
}  // namespace wkd
