#include "Ambiente.h"

namespace wkd {

TAmbiente AmbientePadrao() {
#ifdef _WIN32
    const std::filesystem::path marca = "c:\\naocria.wkd";
#else
    const std::filesystem::path marca = "/naocria.wkd";
#endif
    const TLocaisDoIni locais = LocaisPadraoDoIni();
    return {locais.pastaPrograma, std::filesystem::temp_directory_path(), marca, locais};
}

}  // namespace wkd
