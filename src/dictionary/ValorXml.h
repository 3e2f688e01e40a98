#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "Codigos.h"
#include "FontePacote.h"
#include "TiposPacote.h"

namespace wkd {

/// Field as its values stand in the XML form.
struct TColunaXml {
    const TTipoPacote* tipo = nullptr;
    TTipoDado dado = TTipoDado::Texto;
    TCodigo codigo = TCodigo::XmlUtf8;
};

/// Value of a text without blanks around it; nothing when it is none of that type. Not for texts and blobs.
std::optional<TValor> ValorDoTexto(const TTipoPacote& tipo, std::string_view texto);

/// Value of an attribute, still escaped, of field `campo`. An empty one is NULL unless the field is a string.
/// Throws TErroTrecho.
TValor ValorDeXml(const std::shared_ptr<const TFontePacote>& fonte, const TColunaXml& coluna, std::string_view bruto,
                  std::size_t campo);

}  // namespace wkd
