#include "DicionarioTabelas.h"

#include <utility>
#include <vector>

#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// Name and text of each table; the name where there is no text.
std::vector<TLinha> Tabelas(TConnection& conexao) {
    std::vector<TLinha> linhas;
    TWKDQuery q(conexao, "select * from sarquivo");
    q.Open();
    const bool temObs = IndiceDoCampo(q.Campos(), "OBS") >= 0;
    for (; !q.Eof(); q.Next()) {
        const TValor nome = q.Campo("Nome_arquivo");
        const std::string obs = temObs ? q.Texto("OBS") : "";
        linhas.push_back({nome, obs.empty() ? nome : TValor(obs)});
    }
    return linhas;
}

// Each of the two tables is emptied and filled in one transaction, so that one that cannot be filled keeps its rows.

void PreencheTabelas(TContexto& ctx) {
    ctx.Tela().LblAtual("Dicionário de dados: Tabela...");
    const auto linhas = Tabelas(ctx.Conexao());
    IBarra& barra = ctx.Tela().PbGeral();
    barra.Define(0, static_cast<int>(linhas.size()), 1, 0);
    TTransacao transacao(ctx.Conexao());
    TWKDQuery(ctx.Conexao(), "delete from trbtable").ExecSQL();
    TWKDQuery insercao(ctx.Conexao(), "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)");
    for (const TLinha& linha : linhas) {
        barra.Posicao(barra.Posicao() + 1);
        insercao.Param("nome", linha[0]).Param("obs", linha[1]).ExecSQL();
    }
    transacao.Commit();
}

/// "ftString" as the report designer calls it: "dtString", at most 100 characters.
std::string DataType(TTipoBanco banco) {
    return banco == TTipoBanco::tbSQLServer ? "'d' + coalesce(substring(tipo, 2, 99), '')"
                                            : "'d' || coalesce(substring(tipo from 2 for 99), '')";
}

/// The server copies the rows itself: fetching 20,000 of them takes as long as inserting them.
void PreencheCampos(TContexto& ctx) {
    ctx.Tela().LblAtual("Dicionário de dados: Campos...");
    TTransacao transacao(ctx.Conexao());
    TWKDQuery(ctx.Conexao(), "delete from trbfield").ExecSQL();
    const auto linhas = TWKDQuery(ctx.Conexao(),
                                  "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, "
                                  "Sortable, Selectable, AutoSearch, Mandatory) select arquivo, nome, discriminacao, " +
                                      DataType(ctx.Banco()) +
                                      ", 'T', 'T', 'T', 'F', 'F' from satrib "
                                      "where ((lookup_arquivo is null) or (lookup_arquivo = ''))")
                            .ExecSQL();
    transacao.Commit();
    ctx.Tela().PbGeral().Define(0, static_cast<int>(linhas), 1, static_cast<int>(linhas));
}

struct TTabelaDoModulo {
    std::string nome, modulo;
};

/// The tables of SARQUIVO but the customer's own.
std::vector<TTabelaDoModulo> TabelasDoSistema(TConnection& conexao) {
    std::vector<TTabelaDoModulo> tabelas;
    TWKDQuery q(conexao, "select nome_arquivo, cod_modulo from sarquivo");
    for (q.Open(); !q.Eof(); q.Next())
        if (!q.Texto("nome_arquivo").starts_with("U_"))
            tabelas.push_back({q.Texto("nome_arquivo"), q.Texto("cod_modulo")});
    return tabelas;
}

}  // namespace

void LimpaArquivoInutilizado(TContexto& ctx) {
    for (const auto& [nome, modulo] : TabelasDoSistema(ctx.Conexao())) {
        if (ctx.dm.SArquivoNovo.Existe("cod_modulo;nome_arquivo", {modulo, nome})) continue;
        TWKDQuery(ctx.Conexao(), "delete from sarquivo where (cod_modulo = " + Aspas(modulo) +
                                     ") and (nome_arquivo = " + Aspas(nome) + ")")
            .ExecSQL();
    }
}

void Dicionario_tabelas(TContexto& ctx) {
    LimpaArquivoInutilizado(ctx);
    try {
        PreencheTabelas(ctx);
        PreencheCampos(ctx);
    } catch (const std::exception& erro) {
        ctx.Tela().SetLog(erro.what(), "", "Inserindo dicionário de dados");
    }
    ctx.Tela().LblAtual("");
    ctx.Tela().PbGeral().Define(0, 0, 1, 0);
}

}  // namespace wkd
