#include "window/Controles.h"

#include "window/EstiloAmetista.h"

namespace wkd {

QPushButton* Botao(const char* nome, const QString& texto, const QString& dica) {
    auto* botao = Nomeia(new QPushButton(texto), nome, QString(texto).remove('&').trimmed());
    botao->setToolTip(dica);
    return botao;
}

QPushButton* Reticencias(const char* nome, const QString& dica) {
    QPushButton* botao = Botao(nome, "...", dica);
    botao->setAccessibleName(dica);
    botao->setFixedWidth(36);
    return botao;
}

QLabel* Cabecalho(const QString& texto) {
    auto* rotulo = new QLabel(texto);
    QFont fonte = rotulo->font();
    fonte.setBold(true);
    rotulo->setFont(fonte);
    rotulo->setWordWrap(true);
    return rotulo;
}

QLabel* RotuloVermelho(const QString& texto) {
    auto* rotulo = new QLabel(texto);
    QPalette paleta = rotulo->palette();
    paleta.setColor(QPalette::WindowText, kVermelho);
    rotulo->setPalette(paleta);
    return rotulo;
}

QLineEdit* Edicao(const char* nome, const QString& lido, const QString& texto) {
    return Nomeia(new QLineEdit(texto), nome, lido);
}

}  // namespace wkd
