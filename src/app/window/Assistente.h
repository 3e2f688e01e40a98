#pragma once

#include "commands/Preferencias.h"
#include "process/Programa.h"
#include "window/FMAtualiza.h"

namespace wkd {

/// Opens the wizard and stays until its window closes. With a package it updates unattended, on a screen or, where
/// there is none, without. `argc` and `argv` are the program's own.
TCodigoDeSaida AbreAssistente(int& argc, char** argv, const TAmbiente& ambiente, TInicio inicio);

}  // namespace wkd
