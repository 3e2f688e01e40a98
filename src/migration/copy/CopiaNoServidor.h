#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "copy/ColunasDaCopia.h"

namespace wkd {

/// Rows that one statement of the server copies, at most.
inline constexpr std::size_t kLinhasPorComando = 1000;

/// One copy of all rows of a table into another one.
struct TCopia {
    std::string tabela;  // business table: the one that reports name
    std::string origem, destino;
    std::vector<std::string> chave;  // columns that tell a row in reports
    std::string etapa;               // of the rejects
    std::string rotulo = {};         // of every row; empty leaves the label alone
    std::string inicioDoErro = {};   // before the text of a row that failed
    // Shows also what fails of a single field, asks whether to go on without a refused row that was shown, and ends
    // when what is missing cannot be written into the rejects file.
    bool exigente = false;
    std::size_t linhasPorLote = 100;
    std::size_t bytesPorLote = 64 * 1024 * 1024;  // that the values of a batch take on this machine, or one row more
    std::string condicao = {};                    // behind the source's name: alias and where clause
    std::string fonte = {};                       // query in parentheses to read instead of the source
    std::int64_t pula = 0;                        // rows of the source that an earlier copy has done
    std::function<void(std::int64_t)> aoGravar = nullptr;  // in each transaction: rows of the source done by then
};

/// Rows that the server copies from table to table without the client seeing their values. It holds while nobody writes
/// into the source.
class TCopiaNoServidor {
  public:
    /// Null where every row needs the client: columns that change their type, rows that the server cannot name, or a
    /// statement that it does not take.
    static std::unique_ptr<TCopiaNoServidor> Para(TConnection& conexao, const TCopia& copia,
                                                  const std::vector<TColunaDaCopia>& colunas);
    virtual ~TCopiaNoServidor() = default;

    /// Opens the cursor over the source, before its first row.
    void Abre() { chaves_->Abre(); }
    bool Proxima() { return chaves_->Proximo(); }
    /// What names the current row.
    virtual std::string Chave() = 0;
    /// Whether the server moves the current row: no text too long, nothing missing that it does not complete.
    bool VaiComoEsta() { return chaves_->Valor(1).ComoInteiro() == 0; }
    /// A digit for each column that the server completes: "1" where the current row lacks its value or number.
    virtual std::string Faltas() { return {}; }

    /// Stores the rows of these names, and so their Faltas() one behind the other: all of them, or none and TErroBanco.
    /// They have followed one another in the cursor. Columns that count get the next numbers, required ones
    /// ValorObrigatorio. Returns the columns of the source, in capitals, of which it completed a value.
    virtual std::set<std::string> Copia(std::span<const std::string_view> chaves, std::string_view faltas,
                                        TRenumeracao& renumeracao) = 0;
    /// Whether Copia() outside a transaction commits for less than one that is begun and ended around it.
    virtual bool Sozinho() const { return false; }
    /// A cursor that stands on one row of the source, for a row that is done by the client after all; to be closed.
    TComando& Linha(std::string_view chave);

  protected:
    TCopiaNoServidor() = default;
    /// The name as a statement takes it.
    virtual TValor ValorDaChave(std::string_view chave) const = 0;

    std::unique_ptr<TComando> chaves_;  // of every row: its name, and whether it needs the client
    std::unique_ptr<TComando> copia_;
    std::unique_ptr<TComando> linha_;  // the values of the row of a name, its parameter
};

}  // namespace wkd
