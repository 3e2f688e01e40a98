#include <qpa/qwindowsysteminterface.h>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDate>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QStackedWidget>
#include <QTableWidget>
#include <algorithm>
#include <cstring>
#include <fstream>

#include "Arquivos.h"
#include "JanelaApoio.h"
#include "Linhas.h"
#include "Portas.h"
#include "Retrato.h"
#include "ServidorFirebird.h"
#include "widgets/EstiloAmetista.h"

namespace wkd {
namespace {

class JanelaTest : public ::testing::Test {
  protected:
    JanelaTest() { Abre({}); }

    void Abre(TInicio inicio) {
        janela_.reset();
        janela_ = std::make_unique<TJanelaDeTeste>(instalacao_, std::move(inicio));
        janela_->Mostra();
    }
    template <class T>
    T& C(const char* nome) {
        return janela_->C<T>(nome);
    }
    void Clica(const char* nome) {
        C<QPushButton>(nome).click();
        janela_->Serve();
    }
    void EscolheAlias(const char* nome) {
        auto& edAlias = C<QComboBox>("edAlias");
        edAlias.setCurrentIndex(edAlias.findText(nome));
        edAlias.showPopup();
        edAlias.hidePopup();
        janela_->Serve();
        janela_->Janela().activateWindow();
        janela_->Serve();
    }
    void EscolhePacote() { C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao_.Pacote())); }
    void VaiAsOpcoes() {
        EscolheAlias("LOJA");
        EscolhePacote();
        Clica("btProximo");
        Clica("btProximo");
        ASSERT_EQ(Onde(), "opcoes: Opções de Atualização");
    }
    /// "page: title", and the buttons that can be pressed behind it when asked for.
    std::string Onde() {
        return S(C<QStackedWidget>("ntAtualiza").currentWidget()->objectName() + ": " + C<QLabel>("lblTitulo").text());
    }
    std::string Botoes() {
        std::string texto;
        for (const char* nome : {"btVoltar", "btProximo", "btSair"})
            if (C<QPushButton>(nome).isEnabled()) texto += S(C<QPushButton>(nome).text()) + " ";
        return texto;
    }
    /// Names of the controls that Tab visits from this one to the last button of the window.
    std::string OrdemDoTab(const char* primeiro) {
        C<QWidget>(primeiro).setFocus();
        std::string ordem;
        for (QWidget* controle = nullptr; (controle = janela_->Janela().focusWidget()) != nullptr;) {
            ordem += S(controle->objectName());
            if (controle->objectName() == "btSair") break;
            ordem += " ";
            QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
            QApplication::sendEvent(controle, &tab);
        }
        return ordem;
    }
    /// As the system would tell of them.
    void TeclaNaJanela(Qt::Key tecla) {
        for (const auto tipo : {QEvent::KeyPress, QEvent::KeyRelease})
            QWindowSystemInterface::handleKeyEvent(janela_->Janela().windowHandle(), tipo, tecla, Qt::NoModifier);
    }
    void TocaNa(QWidget& controle) {
        const QPointF onde = controle.mapTo(&janela_->Janela(), controle.rect().center());
        for (const auto botoes : {Qt::LeftButton, Qt::NoButton})
            QWindowSystemInterface::handleMouseEvent(
                janela_->Janela().windowHandle(), onde, janela_->Janela().mapToGlobal(onde), botoes, Qt::LeftButton,
                botoes == Qt::NoButton ? QEvent::MouseButtonRelease : QEvent::MouseButtonPress);
    }
    std::vector<std::string>& Informacoes() { return janela_->dialogos.informacoes; }

    TInstalacao instalacao_;
    std::unique_ptr<TJanelaDeTeste> janela_;
};

TEST_F(JanelaTest, StartsAsDesigned) {
    EXPECT_EQ(janela_->Janela().windowTitle(), "AtualizaWKD v7.17");
    EXPECT_EQ(janela_->Janela().size(), QSize(683, 428));
    EXPECT_EQ(Onde(), "alias: Definir Alias que será atualizado");
    EXPECT_EQ(Botoes(), "&Próximo &Sair ");
    EXPECT_EQ(C<QComboBox>("edAlias").count(), 2);  // MENU is not offered
    EXPECT_EQ(C<QComboBox>("edAlias").currentIndex(), -1);
    EXPECT_EQ(C<QComboBox>("edAlias").toolTip(), QCaminho(instalacao_.Pasta() / "WKD.ini"));
    EXPECT_TRUE(C<QTableWidget>("gridUsuariosOnline").isHidden());
    EXPECT_EQ(C<QLabel>("lblAtual").text(), "Parado.");
    for (const char* sem : {"btAlterarAlias", "btReler", "btLiberar"})
        EXPECT_FALSE(C<QPushButton>(sem).isEnabled()) << sem;
    for (const char* escondido : {"btAtualizar", "btPlano", "Button1", "btRelatoriosBkp"})
        EXPECT_TRUE(C<QPushButton>(escondido).isHidden()) << escondido;
    EXPECT_TRUE(C<QLineEdit>("url").isHidden());
    EXPECT_TRUE(C<QPlainTextEdit>("MemoLog").isHidden());
}

TEST_F(JanelaTest, EveryControlIsReachedByKeyboardAndHasANameToRead) {
    int lidos = 0;
    for (QWidget* controle : janela_->Janela().findChildren<QWidget*>()) {
        const bool interno = controle->objectName().isEmpty() || controle->objectName().startsWith("qt_");
        if (interno || controle->focusPolicy() == Qt::NoFocus) continue;
        const auto* lido = QAccessible::queryAccessibleInterface(controle);
        ASSERT_NE(lido, nullptr);
        EXPECT_FALSE(lido->text(QAccessible::Name).isEmpty()) << S(controle->objectName());
        ++lidos;
    }
    EXPECT_GT(lidos, 25);
}

/// Gives the application another font until the end of the scope.
class TFonteDeTeste {
  public:
    explicit TFonteDeTeste(int pontos) : antes_(QApplication::font()) {
        QFont fonte = antes_;
        fonte.setPointSize(pontos);
        QApplication::setFont(fonte);
    }
    ~TFonteDeTeste() { QApplication::setFont(antes_); }

  private:
    QFont antes_;
};

