#include "commands/Eco.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "process/Terminal.h"
#include "report/RelatorioDaExecucao.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using namespace std::chrono_literals;
using TRelogio = std::chrono::steady_clock;
constexpr std::size_t kBytesGuardados = 1 << 20;
constexpr auto kSemLeitor = 2s;  // without a byte taken nobody reads
constexpr auto kNoMaximo = 30s;

/// Writes in the order of the calls, which never wait. Never destroyed: a stream that nobody reads holds its thread.
class TEscritor {
  public:
    TEscritor() {
        std::thread([this] { Trabalha(); }).detach();
    }

    void Poe(int saida, std::string texto, bool conta) {
        const std::lock_guard trava(guarda_);
        if (guardados_ + texto.size() > kBytesGuardados) {
            omitidas_ += conta;
            return;
        }
        ContaOmitidas(saida);
        Guarda(saida, std::move(texto));
    }

    void Espera(int saida) {
        std::unique_lock trava(guarda_);
        ContaOmitidas(saida);
        const auto limite = TRelogio::now() + kNoMaximo;
        for (std::size_t antes = ~std::size_t{0}; guardados_ > 0 && guardados_ != antes && TRelogio::now() < limite;) {
            antes = guardados_;
            saiu_.wait_for(trava, kSemLeitor, [&] { return guardados_ < antes; });
        }
    }

  private:
    void ContaOmitidas(int saida) {
        if (omitidas_ == 0) return;
        const auto omitidas = std::exchange(omitidas_, 0);
        Guarda(saida, "(" + std::to_string(omitidas) + " linhas omitidas: ninguém leu esta saída a tempo)\n");
    }

    void Guarda(int saida, std::string texto) {
        guardados_ += texto.size();
        fila_.emplace_back(saida, std::move(texto));
        chegou_.notify_one();
    }

    void Trabalha() {
        for (std::unique_lock trava(guarda_);;) {
            chegou_.wait(trava, [this] { return !fila_.empty(); });
            const auto [saida, texto] = std::move(fila_.front());
            fila_.pop_front();
            trava.unlock();
            for (std::string_view resto = texto; !resto.empty();) {
                const std::size_t escritos = GravaNoFluxo(saida, resto);
                if (escritos == 0) break;
                resto.remove_prefix(escritos);
            }
            trava.lock();
            guardados_ -= texto.size();
            saiu_.notify_all();
        }
    }

    std::mutex guarda_;
    std::condition_variable chegou_, saiu_;
    std::deque<std::pair<int, std::string>> fila_;
    std::size_t guardados_ = 0;  // bytes, those being written included
    std::size_t omitidas_ = 0;
};

/// Of the stream; one terminal gets the lines of both in their order.
TEscritor& Escritor(int saida) {
    static TEscritor& daSaida = *new TEscritor;
    if (saida == kSaida) return daSaida;
    static TEscritor& dosErros = EhTerminal(kSaida) && EhTerminal(kErros) ? daSaida : *new TEscritor;
    return dosErros;
}

}  // namespace

void EscreveNaSaida(std::string_view linha) { Escritor(kSaida).Poe(kSaida, std::string(linha) + '\n', true); }
void EscreveNosErros(std::string_view linha) { Escritor(kErros).Poe(kErros, std::string(linha) + '\n', true); }
void EscreveNoTerminal(std::string_view texto) { Escritor(kSaida).Poe(kSaida, std::string(texto), false); }

void EsperaSaidas() {
    Escritor(kSaida).Espera(kSaida);
    Escritor(kErros).Espera(kErros);
}

namespace {

/// The parts that the line does not say, in one line.
std::string Falta(std::string_view linha, const std::vector<std::string>& partes) {
    std::vector<std::string> faltam;
    for (const auto& parte : partes)
        if (const std::string texto(Apara(parte)); !texto.empty() && linha.find(texto) == std::string_view::npos)
            faltam.push_back(texto);
    return Junta(faltam, " - ");
}

std::string DaTabela(std::string_view tabela) {
    return tabela.empty() ? std::string() : "Tabela: " + std::string(tabela);
}

/// The line of an error that only the log has: table, step and message, each once.
std::string LinhaDaEntrada(const TErroDaExecucao::TEntrada& entrada) {
    const std::string tabela = DaTabela(entrada.tabela), acao = Falta(tabela, {entrada.acao});
    const std::string nomes = tabela + (tabela.empty() || acao.empty() ? "" : " - ") + acao;
    const std::string texto = Falta(nomes, {entrada.mensagem});
    return nomes + (nomes.empty() || texto.empty() ? "" : " - ") + texto;
}

/// What the log has beyond the line: table, step, statement.
std::string Lugar(const TErroDaExecucao& erro, std::string_view onde) {
    if (erro.linha.empty() || !erro.entrada || (erro.tabela.empty() && erro.acao.empty())) return std::string(onde);
    return Falta(erro.linha,
                 {DaTabela(erro.tabela), erro.entrada->acao, Troca(erro.entrada->mensagem, erro.linha, "")});
}

std::string SegundaLinha(std::string_view lugar, TFalha falha) {
    return "    " + (lugar.empty() ? std::string() : "Em: " + std::string(lugar) + ". ") +
           "Providência: " + std::string(Providencia(falha));
}

}  // namespace

void TEcoDosErros::Erro(const TErroDaExecucao& erro, std::string_view onde) {
    std::string segunda = onde.empty() ? std::string() : SegundaLinha(Lugar(erro, onde), erro.erro.falha);
    if (segunda != pendente_) Conclui();
    const bool soNoLog = erro.linha.empty() && erro.entrada;
    escreve_(soNoLog ? LinhaDaEntrada(*erro.entrada) : erro.linha.empty() ? erro.erro.mensagem : erro.linha);
    pendente_ = std::move(segunda);
}

void TEcoDosErros::Conclui() {
    if (!pendente_.empty()) escreve_(pendente_);
    pendente_.clear();
}

}  // namespace wkd
