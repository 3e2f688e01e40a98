#include "alter/ObjetosDaTabela.h"

#include <algorithm>
#include <map>

#include "values/Texto.h"

namespace wkd {

namespace {

void IndicesForaDoDicionario(TContexto& ctx, const std::string& nome, std::vector<std::string>& comandos) {
    const std::string tabela = Maiusculas(nome);
    std::vector<std::string> conhecidos;
    if (ctx.dm.ExisteTabela("SINDSEC"))
        conhecidos = NomesDoCatalogo(ctx.Conexao(), "select NOME from SINDSEC where ARQUIVO = :tabela", nome);
    auto indices = ctx.Conexao().Indices(tabela);
    std::erase_if(indices, [&](const TIndice& indice) {
        return !indice.restricao.empty() || std::ranges::any_of(conhecidos, [&](const std::string& outro) {
            return IgualSemCaixa(Apara(outro), indice.nome);
        });
    });
    for (const auto& indice : IndicesComoEram(ctx, tabela, indices)) comandos.push_back(indice.comando);
    for (const TIndice& indice : indices)
        if (indice.inativo) comandos.push_back("alter index " + ctx.Dialeto().Identificador(indice.nome) + " inactive");
}

void ColunasCalculadas(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    for (const auto& coluna : ctx.Conexao().Colunas(tabela))
        if (!coluna.expressao.empty())
            comandos.push_back("alter table " + tabela + " add " + ctx.Dialeto().ColunaCalculada(coluna));
}

}  // namespace

std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome) {
    std::vector<std::string> comandos;
    const std::string tabela = Maiusculas(nome);
    const auto junta = [&](const std::vector<std::string>& outros) {
        comandos.insert(comandos.end(), outros.begin(), outros.end());
    };
    ColunasCalculadas(ctx, tabela, comandos);
    IndicesForaDoDicionario(ctx, nome, comandos);
    junta(ctx.Dialeto().Restricoes(ctx.Conexao(), tabela));
    junta(ctx.Dialeto().Permissoes(ctx.Conexao(), tabela));
    junta(ctx.Dialeto().Comentarios(ctx.Conexao(), tabela));
    return comandos;
}

std::vector<TIndiceComoEra> IndicesComoEram(TContexto& ctx, const std::string& tabela,
                                            const std::vector<TIndice>& indices) {
    std::vector<TIndiceComoEra> comoEram;
    std::map<std::string, TIndiceComoEra> doServidor;
    if (!indices.empty()) doServidor = ctx.Dialeto().IndicesComoEram(ctx.Conexao(), tabela);
    for (const TIndice& indice : indices) {
        const auto detalhado = doServidor.find(ChaveDeNome(indice.nome));
        comoEram.push_back(detalhado == doServidor.end()
                               ? TIndiceComoEra{ctx.Dialeto().CriaIndice(indice, tabela), indice.colunas}
                               : detalhado->second);
    }
    return comoEram;
}

std::vector<TFonte> PropriedadesPerdidas(TContexto& ctx, const std::string& tabela) {
    auto propriedades = ctx.Dialeto().Propriedades(ctx.Conexao(), tabela);
    const auto conhecidas = ctx.dm.Atualiza.ColunasDoDicionario(tabela);
    for (const auto& fisica : ctx.Conexao().Colunas(tabela)) {
        const auto conhecida =
            std::ranges::find_if(conhecidas, [&](const auto& c) { return IgualSemCaixa(c.nome, fisica.nome); });
        if (!fisica.padrao.empty() && conhecida != conhecidas.end() && conhecida->valorPadrao.empty())
            propriedades.push_back({fisica.nome, "default " + fisica.padrao});
    }
    return propriedades;
}

}  // namespace wkd