/// How many captions and buttons of the window were looked at; all are to be whole, and inside it.
int LegendasInteiras(const QWidget& janela, int pontos) {
    int vistos = 0;
    for (QWidget* controle : janela.findChildren<QWidget*>()) {
        const auto* rotulo = qobject_cast<QLabel*>(controle);
        const bool botao = qobject_cast<QAbstractButton*>(controle) != nullptr;
        const bool inteiro = rotulo && !rotulo->wordWrap() && !rotulo->text().isEmpty() &&
                             rotulo->sizePolicy().horizontalPolicy() != QSizePolicy::Ignored;
        const bool proprio = !controle->objectName().startsWith("qt_") && controle->window() == &janela;
        if (!controle->isVisible() || !proprio || (!botao && !inteiro)) continue;
        ++vistos;
        const QSize cabe = botao && controle->maximumWidth() < 90 ? controle->size() : controle->sizeHint();
        EXPECT_GE(controle->width(), cabe.width()) << pontos << " points: " << S(controle->objectName());
        EXPECT_GE(controle->height(), controle->sizeHint().height()) << pontos << S(controle->objectName());
        const QRect onde(controle->mapTo(&janela, QPoint()), controle->size());
        EXPECT_TRUE(janela.rect().contains(onde)) << pontos << S(controle->objectName());
    }
    return vistos;
}

TEST_F(JanelaTest, NoCaptionIsCutWhateverTheFont) {
    for (const int pontos : {9, 11, 14, 18}) {
        const TFonteDeTeste fonte(pontos);
        Abre({"LOJA;nobkp", {}});
        EscolhePacote();
        for (int pagina = 0; pagina < 5; ++pagina) {
            if (pagina > 0) Clica("btProximo");
            EXPECT_GT(LegendasInteiras(janela_->Janela(), pontos), 6) << Onde();
        }
        EXPECT_EQ(janela_->Janela().width() > 683, pontos > 9) << pontos;
        Clica("btPlano");
        QWidget& plano = *C<QPlainTextEdit>("mPlano").window();
        EXPECT_GE(LegendasInteiras(plano, pontos), 4);
        EXPECT_TRUE(janela_->Janela().screen()->availableGeometry().contains(plano.frameGeometry()));
    }
}

TEST_F(JanelaTest, TheOpenWindowFollowsTheDesktopsTheme) {
    const auto volta = qScopeGuard([antes = qgetenv("GTK_THEME")] { qputenv("GTK_THEME", antes); });
    qputenv("GTK_THEME", "Adwaita");
    Aplicacao().setStyle(new TEstiloAmetista);
    Abre({});
    C<QPlainTextEdit>("Memo2").setPlainText("Erro");
    const auto tons = [this] {
        const QImage imagem = janela_->Janela().grab().toImage();
        return std::vector{imagem.pixelColor(2, 2), imagem.pixelColor(2, imagem.height() - 2), imagem.pixelColor(2, 80),
                           C<QPlainTextEdit>("Memo2").palette().color(QPalette::Text)};
    };
    std::vector<std::vector<QColor>> vistos;
    for (const char* tema : {"Adwaita", "Adwaita-dark", "Adwaita"}) {
        qputenv("GTK_THEME", tema);
        QWindowSystemInterface::handleThemeChange();
        janela_->Serve();
        EXPECT_EQ(Cores().fundo.lightness() < 128, QString(tema).endsWith("dark"));
        EXPECT_EQ(tons(), (std::vector{Cores().ametista, Cores().faixaDosBotoes, Cores().fundo, Cores().vermelho}))
            << tema;
        vistos.push_back(tons());
    }
    for (std::size_t i = 0; i < vistos[0].size(); ++i) EXPECT_NE(vistos[0][i], vistos[1][i]) << i;
}

TEST_F(JanelaTest, TheWindowStandsInTheMiddleOfTheScreen) {
    const QRect tela = janela_->Janela().screen()->availableGeometry();
    const QPoint longe = janela_->Janela().frameGeometry().center() - tela.center();
    EXPECT_LE(longe.manhattanLength(), 2);
}

TEST_F(JanelaTest, EveryEditHasALabelThatNamesIt) {
    QSet<const QWidget*> nomeados;
    for (const QLabel* rotulo : janela_->Janela().findChildren<QLabel*>()) nomeados.insert(rotulo->buddy());
    for (const char* nome : {"edAlias", "edCaminhoBanco", "edCaminhoBackup", "edServerRest", "edBancoRest",
                             "edAtualizacao", "mListaTabelas", "Memo1", "Memo2"})
        EXPECT_TRUE(nomeados.contains(&C<QWidget>(nome))) << nome;
}

TEST_F(JanelaTest, TabFollowsThePageAndAcceleratorsAreUnambiguous) {
    Abre({"LOJA;nobkp", {}});
    EscolhePacote();
    const char* esperados[] = {
        "edAlias btNovoAlias btAlterarAlias edCaminhoBanco btReler gridUsuariosOnline btLog btProximo btSair",
        "edCaminhoBackup SpeedButton4 edServerRest cbRestaurar edBancoRest edRelatoriosBkp SpeedButton5 Button2 btLog "
        "btVoltar btProximo btSair",
        "edAtualizacao SpeedButton3 btLog btVoltar btProximo btSair",
        "cbAtualizaTodas cbCompleto chkQuerysAnteriores chkQuerysPosteriores cbTabela edTabela BitBtn1 mListaTabelas "
        "rgModoAtualizacao0 btLog btVoltar btProximo btSair",
        "cbComBackup btPlano btEnsaio Memo1 Memo2 btLog btVoltar btProximo btSair",
    };
    for (const char* esperado : esperados) {
        if (Onde().starts_with("opcoes")) C<QCheckBox>("cbTabela").click();
        EXPECT_EQ(OrdemDoTab(std::string(esperado, std::strcspn(esperado, " ")).c_str()), esperado) << Onde();
        std::string letras;
        for (const QPushButton* botao : janela_->Janela().findChildren<QPushButton*>())
            if (botao->isVisible() && botao->text().contains('&'))
                letras += botao->text().section('&', 1).left(1).toStdString();
        std::ranges::sort(letras);
        EXPECT_EQ(std::ranges::adjacent_find(letras), letras.end()) << letras;
        if (!Onde().starts_with("status")) Clica("btProximo");
    }
}

