
#include <QApplication>
#include <QCheckBox>
#include <QPushButton>

#include <algorithm>

#include "Backup.h"
#include "Ensaio.h"
#include "Explicacao.h"
#include "Restauracao.h"
#include "Troca.h"
#include "commands/Comandos.h"
#include "context/CargaDoPacote.h"
#include "package/Caminho.h"
#include "package/TravaDoBanco.h"
#include "pages/PaginaAlias.h"
#include "pages/PaginaAtualizacao.h"
#include "pages/PaginaBackup.h"
#include "pages/PaginaOpcoes.h"
#include "pages/PaginaStatus.h"
#include "passes/Passes.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "report/PlanoEmTexto.h"
#include "report/RelatorioDaExecucao.h"
#include "run/Atualizacao.h"
#include "server/Vigia.h"
#include "values/Texto.h"
#include "widgets/Dialogos.h"
#include "widgets/SegundoPlano.h"
#include "window/FMAtualiza.h"
#include "window/JanelaDoPlano.h"
#include "window/TelaDaJanela.h"

// The update run as the window sees it.
// Backup, way back and rehearsal as the window sees them.

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
    Seguintes().status->PermitePlano(false);
    TFimMostrado mostrado;
    Seguintes().status->MostraFim(mostrado);
    codigo_ = Executa(mostrado);
    if (codigo_ == TCodigoDeSaida::Sucesso || codigo_ == TCodigoDeSaida::ComErros) Conclui();
    if (codigo_ == TCodigoDeSaida::Encerrada && !mostrado.parada) Continua();
    Seguintes().status->MostraFim(mostrado);
}

/// After an early end: another package, other options, or what a plan says.
void TFMAtualiza::Continua() {
    for (QPushButton* botao : {btVoltar_, btSair_}) botao->setEnabled(true);
    Seguintes().status->PermitePlano(true);
}

void TFMAtualiza::btPlanoClick() {
    if (executando_) return;
    std::vector<QPushButton*> livres;
    for (QPushButton* botao : {btVoltar_, btProximo_, btSair_})
        if (botao->isEnabled()) livres.push_back(botao);
    for (QPushButton* botao : livres) botao->setEnabled(false);
    Seguintes().status->PermitePlano(false);
    std::optional<TPlano> plano;
    NoBanco([&, opcoes = Opcoes()] {
        try {
            plano = Planeja(*dm_, opcoes, estado_);
        } catch (const std::exception& erro) {
            meios_.tela.Erro(TErroDaExecucao::NaCaixa(ErroDe(erro)));
        }
    });
    for (QPushButton* botao : livres) botao->setEnabled(true);
    Seguintes().status->PermitePlano(true);
    delete findChild<TJanelaDoPlano*>();
    if (plano) (new TJanelaDoPlano(std::move(*plano), meios_.dialogos, this))->show();
}

