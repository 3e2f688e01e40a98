#pragma once

#include <string_view>

namespace wkd {

inline constexpr std::string_view kVersao = "7.17";

/// "formato" of every JSON object that a program writes for others. A field more leaves it; it grows when one goes away
/// or means something else. docs/json.md says what they are.
inline constexpr int kFormatoJson = 1;

/// Exit codes of the programs.
enum class TCodigoDeSaida {
    Sucesso = 0,
    ComErros = 1,      // finished, and an error was reported
    Encerrada = 2,     // ended early: package, refused confirmation, connected users, another run
    SemConexao = 3,    // no settings file, unknown alias or no connection
    ComMudancas = 10,  // a plan: there is something to do
    ComAchados = 11,   // a plan or a check: somebody should look at what was found
    UsoIncorreto = 64  // arguments
};

/// Of a program that a signal asked to end.
constexpr TCodigoDeSaida CodigoDoSinal(int sinal) { return static_cast<TCodigoDeSaida>(128 + sinal); }

}  // namespace wkd