TEST_F(JanelaTest, ControlsOutOfSightDoTheirWorkToo) {
    auto& arquivos = C<QListWidget>("FBArquivo");
    EXPECT_TRUE(arquivos.isHidden());
    const auto pacote = instalacao_.Pasta() / "pacote";
    std::filesystem::create_directory(pacote);
    for (const char* nome : {"b.WKD", "a.wkd", "c.rtm"}) std::ofstream(pacote / nome) << ".";
    janela_->Tela().PastaDoPacote(pacote);
    janela_->Tela().Descarrega();
    ASSERT_EQ(arquivos.count(), 2);
    EXPECT_EQ(arquivos.item(0)->text() + arquivos.item(1)->text(), "a.wkdb.WKD");
    EXPECT_EQ(C<QListWidget>("DirectoryListBox1").item(C<QListWidget>("DirectoryListBox1").count() - 1)->text(),
              "pacote");

    Clica("Button1");  // nothing is loaded yet
    EXPECT_EQ(C<QLabel>("lblAtual").text(), "Verificando indices primarios...");
    EscolheAlias("LOJA");
    EscolhePacote();
    janela_->dialogos.aoInformar = [this] {
        instalacao_.Conexao()->ExecuteDirect("alter table TVENDA drop constraint PK_TVENDA");
    };
    Clica("btAtualizar");
    janela_->dialogos.aoInformar = [] {};
    Informacoes().clear();
    Clica("Button1");  // the run has closed its connection
    EXPECT_EQ(Informacoes().size(), 1u);
    EXPECT_TRUE(instalacao_.Conexao()->ChavePrimaria("TVENDA").colunas.empty());
    EscolheAlias("LOJA");
    Clica("Button1");
    EXPECT_EQ(instalacao_.Conexao()->ChavePrimaria("TVENDA").colunas, std::vector<std::string>{"NUMERO"});
}

TEST_F(JanelaTest, OnceThereIsAPackageThePlanIsShownAndNothingChanges) {
    VaiAsOpcoes();
    EXPECT_TRUE(C<QPushButton>("btPlano").isHidden());
    C<QCheckBox>("cbTabela").click();
    C<QPlainTextEdit>("mListaTabelas").setPlainText("TVENDA");
    Clica("btProximo");
    ASSERT_TRUE(C<QPushButton>("btPlano").isVisible());
    const std::string antes = Retrato(*instalacao_.Conexao());
    Clica("btPlano");
    const QString plano = C<QPlainTextEdit>("mPlano").toPlainText();
    EXPECT_TRUE(plano.contains("-/+ TVENDA (tipo de DATA_VENDA muda de ftDate para ftDateTime)")) << S(plano);
    EXPECT_FALSE(plano.contains("TCLI_CON")) << S(plano);
    EXPECT_TRUE(plano.contains("Resumo: ")) << S(plano);
    EXPECT_EQ(Diferencas(antes, Retrato(*instalacao_.Conexao())), "");
    EXPECT_EQ(Botoes(), "&Voltar Atualizar &Sair ");
}

TEST_F(JanelaTest, ThePlanIsReadFromItsTopAndSearched) {
    VaiAsOpcoes();
    Clica("btProximo");
    Clica("btPlano");
    auto& plano = C<QPlainTextEdit>("mPlano");
    const QString inteiro = plano.toPlainText();
    EXPECT_TRUE(inteiro.startsWith("Plano da atualização de LOJA com ")) << S(inteiro);
    plano.window()->resize(plano.window()->minimumSizeHint());
    janela_->Serve();
    EXPECT_GT(plano.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(plano.verticalScrollBar()->value(), 0);
    EXPECT_TRUE(plano.isReadOnly());

    auto& filtro = C<QLineEdit>("edFiltroDoPlano");
    const auto achado = [&](const char* texto) {
        filtro.setText(texto);
        return S(plano.toPlainText() + "|" + C<QLabel>("lblLinhasDoPlano").text());
    };
    EXPECT_EQ(achado(" ncm "), "~ TPRODUTO (versão 4 para 5)\n    + NCM: varchar(8)|2 linhas") << "under its table";
    EXPECT_TRUE(achado("tvenda (")
                    .starts_with("-/+ TVENDA (tipo de DATA_VENDA muda de ftDate para ftDateTime)\n    ~ "
                                 "DATA_VENDA: date -> timestamp\n    os registros vão para BTVENDA"));
    EXPECT_EQ(achado("nem isto nem aquilo"), "|nenhuma linha");
    EXPECT_EQ(achado("  "), S(inteiro) + "|");

    Clica("btPlano");  // planned anew: the window of the old plan is gone
    EXPECT_EQ(janela_->Janela().findChildren<QPlainTextEdit*>("mPlano").size(), 1);
}

TEST_F(JanelaTest, ThePlanIsKeptInTheFormOfItsExtensionAndPrinted) {
    VaiAsOpcoes();
    Clica("btProximo");
    Clica("btPlano");
    const QString inteiro = C<QPlainTextEdit>("mPlano").toPlainText();
    C<QLineEdit>("edFiltroDoPlano").setText("TVENDA");  // of what is shown, not of what is kept
    const std::pair<const char*, std::string> formas[] = {{"plano.txt", S(inteiro)},
                                                          {"plano", S(inteiro)},
                                                          {"plano.HTML", "<!DOCTYPE html>"},
                                                          {"plano.sql", "-- Plano da atualização de LOJA"},
                                                          {"plano.json", "{\n  \"formato\": 1,"}};
    for (const auto& [nome, inicio] : formas) {
        janela_->dialogos.arquivo = QCaminho(instalacao_.Pasta() / nome);
        Clica("btSalvarPlano");
        EXPECT_TRUE(LeArquivo(instalacao_.Pasta() / nome).starts_with(inicio)) << nome;
    }
    EXPECT_EQ(janela_->dialogos.proposto, "plano.txt");
    EXPECT_TRUE(janela_->dialogos.erros.empty());
    janela_->dialogos.arquivo = "/nenhuma/plano.txt";
    Clica("btSalvarPlano");
    EXPECT_EQ(janela_->dialogos.erros.size(), 1u) << "said, not passed over";
    Clica("btImprimirPlano");
    EXPECT_EQ(janela_->dialogos.impresso, inteiro);
    Clica("btFecharPlano");
    EXPECT_EQ(janela_->Janela().findChild<QPlainTextEdit*>("mPlano"), nullptr);
}

TEST_F(JanelaTest, WalksForthAndBackWithoutTheBackupPage) {
    EscolheAlias("LOJA");
    Clica("btProximo");
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
    EXPECT_EQ(Botoes(), "&Voltar &Próximo &Sair ");
    EscolhePacote();
    Clica("btProximo");
    EXPECT_EQ(Onde(), "opcoes: Opções de Atualização");
    Clica("btProximo");
    EXPECT_EQ(Onde(), "status: Status");
    EXPECT_EQ(Botoes(), "&Voltar Atualizar &Sair ");
    Clica("btVoltar");
    EXPECT_EQ(Onde(), "opcoes: Opções");
    EXPECT_EQ(Botoes(), "&Voltar &Próximo &Sair ");
    Clica("btVoltar");
    EXPECT_EQ(Onde(), "atualizacao: Atualização");
    Clica("btVoltar");
    EXPECT_EQ(Onde(), "alias: Definir Alias que será atualizado");
    EXPECT_EQ(Botoes(), "&Próximo &Sair ");
}

TEST_F(JanelaTest, TheCommandLineChoosesTheAliasAndTheBackupPage) {
    Abre({"loja;NoBkp", {}});
    EXPECT_EQ(C<QComboBox>("edAlias").currentText(), "LOJA");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "0");
    Clica("btProximo");
    EXPECT_EQ(Onde(), "backup: Backup/Restauração");
    const QString pasta = QCaminho(instalacao_.Pasta()) + "/";
    auto& restaurar = C<QCheckBox>("cbRestaurar");
    EXPECT_EQ(C<QLineEdit>("edBancoRest").text(), "c:\\hbn\\dados\\rst\\hbn.fdb");
    restaurar.click();
    EXPECT_EQ(C<QLineEdit>("edBancoRest").text(), pasta + "loja.fdb");
    EXPECT_TRUE(C<QPushButton>("btRestauraBackup").isEnabled());
    restaurar.click();
    EXPECT_EQ(C<QLineEdit>("edBancoRest").text(), pasta + "LOJA_res.fdb");
    EXPECT_TRUE(C<QPushButton>("btExecutaBackup").isEnabled());
    EXPECT_FALSE(C<QPushButton>("btRestauraBackup").isEnabled());

    std::filesystem::copy(std::string(WKD_EXEMPLOS) + "/pacote/Clientes.rtm", instalacao_.Pasta());
    janela_->dialogos.arquivo = pasta + "rel.zip";
    Clica("SpeedButton5");
    Clica("btRelatoriosBkp");
    EXPECT_TRUE(std::filesystem::exists(instalacao_.Pasta() / "rel.zip"));
    Clica("btProximo");
    Clica("btVoltar");
    EXPECT_EQ(Onde(), "alias: Definir Alias que será atualizado");

    Abre({"LOJA", {}});  // without ";" no alias
    EXPECT_EQ(C<QComboBox>("edAlias").currentIndex(), -1);
    Abre({"NENHUM;", {}});
    EXPECT_EQ(Informacoes(), std::vector<std::string>{"Não foi possível convetar ao banco, favor informar um alias "
                                                      "válido ou verifique as configurações do mesmo"});
    EXPECT_FALSE(janela_->Janela().isVisible());
}

