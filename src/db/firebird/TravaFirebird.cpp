#include "TravaFirebird.h"

#include <chrono>
#include <random>
#include <thread>

#include "ComandoFirebird.h"
#include "Texto.h"

namespace wkd {
namespace {

using TModo = TTransacaoFirebird::TModo;

constexpr std::size_t kTexto = 160;  // bytes: an older server takes 255 for the whole variable

/// Announcements of the others.
constexpr std::string_view kOutros =
    "select cast(v.mon$variable_value as varchar(255) character set octets), trim(a.mon$user),"
    " cast(a.mon$attachment_id as varchar(20)) from mon$context_variables v"
    " join mon$attachments a on a.mon$attachment_id = v.mon$attachment_id"
    " where v.mon$variable_name = 'ATUALIZAWKD' and v.mon$attachment_id <> current_connection";

std::string MarcaNova() {
    std::random_device acaso;
    return std::to_string(acaso()) + "." + std::to_string(acaso()) + " ";
}

}  // namespace

TTravaFirebird::TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao)
    : sessao_(std::move(sessao)), marca_(MarcaNova()) {}

bool TTravaFirebird::Toma(std::string_view texto) {
    constexpr int kTentativas = 25;
    auto reserva = TReserva::Alheia;
    for (int vez = 0; vez < kTentativas && reserva == TReserva::Alheia; ++vez) {
        if (Visivel()) return false;
        if (vez > 0) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        reserva = Reserva();
        if (reserva != TReserva::SemTabela) continue;
        CriaTabela();
        reserva = Reserva();
    }
    if (reserva == TReserva::Alheia) return false;
    Anuncia(texto);
    if (reserva == TReserva::Nossa || !Visivel()) return true;
    Grava(std::nullopt);
    return false;
}

void TTravaFirebird::Anuncia(std::string_view texto) { Grava(marca_ + std::string(texto.substr(0, kTexto))); }

std::optional<std::string> TTravaFirebird::Quem() {
    auto quem = Visivel();
    if (!quem && Reserva() == TReserva::Alheia) quem = "";
    reserva_.reset();
    return quem;
}

TTravaFirebird::TReserva TTravaFirebird::Reserva() try {
    reserva_.reset();
    reserva_ = std::make_unique<TTransacaoFirebird>(*sessao_, TModo::EscritaSemEspera, kTabelaDaTrava);
    return TReserva::Nossa;
} catch (const TErroBanco& erro) {
    if (erro.Falha() == TFalha::EmUso) return TReserva::Alheia;
    if (erro.Falha() == TFalha::ObjetoInexistente) return TReserva::SemTabela;
    throw;
}

void TTravaFirebird::CriaTabela() try {
    TComandoFirebird(sessao_, "create table " + std::string(kTabelaDaTrava) + " (NADA integer)").Executa();
} catch (const TErroBanco& erro) {  // the user may not, or another was quicker
    if (erro.ConexaoPerdida()) throw;
}

std::optional<std::string> TTravaFirebird::Visivel() {
    TComandoFirebird comando(sessao_, kOutros);
    for (comando.Abre(); comando.Proximo();) {
        const std::string anuncio = TextoDeBytes(comando.Valor(0).ComoBytes());
        if (anuncio.starts_with(marca_)) continue;
        return anuncio.substr(anuncio.find(' ') + 1) + " (usuário " + comando.Valor(1).ComoTexto() + ", conexão " +
               comando.Valor(2).ComoTexto() + ")";
    }
    return std::nullopt;
}

void TTravaFirebird::Grava(const std::optional<std::string>& valor) {
    TComandoFirebird comando(sessao_,
                             "select rdb$set_context('USER_SESSION', 'ATUALIZAWKD',"
                             " cast(:pTEXTO as varchar(255) character set octets)) from rdb$database");
    comando.TComando::Atribui("pTEXTO", valor ? TValor(TBytes{*valor}) : TValor());
    for (comando.Abre(); comando.Proximo();) continue;
}

}  // namespace wkd
