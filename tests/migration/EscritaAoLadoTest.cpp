// Others write into a table while it is rebuilt: what was confirmed to them is in the table afterwards.
#include <chrono>
#include <thread>

#include "NovaApoio.h"
#include "ServidorFirebird.h"

namespace wkd {
namespace {

/// Another program with one statement to run, which waits for its turn.
class TOutroPrograma {
  public:
    TOutroPrograma(TBancoDaNova& banco, std::string sql, std::string confirma)
        : conexao_(banco.banco_.Outra()), sql_(std::move(sql)), confirma_(std::move(confirma)) {}
    ~TOutroPrograma() { Espera(); }
    TOutroPrograma(const TOutroPrograma&) = delete;
    TOutroPrograma& operator=(const TOutroPrograma&) = delete;

    void Comeca() {
        linha_ = std::thread([this] {
            try {
                conexao_->ExecuteDirect(sql_);
                gravou_ = true;
            } catch (const TErroBanco&) {  // told to its user: nothing is lost
            }
        });
    }
    void Espera() {
        if (linha_.joinable()) linha_.join();
    }
    void ConfereEm(TBancoDaNova& banco) const { EXPECT_TRUE(!gravou_ || banco.Le(confirma_) == "1") << sql_; }

  private:
    std::unique_ptr<TConnection> conexao_;
    std::string sql_, confirma_;
    bool gravou_ = false;
    std::thread linha_;
};

struct TBancoServido : TBancoDaNova {
    TBancoServido() : TBancoDaNova("UTF8", true, TServidorFirebird::DoProcesso().Endereco()) {
        const TAtributos colunas = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 20}};
        Guardada("TCLI", colunas);
        Executa(
            "create table TCLI (CODIGO integer not null, NOME varchar(20), constraint PK_TCLI primary key (CODIGO))");
        std::vector<std::string> comandos;
        for (int i = 1; i <= kLinhas; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'nome')");
        ExecutaTudo(comandos);
        Pacote("TCLI", {colunas[0], {"NOME", "ftString", 30}});
    }

    /// Runs `passo` while others wait to write, from the moment its copy has begun.
    template <class TPasso>
    void ComEscritores(TPasso&& passo) {
        TOutroPrograma insere(*this, "insert into TCLI (CODIGO, NOME) values (1000, 'entrou')",
                              "select count(*) from TCLI where CODIGO = 1000 and NOME = 'entrou'");
        TOutroPrograma muda(*this, "update TCLI set NOME = 'mudou' where CODIGO = 7",
                            "select count(*) from TCLI where CODIGO = 7 and NOME = 'mudou'");
        bool comecou = false;
        Conexao().Observa([&](std::string_view sql) {
            if (comecou || !Insere(sql, "BTCLI")) return;
            comecou = true;
            insere.Comeca();
            muda.Comeca();
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
        });
        passo();
        Conexao().Observa({});
        insere.Espera();
        muda.Espera();
        EXPECT_TRUE(comecou);
        insere.ConfereEm(*this);
        muda.ConfereEm(*this);
        EXPECT_EQ(Le("select count(*) from TCLI where CODIGO <= " + std::to_string(kLinhas)), std::to_string(kLinhas));
    }

    static constexpr int kLinhas = 250;
};

TEST(EscritaAoLadoTest, ARebuildLosesNothingThatOthersWereConfirmed) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    TBancoServido banco;
    banco.ComEscritores([&] { banco.Reconstroi(); });
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO") == "2", !banco.estado_.falhouApagar);
    const std::string todas = banco.Le("select CODIGO, NOME from TCLI order by 1");
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << Junta(banco.tela_.memo2, "\n");
    EXPECT_EQ(banco.Le("select CODIGO, NOME from TCLI order by 1"), todas);
}

TEST(EscritaAoLadoTest, ATableMadeAgainLosesNothingThatOthersWereConfirmed) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    TBancoServido banco;
    banco.ComEscritores([&] { (void)banco.dm_.Atualiza.ReCriaTabela("TCLI"); });
}

}  // namespace
}  // namespace wkd