TEST_F(JanelaTest, TheBackupPageBacksUpProvesAndBringsBack) {
    namespace fs = std::filesystem;
    Abre({"LOJA;nobkp", {}});
    Clica("btProximo");
    EXPECT_FALSE(C<QPushButton>("btExecutaBackup").isEnabled());
    const fs::path pasta = instalacao_.Pasta() / "backups", copia = instalacao_.Pasta() / "LOJA_res.fdb";
    fs::create_directory(pasta);
    janela_->dialogos.arquivo = QCaminho(pasta);
    Clica("SpeedButton4");
    Clica("btExecutaBackup");
    ASSERT_EQ(Informacoes().size(), 1u);
    ASSERT_TRUE(Informacoes()[0].starts_with("Backup feito: ")) << Informacoes()[0];
    EXPECT_EQ(C<QLineEdit>("edBancoRest").text(), QCaminho(copia));
    Clica("btRestauraBackup");
    ASSERT_EQ(Informacoes().size(), 2u);
    EXPECT_TRUE(Informacoes()[1].starts_with("O backup é bom")) << Informacoes()[1];
    EXPECT_TRUE(fs::exists(copia));
    Clica("btRestauraBackup");  // the copy exists, and nobody says that it may go
    EXPECT_EQ(Informacoes().size(), 2u);
    EXPECT_EQ(janela_->dialogos.perguntas.size(), 1u);

    fs::path arquivo;
    for (const auto& entrada : fs::directory_iterator(pasta))
        if (entrada.path().extension() == ".fbk") arquivo = entrada.path();
    janela_->dialogos.arquivo = QCaminho(arquivo);
    C<QCheckBox>("cbRestaurar").click();
    Clica("btRestauraBackup");  // asked, and not wanted
    EXPECT_FALSE(fs::exists(instalacao_.Pasta() / "LOJA_antes.fdb"));
    janela_->dialogos.respostas = {true};
    Clica("btRestauraBackup");
    ASSERT_EQ(Informacoes().size(), 3u);
    EXPECT_NE(Informacoes()[2].find("guardado, inteiro, em"), std::string::npos) << Informacoes()[2];
    EXPECT_TRUE(fs::exists(instalacao_.Pasta() / "LOJA_antes.fdb"));
    EXPECT_TRUE(C<QPushButton>("btProximo").isEnabled());
}

TEST_F(JanelaTest, ACancelledBackupLeavesNothing) {
    Abre({"LOJA;nobkp", {}});
    Clica("btProximo");
    C<QLineEdit>("edCaminhoBackup").setText(QCaminho(instalacao_.Pasta() / "tmp"));
    std::filesystem::create_directory(instalacao_.Pasta() / "tmp");
    C<QCheckBox>("cbRestaurar").click();
    C<QCheckBox>("cbRestaurar").click();
    QTimer relogio;
    QObject::connect(&relogio, &QTimer::timeout, [&] {
        if (auto& cancelar = C<QPushButton>("btCancelar"); cancelar.isVisible()) cancelar.click();
    });
    relogio.start(1);
    Clica("btExecutaBackup");
    ASSERT_EQ(Informacoes().size(), 1u);
    const bool cancelado = Informacoes()[0] == "Cancelado: nada foi gravado.";
    EXPECT_EQ(std::filesystem::is_empty(instalacao_.Pasta() / "tmp"), cancelado) << Informacoes()[0];
    EXPECT_FALSE(C<QPushButton>("btCancelar").isVisible());
}

