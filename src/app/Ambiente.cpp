#include "Ambiente.h"

namespace wkd {

TAmbiente AmbientePadrao() {
#ifdef _WIN32
    const std::filesystem::path marca = "c:\\naocria.wkd";
#else
    const std::filesystem::path marca = "/naocria.wkd";
#endif
    const TLocaisDoIni locais = LocaisPadraoDoIni();
    std::error_code semErro;
    auto temporaria = std::filesystem::temp_directory_path(semErro);
    if (semErro) temporaria = locais.pastaPrograma;  // TMPDIR names no folder
    return {locais.pastaPrograma, temporaria, marca, locais};
}

}  // namespace wkd
