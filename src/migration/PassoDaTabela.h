#pragma once

#include <string>

#include "DecisaoDaTabela.h"
#include "Pendentes.h"

namespace wkd {

/// The step of the run for one table, the current one of SArquivoNovo: what is decided about it is done, then its
/// version is recorded.
class TPassoDaTabela {
  public:
    TPassoDaTabela(TContexto& ctx, TMarcasDeAnalise& marcas);

    void Executa();

  private:
    bool Reconstroi() const { return decisao_.acao == TAcaoDaTabela::Reconstroi; }
    void TabelaExistente();
    void IncluiNoSArquivo();
    void ApagaIndices();
    void CopiaColunasParaODicionario();
    void CopiaColunaParaODicionario();
    void TabelaNova();
    void AlteraTabela();
    void ExecutaPendentes();
    void GravaVersao();

    TContexto& ctx_;
    TMarcasDeAnalise& marcas_;
    std::string tabela_;
    TDecisaoDaTabela decisao_;
};

}  // namespace wkd
