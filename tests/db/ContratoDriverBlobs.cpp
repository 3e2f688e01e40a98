#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <sys/resource.h>
#endif

#include <algorithm>
#include <span>

#include "ContratoDriver.h"

namespace wkd {
namespace {

/// Bytes that differ from place to place, made while they are read.
class TBytesCorridos : public TLeitorBytes {
  public:
    explicit TBytesCorridos(std::size_t tamanho) : resto_(tamanho) {}
    std::size_t Le(std::span<char> destino) override {
        const auto quantos = std::min(destino.size(), resto_);
        for (auto& c : destino.first(quantos))
            c = static_cast<char>((estado_ = estado_ * 6364136223846793005u + 1) >> 56);
        resto_ -= quantos;
        return quantos;
    }

  private:
    std::size_t resto_;
    std::uint64_t estado_ = 1;
};

bool MesmosBytes(TLeitorBytes& a, TLeitorBytes& b) {
    const auto le = [](TLeitorBytes& leitor, std::span<char> destino) {
        std::size_t lidos = 0;
        while (lidos < destino.size()) {
            const auto n = leitor.Le(destino.subspan(lidos));
            if (n == 0) break;
            lidos += n;
        }
        return lidos;
    };
    std::vector<char> doA(65536), doB(65536);
    for (;;) {
        const auto n = le(a, doA);
        if (le(b, doB) != n || !std::equal(doA.begin(), doA.begin() + static_cast<std::ptrdiff_t>(n), doB.begin()))
            return false;
        if (n == 0) return true;
    }
}

long PicoDeMemoriaMb() {
#ifdef _WIN32
    PROCESS_MEMORY_COUNTERS uso{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &uso, sizeof uso);
    return static_cast<long>(uso.PeakWorkingSetSize >> 20);
#else
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    return uso.ru_maxrss / 1024;
#endif
}

TEST_P(ContratoDriver, ABlobOf100MegabytesPassesInBoundedMemory) {
    constexpr std::size_t kTamanho = 100u << 20;
    Executa("create table T (A integer, B " + Tipo("blob sub_type 0") + ")");
    [[maybe_unused]] const auto antes = PicoDeMemoriaMb();
    auto insere = Conexao().Prepara("insert into T values (:pA, :pB)");
    const auto grava = [&](int a) {
        insere->Atribui("pA", a);
        insere->Executa();
    };
    TBytesCorridos fonte(kTamanho);
    insere->AtribuiFluxo(1, fonte);
    grava(1);
    insere->Atribui("pB", Um("select B from T where A = 1"));
    grava(2);
    const auto copia = Um("select B from T where A = 2");
    TBytesCorridos esperado(kTamanho);
    ASSERT_TRUE(copia.Se<std::shared_ptr<const TConteudo>>());
    EXPECT_TRUE(MesmosBytes(*(*copia.Se<std::shared_ptr<const TConteudo>>())->Abre(), esperado));
#if !defined(__SANITIZE_ADDRESS__)  // which keeps freed memory back
    EXPECT_LT(PicoDeMemoriaMb() - antes, 60 + 110 * GetParam().memoriaPorBlob);
#endif
}

TEST_P(ContratoDriver, AStreamIsReadOnceAndABlobOfAnotherConnectionIsCopied) {
    Executa("create table T (A integer, B " + Tipo("blob sub_type 0") + ", M " + Tipo("blob sub_type 1") + ")");
    auto insere = Conexao().Prepara("insert into T values (:pA, :pB, :pM)");
    std::string memo;
    for (int i = 0; i < 40000; ++i) memo += "ção";  // letters of two bytes across the borders of segments
    TBytesCorridos fonte(70000), esperado(70000);
    insere->Atribui("pA", 1);
    insere->AtribuiFluxo(1, fonte);
    insere->Atribui("pM", memo);
    insere->Executa();
    EXPECT_THROW(insere->Executa(), std::logic_error);

    auto outra = banco_->Outra();
    auto le = outra->Prepara("select B, M from T");
    le->Abre();
    ASSERT_TRUE(le->Proximo());
    insere->Atribui("pA", 2);
    insere->Atribui("pB", le->Valor(0));
    insere->Atribui("pM", le->Valor(1));
    insere->Executa();
    const auto copia = Um("select B from T where A = 2");
    EXPECT_TRUE(MesmosBytes(*(*copia.Se<std::shared_ptr<const TConteudo>>())->Abre(), esperado));
    EXPECT_EQ(Um("select M from T where A = 2").ComoTexto(), memo);
}

TEST_P(ContratoDriver, ABlobIsReadAgainAfterItsCursorAndTransactionHaveEnded) {
    Executa("create table T (B " + Tipo("blob sub_type 1") + ")");
    Executa("insert into T values ('ação')");
    TValor valor;
    {
        TTransacao transacao(Conexao());
        valor = Um("select B from T");
        transacao.Commit();
    }
    EXPECT_EQ(valor.ComoTexto(), "ação");
    auto comando = Conexao().Prepara("select B from T");
    comando->Abre();
    ASSERT_TRUE(comando->Proximo());
    valor = comando->Valor(0);
    comando->Fecha();
    EXPECT_EQ(valor.ComoTexto() + valor.ComoTexto(), "açãoação");
}

}  // namespace
}  // namespace wkd
