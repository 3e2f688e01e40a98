#include "window/JanelaDoPlano.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QScreen>
#include <QShortcut>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>

#include "pages/PaginaStatus.h"
#include "report/PlanoEmTexto.h"
#include "widgets/Dialogos.h"

namespace wkd {

namespace {

struct TForma {
    const char *filtro, *extensao;
    std::string (*escreve)(const TPlano&);
};
/// The first one for a name of any other extension.
constexpr TForma kFormas[] = {{"Texto (*.txt)", "txt", PlanoEmTexto},
                              {"Página (*.html)", "html", PlanoEmHtml},
                              {"Comandos SQL (*.sql)", "sql", PlanoEmSql},
                              {"JSON (*.json)", "json", PlanoEmJson}};

qsizetype Recuo(const QString& linha) {
    return std::ranges::find_if(linha, [](QChar c) { return c != ' '; }) - linha.begin();
}

}  // namespace

QStringList LinhasCom(const QString& texto, const QStringList& linhas) {
    struct TAcima {
        qsizetype qual;
        bool inteira;
    };
    std::vector<bool> ficam(static_cast<std::size_t>(linhas.size()));
    std::vector<TAcima> acima;
    for (qsizetype i = 0; i < linhas.size(); ++i) {
        while (!acima.empty() && Recuo(linhas[acima.back().qual]) >= Recuo(linhas[i])) acima.pop_back();
        const bool inteira = (!acima.empty() && acima.back().inteira) || linhas[i].contains(texto, Qt::CaseInsensitive);
        acima.push_back({i, inteira});
        if (inteira)
            for (const TAcima& linha : acima) ficam[static_cast<std::size_t>(linha.qual)] = true;
    }
    QStringList achadas;
    for (qsizetype i = 0; i < linhas.size(); ++i)
        if (ficam[static_cast<std::size_t>(i)]) achadas += linhas[i];
    return achadas;
}

TJanelaDoPlano::TJanelaDoPlano(TPlano plano, IDialogos& dialogos, QWidget* assistente)
    : QDialog(assistente, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint |
                              Qt::WindowCloseButtonHint),
      plano_(std::move(plano)),
      linhas_(Q(PlanoEmTexto(plano_)).trimmed().split('\n')),
      dialogos_(dialogos),
      edFiltro_(Edicao("edFiltroDoPlano", "Procurar")),
      lblLinhas_(Nomeia(new QLabel, "lblLinhasDoPlano")),
      mPlano_(Nomeia(new TMemoDeLinhas, "mPlano", "Plano da atualização")) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle("Plano da atualização de " + Q(plano_.alias));
    setSizeGripEnabled(true);
    QFont letra = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    letra.setPointSizeF(font().pointSizeF());
    mPlano_->setFont(letra);
    auto* partes = new QVBoxLayout(this);
    partes->addLayout(Procura());
    partes->addWidget(mPlano_, 1);
    partes->addLayout(Botoes());
    const QFontMetrics medida(letra);
    resize(
        QSize(116 * medida.averageCharWidth(), 36 * medida.lineSpacing()).boundedTo(screen()->availableSize() * 0.9));
    Filtra({});
    mPlano_->setFocus();
}

QLayout* TJanelaDoPlano::Procura() {
    edFiltro_->setClearButtonEnabled(true);
    edFiltro_->setPlaceholderText("tabela, coluna ou outra palavra");
    connect(edFiltro_, &QLineEdit::textChanged, this, &TJanelaDoPlano::Filtra);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, edFiltro_, [this] {
        edFiltro_->setFocus();
        edFiltro_->selectAll();
    });
    auto* linha = new QHBoxLayout;
    linha->addWidget(RotuloDe("&Procurar:", edFiltro_));
    linha->addWidget(edFiltro_, 1);
    linha->addWidget(lblLinhas_);
    return linha;
}

QLayout* TJanelaDoPlano::Botoes() {
    auto* salva = Botao("btSalvarPlano", "&Salvar como...", "Gravar o plano como texto, página, comandos SQL ou JSON");
    auto* imprime = Botao("btImprimirPlano", "&Imprimir...");
    auto* fecha = Botao("btFecharPlano", "&Fechar");
    connect(salva, &QPushButton::clicked, this, &TJanelaDoPlano::Salva);
    connect(imprime, &QPushButton::clicked, this, &TJanelaDoPlano::Imprime);
    connect(fecha, &QPushButton::clicked, this, &QDialog::close);
    auto* linha = new QHBoxLayout;
    for (QPushButton* botao : {salva, imprime, fecha}) {
        botao->setAutoDefault(false);  // Enter in the text that is looked for
        if (botao == fecha) linha->addStretch();
        linha->addWidget(botao);
    }
    return linha;
}

void TJanelaDoPlano::Filtra(const QString& texto) {
    const QString procurado = texto.trimmed();
    const QStringList achadas = procurado.isEmpty() ? linhas_ : LinhasCom(procurado, linhas_);
    mPlano_->setPlainText(achadas.join('\n'));
    const auto quantas = std::ranges::count_if(achadas, [](const QString& linha) { return !linha.isEmpty(); });
    lblLinhas_->setText(procurado.isEmpty() ? ""
                        : quantas == 0      ? "nenhuma linha"
                        : quantas == 1      ? "1 linha"
                                            : QString::number(quantas) + " linhas");
}

void TJanelaDoPlano::Salva() {
    QStringList filtros;
    for (const TForma& forma : kFormas) filtros += forma.filtro;
    const QString nome = dialogos_.ArquivoParaGravar("plano.txt", filtros);
    if (nome.isEmpty()) return;
    const auto* forma = std::ranges::find(kFormas, QFileInfo(nome).suffix().toLower(), &TForma::extensao);
    if (forma == std::end(kFormas)) forma = kFormas;
    GravaArquivo(dialogos_, nome, QByteArray::fromStdString(forma->escreve(plano_)));
}

void TJanelaDoPlano::Imprime() {
    QTextDocument documento;
    QFont letra = mPlano_->font();
    letra.setPointSizeF(8);  // a hundred letters a line of A4
    documento.setDefaultFont(letra);
    documento.setPlainText(linhas_.join('\n'));
    dialogos_.Imprime(windowTitle(), documento);
}

}  // namespace wkd
