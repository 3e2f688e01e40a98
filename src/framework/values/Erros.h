#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace wkd {

/// A value does not fit the type or the character set it is turned into.
class TErroConversao : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What a failed statement failed of.
enum class TFalha {
    Conexao,            // no connection, or it broke
    Autenticacao,       // user or password
    ObjetoInexistente,  // table, view, index, constraint
    ColunaInexistente,
    ObjetoExistente,
    Sintaxe,
    ChaveDuplicada,
    Restricao,  // NOT NULL, foreign key, check
    Conversao,  // value does not convert, is too long or out of range
    EmUso,      // lock conflict, time-out, deadlock
    Outra
};

/// Error of a database server or its client library. what() is the server's whole text, all its lines.
class TErroBanco : public std::runtime_error {
  public:
    struct TDados {
        std::string mensagem;
        std::int64_t codigoNativo = 0;
        std::string sqlstate;
        std::string comando;  // the statement, without parameter values
        TFalha falha = TFalha::Outra;
        bool conexaoPerdida = false;
    };

    explicit TErroBanco(TDados dados) : std::runtime_error(dados.mensagem), dados_(std::move(dados)) {}

    std::int64_t CodigoNativo() const { return dados_.codigoNativo; }
    const std::string& SqlState() const { return dados_.sqlstate; }
    const std::string& Comando() const { return dados_.comando; }
    TFalha Falha() const { return dados_.falha; }
    bool ConexaoPerdida() const { return dados_.conexaoPerdida; }
    /// Whether the same statement may succeed later as it is: a lock, a broken connection.
    bool Passageiro() const { return ConexaoPerdida() || Falha() == TFalha::EmUso || Falha() == TFalha::Conexao; }

  private:
    TDados dados_;
};

}  // namespace wkd