TEST_F(JanelaTest, ShowsTheConnectedUsersOfAnAlias) {
    instalacao_.Conexao()->ExecuteDirect("update csenha set flag1 = 1 where codigo = 2");
    EscolheAlias("LOJA");
    auto& grade = C<QTableWidget>("gridUsuariosOnline");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "1");
    ASSERT_EQ(grade.rowCount(), 1);
    EXPECT_TRUE(grade.isVisible());
    EXPECT_EQ(grade.item(0, 0)->text() + grade.item(0, 1)->text(), "João ConceiçãoVendas");
    EXPECT_TRUE(C<QLineEdit>("edCaminhoBanco").text().endsWith("loja.fdb"));

    EscolheAlias("QUEBRADO");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "-1 (Versão HBN3)");
    EXPECT_TRUE(grade.isHidden());
    EXPECT_TRUE(C<QLineEdit>("edCaminhoBanco").text().endsWith("nenhum.fdb"));
    EXPECT_TRUE(Informacoes().empty());
    Clica("btProximo");
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
}

TEST_F(JanelaTest, AConnectionThatFailsSaysItsCauseAndWhatToDo) {
    const auto fechada = "127.0.0.1/" + std::to_string(PortaLivre());
    const struct {
        const char *tipo, *host, *database;
        const char *causa, *providencia;
    } casos[] = {
        {"tbInterbase", "", "nenhum.fdb", "O banco de dados não foi encontrado", "Corrija o caminho e o nome do banco"},
        {"tbInterbase", "", "WKD.ini", "O arquivo não é um banco de dados", "Confira o arquivo que o alias indica"},
        {"tbInterbase", "nenhum.invalid", "x", "A rede não conhece um servidor", "Corrija o nome do servidor"},
        {"tbInterbase", fechada.c_str(), "x", "O servidor não respondeu", "Confira o servidor e a rede"},
        {"tbSQLServer", "127.0.0.1,1", "x", "O servidor não respondeu", "Confira o servidor e a rede"},
        {"tbSQLServer", "nenhum.invalid", "x", "A rede não conhece um servidor", "Corrija o nome do servidor"},
        {"tbODBC", "NaoHa", "x", "Falta neste computador", "Instale o driver"},
        {"tbOracle", "", "x", "não tem driver", "Use um alias de tipo tbInterbase ou tbSQLServer"},
    };
    auto alias = instalacao_.Aliases().CarregaAlias("QUEBRADO");
    for (const auto& caso : casos) {
        alias.tipoBanco = caso.tipo;
        alias.hostname = caso.host;
        alias.database = caso.database;
        alias.driver = alias.tipoBanco == "tbSQLServer" ? "FreeTDS" : "";
        instalacao_.Aliases().AdicionaAlias(alias, false);
        EscolheAlias("QUEBRADO");
        const std::string dito = S(C<QPlainTextEdit>("mErroDoAlias").toPlainText());
        EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "-1 (Versão HBN3)");
        EXPECT_TRUE(C<QPlainTextEdit>("mErroDoAlias").isVisible());
        for (const char* parte : {caso.causa, caso.providencia})
            EXPECT_NE(dito.find(parte), std::string::npos) << parte << " in: " << dito;
    }
    EscolheAlias("LOJA");
    EXPECT_FALSE(C<QPlainTextEdit>("mErroDoAlias").isVisible());
}

TEST_F(JanelaTest, ADatabaseOfTheOlderGenerationIsToldFromOneThatDoesNotOpen) {
    instalacao_.Conexao()->ExecuteDirect("drop table csenha");
    EscolheAlias("LOJA");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "-1 (Versão HBN3)");
    EXPECT_TRUE(C<QPlainTextEdit>("mErroDoAlias").toPlainText().startsWith("Este banco é da geração anterior"));
}

TEST_F(JanelaTest, AConnectionThatHangsIsShownAndCanBeGivenUp) {
    const TPortaMuda porta;
    auto alias = instalacao_.Aliases().CarregaAlias("QUEBRADO");
    alias.hostname = "127.0.0.1/" + std::to_string(porta.Numero());
    instalacao_.Aliases().AdicionaAlias(alias, false);
    std::vector<std::string> vistos;
    QTimer pessoa;
    const std::function<void()> jeitos[] = {
        [&] { TocaNa(C<QPushButton>("btCancelar")); },
        [&] { TeclaNaJanela(Qt::Key_Escape); },
    };
    for (const auto& cancela : jeitos) {
        vistos.clear();
        QObject::connect(&pessoa, &QTimer::timeout, [&] {
            if (!C<QPushButton>("btCancelar").isVisible()) return;
            vistos.push_back(S(C<QFrame>("pnOcupado").accessibleName()));
            TocaNa(C<QPushButton>("btSair"));  // counts for nothing
            TeclaNaJanela(Qt::Key_Return);
            cancela();
        });
        pessoa.start(20);
        EscolheAlias("QUEBRADO");
        pessoa.stop();
        pessoa.disconnect();
        ASSERT_FALSE(vistos.empty());
        EXPECT_TRUE(vistos[0].starts_with("Conectando a QUEBRADO (127.0.0.1/")) << vistos[0];
        EXPECT_FALSE(C<QFrame>("pnOcupado").isVisible());
        EXPECT_TRUE(C<QPlainTextEdit>("mErroDoAlias").toPlainText().startsWith("A conexão foi cancelada."));
        EXPECT_EQ(Onde(), "alias: Definir Alias que será atualizado");
        EXPECT_TRUE(janela_->dialogos.perguntas.empty());
    }
    EscolheAlias("LOJA");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "0");
}

/// Fills the dialog's boxes in, each by its name, and presses its buttons in their order.
struct TPreenche {
    std::vector<std::pair<const char*, QString>> caixas;
    std::vector<const char*> botoes;
};

