#include "DestinoDoPacote.h"

#include <system_error>

#include "ArquivoNovo.h"
#include "Caminho.h"
#include "Texto.h"

namespace wkd {

namespace fs = std::filesystem;

bool TDestinoDoPacote::Pasta(const std::string& chave, const fs::path& caminho, fs::path& feita) {
    auto [achado, nova] = ocupados_.try_emplace(chave, TOcupado{caminho, true});
    feita = achado->second.caminho;
    if (!nova) return achado->second.pasta;
    std::error_code erro;
    fs::create_directory(caminho, erro);
    const auto tipo = fs::symlink_status(caminho, erro).type();
    if (tipo == fs::file_type::directory) return true;
    achado->second.pasta = false;
    if (tipo != fs::file_type::not_found) return false;
    fs::create_directory(caminho, erro);
    NaoGrava(caminho, erro);
}

fs::path TDestinoDoPacote::Arquivo(const std::string& chave, const fs::path& caminho, const std::string& nome) {
    auto [achado, novo] = ocupados_.try_emplace(chave, TOcupado{caminho, false});
    std::error_code erro;
    if (!novo && achado->second.pasta) return {};
    if (!novo) {
        relata_("Entrada repetida no pacote: '" + nome + "' substitui '" + NomeDoArquivo(achado->second.caminho) + "'");
        fs::remove(achado->second.caminho, erro);
        achado->second.caminho = caminho;
    }
    if (fs::is_directory(fs::symlink_status(caminho, erro))) return {};
    fs::remove(caminho, erro);
    return caminho;
}

fs::path TDestinoDoPacote::Lugar(const TNomeDeEntrada& entrada, const std::string& nome) {
    fs::path atual = pasta_;
    std::string chave;
    bool livre = true;
    for (std::size_t i = 0; livre && i < entrada.partes.size(); ++i) {
        chave += "/" + Maiusculas(entrada.partes[i]);
        const auto caminho = atual / CaminhoDoTexto(entrada.partes[i]);
        if (i + 1 < entrada.partes.size() || entrada.pasta) {
            livre = Pasta(chave, caminho, atual);
        } else {
            atual = Arquivo(chave, caminho, nome);
            livre = !atual.empty();
        }
    }
    if (livre) return atual;
    relata_("Entrada do pacote recusada: '" + nome + "' (o nome já é de outro arquivo ou pasta)");
    return {};
}

}  // namespace wkd
