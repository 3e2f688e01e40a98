// The update run as the window sees it.

#include <QApplication>
#include <QPushButton>

#include "commands/ComandosDeBackup.h"
#include "context/CargaDoPacote.h"
#include "passes/Passes.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "report/PlanoEmTexto.h"
#include "report/RelatorioDaExecucao.h"
#include "run/Atualizacao.h"
#include "server/Vigia.h"
#include "values/Texto.h"
#include "window/Controles.h"
#include "window/FMAtualiza.h"
#include "window/PaginaAlias.h"
#include "window/PaginaAtualizacao.h"
#include "window/PaginaBackup.h"
#include "window/PaginaOpcoes.h"
#include "window/TelaDaJanela.h"

namespace wkd {

namespace {

/// Log and rejected rows are kept in the program's folder: without it nothing is begun.
bool PastaGravavel(const std::filesystem::path& pasta) {
    const std::filesystem::path prova = pasta / "AtualizaWKD.prova";
    try {
        const bool gravou = (TSaidaEmArquivo(CriaArquivo(prova)) << "prova" << std::flush).good();
        return std::filesystem::remove(prova) && gravou;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace

void TFMAtualiza::btAtualizarClick() {
    if (executando_) return;
    for (QPushButton* botao : {btVoltar_, btProximo_, btSair_}) botao->setEnabled(false);
    status_->PermitePlano(false);
    TFimMostrado mostrado;
    status_->MostraFim(mostrado);
    codigo_ = Executa(mostrado);
    if (codigo_ == TCodigoDeSaida::Sucesso || codigo_ == TCodigoDeSaida::ComErros) Conclui();
    status_->MostraFim(mostrado);
}

void TFMAtualiza::btPlanoClick() {
    if (executando_) return;
    std::vector<QPushButton*> livres;
    for (QPushButton* botao : {btVoltar_, btProximo_, btSair_})
        if (botao->isEnabled()) livres.push_back(botao);
    for (QPushButton* botao : livres) botao->setEnabled(false);
    status_->PermitePlano(false);
    NoBanco([&, opcoes = Opcoes()] {
        try {
            const auto plano = Planeja(*dm_, opcoes, estado_);
            if (!plano) return;
            for (const auto& linha : Divide(PlanoEmTexto(*plano), '\n')) meios_.tela.Memo1(linha);
        } catch (const std::exception& erro) {
            meios_.tela.Erro(TErroDaExecucao::NaCaixa(ErroDe(erro)));
        }
    });
    for (QPushButton* botao : livres) botao->setEnabled(true);
    status_->PermitePlano(true);
}

TCodigoDeSaida TFMAtualiza::Executa(TFimMostrado& mostrado) {
    if (!PastaGravavel(meios_.ambiente.pastaPrograma)) {
        meios_.tela.Informacao("Sem permissão de gravação na pasta do programa, " +
                               meios_.ambiente.pastaPrograma.string() +
                               ", onde ficam o log e as linhas rejeitadas. Dê a permissão e rode de novo.");
        return TCodigoDeSaida::Encerrada;
    }
    TFimDaAtualizacao fim = TFimDaAtualizacao::Interrompida;  // unless it comes to an end of its own
    const bool comBackup = inicio_.comBackup || status_->ComBackup();
    auto pasta = backup_->Pasta();
    if (comBackup && pasta.empty()) pasta = PastaDeBackup(meios_.ambiente, meios_.preferencias, dm_->SQLConnection1);
    NoBanco([&, opcoes = Opcoes()] {
        TEvidencia doBackup;
        if (comBackup && !BackupAntes(pasta, doBackup)) {
            fim = TFimDaAtualizacao::Encerrada;
            return;
        }
        TAtualizacao atualizacao(*dm_, opcoes, estado_);
        fim = atualizacao.Executa();
        TEvidencia evidencia = atualizacao.Evidencia();
        evidencia.backup = doBackup.backup;
        evidencia.volta = doBackup.volta;
        mostrado = Relata(evidencia);
    });
    if (fim == TFimDaAtualizacao::Interrompida) return CodigoDoSinal(TInterrupcao::Sinal());
    if (fim == TFimDaAtualizacao::Encerrada) return TCodigoDeSaida::Encerrada;
    return meios_.tela.HouveErro() ? TCodigoDeSaida::ComErros : TCodigoDeSaida::Sucesso;
}

TFimMostrado TFMAtualiza::Relata(const TEvidencia& evidencia) {
    TFimMostrado fim{Q(Veredicto(evidencia)), TudoFeito(evidencia), {}};
    try {
        GravaRelatorio(evidencia, meios_.ambiente.pastaPrograma);
        fim.relatorio = QCaminho(meios_.ambiente.pastaPrograma / "AtualizaWKD.relatorio.html");
    } catch (const std::exception& erro) {
        TErro semRelatorio = ErroDe(erro);
        semRelatorio.mensagem.insert(0, "O relatório não foi gravado: ");
        meios_.tela.Erro(TErroDaExecucao::NaLista(std::move(semRelatorio), ""));
    }
    return fim;
}

/// The work has the connection for itself: the pages that use it rest, and the window stays open.
void TFMAtualiza::NoBanco(const std::function<void()>& trabalho) {
    const auto ocupa = [this](bool ocupada) {
        executando_ = ocupada;
        meios_.tela.EmAndamento(ocupada);
        for (QWidget* pagina : std::initializer_list<QWidget*>{alias_, backup_, atualizacao_, opcoes_})
            pagina->setEnabled(!ocupada);
    };
    ocupa(true);
    const auto libera = qScopeGuard([&] { ocupa(false); });
    const TVigia vigia = Vigia(aliasAtual_);
    AteOFim([&] { EmSegundoPlano(trabalho); });
    meios_.tela.Descarrega();
}

TVigia TFMAtualiza::Vigia(const std::string& alias) {
    THBNConnection& conexao = dm_->SQLConnection1;
    return {conexao, TPrazos::DoAlias(conexao.Aliases(), alias),
            [this](std::string_view texto) { meios_.tela.SemResposta(texto); }};
}

/// An interruption ends the work; the window closes by itself.
void TFMAtualiza::AteOFim(const std::function<void()>& trabalho) {
    try {
        trabalho();
    } catch (const TInterrompida&) {
    }
}

/// Nobody answers any more, and the window closes once nothing is under way; told again until then.
void TFMAtualiza::Interrompe() {
    if (QWidget* pergunta = QApplication::activeModalWidget(); pergunta && pergunta != this)
        pergunta->close();
    else if (!executando_) {
        if (isVisible()) close();
        QCoreApplication::exit();  // a window that closes before it is drawn does not end the program
    }
}

void TFMAtualiza::Conclui() {
    const bool assistida = !meios_.tela.Desassistida();
    if (assistida) meios_.dialogos.Informacao("Atualização concluída com sucesso");
    btSair_->setEnabled(true);
    if (assistida && meios_.dialogos.Confirmacao("Deseja visualizar arquivo de log?")) AbrirLog();
    dm_->SQLConnection1.Close();
}

TOpcoes TFMAtualiza::Opcoes() const {
    TOpcoes opcoes;
    opcoes.alias = aliasAtual_;
    opcoes.pacote = atualizacao_->Pacote();
    opcoes_->Le(opcoes);
    opcoes.marcaNaoCria = meios_.ambiente.marcaNaoCria;
    opcoes.temporaria = meios_.ambiente.temporaria;
    opcoes.pastaPrograma = meios_.ambiente.pastaPrograma;
    opcoes.pastaCorrente = meios_.ambiente.corrente;
    return opcoes;
}

void TFMAtualiza::Button1Click() {
    if (executando_) return;
    try {
        NoBanco([this, opcoes = Opcoes()] {
            TContexto ctx{*dm_, opcoes, estado_, {}, {}};
            if (ctx.Conexao().Connected()) ServidorVivo(ctx.Conexao());
            verificaIndicesPrimarios(ctx);
        });
    } catch (const std::exception& erro) {
        meios_.tela.Informacao(erro.what());
    }
}

}  // namespace wkd
