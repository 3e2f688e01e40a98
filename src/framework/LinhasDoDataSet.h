#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Campo.h"
#include "IndiceDeLinhas.h"

namespace wkd {

/// What is pending of a row. Removida: deleted and no longer pending.
enum class TSituacao : std::uint8_t { Intacta, Inserida, Alterada, Excluida, Removida };

struct TRegistro {
    TLinha linha;
    std::unique_ptr<TLinha> original;  // as stored, once the row was altered
    TSituacao situacao = TSituacao::Intacta;
    std::uint64_t ordem = 0;  // of the pending change

    const TLinha& Original() const { return original ? *original : linha; }
};

/// Rows of a dataset with their pending changes and hash indexes.
class TLinhas {
  public:
    /// Takes the rows as stored; nothing is pending.
    void Carrega(std::vector<TLinha> linhas);

    std::size_t Total() const { return registros_.size(); }
    bool Existe(TIdLinha id) const;
    const TLinha& operator[](TIdLinha id) const { return registros_[id].linha; }
    const TRegistro& Registro(TIdLinha id) const { return registros_[id]; }
    /// Index over these fields, built at its first use and kept up to date from then on.
    const TIndiceDeLinhas& Indice(const std::vector<std::size_t>& campos);

    /// A row that is stored already.
    TIdLinha Acrescenta(TLinha linha);
    /// Takes a row out that is stored no more.
    void Esquece(TIdLinha id);

    TIdLinha Inclui(TLinha linha);
    /// A row that becomes equal to what is stored is pending no more.
    void Altera(TIdLinha id, TLinha linha);
    void Exclui(TIdLinha id);

    std::size_t QuantasPendentes() const { return pendentes_.size(); }
    /// Rows with a pending change, in the order the changes were made.
    std::vector<TIdLinha> Pendentes() const;
    /// The row as it is stored; an inserted one is removed.
    void Desfaz(TIdLinha id);
    /// What was pending is stored now.
    void Confirma();

  private:
    void Marca(TIdLinha id, TSituacao situacao);
    void Troca(TIdLinha id, TLinha linha);
    void IncluiNosIndices(TIdLinha id);
    void ExcluiDosIndices(TIdLinha id);

    std::vector<TRegistro> registros_;
    std::map<std::uint64_t, TIdLinha> pendentes_;  // by order of change
    std::uint64_t ultimaOrdem_ = 0;
    std::map<std::vector<std::size_t>, TIndiceDeLinhas> indices_;
};

}  // namespace wkd
