#include "Exercicios.h"
#include "PacoteJson.h"
#include "PacotesIguais.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// Through the binary form, which may refuse what it has no room for.
void PelaFormaBinaria(const TDataPacket& pacote, const fs::path& copia) {
    try {
        GravaPacote(pacote, copia, TFormaPacote::Binario);
    } catch (const TErroPacote&) {
        return;
    }
    auto lido = LePacote(copia, TLinhasDoPacote::Todas);
    LeConteudos(lido);
    ExigeIguais(lido, pacote);
}

}  // namespace

void ExercitaJson(const fs::path& arquivo) {
    TDataPacket pacote;
    try {
        pacote = LeJson(arquivo);
    } catch (const TErroPacote&) {
        return;
    }
    const auto copia = arquivo.parent_path() / "copia";
    GravaJson(pacote, copia);
    const auto lido = LeJson(copia);
    ExigeIguais(lido, pacote);
    PelaFormaBinaria(pacote, copia);
}

}  // namespace wkd
