// A whole update is cut at every single statement, on copies of one database, and run again: with the same package, or
// with another one first.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <ostream>
#include <set>
#include <thread>

#include "Linhas.h"
#include "QuedaApoio.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kPasso = 13;  // the sanitizers make every run several times slower
#else
constexpr int kPasso = 1;
#endif

// TARQ_VER is the table whose backup the first statements of a run drop as an obsolete table.
constexpr TColuna kArquivosVelhos[] = {{"TARQ_VER", "ARQUIVO", "ftString", 20, 1},
                                       {"TARQ_VER", "CONTEUDO", "ftBlob", 0, 0}};
constexpr TColuna kArquivosNovos[] = {{"TARQ_VER", "ARQUIVO", "ftString", 30, 1},
                                      {"TARQ_VER", "CONTEUDO", "ftBlob", 0, 0}};
constexpr const char* kArquivos[] = {
    "create table TARQ_VER (ARQUIVO varchar(20) not null, CONTEUDO blob, constraint PK_TARQ_VER primary key (ARQUIVO))",
    "insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', 'TARQ_VER', 1)",
    "execute block as declare i integer = 0; begin while (i < 30) do begin insert into TARQ_VER values ('A' || :i,"
    " 'arquivo ' || :i); i = i + 1; end end"};

/// The next release: other sizes, and a column more.
constexpr TColuna kSeguintes[] = {{"TALT", "CODIGO", "ftInteger", 0, 1},    {"TALT", "NOME", "ftString", 50, 0},
                                  {"TALT", "VALOR", "ftFloat", 0, 0},       {"TALT", "EXTRA", "ftString", 20, 0},
                                  {"TREC", "CODIGO", "ftString", 14, 1},    {"TREC", "NOME", "ftString", 30, 0},
                                  {"TREC", "QUANDO", "ftDateTime", 0, 0},   {"TREC", "FOTO", "ftBlob", 0, 0},
                                  {"TREC", "LOJA", "ftInteger", 0, 0},      {"TNOVA", "CODIGO", "ftInteger", 0, 1},
                                  {"TNOVA", "NOME", "ftString", 30, 0},     {"TARQ_VER", "ARQUIVO", "ftString", 40, 1},
                                  {"TARQ_VER", "CONTEUDO", "ftBlob", 0, 0}, {"TARQ_VER", "HASH", "ftString", 40, 0}};
/// A release that has neither of the rebuilt tables.
constexpr TColuna kSemAsTabelas[] = {{"TALT", "CODIGO", "ftInteger", 0, 1},
                                     {"TALT", "NOME", "ftString", 40, 0},
                                     {"TALT", "VALOR", "ftFloat", 0, 0},
                                     {"TNOVA", "CODIGO", "ftInteger", 0, 1},
                                     {"TNOVA", "NOME", "ftString", 30, 0}};
/// One that wants other columns: FOTO is not among them.
constexpr TColuna kOutrasColunas[] = {
    {"TALT", "CODIGO", "ftInteger", 0, 1},      {"TALT", "NOME", "ftString", 40, 0},
    {"TALT", "VALOR", "ftFloat", 0, 0},         {"TALT", "EXTRA", "ftString", 10, 0},
    {"TREC", "CODIGO", "ftString", 16, 1},      {"TREC", "NOME", "ftString", 60, 0},
    {"TREC", "CIDADE", "ftString", 20, 0},      {"TREC", "QUANDO", "ftDateTime", 0, 0},
    {"TNOVA", "CODIGO", "ftInteger", 0, 1},     {"TNOVA", "NOME", "ftString", 30, 0},
    {"TARQ_VER", "ARQUIVO", "ftString", 25, 1}, {"TARQ_VER", "CONTEUDO", "ftBlob", 0, 0},
    {"TARQ_VER", "TIPO", "ftInteger", 0, 0}};

