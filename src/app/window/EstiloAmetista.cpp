#include "window/EstiloAmetista.h"

#include <QIcon>
#include <QPainter>
#include <QStyleOption>

#ifdef WKD_FONTCONFIG
#include <fontconfig/fontconfig.h>
#endif

namespace wkd {

std::jthread LeFontesDoSistema() {
#ifdef WKD_FONTCONFIG
    return std::jthread([] { FcInit(); });  // the toolkit finds it done, or waits for the rest
#else
    return {};
#endif
}

namespace {

constexpr QColor kFundo{0xF7, 0xF4, 0xFB};
constexpr QColor kCampo{0xFF, 0xFF, 0xFF};
constexpr QColor kTexto{0x2A, 0x1B, 0x3D};
constexpr QColor kTextoApagado{0x6C, 0x61, 0x7C};
constexpr QColor kBorda{0x8B, 0x72, 0xAB};
constexpr QColor kBordaApagada{0xC9, 0xBC, 0xDB};
constexpr QColor kSobre{0xEF, 0xE6, 0xF9};
constexpr QColor kPressionado{0xDB, 0xCB, 0xEE};
constexpr QColor kAmetistaClara{0x6E, 0x43, 0xA3};
constexpr QColor kAmetistaEscura{0x47, 0x26, 0x70};

bool Padrao(const QStyleOption* opcao) {
    const auto* botao = qstyleoption_cast<const QStyleOptionButton*>(opcao);
    return botao && botao->features.testFlag(QStyleOptionButton::DefaultButton) &&
           botao->state.testFlag(QStyle::State_Enabled);
}

QColor FundoDoBotao(const QStyleOption* opcao) {
    const QStyle::State estado = opcao->state;
    const bool baixo = estado.testFlag(QStyle::State_Sunken) || estado.testFlag(QStyle::State_On);
    const bool sobre = estado.testFlag(QStyle::State_MouseOver);
    if (!estado.testFlag(QStyle::State_Enabled)) return kFundo;
    if (Padrao(opcao)) return baixo ? kAmetistaEscura : sobre ? kAmetistaClara : kAmetista;
    return baixo ? kPressionado : sobre ? kSobre : kCampo;
}

QColor FundoDoCampo(const QStyleOption* opcao) {
    return opcao->state.testFlag(QStyle::State_ReadOnly) ? kFundo : opcao->palette.color(QPalette::Base);
}

/// Rectangle with round corners; the border lies on whole pixels of the screen.
void Caixa(QPainter* pintor, const QRect& area, const QColor& fundo, const QColor& borda, double espessura = 1) {
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setBrush(fundo);
    pintor->setPen(QPen(borda, espessura));
    const double meia = espessura / 2;
    pintor->drawRoundedRect(QRectF(area).adjusted(meia, meia, -meia, -meia), 4, 4);
    pintor->restore();
}

QColor Borda(const QStyleOption* opcao) {
    if (!opcao->state.testFlag(QStyle::State_Enabled)) return kBordaApagada;
    return opcao->state.testFlag(QStyle::State_HasFocus) ? kAmetista : kBorda;
}

double Espessura(const QStyleOption* opcao) {
    return opcao->state.testFlag(QStyle::State_HasFocus) && opcao->state.testFlag(QStyle::State_Enabled) ? 2 : 1;
}

void Marca(QPainter* pintor, const QStyleOption* opcao) {
    const bool marcada = opcao->state.testFlag(QStyle::State_On);
    const bool livre = opcao->state.testFlag(QStyle::State_Enabled);
    const QColor cor = livre ? kAmetista : kBordaApagada;
    const QRect area = opcao->rect.adjusted(0, 0, -1, -1);
    Caixa(pintor, area, marcada ? cor : kCampo, livre ? kBorda : kBordaApagada);
    if (!marcada) return;
    const auto ponto = [&](double x, double y) {
        return QPointF(area.x() + x * area.width(), area.y() + y * area.height());
    };
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setPen(QPen(kTextoSobreAmetista, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    pintor->drawPolyline(QPolygonF{ponto(0.27, 0.55), ponto(0.45, 0.73), ponto(0.76, 0.32)});
    pintor->restore();
}

void Escolha(QPainter* pintor, const QStyleOption* opcao) {
    const bool livre = opcao->state.testFlag(QStyle::State_Enabled);
    const QRectF area = QRectF(opcao->rect).adjusted(0.5, 0.5, -1.5, -1.5);
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setPen(livre ? kBorda : kBordaApagada);
    pintor->setBrush(kCampo);
    pintor->drawEllipse(area);
    if (opcao->state.testFlag(QStyle::State_On)) {
        const double folga = area.width() / 4;
        pintor->setPen(Qt::NoPen);
        pintor->setBrush(livre ? kAmetista : kBordaApagada);
        pintor->drawEllipse(area.adjusted(folga, folga, -folga, -folga));
    }
    pintor->restore();
}

/// Round sign of a message box: a letter on amethyst.
QIcon Sinal(const QString& letra, const QColor& fundo) {
    constexpr int kLado = 96;  // three times what is shown, for screens of high resolution
    QPixmap desenho(kLado, kLado);
    desenho.fill(Qt::transparent);
    QPainter pintor(&desenho);
    pintor.setRenderHint(QPainter::Antialiasing);
    pintor.setPen(Qt::NoPen);
    pintor.setBrush(fundo);
    pintor.drawEllipse(desenho.rect().adjusted(3, 3, -3, -3));
    QFont fonte = pintor.font();
    fonte.setPixelSize(kLado * 2 / 3);
    fonte.setBold(true);
    pintor.setFont(fonte);
    pintor.setPen(kTextoSobreAmetista);
    pintor.drawText(desenho.rect(), Qt::AlignCenter, letra);
    return desenho;
}

}  // namespace

TEstiloAmetista::TEstiloAmetista() : QProxyStyle("Fusion") { setObjectName("Amethyst Kamri"); }

QPalette TEstiloAmetista::standardPalette() const {
    QPalette paleta(kTexto, kFundo);
    paleta.setColor(QPalette::Base, kCampo);
    paleta.setColor(QPalette::AlternateBase, kFundo);
    paleta.setColor(QPalette::Text, kTexto);
    paleta.setColor(QPalette::Button, kSobre);
    paleta.setColor(QPalette::ButtonText, kTexto);
    paleta.setColor(QPalette::PlaceholderText, kTextoApagado);
    paleta.setColor(QPalette::ToolTipBase, kCampo);
    paleta.setColor(QPalette::ToolTipText, kTexto);
    paleta.setColor(QPalette::Link, kAmetista);
    paleta.setColor(QPalette::Highlight, kAmetista);
    paleta.setColor(QPalette::HighlightedText, kTextoSobreAmetista);
    for (const auto papel : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        paleta.setColor(QPalette::Disabled, papel, kTextoApagado);
    paleta.setColor(QPalette::Disabled, QPalette::Base, kFundo);
    return paleta;
}

QIcon TEstiloAmetista::standardIcon(StandardPixmap qual, const QStyleOption* opcao, const QWidget* controle) const {
    switch (qual) {
        case SP_MessageBoxInformation:
            return Sinal("i", kAmetista);
        case SP_MessageBoxQuestion:
            return Sinal("?", kAmetista);
        case SP_MessageBoxWarning:
        case SP_MessageBoxCritical:
            return Sinal("!", kVermelho);
        default:
            return QProxyStyle::standardIcon(qual, opcao, controle);
    }
}

/// The title of a group stands clear of the group's corner.
QRect TEstiloAmetista::subControlRect(ComplexControl controle, const QStyleOptionComplex* opcao, SubControl parte,
                                      const QWidget* dono) const {
    const QRect area = QProxyStyle::subControlRect(controle, opcao, parte, dono);
    return controle == CC_GroupBox && parte == SC_GroupBoxLabel ? area.translated(10, 3) : area;
}

void TEstiloAmetista::drawPrimitive(PrimitiveElement elemento, const QStyleOption* opcao, QPainter* pintor,
                                    const QWidget* controle) const {
    switch (elemento) {
        case PE_PanelButtonCommand:
            Caixa(pintor, opcao->rect, FundoDoBotao(opcao), Padrao(opcao) ? kAmetistaEscura : Borda(opcao));
            return;
        case PE_FrameFocusRect:
            if (qstyleoption_cast<const QStyleOptionFocusRect*>(opcao))
                Caixa(pintor, opcao->rect, Qt::transparent, opcao->state.testFlag(State_Sunken) ? kCampo : kAmetista);
            return;
        case PE_PanelLineEdit:
            if (const auto* quadro = qstyleoption_cast<const QStyleOptionFrame*>(opcao);
                quadro && quadro->lineWidth > 0)
                Caixa(pintor, opcao->rect, FundoDoCampo(opcao), Borda(opcao), Espessura(opcao));
            return;
        case PE_Frame:
            Caixa(pintor, opcao->rect, Qt::transparent, Borda(opcao), Espessura(opcao));
            return;
        case PE_IndicatorCheckBox:
            Marca(pintor, opcao);
            return;
        case PE_IndicatorRadioButton:
            Escolha(pintor, opcao);
            return;
        case PE_FrameGroupBox:
            Caixa(pintor, opcao->rect, Qt::transparent, kBordaApagada);
            return;
        default:
            QProxyStyle::drawPrimitive(elemento, opcao, pintor, controle);
    }
}

void TEstiloAmetista::drawControl(ControlElement elemento, const QStyleOption* opcao, QPainter* pintor,
                                  const QWidget* controle) const {
    if (elemento == CE_PushButtonLabel && Padrao(opcao)) {
        QStyleOptionButton claro = *qstyleoption_cast<const QStyleOptionButton*>(opcao);
        claro.palette.setColor(QPalette::ButtonText, kTextoSobreAmetista);
        QProxyStyle::drawControl(elemento, &claro, pintor, controle);
        return;
    }
    QProxyStyle::drawControl(elemento, opcao, pintor, controle);
}

/// The text of a button stands clear of its border.
QSize TEstiloAmetista::sizeFromContents(ContentsType tipo, const QStyleOption* opcao, const QSize& conteudo,
                                        const QWidget* controle) const {
    const QSize tamanho = QProxyStyle::sizeFromContents(tipo, opcao, conteudo, controle);
    return tipo == CT_PushButton ? tamanho + QSize(14, 0) : tamanho;
}

int TEstiloAmetista::pixelMetric(PixelMetric medida, const QStyleOption* opcao, const QWidget* controle) const {
    if (medida == PM_DefaultFrameWidth) return 2;
    return QProxyStyle::pixelMetric(medida, opcao, controle);
}

}  // namespace wkd
