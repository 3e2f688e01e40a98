#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "SessaoFirebird.h"

namespace wkd {

/// The lock of one update a database on a Firebird server: an announcement in a context variable of the attachment,
/// which goes with it and which the monitoring tables show to every other one (of the same user; of all users to
/// SYSDBA and to the owner). Nothing is written to the database, no transaction stays open, and no object is needed.
class TTravaFirebird {
  public:
    explicit TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao);

    /// Whoever announces himself looks around afterwards, so that of two at the same time at least one sees the other;
    /// who sees somebody withdraws, and tries again as long as nobody has it.
    bool Toma(std::string_view texto);
    void Anuncia(std::string_view texto);
    /// What the holder announced, and his user and attachment.
    std::optional<std::string> Quem();

  private:
    enum class TVez { Quer, Tem };
    /// The furthest of the others that want it or have it.
    std::optional<TVez> Outros();
    void Grava(const std::optional<std::string>& valor);

    std::shared_ptr<TSessaoFirebird> sessao_;
    /// Of this object: what it left on a connection that the server takes for alive is no other's.
    std::string marca_;
};

}  // namespace wkd
