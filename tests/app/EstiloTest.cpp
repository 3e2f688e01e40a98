#include "window/EstiloAmetista.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <algorithm>
#include <cmath>

#include "JanelaApoio.h"

namespace wkd {
namespace {

/// Contrast as WCAG 2 defines it, 1 to 21.
double Contraste(const QColor& a, const QColor& b) {
    const auto luz = [](const QColor& cor) {
        const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
        return 0.2126 * linear(cor.redF()) + 0.7152 * linear(cor.greenF()) + 0.0722 * linear(cor.blueF());
    };
    const double la = luz(a), lb = luz(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

TEST(EstiloTest, TextsStandOutFromWhatIsBehindThem) {
    Aplicacao();
    const QPalette p = TEstiloAmetista().standardPalette();
    const auto cor = [&](QPalette::ColorRole papel) { return p.color(QPalette::Active, papel); };
    const std::pair<QColor, QColor> pares[] = {
        {cor(QPalette::WindowText), cor(QPalette::Window)},
        {cor(QPalette::WindowText), kFaixaDosBotoes},
        {cor(QPalette::Text), cor(QPalette::Base)},
        {cor(QPalette::Text), cor(QPalette::AlternateBase)},
        {cor(QPalette::ButtonText), cor(QPalette::Button)},
        {cor(QPalette::HighlightedText), cor(QPalette::Highlight)},
        {cor(QPalette::ToolTipText), cor(QPalette::ToolTipBase)},
        {kTextoSobreAmetista, kAmetista},
        {kVermelho, cor(QPalette::Base)},
        {kVermelho, cor(QPalette::Window)},
        {p.color(QPalette::Disabled, QPalette::Text), p.color(QPalette::Disabled, QPalette::Base)},
    };
    for (const auto& [texto, fundo] : pares)
        EXPECT_GE(Contraste(texto, fundo), 4.5) << S(texto.name()) << " on " << S(fundo.name());
}

TEST(EstiloTest, TheDefaultButtonAndTheFocusAreTold) {
    Aplicacao().setStyle(new TEstiloAmetista);
    const auto pixel = [](bool padrao) {
        QPushButton botao("x");
        botao.setDefault(padrao);
        botao.resize(80, 30);
        return botao.grab().toImage().pixelColor(10, 15);
    };
    EXPECT_EQ(pixel(true), kAmetista);
    EXPECT_NE(pixel(false), kAmetista);
}

}  // namespace
}  // namespace wkd
