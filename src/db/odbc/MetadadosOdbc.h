#pragma once

#include <memory>

#include "Metadados.h"
#include "SessaoOdbc.h"

namespace wkd {

/// Answers from the catalogue functions of the driver; names of tables are compared without regard to letter case.
class TMetadadosOdbc {
  public:
    explicit TMetadadosOdbc(std::shared_ptr<TSessaoOdbc> sessao) : sessao_(std::move(sessao)) {}

    /// Such as "Microsoft SQL Server 16.00.1000".
    std::string VersaoServidor();
    std::vector<std::string> NomesDeTabelas();
    std::vector<TColunaFisica> Colunas(std::string_view tabela);
    TColunasPorTabela TodasAsColunas();
    TChavePrimaria ChavePrimaria(std::string_view tabela);
    std::vector<TIndice> Indices(std::string_view tabela);

  private:
    using TLinhas = std::vector<TLinha>;
    template <class TPergunta>
    TLinhas Pergunta(TPergunta pergunta);
    TLinhas LinhasDeColunas(std::string_view tabela);
    std::string Esquema();
    std::map<std::string, std::string> Computadas(std::string_view tabela);
    std::vector<std::string> Restricoes(std::string_view tabela);

    std::shared_ptr<TSessaoOdbc> sessao_;
};

}  // namespace wkd
