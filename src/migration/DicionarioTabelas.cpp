#include "DicionarioTabelas.h"

#include <utility>
#include <vector>

#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::size_t kTamanhoDataType = 100;

/// Fields of the open query by position, so that no row is searched by name. An absent field is NULL.
class TLeitura {
  public:
    TLeitura(TConnection& conexao, std::string_view sql, std::initializer_list<std::string_view> campos)
        : q_(conexao, sql) {
        q_.Open();
        for (const std::string_view campo : campos) posicoes_.push_back(IndiceDoCampo(q_.Campos(), campo));
    }

    bool Eof() const { return q_.Eof(); }
    void Next() { q_.Next(); }
    TValor operator[](std::size_t campo) {
        const int posicao = posicoes_[campo];
        return posicao < 0 ? TValor() : q_.Comando().Valor(static_cast<std::size_t>(posicao));
    }

  private:
    TWKDQuery q_;
    std::vector<int> posicoes_;
};

/// Replaces the rows of a table in one transaction that ends at the first error, so that one that cannot be filled
/// keeps its old rows. `insercao` has a parameter for each value of a row.
void Substitui(TContexto& ctx, std::string_view apaga, std::string_view insercao, const std::vector<TLinha>& linhas) {
    IBarra& barra = ctx.Tela().PbGeral();
    TTransacao transacao(ctx.Conexao());
    TWKDQuery(ctx.Conexao(), apaga).ExecSQL();
    const auto comando = ctx.Conexao().Prepara(insercao);
    for (const TLinha& linha : linhas) {
        barra.Posicao(barra.Posicao() + 1);
        for (std::size_t i = 0; i < linha.size(); ++i) comando->Atribui(i, linha[i]);
        comando->Executa();
    }
    transacao.Commit();
}

void IniciaProgresso(TContexto& ctx, std::string_view contagem, std::string_view texto) {
    ctx.Tela().PbGeral().Define(0, static_cast<int>(ContaRegistros(ctx.Conexao(), contagem)), 1, 0);
    ctx.Tela().LblAtual(texto);
}

void PreencheTabelas(TContexto& ctx) {
    IniciaProgresso(ctx, "select count(*) as total from sarquivo", "Dicionário de dados: Tabela...");
    std::vector<TLinha> linhas;
    for (TLeitura q(ctx.Conexao(), "select * from sarquivo", {"Nome_arquivo", "OBS"}); !q.Eof(); q.Next()) {
        const std::string obs = q[1].ComoTexto();
        linhas.push_back({q[0], obs.empty() ? q[0] : TValor(obs)});
    }
    Substitui(ctx, "delete from trbtable", "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)", linhas);
}

/// "ftString" as the report designer calls it: "dtString".
std::string DataType(const std::string& tipo) {
    return "d" + (tipo.empty() ? tipo : tipo.substr(1, kTamanhoDataType - 1));
}

void PreencheCampos(TContexto& ctx) {
    const std::string colunas = " from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))";
    IniciaProgresso(ctx, "select count(*) as total" + colunas, "Dicionário de dados: Campos...");
    std::vector<TLinha> linhas;
    for (TLeitura q(ctx.Conexao(), "select *" + colunas, {"arquivo", "nome", "discriminacao", "tipo"}); !q.Eof();
         q.Next())
        linhas.push_back({q[0], q[1], q[2], DataType(q[3].ComoTexto())});
    Substitui(ctx, "delete from trbfield",
              "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, Sortable, Selectable, "
              "AutoSearch, Mandatory) values (:tabela, :nome, :discriminacao, :tipo, 'T', 'T', 'T', 'F', 'F')",
              linhas);
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
