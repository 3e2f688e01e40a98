// A whole update is cut at every single statement, on copies of one database, and run again.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

#include "QuedaApoio.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kPasso = 13;  // the sanitizers make every run several times slower
#else
constexpr int kPasso = 1;
#endif

/// Cuts the run at every statement, two at a time; `falha` gets the statement and what is wrong.
void CortaEmTodos(const TMolde& molde, const fs::path& raiz, const char* comErro, const std::string& esperado,
                  int total, const std::function<void(int, const std::string&)>& falha) {
    std::atomic<int> proximo = 1;
    std::mutex trava;
    const auto trabalha = [&](const fs::path& pasta) {
        for (int n = proximo.fetch_add(kPasso); n <= total; n = proximo.fetch_add(kPasso)) {
            molde.CopiaPara(pasta);
            const int cortada = Corre(pasta, n, comErro);
            const int segunda = Corre(pasta, 0);
            std::string erro = Diferencas(esperado, RetratoDe(pasta));
            if (*comErro == '\0' && cortada != 9)
                erro += "a primeira corrida não foi cortada: " + std::to_string(cortada);
            if (segunda != 0) erro += "a segunda corrida relatou: " + LeArquivo(pasta / "erros.txt");
            const std::lock_guard guarda(trava);
            if (!erro.empty()) falha(n, erro);
        }
    };
    std::thread outra(trabalha, raiz / "b");
    trabalha(raiz / "a");
    outra.join();
}

class QuedaTest : public testing::TestWithParam<const char*> {};

TEST_P(QuedaTest, a_corrida_seguinte_termina_o_que_a_interrompida_comecou) {
    const TMolde molde;
    const TPastaTemporaria raiz;
    molde.CopiaPara(raiz / "inteira");
    ASSERT_EQ(Corre(raiz / "inteira", 0), 0) << LeArquivo(raiz / "inteira/erros.txt");
    const int total = std::stoi(LeArquivo(raiz / "inteira/saida.txt"));
    ASSERT_GT(total, 100);
    ASSERT_EQ(Corre(raiz / "inteira", 0), 0) << LeArquivo(raiz / "inteira/erros.txt");
    const std::string esperado = RetratoDe(raiz / "inteira");
    ASSERT_NE(esperado.find("TREC: C29|Registro 29|2024-01-01 00:29:00|conteúdo 29|cor 29"), std::string::npos);

    std::vector<int> falhas;
    CortaEmTodos(molde, raiz.Caminho(), GetParam(), esperado, total, [&](int n, const std::string& erro) {
        falhas.push_back(n);
        if (falhas.size() <= 5) ADD_FAILURE() << "comando " << n << " de " << total << "\n" << erro;
    });
    EXPECT_EQ(falhas, std::vector<int>()) << "de " << total;
}

INSTANTIATE_TEST_SUITE_P(Quedas, QuedaTest, testing::Values("", "erro"),
                         [](const auto& caso) { return *caso.param ? "ErroDoServidor" : "ProcessoEncerrado"; });

}  // namespace
}  // namespace wkd
