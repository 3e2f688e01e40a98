#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "packet/Codigos.h"
#include "packet/DataPacket.h"
#include "packet/FontePacote.h"

namespace wkd {

/// Walks over the tags of an XML text, tolerant of what packets in the field contain: end tags without a start,
/// line breaks and "<" in attribute values, any control character. Text between tags, comments, declarations and
/// CDATA are passed over. Nothing is decoded. Throws TErroTrecho.
class TFichasXml {
  public:
    explicit TFichasXml(std::string_view texto) : texto_(texto) {}

    /// Goes to the next start or end tag; false at the end of the text.
    bool Proxima();
    std::string_view Nome() const { return nome_; }
    bool Fecha() const { return fecha_; }
    /// Next attribute of the current tag; false after the last one.
    bool Atributo(std::string_view& nome, std::string_view& valor);
    /// How the attributes of that name mostly begin; empty for what can be no name.
    static std::string Inicio(std::string_view nome);
    /// As Atributo, when the next one begins like that; else false, and nothing is passed over.
    bool Segue(std::string_view inicio, std::string_view& valor);
    /// Passes over what is left of the current tag.
    void Termina();

    const char* Onde() const { return texto_.data() + posicao_; }

  private:
    /// Goes behind `fim`, which must follow.
    void PulaAte(std::string_view fim, const char* causa);
    void PulaBrancos();
    std::string_view LeNome();

    std::string_view texto_;
    std::size_t posicao_ = 0;
    std::string_view nome_;
    bool fecha_ = false;
    bool dentro_ = false;  // of a tag whose end has not been read
};

/// Value of "encoding" in the XML declaration at the start of the text; empty when there is none.
std::string_view CodificacaoDeclarada(std::string_view texto);

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
