#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "DataModulo.h"
#include "Evidencia.h"
#include "Opcoes.h"
#include "ReconstrucoesAbertas.h"

namespace wkd {

/// What outlives a run: the flags of the wizard.
struct TEstado {
    bool usuariosOnline = true;  // false: the database has no table of connected users (older generation)
    bool pulaNulos = false;      // leaves the null validation out
    bool falhouApagar = false;   // set when a rebuild could not drop its table; cleared by the next rebuild alone
};

/// What the passes of one run share.
struct TContexto {
    TDataModulo& dm;
    const TOpcoes& opcoes;
    TEstado& estado;
    std::string tabelaAtual;
    std::string acaoAtual;
    bool repeteTabela = false;  // something of the table failed: the next run analyses it again
    TEvidencia evidencia = {};
    std::set<std::string> comRecusadas = {};    // tables of which a row of the package was passed over
    std::set<std::string> desatualizadas = {};  // tables whose rows in SatribVelho statements have replaced
    TReconstrucoesAbertas abertas = {};         // as the run found them, and as its rebuilds change them

    bool indicesAdiados = false;                  // the package's SINDSEC or SINDSECA is loaded behind the tables alone
    std::map<std::string, bool> semIndices = {};  // tables that wait for it, and whether something of them failed

    ITela& Tela() { return dm.Tela(); }
    TConnection& Conexao() { return dm.SQLConnection1; }
    TTipoBanco Banco() const { return dm.SQLConnection1.TipoBanco(); }
    /// Run-log entry of the current table and action.
    void Log(std::string_view mensagem) { Tela().SetLog(mensagem, tabelaAtual, acaoAtual); }
};

}  // namespace wkd