enum class TPacote { OMesmo, Seguinte, SemAsTabelas, OutrasColunas };

class TMoldeDaQueda : public TMolde {
  public:
    TMoldeDaQueda() {
        const auto banco = CriaConexaoFirebird(ParametrosFirebird(pasta_ / "loja.fdb"));
        banco->Open();
        for (const char* comando : kArquivos) banco->ExecuteDirect(comando);
        GravaColunas(*banco, kArquivosVelhos);
        banco->Close();
        Empacota(Pasta(TPacote::Seguinte), kSeguintes, "", 3);
        Empacota(Pasta(TPacote::SemAsTabelas), kSemAsTabelas, "", 3);
        Empacota(Pasta(TPacote::OutrasColunas), kOutrasColunas, "", 3);
        std::vector<TColuna> novas(std::begin(kNovas), std::end(kNovas));
        novas.insert(novas.end(), std::begin(kArquivosNovos), std::end(kArquivosNovos));
        Empacota(Pasta(TPacote::OMesmo), novas);
    }

    void Troca(TPacote pacote, const fs::path& destino) const {
        fs::copy_file(Pasta(pacote) / "pacote.zip", destino / "pacote.zip", fs::copy_options::overwrite_existing);
    }

  private:
    fs::path Pasta(TPacote pacote) const {
        const fs::path pasta = pasta_ / std::to_string(static_cast<int>(pacote));
        fs::create_directories(pasta);
        return pasta;
    }
};

/// How runs are cut, and with which packages the next ones come.
struct TQueda {
    const char* nome;
    const char* comErro = "";
    std::vector<TPacote> depois = {TPacote::OMesmo};

    bool OMesmo() const { return depois.front() == TPacote::OMesmo; }
    /// Statements from one cut to the next: another package is tried behind a part of the cuts.
    int Passo() const { return OMesmo() ? kPasso : 7 * kPasso; }
};

void PrintTo(const TQueda& queda, std::ostream* saida) { *saida << queda.nome; }

/// What the update is about. Of the backup tables, which are of the last rebuild that there was, that of TREC alone,
/// and with the same package: another one may have been the first to make it.
std::string Resultado(const TQueda& queda, const std::string& retrato) {
    std::vector<std::string> linhas;
    for (auto& linha : Divide(retrato, '\n'))
        if (!linha.starts_with("BTARQ_VER") && (queda.OMesmo() || !linha.starts_with("BT")))
            linhas.push_back(std::move(linha));
    return Junta(linhas, "\n");
}

/// Rows whose photo, which the last package has no column for, is in the backup table or in the rejects file.
std::size_t FotosGuardadas(const std::string& retrato, const fs::path& pasta) {
    std::size_t fotos = 0;
    for (const auto& linha : Divide(retrato, '\n'))
        fotos += linha.starts_with("BTREC: ") && linha.find("conteúdo ") != std::string::npos;
    std::set<std::string> rejeitadas;
    for (const auto& linha : Divide(LeArquivo(pasta / "AtualizaWKD.rejeitados.jsonl"), '\n'))
        if (linha.find("\"FOTO\": ") != std::string::npos) rejeitadas.insert(linha);
    return std::max(fotos, rejeitadas.size());
}

/// Runs with the packages that come next; what is wrong with it.
std::string Continua(const TQueda& queda, const TMoldeDaQueda& molde, const fs::path& pasta) {
    std::string erro;
    for (const TPacote pacote : queda.depois) {
        molde.Troca(pacote, pasta);
        const int codigo = Corre(pasta, 0);
        if (codigo != 0 && (queda.OMesmo() || codigo != 1))
            erro += "a corrida seguinte terminou com " + std::to_string(codigo) + ": " + LeArquivo(pasta / "erros.txt");
    }
    return erro;
}