TEST_F(JanelaTest, AnAliasIsMadeTriedAndChangedInTheWindow) {
    std::vector<std::string> ditos;
    const auto no = [&](const char* abre, const TPreenche& preenche) {
        ditos.clear();
        QTimer pessoa;
        QObject::connect(&pessoa, &QTimer::timeout, [&] {
            QWidget* dialogo = QApplication::activeModalWidget();
            if (!dialogo) return;
            pessoa.stop();
            for (const auto& [nome, texto] : preenche.caixas) dialogo->findChild<QLineEdit*>(nome)->setText(texto);
            for (const char* botao : preenche.botoes) {
                dialogo->findChild<QPushButton*>(botao)->click();
                ditos.push_back(S(dialogo->findChild<QPlainTextEdit*>("mResultado")->toPlainText()));
            }
        });
        pessoa.start(20);
        Clica(abre);
    };
    const QString pasta = QCaminho(instalacao_.Pasta());
    no("btNovoAlias", {{{"edNomeDoAlias", "loja"}, {"edBanco", "loja.fdb"}}, {"btGravar", "btCancelarAlias"}});
    EXPECT_NE(ditos.at(0).find("Já existe"), std::string::npos) << ditos.at(0);
    EXPECT_FALSE(C<QPushButton>("btAlterarAlias").isEnabled()) << "none is chosen";
    no("btNovoAlias",
       {{{"edNomeDoAlias", "FILIAL"}, {"edCaminho", pasta}, {"edUsuario", "SYSDBA"}}, {"btGravar", "btCancelarAlias"}});
    EXPECT_EQ(ditos.at(0), "Falta o banco de dados.");
    EXPECT_EQ(instalacao_.Aliases().ListaAlias(true), (std::vector<std::string>{"LOJA", "QUEBRADO"}));

    no("btNovoAlias",
       {{{"edNomeDoAlias", "FILIAL"}, {"edCaminho", pasta}, {"edBanco", "loja.fdb"}, {"edSenha", "segredo"}},
        {"btTestar", "btGravar"}});
    EXPECT_TRUE(ditos.at(0).starts_with("Conectou: Firebird 3")) << ditos.at(0);
    EXPECT_EQ(instalacao_.Aliases().CarregaAlias("FILIAL").path, instalacao_.Pasta().string() + "/");
    EXPECT_EQ(C<QComboBox>("edAlias").currentText(), "FILIAL");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "0") << "it is open";

    EscolheAlias("LOJA");
    instalacao_.Aliases().INIGravaString("LOJA", "TempoLimite", "77");
    no("btAlterarAlias", {{{"edBanco", "nao_ha.fdb"}}, {"btTestar", "btGravar"}});
    EXPECT_NE(ditos.at(0).find("Corrija o caminho e o nome do banco"), std::string::npos) << ditos.at(0);
    for (const char* secao : {"LOJA", "MENU"})  // which is its copy
        EXPECT_EQ(instalacao_.Aliases().CarregaAlias(secao).database, "nao_ha.fdb") << secao;
    EXPECT_EQ(instalacao_.Aliases().INILeString("LOJA", "TempoLimite"), "77");
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "-1 (Versão HBN3)");
}

TEST_F(JanelaTest, WithoutAnyAliasTheFirstOneIsMadeAtOnce) {
    for (const char* nome : {"LOJA", "QUEBRADO"}) instalacao_.Aliases().RemoveAlias(nome);
    QString titulo;
    QTimer pessoa;
    QObject::connect(&pessoa, &QTimer::timeout, [&] {
        if (auto* dialogo = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            titulo = dialogo->windowTitle();
            dialogo->reject();
        }
    });
    pessoa.start(10);
    Abre({});
    QElapsedTimer espera;
    for (espera.start(); titulo.isEmpty() && espera.elapsed() < 30'000;) janela_->Serve();
    EXPECT_EQ(titulo, "Novo alias");
    EXPECT_TRUE(C<QPlainTextEdit>("mErroDoAlias").toPlainText().startsWith("Não há alias em "));
}

TEST_F(JanelaTest, AClickThatLeavesTheListGoesOnAtOnce) {
    EscolheAlias("LOJA");
    C<QComboBox>("edAlias").setFocus();
    janela_->Serve();
    ASSERT_TRUE(C<QComboBox>("edAlias").hasFocus());
    TocaNa(C<QPushButton>("btProximo"));
    janela_->Serve();
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
}

TEST_F(JanelaTest, TheLastUpdateOfTheAliasIsShown) {
    const auto ultima = [this] { return S(C<QLabel>("lblUltimaAtualizacao").text()); };
    EXPECT_EQ(ultima(), "");
    EscolheAlias("LOJA");
    EXPECT_EQ(ultima(), "nenhuma registrada");

    const auto pacote = instalacao_.Pasta() / "meio.zip";
    EscreveArquivo(pacote, "PK");
    C<QLineEdit>("edAtualizacao").setText(QCaminho(pacote));
    for (int i = 0; i < 4; ++i) Clica("btProximo");
    for (int i = 0; i < 3; ++i) Clica("btVoltar");
    ASSERT_TRUE(Onde().starts_with("alias")) << Onde();
    EXPECT_TRUE(ultima().find(", meio.zip, Encerrada antes da hora, ") != std::string::npos)
        << "behind the run: " << ultima();

    EscolhePacote();
    for (int i = 0; i < 4; ++i) Clica("btProximo");
    Abre({});
    EscolheAlias("QUEBRADO");
    EXPECT_EQ(ultima(), "nenhuma registrada") << "that was another one";
    EscolheAlias("LOJA");
    const std::string hoje = S(QDate::currentDate().toString("dd/MM/yyyy "));
    EXPECT_TRUE(ultima().starts_with(hoje) && ultima().ends_with(", pacote.zip, Concluída sem erros")) << ultima();

    for (const auto& guardado : std::filesystem::directory_iterator(instalacao_.Pasta() / "AtualizaWKD.historico"))
        EscreveArquivo(guardado.path(), "{");
    EscolheAlias("LOJA");
    EXPECT_TRUE(ultima().starts_with(hoje) && ultima().ends_with(", o relatório guardado não pode ser lido"));
    std::filesystem::remove_all(instalacao_.Pasta() / "AtualizaWKD.historico");
    EscolheAlias("LOJA");
    EXPECT_EQ(ultima(), "nenhuma registrada");
}

TEST_F(JanelaTest, UsersLeftBehindByACrashAreFreedAfterAQuestion) {
    instalacao_.Conexao()->ExecuteDirect("update csenha set flag1 = 1");
    const auto marcados = [&] { return Linhas(*instalacao_.Conexao(), "select codigo from csenha where flag1 > 0"); };
    EscolheAlias("LOJA");
    EXPECT_TRUE(C<QLabel>("lblConectados").text().endsWith("nenhuma")) << "nobody else can have the file open";
    const auto libera = [&](bool sim) {
        janela_->dialogos.respostas = {sim};
        Clica("btLiberar");
    };
    libera(false);
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "2");
    ASSERT_EQ(janela_->dialogos.perguntas.size(), 1u);
    EXPECT_NE(janela_->dialogos.perguntas[0].find("Administração, João Conceição"), std::string::npos);
    C<QTableWidget>("gridUsuariosOnline").selectRow(1);
    libera(true);
    EXPECT_EQ(janela_->dialogos.perguntas[1].find("Administração"), std::string::npos) << "it is not selected";
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "1");
    libera(true);
    EXPECT_EQ(C<QLabel>("lblNumUsuarios").text(), "0");
    EXPECT_FALSE(C<QPushButton>("btLiberar").isEnabled());
    EscolheAlias("QUEBRADO");  // lets the file go
    EXPECT_EQ(marcados(), "");
}

