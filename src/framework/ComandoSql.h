#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// A statement whose named parameters (":pNome") became the "?" that drivers know.
struct TComandoSql {
    std::string texto;
    std::vector<std::string> parametros;  // each name once, in order of first appearance, without ":"
    std::vector<std::size_t> posicoes;    // for every "?", its place in `parametros`
};

/// Finds the named parameters of a statement: ":" and an identifier, letter case ignored, outside quotes, brackets
/// and comments. In an "execute block" only the head has parameters: behind its AS a ":" names a variable.
TComandoSql AnalisaComando(std::string_view sql);

}  // namespace wkd
