#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "aliases/Aliases.h"
#include "connection/Connection.h"
#include "values/Campo.h"

namespace wkd {

class TClientDataSet;
class TConnection;

/// Rows of the column dictionary by table, in SEQUENCIA order.
class TCacheSatrib {
  public:
    /// Reads SATRIB; a database without it leaves the cache empty. Throws TErroBanco.
    void Carrega(TConnection& conexao);
    void Esquece();
    bool Carregado() const { return carregado_; }
    /// Makes `alvo` a copy of the rows of one table. A database without SATRIB leaves it closed.
    void Copia(std::string_view tabela, TClientDataSet& alvo) const;

  private:
    bool carregado_ = false;
    std::vector<TCampo> campos_;
    std::unordered_map<std::string, std::vector<TLinha>> linhas_;  // by ChaveDeNome(ARQUIVO)
};

/// Connection of the driver for a kind of server, not opened yet; the kind is the settings file's text. Throws
/// TErroConfiguracao for an unknown kind and for one without driver.
std::unique_ptr<TConnection> CriaConexao(std::string_view tipoBanco, const TParametrosConexao& parametros);

/// Opens a connection while it asks, now and then, whether that is given up; then it throws TErroBanco (Interrompida).
/// No driver lets an opening be broken off: it is left alone on a thread of its own, and closed when it ends.
void AbreOuDesiste(const std::shared_ptr<TConnection>& conexao, const std::function<bool()>& desiste);

/// Opens the database of an alias, which need not be in a settings file, and closes it again: what its server is.
std::string ProvaAlias(const TAlias& alias, const std::function<bool()>& desiste);

using TFabricaDeConexao =
    std::function<std::unique_ptr<TConnection>(std::string_view tipoBanco, const TParametrosConexao& parametros)>;

class TClientDataSet;

/// Connection of an alias of the settings file. Opens the driver of the alias's kind; every database operation goes
/// on to it. Operations on a connection never opened throw TErroBanco (Conexao).
class THBNConnection : public TConnection {
  public:
    explicit THBNConnection(TAliases aliases, TFabricaDeConexao fabrica = CriaConexao);

    // Alias
    /// Loads the alias: driver parameters and kind. An empty name loads nothing. An open connection stays as it is
    /// until it is opened anew. Throws TErroConfiguracao for an alias that the settings file does not have.
    void SetAlias(std::string_view nome);
    const std::string& Alias() const { return alias_; }
    const TAliases& Aliases() const { return aliases_; }
    std::string GetIniPath() const { return aliases_.Caminho().string(); }
    const TParametrosConexao& Parametros() const { return parametros_; }

    /// A further connection to the alias's database, not opened.
    std::unique_ptr<TConnection> Outra() const;
    /// Driver parameters of another database, named as the parameter "Database" takes it, and a connection made of
    /// them, not opened.
    TParametrosConexao ParametrosDe(std::string_view banco) const;
    std::unique_ptr<TConnection> Outra(const TParametrosConexao& parametros) const;
    /// The alias's database file, whether it is there or not, when the embedded engine is to open it.
    std::optional<std::filesystem::path> ArquivoLocal() const;

    struct TDadosConexao {
        std::string hostname, path, database;
        /// Host, ":", path, "\" and database; no ":" without host, no second separator when the path ends with one.
        std::string Texto() const;
    };
    /// As the settings file has them now.
    TDadosConexao RetornaDadosConexao() const;

    // TConnection
    /// Opens the alias's database; one that is open already is closed first. Throws TErroConfiguracao for an unknown
    /// kind or one without driver, TErroBanco when the server refuses.
    void Open() override;
    void Close() noexcept override;
    bool Connected() const override;
    /// How often it was opened: what was read under another number may come from another database.
    int Aberturas() const { return aberturas_; }
    /// Kind of the alias; SQL Server for an ODBC alias, Firebird for an unknown text.
    TTipoBanco TipoBanco() const override;
    /// Kind of the alias, or that of section "HBN" of `ini` as long as no alias is loaded.
    TTipoBanco TipoBanco(const std::filesystem::path& ini) const;
    std::string VersaoServidor() override;
    const TDialeto* DialetoDoServidor() const override;
    void StartTransaction() override;
    void StartInstantaneo() override;
    void Commit() override;
    void Rollback() noexcept override;
    bool InTransaction() const override;
    void MarcaPonto(std::string_view nome) override;
    void VoltaAoPonto(std::string_view nome) override;
    std::unique_ptr<TReserva> Reserva(std::string_view tabela) override;
    bool Trava(std::string_view anuncio) override;
    void Anuncia(std::string_view anuncio) override;
    std::optional<std::string> QuemTrava() override;
    bool Perdida() const override;
    std::chrono::milliseconds Espera() const override;
    void Cancela() noexcept override;
    std::string Numero() const override;
    bool Trabalha(std::string_view numero) override;
    void Derruba(std::string_view numero) noexcept override;
    bool SoLeitura() override;
    TSaude Saude() override;
    std::optional<std::uintmax_t> EspacoLivre() override;
    /// On Firebird a text that contains "commit" runs nothing: transactions are managed here.
    void ExecuteDirect(std::string_view sql) override;
    std::unique_ptr<TComando> Prepara(std::string_view sql) override;
    /// On Oracle the user's tables whose names begin with "B", "C", "S" or "T".
    std::vector<std::string> NomesDeTabelas() override;
    bool ExisteTabela(std::string_view tabela) override;
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override;
    TColunasPorTabela TodasAsColunas() override;
    std::optional<TColunasPorTabela> ColunasDe(const std::vector<std::string>& tabelas) override;
    TChavePrimaria ChavePrimaria(std::string_view tabela) override;
    TChavesPorTabela TodasAsChaves() override;
    std::vector<TIndice> Indices(std::string_view tabela) override;
    void Observa(TObservador observador) override;

    /// As long as there is this function, Open() can be given up (AbreOuDesiste). What was prepared on the connection
    /// before such an opening is gone.
    void PermiteDesistir(std::function<bool()> desiste) { desiste_ = std::move(desiste); }

    // Column dictionary
    /// Makes `alvo` a copy of the cached column-dictionary rows of one table; without SATRIB it is closed. The first
    /// call after a connect reads the dictionary, so that a connection that never asks pays nothing.
    void SAtrbi(std::string_view tabela, TClientDataSet& alvo);
    /// Reads the column dictionary again.
    void AtualizaSAtrib();

  private:
    TConnection& Driver() const;
    std::shared_ptr<TConnection> DriverDeOutraThread() const;
    void LigaObservador();
    void AbreDriver();
    void TrocaDriver(std::shared_ptr<TConnection> novo);
    std::vector<std::string> TabelasDoUsuarioOracle();

    TAliases aliases_;
    TFabricaDeConexao fabrica_;
    std::string alias_;
    std::string tipoBanco_;  // text of the alias's kind
    TParametrosConexao parametros_;
    bool aliasTrocado_ = true;
    int aberturas_ = 0;
    mutable std::mutex guarda_;  // what other threads ask of the driver, while another alias's replaces it
    std::shared_ptr<TConnection> driver_;
    TObservador observador_;
    std::function<bool()> desiste_;
    TCacheSatrib satrib_;
};

}  // namespace wkd
