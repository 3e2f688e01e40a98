#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rows/Campo.h"

namespace wkd {

/// Filter expression of a dataset: comparisons "campo = literal" or "Upper(campo) = 'X'", joined by and / or, with
/// parentheses. A literal is a number or a text in single quotes (embedded quotes doubled). Texts are equal when
/// they differ in letter case or trailing blanks alone; NULL equals nothing.
class TFiltro {
  public:
    /// The empty filter, which every row passes.
    TFiltro() = default;
    /// Throws std::invalid_argument for a text of another form.
    explicit TFiltro(std::string_view texto);

    /// Finds the fields again; needed before the operations below. Throws std::invalid_argument for an unknown one.
    void LocalizaCampos(const std::vector<TCampo>& campos);
    bool Aceita(const TLinha& linha) const;
    /// A field and text that every accepted row has in it.
    struct TIgualdade {
        std::size_t campo = 0;
        TValor texto;
    };
    std::optional<TIgualdade> Igualdade() const;

    enum class TTipoNo { Compara, E, Ou };
    struct TNo {
        TTipoNo tipo = TTipoNo::Compara;
        std::string campo;
        std::size_t posicao = 0;
        TValor literal;
        std::vector<TNo> partes;
    };

  private:
    std::optional<TNo> raiz_;
};

}  // namespace wkd
