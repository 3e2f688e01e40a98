#include "run/PassoDaTabela.h"

#include <set>
#include <utility>

#include "alter/Alteracao.h"
#include "alter/DicionarioDaTabela.h"
#include "copy/CopiaDeLinhas.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rebuild/Nova.h"
#include "run/RegistroDaExecucao.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// The log has the title where the message stands elsewhere, and the message as the action.
TErroDaExecucao SobTitulo(TErro erro, const std::string& tabela, const std::string& titulo) {
    auto execucao = TErroDaExecucao::NoLog(std::move(erro), tabela, titulo);
    execucao.entrada = {titulo, tabela, execucao.erro.mensagem};
    return execucao;
}

/// Those of the dictionary, which come back with the new one, and those that were of an older one; indexes that
/// somebody else made stay.
void ApagaIndices(TContexto& ctx, const std::string& tabela, const TMarcasDeAnalise& marcas,
                  TIndicesGuardados& guardados) {
    TTB& tb = ctx.dm.Atualiza;
    try {
        const auto indices = tb.IndicesDoDicionario(tabela, marcas.Retirados(tabela));
        auto diferentes = indices;
        std::erase_if(diferentes, [&](const TIndice& indice) { return !tb.MudaNoDicionario(tabela, indice); });
        guardados.GuardaIndices(diferentes);
        tb.ApagaIndices(tabela, indices);
    } catch (const TErroBanco& erro) {
        ctx.repeteTabela = true;
        ctx.Tela().Erro(SobTitulo(erro.Dados(), tabela, "Apagar Índices"));
    }
    ctx.dm.Commit("Apagando indices: " + tabela);
}

/// Before the first table that changes: a run with nothing to change asks nothing.
void ConfereCatalogo(TContexto& ctx) {
    if (std::exchange(ctx.catalogoConferido, true)) return;
    Tolera([&] { Avisa(ctx, AvisosDosFormatos(ctx.Dialeto().Formatos(ctx.Conexao()))); });
    Tolera([&] { Avisa(ctx, AvisosDoCatalogo(ctx.Conexao())); });
}

}  // namespace

void Avisa(TContexto& ctx, TAvisos avisos) {
    for (auto& aviso : avisos) {
        if (aviso.peso != TPeso::Nota) ctx.Tela().Memo1("Aviso: " + aviso.texto + ".");
        ctx.evidencia.avisos.push_back(std::move(aviso));
    }
}

void RefazIndices(TContexto& ctx, TMarcasDeAnalise& marcas, const std::string& tabela, bool falhou) {
    TIndicesGuardados guardados(ctx, tabela, true);
    ctx.repeteTabela = falhou;
    ApagaIndices(ctx, tabela, marcas, guardados);
    if (!ctx.dm.Atualiza.CriaIndiceSecundarios(tabela)) {
        ctx.repeteTabela = true;
        ctx.Tela().Memo1("Erro criando indices secundários do arquivo :" + tabela + " " +
                         ctx.dm.Atualiza.Erro().mensagem);
        ctx.Tela().Erro(TErroDaExecucao::NoLog(ctx.dm.Atualiza.Erro(), tabela, "Criando indice secundário"));
    }
    guardados.Devolve();
    if (ctx.repeteTabela) return;
    guardados.Esquece();
    marcas.EsqueceRetirados(tabela);
    marcas.Desmarca(tabela);
}

TPassoDaTabela::TPassoDaTabela(TContexto& ctx, TMarcasDeAnalise& marcas) : ctx_(ctx), marcas_(marcas) {}

void TPassoDaTabela::Executa() {
    const TTabelaDicionario* atual = TabelaAtual(ctx_);
    tabela_ = atual ? atual->nome : "";
    ctx_.repeteTabela = ctx_.comRecusadas.contains(ChaveDeNome(tabela_));
    ctx_.Tela().ProcessaMensagens();
    ctx_.Tela().LblGeral("Analisando Tabela: " + tabela_);

    if (tabela_.empty()) return;
    if (IgualSemCaixa(tabela_, "SATRIB")) ctx_.dm.Atualiza.Dicionario().Solta();
    ExigeEspacoEmDisco(ctx_);
    if (ctx_.desatualizadas.erase(ChaveDeNome(tabela_)) > 0) {
        LeColunasGravadas();
        ctx_.gravado.TrocaColunas(tabela_, ctx_.dm.SatribVelho.Todas());
    }
    decisao_ = DecideTabela(ctx_, marcas_);
    if (decisao_.acao != TAcaoDaTabela::Nada) ConfereCatalogo(ctx_);
    const TRegistroDaTabela registro(ctx_, tabela_, decisao_);
    TIndicesGuardados guardados(ctx_, tabela_, marcas_.Marcada(tabela_));
    if (ctx_.dm.ExisteTabela(tabela_)) TabelaExistente(guardados);
    if (decisao_.acao == TAcaoDaTabela::Cria) TabelaNova();
    if (Reconstroi()) ReconstroiTabela(guardados);
    if (decisao_.alteraDicionario) AlteraTabela(guardados);
    ctx_.dm.Commit("Preparando para executar query");
    ExecutaPendentes();
    guardados.Devolve();
    GravaVersao();
    Encerra(guardados);
}

