#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "ConexaoGravada.h"

namespace wkd {

/// What was sent to a TConexaoTSql, and what it answers out of the catalogue that only a SQL Server has.
struct TConversaTSql {
    /// Each text once, as the driver sends it ("?" for a parameter), in the order they first came.
    std::vector<std::string> enviados;
    /// Rows for the queries that hold the text; other queries of "sys." have none.
    std::vector<std::pair<std::string, TTabelaEmMemoria>> catalogo;
    bool anota = true;
    /// What it throws is the server's answer.
    std::function<void(const std::string&)> antes;

    void Anota(std::string_view sql);

  private:
    std::set<std::string> vistos_;
};

/// Connection that passes for one to a SQL Server: it takes note of the T-SQL it is sent and runs it on a Firebird
/// database in that server's words; columns come back in T-SQL's.
class TConexaoTSql : public TConnection {
  public:
    TConexaoTSql(std::unique_ptr<TConnection> firebird, TConversaTSql& conversa);

    void Open() override;
    void Close() noexcept override { firebird_->Close(); }
    bool Connected() const override { return firebird_->Connected(); }
    TTipoBanco TipoBanco() const override { return TTipoBanco::tbSQLServer; }
    std::string VersaoServidor() override { return "Microsoft SQL Server"; }
    void StartTransaction() override { firebird_->StartTransaction(); }
    void Commit() override { firebird_->Commit(); }
    void Rollback() noexcept override { firebird_->Rollback(); }
    bool InTransaction() const override { return firebird_->InTransaction(); }
    void MarcaPonto(std::string_view nome) override;
    void VoltaAoPonto(std::string_view nome) override;
    std::unique_ptr<TReserva> Reserva(std::string_view tabela) override;
    void ExecuteDirect(std::string_view sql) override;
    std::unique_ptr<TComando> Prepara(std::string_view sql) override;
    std::vector<std::string> NomesDeTabelas() override { return firebird_->NomesDeTabelas(); }
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override;
    TColunasPorTabela TodasAsColunas() override;
    TChavePrimaria ChavePrimaria(std::string_view tabela) override { return firebird_->ChavePrimaria(tabela); }
    std::vector<TIndice> Indices(std::string_view tabela) override;
    void Observa(TObservador) override {}

  private:
    void Envia(std::string_view sql);
    std::unique_ptr<TComando> Responde(std::string_view sql);
    void GuardaPropriedade(const std::string& sql);

    std::unique_ptr<TConnection> firebird_;
    TConversaTSql& conversa_;
    std::map<std::pair<std::string, std::string>, std::string> propriedades_;  // extended ones, by table and name
    std::deque<TConexaoGravada> respostas_;
};

}  // namespace wkd
