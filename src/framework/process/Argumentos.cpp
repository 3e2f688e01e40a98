#include "process/Argumentos.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "values/Texto.h"

namespace wkd {

namespace {

/// Letters to insert, delete or replace until `a` is `b` (Levenshtein).
std::size_t Distancia(std::string_view a, std::string_view b) {
    std::vector<std::size_t> linha(b.size() + 1);
    std::iota(linha.begin(), linha.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(linha[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t troca = diagonal + (a[i] != b[j]);
            diagonal = linha[j + 1];
            linha[j + 1] = std::min({troca, linha[j] + 1, diagonal + 1});
        }
    }
    return linha.back();
}

bool Contem(const std::vector<std::string_view>& nomes, std::string_view nome) {
    return std::ranges::find(nomes, nome) != nomes.end();
}

[[noreturn]] void RecusaOpcao(std::string_view nome, const TArgumentosAceitos& aceitos) {
    auto conhecidas = aceitos.opcoes;
    conhecidas.insert(conhecidas.end(), aceitos.chaves.begin(), aceitos.chaves.end());
    throw std::invalid_argument(Desconhecido("Opção desconhecida", nome, conhecidas));
}

}  // namespace

std::string Desconhecido(std::string_view oque, std::string_view nome, std::span<const std::string_view> conhecidos) {
    constexpr std::size_t kLonge = 4;  // more letters than this are another word, and so are half of a short one
    const std::string procurado = Minusculas(nome);
    std::size_t menor = std::min(kLonge, procurado.size() / 2);
    std::string_view proximo;
    for (const auto conhecido : conhecidos)
        if (const std::size_t distancia = Distancia(procurado, conhecido); distancia < menor) {
            menor = distancia;
            proximo = conhecido;
        }
    const std::string texto = std::string(oque) + ": " + std::string(nome) + ".";
    return proximo.empty() ? texto : texto + " Quis dizer " + std::string(proximo) + "?";
}

TArgumentos::TArgumentos(std::span<const std::string> argumentos, const TArgumentosAceitos& aceitos) {
    while (!argumentos.empty()) {
        const std::string& argumento = argumentos.front();
        argumentos = argumentos.subspan(1);
        if (!argumento.starts_with("--"))
            palavras_.push_back(argumento);
        else if (LeOpcao(argumento, argumentos.empty() ? nullptr : &argumentos.front(), aceitos))
            argumentos = argumentos.subspan(1);
    }
    if (palavras_.size() < aceitos.palavras || palavras_.size() > aceitos.palavras + aceitos.talvez)
        throw std::invalid_argument("Número errado de argumentos.");
}

bool TArgumentos::LeOpcao(const std::string& argumento, const std::string* seguinte,
                          const TArgumentosAceitos& aceitos) {
    const std::size_t igual = argumento.find('=');
    const bool colado = igual != std::string::npos;
    const std::string nome = argumento.substr(0, igual);
    const bool chave = Contem(aceitos.chaves, nome);
    if (!chave && !Contem(aceitos.opcoes, nome)) RecusaOpcao(nome, aceitos);
    if (chave && colado) throw std::invalid_argument(nome + " não leva valor.");
    const bool separado = !chave && !colado;
    if (separado && (!seguinte || seguinte->starts_with("--")))
        throw std::invalid_argument("Falta o valor de " + nome + ".");
    opcoes_[nome] = separado ? *seguinte : colado ? argumento.substr(igual + 1) : "";
    return separado;
}

std::string TArgumentos::Opcao(std::string_view nome) const {
    const auto achada = opcoes_.find(nome);
    return achada == opcoes_.end() ? std::string() : achada->second;
}

}  // namespace wkd
