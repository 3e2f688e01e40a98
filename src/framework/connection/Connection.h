#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Capacidades.h"
#include "values/Campo.h"
#include "values/Erros.h"

namespace wkd {

class TDialeto;

/// Kinds of database server; the order is part of the settings file's meaning.
enum class TTipoBanco { tbInterbase, tbMySQL, tbOracle, tbSQLServer, tbODBC };

/// Text of a kind as the settings file stores it, such as "tbInterbase".
std::string_view TipoBancoToStr(TTipoBanco tipo);

/// Kind of a settings-file text; the comparison is exact. Nothing for an unknown text.
std::optional<TTipoBanco> StrToTipoBanco(std::string_view texto);

/// Since when a connection has been waiting for its server: set by the connection's thread, read by any.
class TRelogioDeEspera {
  public:
    /// One call to the server. Inside another one it is that which waits; the outer one begins anew behind it.
    class TChamada {
      public:
        explicit TChamada(TRelogioDeEspera& relogio)
            : relogio_(relogio), dentroDeOutra_(relogio.desde_.exchange(Agora()) != 0) {}
        ~TChamada() { relogio_.desde_ = dentroDeOutra_ ? Agora() : 0; }
        TChamada(const TChamada&) = delete;
        TChamada& operator=(const TChamada&) = delete;

      private:
        TRelogioDeEspera& relogio_;
        const bool dentroDeOutra_;
    };

    std::chrono::milliseconds Espera() const {
        const auto desde = desde_.load();
        if (desde == 0) return {};
        return std::chrono::duration_cast<std::chrono::milliseconds>(TRelogio::duration(Agora() - desde));
    }

  private:
    using TRelogio = std::chrono::steady_clock;
    static TRelogio::rep Agora() { return TRelogio::now().time_since_epoch().count(); }

    std::atomic<TRelogio::rep> desde_ = 0;
};

/// Column of a physical table.
struct TColunaFisica : TCampo {
    std::string tipoSql;    // as CREATE TABLE takes it, such as "varchar(50)", without default and null part
    std::string padrao;     // text of its default, such as "'A'"; empty without one
    std::string expressao;  // of a computed column; empty for a stored one
    std::string conjunto;   // character set of a text column in capitals, such as "NONE"; empty otherwise
};

/// Columns joined in key or index order.
struct TChavePrimaria {
    std::string nome;  // of the constraint; empty when the table has no primary key
    std::vector<std::string> colunas;
};

struct TIndice {
    std::string nome;
    bool unico = false;
    bool descendente = false;
    std::string restricao;  // name of the unique or foreign-key constraint the index belongs to, else empty
    std::vector<std::string> colunas;
    std::string expressao;  // of a computed index
    bool inativo = false;
};

using TColunasPorTabela = std::map<std::string, std::vector<TColunaFisica>>;
using TChavesPorTabela = std::map<std::string, TChavePrimaria>;

/// A prepared statement with named parameters (":pNome", also twice in one text; not inside quotes or comments).
/// It runs in the connection's open transaction; without one, a cursor reads in a transaction of its own that ends
/// with the cursor, and an executed statement is committed at once. Every operation throws TErroBanco. After the
/// connection was renewed the statement prepares itself again at its next use.
class TComando {
  public:
    virtual ~TComando() = default;

    /// Parameter names in order of first appearance, without ":".
    virtual const std::vector<std::string>& Parametros() const = 0;
    /// Sets the parameter of that position in Parametros(). A value keeps until it is set again.
    virtual void Atribui(std::size_t parametro, const TValor& valor) = 0;
    /// Sets the parameter of that name, letter case ignored. Throws std::invalid_argument when there is none.
    void Atribui(std::string_view parametro, const TValor& valor);
    /// The content of a blob parameter, read from `fonte` in pieces while the statement runs, once.
    virtual void AtribuiFluxo(std::size_t parametro, TLeitorBytes& fonte) = 0;

    /// Runs a statement without rows; returns the number of rows it touched.
    virtual std::int64_t Executa() = 0;

    /// Opens the cursor before its first row; an open one is closed first.
    virtual void Abre() = 0;
    /// Moves to the next row; false past the last one, which also closes the cursor.
    virtual bool Proximo() = 0;
    /// Closes the cursor and ends its own transaction. The statement stays prepared.
    virtual void Fecha() noexcept = 0;
    virtual const std::vector<TCampo>& Campos() const = 0;
    /// Value of the current row. A blob comes as TConteudo, which outlives the row and the command; bound as a
    /// parameter on the same connection, it is copied by the server alone.
    virtual TValor Valor(std::size_t campo) = 0;
};

/// Keeps a table as it is: while it lives, nobody writes into the table. The transaction that drops the table must be
/// its own, so that nobody comes between.
class TReserva {
  public:
    virtual ~TReserva() = default;
    /// Begins the connection's transaction as the one that holds the table until its end. Once.
    virtual void StartTransaction() = 0;
};

/// All rows of a query, in memory. Throws TErroBanco.
TTabelaEmMemoria LeTudo(TComando& consulta);

/// Connection to one database. One thread, one transaction at a time (cursors outside it excepted).
class TConnection {
  public:
    virtual ~TConnection() = default;

    virtual void Open() = 0;
    virtual void Close() noexcept = 0;
    virtual bool Connected() const = 0;
    virtual TTipoBanco TipoBanco() const = 0;
    /// Such as "Firebird 3.0.11".
    virtual std::string VersaoServidor() = 0;
    /// The dialect that knows what this connection's server can do; null where that of its kind is to do.
    virtual const TDialeto* DialetoDoServidor() const { return nullptr; }

