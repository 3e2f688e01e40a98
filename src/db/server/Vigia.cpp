#include "server/Vigia.h"

#include <algorithm>
#include <charconv>

namespace wkd {

using namespace std::chrono_literals;

TPrazos TPrazos::DoAlias(const TAliases& aliases, const std::string& alias) {
    TPrazos prazos;
    const std::string texto = aliases.INILeString(alias, "TempoLimite");
    int segundos = 0;
    const auto [fim, erro] = std::from_chars(texto.data(), texto.data() + texto.size(), segundos);
    if (erro != std::errc() || segundos < 0) return prazos;
    prazos.limite = std::chrono::seconds(segundos);
    if (segundos > 0) prazos.aviso = std::min(prazos.aviso, prazos.limite / 2);
    return prazos;
}

TVigia::TVigia(THBNConnection& conexao, TPrazos prazos, TAviso avisa)
    : conexao_(conexao), prazos_(prazos), avisa_(std::move(avisa)) {
    thread_ = std::thread([this] { Vigia(); });
}

TVigia::~TVigia() {
    {
        const std::lock_guard trava(guarda_);
        fim_ = true;
    }
    avisaFim_.notify_all();
    thread_.join();
    if (avisado_) avisa_("");
    if (!resposta_.valid()) return;
    while (resposta_.wait_for(1s) != std::future_status::ready) outra_->Cancela();
}

void TVigia::Vigia() {
    const auto intervalo = std::clamp<std::chrono::milliseconds>(prazos_.aviso / 8, 20ms, 500ms);
    std::unique_lock trava(guarda_);
    while (!avisaFim_.wait_for(trava, intervalo, [this] { return fim_; })) {
        trava.unlock();
        Olha();
        trava.lock();
    }
}

void TVigia::Olha() {
    const auto espera = conexao_.Espera();
    if (espera < prazos_.aviso) {
        if (std::exchange(avisado_, false)) avisa_("");
        return;
    }
    if (!std::exchange(avisado_, true)) {
        trabalha_ = false;
        sinal_ = perguntada_ = {};
    }
    if (conexao_.ArquivoLocal()) return;
    const auto agora = TRelogio::now();
    Pergunta();
    const auto segundos = std::to_string(std::chrono::duration_cast<std::chrono::seconds>(espera).count());
    avisa_(trabalha_ ? "o servidor trabalha no mesmo comando há " + segundos + " s"
                     : "sem resposta do servidor há " + segundos + " s");
    const auto silencio = agora - std::max(agora - espera, sinal_);
    if (prazos_.limite > 0ms && silencio >= prazos_.limite) conexao_.Cancela();
}

/// Asks on a thread of its own: the question may remain without answer as well.
void TVigia::Pergunta() {
    const auto agora = TRelogio::now();
    if (resposta_.valid()) {
        if (resposta_.wait_for(0s) != std::future_status::ready) {
            if (outra_->Espera() >= 2 * prazos_.pergunta) {
                trabalha_ = false;
                outra_->Cancela();
            }
            return;
        }
        trabalha_ = resposta_.get();
        if (trabalha_) sinal_ = agora;
    }
    if (agora - perguntada_ < prazos_.pergunta) return;
    perguntada_ = agora;
    if (!outra_) outra_ = conexao_.Outra();
    resposta_ = std::async(std::launch::async, [this, numero = conexao_.Numero()] {
        try {
            if (!outra_->Connected() || outra_->Perdida()) outra_->Open();
            return outra_->Trabalha(numero);
        } catch (...) {  // no answer is no sign, nor is the end of the process
            return false;
        }
    });
}

}  // namespace wkd
