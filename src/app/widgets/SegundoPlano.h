#pragma once

#include <functional>

class QAbstractButton;

namespace wkd {

/// What becomes of keys and clicks while work is under way.
enum class TEntrada { Serve, Descarta };

/// Runs the work on a thread of its own and serves the window until it is done; what it throws is thrown here. The
/// caller sees to it that nothing the work uses is touched meanwhile: with TEntrada::Descarta whatever is typed or
/// clicked before the end goes nowhere, then or later, but for a click on `cancela`, or Esc, which means it.
void EmSegundoPlano(const std::function<void()>& trabalho, TEntrada entrada = TEntrada::Serve,
                    QAbstractButton* cancela = nullptr);

/// Calls the function on the window's thread and returns when it is done. It must not throw.
void NaThreadDaJanela(const std::function<void()>& funcao);

}  // namespace wkd
