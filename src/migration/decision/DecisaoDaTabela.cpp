#include "decision/DecisaoDaTabela.h"

#include <algorithm>
#include <iterator>

#include "context/CargaDoPacote.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Lookup and calculated columns are not examined, nor is a column that the database does not know yet.
bool Examina(const TColunaDicionario& nova) { return Apara(nova.lookup).empty() && Apara(nova.calculo).empty(); }

std::string Linha(const TColunaDicionario& nova, const TColunaDicionario& velha) {
    return "Tabela = " + nova.tabela + " | Campo = " + nova.nome + " de " + velha.tipo + "(" + velha.tamanho +
           ") para " + nova.tipo + "(" + nova.tamanho + ")";
}

}  // namespace

std::vector<TMudancaExclusiva> MudancasExclusivas(const TDicionario& novo, const TDicionario& gravado) {
    std::vector<TMudancaExclusiva> mudancas;
    for (const auto& tabela : novo.Tabelas())
        for (const auto& nova : novo.Colunas(tabela.nome)) {
            const auto* velha = Examina(nova) ? gravado.Coluna(tabela.nome, nova.nome) : nullptr;
            if (velha && MudancaExclusiva(nova, *velha)) mudancas.push_back({tabela.nome, Linha(nova, *velha)});
        }
    return mudancas;
}

bool VerificaAtualizacao(TContexto& ctx) {
    ctx.Tela().ProcessaMensagens();
    const auto mudancas = MudancasExclusivas(ctx.novo, ctx.gravado);
    for (const auto& mudanca : mudancas) ctx.Tela().Memo1(mudanca.linha);
    return mudancas.empty();
}

bool NuncaReconstruida(std::string_view tabela) {
    static constexpr std::string_view kTabelas[] = {"SATRIB", "SARQUIVO", "TINI"};
    return std::ranges::any_of(kTabelas, [&](std::string_view nome) { return IgualSemCaixa(nome, tabela); });
}

namespace {

/// The decision about one table, made step by step as the run takes its steps.
class TDecide {
  public:
    TDecide(const TTabelaDicionario& tabela, const TDicionario& novo, const TDicionario& gravado,
            const TFatosDaTabela& fatos, const TOpcoes& opcoes, TTipoBanco banco)
        : tabela_(tabela),
          colunas_(novo.Colunas(tabela.nome)),
          gravado_(gravado),
          gravada_(gravado.Tabela(tabela.modulo, tabela.nome)),
          fatos_(fatos),
          opcoes_(opcoes),
          banco_(banco),
          noLugar_(NuncaReconstruida(tabela.nome)) {}

    TDecisaoDaTabela Decide() {
        if (fatos_.existe)
            Existente();
        else if (fatos_.restauracaoPendente)
            Reconstroi("reconstrução interrompida: os registros estão em " + NomeDaBackup(tabela_.nome));
        else
            Nova();
        const bool paraReconstruir = decisao_.acao == TAcaoDaTabela::Reconstroi || (fatos_.existe && Completa());
        decisao_.alteraDicionario = !paraReconstruir && (Pedida() || (noLugar_ && decisao_.analisada)) && TemColunas();
        if (decisao_.acao == TAcaoDaTabela::Nada && (decisao_.analisada || decisao_.alteraDicionario))
            decisao_.acao = TAcaoDaTabela::Altera;
        return std::move(decisao_);
    }

    bool Analisa() const {
        return VersaoDifere() || opcoes_.completo || opcoes_.todas ||
               (opcoes_.tabelasSelecionadas && !NomesListados(opcoes_.tabelas).empty()) || fatos_.marcada ||
               fatos_.aberta;
    }

