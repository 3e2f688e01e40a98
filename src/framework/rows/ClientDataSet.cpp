#include "rows/ClientDataSet.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "connection/Connection.h"
#include "rows/EnvioDeAlteracoes.h"
#include "values/Texto.h"

namespace wkd {

void TClientDataSet::Open() {
    if (provedor_.conexao) Carrega(LeTudo(*provedor_.conexao->Prepara(provedor_.sql)));
    ativo_ = true;
    First();
}

/// Firebird tells the columns of a statement that is prepared; run, it reads the whole table to find no row.
void TClientDataSet::OpenVazio() {
    const auto consulta = provedor_.conexao->Prepara(provedor_.sql + " where 1 = 0");
    Carrega(consulta->Campos().empty() ? LeTudo(*consulta) : TTabelaEmMemoria{consulta->Campos(), {}});
}

void TClientDataSet::Recarrega(std::string_view campo, const TLinha& valores) {
    if (!ativo_ || !provedor_.conexao) return;
    Cancel();
    std::vector<std::string> parametros;
    for (std::size_t i = 0; i < valores.size(); ++i) parametros.push_back(":pVALOR" + std::to_string(i));
    const auto consulta = provedor_.conexao->Prepara(provedor_.sql + " where " + std::string(campo) + " in (" +
                                                     Junta(parametros, ", ") + ")");
    for (std::size_t i = 0; i < valores.size(); ++i) consulta->Atribui(i, valores[i]);
    Substitui(campo, valores, LeTudo(*consulta));
    Invalida();
}

/// The rows with these values by those, whose table may have other columns by now.
void TClientDataSet::Substitui(std::string_view campo, const TLinha& valores, TTabelaEmMemoria lidas) {
    for (const TValor& valor : valores)
        for (const TIdLinha id : std::vector(Indice(campo).Procura(ChaveDeValores({valor})))) linhas_.Esquece(id);
    std::vector<int> lugares;
    for (const TCampo& meu : campos_) lugares.push_back(wkd::IndiceDoCampo(lidas.campos, meu.nome));
    for (TLinha& lida : lidas.linhas) {
        TLinha linha;
        for (const int lugar : lugares)
            linha.push_back(lugar < 0 ? TValor() : std::move(lida[static_cast<std::size_t>(lugar)]));
        linhas_.Acrescenta(std::move(linha));
    }
}

void TClientDataSet::Close() {
    Cancel();
    linhas_.Carrega({});
    ativo_ = false;
    Invalida();
}

void TClientDataSet::Carrega(TTabelaEmMemoria tabela) {
    Cancel();
    campos_ = std::move(tabela.campos);
    linhas_.Carrega(std::move(tabela.linhas));
    ativo_ = true;
    Invalida();
}

TLinhasVistas TClientDataSet::Todas() const {
    std::vector<const TLinha*> linhas;
    for (TIdLinha id = 0; id < linhas_.Total(); ++id)
        if (linhas_.Existe(id)) linhas.push_back(&linhas_[id]);
    return {campos_, std::move(linhas)};
}

void TClientDataSet::SetIndexFieldNames(std::string_view nomes) {
    camposIndice_ = Divide(nomes, ';');
    Invalida();
}

void TClientDataSet::SetMaster(TClientDataSet* mestre, std::string_view camposMestre) {
    mestre_ = mestre;
    camposMestre_ = Divide(camposMestre, ';');
    mestreVisto_ = {};
    Invalida();
}

void TClientDataSet::SetFilter(std::string_view campo, const TLinha& valores) {
    campoDoFiltro_ = campo;
    filtro_.clear();
    for (const TValor& valor : valores) filtro_.insert(ChaveDeValor(valor));
    if (filtrado_) Invalida();
}

void TClientDataSet::SetFiltered(bool ligado) {
    if (filtrado_ != ligado) Invalida();
    filtrado_ = ligado;
}

void TClientDataSet::First() {
    Sincroniza();
    VaiPara(0);
}

void TClientDataSet::Last() {
    Sincroniza();
    VaiPara(visao_.Total() == 0 ? 0 : visao_.Total() - 1);
}

void TClientDataSet::Next() {
    Sincroniza();
    VaiPara(std::min(posicao_ + 1, visao_.Total()));
}

bool TClientDataSet::Eof() const {
    Sincroniza();
    return posicao_ >= visao_.Total();
}

std::size_t TClientDataSet::RecordCount() const {
    Sincroniza();
    return visao_.Total();
}

const TValor& TClientDataSet::Valor(std::string_view campo) const { return Valor(Posicao(campo)); }

const TValor& TClientDataSet::Valor(std::size_t campo) const {
    static const TValor kNulo;
    if (campo >= campos_.size()) throw std::invalid_argument("Campo inexistente");
    if (edicao_) return (*edicao_)[campo];
    const auto linha = LinhaAtual();
    return linha ? linhas_[*linha][campo] : kNulo;
}

bool TClientDataSet::Existe(std::string_view campos, const TLinha& valores) const {
    return !Indice(campos).Procura(ChaveDeValores(valores)).empty();
}

bool TClientDataSet::Locate(std::string_view campos, const TLinha& valores) {
    Sincroniza();
    std::optional<std::size_t> primeira;
    for (TIdLinha id : Indice(campos).Procura(ChaveDeValores(valores))) {
        const auto posicao = visao_.Posicao(linhas_, id);
        if (posicao && (!primeira || *posicao < *primeira)) primeira = posicao;
    }
    if (primeira) VaiPara(*primeira);
    return primeira.has_value();
}

std::size_t TClientDataSet::Posicao(std::string_view campo) const {
    const int posicao = IndiceDoCampo(campo);
    if (posicao < 0) throw std::invalid_argument("Campo inexistente: " + std::string(campo));
    return static_cast<std::size_t>(posicao);
}

std::vector<std::size_t> TClientDataSet::Posicoes(const std::vector<std::string>& campos) const {
    std::vector<std::size_t> posicoes;
    for (const std::string& campo : campos) posicoes.push_back(Posicao(Apara(campo)));
    return posicoes;
}

const TIndiceDeLinhas& TClientDataSet::Indice(std::string_view campos) const {
    return linhas_.Indice(Posicoes(Divide(campos, ';')));
}

std::optional<TIdLinha> TClientDataSet::LinhaAtual() const {
    Sincroniza();
    if (posicao_ >= visao_.Total()) return std::nullopt;
    return visao_[posicao_];
}

void TClientDataSet::VaiPara(std::size_t posicao) {
    Cancel();
    if (posicao == posicao_) return;
    posicao_ = posicao;
    ++versao_;
}

/// Collects the visible rows again when the master has moved or something else they hang on has changed.
void TClientDataSet::Sincroniza() const {
    SegueMestre();
    if (!desatualizada_) return;
    MontaVisao();
    desatualizada_ = false;
    posicao_ = 0;
    ++versao_;
}

void TClientDataSet::SegueMestre() const {
    if (!mestre_) return;
    mestre_->Sincroniza();
    if (mestreVisto_.versao == mestre_->versao_) return;
    TMestreVisto visto{mestre_->versao_, mestre_->LinhaAtual(), std::nullopt};
    if (visto.linha) visto.chave = ChaveDaLinha(mestre_->linhas_[*visto.linha], mestre_->Posicoes(camposMestre_));
    if (visto.linha != mestreVisto_.linha || visto.chave != mestreVisto_.chave) desatualizada_ = true;
    mestreVisto_ = std::move(visto);
}

void TClientDataSet::MontaVisao() const {
    if (!ativo_ || campos_.empty()) return visao_.Monta(linhas_, {}, {});
    const auto indice = Posicoes(camposIndice_);
    if (mestre_ && indice.size() != camposMestre_.size())
        throw std::invalid_argument("A ligação ao mestre pede tantos campos quantos tem o índice");
    auto ids = Candidatas(indice);
    std::erase_if(ids, [this](TIdLinha id) { return !PassaNoFiltro(id); });
    visao_.Monta(linhas_, std::move(ids), mestre_ ? std::vector<std::size_t>() : indice);
}

/// Rows that may be visible, the filter still to be asked: those of an index where there is one to ask.
std::vector<TIdLinha> TClientDataSet::Candidatas(const std::vector<std::size_t>& indice) const {
    if (mestre_) {
        if (!mestreVisto_.chave) return {};
        return linhas_.Indice(indice).Procura(*mestreVisto_.chave);
    }
    std::vector<TIdLinha> ids(linhas_.Total());
    std::iota(ids.begin(), ids.end(), TIdLinha{0});
    std::erase_if(ids, [this](TIdLinha id) { return !linhas_.Existe(id); });
    return ids;
}

bool TClientDataSet::PassaNoFiltro(TIdLinha id) const {
    if (!filtrado_ || filtro_.empty()) return true;
    const TValor& valor = linhas_[id][Posicao(campoDoFiltro_)];
    return !valor.Nulo() && filtro_.contains(ChaveDeValor(valor));
}

/// Whether link and filter show the row.
bool TClientDataSet::Passa(TIdLinha id) const {
    if (mestre_ && ChaveDaLinha(linhas_[id], Posicoes(camposIndice_)) != mestreVisto_.chave) return false;
    return PassaNoFiltro(id);
}

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
        TErro erro;
        try {
            envio.Envia(linhas_.Registro(id));
            continue;
        } catch (const TErroConhecido& e) {
            erro = e.Dados();
        }
        ++erros;
        const TAcaoReconcilia acao = Reconcilia(erro);
        if (acao == TAcaoReconcilia::Cancela) Desfaz({id});
        if (acao == TAcaoReconcilia::Aborta || (maximoErros >= 0 && erros > maximoErros)) break;
    }
    return erros;
}

TAcaoReconcilia TClientDataSet::Reconcilia(const TErro& erro) const {
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
        dados.Reconcilia(e.Dados());
    }
    if (gravou)
        dados.linhas_.Confirma();
    else
        dados.CancelUpdates();
    return gravou;
}

}  // namespace wkd
