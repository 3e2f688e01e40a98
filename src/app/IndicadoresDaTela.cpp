#include "IndicadoresDaTela.h"

#include <QLabel>
#include <QProgressBar>
#include <algorithm>

#include "TextoQt.h"

namespace wkd {

void TBarraDaTela::Define(int minimo, int maximo, int, int posicao) {
    const std::lock_guard trava(guarda_);
    minimo_ = minimo;
    maximo_ = maximo;
    estimativa_.Comeca(maximo - minimo);
    Anda(posicao);
}

void TBarraDaTela::Posicao(int posicao) {
    const std::lock_guard trava(guarda_);
    Anda(posicao);
}

void TBarraDaTela::Anda(int posicao) {
    posicao_ = posicao;
    mudou_ = true;
    estimativa_.Feito(posicao - minimo_);
}

int TBarraDaTela::Posicao() const {
    const std::lock_guard trava(guarda_);
    return posicao_;
}

int TBarraDaTela::Maximo() const {
    const std::lock_guard trava(guarda_);
    return maximo_;
}

std::string TBarraDaTela::Estimativa() const {
    const std::lock_guard trava(guarda_);
    return estimativa_.Texto();
}

void TBarraDaTela::Mostra(QProgressBar& barra) {
    const std::lock_guard trava(guarda_);
    if (!mudou_) return;
    barra.setRange(minimo_, std::max(maximo_, minimo_ + 1));  // an empty range would mean "unknown"
    barra.setValue(std::clamp(posicao_, barra.minimum(), barra.maximum()));
    mudou_ = false;
}

void TRotuloDaTela::Texto(std::string_view texto) {
    const std::lock_guard trava(guarda_);
    if (texto == texto_) return;
    texto_ = texto;
    mudou_ = true;
}

std::string TRotuloDaTela::Texto() const {
    const std::lock_guard trava(guarda_);
    return texto_;
}

void TRotuloDaTela::Mostra(QLabel& rotulo) {
    const std::lock_guard trava(guarda_);
    if (!mudou_) return;
    rotulo.setText(Q(texto_));
    rotulo.setToolTip(rotulo.text());
    mudou_ = false;
}

}  // namespace wkd
