// Pictures of every page of the window, on an installation made from the example: capturas FOLDER

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <iostream>

#include "../app/JanelaApoio.h"
#include "DialogosQt.h"
#include "EstiloAmetista.h"

using namespace wkd;

namespace {

class TCapturas {
  public:
    TCapturas(TJanelaDeTeste& janela, const QString& pasta) : janela_(janela), pasta_(pasta) { QDir().mkpath(pasta); }

    void Guarda(const QString& nome, QWidget& controle) {
        janela_.Serve();
        const QString arquivo = pasta_ + "/" + nome + ".png";
        if (!controle.grab().save(arquivo)) throw std::runtime_error("cannot write " + S(arquivo));
        std::cout << S(arquivo) << '\n';
    }
    void Guarda(const QString& nome) { Guarda(nome, janela_.Janela()); }
    void Proximo() { janela_.C<QPushButton>("btProximo").click(); }

  private:
    TJanelaDeTeste& janela_;
    QString pasta_;
};

void Fotografa(const QString& pasta) {
    TInstalacao instalacao;
    instalacao.Conexao()->ExecuteDirect("update csenha set flag1 = 1");
    TJanelaDeTeste janela(instalacao, {"LOJA;nobkp", {}});
    TCapturas capturas(janela, pasta);
    janela.Mostra();
    capturas.Guarda("alias");
    capturas.Proximo();
    janela.C<QPushButton>("Button2").click();
    capturas.Guarda("backup");
    capturas.Proximo();
    janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pacote()));
    capturas.Guarda("atualizacao");
    capturas.Proximo();
    janela.C<QCheckBox>("cbTabela").click();
    for (const char* tabela : {"TCLI_CON", "TPRODUTO"}) {
        janela.C<QComboBox>("edTabela").setEditText(tabela);
        janela.C<QPushButton>("BitBtn1").click();
    }
    capturas.Guarda("opcoes");
    janela.C<QCheckBox>("cbTabela").click();
    capturas.Proximo();
    instalacao.Conexao()->ExecuteDirect("update csenha set flag1 = 0");
    janela.dialogos.aoInformar = [&] { capturas.Guarda("status"); };
    capturas.Proximo();
    janela.Tela().MostraOcupado("Descompactando...", 40);
    janela.Tela().Descarrega();
    capturas.Guarda("ocupado");
    janela.Tela().EscondeOcupado();
    QTimer::singleShot(300, [&] {
        QWidget* caixa = QApplication::activeModalWidget();
        if (!caixa) throw std::runtime_error("no question");
        capturas.Guarda("pergunta", *caixa);
        caixa->close();
    });
    TDialogosQt().Confirmacao("Deseja sair do programa de atualização?");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "capturas PASTA\n";
        return 64;
    }
    Aplicacao().setStyle(new TEstiloAmetista);
    Fotografa(argv[1]);
}
