#include "package/DestinoDoPacote.h"

#include <algorithm>
#include <system_error>

#include "package/ArquivoNovo.h"
#include "package/Caminho.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Whether Windows would open a device of that name, another file, or none. A package is the same on every system.
bool NomeSoDeFora(std::string_view parte) {
    constexpr std::string_view kDispositivos[] = {"CON", "PRN", "AUX", "NUL"};
    const std::string nome = Maiusculas(Apara(parte.substr(0, parte.find('.'))));
    const bool porta =
        nome.size() == 4 && (nome.starts_with("COM") || nome.starts_with("LPT")) && nome[3] >= '1' && nome[3] <= '9';
    return porta || std::ranges::find(kDispositivos, nome) != std::end(kDispositivos) ||
           parte.find_first_of("<>\"|?*") != std::string_view::npos || parte.ends_with('.') || parte.ends_with(' ');
}

}  // namespace

TNomeDeEntrada AnalisaNomeDeEntrada(std::string_view nome) {
    TNomeDeEntrada entrada;
    const auto comBarras = Troca(nome, "\\", "/");
    entrada.pasta = comBarras.ends_with('/');
    if (comBarras.starts_with('/')) entrada.recusa = "caminho absoluto";
    if (comBarras.find(':') != std::string::npos) entrada.recusa = "nome de unidade de disco";
    if (std::any_of(nome.begin(), nome.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
        entrada.recusa = "caracteres de controle no nome";
    for (auto& parte : Divide(comBarras, '/')) {
        if (parte.empty() || parte == ".") continue;
        if (NomeSoDeFora(parte)) entrada.recusa = "nome que o Windows não aceita";
        if (parte == "..") entrada.recusa = "sai da pasta de trabalho";
        entrada.partes.push_back(std::move(parte));
    }
    if (entrada.partes.empty() && entrada.recusa.empty()) entrada.recusa = "sem nome";
    return entrada;
}

std::string RecusaDoTipo(std::uint32_t atributos) {
    constexpr std::uint32_t kTipo = 0170000, kArquivo = 0100000, kPasta = 0040000, kLink = 0120000;
    const std::uint32_t tipo = (atributos >> 16) & kTipo;
    if (tipo == kLink) return "é um link";
    return tipo == 0 || tipo == kArquivo || tipo == kPasta ? "" : "não é um arquivo comum";
}

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
