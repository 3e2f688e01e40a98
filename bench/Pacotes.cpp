#include <filesystem>
#include <fstream>
#include <numeric>

#include "Casos.h"
#include "packet/DataPacket.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// Touches every byte of the file and builds as many rows.
void LeCru(const fs::path& arquivo, const TDataPacket& modelo) {
    std::ifstream fluxo(arquivo, std::ios::binary);
    std::string bytes(fs::file_size(arquivo), '\0');
    fluxo.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const volatile std::size_t soma = std::accumulate(bytes.begin(), bytes.end(), std::size_t{0});
    const std::vector<TLinha> linhas = modelo.linhas;
    if (soma == 0 || linhas.empty()) throw std::runtime_error("o pacote está vazio");
}

TMedida MedePacote(const TDataPacket& modelo, TFormaPacote forma, const char* nome) {
    const TPastaTemporaria pasta;
    const fs::path arquivo = pasta / "pacote.wkd";
    GravaPacote(modelo, arquivo, forma);
    TMedida medida = Alterna(
        {.trabalho = "pacote de " + std::to_string(modelo.linhas.size()) + " colunas, " + nome,
         .piso = "uma passada pelos bytes e as linhas copiadas",
         .limite = 2},
        9, [&] { LePacote(arquivo); }, [&] { LeCru(arquivo, modelo); });
    const double mega = static_cast<double>(fs::file_size(arquivo)) / 1e6;
    medida.trabalho += ", " + std::to_string(static_cast<int>(mega / medida.nosso)) + " MB/s";
    return medida;
}

}  // namespace

std::vector<TMedida> MedePacotes(TBancada&) {
    const TDataPacket modelo = DicionarioDeColunas(kTabelas);
    return {MedePacote(modelo, TFormaPacote::Xml, "XML"), MedePacote(modelo, TFormaPacote::Binario, "binário")};
}

}  // namespace wkd
