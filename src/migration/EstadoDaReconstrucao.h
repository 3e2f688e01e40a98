#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Contexto.h"

namespace wkd {

/// SARQUIVO.VERSAO of a table whose rows wait in a complete backup table.
inline constexpr std::int64_t kVersaoPendente = -1;

/// Whether the table carries VERSAO -1, whatever its module. The answer is that of the database.
bool ReconstrucaoPendente(TContexto& ctx, std::string_view tabela);
/// Gives the stored row of the current table VERSAO -1. Throws std::runtime_error when that could not be committed.
void MarcaReconstrucao(TContexto& ctx, std::string_view tabela);

/// How far the rebuild of a table has come while it carries VERSAO -1, kept in TINI.
enum class TEtapaDaReconstrucao {
    Desconhecida,  // no TINI, or a rebuild that left no mark
    Guardada,      // the backup is complete and the old table still there, whole
    Restaurando    // the old table is gone: one of that name may be half filled, and in use
};

TEtapaDaReconstrucao EtapaDaReconstrucao(TContexto& ctx, std::string_view tabela);
/// Desconhecida takes the mark away. Does nothing in a database without TINI.
void GravaEtapa(TContexto& ctx, std::string_view tabela, TEtapaDaReconstrucao etapa);

/// How many rows of the backup table, from its first on, a restore that keeps count has brought back; nothing when
/// none does.
std::optional<std::int64_t> LinhasRestauradas(TContexto& ctx, std::string_view tabela);
/// Keeps the count of a restore, in the open transaction when there is one, for a table that is marked Restaurando.
class TContagemDaRestauracao {
  public:
    TContagemDaRestauracao(TContexto& ctx, std::string_view tabela);
    void Grava(std::int64_t linhas);

  private:
    std::unique_ptr<TComando> grava_;
};

}  // namespace wkd
