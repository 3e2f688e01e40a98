#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "Estimativa.h"
#include "Tela.h"

class QLabel;
class QProgressBar;

namespace wkd {

// What a run tells row by row, from its own thread, and the window's thread shows when it draws.

/// Progress of a run, on a bar.
class TBarraDaTela : public IBarra {
  public:
    void Define(int minimo, int maximo, int passo, int posicao) override;
    void Posicao(int posicao) override;
    int Posicao() const override;
    int Maximo() const;
    /// How far the work is, how fast it goes, and how long it will still take.
    std::string Estimativa() const;
    void Mostra(QProgressBar& barra);

  private:
    void Anda(int posicao);

    mutable std::mutex guarda_;
    int minimo_ = 0, maximo_ = 100, posicao_ = 0;
    bool mudou_ = false;
    TEstimativa estimativa_;
};

/// Text of a label.
class TRotuloDaTela {
  public:
    void Texto(std::string_view texto);
    std::string Texto() const;
    void Mostra(QLabel& rotulo);

  private:
    mutable std::mutex guarda_;
    std::string texto_;
    bool mudou_ = false;
};

}  // namespace wkd
