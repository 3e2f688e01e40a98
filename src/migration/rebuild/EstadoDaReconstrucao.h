#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "context/Contexto.h"

namespace wkd {

/// How far the rebuild of a table has come, as its marks tell: the one on the backup table, the one in TINI, VERSAO -1.
/// An interruption leaves one of these, and the next rebuild goes on from it:
///
///              copy begins              proof, -1, then drop and mark at once           rows back and proven
///     Nenhuma ------------> Guardando -----------------------------------> Restaurando ---------------------> Nenhuma
///        ^                      |                                           |       ^
///        +--- saved anew -------+ interrupted                   interrupted +-------+ what is missing comes back
enum class TEstadoDaReconstrucao {
    Nenhuma,       // none is open. The table is saved; the backup of an earlier rebuild gives way.
    Guardando,     // the backup is being made, or is complete; the table is whole. It is saved anew.
    Restaurando,   // the old table is gone; one of that name may be half filled, and in use. What is in it stays, and
                   // the rows that are missing come back.
    Desconhecida,  // VERSAO -1 over a backup without mark: an earlier generation was interrupted, or somebody wrote -1.
                   // Table and backup are united.
    Alheia         // "B" + table is not a backup. Nothing is touched.
};

TEstadoDaReconstrucao EstadoDaReconstrucao(TContexto& ctx, const std::string& tabela);

/// Gives the stored row of the current table VERSAO -1, and TINI the mark of a complete backup. Throws
/// std::runtime_error when that could not be committed.
void MarcaReconstrucao(TContexto& ctx, std::string_view tabela);
/// Gives a rebuild that goes on its VERSAO -1 again, should that have gone with its row.
void ReabreReconstrucao(TContexto& ctx, std::string_view tabela);

// Each writes the mark of the backup table and, in a database that has TINI, the one there; in the open transaction
// when there is one.
void MarcaGuardada(TContexto& ctx, const std::string& tabela);
void MarcaRestaurando(TContexto& ctx, const std::string& tabela);
void MarcaConcluida(TContexto& ctx, const std::string& tabela);
/// Takes away a mark of TINI that was left behind, and must not speak for the rebuild that begins.
void EsqueceEtapa(TContexto& ctx, const std::string& tabela);

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

/// In the current folder table + ".ok" becomes table + ".old", and table + ".atu" becomes table + ".ok". What fails
/// stops nothing.
void MoveMarcadores(TContexto& ctx, const std::string& tabela);

/// Changes the stored row of the current table and takes the rebuild's mark away, in one transaction. False, and a
/// line of Memo2, when that could not be committed.
bool GravaFim(TContexto& ctx, const std::string& tabela, const std::function<void(TClientDataSet&)>& preenche);

/// Records the package's version and description of the current table in its stored row, which ends the rebuild.
/// False when that was not to be done or could not be committed.
bool EncerraReconstrucao(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
