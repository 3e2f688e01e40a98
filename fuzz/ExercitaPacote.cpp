#include <optional>
#include <stdexcept>

#include "Exercicios.h"
#include "PacotesIguais.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// The packet with its contents; nothing when it is refused.
std::optional<TDataPacket> Le(const fs::path& arquivo, TLinhasDoPacote linhas) {
    try {
        auto pacote = LePacote(arquivo, linhas);
        LeConteudos(pacote);
        return pacote;
    } catch (const TErroPacote&) {
        return std::nullopt;
    }
}

void VaiEVolta(const TDataPacket& pacote, const fs::path& copia, TFormaPacote forma, TLinhasDoPacote linhas) {
    try {
        GravaPacote(pacote, copia, forma);
    } catch (const TErroPacote&) {
        return;  // the other form holds more in a text or in a decimal
    }
    const auto lido = Le(copia, linhas);
    if (!lido) throw std::logic_error("what was written is refused");
    ExigeIguais(*lido, pacote);
}

}  // namespace

void ExercitaPacote(const fs::path& arquivo) {
    for (const auto linhas : {TLinhasDoPacote::Visiveis, TLinhasDoPacote::Todas})
        if (const auto pacote = Le(arquivo, linhas))
            for (const auto forma : {TFormaPacote::Xml, TFormaPacote::Binario})
                VaiEVolta(*pacote, arquivo.parent_path() / "copia.wkd", forma, linhas);
}

}  // namespace wkd
