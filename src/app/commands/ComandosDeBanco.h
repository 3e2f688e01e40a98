#pragma once

#include <functional>

#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "context/Contexto.h"
#include "process/Programa.h"

namespace wkd {

// Commands on one database.

/// 0 nothing to do, 10 changes, 11 changes with findings, 2 when a run would end early.
TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido);
/// 0 as its dictionary says, 11 otherwise.
TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido);
/// 0 no rejected row is left, 1 some are.
TCodigoDeSaida ComandoRepoe(const TAmbiente& ambiente, const TPedeRepoe& pedido);

using TComandoNoAlias = std::function<TCodigoDeSaida(TDataModulo& dm, const TEstado& estado)>;
/// Opens the alias and hands the data module over. What fails before is "no connection", behind it "ended early".
TCodigoDeSaida NoAlias(const TAmbiente& ambiente, const std::string& alias, const TComandoNoAlias& comando);
/// What an unattended run is asked for.
TOpcoes OpcoesDoComando(const TAmbiente& ambiente, const std::string& alias, const std::filesystem::path& pacote);

}  // namespace wkd