/// What differs from the expected result, once no run has the database any more: it is opened a single time, since the
/// runs beside this one inherit the lock of its file for a moment.
std::string Confere(const TQueda& queda, const std::string& esperado, const fs::path& pasta) {
    const std::string retrato = RetratoDe(pasta);
    std::string erro = Diferencas(esperado, Resultado(queda, retrato));
    const bool outras = queda.depois.back() == TPacote::OutrasColunas;
    if (const auto fotos = FotosGuardadas(retrato, pasta); outras && fotos != 30)
        erro += "fotos guardadas: " + std::to_string(fotos) + "\n";
    return erro;
}

/// Cuts the run at each of its statements, or at some, two at a time; `falha` gets the statement and what is wrong.
void CortaEmTodos(const TQueda& queda, const TMoldeDaQueda& molde, const fs::path& raiz, const std::string& esperado,
                  int total, const std::function<void(int, const std::string&)>& falha) {
    std::atomic<int> proximo = 1;
    std::mutex trava;
    const auto trabalha = [&](const fs::path& pasta) {
        for (int n = proximo.fetch_add(queda.Passo()); n <= total; n = proximo.fetch_add(queda.Passo())) {
            molde.CopiaPara(pasta);
            molde.Troca(TPacote::OMesmo, pasta);
            const int cortada = Corre(pasta, n, queda.comErro);
            std::string erro = Continua(queda, molde, pasta);
            erro += Confere(queda, esperado, pasta);
            if (*queda.comErro == '\0' && cortada != 9)
                erro += "a primeira corrida não foi cortada: " + std::to_string(cortada);
            const std::lock_guard guarda(trava);
            if (!erro.empty()) falha(n, LeArquivo(pasta / "erros.txt") + erro);
        }
    };
    std::thread outra(trabalha, raiz / "b");
    trabalha(raiz / "a");
    outra.join();
}

class QuedaTest : public testing::TestWithParam<TQueda> {};

TEST_P(QuedaTest, TheNextRunFinishesWhatTheInterruptedOneBegan) {
    const TQueda& queda = GetParam();
    const TMoldeDaQueda molde;
    const TPastaTemporaria raiz;
    const fs::path inteira = raiz / "inteira";
    molde.CopiaPara(inteira);
    molde.Troca(TPacote::OMesmo, inteira);
    ASSERT_EQ(Corre(inteira, 0), 0) << LeArquivo(inteira / "erros.txt");
    const int total = std::stoi(LeArquivo(inteira / "saida.txt"));
    ASSERT_GT(total, 100);
    ASSERT_EQ(Continua(queda, molde, inteira), "");
    const std::string esperado = Resultado(queda, RetratoDe(inteira));
    for (const char* linha : {"TREC: C29|Registro 29|", "TARQ_VER: A29|arquivo 29", "TALT: 29|Nome 29|"})
        ASSERT_NE(esperado.find(linha), std::string::npos) << linha << "\n" << esperado;

    std::vector<int> falhas;
    CortaEmTodos(queda, molde, raiz.Caminho(), esperado, total, [&](int n, const std::string& erro) {
        falhas.push_back(n);
        if (falhas.size() <= 5) ADD_FAILURE() << "comando " << n << " de " << total << "\n" << erro;
    });
    EXPECT_EQ(falhas, std::vector<int>()) << "de " << total;
    RecordProperty("comandos", total);
}

INSTANTIATE_TEST_SUITE_P(
    Quedas, QuedaTest,
    testing::Values(TQueda{"ProcessoEncerrado"}, TQueda{"ErroDoServidor", "erro"},
                    TQueda{"DepoisUmPacoteMaisNovo", "", {TPacote::Seguinte}},
                    TQueda{"DepoisUmPacoteSemAsTabelas", "", {TPacote::SemAsTabelas, TPacote::OMesmo}},
                    TQueda{"DepoisUmPacoteComOutrasColunas", "", {TPacote::OutrasColunas}}),
    [](const auto& caso) { return caso.param.nome; });

}  // namespace
}  // namespace wkd
