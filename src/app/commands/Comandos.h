#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "context/Contexto.h"
#include "process/Programa.h"

namespace wkd {

/// One line of standard input; on a terminal twice, after a prompt and without echo. Empty at end of input. Throws
/// std::invalid_argument when it was not the same both times.
std::string PedeSenhaNova();
/// The settings file, or the place of a new one beside the program.
std::filesystem::path IniParaGravar(const TAmbiente& ambiente);

// The alias commands of the command line. Results go to standard output, errors to standard error.

TCodigoDeSaida ListaAliases(const TAmbiente& ambiente);
/// Without a settings file one is made.
TCodigoDeSaida NovoAlias(const TAmbiente& ambiente, TPedeNovoAlias pedido);
TCodigoDeSaida MudaSenha(const TAmbiente& ambiente, const TPedeMudaSenha& pedido);
TCodigoDeSaida RemoveAlias(const TAmbiente& ambiente, const TPedeRemoveAlias& pedido);
TCodigoDeSaida TestaAlias(const TAmbiente& ambiente, const TPedeTestaAlias& pedido);

class THBNConnection;
class TPreferencias;

// Commands on whole databases.

TCodigoDeSaida ComandoBackup(const TAmbiente& ambiente, const TPedeBackup& pedido);
/// 1: the backup is not good.
TCodigoDeSaida ComandoProva(const TAmbiente& ambiente, const TPedeProva& pedido);
TCodigoDeSaida ComandoRestaura(const TAmbiente& ambiente, const TPedeRestaura& pedido);
TCodigoDeSaida ComandoEnsaio(const TAmbiente& ambiente, const TPedeEnsaio& pedido);

/// The folder of backups: that of the wizard's page, which remembers it, else "Backup" in the program's folder, which
/// is made. Empty for a server that keeps the files itself: it has a folder of its own for them.
std::filesystem::path PastaDeBackup(const TAmbiente& ambiente, TPreferencias& preferencias, THBNConnection& conexao);

// Commands on one database.

/// 0 nothing to do, 10 changes, 11 changes with findings, 2 when a run would end early.
TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido);
/// 0 as its dictionary says, 11 otherwise.
TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido);
/// The runs whose reports are kept in the program's folder.
TCodigoDeSaida MostraHistorico(const TAmbiente& ambiente, const TPedeHistorico& pedido);
/// 0 no rejected row is left, 1 some are.
TCodigoDeSaida ComandoRepoe(const TAmbiente& ambiente, const TPedeRepoe& pedido);

/// A support bundle: 0 with all that it can have, 1 without something, 2 none was written.
TCodigoDeSaida ComandoSuporte(const TAmbiente& ambiente, const TPedeSuporte& pedido);
TCodigoDeSaida ComandoReproduz(const TAmbiente& ambiente, const TPedeReproduz& pedido);

using TComandoNoAlias = std::function<TCodigoDeSaida(TDataModulo& dm, const TEstado& estado)>;
/// Opens the alias and hands the data module over. What fails before is "no connection", behind it "ended early".
TCodigoDeSaida NoAlias(const TAmbiente& ambiente, const std::string& alias, const TComandoNoAlias& comando);
/// What an unattended run is asked for.
TOpcoes OpcoesDoComando(const TAmbiente& ambiente, const std::string& alias, const std::filesystem::path& pacote,
                        const TEscolhas& escolhas);
/// The choices as the wizard's page of options has them.
void Escolhe(const TEscolhas& escolhas, TOpcoes& opcoes);
/// False, and why, when a table was asked for that the package lacks. Of a package that cannot be read whoever uses it
/// tells.
bool TemAsTabelas(const TAmbiente& ambiente, const std::filesystem::path& pacote, const TEscolhas& escolhas);

}  // namespace wkd
