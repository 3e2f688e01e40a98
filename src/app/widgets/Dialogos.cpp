#include "widgets/Dialogos.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextDocument>
#include <QTreeView>
#include <QUrl>

#include "widgets/EstiloAmetista.h"

#ifdef WKD_IMPRESSORA
#include <QPrintDialog>
#include <QPrinter>
#else
#include <QBuffer>
#include <QPdfWriter>
#endif

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>
#include <QDir>
#endif

namespace wkd {

QPushButton* Botao(const char* nome, const QString& texto, const QString& dica) {
    auto* botao = Nomeia(new QPushButton(texto), nome, QString(texto).remove('&').trimmed());
    botao->setToolTip(dica);
    return botao;
}

QPushButton* Reticencias(const char* nome, const QString& dica) {
    QPushButton* botao = Botao(nome, "...", dica);
    botao->setAccessibleName(dica);
    botao->setFixedWidth(LarguraDoSinal(*botao));
    return botao;
}

int LarguraDoSinal(const QPushButton& botao) { return botao.fontMetrics().horizontalAdvance("...") + 24; }

QLabel* RotuloDe(const QString& texto, QWidget* campo) {
    auto* rotulo = new QLabel(texto);
    rotulo->setBuddy(campo);
    return rotulo;
}

QLabel* Cabecalho(const QString& texto) {
    auto* rotulo = new QLabel(texto);
    QFont fonte = rotulo->font();
    fonte.setBold(true);
    rotulo->setFont(fonte);
    rotulo->setWordWrap(true);
    return rotulo;
}

void PintaAviso(QWidget& controle, bool vermelho) {
    Tinge(controle,
          vermelho ? TTinta{{QPalette::Text, &TCores::vermelho}, {QPalette::WindowText, &TCores::vermelho}} : TTinta{});
}

QLabel* RotuloVermelho(const QString& texto) {
    auto* rotulo = new QLabel(texto);
    PintaAviso(*rotulo, true);
    return rotulo;
}

QLineEdit* Edicao(const char* nome, const QString& lido, const QString& texto) {
    return Nomeia(new QLineEdit(texto), nome, lido);
}

namespace {

/// The active window, else the program's own, brought to the foreground.
QWidget* JanelaNaFrente() {
    QWidget* janela = QApplication::activeWindow();
    const QWidgetList todas = QApplication::topLevelWidgets();
    for (qsizetype i = 0; !janela && i < todas.size(); ++i) {
        const Qt::WindowType tipo = todas[i]->windowType();  // a tooltip would take its children along when it goes
        if (todas[i]->isVisible() && (tipo == Qt::Window || tipo == Qt::Dialog)) janela = todas[i];
    }
    if (!janela) return nullptr;
    janela->raise();
    janela->activateWindow();
    return janela;
}

class TCaixa : public QMessageBox {
  public:
    TCaixa(Icon icone, const QString& texto) : QMessageBox(icone, "AtualizaWKD", texto, NoButton, JanelaNaFrente()) {
        setTextFormat(Qt::PlainText);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
    }

    /// Its first letter alone presses the button too.
    QPushButton* Botao(const QString& texto, ButtonRole papel) {
        QPushButton* botao = addButton(texto, papel);
        botao->setShortcut(QKeySequence(texto.left(1)));
        return botao;
    }

    QAbstractButton* Pergunta(QPushButton* padrao, QPushButton* escape) {
        setDefaultButton(padrao);
        setEscapeButton(escape);
        exec();
        return clickedButton();
    }
};

/// The desktop's own dialog where there is one.
class TDialogoDeArquivo : public QFileDialog {
  public:
    TDialogoDeArquivo(const QString& titulo, const QString& pasta, const QString& filtro)
        : QFileDialog(JanelaNaFrente(), titulo, pasta, filtro) {
        resize(800, 460);
        constexpr int kLarguras[] = {250, 90, 110, 150};
        const auto* lista = findChild<QTreeView*>();
        for (int i = 0; lista && i < static_cast<int>(std::size(kLarguras)); ++i)
            lista->header()->resizeSection(i, kLarguras[i]);
    }

