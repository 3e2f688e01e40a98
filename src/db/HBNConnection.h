#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Aliases.h"
#include "ClientDataSet.h"
#include "Connection.h"
#include "ParametrosConexao.h"

namespace wkd {

/// Connection of an alias of the settings file. Opens the driver of the alias's kind; every database operation goes
/// on to it.
class THBNConnection : public TConnection {
  public:
    explicit THBNConnection(TAliases aliases);

    // Alias
    /// Loads the alias: driver parameters and kind. An empty name loads nothing. An open connection stays as it is
    /// until it is opened anew. Throws TErroConfiguracao for an alias that the settings file does not have.
    void SetAlias(std::string_view nome);
    const std::string& Alias() const { return alias_; }
    const TAliases& Aliases() const { return aliases_; }
    std::string GetIniPath() const { return aliases_.Caminho().string(); }
    const TParametrosConexao& Parametros() const { return parametros_; }

    struct TDadosConexao {
        std::string hostname, path, database;
        /// Host, ":", path, "\" and database; no second separator when the path ends with one.
        std::string Texto() const;
    };
    TDadosConexao RetornaDadosConexao() const;

    // TConnection
    /// Throws TErroConfiguracao for an unknown kind or one without driver, TErroBanco when the server refuses.
    void Open() override;
    void Close() noexcept override;
    bool Connected() const override;
    /// Kind of the alias; SQL Server for an ODBC alias.
    TTipoBanco TipoBanco() const override;
    std::string VersaoServidor() override;
    void StartTransaction() override;
    void Commit() override;
    void Rollback() noexcept override;
    bool InTransaction() const override;
    void MarcaPonto(std::string_view nome) override;
    void VoltaAoPonto(std::string_view nome) override;
    /// On Firebird a text that contains "commit" runs nothing: transactions are managed here.
    void ExecuteDirect(std::string_view sql) override;
    std::unique_ptr<TComando> Prepara(std::string_view sql) override;
    std::vector<std::string> NomesDeTabelas() override;
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override;
    TColunasPorTabela TodasAsColunas() override;
    TChavePrimaria ChavePrimaria(std::string_view tabela) override;
    std::vector<TIndice> Indices(std::string_view tabela) override;
    void Observa(TObservador observador) override;

    // Column dictionary
    /// Makes `alvo` a copy of the cached column-dictionary rows of one table.
    void SAtrbi(std::string_view tabela, TClientDataSet& alvo);
    /// Reads the column dictionary again.
    void AtualizaSAtrib();

  private:
    TAliases aliases_;
    std::string alias_;
    std::string tipoBanco_;  // text of the kind
    TParametrosConexao parametros_;
    std::unique_ptr<TConnection> driver_;
    TObservador observador_;
};

}  // namespace wkd
