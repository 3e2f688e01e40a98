#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Connection.h"
#include "DefinicaoCampo.h"

namespace wkd {

/// Dictionary-driven table object: creates and alters physical tables to match their SATRIB, SINDSEC and SINDSECA
/// rows, and edits rows of one table. Operations that return false have left the reason in Erro(); those that
/// return nothing throw TErroBanco.
class TTB {
  public:
    /// `pastaComandos`: where "erroCria.sql" is written before a table is created.
    explicit TTB(TConnection& conexao, std::filesystem::path pastaComandos = ".");

    // Physical tables
    bool ExisteTabela(std::string_view tabela);
    /// Creates `tabela` (backup mode: "B" + `tabela`, an older one dropped first) from its dictionary rows, without
    /// keys and indexes. False when a business table of that name exists already.
    bool CriaTabela(std::string_view tabela, bool backup);
    /// Adds the dictionary columns that the physical table lacks.
    bool AtualizaTabela(std::string_view tabela);
    /// Creates the table anew from the dictionary with its rows, through the backup table.
    bool ReCriaTabela(std::string_view tabela);

    // Keys and indexes
    /// True drops the primary key, false the secondary indexes.
    void ApagaInidices(std::string_view tabela, bool primario);
    bool ExisteIndicePrimario(std::string_view tabela);
    /// True at once when there is a key. Nullable key columns are made NOT NULL first where the server wants it.
    bool CriaIndicePrimario(std::string_view tabela, bool backup);
    bool CriaIndiceSecundarios(std::string_view tabela);

    /// Why the last operation returned false.
    const std::string& Erro() const { return erro_; }

    /// Physical columns of the dictionary, in SEQUENCIA order.
    std::vector<TColunaDicionario> ColunasDoDicionario(std::string_view tabela);
    std::string ComandoCriaTabela(std::string_view tabela, bool backup);

    // Rows of one table
    /// Finds the row by the condition and makes it current; false when there is none.
    bool PosicionaTB(std::string_view tabela, std::string_view condicao);
    void Novo(std::string_view tabela);
    void Editar();
    void SetValor(std::string_view campo, const TValor& valor);
    /// Sends the new or edited row in a transaction of its own.
    void Grava();

  private:
    TConnection& conexao_;
    std::filesystem::path pastaComandos_;
    std::string erro_;
};

}  // namespace wkd
