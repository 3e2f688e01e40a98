#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// An object of the catalogue and its source.
struct TFonte {
    std::string nome, texto;
};

/// How an index is made again as it is, with what its server alone has (SQL Server: directions column by column,
/// columns that are only kept along, a filter).
struct TIndiceComoEra {
    std::string comando;
    std::vector<std::string> colunas;  // also those kept along
};

/// Statements that take away what stands on a column, and those that bring it back.
struct TContorno {
    std::vector<std::string> tira, devolve;
};

/// A column of a backup table and one of the table as expressions, and how their values are compared by content.
struct TComparacao {
    std::string b, t;
    bool texto = false;       // blanks at the end count
    bool bytes = false;       // zeros at the end count
    bool converte = false;    // a value of another form can make the server refuse the comparison
    bool soPresenca = false;  // only whether there is a value
    bool real = false;        // what is no number (NaN) counts as equal to itself
    bool longo = false;       // of a size that has no limit
};

/// Type text of a column without blanks, and the letters of a text.
struct TLargura {
    std::string tipo;
    std::int64_t letras = 0;
    std::string conjunto = {};  // of a text that is there already; empty: the database's
};

/// A connection that a server has to a database, since "yyyy-mm-dd hh:mm".
struct TConectado {
    std::string usuario, computador, programa, desde;
};

/// What differs from one kind of server to the other, and from version to version: texts of statements, what the server
/// can do, and the questions to its catalogue. One object a kind, and one a connection, which knows its server; what is
/// not known of a kind has the answer written here. Table names in capitals where the catalogue is asked. Throws
/// TErroBanco.
class TDialeto {
  public:
    TDialeto() = default;
    virtual ~TDialeto() = default;
    TDialeto(const TDialeto&) = delete;
    TDialeto& operator=(const TDialeto&) = delete;

    const TCapacidades& Capacidades() const { return capacidades_; }
    /// Of the driver, whenever it has opened its connection.
    void Conhece(TCapacidades capacidades) { capacidades_ = std::move(capacidades); }

    // Texts
    /// The statement in the words of this server's version.
    virtual std::string ParaServidor(std::string_view comando) const { return std::string(comando); }
    /// Statement that commits, or rolls back; empty where nothing is issued.
    virtual std::string_view ComandoCommit() const { return ""; }
    virtual std::string_view ComandoRollback() const { return ""; }
    /// " TOP " becomes " FIRST " on Firebird and the other way round on SQL Server, blanks part of the patterns.
    virtual std::string AjustaQuery(std::string_view comando) const { return std::string(comando); }
    /// Piece between "alter table " + table and the column definition.
    virtual std::string ChaveAlteraColuna(std::string_view coluna) const;
    /// On SQL Server every "BLOB" becomes "IMAGE" and every "TIMESTAMP" "datetime".
    virtual std::string AjustaCriaTabela(std::string_view comando) const { return std::string(comando); }
    /// Whether the list of a user's tables shows the table. On Oracle its name begins with "B", "C", "S" or "T".
    virtual bool ListaTabela(std::string_view /*tabela*/) const { return true; }
    /// Name from the server's catalogue as statements take it: in double quotes where it needs them. Firebird refuses
    /// them in the DDL of databases of dialect 1, whose names never do.
    virtual std::string Identificador(std::string_view nome) const;
    /// Statement that makes the index on a table again.
    virtual std::string CriaIndice(const TIndice& indice, std::string_view tabela) const;
    virtual std::string ApagaIndice(const TIndice& indice, std::string_view tabela) const;
    /// Statements that make a column of a table NOT NULL, and nullable again.
    virtual std::string ExigeValor(std::string_view tabela, const TColunaFisica& coluna) const;
    virtual std::string DispensaValor(std::string_view tabela, const TColunaFisica& coluna) const;
    virtual std::string ApagaColuna(std::string_view tabela, std::string_view coluna) const;
    /// Definition of a computed column.
    virtual std::string ColunaCalculada(const TColunaFisica& coluna) const;
    /// "constraint NOME " for ALTER TABLE; empty for a name that the server gave, and gives again.
    virtual std::string Batizada(const std::string& nome) const;
    /// Name of the table that shows whether the server takes a CREATE TABLE; empty where preparing it shows it.
    virtual std::string NomeDeEnsaio(std::string_view /*tabela*/) const { return ""; }

