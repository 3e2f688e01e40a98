#pragma once

#include <string>

#include "alter/Alteracao.h"
#include "alter/IndicesGuardados.h"
#include "decision/DecisaoDaTabela.h"

namespace wkd {

/// The step of the run for one table, the current one of SArquivoNovo: what is decided about it is done, then its
/// version is recorded.
class TPassoDaTabela {
  public:
    TPassoDaTabela(TContexto& ctx, TMarcasDeAnalise& marcas);

    void Executa();

  private:
    bool Reconstroi() const { return decisao_.acao == TAcaoDaTabela::Reconstroi; }
    bool TemColunas() const { return !ctx_.novo.Colunas(tabela_).empty(); }
    void TabelaExistente(TIndicesGuardados& guardados);
    void IncluiNoSArquivo();
    void LeColunasGravadas();
    void CopiaColunasParaODicionario();
    void CopiaColunaParaODicionario();
    void TabelaNova();
    void ReconstroiTabela(TIndicesGuardados& guardados);
    void AlteraTabela(TIndicesGuardados& guardados);
    void ExecutaPendentes();
    void GravaVersao();
    void Encerra(TIndicesGuardados& guardados);

    TContexto& ctx_;
    TMarcasDeAnalise& marcas_;
    std::string tabela_;
    TDecisaoDaTabela decisao_;
};

/// Keeps warnings for the report, and tells those that a run tells.
void Avisa(TContexto& ctx, TAvisos avisos);

/// Makes the table's secondary indexes anew as SINDSEC has them by now, and takes its mark away unless something of it
/// failed, here or before.
void RefazIndices(TContexto& ctx, TMarcasDeAnalise& marcas, const std::string& tabela, bool falhou);

}  // namespace wkd
