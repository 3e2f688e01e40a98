#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ColunasDaCopia.h"
#include "Contexto.h"
#include "Rejeitados.h"
#include "Renumeracao.h"

namespace wkd {

/// One copy of all rows of a table into another one.
struct TCopia {
    std::string tabela;  // business table: the one that reports name
    std::string origem, destino;
    std::vector<std::string> chave;  // columns that tell a row in reports
    std::string etapa;               // of the rejects
    std::string rotulo = {};         // of every row; empty leaves the label alone
    std::string inicioDoErro = {};   // before the text of a row that failed
    // Shows also what fails of a single field, asks whether to go on without a refused row, and ends when what is
    // missing cannot be written into the rejects file.
    bool exigente = false;
    std::size_t linhasPorLote = 100;
    std::string condicao = {};                             // behind the source's name: alias and where clause
    std::int64_t pula = 0;                                 // rows of the source that an earlier copy has done
    std::function<void(std::int64_t)> aoGravar = nullptr;  // in each transaction: rows of the source done by then
};

struct TResultadoDaCopia {
    std::int64_t lidas = 0, gravadas = 0;
    std::int64_t rejeitados = 0;      // rows and values not stored
    std::set<std::string> alteradas;  // columns in capitals that got other values on purpose: numbers, required ones
};

/// Rows on their way from a table to its backup or back. One forward cursor reads, one prepared statement stores; a
/// commit every `linhasPorLote` rows keeps memory flat and whole batches behind an interruption.
///
/// A value that the target cannot hold is left out of its row, and a row that the server refuses twice out of the
/// copy; both are shown and go to the rejects file. A batch whose commit fails is stored again row by row.
class TCopiaDeLinhas {
  public:
    /// `renumeracao` must outlive the copy.
    TCopiaDeLinhas(TContexto& ctx, TCopia copia, TRenumeracao& renumeracao);

    /// Throws what the reading says, a lost connection, and std::runtime_error for a copy that was given up.
    TResultadoDaCopia Executa(std::int64_t linhas);

  private:
    struct TLinhaDoLote {
        TLinha linha;
        std::int64_t numero;  // in the source, from 1
    };

    void Linha();
    TLinha Le();
    TValor LeCampo(const TColunaDaCopia& coluna);
    void AplicaRegras(TLinha& linha);
    bool Posta(TLinha& linha);
    void Envia(const TLinha& linha);
    void IsolaCampos(TLinha& linha);
    void FechaLote();
    void RefazLote();
    bool GravaSozinha(const TLinhaDoLote& linha);
    void Conta(std::int64_t ate);
    void RejeitaLinha(const TLinha& linha, const std::string& erro);
    void ConfereGuardado(bool guardado);
    void RejeitaCampo(const TLinha& linha, const std::string& erro, std::size_t coluna);
    TPares Chave(const TLinha& linha) const;

    TContexto& ctx_;
    TCopia copia_;
    TRenumeracao& renumeracao_;
    std::vector<TColunaDaCopia> colunas_;
    std::vector<bool> numeradas_;  // by column
    TRejeitados rejeitados_;
    TResultadoDaCopia resultado_;
    std::unique_ptr<TComando> cursor_, insere_;
    std::optional<TTransacao> transacao_;
    std::vector<TLinhaDoLote> lote_;  // stored and not yet committed
};

}  // namespace wkd
