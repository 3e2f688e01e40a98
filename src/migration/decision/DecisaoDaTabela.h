#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "context/CargaDoPacote.h"
#include "context/MarcaDeAnalise.h"
#include "decision/Comparacao.h"
#include "tables/Dicionario.h"

namespace wkd {

/// A column whose change needs exclusive use of the database.
struct TMudancaExclusiva {
    std::string tabela;
    std::string linha;  // as the status list shows it
};
/// The changes of the package's tables, in their order, that need the database for this program alone.
std::vector<TMudancaExclusiva> MudancasExclusivas(const TDicionario& novo, const TDicionario& gravado);

/// Whether the update may run while other users are connected: false as soon as one existing column of the package's
/// tables changes in a way that needs exclusive use. Every such column gets a line of the status list.
bool VerificaAtualizacao(TContexto& ctx);

/// Whether the table is altered in place whatever changes: the rebuild reads the dictionary from it, or keeps there how
/// far it has come.
bool NuncaReconstruida(std::string_view tabela);

/// What the database has of a table besides its dictionary, and what earlier runs left of it.
struct TFatosDaTabela {
    bool existe = false;
    bool marcada = false;              // its last update did not come through
    bool aberta = false;               // its rebuild is open
    bool restauracaoPendente = false;  // it is gone, and its rows stand in the backup
    // Of a table that is to be analysed
    std::vector<TColunaFisica> colunas;
    TChavePrimaria chave;
};

/// What a run does with one table, and why.
struct TDecisaoDaTabela {
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    bool analisada = false;                  // an existing table whose columns are compared
    bool alteraDicionario = false;           // its stored dictionary rows are replaced, its indexes completed
    std::string motivo;                      // one line in Portuguese
    std::vector<TComandoPendente> comandos;  // that alter it in place, in order
    std::vector<std::string> novas;          // columns whose dictionary row is copied before they are added
};

/// Decides about a table of the package. Pure: a plan and a run that start from the same state cannot disagree.
TDecisaoDaTabela DecideTabela(const TTabelaDicionario& tabela, const TDicionario& novo, const TDicionario& gravado,
                              const TFatosDaTabela& fatos, const TOpcoes& opcoes, TTipoBanco banco);

/// The same about the current table of SArquivoNovo, the facts asked of the database. Throws TErroBanco.
TDecisaoDaTabela DecideTabela(TContexto& ctx, const TMarcasDeAnalise& marcas);

}  // namespace wkd
