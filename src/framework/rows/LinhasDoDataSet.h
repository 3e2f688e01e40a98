#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "values/Campo.h"

namespace wkd {

/// Number of a row in its dataset; in the order in which the rows came, never given twice.
using TIdLinha = std::uint32_t;

/// Text by which key values are compared: letter case, trailing blanks and trailing decimal zeros do not count;
/// NULL is the empty text.
std::string ChaveDeValor(const TValor& valor);
std::string ChaveDeValores(const TLinha& valores);
/// Key of the fields `campos` of the row.
std::string ChaveDaLinha(const TLinha& linha, const std::vector<std::size_t>& campos);

/// Hash index over some fields of the rows.
class TIndiceDeLinhas {
  public:
    explicit TIndiceDeLinhas(std::vector<std::size_t> campos) : campos_(std::move(campos)) {}

    void Inclui(TIdLinha id, const TLinha& linha);
    void Exclui(TIdLinha id, const TLinha& linha);
    /// Rows with that key, ascending.
    const std::vector<TIdLinha>& Procura(const std::string& chave) const;

  private:
    std::vector<std::size_t> campos_;
    std::unordered_map<std::string, std::vector<TIdLinha>> linhas_;
};

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

/// The visible rows of a dataset in their order: by the key of some fields, compared as texts, else as they came.
class TVisao {
  public:
    /// `ids` ascending.
    void Monta(const TLinhas& linhas, std::vector<TIdLinha> ids, std::vector<std::size_t> camposDaOrdem);
    std::size_t Total() const { return ids_.size(); }
    TIdLinha operator[](std::size_t posicao) const { return ids_[posicao]; }
    std::optional<std::size_t> Posicao(const TLinhas& linhas, TIdLinha id) const;
    /// Puts the row in its place and returns the position.
    std::size_t Inclui(const TLinhas& linhas, TIdLinha id);
    void Exclui(std::size_t posicao);

  private:
    std::size_t Lugar(const TLinhas& linhas, TIdLinha id) const;

    std::vector<TIdLinha> ids_;
    std::vector<std::size_t> ordem_;
};

}  // namespace wkd
