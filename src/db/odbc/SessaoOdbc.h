#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Connection.h"
#include "LigacaoOdbc.h"
#include "ParametrosConexao.h"

namespace wkd {

/// What a connection shares with its commands, which may outlive it: the main connection of the driver, which all
/// writing and every transaction goes through, and further ones for reading while other statements run.
class TSessaoOdbc {
  public:
    explicit TSessaoOdbc(const TParametrosConexao& parametros) : parametros_(parametros) {}

    void Liga();
    void Desliga() noexcept;
    bool Ligada() const { return principal_ != nullptr; }
    /// Whether the server speaks T-SQL.
    bool SqlServer() const { return sqlServer_; }

    /// The main connection, its cursor's rows taken over by their command. Throws TErroBanco when closed.
    std::shared_ptr<TLigacaoOdbc> Principal();
    /// The connection to read on: the main one inside a transaction, else one that no cursor uses.
    std::shared_ptr<TLigacaoOdbc> ParaLer();
    bool EhPrincipal(const std::shared_ptr<TLigacaoOdbc>& ligacao) const { return ligacao && ligacao == principal_; }
    /// A further connection for whoever asks alone.
    std::shared_ptr<TLigacaoOdbc> Nova();
    /// A statement such as "set dateformat", which every further connection runs first.
    void Lembra(std::string_view ajuste) { ajustes_.emplace_back(ajuste); }

    // The program's transaction
    void StartTransaction();
    /// The one that this connection has open already: it is the main connection until the transaction ends.
    void StartTransaction(std::shared_ptr<TLigacaoOdbc> ligacao);
    void Commit();
    void Rollback() noexcept;
    bool InTransaction() const { return emTransacao_ && !desfeita_; }
    /// Whether a transaction was begun and not ended by the program, be it that the server has undone it.
    bool Comecada() const { return emTransacao_; }
    /// After an error: ends the transaction of a statement of its own; of the program's, asks the server whether it
    /// still stands.
    void DepoisDoErro(const TErroBanco& erro) noexcept;

    /// Whether the main connection met a loss.
    bool Perdida() const { return perdida_; }
    TEmCurso& EmCurso() { return *emCurso_; }
    const std::string& Numero() const { return numero_; }

    void DefineObservador(TConnection::TObservador observador) { observador_ = std::move(observador); }
    void Observa(std::string_view comando) const {
        if (observador_) observador_(comando);
    }

  private:
    std::shared_ptr<TLigacaoOdbc> Conecta();
    void ExigeLigacao() const;
    void Ajusta(const std::shared_ptr<TLigacaoOdbc>& ligacao);
    std::int32_t Pergunta(std::string_view sql);
    bool TransacaoDePe();
    std::string Motivo(const TErroBanco& erro) const;
    void Encerra() noexcept;

    TParametrosConexao parametros_;
    std::shared_ptr<TEmCurso> emCurso_ = std::make_shared<TEmCurso>();
    bool perdida_ = false;
    std::string numero_;  // of the main connection, on a SQL Server
    bool sqlServer_ = false;
    std::shared_ptr<TLigacaoOdbc> principal_;
    std::shared_ptr<TLigacaoOdbc> emDescanso_;  // the main one, while another has the transaction
    std::vector<std::shared_ptr<TLigacaoOdbc>> leitoras_;
    std::vector<std::string> ajustes_;
    bool emTransacao_ = false;
    bool desfeita_ = false;  // by the server, after an error
    std::string motivo_;     // text of that error
    TConnection::TObservador observador_;
};

}  // namespace wkd
