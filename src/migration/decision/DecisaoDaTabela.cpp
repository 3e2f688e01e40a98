#include "decision/DecisaoDaTabela.h"

#include <algorithm>
#include <iterator>

#include "decision/Comparacao.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rebuild/Impedimento.h"
#include "run/CargaDoPacote.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Lookup and calculated columns are not examined, nor is a column that the database does not know yet.
bool Examina(const TColunaComparada& nova) { return Apara(nova.lookup).empty() && !nova.Calculada(); }

std::string Linha(const TClientDataSet& novo, const TClientDataSet& velho) {
    return "Tabela = " + novo.Texto("arquivo") + " | Campo = " + novo.Texto("nome") + " de " + velho.Texto("Tipo") +
           "(" + velho.Texto("TAMANHO") + ") para " + novo.Texto("Tipo") + "(" + novo.Texto("tamanho") + ")";
}

bool ColunaPodeMudar(TContexto& ctx) {
    const auto nova = ColunaDe(ctx.dm.SatribNovo);
    if (!nova || !Examina(*nova)) return true;
    const auto velha = ColunaDe(ctx.dm.SatribVelho);
    return !velha || !MudancaExclusiva(*nova, *velha);
}

}  // namespace

std::vector<TMudancaExclusiva> MudancasExclusivas(TContexto& ctx) {
    std::vector<TMudancaExclusiva> mudancas;
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    TClientDataSet& colunas = ctx.dm.SatribNovo;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        for (colunas.First(); !colunas.Eof(); colunas.Next()) {
            ctx.Tela().ProcessaMensagens();
            if (!ColunaPodeMudar(ctx))
                mudancas.push_back({tabelas.Texto("nome_arquivo"), Linha(colunas, ctx.dm.SatribVelho)});
        }
    }
    return mudancas;
}

bool VerificaAtualizacao(TContexto& ctx) {
    const auto mudancas = MudancasExclusivas(ctx);
    for (const auto& mudanca : mudancas) ctx.Tela().Memo1(mudanca.linha);
    return mudancas.empty();
}

namespace {

/// The decision about one table, made step by step as the run takes its steps.
class TDecide {
  public:
    TDecide(TContexto& ctx, const TMarcasDeAnalise& marcas)
        : ctx_(ctx), marcas_(marcas), tabela_(TabelaAtual(ctx)), noLugar_(NuncaReconstruida(tabela_)) {}

    TDecisaoDaTabela Decide() {
        if (tabela_.empty()) return decisao_;
        const bool existe = ctx_.dm.ExisteTabela(tabela_);
        if (existe)
            Existente();
        else if (RestauracaoPendente())
            Reconstroi("reconstrução interrompida: os registros estão em " + NomeDaBackup(tabela_));
        else
            Nova();
        const bool paraReconstruir = decisao_.acao == TAcaoDaTabela::Reconstroi || (existe && Completa());
        decisao_.alteraDicionario = !paraReconstruir && (Pedida() || (noLugar_ && decisao_.analisada)) && TemColunas();
        if (decisao_.acao == TAcaoDaTabela::Nada && (decisao_.analisada || decisao_.alteraDicionario))
            decisao_.acao = TAcaoDaTabela::Altera;
        return std::move(decisao_);
    }

  private:
    /// Whether every existing table is to be rebuilt. One that is not analysed is then not altered either.
    bool Completa() const { return !noLugar_ && (ctx_.opcoes.completo || ctx_.opcoes.modoCompleto); }
    bool TemColunas() const { return !ctx_.dm.SatribNovo.IsEmpty(); }
    bool RestauracaoPendente() {
        return ctx_.dm.ExisteTabela(NomeDaBackup(tabela_)) && (Aberta() || ReconstrucaoPendente(ctx_, tabela_));
    }
    bool Aberta() const { return !noLugar_ && ctx_.abertas.contains(ChaveDeNome(tabela_)); }
    bool Pendente() const { return ctx_.dm.SarquivoVelho.Inteiro("versao") == kVersaoPendente; }
    void Reconstroi(std::string motivo) {
        if (decisao_.acao != TAcaoDaTabela::Reconstroi) decisao_.motivo = std::move(motivo);
        decisao_.acao = TAcaoDaTabela::Reconstroi;
    }

    void Nova() {
        if (TemColunas()) decisao_.acao = TAcaoDaTabela::Cria;
        decisao_.motivo = TemColunas() ? "a tabela não existe" : "o pacote não tem colunas da tabela";
    }

