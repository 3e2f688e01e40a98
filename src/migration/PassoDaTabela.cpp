#include "PassoDaTabela.h"

#include <algorithm>

#include "Alteracao.h"
#include "DicionarioDaTabela.h"
#include "EstadoDaReconstrucao.h"
#include "FimDaReconstrucao.h"
#include "Nova.h"
#include "Texto.h"

namespace wkd {

namespace {

const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome) {
    const auto achada = std::find_if(colunas.begin(), colunas.end(),
                                     [&](const auto& coluna) { return IgualSemCaixa(coluna.nome, nome); });
    return achada == colunas.end() ? nullptr : &*achada;
}

}  // namespace

TPassoDaTabela::TPassoDaTabela(TContexto& ctx, TMarcasDeAnalise& marcas) : ctx_(ctx), marcas_(marcas) {}

void TPassoDaTabela::Executa() {
    tabela_ = Apara(ctx_.dm.SArquivoNovo.Texto("nome_arquivo"));
    reconstroi_ = false;
    ctx_.repeteTabela = false;
    ctx_.dm.SatribNovo.SetFiltered(false);
    ctx_.Tela().ProcessaMensagens();
    ctx_.Tela().LblGeral("Analisando Tabela: " + tabela_);

    if (tabela_.empty()) return;
    if (ctx_.dm.ExisteTabela(tabela_))
        TabelaExistente();
    else if (RestauracaoPendente())
        Reconstroi();
    else
        TabelaNova();
    AlteraTabela();
    ctx_.dm.Commit("Preparando para executar query");
    if (!reconstroi_) ExecutaPendentes();
    pendentes_.clear();
    GravaVersao();
    const bool inacabada = reconstroi_ && ctx_.estado.falhouApagar;
    if (ctx_.repeteTabela || inacabada)
        marcas_.Marca(tabela_);
    else
        marcas_.Desmarca(tabela_);
}

void TPassoDaTabela::TabelaExistente() {
    ctx_.dm.Commit(tabela_);
    reconstroi_ = ctx_.opcoes.completo || ctx_.opcoes.modoCompleto;
    if (ctx_.dm.SarquivoVelho.IsEmpty()) IncluiNoSArquivo();
    if (ctx_.dm.SarquivoVelho.Inteiro("versao") == kVersaoPendente) reconstroi_ = true;
    if (!Analisa()) return;

    ctx_.Tela().Memo1("Atualizou o arquivo: " + tabela_);
    marcas_.Marca(tabela_);
    ApagaIndices();
    if (FaltaColunaDeChave()) reconstroi_ = true;
    ComparaColunas();
    if (reconstroi_) Reconstroi();
}

/// An interrupted rebuild dropped the table; its rows wait in the backup table.
bool TPassoDaTabela::RestauracaoPendente() {
    return ctx_.dm.ExisteTabela("B" + tabela_) && ReconstrucaoPendente(ctx_, tabela_);
}

void TPassoDaTabela::Reconstroi() {
    reconstroi_ = true;
    Nova(ctx_, tabela_);
}

void TPassoDaTabela::IncluiNoSArquivo() {
    TClientDataSet& velho = ctx_.dm.SarquivoVelho;
    velho.Append();
    velho.SetValor("cod_modulo", ctx_.dm.SArquivoNovo.Valor("cod_modulo"));
    velho.SetValor("nome_arquivo", ctx_.dm.SArquivoNovo.Valor("nome_arquivo"));
    if (velho.Texto("nome_arquivo").empty()) ctx_.Tela().Informacao("2");
    velho.Post();
    AplicaEmTransacao(velho);
}

bool TPassoDaTabela::VersaoDifere() const {
    const TValor& nova = ctx_.dm.SArquivoNovo.Valor("versao");
    const TValor& velha = ctx_.dm.SarquivoVelho.Valor("versao");
    return nova.Nulo() != velha.Nulo() || nova.ComoInteiro() != velha.ComoInteiro();
}

bool TPassoDaTabela::Analisa() const {
    const TOpcoes& opcoes = ctx_.opcoes;
    return VersaoDifere() || opcoes.completo || opcoes.todas ||
           (opcoes.tabelasSelecionadas && !opcoes.tabelas.empty()) || marcas_.Marcada(tabela_);
}

/// Those of the dictionary, which come back with the new one; indexes that somebody else made stay.
void TPassoDaTabela::ApagaIndices() {
    if (ctx_.dm.SatribNovo.IsEmpty()) return;
    try {
        ctx_.dm.Atualiza.ApagaIndicesDoDicionario(tabela_);
    } catch (const TErroBanco& erro) {
        ctx_.Falhou(erro);
        ctx_.Tela().SetLog("Apagar Índices", tabela_, erro.what());
    }
    ctx_.dm.Commit("Apagando indices: " + tabela_);
}

