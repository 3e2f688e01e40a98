#include "pages/PaginaAtualizacao.h"

#include <QGridLayout>

#include "widgets/Dialogos.h"

namespace wkd {

TPaginaAtualizacao::TPaginaAtualizacao(IDialogos& dialogos)
    : dialogos_(dialogos), edAtualizacao_(Edicao("edAtualizacao", "Arquivo de Atualização")) {
    auto* escolhe = Reticencias("SpeedButton3", "Escolher o arquivo de atualização (Ctrl+O)");
    escolhe->setShortcut(QKeySequence::Open);
    auto* url = Edicao("url", "Endereço");
    url->hide();
    setFocusProxy(edAtualizacao_);

    auto* linhas = new QGridLayout(this);
    linhas->addWidget(Cabecalho("Escolha o modo com qual deseja executar a atualização:"), 0, 0, 1, 3);
    linhas->addWidget(RotuloDe("Arquivo de Atualização", edAtualizacao_), 1, 0);
    linhas->addWidget(edAtualizacao_, 1, 1);
    linhas->addWidget(escolhe, 1, 2);
    linhas->addWidget(url, 2, 1);
    linhas->setRowStretch(3, 1);

    connect(escolhe, &QPushButton::clicked, this, &TPaginaAtualizacao::SpeedButton3Click);
}

std::filesystem::path TPaginaAtualizacao::Pacote() const { return Caminho(edAtualizacao_->text()); }

void TPaginaAtualizacao::SetPacote(const std::filesystem::path& pacote) { edAtualizacao_->setText(QCaminho(pacote)); }

void TPaginaAtualizacao::Corrige() {
    edAtualizacao_->setFocus();
    edAtualizacao_->selectAll();
}

void TPaginaAtualizacao::SpeedButton3Click() {
    const QString arquivo = dialogos_.ArquivoParaAbrir();
    if (!arquivo.isEmpty()) edAtualizacao_->setText(arquivo);
}

}  // namespace wkd
