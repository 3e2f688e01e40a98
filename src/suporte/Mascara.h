#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace wkd {

/// Takes what may be a customer's out of texts that are to leave his house. Nobody knows all the forms in which servers
/// put values into messages, so it is the other way round: a word stays only when the program or Firebird says it
/// (recursos/palavras.txt), or when it is a name of the schema; between quotes, and where a message tells a key, names
/// alone. Everything else, and every number, becomes "…".
class TMascara {
  public:
    TMascara();

    /// A name of the schema: table, column, index, constraint. Other texts are no names, and stay unknown.
    void Conhece(std::string_view nome);
    std::string Texto(std::string_view texto) const;
    /// Statements that define something come from the dictionary alone and stay as they are; of others literals go.
    std::string Comando(std::string_view sql) const;

  private:
    bool Conhecida(std::string_view palavra, bool soNomes) const;

    std::unordered_set<std::string> palavras_, nomes_;  // in small letters
};

}  // namespace wkd
