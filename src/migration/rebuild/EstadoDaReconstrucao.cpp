#include "rebuild/EstadoDaReconstrucao.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>

#include "layout/ReconstrucoesAbertas.h"
#include "layout/Tini.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = kSecaoDaReconstrucao;
constexpr std::string_view kGuardada = "GUARDADA";
constexpr std::string_view kRestaurando = "RESTAURANDO";  // a count may follow

std::string MarcaNoTini(TContexto& ctx, std::string_view tabela) {
    if (!ctx.dm.ExisteTabela("TINI")) return "";
    return LeParametro(kSecao, Maiusculas(tabela), "", &ctx.Conexao());
}

void MarcaNaBackup(TContexto& ctx, const std::string& tabela, TMarcaDaBackup marca) {
    const std::string backup = NomeDaBackup(tabela);
    if (ctx.dm.ExisteTabela(backup) && MarcaDaBackup(ctx.Conexao(), backup) != marca)
        MarcaBackup(ctx.Conexao(), backup, marca);
}

void GravaNoTini(TContexto& ctx, const std::string& tabela, std::string_view marca) {
    if (ctx.dm.ExisteTabela("TINI")) GravaParametro(kSecao, Maiusculas(tabela), marca, &ctx.Conexao());
}

/// Whether a table without mark may be what an earlier generation's interrupted rebuild has left: its columns are all
/// columns of the table, or it has the key and most of the others; the table may be the new one already.
bool ParecidaComATabela(TContexto& ctx, const std::string& tabela) {
    if (ctx.dm.Atualiza.EhBackup(tabela)) return true;
    const auto daBackup = ctx.Conexao().Colunas(NomeDaBackup(tabela));
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    const auto tem = [&](const std::string& nome) { return ColunaDeNome(daBackup, nome) != nullptr; };
    const auto comuns = std::ranges::count_if(daTabela, [&](const TColunaFisica& coluna) { return tem(coluna.nome); });
    return 2 * comuns > std::ssize(daTabela) && std::ranges::all_of(ctx.Conexao().ChavePrimaria(tabela).colunas, tem);
}

TEstadoDaReconstrucao EstadoSemMarca(TContexto& ctx, const std::string& tabela, bool existe) {
    const std::string noTini = MarcaNoTini(ctx, tabela);
    if (!noTini.empty())
        return existe && noTini == kGuardada ? TEstadoDaReconstrucao::Guardando : TEstadoDaReconstrucao::Restaurando;
    const bool pendente = ReconstrucaoPendente(ctx.Conexao(), tabela);
    if (!existe) return pendente ? TEstadoDaReconstrucao::Restaurando : TEstadoDaReconstrucao::Nenhuma;
    if (pendente)
        return ParecidaComATabela(ctx, tabela) ? TEstadoDaReconstrucao::Desconhecida : TEstadoDaReconstrucao::Alheia;
    return ctx.dm.Atualiza.EhBackup(tabela) ? TEstadoDaReconstrucao::Nenhuma : TEstadoDaReconstrucao::Alheia;
}

}  // namespace

TEstadoDaReconstrucao EstadoDaReconstrucao(TContexto& ctx, const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    if (!ctx.dm.ExisteTabela(backup)) return TEstadoDaReconstrucao::Nenhuma;
    const bool existe = ctx.dm.ExisteTabela(tabela);
    switch (MarcaDaBackup(ctx.Conexao(), backup)) {
        case TMarcaDaBackup::Nenhuma:
            return EstadoSemMarca(ctx, tabela, existe);
        case TMarcaDaBackup::Guardando:
            return existe ? TEstadoDaReconstrucao::Guardando : TEstadoDaReconstrucao::Restaurando;
        case TMarcaDaBackup::Restaurando:
            return TEstadoDaReconstrucao::Restaurando;
        case TMarcaDaBackup::Concluida:  // VERSAO -1 on a table that somebody dropped asks for its rows
            return !existe && ReconstrucaoPendente(ctx.Conexao(), tabela) ? TEstadoDaReconstrucao::Restaurando
                                                                          : TEstadoDaReconstrucao::Nenhuma;
    }
    return TEstadoDaReconstrucao::Nenhuma;
}

void ReabreReconstrucao(TContexto& ctx, std::string_view tabela) {
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    if (velho.IsEmpty())
        throw TErroConhecido(TFalha::ReconstrucaoAberta, "A tabela " + std::string(tabela) + " não está em SARQUIVO");
    ctx.abertas.insert(ChaveDeNome(tabela));
    if (velho.Inteiro("versao") == kVersaoPendente) return;
    velho.Edit();
    velho.SetValor("versao", kVersaoPendente);
    if (velho.Texto("nome_arquivo").empty()) ctx.Tela().Informacao("6");
    velho.Post();
    if (!AplicaEmTransacao(velho))
        throw TErroConhecido(TFalha::ReconstrucaoAberta,
                             "Não foi possível marcar a tabela " + std::string(tabela) + " em SARQUIVO");
}

void MarcaReconstrucao(TContexto& ctx, std::string_view tabela) {
    MarcaGuardada(ctx, std::string(tabela));
    ReabreReconstrucao(ctx, tabela);
}

void MarcaGuardada(TContexto& ctx, const std::string& tabela) {
    MarcaNaBackup(ctx, tabela, TMarcaDaBackup::Guardando);
    GravaNoTini(ctx, tabela, kGuardada);
}

