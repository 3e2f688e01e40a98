#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rows/LinhasDoDataSet.h"
#include "screen/Tela.h"
#include "values/Campo.h"

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
/// - Moving the cursor, or beginning another edit, gives up one that was not posted.
///
/// A master must outlive the link to it.
class TClientDataSet {
  public:
    TClientDataSet() = default;
    TClientDataSet(const TClientDataSet&) = delete;
    TClientDataSet& operator=(const TClientDataSet&) = delete;

    // Opening
    void SetProvedor(TProvedor provedor) { provedor_ = std::move(provedor); }
    const TProvedor& Provedor() const { return provedor_; }
    /// Reads the rows through the provider (when there is one) and goes to the first. Throws TErroBanco.
    void Open();
    /// Reads the fields alone; rows come by Recarrega.
    void OpenVazio();
    /// Forgets rows and pending changes; definitions stay.
    void Close();
    bool Active() const { return ativo_; }
    /// Reads again the rows whose field has one of these values, for what statements changed behind the dataset's back.
    /// Pending changes of these rows are given up. Throws TErroBanco.
    void Recarrega(std::string_view campo, const TLinha& valores);
    /// Takes rows that came from a data packet; the dataset is then open.
    void Carrega(TTabelaEmMemoria tabela);

    // Fields
    const std::vector<TCampo>& Campos() const { return campos_; }
    /// -1 when there is none.
    int IndiceDoCampo(std::string_view nome) const { return wkd::IndiceDoCampo(campos_, nome); }

    /// All rows as they are by now, link and filter aside; for as long as nothing changes them.
    TLinhasVistas Todas() const;

    // Index, link, filter
    /// Field names joined by ";"; the order of the rows is that of these fields, compared as texts.
    void SetIndexFieldNames(std::string_view nomes);
    /// `mestre` null takes the link off. `camposMestre` joined by ";", as many as index fields.
    void SetMaster(TClientDataSet* mestre, std::string_view camposMestre);
    /// Shows the rows whose field is one of these values, compared as keys are; all of them when there is none.
    void SetFilter(std::string_view campo, const TLinha& valores);
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

    // Changes. What needs a current row, or an edit under way, throws std::logic_error without one.
    void Append();
    void Edit();
    /// Converts to the field's type. Throws TErroConversao, or std::invalid_argument for an unknown field.
    void SetValor(std::string_view campo, const TValor& valor);
    /// Ends Append or Edit. Throws TErroBanco (Restricao) when a required field is NULL.
    void Post();
    void Cancel();
    /// Deletes the current row; the cursor is on the next one then.
    void Delete();
    std::size_t ChangeCount() const { return linhas_.QuantasPendentes(); }
    /// Sends pending changes in the connection's open transaction, in the order they were made, until more than
    /// `maximoErros` failed (below 0: no limit) or the answer to one was Aborta; returns how many failed. Those sent
    /// are pending no more when all went well; after an error all stay pending (the caller rolls back), but for those
    /// undone by the answer Cancela.
    int ApplyUpdates(int maximoErros);
    /// Undoes pending changes; the cursor stays on its row when that is still there.
    void CancelUpdates();

    /// Called with the server's text for each change that failed.
    std::function<TAcaoReconcilia(const TErro&)> OnReconcileError;

  private:
    friend bool AplicaEmTransacao(TClientDataSet& dados);

    /// Where the master stood when the visible rows were collected.
    struct TMestreVisto {
        std::uint64_t versao = 0;
        std::optional<TIdLinha> linha;
        std::optional<std::string> chave;  // none: no row, so no detail either
    };

    std::size_t Posicao(std::string_view campo) const;
    std::vector<std::size_t> Posicoes(const std::vector<std::string>& campos) const;
    const TIndiceDeLinhas& Indice(std::string_view campos) const;

    void Substitui(std::string_view campo, const TLinha& valores, TTabelaEmMemoria lidas);
    void Sincroniza() const;
    void SegueMestre() const;
    void MontaVisao() const;
    std::vector<TIdLinha> Candidatas(const std::vector<std::size_t>& indice) const;
    bool PassaNoFiltro(TIdLinha id) const;
    bool Passa(TIdLinha id) const;
    std::optional<TIdLinha> LinhaAtual() const;
    void Invalida() { desatualizada_ = true; }
    void VaiPara(std::size_t posicao);

    TIdLinha ExigeLinha() const;
    void ExigeRequeridos() const;
    void GravaEdicao();
    void Desfaz(const std::vector<TIdLinha>& ids);
    int Envia(int maximoErros);
    TAcaoReconcilia Reconcilia(const TErro& erro) const;

    TProvedor provedor_;
    std::vector<TCampo> campos_;
    bool ativo_ = false;
    mutable TLinhas linhas_;  // builds its indexes when they are asked for

    std::vector<std::string> camposIndice_;
    TClientDataSet* mestre_ = nullptr;
    std::vector<std::string> camposMestre_;
    std::string campoDoFiltro_;
    std::set<std::string> filtro_;
    bool filtrado_ = false;

    // Visible rows and cursor, brought up to date by Sincroniza before they are used
    mutable TVisao visao_;
    mutable std::size_t posicao_ = 0;
    mutable bool desatualizada_ = true;
    mutable TMestreVisto mestreVisto_;
    mutable std::uint64_t versao_ = 1;  // rises whenever cursor or content change

    std::optional<TLinha> edicao_;
    std::optional<TIdLinha> editada_;  // none while appending
};

/// Start a transaction on the dataset's connection, apply with no error tolerated, commit, or roll back and cancel
/// the pending rows. True when committed; with nothing pending no statement is sent. Errors of the database go to
/// OnReconcileError, also one of the transaction itself.
bool AplicaEmTransacao(TClientDataSet& dados);

}  // namespace wkd
