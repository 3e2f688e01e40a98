// Pictures of every page and dialog of the window, on an installation made from the example: capturas FOLDER

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <iostream>

#include "../app/JanelaApoio.h"
#include "Portas.h"
#include "commands/Preferencias.h"
#include "report/Historico.h"
#include "report/RelatorioDaExecucao.h"
#include "values/TextoDeData.h"
#include "widgets/Dialogos.h"
#include "widgets/EstiloAmetista.h"

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
        guardadas_ += nome;
    }
    /// What a moment was waited for that did not come has no picture.
    void Exige(const QStringList& nomes) const {
        for (const QString& nome : nomes)
            if (!guardadas_.contains(nome)) throw std::runtime_error("no picture " + S(nome));
    }
    /// The dialog that `abre` opens, which is closed again.
    void Guarda(const QString& nome, const std::function<void()>& abre) {
        QTimer::singleShot(500, [&] {
            QWidget* dialogo = QApplication::activeModalWidget();
            if (!dialogo) throw std::runtime_error("no dialog");
            Guarda(nome, *dialogo);
            dialogo->close();
        });
        abre();
    }
    void Guarda(const QString& nome) { Guarda(nome, janela_.Janela()); }
    void Proximo() { janela_.C<QPushButton>("btProximo").click(); }

  private:
    TJanelaDeTeste& janela_;
    QString pasta_;
    QStringList guardadas_;
};

/// Chooses an alias as from the list.
void Escolhe(TJanelaDeTeste& janela, const char* alias) {
    auto& lista = janela.C<QComboBox>("edAlias");
    lista.showPopup();
    lista.setCurrentIndex(lista.findText(alias));
    lista.hidePopup();
    janela.Serve();
}

/// A server that does not answer, and is given up; a database that is not there.
void FotografaEspera(const TInstalacao& instalacao, TJanelaDeTeste& janela, TCapturas& capturas) {
    const TPortaMuda porta;
    auto alias = instalacao.Aliases().CarregaAlias("QUEBRADO");
    alias.hostname = "127.0.0.1/" + std::to_string(porta.Numero());
    instalacao.Aliases().AdicionaAlias(alias, false);
    QTimer pessoa;
    QObject::connect(&pessoa, &QTimer::timeout, [&] {
        auto& cancelar = janela.C<QPushButton>("btCancelar");
        if (!cancelar.isVisible() || !cancelar.isEnabled()) return;
        capturas.Guarda("conectando");
        cancelar.click();
    });
    pessoa.start(20);
    Escolhe(janela, "QUEBRADO");
    pessoa.stop();
    alias.hostname = "";
    instalacao.Aliases().AdicionaAlias(alias, false);
    Escolhe(janela, "QUEBRADO");
    capturas.Guarda("sem-conexao");
    Escolhe(janela, "LOJA");
}

void Fotografa(const QString& pasta) {
    TInstalacao instalacao("loja");
    TEvidencia anterior;
    anterior.alias = "LOJA";
    anterior.pacote = "/pacotes/versao-7.16.zip";
    anterior.inicio = anterior.fim = LeDataHora("2026-08-03T09:12:00").value();
    anterior.termino = TFimDaAtualizacao::Concluida;
    GuardaNoHistorico(anterior, RelatorioEmJson(anterior), RelatorioEmHtml(anterior), instalacao.Pasta());
    instalacao.Conexao()->ExecuteDirect("update csenha set flag1 = 1");
    instalacao.Conexao()->ExecuteDirect(
        "execute block as declare i integer = 0; begin while (i < 700000) do begin insert into TCONTAS_REC (DOCUMENTO, "
        "PARCELA, VALOR) values ('N' || :i, 1, :i); i = i + 1; end end");
    TJanelaDeTeste janela(instalacao, {"LOJA;nobkp", {}});
    TCapturas capturas(janela, pasta);
    janela.Mostra();
    capturas.Guarda("alias");
    capturas.Guarda("novo-alias", [&] { janela.C<QPushButton>("btNovoAlias").click(); });
    FotografaEspera(instalacao, janela, capturas);
    capturas.Proximo();
    janela.C<QPushButton>("Button2").click();
    const auto backups = instalacao.Pasta() / "backups";
    std::filesystem::create_directory(backups);
    janela.C<QLineEdit>("edCaminhoBackup").setText(QCaminho(backups));
    janela.C<QCheckBox>("cbRestaurar").click();
    janela.C<QCheckBox>("cbRestaurar").click();
    capturas.Guarda("backup");
    QTimer andamento;
    bool guardado = false;
    QObject::connect(&andamento, &QTimer::timeout, [&] {
        const auto& cancelar = janela.C<QPushButton>("btCancelar");
        if (guardado || !cancelar.isVisible()) return;
        guardado = true;
        capturas.Guarda("backup-andamento");
    });
    andamento.start(20);
    janela.C<QPushButton>("btExecutaBackup").click();
    andamento.stop();
    janela.C<QPushButton>("btRestauraBackup").click();
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
    janela.C<QPushButton>("btPlano").click();
    capturas.Guarda("plano", *janela.C<QPlainTextEdit>("mPlano").window());
    janela.C<QPushButton>("btFecharPlano").click();
    const auto& estimativa = janela.C<QLabel>("lblEstimativa");
    QTimer relogio;
    QObject::connect(&relogio, &QTimer::timeout, [&] {
        if (!estimativa.text().contains("faltam")) return;
        relogio.stop();
        capturas.Guarda("andamento");
    });
    relogio.start(20);
    capturas.Proximo();
    capturas.Guarda("status");
    janela.Tela().MostraOcupado("Descompactando...", 40);
    janela.Tela().Descarrega();
    capturas.Guarda("ocupado");
    janela.Tela().EscondeOcupado();
    QDir::setCurrent(QCaminho(instalacao.Pasta()));
    TDialogosQt dialogos;
    capturas.Guarda("pergunta", [&] { dialogos.Confirmacao("Deseja sair do programa de atualização?"); });
    capturas.Guarda("erro", [&] { dialogos.Erro("Não foi possível gravar o arquivo: o disco está cheio."); });
    capturas.Guarda("informacao", [&] { dialogos.Informacao("Arquivo de atualização não foi encontrado"); });
    capturas.Guarda("abrir", [&] { dialogos.ArquivoParaAbrir(); });
    capturas.Guarda("salvar", [&] { dialogos.ArquivoParaGravar("AtualizaQueryErro.log", {}); });
    capturas.Guarda("pasta", [&] { dialogos.Pasta({}); });
    capturas.Exige({"conectando", "backup-andamento", "andamento"});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "capturas PASTA [escuro] [PONTOS]\n";
        return 64;
    }
    const QStringList como(argv + 2, argv + argc);
    Aplicacao().setStyle(new TEstiloAmetista(como.contains("escuro")));
    FalaPortugues(Aplicacao());
    for (const QString& pontos : como) {
        QFont fonte = QApplication::font();
        if (pontos.toInt() > 0) fonte.setPointSize(pontos.toInt());
        QApplication::setFont(fonte);
    }
    Fotografa(QDir(argv[1]).absolutePath());
}