TCodigoDeSaida TFMAtualiza::Executa(TFimMostrado& mostrado) {
    if (!PastaGravavel(meios_.ambiente.pastaPrograma)) {
        MostraErro({.mensagem = "Sem permissão de gravação na pasta do programa, " +
                                meios_.ambiente.pastaPrograma.string() +
                                ", onde ficam o log e as linhas rejeitadas. Dê a permissão e rode de novo.",
                    .falha = TFalha::Arquivo});
        return TCodigoDeSaida::Encerrada;
    }
    TFimDaAtualizacao fim = TFimDaAtualizacao::Interrompida;  // unless it comes to an end of its own
    const bool comBackup = inicio_.comBackup || Seguintes().status->ComBackup();
    auto pasta = Seguintes().backup->Pasta();
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

namespace {

/// An early end leaves what is to be done; after one of these the buttons stay as they are.
void DizOQueFazer(const TEvidencia& evidencia, TFimMostrado& fim) {
    constexpr TFalha kParam[] = {TFalha::NaoConfirmada, TFalha::PacoteAusente, TFalha::UsuariosConectados};
    if (evidencia.termino != TFimDaAtualizacao::Encerrada || evidencia.erros.empty()) return;
    const TFalha motivo = evidencia.erros.back().erro.falha;
    fim.parada = std::ranges::find(kParam, motivo) != std::end(kParam);
    fim.providencia = Q(Providencia(motivo));
}

}  // namespace

TFimMostrado TFMAtualiza::Relata(const TEvidencia& evidencia) {
    TFimMostrado fim{.veredicto = Q(Veredicto(evidencia)), .certo = TudoFeito(evidencia)};
    DizOQueFazer(evidencia, fim);
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
        for (QWidget* pagina :
             std::initializer_list<QWidget*>{alias_, Seguintes().backup, Seguintes().atualizacao, Seguintes().opcoes})
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
    else if (!executando_)
        Termina();
}

void TFMAtualiza::Conclui() {
    const bool assistida = !meios_.tela.Desassistida();
    if (assistida) meios_.dialogos.Informacao("Atualização concluída com sucesso");
    btSair_->setEnabled(true);
    if (assistida && meios_.dialogos.Confirmacao("Deseja visualizar arquivo de log?")) AbrirLog();
    dm_->SQLConnection1.Close();
}

TOpcoes TFMAtualiza::Opcoes() {
    TOpcoes opcoes;
    opcoes.alias = aliasAtual_;
    opcoes.pacote = Seguintes().atualizacao->Pacote();
    Seguintes().opcoes->Le(opcoes);
    opcoes.linhasPorCommit = inicio_.escolhas.linhasPorCommit;
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
        MostraErro(ErroDe(erro));
    }
}

namespace {

std::string ComAchados(const TVeredito& veredito) {
    return veredito.frase + (veredito.achados.empty() ? "" : "\n" + Junta(veredito.achados, "\n"));
}

}  // namespace

/// Runs the work on the database, with its progress over the window and a button that ends it. What it gives is shown.
void TFMAtualiza::ComAndamento(const std::function<std::string(const TAcompanha&)>& trabalho) {
    if (executando_) return;
    std::vector<QPushButton*> livres;
    for (QPushButton* botao : {btVoltar_, btProximo_, btSair_})
        if (botao->isEnabled()) livres.push_back(botao);
    for (QPushButton* botao : livres) botao->setEnabled(false);
    cancelado_ = false;
    Seguintes().ocupado->OfereceCancelar([this] { cancelado_ = true; });
    std::string resultado;
    bool falhou = false;
    NoBanco([&] {
        try {
            resultado = trabalho([this](const TProgresso& progresso) {
                if (cancelado_) throw TCancelada();
                meios_.tela.MostraOcupado(progresso.texto, progresso.percentual);
            });
        } catch (const TCancelada&) {
            resultado = "Cancelado: nada foi gravado.";
        } catch (const std::exception& erro) {
            falhou = true;
            resultado = ExplicaFalha(erro);
        }
        meios_.tela.EscondeOcupado();
    });
    Seguintes().ocupado->OfereceCancelar({});
    for (QPushButton* botao : livres) botao->setEnabled(true);
    if (falhou)
        meios_.dialogos.Erro(Q(resultado));
    else if (!resultado.empty())
        meios_.dialogos.Informacao(Q(resultado));
}

void TFMAtualiza::btExecutaBackupClick() {
    const TPedidoDeBackup pedido{aliasAtual_, Seguintes().backup->Pasta(), 0};
    if (pedido.pasta.empty()) return meios_.dialogos.Informacao("Escolha a pasta de backup.");
    std::filesystem::path feito;
    ComAndamento([&](const TAcompanha& acompanha) {
        const TBackupFeito backup = FazBackup(dm_->SQLConnection1, pedido, acompanha);
        feito = backup.arquivo;
        return "Backup feito: " + TextoDoCaminho(feito) + " (" + TamanhoEmTexto(backup.manifesto.tamanho) +
               ").\nAgora restaure-o na cópia de teste, para certificar-se de que está bom.";
    });
    if (!feito.empty()) Seguintes().backup->BackupFeito(feito);
}

