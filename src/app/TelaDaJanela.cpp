#include "TelaDaJanela.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <algorithm>

#include "Andamento.h"
#include "Eco.h"
#include "TextoQt.h"

namespace wkd {

void TBarraDaTela::Define(int minimo, int maximo, int, int posicao) {
    minimo_ = minimo;
    maximo_ = maximo;
    estimativa_.Comeca(maximo - minimo);
    Posicao(posicao);
}

void TBarraDaTela::Posicao(int posicao) {
    posicao_ = posicao;
    mudou_ = true;
    estimativa_.Feito(posicao - minimo_);
}

void TBarraDaTela::Mostra(QProgressBar& barra) {
    if (!mudou_) return;
    barra.setRange(minimo_, std::max(maximo_, minimo_ + 1));  // an empty range would mean "unknown"
    barra.setValue(std::clamp(posicao_, barra.minimum(), barra.maximum()));
    mudou_ = false;
}

void TRotuloDaTela::Texto(std::string_view texto) {
    if (texto == texto_) return;
    texto_ = texto;
    mudou_ = true;
}

void TRotuloDaTela::Mostra(QLabel& rotulo) {
    if (!mudou_) return;
    rotulo.setText(Q(texto_));
    rotulo.setToolTip(rotulo.text());
    mudou_ = false;
}

void TTelaDaJanela::Liga(TPaginaStatus& status, TPainelOcupado& ocupado) {
    status_ = &status;
    ocupado_ = &ocupado;
    logMudou_ = true;
}

void TTelaDaJanela::Descarrega() {
    if (!status_) return;
    status_->Memo1().Descarrega();
    status_->Memo2().Descarrega();
    lblAtual_.Mostra(status_->LblAtual());
    lblGeral_.Mostra(status_->LblGeral());
    pbAtual_.Mostra(status_->PbAtual());
    pbGeral_.Mostra(status_->PbGeral());
    if (logMudou_) status_->MostraLog(Q(log_.Texto()).remove('\r'));
    logMudou_ = false;
}

void TTelaDaJanela::Memo1(std::string_view linha) {
    linha_.Apaga();
    if (desassistida_) EscreveNaSaida(linha);
    if (status_) status_->Memo1().Acrescenta(Q(linha));
}

void TTelaDaJanela::Memo2(std::string_view linha) {
    houveErro_ = true;
    linha_.Apaga();
    if (desassistida_) EscreveNosErros(linha);
    if (status_) status_->Memo2().Acrescenta(Q(linha));
}

void TTelaDaJanela::MostraOcupado(std::string_view texto, int percentual) {
    if (!ocupado_) return;
    if (ocupado_->isHidden()) proxima_ = {};  // what follows may take long
    ocupado_->Mostra(Q(texto), percentual);
    ProcessaMensagens();
}

void TTelaDaJanela::EscondeOcupado() {
    if (ocupado_) ocupado_->hide();
}

void TTelaDaJanela::ProcessaMensagens() {
    if (std::chrono::steady_clock::now() < proxima_) return;
    Descarrega();
    MostraAndamento();
    QCoreApplication::processEvents();
    proxima_ = std::chrono::steady_clock::now() + kIntervalo;
}

void TTelaDaJanela::MostraAndamento() {
    const auto agora = std::chrono::steady_clock::now();
    if (!desassistida_ || !linha_.Existe() || agora < proximaLinha_) return;
    proximaLinha_ = agora + kIntervaloNoTerminal;
    linha_.Mostra(LinhaDeAndamento(
        {pbGeral_.Posicao(), pbGeral_.Maximo(), lblGeral_.Texto(), lblAtual_.Texto(), pbAtual_.Estimativa().Texto()}));
}

void TTelaDaJanela::Informacao(std::string_view texto) {
    Descarrega();
    if (!desassistida_) return dialogos_.Informacao(Q(texto));
    Memo2(texto);
    SetLog(texto, "", "");
}

bool TTelaDaJanela::Confirmacao(std::string_view texto, bool semPessoa) {
    Descarrega();
    if (!desassistida_) return dialogos_.Confirmacao(Q(texto));
    Informacao(std::string(texto) + (semPessoa ? " Sim" : " Não") + " (sem ninguém à frente)");
    return semPessoa;
}

TAcaoReconcilia TTelaDaJanela::Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) {
    Descarrega();
    if (!desassistida_) return dialogos_.Reconcilia(Q(erro));
    Informacao(erro);
    return semPessoa;
}

void TTelaDaJanela::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    houveErro_ = true;
    logMudou_ = true;
    try {
        log_.SetLog(mensagem, tabela, acao, Agora());
    } catch (const std::exception& erro) {
        if (!logFalhou_) Memo2(erro.what());
        logFalhou_ = true;
    }
}

}  // namespace wkd
