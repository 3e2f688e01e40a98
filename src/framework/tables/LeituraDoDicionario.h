#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tables/DefinicaoCampo.h"

namespace wkd {

class TComando;
class TConnection;

/// Reads the stored dictionary table by table, or, where many tables are taken in turn, from one reading of the whole.
/// The letter case of a table's name counts for its indexes alone. What reads throws TErroBanco.
///
/// Whoever can write into the dictionary cannot run statements by it: a column or an index whose name is more than a
/// name (NomeDeSql) is passed over, with the key or index that has it.
class TLeituraDoDicionario {
  public:
    explicit TLeituraDoDicionario(TConnection& conexao) : conexao_(conexao) {}

    /// While the answer lives, what was read once is not read again: how SATRIB spells the names of its tables, the
    /// columns of the last table, the indexes of all, the names of those that the customer has rows of; statements on
    /// SATRIB stay prepared. Nothing is read before it is asked for.
    std::shared_ptr<const void> Lembra();
    /// A statement on rows that SATRIB has of the table; one that stays prepared comes again as it was left. That of
    /// SATRIB itself, which may change next, does not stay.
    std::shared_ptr<TComando> Prepara(std::string_view tabela, const std::string& sql);
    /// Whoever writes rows of a table in SATRIB meanwhile must tell, by the name as it is written there.
    void Anota(std::string_view tabela);
    /// Gives up what is prepared: the server drops no index of SATRIB that it uses.
    void Solta();

    /// Is told, once each, of what is passed over: table and text.
    using TRecusa = std::function<void(std::string_view tabela, const std::string& texto)>;
    void SetRecusa(TRecusa recusa) { recusa_ = std::move(recusa); }
    void EsqueceRecusas() { recusados_.clear(); }
    /// Whether the name of a part of the table ("coluna") may stand in a statement; one that may not is told.
    bool Aceita(std::string_view tabela, std::string_view parte, std::string_view nome);

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

    std::vector<TColunaDicionario> TodasAsColunas(std::string_view tabela);
    std::vector<std::string> TodaAChave(std::string_view tabela);
    std::vector<TIndiceDicionario> TodosOsIndices(std::string_view tabela);
    std::vector<std::string> TodasDoIndice(std::string_view tabela, std::string_view indice);
    /// The names, or none where one of them is not accepted: a part of a key or index would be another one.
    std::vector<std::string> TodosOuNenhum(std::string_view tabela, std::vector<std::string> nomes);

    TConnection& conexao_;
    std::weak_ptr<TMemoria> memoria_;
    TRecusa recusa_;
    std::set<std::string> recusados_;  // texts that were told
};

}  // namespace wkd
