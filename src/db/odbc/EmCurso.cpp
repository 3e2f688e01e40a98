#include "odbc/EmCurso.h"

#include <chrono>
#include <utility>

#include "values/Texto.h"

#ifndef _WIN32
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace wkd {

#ifdef _WIN32
TSoqueteOdbc::TSoqueteOdbc(SQLHDBC) {}
TSoqueteOdbc::~TSoqueteOdbc() = default;
bool TSoqueteOdbc::Corta() const noexcept { return false; }
#else
namespace {

/// What SQLGetInfo of FreeTDS answers with the descriptor (SQL_INFO_FREETDS_SOCKET of its odbcss.h).
constexpr SQLUSMALLINT kSoqueteDoFreeTds = 1301;

bool FreeTds(SQLHDBC ligacao) {
    SQLCHAR nome[256] = {};
    SQLSMALLINT tamanho = 0;
    const auto retorno = SQLGetInfo(ligacao, SQL_DRIVER_NAME, nome, sizeof nome, &tamanho);
    return SQL_SUCCEEDED(retorno) &&
           std::string_view(reinterpret_cast<const char*>(nome)).find("tdsodbc") != std::string_view::npos;
}

}  // namespace

TSoqueteOdbc::TSoqueteOdbc(SQLHDBC ligacao) {
    if (!FreeTds(ligacao)) return;
    std::intptr_t soquete = -1;
    SQLSMALLINT tamanho = 0;
    const auto retorno = SQLGetInfo(ligacao, kSoqueteDoFreeTds, &soquete, sizeof soquete, &tamanho);
    if (SQL_SUCCEEDED(retorno)) copia_ = fcntl(static_cast<int>(soquete), F_DUPFD_CLOEXEC, 0);
}

TSoqueteOdbc::~TSoqueteOdbc() {
    if (copia_ >= 0) close(copia_);
}

bool TSoqueteOdbc::Corta() const noexcept {
    if (copia_ >= 0) shutdown(copia_, SHUT_RDWR);
    return copia_ >= 0;
}
#endif

void TNumerosOdbc::Inclui(std::string numero) {
    const std::lock_guard trava(guarda_);
    numeros_.push_back(std::move(numero));
}

void TNumerosOdbc::Tira(std::string_view numero) {
    const std::lock_guard trava(guarda_);
    std::erase(numeros_, numero);
}

void TNumerosOdbc::Esquece() {
    const std::lock_guard trava(guarda_);
    numeros_.clear();
}

std::string TNumerosOdbc::Todos() const {
    const std::lock_guard trava(guarda_);
    return Junta(numeros_, ",");
}

TEmCurso::TChamada::TChamada(TEmCurso& emCurso, std::shared_ptr<TSoqueteOdbc> soquete, SQLHSTMT instrucao)
    : emCurso_(emCurso), relogio_(emCurso.relogio_) {
    const std::lock_guard trava(emCurso_.guarda_);
    soqueteDeFora_ = std::exchange(emCurso_.soquete_, std::move(soquete));
    instrucaoDeFora_ = std::exchange(emCurso_.instrucao_, instrucao);
}

TEmCurso::TChamada::~TChamada() {
    const std::scoped_lock trava(emCurso_.cancelando_, emCurso_.guarda_);
    emCurso_.soquete_ = std::move(soqueteDeFora_);
    emCurso_.instrucao_ = instrucaoDeFora_;
}

void TEmCurso::Cancela() noexcept {
    if (Espera() == std::chrono::milliseconds()) return;
    cancelado_ = true;
    if (!Corta()) PedeAoDriver();
}

/// A driver may wait itself for the server's answer to the cancellation.
void TEmCurso::Interrompe(TInterrupcao::TEtapa etapa) {
    using namespace std::chrono_literals;
    if (etapa < TInterrupcao::TEtapa::Cancela) return;
    if (etapa == TInterrupcao::TEtapa::Abandona) Corta();
    if (Espera() == 0ms || (pedido_.valid() && pedido_.wait_for(0s) != std::future_status::ready)) return;
    pedido_ = std::async(std::launch::async, [this] { PedeAoDriver(); });
}

void TEmCurso::PedeAoDriver() noexcept {
    const std::lock_guard cancela(cancelando_);
    const auto instrucao = [this] {
        const std::lock_guard trava(guarda_);
        return instrucao_;
    }();
    if (instrucao != SQL_NULL_HSTMT) SQLCancel(instrucao);
}

bool TEmCurso::Corta() noexcept {
    const std::lock_guard trava(guarda_);
    return soquete_ && soquete_->Corta();
}

}  // namespace wkd
