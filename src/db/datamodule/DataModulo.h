#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rows/ClientDataSet.h"
#include "screen/Tela.h"
#include "server/HBNConnection.h"
#include "tables/TB.h"

namespace wkd {

/// Outcome of one statement: true when it ran and its commit succeeded, else the server's error.
class TResultado {
  public:
    TResultado() = default;
    explicit TResultado(TErroBanco erro) : erro_(std::move(erro)) {}
    explicit operator bool() const { return !erro_; }
    const TErroBanco& Erro() const { return *erro_; }
    std::string Mensagem() const { return erro_ ? erro_->what() : ""; }

  private:
    std::optional<TErroBanco> erro_;
};

/// Owner of the connection and of the working datasets; lives for the whole program.
class TDataModulo {
  public:
    TDataModulo(TAliases aliases, ITela& tela, TFabricaDeConexao fabrica = CriaConexao);
    TDataModulo(const TDataModulo&) = delete;
    TDataModulo& operator=(const TDataModulo&) = delete;

    THBNConnection SQLConnection1;
    std::string nomeAlias;

    // Dictionary of the package and, as its details, that of the database
    TClientDataSet SArquivoNovo;   // filtered
    TClientDataSet SatribNovo;     // ARQUIVO <- SArquivoNovo.NOME_ARQUIVO
    TClientDataSet SarquivoVelho;  // COD_MODULO;NOME_ARQUIVO <- SArquivoNovo
    TClientDataSet SatribVelho;    // ARQUIVO;NOME <- SatribNovo

    TTB Atualiza;  // table operations of the run

    ITela& Tela() { return tela_; }

    /// Whether the name is in the table-name list, letter case ignored; no query.
    bool ExisteTabela(std::string_view tabela) const;
    /// Reads the table-name list and forgets all cached columns.
    void AtualizaListaDeTabelas();
    /// Closes the connection and opens it again, and reads the list. The database is the same: cached columns stay.
    void Reconecta();
    /// Puts a table that was just created into the list, without reading it again.
    void IncluiNaLista(std::string_view tabela);
    const std::vector<std::string>& ListaDeTabelas() const { return tabelas_; }

    /// Whether the physical column exists, letter case ignored; false for a missing table. After some tables that were
    /// read one by one come all others, in one sweep.
    bool VerificaExisteCampo(std::string_view tabela, std::string_view coluna);
    /// Reads those of the tables that are asked for next together, but for those that are known.
    void LeColunas(std::set<std::string> tabelas);
    /// Physical columns of the table, from the same cache.
    const std::vector<TColunaFisica>& ColunasFisicas(std::string_view tabela);
    /// Takes these for the columns of the table until it forgets them: a plan sees them as an earlier step leaves them.
    void SupoeColunas(std::string_view tabela, std::vector<TColunaFisica> colunas);
    /// Primary key of the table; the first question reads those of all.
    const TChavePrimaria& ChavePrimaria(std::string_view tabela);
    /// Drops what is cached of one table; call after every alteration of it.
    void EsqueceColunas(std::string_view tabela);

    /// Runs one statement in a transaction of its own. Nothing is logged here.
    TResultado Executa(std::string_view sql);
    /// Issues the dialect's commit; on error reports it (status list, error list, run log) and rolls back. Never
    /// raises; `lugar` names the place in the report.
    void Commit(std::string_view lugar);

    /// Replaces the table's "U_" columns in SATRIB by those of SATRIB_USER and copies its SARQUIVO_USER row, in the
    /// open transaction when there is one.
    void MesclaCamposPersonalizados(std::string_view tabela);
    /// Copies SPESQ_USER, SPESQAUX_USER and SLOOKUP_USER into their tables.
    void MesclaPesquisasELookups();

    // Busy texts of the package extraction
    void UnzipTotalPercentDone(int percentual);
    void UnzipUnZipComplete();

  private:
    void LeLista();
    void LeTodasAsColunas();
    void EsqueceTodasAsColunas();
    /// What was read under another connect may come from another database.
    void ConfereAbertura();

    ITela& tela_;
    std::vector<std::string> tabelas_;
    std::set<std::string> nomes_;  // in capitals
    TColunasPorTabela colunas_;
    TChavesPorTabela chaves_;
    int aberturaDasColunas_ = 0;  // connect that colunas_ and chaves_ were read under
    bool lidasTodas_ = false;
    int lidasSos_ = 0;  // tables that were read alone
};

}  // namespace wkd
