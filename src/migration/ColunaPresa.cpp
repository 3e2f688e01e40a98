#include "ColunaPresa.h"

#include <algorithm>
#include <vector>

#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// Numbers of SQL Server: an object depends on the column, and what was to be done to it failed therefore.
constexpr std::int64_t kDepende = 5074, kNaoMudou = 4922;

bool Presa(const TErroBanco& erro) { return erro.CodigoNativo() == kDepende || erro.CodigoNativo() == kNaoMudou; }

/// Statements that take away what stands on a column, and those that bring it back.
struct TDesvio {
    std::vector<std::string> tira, devolve;
};

void DesviaPadrao(TContexto& ctx, const std::string& tabela, std::string_view coluna, TDesvio& desvio) {
    TWKDQuery q(ctx.Conexao(),
                "select d.name as NOME, d.definition as TEXTO from sys.default_constraints d join sys.columns c"
                " on c.object_id = d.parent_object_id and c.column_id = d.parent_column_id"
                " where d.parent_object_id = object_id(:tabela) and upper(c.name) = :coluna");
    q.Param("tabela", tabela).Param("coluna", Maiusculas(coluna)).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string nome = Identificador(q.Texto("NOME"), ctx.Banco());
        desvio.tira.push_back("alter table " + tabela + " drop constraint " + nome);
        desvio.devolve.push_back("alter table " + tabela + " add constraint " + nome + " default " + q.Texto("TEXTO") +
                                 " for " + Identificador(coluna, ctx.Banco()));
    }
}

void DesviaIndices(TContexto& ctx, const std::string& tabela, std::string_view coluna, TDesvio& desvio) {
    for (const TIndice& indice : ctx.Conexao().Indices(tabela)) {
        const bool nela =
            std::ranges::any_of(indice.colunas, [&](const auto& nome) { return IgualSemCaixa(nome, coluna); });
        if (!nela || !indice.restricao.empty()) continue;
        desvio.tira.push_back(ComandoApagaIndice(indice, tabela, ctx.Banco()));
        desvio.devolve.push_back(ComandoCriaIndice(indice, tabela, ctx.Banco()));
    }
}

TDesvio Desvio(TContexto& ctx, const std::string& tabela, std::string_view coluna) {
    TDesvio desvio;
    DesviaPadrao(ctx, tabela, coluna, desvio);
    DesviaIndices(ctx, tabela, coluna, desvio);
    return desvio;
}

}  // namespace

TResultado ExecutaNaColuna(TContexto& ctx, std::string_view tabela, std::string_view coluna, const std::string& sql,
                           const std::function<void()>& antes) {
    const std::string nome(tabela);
    TConnection& conexao = ctx.Conexao();
    const auto executa = [&](const TDesvio& desvio) {
        TTransacao transacao(conexao, antes ? conexao.Reserva(nome) : nullptr);
        for (const auto& comando : desvio.tira) conexao.Prepara(comando)->Executa();
        if (antes) antes();
        conexao.Prepara(sql)->Executa();
        if (!desvio.devolve.empty() && ColunaDeNome(conexao.Colunas(nome), coluna))
            for (const auto& comando : desvio.devolve) conexao.Prepara(comando)->Executa();
        transacao.Commit();
    };
    const auto tenta = [](const auto& passo) {
        try {
            passo();
            return TResultado();
        } catch (const TErroBanco& erro) {
            return TResultado(erro);
        }
    };
    const TResultado resultado = antes ? tenta([&] { executa({}); }) : ctx.dm.Executa(sql);
    const bool sqlServer = ctx.Banco() == TTipoBanco::tbSQLServer;
    if (resultado || !sqlServer || coluna.empty() || !Presa(resultado.Erro())) return resultado;
    return tenta([&] { executa(Desvio(ctx, nome, coluna)); });
}

}  // namespace wkd
