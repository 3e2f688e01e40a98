#include "pages/PaginaBackup.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>

#include "Relatorio.h"
#include "Restauracao.h"
#include "widgets/Dialogos.h"
#include "widgets/SegundoPlano.h"

namespace wkd {

TPaginaBackup::TPaginaBackup(const TAliases& aliases, std::filesystem::path pastaPrograma, IDialogos& dialogos,
                             ITela& tela)
    : aliases_(aliases),
      pastaPrograma_(std::move(pastaPrograma)),
      dialogos_(dialogos),
      tela_(tela),
      edCaminhoBackup_(Edicao("edCaminhoBackup", "Pasta de backup")),
      edServerRest_(Edicao("edServerRest", "Servidor", "LocalHost")),
      edBancoRest_(Edicao("edBancoRest", "Caminho do Banco de Dados", "c:\\hbn\\dados\\rst\\hbn.fdb")),
      edRelatoriosBkp_(Edicao("edRelatoriosBkp", "Salvar Relatórios em")),
      cbRestaurar_(Nomeia(new QCheckBox("Restaurar na base original"), "cbRestaurar")),
      btExecutaBackup_(Botao("btExecutaBackup", "Fazer Backup")),
      btRestauraBackup_(Botao("btRestauraBackup", "Restaurar Backup")) {
    btExecutaBackup_->setEnabled(false);
    btRestauraBackup_->setEnabled(false);
    setFocusProxy(edCaminhoBackup_);

    auto* linhas = new QVBoxLayout(this);
    linhas->setSpacing(4);
    linhas->addWidget(
        Cabecalho("É obrigatório que faça  o backup e depois restaure para certificar de que o banco esteja "
                  "sem problema algum antes que seja atualizado."));
    linhas->addWidget(GrupoDoDestino());
    linhas->addWidget(GrupoRestaurar());
    linhas->addWidget(Relatorios());
    auto* botoes = new QHBoxLayout;
    auto* relatorios = Botao("btRelatoriosBkp", "Fazer Backup dos relatórios");
    relatorios->hide();
    auto* button2 = Botao("Button2", "Restaurar Padrões");
    for (QPushButton* botao : {btExecutaBackup_, btRestauraBackup_, relatorios, button2}) botoes->addWidget(botao);
    botoes->addStretch();
    linhas->addLayout(botoes);

    connect(cbRestaurar_, &QCheckBox::toggled, this, &TPaginaBackup::cbRestaurarClick);
    connect(button2, &QPushButton::clicked, this, &TPaginaBackup::Button2Click);
    connect(relatorios, &QPushButton::clicked, this, &TPaginaBackup::btRelatoriosBkpClick);
    connect(btExecutaBackup_, &QPushButton::clicked, this, &TPaginaBackup::FazerBackup);
    connect(btRestauraBackup_, &QPushButton::clicked, this, &TPaginaBackup::Restaurar);
    connect(edCaminhoBackup_, &QLineEdit::textEdited, this, &TPaginaBackup::PastaEscolhida);
}

void TPaginaBackup::SetAlias(const QString& alias) {
    if (alias != alias_) feito_.clear();
    alias_ = alias;
    if (!edCaminhoBackup_->text().trimmed().isEmpty()) PastaEscolhida(edCaminhoBackup_->text());
}

/// A backup needs its folder, and while the way back is chosen it is not what is wanted.
void TPaginaBackup::PastaEscolhida(const QString& pasta) {
    if (!cbRestaurar_->isChecked()) btExecutaBackup_->setEnabled(!pasta.trimmed().isEmpty());
}

std::filesystem::path TPaginaBackup::Pasta() const { return Caminho(edCaminhoBackup_->text().trimmed()); }

std::string TPaginaBackup::Destino() const {
    const std::string servidor = S(edServerRest_->text().trimmed());
    return (servidor.empty() ? "" : servidor + ":") + S(edBancoRest_->text().trimmed());
}

bool TPaginaBackup::NaBaseOriginal() const {
    const TDestinoDaRestauracao original = DestinoDaRestauracao(aliases_, S(alias_), true);
    return edBancoRest_->text().trimmed() == Q(original.banco);
}

bool TPaginaBackup::NaCopiaDeTeste() const {
    return edBancoRest_->text().trimmed() == Q(DestinoDaRestauracao(aliases_, S(alias_), false).banco);
}

std::filesystem::path TPaginaBackup::Arquivo() {
    if (!feito_.empty() && !NaBaseOriginal()) return feito_;
    return Caminho(dialogos_.BackupParaAbrir());
}

void TPaginaBackup::BackupFeito(const std::filesystem::path& arquivo) {
    feito_ = arquivo;
    MostraDestino(false);
    btRestauraBackup_->setEnabled(true);
}

QWidget* TPaginaBackup::GrupoDoDestino() {
    auto* grupo = new QGroupBox("Destino do Backup");
    auto* linha = new QHBoxLayout(grupo);
    linha->setContentsMargins(10, 4, 10, 8);
    auto* escolhe = Reticencias("SpeedButton4", "Escolher a pasta de backup");
    linha->addWidget(RotuloDe("Pasta de backup", edCaminhoBackup_));
    linha->addWidget(edCaminhoBackup_);
    linha->addWidget(escolhe);
    connect(escolhe, &QPushButton::clicked, this, &TPaginaBackup::SpeedButton4Click);
    return grupo;
}

QWidget* TPaginaBackup::GrupoRestaurar() {
    auto* grupo = new QGroupBox("Restaurar em:");
    auto* linhas = new QGridLayout(grupo);
    linhas->setContentsMargins(10, 4, 10, 8);
    linhas->addWidget(RotuloDe("Servidor", edServerRest_), 0, 0);
    linhas->addWidget(edServerRest_, 0, 1);
    linhas->addWidget(cbRestaurar_, 0, 2);
    linhas->addWidget(RotuloDe("Caminho do Banco de Dados", edBancoRest_), 1, 0);
    linhas->addWidget(edBancoRest_, 1, 1, 1, 2);
    return grupo;
}

QWidget* TPaginaBackup::Relatorios() {
    auto* grupo = new QGroupBox("Salvar Relatórios em:");
    auto* linha = new QHBoxLayout(grupo);
    linha->setContentsMargins(10, 4, 10, 8);
    auto* escolhe = Reticencias("SpeedButton5", "Escolher o arquivo do backup dos relatórios");
    linha->addWidget(edRelatoriosBkp_);
    linha->addWidget(escolhe);
    connect(escolhe, &QPushButton::clicked, this, &TPaginaBackup::SpeedButton5Click);
    return grupo;
}

void TPaginaBackup::MostraDestino(bool naBaseOriginal) {
    try {
        const TDestinoDaRestauracao destino = DestinoDaRestauracao(aliases_, S(alias_), naBaseOriginal);
        edBancoRest_->setText(Q(destino.banco));
        edServerRest_->setText(Q(destino.servidor));
    } catch (const std::exception& erro) {
        dialogos_.Erro(Q(erro.what()));
    }
}

void TPaginaBackup::cbRestaurarClick(bool marcado) {
    MostraDestino(marcado);
    btRestauraBackup_->setEnabled(marcado);
    btExecutaBackup_->setEnabled(!marcado);
}

void TPaginaBackup::Button2Click() {
    MostraDestino(false);
    edRelatoriosBkp_->setText(QCaminho(ArquivoPadraoDosRelatorios(pastaPrograma_, Agora())));
}

void TPaginaBackup::SpeedButton4Click() {
    const QString pasta = dialogos_.Pasta(edCaminhoBackup_->text());
    if (pasta.isEmpty()) return;
    edCaminhoBackup_->setText(pasta);
    PastaEscolhida(pasta);
}

void TPaginaBackup::SpeedButton5Click() {
    const QString arquivo = dialogos_.ArquivoParaGravar(Q(NomePropostoDosRelatorios(Agora())), {});
    if (!arquivo.isEmpty()) edRelatoriosBkp_->setText(arquivo);
}

/// The layouts of the alias's reports folder, else of the current one.
void TPaginaBackup::btRelatoriosBkpClick() {
    try {
        const std::string pasta = aliases_.INILeString(S(alias_), "RELATORIO", ".");
        EmSegundoPlano(
            [&, arquivo = Caminho(edRelatoriosBkp_->text())] {
                const TOcupado ocupado(tela_, "Fazendo backup dos relatórios...");
                FazBackupDosRelatorios(pasta, arquivo);
            },
            TEntrada::Descarta);
    } catch (const std::exception& erro) {
        dialogos_.Erro(Q(erro.what()));
    }
}

}  // namespace wkd
