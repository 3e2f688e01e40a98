#include "window/TelaDaJanela.h"

#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <algorithm>

#include "commands/Eco.h"
#include "commands/LinhaDoTerminal.h"
#include "values/Texto.h"
#include "widgets/Dialogos.h"
#include "widgets/SegundoPlano.h"

namespace wkd {

void TBarraDaTela::Define(int minimo, int maximo, int, int posicao) {
    const std::lock_guard trava(guarda_);
    minimo_ = minimo;
    maximo_ = maximo;
    estimativa_.Comeca(maximo - minimo);
    Anda(posicao);
}

void TBarraDaTela::Posicao(int posicao) {
    const std::lock_guard trava(guarda_);
    Anda(posicao);
}

void TBarraDaTela::Anda(int posicao) {
    posicao_ = posicao;
    mudou_ = true;
    estimativa_.Feito(posicao - minimo_);
}

int TBarraDaTela::Posicao() const {
    const std::lock_guard trava(guarda_);
    return posicao_;
}

int TBarraDaTela::Maximo() const {
    const std::lock_guard trava(guarda_);
    return maximo_;
}

std::string TBarraDaTela::Estimativa() const {
    const std::lock_guard trava(guarda_);
    return estimativa_.Texto();
}

void TBarraDaTela::Mostra(QProgressBar& barra) {
    const std::lock_guard trava(guarda_);
    if (!mudou_) return;
    barra.setRange(minimo_, std::max(maximo_, minimo_ + 1));  // an empty range would mean "unknown"
    barra.setValue(std::clamp(posicao_, barra.minimum(), barra.maximum()));
    mudou_ = false;
}

void TRotuloDaTela::Texto(std::string_view texto) {
    const std::lock_guard trava(guarda_);
    if (texto == texto_) return;
    texto_ = texto;
    mudou_ = true;
}

std::string TRotuloDaTela::Texto() const {
    const std::lock_guard trava(guarda_);
    return texto_;
}

void TRotuloDaTela::Mostra(QLabel& rotulo) {
    const std::lock_guard trava(guarda_);
    if (!mudou_) return;
    rotulo.setText(Q(texto_));
    rotulo.setToolTip(rotulo.text());
    mudou_ = false;
}

namespace {

/// More lines at once would keep the window from answering.
constexpr qsizetype kLinhasPorVez = 1000;
constexpr qsizetype kTodas = -1;

QStringList Primeiras(QStringList& linhas, qsizetype quantas) {
    if (quantas < 0 || quantas >= linhas.size()) return std::exchange(linhas, {});
    QStringList primeiras = linhas.first(quantas);
    linhas.remove(0, quantas);
    return primeiras;
}

}  // namespace

void TTelaDaJanela::Liga(TPaginaStatus& status, TPainelOcupado& ocupado) {
    status_ = &status;
    ocupado_ = &ocupado;
    status_->MostraLog(Q(log_.Texto()).remove('\r'));
    PedeDesenho();
}

template <class F>
void TTelaDaJanela::Anota(F&& anota) {
    {
        const std::lock_guard trava(guarda_);
        anota(novidades_);
    }
    PedeDesenho();
}

void TTelaDaJanela::PedeDesenho() {
    if (!status_ || desenhoPedido_.exchange(true)) return;
    const auto depois = [this] { QTimer::singleShot(kIntervalo, status_, [this] { Desenha(kLinhasPorVez); }); };
    QMetaObject::invokeMethod(status_, depois, Qt::QueuedConnection);
}

TTelaDaJanela::TNovidades TTelaDaJanela::Retira(qsizetype linhasPorVez) {
    const std::lock_guard trava(guarda_);
    TNovidades agora = std::exchange(novidades_, {});
    novidades_.memo1 = std::move(agora.memo1);
    novidades_.memo2 = std::move(agora.memo2);
    agora.memo1 = Primeiras(novidades_.memo1, linhasPorVez);
    agora.memo2 = Primeiras(novidades_.memo2, linhasPorVez);
    if (!novidades_.memo1.isEmpty() || !novidades_.memo2.isEmpty()) PedeDesenho();
    return agora;
}

void TTelaDaJanela::Desenha(qsizetype linhasPorVez) {
    desenhoPedido_ = false;
    const TNovidades novidades = Retira(linhasPorVez);
    status_->Memo1().Acrescenta(novidades.memo1);
    status_->Memo2().Acrescenta(novidades.memo2);
    lblAtual_.Mostra(status_->LblAtual());
    lblGeral_.Mostra(status_->LblGeral());
    pbAtual_.Mostra(status_->PbAtual());
    pbGeral_.Mostra(status_->PbGeral());
    status_->AcrescentaAoLog(novidades.log);
    status_->MostraPasta(novidades.pasta);
    if (andando_) MostraAndamento();
    if (!novidades.ocupado) return;
    if (novidades.ocupado->texto.isEmpty())
        ocupado_->hide();
    else
        ocupado_->Mostra(novidades.ocupado->texto, novidades.ocupado->percentual);
}

void TTelaDaJanela::MostraAndamento() {
    const std::string geral = lblGeral_.Texto(), atual = lblAtual_.Texto(), estimativa = pbAtual_.Estimativa();
    const std::string semResposta = semResposta_.Texto();
    const TAndamento andamento{pbGeral_.Posicao(), pbGeral_.Maximo(), geral, atual, estimativa, semResposta};
    status_->Estimativa(Q(TextoDoAndamento(andamento)));
    const auto agora = std::chrono::steady_clock::now();
    if (!desassistida_ || silenciosa_ || agora < proximaLinha_) return;
    proximaLinha_ = agora + kIntervaloNoTerminal;
    const std::lock_guard trava(console_);
    linha_.Mostra(LinhaDeAndamento(andamento));
}

void TTelaDaJanela::EmAndamento(bool andando) {
    andando_ = andando;
    if (status_) status_->Estimativa({});
    NoConsole([this] { erros_.Conclui(); });
}

template <class F>
void TTelaDaJanela::NoConsole(F&& escreve) {
    if (!desassistida_) return;
    const std::lock_guard trava(console_);
    linha_.Apaga();
    escreve();
}

std::string TTelaDaJanela::Onde() const {
    if (!andando_) return {};
    const std::string geral = lblGeral_.Texto(), atual = lblAtual_.Texto();
    std::vector<std::string> partes;
    for (const auto& parte : {geral, atual})
        if (!parte.empty() && parte != "Parado.") partes.push_back(parte);
    return partes.empty() ? "Atualização" : Junta(partes, " - ");
}

void TTelaDaJanela::Descarrega() {
    if (status_) Desenha(kTodas);
}

void TTelaDaJanela::LimparLog() {
    Descarrega();
    log_.LimparLog();
    if (status_) status_->MostraLog({});
}

void TTelaDaJanela::Memo1(std::string_view linha) {
    NoConsole([&] {
        erros_.Conclui();
        if (!silenciosa_) EscreveNaSaida(linha);
    });
    Anota([&](TNovidades& novidades) { novidades.memo1 += Q(linha); });
}

void TTelaDaJanela::Relata(const TErroDaExecucao& erro) {
    if (erro.caixa && !desassistida_)
        return NaThreadDaJanela([&] {
            Descarrega();
            dialogos_.Erro(Q(erro.erro.mensagem));
        });
    houveErro_ = true;
    NoConsole([&, onde = Onde()] { erros_.Erro(erro, onde); });
    if (!erro.caixa) return ITela::Relata(erro);
    Memo2(erro.erro.mensagem);
    SetLog(erro.erro.mensagem, "", "");
}

void TTelaDaJanela::Memo2(std::string_view linha) {
    Anota([&](TNovidades& novidades) { novidades.memo2 += Q(linha); });
}

void TTelaDaJanela::MostraOcupado(std::string_view texto, int percentual) {
    Anota([&](TNovidades& novidades) { novidades.ocupado = {Q(texto), percentual}; });
}

void TTelaDaJanela::EscondeOcupado() {
    Anota([](TNovidades& novidades) { novidades.ocupado = TOcupadoDaTela{}; });
}

void TTelaDaJanela::SemResposta(std::string_view texto) {
    semResposta_.Texto(texto);
    PedeDesenho();
}

void TTelaDaJanela::PastaDoPacote(const std::filesystem::path& pasta) {
    Anota([&](TNovidades& novidades) { novidades.pasta = QCaminho(pasta); });
}

void TTelaDaJanela::Informacao(std::string_view texto) {
    if (desassistida_) return Relata(TErroDaExecucao::NaCaixa({.mensagem = std::string(texto)}));
    NaThreadDaJanela([&] {
        Descarrega();
        dialogos_.Informacao(Q(texto));
    });
}

bool TTelaDaJanela::Confirmacao(std::string_view texto, bool semPessoa) {
    if (desassistida_) {
        Informacao(std::string(texto) + (semPessoa ? " Sim" : " Não") + " (sem ninguém à frente)");
        return semPessoa;
    }
    bool sim = false;
    NaThreadDaJanela([&] {
        Descarrega();
        sim = dialogos_.Confirmacao(Q(texto));
    });
    return sim;
}

TAcaoReconcilia TTelaDaJanela::Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) {
    if (desassistida_) {
        Relata(TErroDaExecucao::NaCaixa({.mensagem = std::string(erro), .falha = TFalha::LinhaRecusada}));
        return semPessoa;
    }
    TAcaoReconcilia acao = semPessoa;
    NaThreadDaJanela([&] {
        Descarrega();
        acao = dialogos_.Reconcilia(Q(erro));
    });
    return acao;
}

void TTelaDaJanela::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    NoLog([&] { log_.SetLog(mensagem, tabela, acao, Agora()); });
    const QString entrada = Q(log_.Ultima()).remove('\r');
    Anota([&](TNovidades& novidades) { novidades.log.prepend(entrada); });
}

/// A log that fails is told once.
template <class F>
void TTelaDaJanela::NoLog(F&& operacao) {
    try {
        operacao();
    } catch (const std::exception& erro) {
        if (std::exchange(logFalhou_, true)) return;
        TErro doLog = ErroDe(erro);
        doLog.mensagem += ". O arquivo fica como está.";
        Relata(TErroDaExecucao::NaLista(std::move(doLog), ""));
    }
}

void TTelaDaJanela::CarregaLog() {
    NoLog([this] { log_.Carrega(); });
}

void TTelaDaJanela::SalvaLog() {
    NoLog([this] { log_.Salva(); });
}

}  // namespace wkd
