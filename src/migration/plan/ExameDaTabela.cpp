#include "plan/ExameDaTabela.h"

#include <algorithm>
#include <iterator>

#include "alter/ObjetosDaTabela.h"
#include "context/Saude.h"
#include "dialect/Dialeto.h"
#include "rebuild/Nova.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

void ExaminaChave(TContexto& ctx, TPlanoDaTabela& tabela, const std::string& nome,
                  std::vector<TColunaDicionario> colunas) {
    std::erase_if(colunas, [](const auto& coluna) { return !ColunaFisica(coluna); });
    const bool fica = tabela.acao == TAcaoDaTabela::Altera && ctx.dm.ExisteTabela(tabela.nome);
    const auto fisicas = fica ? ctx.dm.ColunasFisicas(tabela.nome) : std::vector<TColunaFisica>();
    const std::int64_t pagina = ctx.Dialeto().Capacidades().pagina;
    const auto limite = ctx.Dialeto().LimiteDaChave(static_cast<int>(pagina));
    const auto bytes = ctx.dm.Atualiza.BytesDaChave(colunas, fisicas);
    if (bytes <= limite) return;
    tabela.achados.push_back({"chave-longa",
                              nome,
                              "o índice teria chaves de " + ComMilhares(bytes) + " bytes, e páginas de " +
                                  ComMilhares(pagina) + " só as levam até " + ComMilhares(limite) +
                                  ": restaure um backup do banco com páginas maiores (gbak -page_size)",
                              0,
                              {}});
}

}  // namespace

void ExaminaChaves(TContexto& ctx, TPlanoDaTabela& tabela, const std::vector<TColunaDicionario>& novas) {
    if (ctx.Dialeto().LimiteDaChave(ctx.Dialeto().Capacidades().pagina) <= 0) return;
    std::vector<TColunaDicionario> chave;
    std::ranges::copy_if(novas, std::back_inserter(chave), [](const auto& nova) { return nova.chave == 1; });
    ExaminaChave(ctx, tabela, "chave primária", chave);
    for (const auto& indice : ctx.novo.Indices(tabela.nome)) {
        std::vector<TColunaDicionario> colunas;
        std::ranges::copy_if(novas, std::back_inserter(colunas), [&](const auto& nova) {
            return std::ranges::any_of(indice.colunas, [&](const auto& c) { return IgualSemCaixa(c, nova.nome); });
        });
        ExaminaChave(ctx, tabela, indice.nome, colunas);
    }
}

void ForaDosDicionarios(TContexto& ctx, TPlanoDaTabela& tabela) {
    for (const auto& mudanca : tabela.mudancas)
        if (mudanca.sinal == '-' && !ctx.gravado.Coluna(tabela.nome, mudanca.coluna))
            tabela.achados.push_back({"coluna-desconhecida",
                                      mudanca.coluna,
                                      "não está em nenhum dos dois dicionários: a tabela nova não a tem, e os valores "
                                      "ficam em " +
                                          NomeDaBackup(tabela.nome),
                                      0,
                                      {}});
}

void ExaminaFormatos(TPlanoDaTabela& tabela, std::int64_t formatos) {
    if (tabela.acao != TAcaoDaTabela::Altera) return;
    const auto alteracoes =
        std::ranges::count_if(tabela.comandos, [](const auto& comando) { return comando.starts_with("alter table"); });
    const std::string texto = "a tabela já tem " + std::to_string(formatos) + " versões das " +
                              std::to_string(kFormatos) + " que o banco guarda, e esta atualização pede mais " +
                              std::to_string(alteracoes);
    if (formatos + alteracoes > kFormatos)
        tabela.achados.push_back(
            {"versoes-esgotadas", "", texto + ": faça backup e restauração do banco antes", formatos, {}});
    else if (formatos + alteracoes >= kFormatosPerto)
        tabela.achados.push_back(
            {"versoes-perto-do-fim", "", texto + ": um backup com restauração as zera", formatos, {}});
}

void ExaminaDependencias(TContexto& ctx, TPlanoDaTabela& tabela) {
    const std::string nome = Maiusculas(tabela.nome);
    if (const auto impede = ImpedimentoDaReconstrucao(ctx, tabela.nome))
        tabela.achados.push_back({"impedimento", "", "não seria reconstruída: " + impede->mensagem, 0, {}});
    if (!ctx.dm.ExisteTabela(nome)) return;
    const auto relata = [&](std::string tipo, std::string texto, std::vector<std::string> nomes) {
        if (nomes.empty()) return;
        const auto quantos = static_cast<std::int64_t>(nomes.size());
        tabela.achados.push_back({std::move(tipo), "", std::move(texto), quantos, std::move(nomes)});
    };
    relata("dependentes", "dependem da tabela e impedem a reconstrução",
           ctx.Dialeto().Dependentes(ctx.Conexao(), nome));
    std::vector<std::string> propriedades, gatilhos;
    for (const auto& fonte : PropriedadesPerdidas(ctx, nome))
        propriedades.push_back(fonte.nome + ": " + std::string(Apara(fonte.texto)));
    for (const auto& fonte : ctx.Dialeto().Gatilhos(ctx.Conexao(), nome)) gatilhos.push_back(fonte.nome);
    relata("propriedades", "propriedades de colunas que não voltam; a fonte fica no arquivo de rejeitados",
           std::move(propriedades));
    relata("gatilhos", "gatilhos que não voltam; a fonte fica no arquivo de rejeitados", std::move(gatilhos));
}

}  // namespace wkd
