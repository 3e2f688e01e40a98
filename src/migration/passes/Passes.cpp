#include "passes/Passes.h"

#include <algorithm>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

#include "context/Contexto.h"
#include "layout/ReconstrucoesAbertas.h"
#include "layout/Tini.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TPar = std::pair<std::string, std::string>;

TPar Par(const TClientDataSet& sarquivo) { return {sarquivo.Texto("COD_MODULO"), sarquivo.Texto("NOME_ARQUIVO")}; }

TResultado ApagaPar(TContexto& ctx, const TPar& par) {
    return ctx.dm.Executa("DELETE FROM SARQUIVO WHERE cod_modulo = " + Aspas(par.first) +
                          " and NOME_ARQUIVO = " + Aspas(par.second));
}

}  // namespace

/// A pair that cannot be deleted does not keep the others; its error is raised at the end. That of an open rebuild
/// stays until the rebuild has ended.
void VerificaDuplicidadeSarquivo(TContexto& ctx) {
    TClientDataSet duplicidade;
    duplicidade.SetProvedor({&ctx.Conexao(), "select * from SARQUIVO", "SARQUIVO", {"COD_MODULO", "NOME_ARQUIVO"}});
    duplicidade.SetIndexFieldNames("COD_MODULO;NOME_ARQUIVO");

    std::optional<TErroBanco> falha;
    std::optional<TPar> anterior;
    duplicidade.Open();
    for (duplicidade.First(); !duplicidade.Eof(); duplicidade.Next()) {
        const TPar par = Par(duplicidade);
        if (par == anterior && !ctx.abertas.contains(ChaveDeNome(par.second)))
            if (const TResultado apagou = ApagaPar(ctx, par); !apagou) falha = apagou.Erro();
        anterior = par;
    }
    if (falha) throw *falha;
}

namespace {

void ApagaSemTabela(TConnection& conexao, const std::string& arquivo) {
    TWKDQuery(conexao, "delete\r\nfrom " + arquivo +
                           "\r\nwhere\r\n"
                           "  not exists (\r\n"
                           "    select nome_arquivo\r\n"
                           "    from sarquivo\r\n"
                           "    where nome_arquivo = " +
                           arquivo +
                           ".ARQUIVO\r\n"
                           "  )")
        .ExecSQL();
}

}  // namespace

void ApagaAtributosOrfaos(TContexto& ctx) { ApagaSemTabela(ctx.Conexao(), "satrib"); }

void AtualizaLookup(TContexto& ctx) { ApagaSemTabela(ctx.Conexao(), "slookup"); }

namespace {

struct TColunaComPadrao {
    std::string arquivo, nome, valor;
};

std::vector<TColunaComPadrao> ColunasComPadrao(TConnection& conexao) {
    std::vector<TColunaComPadrao> colunas;
    TWKDQuery q(conexao,
                "select arquivo,nome,valor_padrao,tipo from satrib where (valor_padrao is not null) and "
                "(valor_padrao <> '')");
    for (q.Open(); !q.Eof(); q.Next()) {
        TColunaComPadrao coluna{q.Texto("arquivo"), q.Texto("nome"), q.Texto("valor_padrao")};
        if (!NomeDeSql(Apara(coluna.arquivo)) || !NomeDeSql(Apara(coluna.nome))) continue;
        if (q.Texto("tipo") == "ftFloat") coluna.valor = Troca(coluna.valor, ",", ".");
        colunas.push_back(std::move(coluna));
    }
    return colunas;
}

/// The statements of all columns with a default, each text once. A column that the database does not have would only
/// fail, so it gets none.
std::vector<std::string> Comandos(TContexto& ctx) {
    const auto colunas = ColunasComPadrao(ctx.Conexao());
    std::set<std::string> tabelas;
    for (const auto& coluna : colunas)
        if (ctx.dm.ExisteTabela(Apara(coluna.arquivo))) tabelas.insert(ChaveDeNome(Apara(coluna.arquivo)));
    ctx.dm.LeColunas(std::move(tabelas));

    std::vector<std::string> comandos;
    std::unordered_set<std::string> vistos;
    for (const auto& [arquivo, nome, valor] : colunas) {
        if (!ctx.dm.VerificaExisteCampo(Apara(arquivo), Apara(nome))) continue;
        std::string comando =
            "Update " + arquivo + " set " + nome + " = " + Aspas(valor) + " where " + nome + " is null ";
        if (vistos.insert(comando).second) comandos.push_back(std::move(comando));
    }
    return comandos;
}

}  // namespace