/// What failed is found again by the next run, which analyses a marked table whatever its version.
void TPassoDaTabela::Encerra(TIndicesGuardados& guardados) {
    const bool inacabada = Reconstroi() && ctx_.estado.falhouApagar;
    const bool tocada = decisao_.analisada || decisao_.acao == TAcaoDaTabela::Cria;
    const bool espera = ctx_.indicesAdiados && tocada && TemColunas() && ctx_.dm.ExisteTabela(tabela_) && !inacabada;
    if (espera) ctx_.semIndices[tabela_] = ctx_.repeteTabela;
    if (ctx_.repeteTabela || inacabada || espera || ctx_.Conexao().Perdida()) return marcas_.Marca(tabela_);
    guardados.Esquece();
    if (decisao_.analisada && TemColunas()) marcas_.EsqueceRetirados(tabela_);
    marcas_.Desmarca(tabela_);
}

void TPassoDaTabela::TabelaExistente(TIndicesGuardados& guardados) {
    ctx_.dm.Commit(tabela_);
    if (ctx_.dm.SarquivoVelho.IsEmpty()) IncluiNoSArquivo();
    if (!decisao_.analisada) return;

    ctx_.Tela().Memo1("Atualizou o arquivo: " + tabela_);
    marcas_.Marca(tabela_);
    if (TemColunas()) ApagaIndices(ctx_, tabela_, marcas_, guardados);
    CopiaColunasParaODicionario();
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

/// Into SatribVelho, however SATRIB spells the table.
void TPassoDaTabela::LeColunasGravadas() {
    std::set<std::string> grafias = {tabela_};
    for (const auto& coluna : ctx_.gravado.Colunas(tabela_)) grafias.insert(coluna.tabela);
    ctx_.dm.SatribVelho.Recarrega("ARQUIVO", TLinha(grafias.begin(), grafias.end()));
}

void TPassoDaTabela::CopiaColunasParaODicionario() {
    if (decisao_.novas.empty()) return;
    LeColunasGravadas();
    TClientDataSet& novo = ctx_.dm.SatribNovo;
    for (const std::string& coluna : decisao_.novas)
        if (novo.Locate("nome", {coluna})) CopiaColunaParaODicionario();
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
    if (AplicaEmTransacao(velho)) ctx_.dm.Atualiza.Dicionario().Anota(novo.Texto("arquivo"));
}

/// The table's SARQUIVO row comes first: column rows without one are orphans, and go at the end of the run.
void TPassoDaTabela::TabelaNova() {
    if (ctx_.dm.SarquivoVelho.IsEmpty()) IncluiNoSArquivo();
    ctx_.Tela().Memo1("Criou a tabela: " + tabela_);
    RegravaDicionario(ctx_, tabela_, false);
    CriaTabelaComIndices(ctx_, tabela_);
}

/// A key that the release takes away for good is not kept.
void TPassoDaTabela::ReconstroiTabela(TIndicesGuardados& guardados) {
    if (ctx_.dm.SarquivoVelho.IsEmpty()) IncluiNoSArquivo();
    std::vector<std::string> chave;
    for (const auto& coluna : ColunasNovas(ctx_, tabela_))
        if (coluna.chave == 1 && ColunaFisica(coluna)) chave.push_back(coluna.nome);
    const bool retirada = chave.empty() && !ctx_.dm.Atualiza.ColunasDaChave(tabela_).empty();
    if (ctx_.dm.ExisteTabela(tabela_) && !retirada) guardados.GuardaChave(chave);
    Nova(ctx_, tabela_);
}

void TPassoDaTabela::AlteraTabela(TIndicesGuardados& guardados) {
    try {
        Alterar(ctx_, tabela_, decisao_.comandos, guardados);
    } catch (const TErroBanco& erro) {
        ctx_.repeteTabela = true;  // it is without its indexes, or without its dictionary
        ctx_.Tela().Erro(SobTitulo(erro.Dados(), tabela_, "Verificar Campos"));
    }
}

void TPassoDaTabela::ExecutaPendentes() {
    for (const TComandoPendente& comando : decisao_.comandos) {
        ctx_.Tela().Memo1(comando.texto);
        if (const TResultado resultado = ExecutaPendente(ctx_, tabela_, comando); !resultado) {
            ctx_.repeteTabela = true;
            auto execucao = TErroDaExecucao::NosDois(resultado.Erro().Dados(), tabela_, "").ComComando(comando.texto);
            execucao.entrada->mensagem.insert(0, "Query de alteração de campo");
            ctx_.Tela().Erro(std::move(execucao));
        }
        ctx_.dm.Commit(comando.texto);
    }
}

/// Without a stored row one is made; its version stays open while the last rebuild could not drop its table. What a
/// rebuild could not record is recorded just so.
void TPassoDaTabela::GravaVersao() {
    TClientDataSet& velho = ctx_.dm.SarquivoVelho;
    const TClientDataSet& novo = ctx_.dm.SArquivoNovo;
    if (velho.IsEmpty()) IncluiNoSArquivo();
    if (ctx_.estado.falhouApagar) return;
    if (Reconstroi() && ctx_.abertas.contains(ChaveDeNome(tabela_))) {
        EncerraReconstrucao(ctx_, Maiusculas(tabela_));
        return;
    }
    const auto comum = [&](std::string_view campo) {
        return novo.IndiceDoCampo(campo) >= 0 && velho.IndiceDoCampo(campo) >= 0;
    };
    velho.Edit();
    velho.SetValor("Versao", novo.Inteiro("versao"));
    for (const std::string_view campo : {"arquivo_pai", "descricao_tabela"})
        if (comum(campo)) velho.SetValor(campo, novo.Valor(campo));
    if (comum("pesquisa_avancada")) velho.SetValor("pesquisa_avancada", novo.Inteiro("pesquisa_avancada"));
    velho.Post();
    AplicaEmTransacao(velho);
}

}  // namespace wkd
