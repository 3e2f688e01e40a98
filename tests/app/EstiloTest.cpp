#include "widgets/EstiloAmetista.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

#include "JanelaApoio.h"
#include "report/RelatorioDaExecucao.h"

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

TEST(EstiloTest, TextsAndMarksStandOutFromWhatIsBehindThem) {
    Aplicacao();
    for (const bool escuro : {false, true}) {
        const QPalette p = TEstiloAmetista(escuro).standardPalette();
        const auto cor = [&](QPalette::ColorRole papel) { return p.color(QPalette::Active, papel); };
        EXPECT_EQ(cor(QPalette::Window).lightness() < 128, escuro);
        const std::pair<QColor, QColor> textos[] = {
            {cor(QPalette::WindowText), cor(QPalette::Window)},
            {cor(QPalette::WindowText), Cores().faixaDosBotoes},
            {cor(QPalette::Text), cor(QPalette::Base)},
            {cor(QPalette::Text), cor(QPalette::AlternateBase)},
            {cor(QPalette::PlaceholderText), cor(QPalette::Base)},
            {cor(QPalette::ButtonText), cor(QPalette::Button)},
            {cor(QPalette::ButtonText), Cores().sobre},
            {cor(QPalette::ButtonText), Cores().pressionado},
            {cor(QPalette::HighlightedText), cor(QPalette::Highlight)},
            {cor(QPalette::ToolTipText), cor(QPalette::ToolTipBase)},
            {cor(QPalette::Link), cor(QPalette::Window)},
            {Cores().sobreAmetista, Cores().ametista},
            {Cores().sobreAmetista, Cores().ametistaClara},
            {Cores().sobreAmetista, Cores().ametistaEscura},
            {Cores().vermelho, cor(QPalette::Base)},
            {Cores().vermelho, cor(QPalette::Window)},
            {p.color(QPalette::Disabled, QPalette::Text), p.color(QPalette::Disabled, QPalette::Base)},
            {p.color(QPalette::Disabled, QPalette::WindowText), cor(QPalette::Window)},
        };
        for (const auto& [texto, fundo] : textos)
            EXPECT_GE(Contraste(texto, fundo), 4.5) << S(texto.name()) << " on " << S(fundo.name());
        for (const QColor& fundo : {cor(QPalette::Window), cor(QPalette::Base)})
            for (const QColor& marca : {Cores().realce, Cores().borda})
                EXPECT_GE(Contraste(marca, fundo), 3) << S(marca.name()) << " on " << S(fundo.name());
    }
}

TEST(EstiloTest, TheReportStandsOutOnLightAndOnDarkScreens) {
    const std::string pagina = RelatorioEmHtml({});
    int modos = 0;
    for (auto onde = pagina.find(":root {"); onde != std::string::npos; onde = pagina.find(":root {", onde + 1)) {
        const std::string cores = pagina.substr(onde, pagina.find('}', onde) - onde);
        const auto cor = [&](const char* nome) {
            const QRegularExpression linha(QString(" --") + nome + ": (#[0-9a-f]+);");
            const auto achada = linha.match(Q(cores));
            EXPECT_TRUE(achada.hasMatch()) << nome;
            return QColor(achada.captured(1));
        };
        EXPECT_EQ(cor("papel").lightness() < 128, modos++ == 1);
        for (const char* texto : {"texto", "apagado", "ametista", "erro", "certo"})
            for (const char* fundo : {"papel", "fundo"})
                EXPECT_GE(Contraste(cor(texto), cor(fundo)), 4.5) << texto << " on " << fundo << cores;
        for (const char* texto : {"texto", "apagado"})
            EXPECT_GE(Contraste(cor(texto), cor("fundo-do-erro")), 4.5) << texto << " in an error" << cores;
    }
    EXPECT_EQ(modos, 2);
}

TEST(EstiloTest, ADarkDesktopIsKnownByItsPalette) {
    Aplicacao();
    EXPECT_TRUE(PedeEscuro(QPalette(Qt::white, Qt::black)));
    EXPECT_FALSE(PedeEscuro(QPalette(Qt::black, Qt::white)));
}

TEST(EstiloTest, TheDefaultButtonAndTheFocusAreTold) {
    Aplicacao().setStyle(new TEstiloAmetista);
    const auto retrato = [](bool padrao, bool foco) {
        QPushButton botao("x");
        botao.setDefault(padrao);
        botao.resize(80, 30);
        QStyleOptionButton opcao;
        opcao.initFrom(&botao);
        opcao.text = "x";
        opcao.state |= QStyle::State_Enabled | QStyle::State_Raised;
        opcao.state.setFlag(QStyle::State_HasFocus, foco);
        opcao.state.setFlag(QStyle::State_KeyboardFocusChange, foco);
        opcao.features.setFlag(QStyleOptionButton::DefaultButton, padrao);
        QImage imagem(80, 30, QImage::Format_RGB32);
        imagem.fill(Cores().fundo);
        QPainter pintor(&imagem);
        QApplication::style()->drawControl(QStyle::CE_PushButton, &opcao, &pintor, &botao);
        return imagem;
    };
    EXPECT_EQ(retrato(true, false).pixelColor(10, 15), Cores().ametista);
    EXPECT_NE(retrato(false, false).pixelColor(10, 15), Cores().ametista);
    for (const bool padrao : {false, true}) {
        const QImage com = retrato(padrao, true), sem = retrato(padrao, false);
        int diferentes = 0;
        for (int x = 0; x < com.width(); ++x)
            for (int y = 0; y < com.height(); ++y)
                diferentes += Contraste(com.pixelColor(x, y), sem.pixelColor(x, y)) >= 3;
        EXPECT_GT(diferentes, 150) << (padrao ? "default button" : "button");
    }
}

}  // namespace
}  // namespace wkd
