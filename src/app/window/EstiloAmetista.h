#pragma once

#include <QColor>
#include <QProxyStyle>
#include <thread>

namespace wkd {

/// Reads the system's list of fonts, which costs a good part of the time up to the first window, while the screen is
/// being connected. The locale must not change before the thread ends.
std::jthread LeFontesDoSistema();

inline constexpr QColor kVermelho{0xB0, 0x00, 0x20};
inline constexpr QColor kAmetista{0x5E, 0x35, 0x8F};
inline constexpr QColor kTextoSobreAmetista{0xFF, 0xFF, 0xFF};
inline constexpr QColor kFaixaDosBotoes{0xE8, 0xDF, 0xF3};

/// The program's look, "Amethyst Kamri": amethyst tones, flat buttons with round corners, a clear focus mark. Drawn
/// with vectors, so it is as crisp as the screen is.
class TEstiloAmetista : public QProxyStyle {
  public:
    TEstiloAmetista();

    QPalette standardPalette() const override;
    void polish(QPalette& paleta) override { paleta = standardPalette(); }
    using QProxyStyle::polish;
    QIcon standardIcon(StandardPixmap qual, const QStyleOption* opcao, const QWidget* controle) const override;
    QRect subControlRect(ComplexControl controle, const QStyleOptionComplex* opcao, SubControl parte,
                         const QWidget* dono) const override;
    void drawPrimitive(PrimitiveElement elemento, const QStyleOption* opcao, QPainter* pintor,
                       const QWidget* controle) const override;
    void drawControl(ControlElement elemento, const QStyleOption* opcao, QPainter* pintor,
                     const QWidget* controle) const override;
    QSize sizeFromContents(ContentsType tipo, const QStyleOption* opcao, const QSize& conteudo,
                           const QWidget* controle) const override;
    int pixelMetric(PixelMetric medida, const QStyleOption* opcao, const QWidget* controle) const override;
};

}  // namespace wkd
