#pragma once

#include <string>
#include <vector>

#include "AcaoDaTabela.h"
#include "Comparacao.h"
#include "Contexto.h"
#include "MarcaDeAnalise.h"

namespace wkd {

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
