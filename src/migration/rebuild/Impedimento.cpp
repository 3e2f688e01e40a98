#include "rebuild/Impedimento.h"

#include <algorithm>
#include <vector>

#include "alter/DicionarioDaTabela.h"
#include "decision/DecisaoDaTabela.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool DoUsuario(std::string_view coluna) { return Maiusculas(coluna).starts_with("U_"); }

/// The customer's columns that the merge takes from SATRIB_USER.
void AcrescentaPersonalizadas(TContexto& ctx, const std::string& tabela, std::vector<TColunaDicionario>& colunas) {
    TWKDQuery q(ctx.Conexao(), "select * from satrib_user where satrib_user.arquivo = " + Aspas(tabela));
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string nome(Apara(q.Texto("NOME")));
        const bool tem = std::any_of(colunas.begin(), colunas.end(),
                                     [&](const auto& coluna) { return IgualSemCaixa(coluna.nome, nome); });
        if (tem || !ctx.dm.Atualiza.Dicionario().Aceita(tabela, "coluna", nome)) continue;
        colunas.push_back({nome, std::string(Apara(q.Texto("TIPO"))), q.Texto("TAMANHO"), q.Texto("VALOR_PADRAO"),
                           q.Texto("CALCULO"), static_cast<int>(q.Inteiro("CHAVE_DE_PESQUISA")),
                           q.Inteiro("SEQUENCIA")});
    }
}

bool EhTabelaDoDicionario(TContexto& ctx, const std::string& nome) {
    return ctx.dm.SArquivoNovo.Existe("NOME_ARQUIVO", {nome}) || !ctx.dm.Atualiza.ColunasDoDicionario(nome).empty() ||
           ContaRegistros(ctx.Conexao(),
                          "select count(*) as total from SARQUIVO where Upper(NOME_ARQUIVO) = " + Aspas(nome)) > 0;
}

}  // namespace

std::vector<TColunaDicionario> ColunasNovas(TContexto& ctx, const std::string& tabela) {
    const bool mescla = ctx.dm.ExisteTabela("SATRIB_USER");
    std::vector<TColunaDicionario> colunas;
    for (const auto& coluna : ctx.novo.Colunas(tabela))
        if (!(mescla && DoUsuario(coluna.nome))) colunas.push_back(coluna);
    if (mescla && !colunas.empty()) AcrescentaPersonalizadas(ctx, tabela, colunas);
    std::ranges::stable_sort(colunas, {}, &TColunaDicionario::sequencia);
    return colunas;
}

std::optional<TErro> ImpedimentoDaReconstrucao(TContexto& ctx, const std::string& nome) {
    const std::string tabela = Maiusculas(nome);
    const auto impedida = [](std::string texto, TFalha falha) {
        return TErro{.mensagem = std::move(texto), .falha = falha};
    };
    if (NuncaReconstruida(tabela))
        return impedida("A própria reconstrução usa a tabela " + tabela, TFalha::Impedimento);
    if (ctx.novo.Colunas(nome).empty())
        return impedida("O pacote não tem colunas da tabela " + tabela, TFalha::Dicionario);
    if (const std::string backup = NomeDaBackup(tabela); EhTabelaDoDicionario(ctx, backup))
        return impedida("A tabela de backup " + backup + " teria o nome de uma tabela do dicionário",
                        TFalha::Impedimento);
    if (EstadoDaReconstrucao(ctx, tabela) == TEstadoDaReconstrucao::Alheia) return TTB::NaoEhBackup(tabela);
    if (auto motivo = ColunaForaDoDicionario(ctx)) return motivo;
    return ctx.dm.Atualiza.ImpedimentoParaCriar(tabela, ColunasNovas(ctx, nome));
}

}  // namespace wkd
