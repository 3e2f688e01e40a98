#include "FimDaReconstrucao.h"

#include <filesystem>

#include "EstadoDaReconstrucao.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Another module's row of the same table may carry the mark of the rebuild, too.
void GravaNasOutrasLinhas(TContexto& ctx, const std::string& tabela, std::int64_t versao) {
    if (versao == kVersaoPendente || !ReconstrucaoPendente(ctx, tabela)) return;
    ctx.Conexao().ExecuteDirect("update SARQUIVO set VERSAO = " + std::to_string(versao) + " where VERSAO = " +
                                std::to_string(kVersaoPendente) + " and Upper(NOME_ARQUIVO) = " + Aspas(tabela));
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

bool GravaVersaoNova(TContexto& ctx, const std::string& tabela) {
    const TClientDataSet& novo = ctx.dm.SArquivoNovo;
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    if (velho.IsEmpty() || ctx.dm.SatribNovo.IsEmpty()) return false;
    if (novo.Inteiro("versao") != velho.Inteiro("versao")) {
        velho.Edit();
        CopiaCampos(novo, velho);
        if (velho.Texto("nome_arquivo").empty()) ctx.Tela().Informacao("1");
        velho.Post();
        if (!AplicaEmTransacao(velho)) return false;
    }
    GravaNasOutrasLinhas(ctx, tabela, novo.Inteiro("versao"));
    return true;
}

}  // namespace wkd
