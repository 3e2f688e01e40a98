#pragma once

#include <QColor>
#include <QPalette>
#include <QProxyStyle>
#include <thread>
#include <utility>
#include <vector>

namespace wkd {

/// Reads the system's list of fonts, which costs a good part of the time up to the first window, while the screen is
/// being connected. Its thread has a locale of its own: the program's may change meanwhile. Whoever draws text waits
/// for its end, or reads the list once more.
std::jthread LeFontesDoSistema();

/// Tones of the look. Every text stands out from what is behind it by 4.5:1, every mark by 3:1.
struct TCores {
    QColor fundo, campo, texto, textoApagado, borda, bordaApagada;
    QColor sobre, pressionado;                       // of a button
    QColor ametista, ametistaClara, ametistaEscura;  // of what is filled, and the text on it
    QColor sobreAmetista;
    QColor realce;  // focus, and what is checked
    QColor vermelho, faixaDosBotoes;
};

/// Those of the style that was made last, as light or dark as it is now.
const TCores& Cores();

/// Whether the desktop, whose palette this is, wants dark windows.
bool PedeEscuro(const QPalette& doSistema);

/// The program's look, "Amethyst Kamri": amethyst tones, flat buttons with round corners, a clear focus mark. Drawn
/// with vectors, so it is as crisp as the screen is.
class TEstiloAmetista : public QProxyStyle {
  public:
    /// Light or dark as the desktop is, and again whenever that changes.
    TEstiloAmetista();
    explicit TEstiloAmetista(bool escuro);

    QPalette standardPalette() const override;
    void polish(QPalette& paleta) override;
    using QProxyStyle::polish;
    QIcon standardIcon(StandardPixmap qual, const QStyleOption* opcao, const QWidget* controle) const override;
    QRect subControlRect(ComplexControl controle, const QStyleOptionComplex* opcao, SubControl parte,
                         const QWidget* dono) const override;
    void drawPrimitive(PrimitiveElement elemento, const QStyleOption* opcao, QPainter* pintor,
                       const QWidget* controle) const override;
    void drawControl(ControlElement elemento, const QStyleOption* opcao, QPainter* pintor,
                     const QWidget* controle) const override;
    void drawComplexControl(ComplexControl qual, const QStyleOptionComplex* opcao, QPainter* pintor,
                            const QWidget* controle) const override;
    QSize sizeFromContents(ContentsType tipo, const QStyleOption* opcao, const QSize& conteudo,
                           const QWidget* controle) const override;
    int pixelMetric(PixelMetric medida, const QStyleOption* opcao, const QWidget* controle) const override;

  private:
    bool segue_ = false;  // the desktop
};

/// Gives a control tones of its own in these roles, those of the look of the moment; none: as any other control.
using TTinta = std::vector<std::pair<QPalette::ColorRole, QColor TCores::*>>;
void Tinge(QWidget& controle, const TTinta& tinta);

}  // namespace wkd
