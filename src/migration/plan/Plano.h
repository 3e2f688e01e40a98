#pragma once

#include <optional>
#include <string>
#include <vector>

#include "context/Contexto.h"
#include "decision/DecisaoDaTabela.h"
#include "layout/AtualizaSistema.h"
#include "plan/ExameDosDados.h"

namespace wkd {

/// What the run would do with one table.
struct TPlanoDaTabela {
    std::string nome;
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    std::string motivo;
    std::vector<std::string> comandos;      // that create, alter, or drop and create it, in order
    std::vector<std::string> exclusivas;    // changes that wait until no user is connected
    std::int64_t registros = 0, bytes = 0;  // that a rebuild moves
    TAchados achados;
};

struct TPlano {
    std::string alias, banco, servidor, pacote;
    std::vector<std::string> preparacao;    // statements before the tables: dictionary tables, texts of 2000 characters
    std::vector<std::string> correcoes;     // one-off corrections that the database has not seen
    std::vector<TTrocaDeRegistros> trocas;  // rows of the customer's that packets would take the place of
    TAchados achados;                       // before the tables
    std::vector<TPlanoDaTabela> tabelas;    // in the order of the package
    std::int64_t usuarios = 0;              // connected

    bool Muda() const;
    bool TemAchados() const;
    /// Users are connected, and a change does not go together with them.
    bool EsperaUsuarios() const;
};

/// Plans the update that these options ask for: reads package and database, changes neither. The decisions are those of
/// the run itself. Nothing, and the reason through the screen, when the run would end early. Throws TErroBanco.
std::optional<TPlano> Planeja(TDataModulo& dm, const TOpcoes& opcoes, TEstado estado);

}  // namespace wkd
