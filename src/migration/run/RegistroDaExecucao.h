#pragma once

#include <chrono>
#include <string>

#include "context/Contexto.h"
#include "decision/DecisaoDaTabela.h"

namespace wkd {

/// Rows of which a table's content hash is computed at most, so that it costs no more than a second.
inline constexpr std::int64_t kLinhasDoHash = 50'000;
inline constexpr std::string_view kMetodoDoHash =
    "soma, em qualquer ordem dos registros, de hash(hash(coluna 1) '.' hash(coluna 2) ...) mod 2147483647; sem valor: "
    "n";

/// Number that depends on all values of all rows and not on their order. Empty on servers without such a function.
std::string HashDoConteudo(TConnection& conexao, const std::string& tabela);

/// Evidence of one table's step, from the beginning of a scope to its end. What cannot be counted is left out.
class TRegistroDaTabela {
  public:
    TRegistroDaTabela(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao);
    ~TRegistroDaTabela();
    TRegistroDaTabela(const TRegistroDaTabela&) = delete;
    TRegistroDaTabela& operator=(const TRegistroDaTabela&) = delete;

  private:
    TDesfecho Desfecho(const TTabelaRegistrada& registrada) const;
    void Mede(TTabelaRegistrada& registrada);
    std::optional<std::int64_t> Conta(const std::string& tabela);

    TContexto& ctx_;
    const std::string tabela_;
    const bool mexe_;
    const std::size_t erros_;  // reported before
    const int excecoes_;       // on their way before
    const std::chrono::steady_clock::time_point inicio_ = std::chrono::steady_clock::now();
};

}  // namespace wkd
