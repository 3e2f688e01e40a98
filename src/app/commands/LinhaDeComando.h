#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "aliases/Aliases.h"

namespace wkd {

// What the command line asks for.

struct TPedeAjuda {};
struct TPedeVersao {};
struct TPedeListaAlias {};
struct TPedeNovoAlias {
    TAlias alias;  // its password is still to be asked for
    bool tambemPadrao = false;
    bool troca = false;  // one of that name may be there
    bool prova = true;   // nothing is written unless it connects
};
struct TPedeMudaSenha {
    std::string nome;
    bool prova = true;
};
struct TPedeRemoveAlias {
    std::string nome;
};
struct TPedeTestaAlias {
    std::string nome;
};
/// What the wizard's page of options would say: which tables, how thoroughly, and which corrections.
struct TEscolhas {
    bool todas = false;
    bool completo = false;             // of the tables named, where there are any
    std::vector<std::string> tabelas;  // in capitals; empty: those of another version
    bool anteriores = true, posteriores = true;
    std::string linhasPorCommit = {};  // as typed; the page lacks it
};
enum class TFormaDoPlano { Texto, Json, Sql, Html, Nenhuma };
/// What an update would do.
struct TPedePlano {
    std::string alias;
    std::filesystem::path pacote;
    TFormaDoPlano forma = TFormaDoPlano::Texto;
    TEscolhas escolhas = {};
};
/// Whether the database is what its dictionary says.
struct TPedeConfere {
    std::string alias;
    bool json = false;
};
/// The runs that were made.
struct TPedeHistorico {
    std::string alias;  // empty: all
    bool json = false;
};
/// A backup of the whole database.
struct TPedeBackup {
    std::string alias;
    std::filesystem::path pasta;  // empty: the remembered one
    int guarda = 0;               // 0: all
};
/// Whether a backup comes back as it was.
struct TPedeProva {
    std::filesystem::path arquivo;
    std::string alias;  // empty: that of the file's manifest
};
/// A backup in the place of the database in use.
struct TPedeRestaura {
    std::string alias;
    std::filesystem::path arquivo;
    bool sim = false;
};
/// The update on a copy.
struct TPedeEnsaio {
    std::string alias;
    std::filesystem::path pacote;
    bool json = false, mantem = false;
    TEscolhas escolhas = {};
};
/// The rejected rows that fit now.
struct TPedeRepoe {
    std::string alias;
};
/// What whoever helps from afar needs to see, without any customer's row.
struct TPedeSuporte {
    std::string alias;
    std::filesystem::path arquivo = {};  // empty: one beside the program
    std::filesystem::path pacote = {};   // of the plan; empty: that of the last run
};
/// The empty database of such a bundle, as that of an alias.
struct TPedeReproduz {
    std::filesystem::path arquivo;
    std::string alias;
};
/// The wizard; with an alias it is chosen at start.
struct TPedeJanela {
    std::string argumento;  // first argument, as given
};
/// The unattended run.
struct TPedeAtualizacao {
    std::string alias;
    std::filesystem::path pacote;
    bool comBackup = false, silencioso = false;
    TEscolhas escolhas = {};
};
/// Arguments that ask for nothing: why, and what to write instead.
struct TUsoIncorreto {
    std::string mensagem;
};

using TPedido =
    std::variant<TPedeAjuda, TPedeVersao, TPedeListaAlias, TPedeNovoAlias, TPedeMudaSenha, TPedeRemoveAlias,
                 TPedeTestaAlias, TPedePlano, TPedeConfere, TPedeHistorico, TPedeBackup, TPedeProva, TPedeRestaura,
                 TPedeEnsaio, TPedeRepoe, TPedeSuporte, TPedeReproduz, TPedeJanela, TPedeAtualizacao, TUsoIncorreto>;

/// Reads the arguments behind the program name. A first argument that begins with "--" is an option; else two or more
/// arguments are an unattended run: alias followed by ";", package, and its options anywhere. More words count for
/// nothing.
TPedido LeLinhaDeComando(std::vector<std::string> argumentos);

/// The text of --help.
std::string_view TextoDeAjuda();

}  // namespace wkd
