#include "DicionarioTabelas.h"

#include <optional>
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

constexpr std::string_view kColunas = " from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))";
constexpr std::string_view kInsereCampo =
    "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, Sortable, Selectable, AutoSearch, "
    "Mandatory) ";

// Each of the two tables is emptied and filled in one transaction, so that one that cannot be filled keeps its rows.

void PreencheTabelas(TContexto& ctx) {
    TConnection& conexao = ctx.Conexao();
    IBarra& barra = ctx.Tela().PbGeral();
    TTransacao transacao(conexao);
    TWKDQuery(conexao, "delete from trbtable").ExecSQL();
    barra.Define(0, static_cast<int>(ContaRegistros(conexao, "select count(*) as total from sarquivo")), 1, 0);
    ctx.Tela().LblAtual("Dicionário de dados: Tabela...");
    TWKDQuery insercao(conexao, "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)");
    for (const TLinha& linha : Tabelas(conexao)) {
        barra.Posicao(barra.Posicao() + 1);
        insercao.Param("nome", linha[0]).Param("obs", linha[1]).ExecSQL();
    }
    transacao.Commit();
}

/// "ftString" as the report designer calls it, "dtString", at most 100 characters, in the server's own words. Empty
/// where they are not known.
std::string DataTypeNoServidor(TTipoBanco banco) {
    switch (banco) {
        case TTipoBanco::tbInterbase:
            return "'d' || coalesce(substring(tipo from 2 for 99), '')";
        case TTipoBanco::tbSQLServer:
            return "'d' + coalesce(substring(tipo, 2, 99), '')";
        default:
            return "";
    }
}

/// The server copies the rows itself: fetching 20,000 of them takes as long as inserting them. False, and nothing is
/// changed, where it cannot.
bool CopiaNoServidor(TContexto& ctx) {
    const std::string tipo = DataTypeNoServidor(ctx.Banco());
    if (tipo.empty()) return false;
    constexpr std::string_view kPonto = "TRBFIELD";
    ctx.Conexao().MarcaPonto(kPonto);
    try {
        TWKDQuery(ctx.Conexao(), std::string(kInsereCampo) + "select arquivo, nome, discriminacao, " + tipo +
                                     ", 'T', 'T', 'T', 'F', 'F'" + std::string(kColunas))
            .ExecSQL();
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        ctx.Conexao().VoltaAoPonto(kPonto);
        return false;
    }
}

/// Name, column, title and type as the report designer calls them.
std::vector<TLinha> Campos(TConnection& conexao) {
    std::vector<TLinha> linhas;
    TWKDQuery q(conexao, "select *" + std::string(kColunas));
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string tipo = q.Texto("tipo");
        linhas.push_back({q.Campo("arquivo"), q.Campo("nome"), q.Campo("discriminacao"),
                          "d" + (tipo.empty() ? "" : tipo.substr(1, 99))});
    }
    return linhas;
}

void CopiaLinhaALinha(TContexto& ctx) {
    IBarra& barra = ctx.Tela().PbGeral();
    TWKDQuery insercao(ctx.Conexao(),
                       std::string(kInsereCampo) + "values (:arquivo, :nome, :titulo, :tipo, 'T', 'T', 'T', 'F', 'F')");
    for (const TLinha& linha : Campos(ctx.Conexao())) {
        barra.Posicao(barra.Posicao() + 1);
        for (std::size_t i = 0; i < linha.size(); ++i) insercao.Comando().Atribui(i, linha[i]);
        insercao.ExecSQL();
    }
}

void PreencheCampos(TContexto& ctx) {
    TConnection& conexao = ctx.Conexao();
    TTransacao transacao(conexao);
    const auto total = static_cast<int>(ContaRegistros(conexao, "select count(*) as total" + std::string(kColunas)));
    ctx.Tela().PbGeral().Define(0, total, 1, 0);
    TWKDQuery(conexao, "delete from trbfield").ExecSQL();
    ctx.Tela().LblAtual("Dicionário de dados: Campos...");
    if (!CopiaNoServidor(ctx)) CopiaLinhaALinha(ctx);
    ctx.Tela().PbGeral().Posicao(total);
    transacao.Commit();
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

/// The row of an open rebuild stays: its table is known by it.
void LimpaArquivoInutilizado(TContexto& ctx) {
    std::optional<TReconstrucoesAbertas> abertas;
    for (const auto& [nome, modulo] : TabelasDoSistema(ctx.Conexao())) {
        if (ctx.dm.SArquivoNovo.Existe("cod_modulo;nome_arquivo", {modulo, nome})) continue;
        if (!abertas) abertas = ReconstrucoesAbertas(ctx.dm);
        if (abertas->contains(ChaveDeNome(nome))) continue;
        TWKDQuery(ctx.Conexao(), "delete from sarquivo where (cod_modulo = " + Aspas(modulo) +
                                     ") and (nome_arquivo = " + Aspas(nome) + ")")
            .ExecSQL();
    }
}

void Dicionario_tabelas(TContexto& ctx) {
    LimpaArquivoInutilizado(ctx);
    std::vector<std::string> falhas;  // one report of both tables
    for (const auto preenche : {PreencheTabelas, PreencheCampos}) {
        try {
            preenche(ctx);
        } catch (const std::exception& erro) {
            falhas.emplace_back(erro.what());
        }
    }
    if (!falhas.empty()) ctx.Tela().SetLog(Junta(falhas, "\n"), "", "Inserindo dicionário de dados");
    ctx.Tela().LblAtual("");
    ctx.Tela().PbGeral().Define(0, 0, 1, 0);
}

}  // namespace wkd
