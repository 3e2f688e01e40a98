#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Campo.h"
#include "Tela.h"

namespace wkd {

class TConnection;

/// Where the rows of a TClientDataSet come from and where its changes go.
struct TProvedor {
    TConnection* conexao = nullptr;
    std::string sql;                  // "select * from SATRIB"
    std::string tabela;               // "SATRIB"
    std::vector<std::string> chaves;  // fields that find the stored row again
};

/// Rows in memory with cursor, index look-ups, master-detail link, filter and pending changes.
///
/// - Names of fields ignore letter case. Keys of links, filters and FindKey ignore letter case and trailing blanks,
///   and go through a hash index: no scan.
/// - With a master, the visible rows are those whose index fields equal the master's fields at its current row; the
///   cursor goes to the first of them whenever the master has moved.
/// - Changes wait until ApplyUpdates sends them: an update only the fields that differ, nothing for a row written
///   back as it was.
class TClientDataSet {
  public:
    // Opening
    void SetProvedor(TProvedor provedor);
    /// Reads the rows through the provider (when there is one) and goes to the first. Throws TErroBanco.
    void Open();
    /// Forgets rows and pending changes; definitions stay.
    void Close();
    bool Active() const { return ativo_; }
    /// Takes rows that came from a data packet; the dataset is then open.
    void Carrega(TTabelaEmMemoria tabela);

    // Fields
    const std::vector<TCampo>& Campos() const { return campos_; }
    /// -1 when there is none.
    int IndiceDoCampo(std::string_view nome) const;

    // Index, link, filter
    /// Field names joined by ";"; the order of the rows is that of these fields, compared as texts.
    void SetIndexFieldNames(std::string_view nomes);
    /// `mestre` null takes the link off. `camposMestre` joined by ";", as many as index fields.
    void SetMaster(TClientDataSet* mestre, std::string_view camposMestre);
    /// Comparisons "campo = literal" or "Upper(campo) = 'X'", joined by and / or, with parentheses; empty shows all.
    /// Throws std::invalid_argument for any other text.
    void SetFilter(std::string_view filtro);
    void SetFiltered(bool ligado);

    // Cursor over the visible rows
    void First();
    void Last();
    void Next();
    bool Eof() const;
    std::size_t RecordCount() const;
    bool IsEmpty() const { return RecordCount() == 0; }
    /// Value of the current row (of the edited one while editing). NULL when there is no row. The field must exist
    /// (std::invalid_argument).
    const TValor& Valor(std::string_view campo) const;
    const TValor& Valor(std::size_t campo) const;
    std::string Texto(std::string_view campo) const { return Valor(campo).ComoTexto(); }
    std::int64_t Inteiro(std::string_view campo) const { return Valor(campo).ComoInteiro(); }
    /// Whether a row with these key values exists among all rows, link and filter aside.
    bool Existe(std::string_view campos, const TLinha& valores) const;
    /// Moves to the first visible row with these values; false, and no move, when there is none.
    bool Locate(std::string_view campos, const TLinha& valores);

    // Changes
    void Append();
    void Edit();
    /// Converts to the field's type. Throws TErroConversao, or std::invalid_argument for an unknown field.
    void SetValor(std::string_view campo, const TValor& valor);
    /// Ends Append or Edit. Throws TErroBanco (Restricao) when a required field is NULL.
    void Post();
    void Cancel();
    void Delete();
    std::size_t ChangeCount() const { return pendentes_; }
    /// Sends pending changes in the connection's open transaction, in the order they were made, until more than
    /// `maximoErros` failed; returns how many failed. Those sent are pending no more when all went well; after an
    /// error all stay pending (the caller rolls back).
    int ApplyUpdates(int maximoErros);
    /// Undoes pending changes.
    void CancelUpdates();

    /// Called with the server's text for each change that failed.
    std::function<TAcaoReconcilia(std::string_view)> OnReconcileError;

  private:
    struct TEstado;
    // the implementer fills this in
    std::vector<TCampo> campos_;
    bool ativo_ = false;
    std::size_t pendentes_ = 0;
};

/// Start a transaction on the dataset's connection, apply with no error tolerated, commit, or roll back and cancel
/// the pending rows. True when committed; with nothing pending no statement is sent.
bool AplicaEmTransacao(TClientDataSet& dados);

}  // namespace wkd
