#include "PainelOcupado.h"

#include <QProgressBar>
#include <QVBoxLayout>

#include "Controles.h"

namespace wkd {

TPainelOcupado::TPainelOcupado(QWidget* janela)
    : QFrame(janela), texto_(new QLabel), barra_(Nomeia(new QProgressBar, "pbOcupado", "Andamento")) {
    setObjectName("pnOcupado");
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    texto_->setTextFormat(Qt::PlainText);
    texto_->setAlignment(Qt::AlignCenter);
    auto* linhas = new QVBoxLayout(this);
    linhas->setContentsMargins(24, 16, 24, 16);
    linhas->addWidget(texto_);
    linhas->addWidget(barra_);
    setFixedWidth(320);
    hide();
}

void TPainelOcupado::Mostra(const QString& texto, int percentual) {
    texto_->setText(texto);
    setAccessibleName(texto);
    barra_->setRange(0, percentual < 0 ? 0 : 100);
    barra_->setValue(percentual);
    adjustSize();
    move((parentWidget()->width() - width()) / 2, (parentWidget()->height() - height()) / 2);
    show();
    raise();
}

}  // namespace wkd
