// The real dialogs, as a person finds them.
#include <QAbstractButton>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>

#include "Arquivos.h"
#include "JanelaApoio.h"
#include "commands/Preferencias.h"
#include "widgets/Dialogos.h"

namespace wkd {
namespace {

/// Opens a dialog, hands it to `olha` once it is there, and closes what is still open afterwards.
template <class TAbre>
auto Com(TAbre&& abre, const std::function<void(QWidget&)>& olha) {
    QTimer::singleShot(50, [&] {
        QWidget* dialogo = QApplication::activeModalWidget();
        ASSERT_NE(dialogo, nullptr);
        olha(*dialogo);
        dialogo->close();
    });
    return abre();
}

std::string Textos(const QWidget& dialogo) {
    QStringList textos;
    for (const auto* botao : dialogo.findChildren<QAbstractButton*>())
        if (botao->isVisible()) textos += botao->text().remove('&');
    for (const auto* rotulo : dialogo.findChildren<QLabel*>()) textos += rotulo->text().remove('&');
    return S(textos.join('|') + "|");
}

void Digita(QWidget& alvo, Qt::Key tecla) {
    for (const auto tipo : {QEvent::ShortcutOverride, QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent evento(tipo, tecla, Qt::NoModifier, QKeySequence(tecla).toString().toLower());
        QApplication::sendEvent(&alvo, &evento);
    }
}

TEST(DialogosTest, QuestionsAreAnsweredInPortugueseAndNoIsTheSafeAnswer) {
    Aplicacao();
    TDialogosQt dialogos;
    const auto pergunta = [&] { return dialogos.Confirmacao("Deseja <b>sair</b>?"); };
    const auto aperta = [](const char* texto) {
        return [texto](QWidget& caixa) {
            EXPECT_TRUE(Textos(caixa).starts_with("Sim|Não|")) << Textos(caixa);
            EXPECT_NE(Textos(caixa).find("|Deseja <b>sair</b>?|"), std::string::npos) << "not shown as it is";
            for (auto* botao : caixa.findChildren<QAbstractButton*>())
                if (botao->text() == texto) botao->click();
        };
    };
    EXPECT_TRUE(Com(pergunta, aperta("Sim")));
    EXPECT_FALSE(Com(pergunta, aperta("Não")));
    EXPECT_FALSE(Com(pergunta, [](QWidget& caixa) { Digita(caixa, Qt::Key_Escape); }));
    EXPECT_FALSE(Com(pergunta, [](QWidget& caixa) { Digita(caixa, Qt::Key_Return); }));
    Com([&] { return dialogos.Informacao("Pronto"), 0; },
        [](QWidget& caixa) { EXPECT_TRUE(Textos(caixa).starts_with("OK|")) << Textos(caixa); });
    Com([&] { return dialogos.Erro("Falhou"), 0; },
        [](QWidget& caixa) {
            EXPECT_TRUE(Textos(caixa).starts_with("OK|")) << Textos(caixa);
            EXPECT_EQ(dynamic_cast<QMessageBox&>(caixa).icon(), QMessageBox::Critical);
        });
    EXPECT_EQ(Com([&] { return dialogos.Reconcilia("Erro"); },
                  [](QWidget& caixa) { EXPECT_TRUE(Textos(caixa).starts_with("Pular|")) << Textos(caixa); }),
              TAcaoReconcilia::Pula);
}

TEST(DialogosTest, FilesAreChosenInPortuguese) {
    FalaPortugues(Aplicacao());
    TDialogosQt dialogos;
    const TPastaTemporaria pasta;
    const auto volta = qScopeGuard([antes = QDir::currentPath()] { QDir::setCurrent(antes); });
    QDir::setCurrent(QCaminho(pasta.Caminho()));
    struct TCaso {
        std::function<QString()> abre;
        const char *botao, *tipo;
    };
    const TCaso casos[] = {
        {[&] { return dialogos.ArquivoParaAbrir(); }, "|Abrir|", "Arquivos zip (*.zip"},
        {[&] { return dialogos.BackupParaAbrir(); }, "|Abrir|", "Backup (*.gdk)"},
        {[&] { return dialogos.ArquivoParaGravar("AtualizaQueryErro.log", {}); }, "|Salvar|", "(*)"},
        {[&] { return dialogos.Pasta(QCaminho(pasta.Caminho())); }, "|Escolher|", ""},
    };
    for (const TCaso& caso : casos) {
        const QString escolhido = Com(caso.abre, [&](QWidget& dialogo) {
            EXPECT_NE(Textos(dialogo).find("|Cancelar|"), std::string::npos) << Textos(dialogo);
            EXPECT_NE(Textos(dialogo).find(caso.botao), std::string::npos) << Textos(dialogo);
            EXPECT_TRUE(dynamic_cast<QFileDialog&>(dialogo).nameFilters().value(0).contains(caso.tipo));
        });
        EXPECT_EQ(escolhido, "") << "cancelled";
    }
    const QString gravar = Com(casos[2].abre, [](QWidget& dialogo) {
        EXPECT_EQ(dialogo.findChild<QLineEdit*>("fileNameEdit")->text(), "AtualizaQueryErro.log");
        dynamic_cast<QDialog&>(dialogo).accept();
    });
    EXPECT_EQ(QDir(gravar).absolutePath(), QCaminho(pasta / "AtualizaQueryErro.log"));
}

TEST(DialogosTest, AFileGetsTheExtensionOfItsKind) {
    FalaPortugues(Aplicacao());
    TDialogosQt dialogos;
    const TPastaTemporaria pasta;
    const auto volta = qScopeGuard([antes = QDir::currentPath()] { QDir::setCurrent(antes); });
    QDir::setCurrent(QCaminho(pasta.Caminho()));
    const QStringList tipos = {"Texto (*.txt)", "Comandos SQL (*.sql)"};
    const auto escolhe = [&](const QString& nome, const QString& tipo) {
        return QFileInfo(Com([&] { return dialogos.ArquivoParaGravar("plano.txt", tipos); },
                             [&](QWidget& dialogo) {
                                 auto& arquivos = dynamic_cast<QFileDialog&>(dialogo);
                                 if (!tipo.isEmpty()) emit arquivos.filterSelected(tipo);
                                 dialogo.findChild<QLineEdit*>("fileNameEdit")->setText(nome);
                                 dynamic_cast<QDialog&>(dialogo).accept();
                             }))
            .fileName();
    };
    EXPECT_EQ(escolhe("a", {}), "a.txt");
    EXPECT_EQ(escolhe("a", tipos[1]), "a.sql");
    EXPECT_EQ(escolhe("a.html", tipos[1]), "a.html");
}

TEST(DialogosTest, PagesArePrintedFromAPortugueseDialog) {
    FalaPortugues(Aplicacao());
    TDialogosQt dialogos;
    const TPastaTemporaria pasta;
    const std::filesystem::path arquivo = pasta / "plano.pdf";
    QTextDocument documento;
    QStringList linhas;
    for (int i = 0; i < 200; ++i) linhas += "Linha " + QString::number(i);
    documento.setPlainText(linhas.join('\n'));
    Com([&] { return dialogos.Imprime("Plano", documento), 0; },
        [&](QWidget& dialogo) {
            auto& impressao = dynamic_cast<QPrintDialog&>(dialogo);
            EXPECT_NE(Textos(dialogo).find("|Cancelar|"), std::string::npos) << Textos(dialogo);
            EXPECT_EQ(impressao.printer()->docName(), "Plano");
            impressao.printer()->setOutputFileName(QCaminho(arquivo));
            impressao.done(QDialog::Accepted);
        });
    const std::string pdf = LeArquivo(arquivo);
    EXPECT_TRUE(pdf.starts_with("%PDF-"));
    EXPECT_TRUE(QString::fromLatin1(pdf).contains(QRegularExpression("/Count [3-6]\\s"))) << "pages";
}

}  // namespace
}  // namespace wkd
