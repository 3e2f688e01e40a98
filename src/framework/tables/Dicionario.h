#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "values/Campo.h"

namespace wkd {

class TComando;

/// A column of the dictionary: its row in SATRIB as far as its definition goes.
struct TColunaDicionario {
    std::string nome;
    std::string tipo;     // field-type name, any letter case
    std::string tamanho;  // text; empty or "0" counts as "150"
    std::string valorPadrao;
    std::string calculo;         // non-empty: the column is not physical
    int chave = 0;               // 1: part of the primary key
    std::int64_t sequencia = 0;  // place in the table
    std::string lookup = {};     // table that its values are looked up in
    std::string tabela = {};     // as SATRIB writes it

    /// The size as a number; 0 when it is empty or none.
    std::int64_t Tamanho() const;
};

/// An index: its row in SINDSEC, with its columns of SINDSECA in order.
struct TIndiceDicionario {
    std::string nome;
    bool unico = false;
    std::vector<std::string> colunas = {};
};

/// A table: its row in SARQUIVO.
struct TTabelaDicionario {
    std::string modulo;  // as ChaveDeValor has it
    std::string nome;    // as it is written, without blanks around
    std::string descricao;
    std::optional<std::int64_t> versao;
};

/// Fields of SATRIB that a TColunaDicionario is made of.
inline constexpr std::string_view kCamposDaColuna[] = {"ARQUIVO",           "NOME",         "TIPO",
                                                       "TAMANHO",           "VALOR_PADRAO", "CALCULO",
                                                       "CHAVE_DE_PESQUISA", "SEQUENCIA",    "LOOKUP_ARQUIVO"};

/// What a package or a database says of its tables, with their columns and indexes. Names are looked up without letter
/// case and trailing blanks. Columns and indexes are known by the name of their table alone, whether or not SARQUIVO
/// has it; a table may stand in several modules.
class TDicionario {
  public:
    using TColunas = std::vector<TColunaDicionario>;
    using TIndices = std::vector<TIndiceDicionario>;

    // From rows of the dictionary's tables, in their order; fields that older dictionaries lack may be missing. Each
    // takes the place of what was there.
    void LeTabelas(const TLinhasVistas& sarquivo);
    void LeColunas(const TLinhasVistas& satrib);
    /// The same, row by row from a query, so that no row stays in memory.
    void LeColunas(TComando& satrib);
    /// SINDSECA's columns come in the order of its SEQUENCIA.
    void LeIndices(const TLinhasVistas& sindsec, const TLinhasVistas& sindseca);
    /// The rows of one table alone.
    void TrocaColunas(std::string_view tabela, const TLinhasVistas& satrib);

    const std::vector<TTabelaDicionario>& Tabelas() const { return tabelas_; }
    /// Null when there is none; the first of several.
    const TTabelaDicionario* Tabela(std::string_view modulo, std::string_view nome) const;

    /// From now on the table counts as of that version; nothing happens without such a table.
    void SupoeVersao(std::string_view modulo, std::string_view nome, std::optional<std::int64_t> versao);

    /// Without the tables that are not among these; an empty list leaves all.
    void LimitaA(const std::vector<std::string>& tabelas);
    /// From now on there is no such table.
    void EsqueceTabela(std::string_view modulo, std::string_view nome);

    const TColunas& Colunas(std::string_view tabela) const;
    const TColunaDicionario* Coluna(std::string_view tabela, std::string_view nome) const;
    TColunaDicionario* Coluna(std::string_view tabela, std::string_view nome);
    const TIndices& Indices(std::string_view tabela) const;

  private:
    void Numera();
    void Inclui(TColunaDicionario coluna);

    std::vector<TTabelaDicionario> tabelas_;
    std::map<std::pair<std::string, std::string>, std::size_t> lugares_;  // by ChaveDeNome of module and name
    std::map<std::string, TColunas> colunas_;                             // by ChaveDeNome of the table
    std::map<std::string, TIndices> indices_;
};

}  // namespace wkd