    virtual void StartTransaction() = 0;
    /// Begins a transaction that reads the database as it is now and writes nothing, to be rolled back. Here as far as
    /// the server keeps rows still.
    virtual void StartInstantaneo() { StartTransaction(); }
    virtual void Commit() = 0;
    virtual void Rollback() noexcept = 0;
    virtual bool InTransaction() const = 0;
    /// A point inside the open transaction that VoltaAoPonto returns to; the name is an identifier.
    virtual void MarcaPonto(std::string_view nome) = 0;
    virtual void VoltaAoPonto(std::string_view nome) = 0;

    /// Keeps every writer, this connection too, out of a table. TErroBanco (EmUso) when one is at work for longer than
    /// 10 s. Null where the driver has no such means.
    virtual std::unique_ptr<TReserva> Reserva(std::string_view /*tabela*/) { return nullptr; }

    // One update a database
    /// Takes the lock under which one update at a time works on the database, and announces who has it; gone when this
    /// connection ends, however it ends. False while another connection has it. Here without lock.
    virtual bool Trava(std::string_view /*anuncio*/) { return true; }
    /// Of the holder: announces anew. A server that answers nothing else answers this.
    virtual void Anuncia(std::string_view /*anuncio*/) {}
    /// For another connection than the holder's: what he announced and what the server knows of him; empty when this
    /// user is not shown it, nothing when nobody has the lock.
    virtual std::optional<std::string> QuemTrava() { return std::nullopt; }

    // Loss and silence
    /// Whether it was open and is lost: whatever it is asked fails until Open() makes another.
    virtual bool Perdida() const { return false; }
    /// How long the call under way has been waiting for the server; 0 without one. Of any thread, as Cancela().
    virtual std::chrono::milliseconds Espera() const { return {}; }
    /// Gives the call under way up: it fails, and the connection is lost. For a server that does not answer.
    virtual void Cancela() noexcept {}
    /// Number of the connection on its server, the last one of a lost connection; empty where there is none. Several,
    /// separated by commas, where a connection has more than one.
    virtual std::string Numero() const { return {}; }
    /// Whether the server has been at work, since it was last asked here, for its connection of that number; also false
    /// where that cannot be told.
    virtual bool Trabalha(std::string_view /*numero*/) { return false; }
    /// Ends, on the server, a lost connection of this program, so that nothing it was sent is done later on. What
    /// fails is left to the server.
    virtual void Derruba(std::string_view /*numero*/) noexcept {}

    /// Whether the database as a whole is set to take no changes.
    virtual bool SoLeitura() { return false; }
    /// What the driver knows of the database without a statement.
    virtual TSaude Saude() { return {}; }
    /// Bytes that the disk of the database has left; nothing where that cannot be seen from here.
    virtual std::optional<std::uintmax_t> EspacoLivre() { return std::nullopt; }

    /// Runs one statement in a transaction of its own and commits it: it has run only when this returns.
    /// Not inside an open transaction (std::logic_error).
    virtual void ExecuteDirect(std::string_view sql) = 0;
    virtual std::unique_ptr<TComando> Prepara(std::string_view sql) = 0;

    /// Names of the ordinary tables (no views, no system tables), as the server writes them.
    virtual std::vector<std::string> NomesDeTabelas() = 0;
    /// Whether there is an ordinary table of that name, letter case ignored. Here by the list of all.
    virtual bool ExisteTabela(std::string_view tabela);
    /// Columns of one table in their order, empty when there is no such table; letter case of the name ignored.
    virtual std::vector<TColunaFisica> Colunas(std::string_view tabela) = 0;
    /// Columns of every table in one sweep, by table name in capitals.
    virtual TColunasPorTabela TodasAsColunas() = 0;
    /// Those of the tables of these names, in capitals, in one question; one that is not among the answer may be there.
    /// Nothing where all tables are read as soon as these.
    virtual std::optional<TColunasPorTabela> ColunasDe(const std::vector<std::string>& /*tabelas*/) {
        return std::nullopt;
    }
    virtual TChavePrimaria ChavePrimaria(std::string_view tabela) = 0;
    /// Keys of every table that has one, by table name in capitals. Here table by table; a driver does it in one sweep.
    virtual TChavesPorTabela TodasAsChaves();
    /// Indexes but the primary key's own.
    virtual std::vector<TIndice> Indices(std::string_view tabela) = 0;

    /// Called with the text of every statement just before it goes to the server (prepared ones at each
    /// execution), and with "commit" before a commit. What it throws reaches the caller in the statement's place.
    using TObservador = std::function<void(std::string_view)>;
    virtual void Observa(TObservador observador) = 0;
};

/// Transaction of a scope: begun by the constructor, rolled back by the destructor unless Commit() was called.
class TTransacao {
  public:
    explicit TTransacao(TConnection& conexao) : conexao_(conexao) { conexao_.StartTransaction(); }
    /// The transaction of a reservation, when there is one.
    TTransacao(TConnection& conexao, std::unique_ptr<TReserva> reserva) : conexao_(conexao) {
        reserva ? reserva->StartTransaction() : conexao_.StartTransaction();
    }
    ~TTransacao() {
        if (aberta_) conexao_.Rollback();
    }
    TTransacao(const TTransacao&) = delete;
    TTransacao& operator=(const TTransacao&) = delete;

    void Commit() {
        conexao_.Commit();
        aberta_ = false;
    }

  private:
    TConnection& conexao_;
    bool aberta_ = true;
};

}  // namespace wkd
