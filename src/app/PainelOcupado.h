#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;

namespace wkd {

/// Busy indicator over the middle of the window: a text, and a bar where the progress is known.
class TPainelOcupado : public QFrame {
  public:
    explicit TPainelOcupado(QWidget* janela);

    /// A `percentual` below 0 shows a bar that only moves.
    void Mostra(const QString& texto, int percentual);

  private:
    QLabel* texto_;
    QProgressBar* barra_;
};

}  // namespace wkd