void AtualizaValorPadrao(TContexto& ctx) {
    for (const std::string& comando : Comandos(ctx)) Tolera([&] { TWKDQuery(ctx.Conexao(), comando).ExecSQL(); });
}

namespace {

void VerificaTabela(TContexto& ctx, const std::string& tabela, bool temChave) {
    ITela& tela = ctx.Tela();
    if (!temChave && !ctx.dm.Atualiza.CriaIndicePrimario(tabela, false)) {
        TErro erro = ctx.dm.Atualiza.Erro();
        erro.mensagem = "Tabela: " + tabela + " NÃO POSSUI INDICE PRIMARIO";
        auto execucao = TErroDaExecucao::NosDois(std::move(erro), tabela, "");
        execucao.entrada = {"Tabela: ", tabela + " - NÃO POSSUI INDICE PRIMARIO", ""};
        tela.Erro(std::move(execucao));
    }
    tela.LblAtual("Verificando indices primarios: Tabela :" + tabela);
}

}  // namespace

void verificaIndicesPrimarios(TContexto& ctx) {
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    IBarra& barra = ctx.Tela().PbGeral();
    barra.Define(0, static_cast<int>(tabelas.RecordCount()), 1, 0);
    ctx.Tela().LblAtual("Verificando indices primarios...");
    const TChavesPorTabela chaves = ctx.Conexao().TodasAsChaves();
    int linha = 0;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        barra.Posicao(++linha);
        const std::string tabela = tabelas.Texto("nome_arquivo");
        Tolera([&] { VerificaTabela(ctx, tabela, chaves.contains(ChaveDeNome(tabela))); });
    }
}

namespace {

struct TColunaLookup {
    std::string tabela, nome, lookup, retorno;
};

std::vector<TColunaLookup> ColunasLookup(TConnection& conexao) {
    std::vector<TColunaLookup> colunas;
    TWKDQuery q(conexao, "select * from satrib where coalesce(lookup_arquivo, :p1) <> :p1");
    q.Param("p1", "");
    for (q.Open(); !q.Eof(); q.Next())
        colunas.push_back(
            {q.Texto("arquivo"), q.Texto("nome"), q.Texto("lookup_arquivo"), q.Texto("lookup_cp_retorno")});
    return colunas;
}

using TCampos = std::vector<std::pair<std::string, std::string>>;  // parent and child

TCampos CamposLigados(TWKDQuery& slookup, const TColunaLookup& coluna) {
    TCampos campos;
    slookup.Param("pArquivo", coluna.tabela).Param("pCampo", coluna.nome);
    for (slookup.Open(); !slookup.Eof(); slookup.Next())
        campos.emplace_back(slookup.Texto("campopai"), slookup.Texto("campofilho"));
    return campos;
}

/// As the subquery compares them.
std::string Condicao(const TCampos& campos, const TColunaLookup& coluna) {
    std::vector<std::string> partes;
    for (const auto& [pai, filho] : campos)
        partes.push_back("(" + coluna.tabela + "." + pai + " = " + coluna.lookup + "." + filho + ")");
    return Junta(partes, " and ");
}

/// Whether the names may stand in a statement. A lookup without a field to take fails by itself.
bool Aceita(TContexto& ctx, const TColunaLookup& coluna, const TCampos& campos) {
    std::vector<std::string> nomes = {coluna.tabela, coluna.nome, coluna.lookup, coluna.retorno};
    for (const auto& [pai, filho] : campos) nomes.insert(nomes.end(), {pai, filho});
    const std::string parte = "lookup " + coluna.nome;
    return std::ranges::all_of(nomes, [&](const auto& nome) {
        return Apara(nome).empty() || ctx.dm.Atualiza.Dicionario().Aceita(coluna.tabela, parte, nome);
    });
}

/// In a table that is its own lookup table both sides of the condition would be the same row.
bool ConsultaASiMesma(const TColunaLookup& coluna) { return ChaveDeNome(coluna.tabela) == ChaveDeNome(coluna.lookup); }

void Ajusta(TContexto& ctx, TWKDQuery& slookup, const TColunaLookup& coluna) {
    const std::string nome = coluna.tabela + "." + coluna.nome;
    if (ConsultaASiMesma(coluna)) {
        ctx.Tela().Memo1("Lookup " + nome + " não ajustado: a tabela de lookup é a própria tabela");
        return;
    }
    const TCampos campos = CamposLigados(slookup, coluna);
    if (!Aceita(ctx, coluna, campos)) return;
    Tolera([&] {
        ExecutaComando(ctx.Conexao(), "update " + coluna.tabela + " set " + coluna.nome + " = (select " +
                                          coluna.retorno + " from " + coluna.lookup + " where " +
                                          Condicao(campos, coluna) + ") ");
    });
    ctx.Tela().Memo1("Ajustando Lookup " + nome);
}

}  // namespace

