#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wkd {

/// The first `colunas` characters of a UTF-8 text; a cut one ends in "…".
std::string Corta(std::string_view texto, std::size_t colunas);

/// Last line of the terminal at standard output, rewritten in place. When standard output is no terminal nothing is
/// ever written. Erase it before other lines are written.
class TLinhaDoTerminal {
  public:
    TLinhaDoTerminal();
    ~TLinhaDoTerminal() { Apaga(); }
    TLinhaDoTerminal(const TLinhaDoTerminal&) = delete;
    TLinhaDoTerminal& operator=(const TLinhaDoTerminal&) = delete;

    bool Existe() const { return existe_; }
    void Mostra(std::string_view texto);
    void Apaga();

  private:
    bool existe_;
    std::string mostrada_;
};

}  // namespace wkd