    void Existente() {
        decisao_.analisada = Analisa();
        decisao_.motivo = Motivo();
        if (!decisao_.analisada) return;
        if (Completa()) Reconstroi("atualização completa pedida nas opções");
        if (!noLugar_) {
            if (Pendente()) Reconstroi("reconstrução pendente (versão -1)");
            if (Aberta()) Reconstroi("a última reconstrução dela não chegou ao fim");
            ExigeColunasDeChave();
        }
        ComparaColunas();
        if (decisao_.acao == TAcaoDaTabela::Reconstroi) decisao_.comandos.clear();
    }

    bool VersaoDifere() const {
        const TValor& nova = ctx_.dm.SArquivoNovo.Valor("versao");
        const TValor& velha = ctx_.dm.SarquivoVelho.Valor("versao");
        return nova.Nulo() != velha.Nulo() || nova.ComoInteiro() != velha.ComoInteiro();
    }
    bool Analisa() const {
        const TOpcoes& opcoes = ctx_.opcoes;
        return VersaoDifere() || opcoes.completo || opcoes.todas ||
               (opcoes.tabelasSelecionadas && !NomesListados(opcoes.tabelas).empty()) || marcas_.Marcada(tabela_) ||
               Aberta();
    }
    bool Pedida() const {
        const TOpcoes& opcoes = ctx_.opcoes;
        return VersaoDifere() || opcoes.todas || opcoes.tabelasSelecionadas || marcas_.Marcada(tabela_);
    }
    std::string Motivo() const {
        const TValor& velha = ctx_.dm.SarquivoVelho.Valor("versao");
        const std::string nova = ctx_.dm.SArquivoNovo.Texto("versao");
        if (VersaoDifere()) return "versão " + (velha.Nulo() ? "não registrada" : velha.ComoTexto()) + " para " + nova;
        if (marcas_.Marcada(tabela_) || Aberta()) return "a última atualização dela não chegou ao fim";
        return decisao_.analisada ? "pedida nas opções" : "na versão do pacote, " + nova;
    }

    /// A key column of the package that the stored dictionary lacks.
    void ExigeColunasDeChave() {
        TClientDataSet& novo = ctx_.dm.SatribNovo;
        novo.SetFilter("chave_de_pesquisa = 1");
        novo.SetFiltered(true);
        for (novo.First(); !novo.Eof(); novo.Next())
            if (ctx_.dm.SatribVelho.IsEmpty())
                Reconstroi("coluna de chave nova: " + std::string(Apara(novo.Texto("nome"))));
        novo.SetFilter("");
        novo.SetFiltered(false);
    }

    void ComparaColunas() {
        TClientDataSet& novo = ctx_.dm.SatribNovo;
        for (novo.First(); !novo.Eof(); novo.Next()) {
            ctx_.Tela().ProcessaMensagens();
            if (decisao_.acao != TAcaoDaTabela::Reconstroi) ComparaColunaAtual();
        }
    }

    void ComparaColunaAtual() {
        const auto nova = ColunaDe(ctx_.dm.SatribNovo);
        if (!nova || !ColunaFisica(*nova)) return;
        const auto& fisicas = ctx_.dm.ColunasFisicas(tabela_);
        TFatosFisicos fatos{ColunaDeNome(fisicas, nova->nome), ColunaDeNome(fisicas, nova->nome + "_TMP") != nullptr};
        if (noLugar_) {
            fatos.naChave = NaChave(nova->nome);
            fatos.inacabada = marcas_.Marcada(tabela_);
        }
        const auto compara = noLugar_ ? ComparaNoLugar : ComparaColuna;
        TDecisaoDaColuna coluna = compara(tabela_, *nova, ColunaDe(ctx_.dm.SatribVelho), fatos, ctx_.Banco());
        if (coluna.reconstroi) Reconstroi(coluna.motivo);
        std::ranges::move(coluna.comandos, std::back_inserter(decisao_.comandos));
        if (coluna.acrescenta) decisao_.novas.push_back(nova->nome);
    }

    bool NaChave(const std::string& coluna) {
        return std::ranges::any_of(ctx_.dm.ChavePrimaria(tabela_).colunas,
                                   [&](const std::string& nome) { return IgualSemCaixa(nome, coluna); });
    }

    TContexto& ctx_;
    const TMarcasDeAnalise& marcas_;
    const std::string tabela_;
    const bool noLugar_;  // never rebuilt
    TDecisaoDaTabela decisao_;
};

}  // namespace

TDecisaoDaTabela DecideTabela(TContexto& ctx, const TMarcasDeAnalise& marcas) { return TDecide(ctx, marcas).Decide(); }

std::string TabelaAtual(TContexto& ctx) { return std::string(Apara(ctx.dm.SArquivoNovo.Texto("nome_arquivo"))); }

}  // namespace wkd
