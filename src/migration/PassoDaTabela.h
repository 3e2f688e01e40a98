#pragma once

#include <string>

#include "MarcaDeAnalise.h"
#include "Pendentes.h"

namespace wkd {

/// The step of the run for one table: the current row of SArquivoNovo is classified, and the table created, altered in
/// place, rebuilt or left alone; then its version is recorded.
class TPassoDaTabela {
  public:
    TPassoDaTabela(TContexto& ctx, TMarcasDeAnalise& marcas);

    void Executa();

  private:
    bool RestauracaoPendente();
    void Reconstroi();
    void TabelaExistente();
    void IncluiNoSArquivo();
    bool VersaoDifere() const;
    bool Analisa() const;
    void ApagaIndices();
    bool FaltaColunaDeChave();
    void ComparaColunas();
    void ComparaColunaAtual();
    void CopiaColunaParaODicionario();
    void TabelaNova();
    void AlteraTabela();
    void ExecutaPendentes();
    void GravaVersao();

    TContexto& ctx_;
    TMarcasDeAnalise& marcas_;
    std::string tabela_;
    TPendentes pendentes_;
    bool reconstroi_ = false;
};

}  // namespace wkd
