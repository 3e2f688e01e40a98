#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "context/Contexto.h"

namespace wkd {

/// Section of TINI.
inline constexpr std::string_view kSecaoDosGuardados = "VoltaComoEra";

/// The primary key and the indexes of one table as they were before the run dropped them: what cannot be made as told
/// comes back. They are kept in TINI as well, so that the run after an interrupted one brings them back.
class TIndicesGuardados {
  public:
    /// `retoma`: an earlier run may have left some.
    TIndicesGuardados(TContexto& ctx, std::string_view tabela, bool retoma);

    const std::string& Tabela() const { return nome_; }

    // Before the drop. What is there now counts, not what an earlier run has kept of that name.
    void GuardaIndices(std::vector<TIndice> indices);
    /// `pedida`: columns of the key that takes its place. One that comes back just so is not kept.
    void GuardaChave(const std::vector<std::string>& pedida);

    /// Whether an earlier run could not make the table's key, which has its old one instead.
    bool ChavePendente() const;
    /// Makes again those that the table lacks, each with a line.
    void Devolve();
    /// They are not wanted any more.
    void Esquece();

  private:
    struct TGuardado {
        std::string nome, comando;
        std::vector<std::string> colunas;  // of a key; none: an index

        bool Chave() const { return !colunas.empty(); }
    };

    void Le();
    void Guarda(TGuardado guardado);
    void Grava();
    bool Falta(const TGuardado& guardado) const;
    bool Pedido(const TGuardado& guardado) const;
    void ExigeValores(const std::vector<std::string>& colunas);
    void Devolve(const TGuardado& guardado);

    TContexto& ctx_;
    const std::string nome_;    // as the dictionary writes it
    const std::string tabela_;  // in capitals
    std::vector<TGuardado> guardados_;
    std::size_t pedacos_ = 0;  // rows of TINI that hold them
};

}  // namespace wkd