    /// Empty when cancelled.
    QString Escolhido() { return exec() == Accepted ? selectedFiles().value(0) : QString(); }
};

}  // namespace

void TDialogosQt::Informacao(const QString& texto) {
    TCaixa caixa(QMessageBox::Information, texto);
    QPushButton* ok = caixa.Botao("OK", QMessageBox::AcceptRole);
    caixa.Pergunta(ok, ok);
}

void TDialogosQt::Erro(const QString& texto) {
    TCaixa caixa(QMessageBox::Critical, texto);
    QPushButton* ok = caixa.Botao("OK", QMessageBox::AcceptRole);
    caixa.Pergunta(ok, ok);
}

bool TDialogosQt::Confirmacao(const QString& texto) {
    TCaixa caixa(QMessageBox::Question, texto);
    QPushButton* sim = caixa.Botao("Sim", QMessageBox::YesRole);
    QPushButton* nao = caixa.Botao("Não", QMessageBox::NoRole);
    return caixa.Pergunta(nao, nao) == sim;
}

TAcaoReconcilia TDialogosQt::Reconcilia(const QString& erro) {
    TCaixa caixa(QMessageBox::Warning, erro);
    QPushButton* pula = caixa.Botao("Pular", QMessageBox::AcceptRole);
    const QPushButton* cancela = caixa.Botao("Cancelar", QMessageBox::RejectRole);
    const QPushButton* aborta = caixa.Botao("Abortar", QMessageBox::DestructiveRole);
    const QAbstractButton* resposta = caixa.Pergunta(pula, pula);
    if (resposta == cancela) return TAcaoReconcilia::Cancela;
    return resposta == aborta ? TAcaoReconcilia::Aborta : TAcaoReconcilia::Pula;
}

QString TDialogosQt::ArquivoParaAbrir() {
    TDialogoDeArquivo dialogo("Arquivo de Atualização", {}, "Arquivos zip (*.zip *.ZIP)");
    dialogo.setFileMode(QFileDialog::ExistingFile);
    dialogo.setDefaultSuffix("zip");
    return dialogo.Escolhido();
}

QString TDialogosQt::BackupParaAbrir() {
    const QString doBanco = "Backup do banco (*.fbk *.bak)";
    TDialogoDeArquivo dialogo("Abrir", {}, "Backup (*.gdk);;" + doBanco);
    dialogo.selectNameFilter(doBanco);
    dialogo.setFileMode(QFileDialog::ExistingFile);
    return dialogo.Escolhido();
}

QString TDialogosQt::BancoParaAbrir() {
    TDialogoDeArquivo dialogo("Banco de dados", {}, "Banco do Firebird (*.fdb *.gdb);;Todos os arquivos (*)");
    dialogo.setFileMode(QFileDialog::ExistingFile);
    return dialogo.Escolhido();
}

QString TDialogosQt::ArquivoParaGravar(const QString& proposto, const QStringList& tipos) {
    TDialogoDeArquivo dialogo("Salvar", {}, tipos.isEmpty() ? "Todos os arquivos (*)" : tipos.join(";;"));
    dialogo.setAcceptMode(QFileDialog::AcceptSave);
    const auto extensao = [&](const QString& tipo) {
        dialogo.setDefaultSuffix(tipo.section("*.", 1, 1).section(QRegularExpression("[ )]"), 0, 0));
    };
    QObject::connect(&dialogo, &QFileDialog::filterSelected, &dialogo, extensao);
    extensao(tipos.value(0));
    dialogo.selectFile(proposto);
    return dialogo.Escolhido();
}

QString TDialogosQt::Pasta(const QString& atual) {
    TDialogoDeArquivo dialogo("Pasta de backup", atual, {});
    dialogo.setFileMode(QFileDialog::Directory);
    dialogo.setOption(QFileDialog::ShowDirsOnly);
    return dialogo.Escolhido();
}

#ifdef _WIN32
static bool AbreMaximizado(const QString& arquivo) {
    const std::wstring nome = QDir::toNativeSeparators(arquivo).toStdWString();
    constexpr INT_PTR kUltimoErro = 32;
    return reinterpret_cast<INT_PTR>(ShellExecuteW(GetActiveWindow(), L"open", nome.c_str(), nullptr, nullptr,
                                                   SW_SHOWMAXIMIZED)) > kUltimoErro;
}
#else
static bool AbreMaximizado(const QString& arquivo) {  // how wide is the window manager's business
    return QDesktopServices::openUrl(QUrl::fromLocalFile(arquivo));
}
#endif

void TDialogosQt::Abre(const QString& arquivo) {
    if (!AbreMaximizado(arquivo))
        Erro("Não foi possível abrir " + arquivo + ": nenhum programa instalado abre este tipo de arquivo.");
}

#ifdef WKD_IMPRESSORA
void TDialogosQt::Imprime(const QString& titulo, const QTextDocument& documento) {
    QPrinter impressora(QPrinter::HighResolution);
    impressora.setDocName(titulo);
    QPrintDialog dialogo(&impressora, JanelaNaFrente());
    dialogo.setWindowTitle("Imprimir");
    if (dialogo.exec() == QDialog::Accepted) documento.print(&impressora);
}
#else
/// As pages that the desktop's own viewer prints.
void TDialogosQt::Imprime(const QString& titulo, const QTextDocument& documento) {
    const QString nome = ArquivoParaGravar("plano.pdf", {"PDF (*.pdf)"});
    if (nome.isEmpty()) return;
    QByteArray paginas;
    {
        QBuffer memoria(&paginas);
        memoria.open(QIODevice::WriteOnly);
        QPdfWriter pdf(&memoria);
        pdf.setTitle(titulo);
        documento.print(&pdf);
    }
    if (GravaArquivo(*this, nome, paginas)) Abre(nome);
}
#endif

bool GravaArquivo(IDialogos& dialogos, const QString& nome, const QByteArray& conteudo) {
    QSaveFile arquivo(nome);
    if (arquivo.open(QIODevice::WriteOnly) && arquivo.write(conteudo) == conteudo.size() && arquivo.commit())
        return true;
    dialogos.Erro("Não foi possível gravar " + nome + ": " + arquivo.errorString());
    return false;
}

}  // namespace wkd
