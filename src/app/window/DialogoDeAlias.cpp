#include "window/DialogoDeAlias.h"

#include <QGridLayout>
#include <QPlainTextEdit>
#include <atomic>

#include "commands/PreencheDados.h"
#include "pages/PaginaStatus.h"
#include "widgets/Dialogos.h"
#include "widgets/SegundoPlano.h"

namespace wkd {

namespace {

struct TTipo {
    const char *texto, *nome, *servidor, *dica;
};
constexpr TTipo kTipos[] = {
    {"tbInterbase", "Firebird", "&Servidor:", "servidor, ou servidor/porta; vazio: um arquivo deste computador"},
    {"tbSQLServer", "SQL Server", "&Servidor:", "servidor, servidor,porta ou servidor\\instância"},
    {"tbODBC", "SQL Server por ODBC", "&Fonte de dados:", "nome da fonte de dados ODBC deste computador"},
};

}  // namespace

TDialogoDeAlias::TDialogoDeAlias(const TAliases& aliases, IDialogos& dialogos, const std::string& nome, QWidget* janela)
    : QDialog(janela),
      aliases_(aliases),
      dialogos_(dialogos),
      novo_(nome.empty()),
      edNome_(Edicao("edNomeDoAlias", "Nome do alias")),
      cbTipo_(Nomeia(new QComboBox, "cbTipoDoAlias", "Tipo de banco")),
      lblServidor_(new QLabel),
      edServidor_(Edicao("edServidor", "Servidor")),
      edCaminho_(Edicao("edCaminho", "Pasta do banco no servidor")),
      edBanco_(Edicao("edBanco", "Banco de dados")),
      btArquivo_(Reticencias("btArquivoDoBanco", "Escolher um banco de dados deste computador")),
      edUsuario_(Edicao("edUsuario", "Usuário")),
      edSenha_(Edicao("edSenha", "Senha")),
      mResultado_(Nomeia(new TMemoDeLinhas, "mResultado", "Resultado do teste")),
      ocupado_(new TPainelOcupado(this)) {
    setWindowTitle(novo_ ? "Novo alias" : "Alterar alias");
    edSenha_->setEchoMode(QLineEdit::Password);
    auto* linhas = new QGridLayout(this);
    linhas->setVerticalSpacing(6);
    auto linha = [&, numero = 0](QLabel* rotulo, QWidget* campo, int colunas = 2) mutable {
        rotulo->setBuddy(campo);
        linhas->addWidget(rotulo, numero, 0);
        linhas->addWidget(campo, numero++, 1, 1, colunas);
    };
    linha(new QLabel("&Nome:"), edNome_);
    linha(new QLabel("Ti&po de banco:"), cbTipo_);
    linha(lblServidor_, edServidor_);
    linha(new QLabel("&Caminho:"), edCaminho_);
    linha(new QLabel("&Banco de dados:"), edBanco_, 1);
    linhas->addWidget(btArquivo_, 4, 2);
    linha(new QLabel("&Usuário:"), edUsuario_);
    linha(new QLabel("S&enha:"), edSenha_);
    linhas->addWidget(mResultado_, 7, 0, 1, 3);
    linhas->addWidget(Botoes(), 8, 0, 1, 3);
    mResultado_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    mResultado_->setMinimumHeight(5 * fontMetrics().lineSpacing());
    setMinimumWidth(88 * fontMetrics().averageCharWidth());
    connect(cbTipo_, &QComboBox::currentIndexChanged, this, &TDialogoDeAlias::TipoEscolhido);
    connect(btArquivo_, &QPushButton::clicked, this, &TDialogoDeAlias::EscolheArquivo);
    if (!novo_) alias_ = aliases_.CarregaAlias(nome);
    Mostra();
    ocupado_->raise();
}

QWidget* TDialogoDeAlias::Botoes() {
    auto* testa = Botao("btTestar", "&Testar", "Conecta com o que está escrito, e não grava nada");
    auto* grava = Botao("btGravar", "&Gravar", "Grava o alias no arquivo " + QCaminho(aliases_.Caminho()));
    auto* cancela = Botao("btCancelarAlias", "Cancelar");
    for (QPushButton* botao : {btArquivo_, testa, cancela}) botao->setAutoDefault(false);
    grava->setDefault(true);
    connect(testa, &QPushButton::clicked, this, &TDialogoDeAlias::Testar);
    connect(grava, &QPushButton::clicked, this, &TDialogoDeAlias::Gravar);
    connect(cancela, &QPushButton::clicked, this, &QDialog::reject);
    auto* faixa = new QWidget;
    auto* linha = new QHBoxLayout(faixa);
    linha->setContentsMargins(0, 0, 0, 0);
    linha->addWidget(testa);
    linha->addStretch();
    linha->addWidget(grava);
    linha->addWidget(cancela);
    return faixa;
}

void TDialogoDeAlias::Mostra() {
    for (const TTipo& tipo : kTipos) cbTipo_->addItem(tipo.nome, tipo.texto);
    const QString tipo = Q(alias_.tipoBanco);
    if (!novo_ && cbTipo_->findData(tipo) < 0) cbTipo_->addItem(tipo, tipo);
    cbTipo_->setCurrentIndex(novo_ ? 0 : cbTipo_->findData(tipo));
    edNome_->setText(Q(alias_.nome));
    edNome_->setReadOnly(!novo_);
    edServidor_->setText(Q(alias_.hostname));
    edCaminho_->setText(Q(alias_.path));
    edBanco_->setText(Q(alias_.database));
    edUsuario_->setText(Q(alias_.usuario));
    edSenha_->setText(Q(alias_.senha));
    TipoEscolhido();
    (novo_ ? edNome_ : edServidor_)->setFocus();
}

void TDialogoDeAlias::TipoEscolhido() {
    const int qual = cbTipo_->currentIndex();
    const TTipo& tipo = kTipos[qual < static_cast<int>(std::size(kTipos)) ? qual : 0];
    lblServidor_->setText(tipo.servidor);
    edServidor_->setPlaceholderText(tipo.dica);
    edServidor_->setToolTip(tipo.dica);
    const bool firebird = qual == 0;
    edCaminho_->setEnabled(firebird);
    btArquivo_->setEnabled(firebird);
    edCaminho_->setPlaceholderText(firebird ? "pasta do banco, como o servidor a conhece" : "");
    edBanco_->setPlaceholderText(firebird ? "nome do arquivo" : "nome do banco");
    edUsuario_->setPlaceholderText(firebird ? "SYSDBA, ou o dono do banco" : "vazio: a conta do sistema");
}

void TDialogoDeAlias::EscolheArquivo() {
    const QString arquivo = dialogos_.BancoParaAbrir();
    if (arquivo.isEmpty()) return;
    const auto caminho = Caminho(arquivo);
    edServidor_->clear();
    edCaminho_->setText(QCaminho(caminho.parent_path() / ""));
    edBanco_->setText(QCaminho(caminho.filename()));
}

TAlias TDialogoDeAlias::Lido() const {
    TAlias alias = alias_;
    alias.nome = S(edNome_->text());
    alias.tipoBanco = S(cbTipo_->currentData().toString());
    alias.hostname = S(edServidor_->text());
    alias.path = edCaminho_->isEnabled() ? S(edCaminho_->text()) : "";
    alias.database = S(edBanco_->text());
    alias.usuario = S(edUsuario_->text());
    alias.senha = S(edSenha_->text());
    return Arrumado(alias);
}

QString TDialogoDeAlias::Nome() const { return Q(Lido().nome); }

void TDialogoDeAlias::Diz(const QString& texto, bool certo) {
    mResultado_->setPlainText(texto);
    PintaAviso(*mResultado_, !certo);
}

bool TDialogoDeAlias::Conferido(const TAlias& alias) {
    std::string defeito = DefeitoDoAlias(alias);
    if (defeito.empty() && novo_ && aliases_.ExisteAlias(alias.nome))
        defeito = "Já existe um alias de nome " + alias.nome + ". Dê outro nome, ou altere aquele.";
    if (!defeito.empty()) Diz(Q(defeito), false);
    return defeito.empty();
}

void TDialogoDeAlias::Testar() {
    const TAlias alias = Lido();
    if (!Conferido(alias)) return;
    std::atomic<bool> desistiu = false;
    ocupado_->OfereceCancelar([&] { desistiu = true; });
    ocupado_->Mostra("Conectando a " + Q(alias.hostname.empty() ? alias.database : alias.hostname) + "...", -1);
    const auto esconde = qScopeGuard([&] {
        ocupado_->hide();
        ocupado_->OfereceCancelar({});
    });
    try {
        std::string servidor;
        EmSegundoPlano([&] { servidor = ProvaAlias(alias, [&] { return desistiu.load(); }); }, TEntrada::Descarta,
                       &ocupado_->Cancelar());
        Diz("Conectou: " + Q(servidor) + ".", true);
    } catch (const std::exception& erro) {
        Diz(Q(ExplicaConexao(ErroDe(erro))), false);
    }
}

void TDialogoDeAlias::Gravar() {
    const TAlias alias = Lido();
    if (!Conferido(alias)) return;
    try {
        aliases_.AdicionaAlias(alias, aliases_.EhPadrao(alias.nome));
        accept();
    } catch (const std::exception& erro) {
        Diz(erro.what(), false);
    }
}

}  // namespace wkd
