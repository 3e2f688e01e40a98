#pragma once

#include <optional>
#include <string>
#include <vector>

#include "context/Contexto.h"
#include "decision/DecisaoDaTabela.h"
#include "layout/AtualizaSistema.h"
#include "plan/ExameDosDados.h"
#include "plan/TempoDaCopia.h"

namespace wkd {

/// What becomes of one column.
struct TMudancaDaColuna {
    char sinal;                    // '+' it is new, '~' it gets another type, '-' the new table lacks it
    std::string coluna, de, para;  // and its types; empty where there is none
};

/// What the run would do with one table.
struct TPlanoDaTabela {
    std::string nome;
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    std::string motivo;
    std::vector<std::string> comandos;  // that create, alter, or drop and create it, in order
    std::vector<std::string> aceitos;   // the same in the form that this server takes
    std::vector<TMudancaDaColuna> mudancas;
    std::vector<std::string> exclusivas;    // changes that wait until no user is connected
    bool retoma = false;                    // the rebuild goes on: its rows are those that are not back yet
    std::int64_t registros = 0, bytes = 0;  // that a rebuild moves
    double segundos = 0;                    // that it may take
    TAchados achados;
};

/// What the rebuilds of a plan copy, where this server shows what a commit costs.
struct TCopiasDoPlano {
    std::int64_t registros = 0, commits = 0;
    std::optional<std::size_t> linhasPorCommit;  // as the run is to have it
    double segundos = 0, segundosComMuitas = 0;  // as it is to have it, and with kMuitasPorCommit
    /// Whether it is worth while to have them.
    bool Valeria() const { return segundosComMuitas + 1 < 0.8 * segundos; }
};

struct TPlano {
    std::string alias, banco, servidor, pacote;
    TTipoBanco tipo = TTipoBanco::tbInterbase;
    std::vector<std::string> ajustes;       // statements before the tables: texts of 2000 characters, made narrower
    std::vector<std::string> dicionario;    // and then those that bring the dictionary's own tables up
    std::vector<std::string> correcoes;     // one-off corrections that the database has not seen
    std::vector<TTrocaDeRegistros> trocas;  // rows of the customer's that packets would take the place of
    TAchados achados;                       // before the tables
    TAvisos avisos;                         // about the database; what would stop the run is among `achados`
    std::vector<TPlanoDaTabela> tabelas;    // in the order of the package
    std::int64_t usuarios = 0;              // connected
    std::optional<TCopiasDoPlano> copias = {};
    std::vector<std::string> layouts, arquivos, passos;  // report layouts, system files and passes behind the tables

    bool Muda() const;
    bool TemAchados() const;
    /// Users are connected, and a change does not go together with them.
    bool EsperaUsuarios() const;
};

/// Plans the update that these options ask for: reads package and database, changes neither. The decisions are those of
/// the run itself. Nothing, and the reason through the screen, when the run would end early. Throws TErroBanco.
std::optional<TPlano> Planeja(TDataModulo& dm, const TOpcoes& opcoes, TEstado estado);

}  // namespace wkd
