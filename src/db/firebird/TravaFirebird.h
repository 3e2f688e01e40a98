#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "SessaoFirebird.h"

namespace wkd {

/// A table of no rows and of no dictionary, made by the first update and left out of what a connection lists.
inline constexpr std::string_view kTabelaDaTrava = "ATUALIZAWKD$TRAVA";

/// The lock of one update a database on a Firebird server: a reservation of that table, which needs no right to it and
/// no row, keeps nobody out but another update, and goes with the attachment. It does not tell who has it: a context
/// variable of the attachment does, which the monitoring tables show to the others of the same user, to SYSDBA and to
/// the owner. Where nobody could make the table, what these see is the lock.
class TTravaFirebird {
  public:
    explicit TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao);

    /// Waits a moment for one whom it does not see: the server may be about to give him up.
    bool Toma(std::string_view texto);
    void Anuncia(std::string_view texto);
    /// For another connection than the holder's: what he announced, his user and attachment; empty when this user may
    /// not see him.
    std::optional<std::string> Quem();

  private:
    enum class TReserva { Nossa, Alheia, SemTabela };
    TReserva Reserva();
    void CriaTabela();
    std::optional<std::string> Visivel();
    void Grava(const std::optional<std::string>& valor);

    std::shared_ptr<TSessaoFirebird> sessao_;
    /// Of this object: what it left on a connection that the server takes for alive is no other's.
    std::string marca_;
    std::unique_ptr<TTransacaoFirebird> reserva_;
};

}  // namespace wkd
