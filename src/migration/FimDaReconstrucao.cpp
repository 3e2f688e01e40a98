#include "FimDaReconstrucao.h"

#include <filesystem>
#include <stdexcept>

#include "EstadoDaReconstrucao.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Another module's row of the same table may carry the mark of the rebuild, too.
void GravaNasOutrasLinhas(TContexto& ctx, const std::string& tabela, std::int64_t versao) {
    if (versao == kVersaoPendente || !ReconstrucaoPendente(ctx, tabela)) return;
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
        if (velho.ApplyUpdates(0) > 0) throw std::runtime_error("A versão não foi gravada em SARQUIVO");
        GravaNasOutrasLinhas(ctx, tabela, velho.Inteiro("versao"));
        MarcaConcluida(ctx, tabela);
        transacao.Commit();
        ctx.abertas.erase(ChaveDeNome(tabela));
        return true;
    } catch (const std::exception& erro) {
        ctx.Tela().Memo2("Tabela " + tabela + ": " + erro.what());
        ctx.Log(erro.what());
        velho.CancelUpdates();
        velho.Recarrega("NOME_ARQUIVO", tabela);
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
