#include "TravaFirebird.h"

#include <chrono>
#include <random>
#include <thread>

#include "ComandoFirebird.h"
#include "Texto.h"

namespace wkd {
namespace {

constexpr std::string_view kTem = "TEM ", kQuer = "QUER ";
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

std::string Anuncio(TComando& linha) { return TextoDeBytes(linha.Valor(0).ComoBytes()); }

void EsperaUmPouco() {
    std::random_device acaso;
    std::this_thread::sleep_for(std::chrono::milliseconds(20 + acaso() % 200));
}

}  // namespace

TTravaFirebird::TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao)
    : sessao_(std::move(sessao)), marca_(MarcaNova()) {}

bool TTravaFirebird::Toma(std::string_view texto) {
    constexpr int kTentativas = 20;
    for (int vez = 0; vez < kTentativas; ++vez) {
        Grava(std::string(kQuer) + marca_);
        const auto outros = Outros();
        if (!outros) {
            Anuncia(texto);
            return true;
        }
        Grava(std::nullopt);
        if (outros == TVez::Tem) return false;
        EsperaUmPouco();
    }
    return false;
}

void TTravaFirebird::Anuncia(std::string_view texto) {
    Grava(std::string(kTem) + marca_ + std::string(texto.substr(0, kTexto)));
}

std::optional<std::string> TTravaFirebird::Quem() {
    TComandoFirebird comando(sessao_, kOutros);
    for (comando.Abre(); comando.Proximo();) {
        const std::string anuncio = Anuncio(comando);
        if (!anuncio.starts_with(kTem)) continue;
        const auto fim = anuncio.find(' ', kTem.size());
        return anuncio.substr(fim == std::string::npos ? anuncio.size() : fim + 1) + " (usuário " +
               comando.Valor(1).ComoTexto() + ", conexão " + comando.Valor(2).ComoTexto() + ")";
    }
    return std::nullopt;
}

std::optional<TTravaFirebird::TVez> TTravaFirebird::Outros() {
    std::optional<TVez> vez;
    TComandoFirebird comando(sessao_, kOutros);
    for (comando.Abre(); comando.Proximo();) {
        const std::string anuncio = Anuncio(comando);
        if (anuncio.find(marca_) != std::string::npos) continue;
        if (anuncio.starts_with(kTem)) return TVez::Tem;
        vez = TVez::Quer;
    }
    return vez;
}

void TTravaFirebird::Grava(const std::optional<std::string>& valor) {
    TComandoFirebird comando(sessao_,
                             "select rdb$set_context('USER_SESSION', 'ATUALIZAWKD',"
                             " cast(:pTEXTO as varchar(255) character set octets)) from rdb$database");
    comando.TComando::Atribui("pTEXTO", valor ? TValor(TBytes{*valor}) : TValor());
    for (comando.Abre(); comando.Proximo();) continue;
}

}  // namespace wkd
