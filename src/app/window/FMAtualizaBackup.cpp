// Backup, way back and rehearsal as the window sees them.

#include <QCheckBox>
#include <QPushButton>

#include "Backup.h"
#include "Ensaio.h"
#include "Explicacao.h"
#include "Restauracao.h"
#include "Troca.h"
#include "commands/ComandosDeBackup.h"
#include "package/Caminho.h"
#include "report/EnsaioEmTexto.h"
#include "run/TravaDoBanco.h"
#include "values/Texto.h"
#include "window/Controles.h"
#include "window/Dialogos.h"
#include "window/FMAtualiza.h"
#include "window/PaginaBackup.h"
#include "window/PaginaStatus.h"

namespace wkd {

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
    ocupado_->OfereceCancelar([this] { cancelado_ = true; });
    std::string resultado;
    NoBanco([&] {
        try {
            resultado = trabalho([this](const TProgresso& progresso) {
                if (cancelado_) throw TCancelada();
                meios_.tela.MostraOcupado(progresso.texto, progresso.percentual);
            });
        } catch (const TCancelada&) {
            resultado = "Cancelado: nada foi gravado.";
        } catch (const std::exception& erro) {
            resultado = ExplicaFalha(erro);
        }
        meios_.tela.EscondeOcupado();
    });
    ocupado_->OfereceCancelar({});
    for (QPushButton* botao : livres) botao->setEnabled(true);
    if (!resultado.empty()) meios_.dialogos.Informacao(Q(resultado));
}

void TFMAtualiza::btExecutaBackupClick() {
    const TPedidoDeBackup pedido{aliasAtual_, backup_->Pasta(), 0};
    if (pedido.pasta.empty()) return meios_.dialogos.Informacao("Escolha a pasta de backup.");
    std::filesystem::path feito;
    ComAndamento([&](const TAcompanha& acompanha) {
        const TBackupFeito backup = FazBackup(dm_->SQLConnection1, pedido, acompanha);
        feito = backup.arquivo;
        return "Backup feito: " + TextoDoCaminho(feito) + " (" + TamanhoEmTexto(backup.manifesto.tamanho) +
               ").\nAgora restaure-o na cópia de teste, para certificar-se de que está bom.";
    });
    if (!feito.empty()) backup_->BackupFeito(feito);
}

void TFMAtualiza::btRestauraBackupClick() {
    const std::filesystem::path arquivo = backup_->Arquivo();
    if (arquivo.empty()) return;
    if (!backup_->NaBaseOriginal()) return RestauraNaCopia(arquivo);
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
    const std::string banco = backup_->Destino();
    bool existe = false;
    ComAndamento([&](const TAcompanha&) {
        existe = CriaServidorDeBackup(dm_->SQLConnection1)->Existe(banco);
        return std::string();
    });
    const bool deTeste = backup_->NaCopiaDeTeste();
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
    status_->PermitePlano(false);
    std::string frase;
    ComAndamento([&](const TAcompanha& acompanha) {
        const TEnsaio ensaio = Ensaia(dm_->SQLConnection1, pedido, acompanha);
        for (const auto& linha : Divide(EnsaioEmTexto(ensaio), '\n')) meios_.tela.Memo1(linha);
        return "Ensaio: " + ensaio.Frase() + ".";
    });
    status_->PermitePlano(true);
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