  private:
    /// Whether every existing table is to be rebuilt. One that is not analysed is then not altered either.
    bool Completa() const { return !noLugar_ && (opcoes_.completo || opcoes_.modoCompleto); }
    bool TemColunas() const { return !colunas_.empty(); }
    std::optional<std::int64_t> VersaoGravada() const { return gravada_ ? gravada_->versao : std::nullopt; }
    bool VersaoDifere() const { return tabela_.versao != VersaoGravada(); }
    bool Pedida() const { return VersaoDifere() || opcoes_.todas || opcoes_.tabelasSelecionadas || fatos_.marcada; }
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
            if (VersaoGravada() == kVersaoPendente) Reconstroi("reconstrução pendente (versão -1)");
            if (fatos_.aberta) Reconstroi("a última reconstrução dela não chegou ao fim");
            ExigeColunasDeChave();
        }
        for (const auto& nova : colunas_)
            if (decisao_.acao != TAcaoDaTabela::Reconstroi && ColunaFisica(nova)) Compara(nova);
        if (decisao_.acao == TAcaoDaTabela::Reconstroi) decisao_.comandos.clear();
    }

    std::string Motivo() const {
        const auto velha = VersaoGravada();
        const std::string nova = tabela_.versao ? std::to_string(*tabela_.versao) : "";
        if (VersaoDifere()) return "versão " + (velha ? std::to_string(*velha) : "não registrada") + " para " + nova;
        if (fatos_.marcada || fatos_.aberta) return "a última atualização dela não chegou ao fim";
        return decisao_.analisada ? "pedida nas opções" : "na versão do pacote, " + nova;
    }

    /// A key column of the package that the stored dictionary lacks.
    void ExigeColunasDeChave() {
        for (const auto& nova : colunas_)
            if (nova.chave == 1 && !gravado_.Coluna(tabela_.nome, nova.nome))
                Reconstroi("coluna de chave nova: " + nova.nome);
    }

    void Compara(const TColunaDicionario& nova) {
        TFatosFisicos fatos{ColunaDeNome(fatos_.colunas, nova.nome),
                            ColunaDeNome(fatos_.colunas, nova.nome + "_TMP") != nullptr};
        if (noLugar_) {
            fatos.naChave = std::ranges::any_of(
                fatos_.chave.colunas, [&](const std::string& nome) { return IgualSemCaixa(nome, nova.nome); });
            fatos.inacabada = fatos_.marcada;
        }
        const auto compara = noLugar_ ? ComparaNoLugar : ComparaColuna;
        TDecisaoDaColuna coluna = compara(tabela_.nome, nova, gravado_.Coluna(tabela_.nome, nova.nome), fatos, banco_);
        if (coluna.reconstroi) Reconstroi(coluna.motivo);
        std::ranges::move(coluna.comandos, std::back_inserter(decisao_.comandos));
        if (coluna.acrescenta) decisao_.novas.push_back(nova.nome);
    }

    const TTabelaDicionario& tabela_;
    const TDicionario::TColunas& colunas_;
    const TDicionario& gravado_;
    const TTabelaDicionario* gravada_;
    const TFatosDaTabela& fatos_;
    const TOpcoes& opcoes_;
    const TTipoBanco banco_;
    const bool noLugar_;  // never rebuilt
    TDecisaoDaTabela decisao_;
};

/// The columns are read for a table that is to be analysed alone.
TFatosDaTabela FatosDaTabela(TContexto& ctx, const TTabelaDicionario& tabela, const TMarcasDeAnalise& marcas) {
    const bool noLugar = NuncaReconstruida(tabela.nome);
    TFatosDaTabela fatos;
    fatos.existe = ctx.dm.ExisteTabela(tabela.nome);
    fatos.marcada = marcas.Marcada(tabela.nome);
    fatos.aberta = !noLugar && ctx.abertas.contains(ChaveDeNome(tabela.nome));
    if (!fatos.existe)
        fatos.restauracaoPendente = ctx.dm.ExisteTabela(NomeDaBackup(tabela.nome)) &&
                                    (fatos.aberta || ReconstrucaoPendente(ctx.Conexao(), tabela.nome));
    else if (TDecide(tabela, ctx.novo, ctx.gravado, fatos, ctx.opcoes, ctx.Banco()).Analisa()) {
        fatos.colunas = ctx.dm.ColunasFisicas(tabela.nome);
        if (noLugar) fatos.chave = ctx.dm.ChavePrimaria(tabela.nome);
    }
    return fatos;
}

}  // namespace

TDecisaoDaTabela DecideTabela(const TTabelaDicionario& tabela, const TDicionario& novo, const TDicionario& gravado,
                              const TFatosDaTabela& fatos, const TOpcoes& opcoes, TTipoBanco banco) {
    return TDecide(tabela, novo, gravado, fatos, opcoes, banco).Decide();
}

TDecisaoDaTabela DecideTabela(TContexto& ctx, const TMarcasDeAnalise& marcas) {
    const TTabelaDicionario* tabela = TabelaAtual(ctx);
    if (!tabela) return {};
    return DecideTabela(*tabela, ctx.novo, ctx.gravado, FatosDaTabela(ctx, *tabela, marcas), ctx.opcoes, ctx.Banco());
}

}  // namespace wkd
