#pragma once

#include <functional>
#include <string>
#include <vector>

#include "screen/Tela.h"

namespace wkd {

/// Screen that shows nothing, tells of every status line, and keeps what went wrong.
class TTelaMuda : public TTelaSilenciosa {
  public:
    std::function<void(std::string_view)> aoMostrar = [](std::string_view) {};
    std::vector<std::string> erros;

    void Memo1(std::string_view linha) override { aoMostrar(linha); }
    void Informacao(std::string_view texto) override { erros.emplace_back(texto); }

  protected:
    void Memo2(std::string_view linha) override { erros.emplace_back(linha); }
    void SetLog(std::string_view mensagem, std::string_view, std::string_view) override {
        erros.emplace_back(mensagem);
    }
};

}  // namespace wkd