bool TPassoDaTabela::FaltaColunaDeChave() {
    TClientDataSet& novo = ctx_.dm.SatribNovo;
    novo.SetFilter("chave_de_pesquisa = 1");
    novo.SetFiltered(true);
    bool falta = false;
    for (novo.First(); !novo.Eof() && !falta; novo.Next()) falta = ctx_.dm.SatribVelho.IsEmpty();
    novo.SetFilter("");
    novo.SetFiltered(false);
    return falta;
}

void TPassoDaTabela::ComparaColunas() {
    TClientDataSet& novo = ctx_.dm.SatribNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) {
        ctx_.Tela().ProcessaMensagens();
        if (!reconstroi_) ComparaColunaAtual();
    }
}

void TPassoDaTabela::ComparaColunaAtual() {
    const auto nova = ColunaDe(ctx_.dm.SatribNovo);
    if (!nova || nova->Calculada()) return;
    const auto& fisicas = ctx_.dm.ColunasFisicas(tabela_);
    const TFatosFisicos fatos{ColunaDeNome(fisicas, nova->nome), ColunaDeNome(fisicas, nova->nome + "_TMP") != nullptr};

    TDecisaoDaColuna decisao = ComparaColuna(tabela_, *nova, ColunaDe(ctx_.dm.SatribVelho), fatos, ctx_.Banco());
    reconstroi_ = decisao.reconstroi;
    std::move(decisao.comandos.begin(), decisao.comandos.end(), std::back_inserter(pendentes_));
    if (decisao.acrescenta) CopiaColunaParaODicionario();
}

void TPassoDaTabela::CopiaColunaParaODicionario() {
    TClientDataSet& novo = ctx_.dm.SatribNovo;
    TClientDataSet& velho = ctx_.dm.SatribVelho;
    if (velho.IsEmpty())
        velho.Append();
    else
        velho.Edit();
    for (const TCampo& campo : novo.Campos())
        if (velho.IndiceDoCampo(campo.nome) >= 0) velho.SetValor(campo.nome, novo.Valor(campo.nome));
    velho.Post();
    AplicaEmTransacao(velho);
}

/// The table's SARQUIVO row comes first: column rows without one are orphans, and go at the end of the run.
void TPassoDaTabela::TabelaNova() {
    if (ctx_.dm.SatribNovo.IsEmpty()) return;
    if (ctx_.dm.SarquivoVelho.IsEmpty()) IncluiNoSArquivo();
    ctx_.Tela().Memo1("Criou a tabela: " + tabela_);
    RegravaDicionario(ctx_, tabela_, false);
    CriaTabelaComIndices(ctx_, tabela_);
}

void TPassoDaTabela::AlteraTabela() {
    const bool pedida =
        ctx_.opcoes.todas || VersaoDifere() || ctx_.opcoes.tabelasSelecionadas || marcas_.Marcada(tabela_);
    if (!pedida || reconstroi_ || ctx_.dm.SatribNovo.IsEmpty()) return;
    try {
        Alterar(ctx_, tabela_, pendentes_);
    } catch (const TErroBanco& erro) {
        ctx_.Falhou(erro);
        ctx_.Tela().SetLog("Verificar Campos", tabela_, erro.what());
    }
}

void TPassoDaTabela::ExecutaPendentes() {
    for (const TComandoPendente& comando : pendentes_) {
        ctx_.Tela().Memo1(comando.texto);
        if (const TResultado resultado = ExecutaPendente(ctx_, tabela_, comando); !resultado) {
            ctx_.Falhou(resultado.Erro());
            ctx_.Tela().Memo2(resultado.Mensagem());
            ctx_.Tela().SetLog("Query de alteração de campo" + resultado.Mensagem() + " Query: " + comando.texto,
                               tabela_, "");
        }
        ctx_.dm.Commit(comando.texto);
    }
}

/// Without a stored row one is made; its version stays open while the last rebuild could not drop its table.
void TPassoDaTabela::GravaVersao() {
    TClientDataSet& velho = ctx_.dm.SarquivoVelho;
    const TClientDataSet& novo = ctx_.dm.SArquivoNovo;
    if (velho.IsEmpty()) IncluiNoSArquivo();
    if (ctx_.estado.falhouApagar) return;

    const auto preenche = [&novo](TClientDataSet& linha) {
        linha.SetValor("Versao", novo.Inteiro("versao"));
        for (const std::string_view campo : {"arquivo_pai", "descricao_tabela"})
            if (novo.IndiceDoCampo(campo) >= 0) linha.SetValor(campo, novo.Valor(campo));
        if (novo.IndiceDoCampo("pesquisa_avancada") >= 0)
            linha.SetValor("pesquisa_avancada", novo.Inteiro("pesquisa_avancada"));
    };
    if (reconstroi_ && velho.Inteiro("versao") == kVersaoPendente) {
        GravaFim(ctx_, Maiusculas(tabela_), preenche);
        return;
    }
    velho.Edit();
    preenche(velho);
    velho.Post();
    AplicaEmTransacao(velho);
}

}  // namespace wkd
