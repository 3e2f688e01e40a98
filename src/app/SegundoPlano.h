#pragma once

#include <QEventLoop>
#include <functional>

namespace wkd {

/// Runs the work on a thread of its own and serves the window until it is done; what it throws is thrown here. The
/// caller sees to it that nothing the work uses is touched meanwhile: with ExcludeUserInputEvents no key and no click
/// is served before the end.
void EmSegundoPlano(const std::function<void()>& trabalho,
                    QEventLoop::ProcessEventsFlags servidos = QEventLoop::AllEvents);

/// Calls the function on the window's thread and returns when it is done. It must not throw.
void NaThreadDaJanela(const std::function<void()>& funcao);

}  // namespace wkd
