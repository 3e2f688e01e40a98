#include <algorithm>
#include <stdexcept>

#include "Exercicios.h"
#include "aliases/ArquivoIni.h"

namespace wkd {

namespace {

constexpr std::string_view kChaves[] = {"SERVIDOR", "HOSTNAME", "PATH", "DATABASE", "USERNAME", "PASSWORD"};

using TValores = std::vector<std::optional<std::string>>;

TValores Valores(const TArquivoIni& ini) {
    TValores valores;
    for (const auto& secao : ini.Secoes())
        for (const auto chave : kChaves) valores.push_back(ini.Le(secao, chave));
    return valores;
}

void Exige(bool certo, const char* erro) {
    if (!certo) throw std::logic_error(erro);
}

/// Writes a section of its own, reads the file again and takes the section out.
void Altera(const std::filesystem::path& arquivo) {
    constexpr std::string_view kNova = "uma seção só do teste", kValor = " \"entre aspas\" ção ";
    TArquivoIni ini(arquivo);
    const auto antes = Valores(ini);
    const bool tinha = ini.ExisteSecao(kNova);
    ini.Grava(kNova, "chave", kValor);
    ini.Salva();
    TArquivoIni lido(arquivo);
    Exige(lido.Le(kNova, "CHAVE") == kValor, "another value came back");
    if (tinha) return;
    Exige(lido.ApagaSecao(kNova) && !lido.ExisteSecao(kNova), "the section stayed");
    Exige(Valores(lido) == antes, "another section changed");
}

}  // namespace

void ExercitaIni(const std::filesystem::path& arquivo) {
    try {
        Altera(arquivo);
    } catch (const TErroConfiguracao&) {
    }
}

}  // namespace wkd