    /// Statement that stores so many rows in these columns, all of them or none, of parameters row by row.
    virtual std::string InsereLinhas(std::string_view tabela, const std::vector<TColunaFisica>& colunas,
                                     std::size_t linhas) const;
    /// Rows of these columns that such a statement takes, more or less; 1 where it stores no more.
    virtual std::size_t LinhasPorInsercao(const std::vector<TColunaFisica>& /*colunas*/) const { return 1; }

    // Expressions
    virtual std::string Caracteres(const std::string& texto) const { return "char_length(" + texto + ")"; }
    virtual std::string Bytes(const std::string& valor) const { return "octet_length(" + valor + ")"; }
    /// Letters of a text from the given one on, 1 being the first, and two texts as one; empty where that is not known.
    virtual std::string Trecho(const std::string& /*texto*/, int /*de*/, int /*letras*/) const { return ""; }
    virtual std::string Emenda(const std::string& /*um*/, const std::string& /*outro*/) const { return ""; }
    /// A value of the column as its bytes where it is a text blob, which the server would turn into the connection's
    /// character set.
    virtual std::string EmBytes(const TColunaFisica& coluna, const std::string& valor) const;
    /// All that the column holds, texts as their bytes, so that letters that their character set does not have are
    /// read, too.
    virtual std::string ComoEsta(const TColunaFisica& coluna) const { return Identificador(coluna.nome); }
    /// A text on its way into a blob.
    virtual std::string ParaBlob(const std::string& texto) const { return texto; }
    /// What makes values of the column fit for GROUP BY.
    virtual std::string Agrupavel(const TColunaFisica& coluna) const;

    // What the server can do, or wants
    /// Whether a table's rows can be compared with its backup's by their content.
    virtual bool ComparaConteudo() const { return false; }
    /// Whether a unique index takes any number of rows that are NULL in all its columns.
    virtual bool NulosRepetem() const { return true; }
    /// Whether columns are to be made NOT NULL before they are a key.
    virtual bool ChaveExigeValor() const { return false; }
    /// Whether a column that is altered takes NULL unless the statement says NOT NULL again.
    virtual bool AlteracaoDispensaValor() const { return false; }
    /// Whether a record has a number by which the server reads it (RDB$DB_KEY).
    virtual bool NumeraRegistros() const { return false; }
    /// Whether rows between two values of a key go to another table in one statement, beside a cursor over them.
    virtual bool CopiaFaixas() const { return false; }
    /// Whether a transaction for writing writes a page even if nothing was changed in it.
    virtual bool TransacaoVaziaGrava() const { return false; }
    /// Bytes of a content that Soma() looks at; 0 for all.
    virtual std::size_t BytesDaSoma() const { return 0; }
    /// Whether a statement failed because something stands on the column.
    virtual bool ColunaPresa(const TErroBanco& /*erro*/) const { return false; }
    /// Bytes that a row of these columns takes, and the most that the server gives one; 0 where it has no such limit.
    virtual std::int64_t BytesDoRegistro(TConnection& /*conexao*/, const std::vector<TLargura>& /*colunas*/) const {
        return 0;
    }
    virtual std::int64_t LimiteDoRegistro() const { return 0; }
    /// The same of the key of an index.
    virtual std::int64_t BytesDaChave(TConnection& /*conexao*/, const std::vector<TLargura>& /*colunas*/) const {
        return 0;
    }
    virtual std::int64_t LimiteDaChave(int /*pagina*/) const { return 0; }