void TFMAtualiza::btRestauraBackupClick() {
    const std::filesystem::path arquivo = Seguintes().backup->Arquivo();
    if (arquivo.empty()) return;
    if (!Seguintes().backup->NaBaseOriginal()) return RestauraNaCopia(arquivo);
    if (!meios_.dialogos.Confirmacao(Q("Pôr o backup " + TextoDoCaminho(arquivo) +
                                       " no lugar do banco em uso? O que está nele desde o backup fica só na cópia "
                                       "guardada.")))
        return;
    ComAndamento([&](const TAcompanha& acompanha) {
        if (const auto quem = QuemAtualiza(dm_->SQLConnection1)) throw TOutraAtualizacao(*quem);
        const TRestauracao restauracao =
            RestauraNaOriginal(dm_->SQLConnection1, {aliasAtual_, arquivo, arquivo.parent_path()}, acompanha);
        dm_->SQLConnection1.Open();
        return ComAchados(restauracao.veredito) + "\nO banco em uso é agora o do backup." +
               (restauracao.antigo.empty() ? "" : " O de antes está guardado, inteiro, em " + restauracao.antigo + ".");
    });
}

void TFMAtualiza::RestauraNaCopia(const std::filesystem::path& arquivo) {
    const std::string banco = Seguintes().backup->Destino();
    bool existe = false;
    ComAndamento([&](const TAcompanha&) {
        existe = CriaServidorDeBackup(dm_->SQLConnection1)->Existe(banco);
        return std::string();
    });
    const bool deTeste = Seguintes().backup->NaCopiaDeTeste();
    if (existe && (!deTeste || !meios_.dialogos.Confirmacao(
                                   Q("A cópia de teste " + banco + " já existe. Apagá-la e restaurar de novo?")))) {
        if (!deTeste) meios_.dialogos.Informacao(Q("Já existe o banco " + banco + ". Escolha outro nome e repita."));
        return;
    }
    ComAndamento([&](const TAcompanha& acompanha) {
        if (existe) CriaServidorDeBackup(dm_->SQLConnection1)->Apaga(banco);
        return ComAchados(ProvaBackup(dm_->SQLConnection1, {arquivo, banco}, acompanha));
    });
}

void TFMAtualiza::btEnsaioClick() {
    const TPedidoDeEnsaio pedido{Opcoes(), PastaDeBackup(meios_.ambiente, meios_.preferencias, dm_->SQLConnection1),
                                 false};
    Seguintes().status->PermitePlano(false);
    std::string frase;
    ComAndamento([&](const TAcompanha& acompanha) {
        const TEnsaio ensaio = Ensaia(dm_->SQLConnection1, pedido, acompanha);
        for (const auto& linha : Divide(EnsaioEmTexto(ensaio), '\n')) meios_.tela.Memo1(linha);
        return "Ensaio: " + ensaio.Frase() + ".";
    });
    Seguintes().status->PermitePlano(true);
}

/// False, and why, when there is no good backup: then there is no update.
bool TFMAtualiza::BackupAntes(const std::filesystem::path& pasta, TEvidencia& evidencia) {
    const auto acompanha = [this](const TProgresso& progresso) { meios_.tela.LblAtual(progresso.texto); };
    try {
        meios_.tela.Memo1("Backup antes da atualização");
        const TBackupFeito feito = FazBackup(dm_->SQLConnection1, {aliasAtual_, pasta, 0}, acompanha);
        const std::string arquivo = TextoDoCaminho(feito.arquivo);
        const TVeredito veredito = ProvaBackup(dm_->SQLConnection1, {feito.arquivo, "", feito.manifesto}, acompanha);
        if (!veredito.bom) throw TErroDeBackup(ComAchados(veredito));
        evidencia.backup = arquivo;
        evidencia.volta = "AtualizaWKD --restaura \"" + aliasAtual_ + "\" \"" + arquivo + "\"";
        meios_.tela.Memo1(veredito.frase);
        meios_.tela.Memo1("Backup: " + arquivo);
        meios_.tela.Memo1("Para voltar atrás: " + evidencia.volta);
        return true;
    } catch (const std::exception& erro) {
        TErro semBackup = ErroDe(erro);
        semBackup.mensagem = "A atualização não começou, porque não há backup bom. " + ExplicaFalha(erro);
        meios_.tela.Erro(TErroDaExecucao::NaCaixa(std::move(semBackup)));
        return false;
    }
}

}  // namespace wkd
