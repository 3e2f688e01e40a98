#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "context/Contexto.h"
#include "copy/ColunasDaCopia.h"
#include "copy/CopiaNoServidor.h"
#include "copy/InsercaoEmBloco.h"
#include "copy/Rejeitados.h"

namespace wkd {

/// Throws std::runtime_error when the disk of the database is about to be full. Firebird 3.0 can damage a database
/// that it cannot make larger, so nothing is begun, and a copy ends, before that happens.
void ExigeEspacoEmDisco(TContexto& ctx);

/// Rows of a commit on the way into the backup table and back, where LinhasPorCommit says nothing.
inline constexpr std::size_t kLinhasNaIda = 100, kLinhasNaVolta = 11;
/// What a disk that is waited for is better off with.
inline constexpr std::size_t kMuitasPorCommit = 10'000;

/// What the option, else the key "LinhasPorCommit" of the alias, says about the rows of a commit, 1 to 100,000; nothing
/// where neither says anything. Throws TErroConfiguracao for anything else.
std::optional<std::size_t> LinhasPorCommit(const TContexto& ctx);

struct TResultadoDaCopia {
    std::int64_t lidas = 0, gravadas = 0;
    std::int64_t recusadas = 0;       // rows not stored
    std::int64_t incompletas = 0;     // rows stored without a value
    std::int64_t soNaOrigem = 0;      // rows that neither the target nor the rejects file could take
    std::set<std::string> alteradas;  // columns in capitals that got other values on purpose: numbers, required ones
};

/// Rows on their way from a table to its backup or back. A commit every `linhasPorLote` rows keeps memory flat and
/// whole batches behind an interruption. Rows that change nothing on their way are moved by the server alone where it
/// can; the others pass through here, and go to the server in blocks. What the server refuses is done again row by row.
///
/// A value that the target cannot hold is left out of its row, and a row that the server refuses twice out of the
/// copy; both go to the rejects file, and are shown: the first ones each by itself, the rest as a number. A batch whose
/// commit fails is stored again row by row. A row that the rejects file cannot take either stays in the source alone:
/// it ends a copy that is `exigente`, and one that keeps count and would not come back to it; others count it and go
/// on. A row that cannot be read ends every copy.
class TCopiaDeLinhas {
  public:
    /// `renumeracao` must outlive the copy.
    TCopiaDeLinhas(TContexto& ctx, TCopia copia, TRenumeracao& renumeracao);

    /// Throws what the reading says, a lost connection, and std::runtime_error for a copy that was given up.
    TResultadoDaCopia Executa(std::int64_t linhas);

  private:
    /// A row stored in the open transaction; one that the server moves has its name alone.
    struct TLinhaDoLote {
        std::int64_t numero;  // in the source, from 1
        std::string chave, faltas;
        TLinha valores;
    };

    void PeloCliente();
    void PeloServidor();
    void Anuncia();
    void PoeNoLote(TLinhaDoLote linha);
    void Avanca();
    bool PeloBloco() const { return bloco_ && bloco_->Lugares() > 1; }
    void Envia(bool sozinho = false);
    void EnviaJuntas(std::size_t primeira);
    template <class TGuarda>
    void FicamNoLote(std::size_t primeira, TGuarda&& guarda);
    bool Refaz(TLinhaDoLote& linha);
    template <class TGuarda>
    bool Guardada(TGuarda&& guarda);
    TLinha LePelaChave(const std::string& chave);
    TLinha Le(TComando& linha);
    TValor LeCampo(TComando& linha, const TColunaDaCopia& coluna);
    void AplicaRegras(TLinha& linha);
    bool Arruma(TLinha& linha);
    bool Posta(TLinha& linha);
    void Insere(const TLinha& linha);
    bool IsolaCampos(TLinha& linha);
    void FechaLote();
    void Confirma();
    void Commit();
    void RefazLote();
    bool GravaSozinha(TLinhaDoLote& linha);
    void Conta(std::int64_t ate);
    std::int64_t Numero() const { return copia_.pula + resultado_.lidas; }
    bool Mostra(TErro erro);
    void RelataDemais();
    void RejeitaLinha(const TLinha& linha, const TErro& erro);
    void ConfereGuardado(bool guardado);
    void RejeitaCampo(const TLinha& linha, const TErro& erro, std::size_t coluna);
    TPares Chave(const TLinha& linha) const;

    TContexto& ctx_;
    TCopia copia_;
    TRenumeracao& renumeracao_;
    std::vector<TColunaDaCopia> colunas_;
    TRejeitados rejeitados_;
    TResultadoDaCopia resultado_;
    std::unique_ptr<TCopiaNoServidor> servidor_;
    std::unique_ptr<TInsercaoEmBloco> bloco_;
    std::unique_ptr<TComando> insere_;
    std::optional<TTransacao> transacao_;
    std::vector<TLinhaDoLote> lote_;  // not yet committed
    std::size_t aEnviar_ = 0;         // of them, at the end: not yet sent
    std::size_t bytesNoLote_ = 0;     // that their values take on this machine
    std::int64_t mostrados_ = 0, calados_ = 0;
};

}  // namespace wkd
