// Editing of TClientDataSet, and sending of its pending changes.
#include <algorithm>
#include <stdexcept>

#include "ClientDataSet.h"
#include "Connection.h"
#include "EnvioDeAlteracoes.h"

namespace wkd {

void TClientDataSet::Append() {
    if (!ativo_) throw std::logic_error("Inclusão em um conjunto de dados fechado");
    edicao_ = TLinha(campos_.size());
    editada_.reset();
}

void TClientDataSet::Edit() {
    Cancel();
    const TIdLinha id = ExigeLinha();
    edicao_ = linhas_[id];
    editada_ = id;
}

void TClientDataSet::SetValor(std::string_view campo, const TValor& valor) {
    if (!edicao_) throw std::logic_error("Valor atribuído fora de uma inclusão ou edição: " + std::string(campo));
    const std::size_t posicao = Posicao(campo);
    (*edicao_)[posicao] = valor.Converte(campos_[posicao].tipo);
}

void TClientDataSet::Post() {
    if (!edicao_) throw std::logic_error("Gravação sem inclusão ou edição");
    ExigeRequeridos();
    Sincroniza();
    GravaEdicao();
    ++versao_;
}

void TClientDataSet::Cancel() {
    edicao_.reset();
    editada_.reset();
}

void TClientDataSet::Delete() {
    Cancel();
    const TIdLinha id = ExigeLinha();
    visao_.Exclui(posicao_);
    linhas_.Exclui(id);
    ++versao_;
}

int TClientDataSet::ApplyUpdates(int maximoErros) {
    const int erros = Envia(maximoErros);
    if (erros == 0) linhas_.Confirma();
    return erros;
}

void TClientDataSet::CancelUpdates() {
    Cancel();
    Desfaz(linhas_.Pendentes());
}

/// The cursor stays on its row, or where an inserted one was, so a loop over the rows goes on behind one that failed.
void TClientDataSet::Desfaz(const std::vector<TIdLinha>& ids) {
    const auto atual = LinhaAtual();
    const std::size_t posicao = posicao_;
    for (TIdLinha id : ids) linhas_.Desfaz(id);
    Invalida();
    Sincroniza();
    if (!atual || visao_.Total() == 0) return;
    const auto lugar = linhas_.Existe(*atual) ? visao_.Posicao(linhas_, *atual) : std::nullopt;
    posicao_ = lugar.value_or(std::min(posicao, visao_.Total() - 1));
}

TIdLinha TClientDataSet::ExigeLinha() const {
    const auto linha = LinhaAtual();
    if (!linha) throw std::logic_error("Não há registro atual em " + provedor_.tabela);
    return *linha;
}

void TClientDataSet::ExigeRequeridos() const {
    for (std::size_t i = 0; i < campos_.size(); ++i)
        if (campos_[i].requerido && (*edicao_)[i].Nulo())
            throw TErroBanco({.mensagem = "O campo " + campos_[i].nome + " deve ter um valor",
                              .codigoNativo = 0,
                              .sqlstate = "23000",
                              .comando = {},
                              .falha = TFalha::Restricao,
                              .conexaoPerdida = false});
}

/// Puts the edited row among the rows; the cursor is on it when link and filter show it.
void TClientDataSet::GravaEdicao() {
    TLinha linha = *std::move(edicao_);
    const auto editada = editada_;
    Cancel();
    if (!editada) {
        const TIdLinha nova = linhas_.Inclui(std::move(linha));
        if (Passa(nova)) posicao_ = visao_.Inclui(linhas_, nova);
        return;
    }
    const auto posicao = visao_.Posicao(linhas_, *editada);
    linhas_.Altera(*editada, std::move(linha));
    if (!posicao) return;
    visao_.Exclui(*posicao);
    if (Passa(*editada)) posicao_ = visao_.Inclui(linhas_, *editada);
}

int TClientDataSet::Envia(int maximoErros) {
    Cancel();
    if (ChangeCount() == 0) return 0;
    TEnvioDeAlteracoes envio(provedor_, campos_);
    int erros = 0;
    for (TIdLinha id : linhas_.Pendentes()) {
        std::string erro;
        try {
            envio.Envia(linhas_.Registro(id));
            continue;
        } catch (const TErroBanco& e) {
            erro = e.what();
        } catch (const TErroConversao& e) {
            erro = e.what();
        }
        ++erros;
        const TAcaoReconcilia acao = Reconcilia(erro);
        if (acao == TAcaoReconcilia::Cancela) Desfaz({id});
        if (acao == TAcaoReconcilia::Aborta || (maximoErros >= 0 && erros > maximoErros)) break;
    }
    return erros;
}

TAcaoReconcilia TClientDataSet::Reconcilia(std::string_view erro) const {
    return OnReconcileError ? OnReconcileError(erro) : TAcaoReconcilia::Pula;
}

bool AplicaEmTransacao(TClientDataSet& dados) {
    if (dados.ChangeCount() == 0) return true;
    if (!dados.Provedor().conexao) throw std::logic_error("Alterações sem conexão");
    bool gravou = false;
    try {
        TTransacao transacao(*dados.Provedor().conexao);
        if (dados.Envia(0) == 0) {
            transacao.Commit();
            gravou = true;
        }
    } catch (const TErroBanco& e) {
        dados.Reconcilia(e.what());
    }
    if (gravou)
        dados.linhas_.Confirma();
    else
        dados.CancelUpdates();
    return gravou;
}

}  // namespace wkd
