#include "Progresso.h"

#include "values/TextoDeData.h"

namespace wkd {

std::string TamanhoEmTexto(std::uintmax_t bytes) {
    constexpr std::uintmax_t kMega = 1024 * 1024;
    if (bytes < kMega) return ComMilhares(static_cast<std::int64_t>((bytes + 1023) / 1024)) + " KB";
    return ComMilhares(static_cast<std::int64_t>(bytes / kMega)) + " MB";
}

int Percentual(std::uintmax_t feito, std::uintmax_t total) {
    if (total == 0) return -1;
    return static_cast<int>(std::min<std::uintmax_t>(99, feito * 100 / total));
}

}  // namespace wkd