TEST_F(JanelaTest, TheConnectionsThatTheServerKnowsAreShownAndReadAgain) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    auto alias = instalacao_.Aliases().CarregaAlias("LOJA");
    alias.nome = "REDE";
    alias.hostname = TServidorFirebird::DoProcesso().Endereco();
    instalacao_.Aliases().AdicionaAlias(alias, false);
    const auto outra = [&] {
        auto conexao = std::make_unique<THBNConnection>(instalacao_.Aliases());
        conexao->SetAlias("REDE");
        conexao->Open();
        return conexao;
    };
    auto aberta = outra();
    Abre({"REDE;", {}});
    auto& grade = C<QTableWidget>("gridConectados");
    ASSERT_EQ(grade.rowCount(), 1);
    EXPECT_TRUE(grade.isVisible());
    EXPECT_EQ(grade.item(0, 0)->text(), "SYSDBA");
    EXPECT_TRUE(grade.item(0, 2)->text().contains("app_tests")) << S(grade.item(0, 2)->text());
    EXPECT_EQ(grade.item(0, 3)->text().left(2), "20") << S(grade.item(0, 3)->text());
    EXPECT_TRUE(C<QLabel>("lblConectados").text().endsWith(": 1"));
    aberta.reset();
    Clica("btReler");
    EXPECT_EQ(grade.rowCount(), 0);
    EXPECT_FALSE(grade.isVisible());
}

TEST_F(JanelaTest, NextWithoutAnAliasStaysOnThePage) {
    Clica("btProximo");
    EXPECT_EQ(Onde(), "alias: Definir Alias que será atualizado");
    EXPECT_TRUE(C<QPlainTextEdit>("mErroDoAlias").isVisible());
    EXPECT_EQ(janela_->Janela().focusWidget(), &C<QComboBox>("edAlias"));
    EscolheAlias("LOJA");
    EXPECT_FALSE(C<QPlainTextEdit>("mErroDoAlias").isVisible());
    Clica("btProximo");
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
}

TEST_F(JanelaTest, APackageThatDoesNotExistIsRefused) {
    EscolheAlias("LOJA");
    Clica("btProximo");
    auto& pacote = C<QLineEdit>("edAtualizacao");
    pacote.setText("/nao/existe.zip");
    Clica("btProximo");
    EXPECT_EQ(Informacoes(), std::vector<std::string>{"Arquivo de atualização não foi encontrado"});
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
    EXPECT_EQ(janela_->Janela().focusWidget(), &pacote);
    EXPECT_EQ(pacote.selectedText(), "/nao/existe.zip");
    janela_->dialogos.arquivo = QCaminho(instalacao_.Pacote());
    Clica("SpeedButton3");
    EXPECT_EQ(pacote.text(), QCaminho(instalacao_.Pacote()));
}

TEST_F(JanelaTest, TablesAreSelectedByName) {
    VaiAsOpcoes();
    auto& tabela = C<QComboBox>("edTabela");
    auto& lista = C<QPlainTextEdit>("mListaTabelas");
    EXPECT_GT(tabela.findText("TCLI_CON"), -1);
    EXPECT_EQ(tabela.findText("SATRIB"), -1);
    EXPECT_FALSE(tabela.isEnabled());
    C<QCheckBox>("cbTabela").click();
    EXPECT_TRUE(tabela.isEnabled() && lista.isEnabled());
    for (const char* nome : {"tcli_con", "TCLI_CON", "tnada"}) {
        tabela.setEditText(nome);
        Clica("BitBtn1");
    }
    lista.appendPlainText("tproduto");
    tabela.setEditText("TPRODUTO");
    Clica("BitBtn1");
    EXPECT_EQ(lista.toPlainText(), "TCLI_CON\ntproduto");
    EXPECT_EQ(Informacoes(), (std::vector<std::string>{"A tabela TCLI_CON já foi adicionada a lista de atualização.",
                                                       "A tabela TNADA não existe.",
                                                       "A tabela TPRODUTO já foi adicionada a lista de atualização."}));

    lista.setPlainText("TCLI_CON\ntproduto\nTVENDA");
    QTextCursor cursor = lista.textCursor();
    cursor.setPosition(12);  // inside the second line
    lista.setTextCursor(cursor);
    Clica("btTiraTabela");
    EXPECT_EQ(lista.toPlainText(), "TCLI_CON\nTVENDA");
    lista.selectAll();
    Clica("btTiraTabela");
    EXPECT_EQ(lista.toPlainText(), "");
    EXPECT_FALSE(C<QPushButton>("btTiraTabela").isEnabled());
    lista.setPlainText("TCLI_CON\ntproduto");
    tabela.completer()->setCompletionPrefix("ONTAS_");
    EXPECT_EQ(tabela.completer()->currentCompletion(), "TCONTAS_REC") << "found by what it contains";

    C<QRadioButton>("rgModoAtualizacao1").click();
    for (const char* todas : {"cbAtualizaTodas", "cbCompleto"}) {
        C<QCheckBox>(todas).click();
        EXPECT_FALSE(C<QCheckBox>("cbTabela").isChecked());
        EXPECT_FALSE(C<QCheckBox>("cbTabela").isEnabled());
        EXPECT_FALSE(C<QGroupBox>("rgModoAtualizacao").isEnabled());
        EXPECT_EQ(tabela.currentText(), "");
        EXPECT_TRUE(C<QRadioButton>("rgModoAtualizacao0").isChecked());
        EXPECT_EQ(lista.toPlainText(), "TCLI_CON\ntproduto");
        C<QCheckBox>(todas).click();
        EXPECT_TRUE(C<QCheckBox>("cbTabela").isEnabled());
        C<QCheckBox>("cbTabela").click();
        C<QRadioButton>("rgModoAtualizacao1").click();
    }
}

