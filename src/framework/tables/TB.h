#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "connection/Connection.h"
#include "tables/DefinicaoCampo.h"
#include "tables/LeituraDoDicionario.h"

namespace wkd {

/// Dictionary-driven table object: creates and alters physical tables to match their SATRIB, SINDSEC and SINDSECA
/// rows, and edits rows of one table.
///
/// The operations that create (Cria..., AtualizaTabela, ReCriaTabela) answer false, also when the server refuses, and
/// leave the reason in Erro(); a lost connection they throw. Everything else throws TErroBanco.
class TTB {
  public:
    /// `pastaComandos`: where "erroCria.sql" is written before a table is created.
    explicit TTB(TConnection& conexao, std::filesystem::path pastaComandos = ".");
    void SetPastaComandos(std::filesystem::path pasta) { pastaComandos_ = std::move(pasta); }

    // Physical tables
    bool ExisteTabela(std::string_view tabela);
    /// Creates `tabela` (backup mode: "B" + `tabela`, an older backup dropped first) from its dictionary rows, without
    /// keys and indexes. False when a business table of that name exists already, and when the backup's name is
    /// itself that of a dictionary table or of somebody's own.
    bool CriaTabela(std::string_view tabela, bool backup);
    /// Whether "B" + `tabela` is a backup that may be dropped: marked as one, or with columns alone that the table has,
    /// or its dictionary, as an earlier generation left it.
    bool EhBackup(const std::string& tabela);
    /// What is told of one that is not, with the way out.
    static TErro NaoEhBackup(std::string_view tabela);
    /// Adds the dictionary columns that the physical table lacks. A key column comes without NOT NULL when the table
    /// has rows; CriaIndicePrimario asks for it later.
    bool AtualizaTabela(std::string_view tabela);
    /// Creates the table anew from the dictionary with its rows, through the backup table, which stays. From the
    /// complete backup to the end its SARQUIVO row carries VERSAO -1. A call after an interrupted one goes on from
    /// the backup (and leaves -1: the version from before is not known); a table that is gone is brought back from it.
    /// The backup of a rebuild that ended is made anew.
    bool ReCriaTabela(std::string_view tabela);

    // Keys and indexes
    /// Nova: just created, and so without key, indexes and rows; the server need not be asked for them.
    enum class TIdade { Antiga, Nova };
    /// True drops the primary key, false the secondary indexes; those of constraints stay. Each is dropped on its
    /// own; afterwards throws naming those that could not be.
    void ApagaInidices(std::string_view tabela, bool primario);
    /// The physical indexes, none of a constraint, that the dictionary knows or that are among `outros` (names in
    /// capitals).
    std::vector<TIndice> IndicesDoDicionario(std::string_view tabela, const std::set<std::string>& outros);
    /// Whether CriaIndiceSecundarios makes an index of this name, and makes it otherwise.
    bool MudaNoDicionario(std::string_view tabela, const TIndice& indice);
    /// Drops these as ApagaInidices does.
    void ApagaIndices(std::string_view tabela, const std::vector<TIndice>& indices);
    bool ExisteIndicePrimario(std::string_view tabela);
    /// True at once when there is a key. Nullable key columns are made NOT NULL first where the server wants it;
    /// nothing is changed when rows lack a key value or repeat one.
    bool CriaIndicePrimario(std::string_view tabela, bool backup, TIdade idade = TIdade::Antiga);
    enum class TQuais { Todos, Unicos, Repetiveis };
    /// Creates what the table lacks of these of its indexes; one that fails does not stop the others.
    bool CriaIndiceSecundarios(std::string_view tabela, TIdade idade = TIdade::Antiga, TQuais quais = TQuais::Todos);

    /// Why the last operation returned false.
    const TErro& Erro() const { return erro_; }

    /// CREATE TABLE of the last CriaTabela; empty when it came to none.
    const std::string& UltimaCriacao() const { return comando_; }
    TLeituraDoDicionario& Dicionario() { return dicionario_; }

    /// Physical columns of the dictionary, in SEQUENCIA order.
    std::vector<TColunaDicionario> ColunasDoDicionario(std::string_view tabela) { return dicionario_.Colunas(tabela); }
    /// Names of those of its key; none when the dictionary gives the table no key.
    std::vector<std::string> ColunasDaChave(std::string_view tabela) { return dicionario_.Chave(tabela); }
    /// In backup mode with the columns that only the physical table has, and types that hold its values.
    std::string ComandoCriaTabela(std::string_view tabela, bool backup);
    /// The same for columns that the stored dictionary does not have yet.
    std::string ComandoCriaTabela(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) const;
    /// Why a table of these columns could not be created, dropped first if it exists: no columns, names that repeat,
    /// types without text, a row too large, or a statement that the server does not take. Not inside an open
    /// transaction.
    std::optional<TErro> ImpedimentoParaCriar(std::string_view tabela, const std::vector<TColunaDicionario>& colunas);
    /// Bytes of an index over these physical columns; those that are there, in `fisicas`, keep their character set.
    std::int64_t BytesDaChave(const std::vector<TColunaDicionario>& colunas, const std::vector<TColunaFisica>& fisicas);
    std::optional<TErro> ImpedimentoParaCriar(std::string_view tabela) {
        return ImpedimentoParaCriar(tabela, ColunasDoDicionario(tabela));
    }

    // Rows of one table
    /// Finds the row by the condition and makes it current; false when there is none.
    bool PosicionaTB(std::string_view tabela, std::string_view condicao);
    void Novo(std::string_view tabela);
    /// The current row is found again by its primary key; in a table without one, by the condition.
    void Editar();
    void SetValor(std::string_view campo, const TValor& valor);
    /// Sends the new or edited row in a transaction of its own.
    void Grava();

  private:
    bool CriaBackup(std::string_view tabela);
    bool CriaDoDicionario(const std::string& tabela);
    /// Row that PosicionaTB found, or that Novo and Editar prepare.
    struct TLinhaAtual {
        enum class TModo { Consulta, Inclusao, Edicao } modo = TModo::Consulta;
        std::string tabela;
        std::string condicao;  // empty when no row is current
        std::vector<std::pair<std::string, TValor>> chave;
        std::vector<std::pair<std::string, TValor>> valores;
    };

    bool Falha(TErro erro);
    bool Falha(TFalha falha, std::string motivo) { return Falha({.mensagem = std::move(motivo), .falha = falha}); }
    /// Runs `operacao`; a refusal of the server becomes the answer false.
    bool Tenta(const std::function<bool()>& operacao);
    void Ensaia(std::string_view tabela, const std::vector<TColunaDicionario>& colunas);
    bool ExigeValores(const std::string& tabela, const std::vector<std::string>& chave);
    bool AceitaChave(const std::string& comando);
    bool CriaSecundario(std::string_view tabela, const std::string& nome, bool unico, TErro& falha);
    bool Esperam(const std::string& tabela);
    bool GuardaNaBackup(const std::string& tabela);
    /// Brings what was entered and changed since an interrupted rebuild into the backup, by the key.
    bool CompletaBackup(const std::string& tabela);
    bool RefazIndices(const std::string& tabela);

    TConnection& conexao_;
    std::filesystem::path pastaComandos_;
    TLeituraDoDicionario dicionario_;
    std::string comando_;
    TErro erro_;
    TLinhaAtual linha_;
};

}  // namespace wkd
