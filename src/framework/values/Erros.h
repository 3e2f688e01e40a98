#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What something failed of, told apart by what there is to do about it.
enum class TFalha {
    // A database server, or its client library
    Conexao,               // no connection, or it broke
    ServidorDesconhecido,  // no machine of that name
    BancoInexistente,      // no such database on the server, as far as it tells
    BancoNegado,           // the server may not open the file, or the user the database
    AcessoRemoto,          // the server's configuration does not let it be opened
    NaoEBanco,             // the file is no database, or none that this server reads
    BancoFechado,          // shut down, offline, or being restored
    SemDriver,             // nothing here that speaks to that kind of server
    Configuracao,          // settings file or alias
    Autenticacao,          // user or password
    SemPermissao,          // the user may not do it
    ObjetoInexistente,     // table, view, index, constraint
    ColunaInexistente,
    ObjetoExistente,
    Sintaxe,
    ChaveDuplicada,
    Restricao,      // NOT NULL, foreign key, check
    Conversao,      // value does not convert, is too long or out of range
    EmUso,          // lock conflict, time-out, deadlock; others have written meanwhile
    Dependencia,    // other objects hold on to it
    VersoesDemais,  // Firebird: a table altered 255 times since the last restore
    DiscoCheio,
    // A database as a whole, its file, and the server's service for it
    BancoExistente,  // one of that name, or another file
    BancoSoLeitura,  // marked so
    LugarSemAcesso,  // a folder that is not there for the server, or forbidden to it
    SemServico,      // the server takes no backups
    NaoEBackup,
    BackupCortado,  // or damaged
    SemBackup,      // none was made, or restored, or it is not good
    // Files, and what was asked for
    Arquivo,        // cannot be read or written
    PacoteAusente,  // no file where it was said to be
    Pacote,         // damaged, or not whole
    Dicionario,     // describes nothing that a server could make
    OutroBanco,     // without the dictionary tables
    OutraAtualizacao,
    UsuariosConectados,
    NaoConfirmada,
    Interrompida,
    // Tables and rows
    Impedimento,         // must not be rebuilt
    ReconstrucaoAberta,  // dropped, and not yet whole again
    SemValor,            // rows lack a value of the key
    LinhaRecusada,       // rows or values in the rejects file
    ConteudoDiferente,   // the table is not what its backup table is
    RegistrosAMenos,
    SobraNoBackup,  // columns that the backup table alone has
    NaoRecriado,    // triggers, properties, comments: their source is in the rejects file
    Outra
};

/// Whether it failed of having no connection.
constexpr bool SemConexao(TFalha falha) { return falha <= TFalha::BancoFechado; }

/// One failure as a value.
struct TErro {
    std::string mensagem = {};  // all its lines
    std::int64_t codigoNativo = 0;
    std::string sqlstate = {};
    std::string comando = {};  // the statement, without parameter values
    TFalha falha = TFalha::Outra;
    bool conexaoPerdida = false;
};

/// One for several: their texts, a line each, and what the first one failed of. There is one at least.
TErro JuntaErros(const std::vector<TErro>& erros);

/// An error of this system, which knows what failed.
class TErroConhecido : public std::runtime_error {
  public:
    explicit TErroConhecido(TErro erro) : std::runtime_error(erro.mensagem), erro_(std::move(erro)) {}
    TErroConhecido(TFalha falha, const std::string& mensagem)
        : TErroConhecido(TErro{.mensagem = mensagem, .falha = falha}) {}

    const TErro& Dados() const { return erro_; }
    TFalha Falha() const { return erro_.falha; }

  private:
    TErro erro_;
};

/// What is known of whatever was caught.
TErro ErroDe(const std::exception& erro);

/// A value does not fit the type or the character set it is turned into.
class TErroConversao : public TErroConhecido {
  public:
    explicit TErroConversao(const std::string& mensagem) : TErroConhecido(TFalha::Conversao, mensagem) {}
};

/// Error of a database server or its client library. what() is the server's whole text, all its lines.
class TErroBanco : public TErroConhecido {
  public:
    using TDados = TErro;

    explicit TErroBanco(TDados dados) : TErroConhecido(std::move(dados)) {}

    std::int64_t CodigoNativo() const { return Dados().codigoNativo; }
    const std::string& SqlState() const { return Dados().sqlstate; }
    const std::string& Comando() const { return Dados().comando; }
    bool ConexaoPerdida() const { return Dados().conexaoPerdida; }
    /// Whether the same statement may succeed later as it is: a lock, a broken connection.
    bool Passageiro() const { return ConexaoPerdida() || Falha() == TFalha::EmUso || SemConexao(Falha()); }
};

}  // namespace wkd