TEST_F(JanelaTest, EnterGoesOnButInTheTableBoxItAdds) {
    const auto enter = [&](QWidget& controle) {
        QKeyEvent tecla(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(&controle, &tecla);
        janela_->Serve();
    };
    EscolheAlias("LOJA");
    enter(C<QComboBox>("edAlias"));
    EscolhePacote();
    enter(C<QLineEdit>("edAtualizacao"));
    EXPECT_EQ(Onde(), "opcoes: Opções de Atualização");
    C<QCheckBox>("cbTabela").click();
    C<QComboBox>("edTabela").setEditText("TVENDA");
    enter(*C<QComboBox>("edTabela").lineEdit());
    EXPECT_EQ(Onde(), "opcoes: Opções de Atualização");
    EXPECT_EQ(C<QPlainTextEdit>("mListaTabelas").toPlainText(), "TVENDA");
    C<QPushButton>("BitBtn1").setFocus();
    enter(C<QPushButton>("BitBtn1"));
    EXPECT_EQ(Informacoes().size(), 1u);  // already listed
    EXPECT_EQ(Onde(), "opcoes: Opções de Atualização");
}

/// Counts how often the page is filled: the list of users is hidden first.
class TContaPreenchimentos : public QObject {
  public:
    explicit TContaPreenchimentos(QObject& grade) { grade.installEventFilter(this); }
    int vezes = 0;

  protected:
    bool eventFilter(QObject*, QEvent* evento) override {
        vezes += evento->type() == QEvent::HideToParent;
        return false;
    }
};

TEST_F(JanelaTest, LeavingTheAliasPageFillsItOnce) {
    instalacao_.Conexao()->ExecuteDirect("update csenha set flag1 = 1 where codigo = 2");
    EscolheAlias("LOJA");
    C<QComboBox>("edAlias").setFocus();
    janela_->Serve();
    ASSERT_TRUE(C<QComboBox>("edAlias").hasFocus());
    TContaPreenchimentos conta(C<QTableWidget>("gridUsuariosOnline"));
    Clica("btProximo");
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
    EXPECT_EQ(conta.vezes, 1);
    Clica("btVoltar");
    C<QComboBox>("edAlias").setCurrentIndex(-1);
    C<QComboBox>("edAlias").setCurrentIndex(C<QComboBox>("edAlias").findText("LOJA"));
    conta.vezes = 0;
    Clica("btProximo");
    EXPECT_EQ(conta.vezes, 1);
}

TEST_F(JanelaTest, AWindowThatIsMinimisedFillsNothing) {
    instalacao_.Conexao()->ExecuteDirect("update csenha set flag1 = 1 where codigo = 2");
    EscolheAlias("LOJA");
    C<QComboBox>("edAlias").setFocus();
    janela_->Serve();
    ASSERT_TRUE(C<QComboBox>("edAlias").hasFocus());
    TContaPreenchimentos conta(C<QTableWidget>("gridUsuariosOnline"));
    janela_->Janela().showMinimized();
    janela_->Serve();
    janela_->Janela().hide();
    janela_->Janela().showNormal();
    janela_->Serve();
    EXPECT_EQ(conta.vezes, 0);
}

TEST_F(JanelaTest, WhatIsTypedWhileAConnectionIsOpenedGoesNowhere) {
    EscolheAlias("LOJA");
    EscolhePacote();
    Clica("btProximo");
    QTimer digita;
    int digitadas = 0;
    QObject::connect(&digita, &QTimer::timeout, [&] {  // only served while the window waits
        ++digitadas;
        TeclaNaJanela(Qt::Key_Return);
    });
    digita.start(0);
    C<QPushButton>("btProximo").click();
    digita.stop();
    janela_->Serve();
    EXPECT_GT(digitadas, 0);
    EXPECT_EQ(Onde(), "opcoes: Opções de Atualização");
}

TEST_F(JanelaTest, EditBoxesAreRememberedButThePackageIsNot) {
    C<QLineEdit>("edServerRest").setText("  ");
    C<QLineEdit>("edBancoRest").setText(" D:\\ação.fdb ");
    C<QLineEdit>("url").setText("http://x");
    EscolhePacote();
    janela_->Janela().close();
    Abre({});
    EXPECT_EQ(C<QLineEdit>("edServerRest").text(), "LocalHost");
    EXPECT_EQ(C<QLineEdit>("edBancoRest").text(), " D:\\ação.fdb ");
    EXPECT_EQ(C<QLineEdit>("url").text(), "http://x");
    EXPECT_EQ(C<QLineEdit>("edAtualizacao").text(), "");
    const TPreferencias gravadas(QCaminho(instalacao_.Pasta() / "preferencias.ini"));
    EXPECT_EQ(gravadas.Le("edAtualizacao"), QCaminho(instalacao_.Pacote()));
    EXPECT_EQ(gravadas.Le("edServerRest"), "  ");
}

TEST_F(JanelaTest, WhoeverIsFasterThanTheDrawingMissesNothing) {
    C<QLineEdit>("url").setText("http://x");
    janela_->Janela().close();
    const auto naoDesenhada = [this] {
        janela_ = std::make_unique<TJanelaDeTeste>(instalacao_);
        janela_->Janela().show();
        EXPECT_EQ(janela_->Janela().findChild<QLineEdit*>("url"), nullptr) << "before the first page is drawn";
    };
    naoDesenhada();
    janela_->Janela().close();
    naoDesenhada();
    auto& edAlias = C<QComboBox>("edAlias");
    edAlias.setCurrentIndex(edAlias.findText("LOJA"));
    C<QPushButton>("btProximo").click();
    EXPECT_EQ(Onde(), "atualizacao: Definir Alias que será atualizado");
    EXPECT_EQ(C<QLineEdit>("url").text(), "http://x") << "a window that nobody saw changes no preference";
}

TEST_F(JanelaTest, LeavingIsAskedFirst) {
    const auto escape = [&] {
        QKeyEvent tecla(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(&janela_->Janela(), &tecla);
    };
    Clica("btSair");
    escape();
    EXPECT_TRUE(janela_->Janela().isVisible());
    EXPECT_EQ(janela_->dialogos.perguntas, std::vector<std::string>(2, "Deseja sair do programa de atualização?"));
    EXPECT_FALSE(std::filesystem::exists(instalacao_.Pasta() / "AtualizaWKD.log"));
    janela_->dialogos.respostas = {true};
    escape();
    EXPECT_FALSE(janela_->Janela().isVisible());
    EXPECT_TRUE(std::filesystem::exists(instalacao_.Pasta() / "AtualizaWKD.log"));
    Abre({});
    Clica("btLog");
    EXPECT_EQ(janela_->dialogos.abertos, std::vector{QCaminho(instalacao_.Pasta() / "AtualizaWKD.log")});
}

}  // namespace
}  // namespace wkd