void AtualizaLookupFisico(TContexto& ctx) {
    if (LeParametro(kSecaoUmaVez, kLookupFisico, "NAO", &ctx.Conexao()) == "SIM") return;
    const auto colunas = ColunasLookup(ctx.Conexao());
    TWKDQuery slookup(ctx.Conexao(), "select * from slookup where arquivo = :pArquivo and campo =:pCampo");
    IBarra& barra = ctx.Tela().PbAtual();
    barra.Define(0, static_cast<int>(colunas.size()), 10, 0);
    for (const TColunaLookup& coluna : colunas) {
        Ajusta(ctx, slookup, coluna);
        barra.Posicao(barra.Posicao() + 1);
    }
    GravaParametro(kSecaoUmaVez, kLookupFisico, "SIM", &ctx.Conexao());
}

namespace {

/// Name and text of each table that has a text; an empty one is the name.
std::vector<TLinha> TabelasComTexto(TConnection& conexao) {
    std::vector<TLinha> linhas;
    TWKDQuery q(conexao, "select nome_arquivo, obs from sarquivo where obs is not null");
    for (q.Open(); !q.Eof(); q.Next()) {
        const TValor nome = q.Campo("nome_arquivo");
        const std::string obs = q.Texto("obs");
        linhas.push_back({nome, obs.empty() ? nome : TValor(obs)});
    }
    return linhas;
}

constexpr std::string_view kColunas = " from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))";
constexpr std::string_view kInsereCampo =
    "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, Sortable, Selectable, AutoSearch, "
    "Mandatory) ";

// Each of the two tables is emptied and filled in one transaction, so that one that cannot be filled keeps its rows.

void IncluiComTexto(TConnection& conexao, IBarra& barra) {
    TWKDQuery insercao(conexao, "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)");
    for (const TLinha& linha : TabelasComTexto(conexao)) {
        barra.Posicao(barra.Posicao() + 1);
        insercao.Param("nome", linha[0]).Param("obs", linha[1]).ExecSQL();
    }
}

/// The server copies the tables without a text itself.
void PreencheTabelas(TContexto& ctx) {
    TConnection& conexao = ctx.Conexao();
    const bool temTexto = ctx.dm.VerificaExisteCampo("SARQUIVO", "OBS");
    IBarra& barra = ctx.Tela().PbGeral();
    TTransacao transacao(conexao);
    TWKDQuery(conexao, "delete from trbtable").ExecSQL();
    barra.Define(0, static_cast<int>(ContaRegistros(conexao, "select count(*) as total from sarquivo")), 1, 0);
    ctx.Tela().LblAtual("Dicionário de dados: Tabela...");
    TWKDQuery(conexao, "insert into TRBTABLE (TableName, TableAlias) select nome_arquivo, nome_arquivo from sarquivo" +
                           std::string(temTexto ? " where obs is null" : ""))
        .ExecSQL();
    if (temTexto) IncluiComTexto(conexao, barra);
    transacao.Commit();
}

/// "ftString" as the report designer calls it, "dtString", at most 100 characters, in the server's own words. Empty
/// where they are not known.
std::string DataTypeNoServidor(const TDialeto& dialeto) {
    return dialeto.Emenda("'d'", "coalesce(" + dialeto.Trecho("tipo", 2, 99) + ", '')");
}

/// The server copies the rows itself: fetching 20,000 of them takes as long as inserting them. False, and nothing is
/// changed, where it cannot.
bool CopiaNoServidor(TContexto& ctx) {
    const std::string tipo = DataTypeNoServidor(ctx.Dialeto());
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

/// The tables of SARQUIVO but the customer's own, which mind letter case here: the other programs write "U_".
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
    std::vector<TErro> falhas;  // one report of both tables
    for (const auto preenche : {PreencheTabelas, PreencheCampos}) {
        try {
            preenche(ctx);
        } catch (const std::exception& erro) {
            falhas.push_back(ErroDe(erro));
        }
    }
    if (!falhas.empty())
        ctx.Tela().Erro(TErroDaExecucao::NoLog(JuntaErros(falhas), "", "Inserindo dicionário de dados"));
    ctx.Tela().LblAtual("");
    ctx.Tela().PbGeral().Define(0, 0, 1, 0);
}

}  // namespace wkd
