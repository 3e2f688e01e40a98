#pragma once

#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "connection/Connection.h"
#include "odbc/SessaoOdbc.h"

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
    /// Nothing where the server answers table by table.
    std::optional<TChavesPorTabela> TodasAsChaves();
    TChavePrimaria ChavePrimaria(std::string_view tabela);
    std::vector<TIndice> Indices(std::string_view tabela);

  private:
    using TLinhas = std::vector<TLinha>;
    template <class TPergunta>
    TLinhas Pergunta(TPergunta pergunta);
    TLinhas LinhasDeColunas(std::string_view tabela);
    TLinhas Consulta(const std::string& sql);
    /// Schema of the user's own tables; empty where tables have none.
    struct TEsquema {
        std::string nome, numero;
    };
    const TEsquema& Esquema();
    std::vector<std::string> Nomes(const std::string& sql);
    using TTextos = std::map<std::pair<std::string, std::string>, std::string>;  // by table and column in capitals
    /// What a SQL Server answers to a query for table, column and text.
    TTextos Textos(const std::string& sql);
    TColunasPorTabela ColunasDe(std::string_view tabela);
    std::vector<std::string> Restricoes(std::string_view tabela);

    std::shared_ptr<TSessaoOdbc> sessao_;
    std::optional<TEsquema> esquema_;
};

}  // namespace wkd