    // Comparison of a table with its backup
    /// Whether the server compares no such pair.
    virtual bool SoNoCliente(const TColunaFisica& b, const TColunaFisica& t) const;
    /// `nomeB` and `nomeT` are the columns as statements take them.
    virtual TComparacao Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                   const std::string& nomeT) const;
    /// Condition that one is another value than the other, NULL being one.
    virtual std::string Diferem(const TComparacao& par) const;
    /// Number of values of an expression over all rows.
    virtual std::string ContaValores(const std::string& expressao) const { return "count(" + expressao + ")"; }
    /// Sum over an expression that hardly two contents have in common.
    virtual std::string Soma(const TComparacao& /*par*/, const std::string& /*expressao*/) const { return "0"; }
    /// Condition of the rows whose value equals none, nor itself; empty where there are no such values.
    virtual std::string IgualANenhum(const TColunaFisica& /*coluna*/) const { return ""; }
    /// One number over all rows of a table with these columns; empty where none is at hand.
    virtual std::string SomaDasLinhas(const std::vector<TColunaFisica>& /*colunas*/) const { return ""; }

    // Catalogue of a table: statements that give it again what goes with it
    /// By index name as ChaveDeNome makes it; none where TIndice tells all.
    virtual std::map<std::string, TIndiceComoEra> IndicesComoEram(TConnection&, const std::string& tabela) const;
    /// Unique keys, then the foreign keys that may mean them, then checks.
    virtual std::vector<std::string> Restricoes(TConnection&, const std::string& tabela) const;
    virtual std::vector<std::string> Permissoes(TConnection&, const std::string& tabela) const;
    virtual std::vector<std::string> Comentarios(TConnection&, const std::string& tabela) const;
    virtual std::vector<TFonte> Gatilhos(TConnection&, const std::string& tabela) const;
    /// What columns have beside type, default and NOT NULL: identity, a collation.
    virtual std::vector<TFonte> Propriedades(TConnection&, const std::string& tabela) const;
    /// Views, triggers, procedures and foreign keys of other tables that depend on it, each with its kind.
    virtual std::vector<std::string> Dependentes(TConnection&, const std::string& tabela) const;
    /// Default constraint of a column, where a default is one.
    virtual TContorno Padrao(TConnection&, const std::string& tabela, std::string_view coluna) const;

    // Catalogue of the database
    /// Question for TIPO, NOME and TABELA (empty but for a trigger) of what there is beside tables: views, triggers,
    /// procedures, functions, generators. Empty where it is not known.
    virtual std::string_view ComandoObjetos() const { return ""; }
    /// Question for USUARIO, COMPUTADOR, PROGRAMA and DESDE of the other connections to it; empty where they cannot be
    /// known. A user without the right to see them is shown fewer, or none.
    virtual std::string_view ComandoConectados() const { return ""; }
    /// Character set of new text columns; empty where that cannot be told.
    virtual std::string ConjuntoDoBanco(TConnection&) const { return ""; }
    /// What the catalogue tells of how the database fares. What the user may not ask is said.
    virtual TSaude Saude(TConnection&) const { return {}; }
    /// How often each table was altered, by its name as ChaveDeNome makes it, where the server limits that.
    virtual std::map<std::string, std::int64_t> Formatos(TConnection&) const;

    // Texts kept at a table, which go wherever its rows go, and with it
    /// The program's mark; empty without one.
    virtual std::string Marca(TConnection&, const std::string& /*tabela*/) const { return ""; }
    /// In the open transaction when there is one. What else is kept there stays.
    virtual void GravaMarca(TConnection&, const std::string& /*tabela*/, std::string_view /*marca*/) const {}
    virtual std::vector<std::string> TabelasMarcadas(TConnection&, std::string_view marca) const;
    /// Texts that GravaNotas kept, in their order.
    virtual std::vector<std::string> Notas(TConnection&, const std::string& tabela) const;
    virtual void GravaNotas(TConnection&, const std::string& tabela, const std::vector<std::string>& notas) const;

  protected:
    /// Whether a name needs no quotes.
    virtual bool Regular(std::string_view nome) const;
    /// Whether names without quotes are folded to capitals.
    virtual bool DobraNomes() const { return false; }
    /// Whether an index as a whole descends, not its columns one by one.
    virtual bool DesceInteiro() const { return false; }

  private:
    TCapacidades capacidades_;
};

/// Of a kind, as a server of which no more is known.
const TDialeto& Dialeto(TTipoBanco banco);
/// Of the connection's server; its capabilities are those of the last opening.
const TDialeto& Dialeto(const TConnection& conexao);

/// The other connections to the database, as far as this user may see them.
std::vector<TConectado> Conectados(TConnection& conexao);

// For the dialects
/// NOME of every row of a query about the table.
std::vector<std::string> NomesDoCatalogo(TConnection& conexao, std::string_view sql, const std::string& tabela);
/// NOME and FONTE of every row of a query about the table.
std::vector<TFonte> FontesDoCatalogo(TConnection& conexao, std::string_view sql, const std::string& tabela);
/// Constraints as ALTER TABLE adds them: of queries with a row for each column of a key (NOME, TIPO, COLUNA, OUTRA and
/// DELA of the other table, FIM), and of one of checks (NOME, FONTE).
std::vector<std::string> RestricoesDoCatalogo(TConnection& conexao, const std::string& tabela,
                                              std::span<const std::string_view> chaves, std::string_view conferidas);
/// The text in pieces of at most so many bytes, each of whole characters.
std::vector<std::string> PedacosDoTexto(std::string_view texto, std::size_t bytes);

}  // namespace wkd