void MarcaRestaurando(TContexto& ctx, const std::string& tabela) {
    MarcaNaBackup(ctx, tabela, TMarcaDaBackup::Restaurando);
    GravaNoTini(ctx, tabela, kRestaurando);
}

void MarcaConcluida(TContexto& ctx, const std::string& tabela) {
    MarcaNaBackup(ctx, tabela, TMarcaDaBackup::Concluida);
    EsqueceEtapa(ctx, tabela);
}

void EsqueceEtapa(TContexto& ctx, const std::string& tabela) {
    if (!ctx.dm.ExisteTabela("TINI")) return;
    ApagaParametros(ctx.Conexao(), kSecao, {Maiusculas(tabela)});
}

std::optional<std::int64_t> LinhasRestauradas(TContexto& ctx, std::string_view tabela) {
    const std::string marca = MarcaNoTini(ctx, tabela);
    if (!marca.starts_with(kRestaurando)) return std::nullopt;
    const std::string_view numero = Apara(std::string_view(marca).substr(kRestaurando.size()));
    std::int64_t linhas = 0;
    const auto lido = std::from_chars(numero.data(), numero.data() + numero.size(), linhas);
    return lido.ec == std::errc() ? std::optional(linhas) : std::nullopt;
}

TContagemDaRestauracao::TContagemDaRestauracao(TContexto& ctx, std::string_view tabela) {
    if (ctx.dm.ExisteTabela("TINI")) grava_ = PreparaValor(ctx.Conexao(), kSecao, Maiusculas(tabela));
}

void TContagemDaRestauracao::Grava(std::int64_t linhas) {
    if (!grava_) return;
    grava_->Atribui("pVALOR", std::string(kRestaurando) + " " + std::to_string(linhas));
    grava_->Executa();
}

namespace {

/// Another module's row of the same table may carry the mark of the rebuild, too.
void GravaNasOutrasLinhas(TContexto& ctx, const std::string& tabela, std::int64_t versao) {
    if (versao == kVersaoPendente || !ReconstrucaoPendente(ctx.Conexao(), tabela)) return;
    ctx.Conexao()
        .Prepara("update SARQUIVO set VERSAO = " + std::to_string(versao) +
                 " where VERSAO = " + std::to_string(kVersaoPendente) + " and Upper(NOME_ARQUIVO) = " + Aspas(tabela))
        ->Executa();
}

void CopiaCampos(const TClientDataSet& novo, TClientDataSet& velho) {
    for (const std::string_view campo : {"ULT_MODIFICACAO", "ARQUIVO_PAI", "DESCRICAO_TABELA"})
        if (novo.IndiceDoCampo(campo) >= 0 && velho.IndiceDoCampo(campo) >= 0) velho.SetValor(campo, novo.Valor(campo));
    for (const std::string_view campo : {"VERSAO", "PESQUISA_AVANCADA"})
        if (novo.IndiceDoCampo(campo) >= 0 && velho.IndiceDoCampo(campo) >= 0)
            velho.SetValor(campo, novo.Inteiro(campo));
}

}  // namespace

void MoveMarcadores(TContexto& ctx, const std::string& tabela) {
    const auto arquivo = [&](std::string_view extensao) {
        return ctx.opcoes.pastaCorrente / (tabela + std::string(extensao));
    };
    std::error_code ignorado;
    if (std::filesystem::exists(arquivo(".ok"), ignorado)) {
        std::filesystem::remove(arquivo(".old"), ignorado);
        std::filesystem::rename(arquivo(".ok"), arquivo(".old"), ignorado);
    }
    std::filesystem::rename(arquivo(".atu"), arquivo(".ok"), ignorado);
}

bool GravaFim(TContexto& ctx, const std::string& tabela, const std::function<void(TClientDataSet&)>& preenche) {
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    try {
        velho.Edit();
        preenche(velho);
        velho.Post();
        TTransacao transacao(ctx.Conexao());
        if (velho.ApplyUpdates(0) > 0)
            throw TErroConhecido(TFalha::ReconstrucaoAberta, "A versão não foi gravada em SARQUIVO");
        GravaNasOutrasLinhas(ctx, tabela, velho.Inteiro("versao"));
        MarcaConcluida(ctx, tabela);
        transacao.Commit();
        ctx.abertas.erase(ChaveDeNome(tabela));
        return true;
    } catch (const std::exception& erro) {
        ctx.Tela().Erro(TErroDaExecucao::NosDois(ErroDe(erro), ctx.tabelaAtual, ctx.acaoAtual,
                                                 "Tabela " + tabela + ": " + erro.what()));
        velho.CancelUpdates();
        velho.Recarrega("NOME_ARQUIVO", {tabela});
        return false;
    }
}

bool EncerraReconstrucao(TContexto& ctx, const std::string& tabela) {
    const TClientDataSet& novo = ctx.dm.SArquivoNovo;
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    if (velho.IsEmpty() || ctx.dm.SatribNovo.IsEmpty()) return false;
    const bool deOutraLinha = velho.Inteiro("versao") != kVersaoPendente && ctx.abertas.contains(ChaveDeNome(tabela));
    if (novo.Inteiro("versao") == velho.Inteiro("versao") && !deOutraLinha) return false;
    return GravaFim(ctx, tabela, [&](TClientDataSet& linha) {
        CopiaCampos(novo, linha);
        if (linha.Texto("nome_arquivo").empty()) ctx.Tela().Informacao("1");
    });
}

}  // namespace wkd
