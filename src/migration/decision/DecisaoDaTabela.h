#pragma once

#include <string>
#include <vector>

#include "decision/Comparacao.h"
#include "run/Contexto.h"
#include "run/MarcaDeAnalise.h"

namespace wkd {

/// A column whose change needs exclusive use of the database.
struct TMudancaExclusiva {
    std::string tabela;
    std::string linha;  // as the status list shows it
};
/// The changes of the visible package tables that need the database for this program alone. Leaves both package
/// datasets behind their last rows.
std::vector<TMudancaExclusiva> MudancasExclusivas(TContexto& ctx);

/// Whether the update may run while other users are connected: false as soon as one existing column of the visible
/// package tables changes in a way that needs exclusive use. Every such column gets a line of the status list.
bool VerificaAtualizacao(TContexto& ctx);

/// What a run does with one table, and why.
struct TDecisaoDaTabela {
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    bool analisada = false;                  // an existing table whose columns are compared
    bool alteraDicionario = false;           // its stored dictionary rows are replaced, its indexes completed
    std::string motivo;                      // one line in Portuguese
    std::vector<TComandoPendente> comandos;  // that alter it in place, in order
    std::vector<std::string> novas;          // columns whose dictionary row is copied before they are added
};

/// Decides about the current table of SArquivoNovo from the datasets, the physical columns and the options. Changes
/// nothing: a plan and a run that start from the same state cannot disagree.
TDecisaoDaTabela DecideTabela(TContexto& ctx, const TMarcasDeAnalise& marcas);

/// Name of the current table of SArquivoNovo.
std::string TabelaAtual(TContexto& ctx);

}  // namespace wkd
