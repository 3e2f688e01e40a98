#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "DefinicaoCampo.h"

namespace wkd {

class TConnection;

struct TIndiceDicionario {
    std::string nome;
    bool unico = false;
};

/// Reads the stored dictionary table by table, or, where many tables are taken in turn, from one reading of the whole.
/// The letter case of a table's name counts for its indexes alone. What reads throws TErroBanco.
class TLeituraDoDicionario {
  public:
    explicit TLeituraDoDicionario(TConnection& conexao) : conexao_(conexao) {}

    /// While the answer lives, what was read once is not read again: how SATRIB spells the names of its tables, the
    /// columns of the last table, the indexes of all, the names of those that the customer has rows of; the query of
    /// columns stays prepared. Nothing is read before it is asked for.
    std::shared_ptr<const void> Lembra();
    /// Whoever writes rows of a table in SATRIB meanwhile must tell, by the name as it is written there.
    void Anota(std::string_view tabela);
    /// Gives up the prepared query: the server drops no index of SATRIB that it uses.
    void Solta();

    /// Physical columns, in SEQUENCIA order.
    std::vector<TColunaDicionario> Colunas(std::string_view tabela);
    /// Names of those of the key, in that order.
    std::vector<std::string> Chave(std::string_view tabela);
    std::vector<TIndiceDicionario> Indices(std::string_view tabela);
    /// In the order of the index; none for one that the dictionary does not describe.
    std::vector<std::string> ColunasDoIndice(std::string_view tabela, std::string_view indice);

    /// Whether the customer has columns or a description of the table; also where that cannot be read.
    bool ClienteTem(std::string_view tabela);

  private:
    class TMemoria;

    TConnection& conexao_;
    std::weak_ptr<TMemoria> memoria_;
};

}  // namespace wkd
