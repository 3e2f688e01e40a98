#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What a command may be given.
struct TArgumentosAceitos {
    std::vector<std::string_view> opcoes;  // with a value: "--name value" or "--name=value"
    std::vector<std::string_view> chaves;  // without: "--name"
    std::size_t palavras = 0;              // how many arguments that are no option
    std::size_t talvez = 0;                // and how many more there may be
};

/// The arguments of a command: words in their order, options and switches anywhere between them, the last value of an
/// option counting.
class TArgumentos {
  public:
    /// Throws std::invalid_argument, with what to write instead, for an option that is not accepted, one without its
    /// value, a switch with one, and words too many or too few. A value that begins with "--" is given behind "=".
    TArgumentos(std::span<const std::string> argumentos, const TArgumentosAceitos& aceitos);

    bool Tem(std::string_view nome) const { return opcoes_.contains(nome); }
    /// Value of the option; empty when it was not given.
    std::string Opcao(std::string_view nome) const;
    const std::string& Palavra(std::size_t posicao) const { return palavras_.at(posicao); }
    std::string PalavraSeHouver(std::size_t posicao) const {
        return posicao < palavras_.size() ? palavras_[posicao] : std::string();
    }

  private:
    /// Whether the value was the argument that follows.
    bool LeOpcao(const std::string& argumento, const std::string* seguinte, const TArgumentosAceitos& aceitos);

    std::map<std::string, std::string, std::less<>> opcoes_;
    std::vector<std::string> palavras_;
};

/// "Opção desconhecida: --plan. Quis dizer --plano?"; without the question when none of `conhecidos` is close.
std::string Desconhecido(std::string_view oque, std::string_view nome, std::span<const std::string_view> conhecidos);

}  // namespace wkd
