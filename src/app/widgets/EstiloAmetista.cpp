#include "widgets/EstiloAmetista.h"

#include <QDir>
#include <QEvent>
#include <QIcon>
#include <QPainter>
#include <QSettings>
#include <QStyleOption>
#include <QWidget>
#include <algorithm>

#ifdef WKD_FONTCONFIG
#include <fontconfig/fontconfig.h>
#include <locale.h>
#endif

namespace wkd {

std::jthread LeFontesDoSistema() {
#ifdef WKD_FONTCONFIG
    return std::jthread([] {
        uselocale(newlocale(LC_ALL_MASK, "C", nullptr));
        FcInit();
    });
#else
    return {};
#endif
}

namespace {

constexpr TCores kClaras = {.fundo = {0xF7, 0xF4, 0xFB},
                            .campo = {0xFF, 0xFF, 0xFF},
                            .texto = {0x2A, 0x1B, 0x3D},
                            .textoApagado = {0x6C, 0x61, 0x7C},
                            .borda = {0x8B, 0x72, 0xAB},
                            .bordaApagada = {0xC9, 0xBC, 0xDB},
                            .sobre = {0xEF, 0xE6, 0xF9},
                            .pressionado = {0xDB, 0xCB, 0xEE},
                            .ametista = {0x5E, 0x35, 0x8F},
                            .ametistaClara = {0x6E, 0x43, 0xA3},
                            .ametistaEscura = {0x47, 0x26, 0x70},
                            .sobreAmetista = {0xFF, 0xFF, 0xFF},
                            .realce = {0x5E, 0x35, 0x8F},
                            .vermelho = {0xB0, 0x00, 0x20},
                            .faixaDosBotoes = {0xE8, 0xDF, 0xF3}};
constexpr TCores kEscuras = {.fundo = {0x1E, 0x18, 0x26},
                             .campo = {0x2A, 0x22, 0x36},
                             .texto = {0xED, 0xE6, 0xF7},
                             .textoApagado = {0xA9, 0x9D, 0xBA},
                             .borda = {0x8B, 0x72, 0xAB},
                             .bordaApagada = {0x4B, 0x3F, 0x5E},
                             .sobre = {0x3A, 0x2F, 0x4B},
                             .pressionado = {0x4A, 0x3C, 0x60},
                             .ametista = {0x78, 0x4C, 0xB0},
                             .ametistaClara = {0x84, 0x5A, 0xBA},
                             .ametistaEscura = {0x5E, 0x35, 0x8F},
                             .sobreAmetista = {0xFF, 0xFF, 0xFF},
                             .realce = {0xC3, 0x9B, 0xF0},
                             .vermelho = {0xFF, 0x8F, 0x9C},
                             .faixaDosBotoes = {0x2F, 0x26, 0x40}};
const TCores* doEstilo = &kClaras;

bool Padrao(const QStyleOption* opcao) {
    const auto* botao = qstyleoption_cast<const QStyleOptionButton*>(opcao);
    return botao && botao->features.testFlag(QStyleOptionButton::DefaultButton) &&
           botao->state.testFlag(QStyle::State_Enabled);
}

QColor FundoDoBotao(const QStyleOption* opcao) {
    const QStyle::State estado = opcao->state;
    const bool baixo = estado.testFlag(QStyle::State_Sunken) || estado.testFlag(QStyle::State_On);
    const bool sobre = estado.testFlag(QStyle::State_MouseOver);
    if (!estado.testFlag(QStyle::State_Enabled)) return Cores().fundo;
    if (Padrao(opcao)) return baixo ? Cores().ametistaEscura : sobre ? Cores().ametistaClara : Cores().ametista;
    return baixo ? Cores().pressionado : sobre ? Cores().sobre : Cores().campo;
}

QColor FundoDoCampo(const QStyleOption* opcao) {
    return opcao->state.testFlag(QStyle::State_ReadOnly) ? Cores().fundo : opcao->palette.color(QPalette::Base);
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
    if (!opcao->state.testFlag(QStyle::State_Enabled)) return Cores().bordaApagada;
    return opcao->state.testFlag(QStyle::State_HasFocus) ? Cores().realce : Cores().borda;
}

double Espessura(const QStyleOption* opcao) {
    return opcao->state.testFlag(QStyle::State_HasFocus) && opcao->state.testFlag(QStyle::State_Enabled) ? 2 : 1;
}

/// A second line inside tells of the focus, on the filled one too.
void Botao(QPainter* pintor, const QStyleOption* opcao) {
    const bool padrao = Padrao(opcao);
    Caixa(pintor, opcao->rect, FundoDoBotao(opcao), padrao ? Cores().ametistaEscura : Borda(opcao), Espessura(opcao));
    if (Espessura(opcao) > 1)
        Caixa(pintor, opcao->rect.adjusted(3, 3, -3, -3), Qt::transparent,
              padrao ? Cores().sobreAmetista : Cores().realce);
}

void Marca(QPainter* pintor, const QStyleOption* opcao) {
    const bool marcada = opcao->state.testFlag(QStyle::State_On);
    const bool livre = opcao->state.testFlag(QStyle::State_Enabled);
    const QColor cor = livre ? Cores().ametista : Cores().bordaApagada;
    const QRect area = opcao->rect.adjusted(0, 0, -1, -1);
    Caixa(pintor, area, marcada ? cor : Cores().campo, livre ? Cores().borda : Cores().bordaApagada);
    if (!marcada) return;
    const auto ponto = [&](double x, double y) {
        return QPointF(area.x() + x * area.width(), area.y() + y * area.height());
    };
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setPen(QPen(Cores().sobreAmetista, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    pintor->drawPolyline(QPolygonF{ponto(0.27, 0.55), ponto(0.45, 0.73), ponto(0.76, 0.32)});
    pintor->restore();
}

void Escolha(QPainter* pintor, const QStyleOption* opcao) {
    const bool livre = opcao->state.testFlag(QStyle::State_Enabled);
    const QRectF area = QRectF(opcao->rect).adjusted(0.5, 0.5, -1.5, -1.5);
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setPen(livre ? Cores().borda : Cores().bordaApagada);
    pintor->setBrush(Cores().campo);
    pintor->drawEllipse(area);
    if (opcao->state.testFlag(QStyle::State_On)) {
        const double folga = area.width() / 4;
        pintor->setPen(Qt::NoPen);
        pintor->setBrush(livre ? Cores().realce : Cores().bordaApagada);
        pintor->drawEllipse(area.adjusted(folga, folga, -folga, -folga));
    }
    pintor->restore();
}

/// Round sign of a message box: a letter.
QIcon Sinal(const QString& letra, const QColor& fundo, const QColor& cor) {
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
    pintor.setPen(cor);
    pintor.drawText(desenho.rect(), Qt::AlignCenter, letra);
    return desenho;
}

}  // namespace

const TCores& Cores() { return *doEstilo; }

bool PedeEscuro(const QPalette& doSistema) {
    if (doSistema.color(QPalette::WindowText).lightness() > doSistema.color(QPalette::Window).lightness()) return true;
#ifdef _WIN32
    const QSettings ajustes("HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                            QSettings::NativeFormat);
    return ajustes.value("AppsUseLightTheme", 1).toInt() == 0;
#else
    const auto escuro = [](const QString& tema) { return tema.endsWith("dark", Qt::CaseInsensitive); };
    const QSettings gtk(QDir::homePath() + "/.config/gtk-3.0/settings.ini", QSettings::IniFormat);
    return escuro(qEnvironmentVariable("GTK_THEME")) || escuro(gtk.value("Settings/gtk-theme-name").toString()) ||
           gtk.value("Settings/gtk-application-prefer-dark-theme").toBool();
#endif
}

TEstiloAmetista::TEstiloAmetista() : TEstiloAmetista(false) { segue_ = true; }

TEstiloAmetista::TEstiloAmetista(bool escuro) : QProxyStyle("Fusion") {
    setObjectName("Amethyst Kamri");
    doEstilo = escuro ? &kEscuras : &kClaras;
}

/// The palette comes as the desktop has it, when the style is taken and when the desktop's theme changes.
void TEstiloAmetista::polish(QPalette& paleta) {
    if (segue_) doEstilo = PedeEscuro(paleta) ? &kEscuras : &kClaras;
    paleta = standardPalette();
}

namespace {

class TTintura : public QObject {
  public:
    TTintura(QWidget& controle, TTinta tinta) : QObject(&controle), controle_(controle), tinta_(std::move(tinta)) {
        setObjectName(kNome);
        controle.installEventFilter(this);
        Pinta();
    }
    static constexpr const char* kNome = "tintura";

  protected:
    bool eventFilter(QObject*, QEvent* evento) override {
        if (evento->type() == QEvent::PaletteChange) Pinta();
        return false;
    }

  private:
    void Pinta() {
        QPalette paleta;
        for (const auto& [papel, cor] : tinta_) paleta.setColor(papel, Cores().*cor);
        if (paleta != controle_.palette()) controle_.setPalette(paleta);
    }

    QWidget& controle_;
    TTinta tinta_;
};

}  // namespace

void Tinge(QWidget& controle, const TTinta& tinta) {
    delete controle.findChild<QObject*>(TTintura::kNome, Qt::FindDirectChildrenOnly);
    if (tinta.empty())
        controle.setPalette({});
    else
        new TTintura(controle, tinta);
}

QPalette TEstiloAmetista::standardPalette() const {
    QPalette paleta(Cores().texto, Cores().fundo);
    paleta.setColor(QPalette::WindowText, Cores().texto);
    paleta.setColor(QPalette::Base, Cores().campo);
    paleta.setColor(QPalette::AlternateBase, Cores().fundo);
    paleta.setColor(QPalette::Text, Cores().texto);
    paleta.setColor(QPalette::Button, Cores().sobre);
    paleta.setColor(QPalette::ButtonText, Cores().texto);
    paleta.setColor(QPalette::PlaceholderText, Cores().textoApagado);
    paleta.setColor(QPalette::ToolTipBase, Cores().campo);
    paleta.setColor(QPalette::ToolTipText, Cores().texto);
    paleta.setColor(QPalette::Link, Cores().realce);
    paleta.setColor(QPalette::Highlight, Cores().ametista);
    paleta.setColor(QPalette::HighlightedText, Cores().sobreAmetista);
    for (const auto papel : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        paleta.setColor(QPalette::Disabled, papel, Cores().textoApagado);
    paleta.setColor(QPalette::Disabled, QPalette::Base, Cores().fundo);
    return paleta;
}

QIcon TEstiloAmetista::standardIcon(StandardPixmap qual, const QStyleOption* opcao, const QWidget* controle) const {
    switch (qual) {
        case SP_MessageBoxInformation:
            return Sinal("i", Cores().ametista, Cores().sobreAmetista);
        case SP_MessageBoxQuestion:
            return Sinal("?", Cores().ametista, Cores().sobreAmetista);
        case SP_MessageBoxWarning:
            return Sinal("!", Cores().vermelho, Cores().fundo);
        case SP_MessageBoxCritical:
            return Sinal("×", Cores().vermelho, Cores().fundo);
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
            Botao(pintor, opcao);
            return;
        case PE_FrameFocusRect:
            if (qstyleoption_cast<const QStyleOptionFocusRect*>(opcao))
                Caixa(pintor, opcao->rect, Qt::transparent,
                      opcao->state.testFlag(State_Sunken) ? Cores().campo : Cores().realce);
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
            Caixa(pintor, opcao->rect, Qt::transparent, Cores().bordaApagada);
            return;
        default:
            QProxyStyle::drawPrimitive(elemento, opcao, pintor, controle);
    }
}

void TEstiloAmetista::drawControl(ControlElement elemento, const QStyleOption* opcao, QPainter* pintor,
                                  const QWidget* controle) const {
    if (elemento == CE_PushButtonLabel && Padrao(opcao)) {
        QStyleOptionButton claro = *qstyleoption_cast<const QStyleOptionButton*>(opcao);
        claro.palette.setColor(QPalette::ButtonText, Cores().sobreAmetista);
        QProxyStyle::drawControl(elemento, &claro, pintor, controle);
        return;
    }
    QProxyStyle::drawControl(elemento, opcao, pintor, controle);
    if (elemento == CE_ProgressBarGroove) Caixa(pintor, opcao->rect, Qt::transparent, Cores().borda);
}

/// The base draws no border that a dark window would show around a box that is typed into.
void TEstiloAmetista::drawComplexControl(ComplexControl qual, const QStyleOptionComplex* opcao, QPainter* pintor,
                                         const QWidget* controle) const {
    QProxyStyle::drawComplexControl(qual, opcao, pintor, controle);
    const auto* lista = qstyleoption_cast<const QStyleOptionComboBox*>(opcao);
    if (lista && lista->editable && lista->frame)
        Caixa(pintor, opcao->rect, Qt::transparent, Borda(opcao), Espessura(opcao));
}

/// The text of a button stands clear of its border.
QSize TEstiloAmetista::sizeFromContents(ContentsType tipo, const QStyleOption* opcao, const QSize& conteudo,
                                        const QWidget* controle) const {
    const QSize tamanho = QProxyStyle::sizeFromContents(tipo, opcao, conteudo, controle);
    return tipo == CT_PushButton ? tamanho + QSize(14, 0) : tamanho;
}

int TEstiloAmetista::pixelMetric(PixelMetric medida, const QStyleOption* opcao, const QWidget* controle) const {
    if (medida == PM_DefaultFrameWidth) return 2;
    const int base = QProxyStyle::pixelMetric(medida, opcao, controle);
    const bool sinal = medida == PM_IndicatorWidth || medida == PM_IndicatorHeight ||
                       medida == PM_ExclusiveIndicatorWidth || medida == PM_ExclusiveIndicatorHeight;
    return sinal && controle ? std::max(base, controle->fontMetrics().height() * 4 / 5) : base;
}

}  // namespace wkd
