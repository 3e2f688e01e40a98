#include "context/EspacoEmDisco.h"

#include <stdexcept>
#include <string>

namespace wkd {

namespace {

constexpr std::uintmax_t kMega = 1024 * 1024;
constexpr std::uintmax_t kMinimo = 64 * kMega;  // more than the engine keeps unwritten

}  // namespace

void ExigeEspacoEmDisco(TContexto& ctx) {
    const auto livre = ctx.Conexao().EspacoLivre();
    if (!livre || *livre >= kMinimo) return;
    throw TErroConhecido(TFalha::DiscoCheio,
                         "o disco do banco de dados está quase cheio: " + std::to_string(*livre / kMega) +
                             " MB livres, são necessários pelo menos " + std::to_string(kMinimo / kMega) + " MB");
}

}  // namespace wkd
