#pragma once

#include <cstdint>
#include <optional>

#include "connection/Connection.h"

namespace wkd {

/// What one commit costs on a server, in seconds.
struct TCustoDoCommit {
    double conversa = 0;  // to begin and end a transaction: the way to the server
    double pagina = 0;    // until a page is on its disk

    /// By transactions that change nothing: the server counts them, and nothing else is left of them. Nothing where
    /// such a one does not wait for the disk.
    static std::optional<TCustoDoCommit> Mede(TConnection& conexao);
};

/// Rows that a rebuild copies into its backup table and back.
struct TVolumeDaCopia {
    std::int64_t registros = 0, bytes = 0;
    bool soVolta = false;  // they are in the backup table already

    /// So many rows a commit; without a number, 100 on the way there and 11 on the way back.
    std::int64_t Commits(std::optional<std::size_t> linhasPorCommit) const;
    /// How long it may take. Without a cost, as on a disk that nothing waits for.
    double Segundos(const std::optional<TCustoDoCommit>& custo, std::optional<std::size_t> linhasPorCommit) const;
};

}  // namespace wkd
