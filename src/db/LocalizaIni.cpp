#include "LocalizaIni.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <utility>

#include "ArquivoIni.h"
#include "Texto.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

bool Separador(char c) { return c == '\\' || c == '/'; }

/// Entry of the folder with that name, letter case ignored; the exact name wins, then the first in byte order.
std::optional<fs::path> EntradaSemCaixa(const fs::path& pasta, const fs::path& nome) {
    std::error_code erro;
    if (fs::exists(pasta / nome, erro)) return pasta / nome;
    std::optional<fs::path> achada;
    for (const auto& entrada : fs::directory_iterator(pasta, erro))
        if (IgualSemCaixa(entrada.path().filename().string(), nome.string()) && (!achada || entrada.path() < *achada))
            achada = entrada.path();
    return achada;
}

std::optional<fs::path> ArquivoSemCaixa(fs::path pasta, const fs::path& relativo) {
    if (!pasta.is_absolute()) return std::nullopt;
    for (const auto& parte : relativo) {
        const auto entrada = EntradaSemCaixa(pasta, parte);
        if (!entrada) return std::nullopt;
        pasta = *entrada;
    }
    std::error_code erro;
    return fs::is_regular_file(pasta, erro) ? std::optional(pasta) : std::nullopt;
}

/// Absolute, without separator at the end, so that parent_path() is the folder above.
fs::path PastaLimpa(const fs::path& pasta) {
    const fs::path limpa = fs::absolute(pasta).lexically_normal();
    return limpa.has_filename() ? limpa : limpa.parent_path();
}

}  // namespace

fs::path LocalizaIni(const TLocaisDoIni& locais) {
    const fs::path programa = PastaLimpa(locais.pastaPrograma);
    const std::pair<fs::path, fs::path> lugares[] = {
        {programa, "WKD.ini"},
        {programa.parent_path(), "WKD.ini"},
        {locais.pastaProgramFiles, "WKD Software/WKD.Ini"},
        {locais.pastaProgramFiles, "WKD Software/HBN/WKD.Ini"},
        {locais.desenvolvimento.parent_path(), locais.desenvolvimento.filename()},
    };
    fs::path ultimo;
    for (const auto& [pasta, relativo] : lugares) {
        if (const auto achado = ArquivoSemCaixa(pasta, relativo)) return SemBarrasDobradas(achado->string());
        if (pasta.is_absolute()) ultimo = pasta / relativo;
    }
    throw TErroConfiguracao("Nao encontrou o arquivo" + ultimo.string() +
                            "\nCopie o WKD.ini da instalação para a pasta do programa, ou crie um alias com --novo-alias.");
}

std::string SemBarrasDobradas(std::string_view caminho) {
    std::string limpo;
    for (const char c : caminho)
        if (limpo.size() < 2 || !Separador(c) || !Separador(limpo.back())) limpo += c;
    return limpo;
}

}  // namespace wkd
