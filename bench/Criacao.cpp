#include "BancoTemporario.h"
#include "Casos.h"
#include "TelaMuda.h"
#include "alter/DicionarioDaTabela.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {

namespace {

/// A database with the dictionary of tables that it does not have yet: a key of two columns, two indexes each.
class TBancoVazio {
  public:
    TBancoVazio(const std::string& servidor, int tabelas)
        : parametros_(ParametrosFirebird(pasta_ / "vazio.fdb", servidor)) {
        parametros_.Adiciona("CharacterSet", "WIN1252");
        CriaBancoFirebird(parametros_, 8192);
        Aliases().INIGravaString("VAZIO", "TipoBanco", "tbInterbase");
        CriaDicionario(*Conexao(), tabelas);
    }

    std::filesystem::path Pasta() const { return pasta_.Caminho(); }
    TAliases Aliases() const { return TAliases(pasta_ / "WKD.ini"); }
    std::unique_ptr<TConnection> Conexao() const {
        auto conexao = CriaConexaoFirebird(parametros_);
        conexao->Open();
        return conexao;
    }

  private:
    static void CriaDicionario(TConnection& banco, int tabelas) {
        for (const std::string& comando :
             {std::string("create table SATRIB (ARQUIVO varchar(50) not null, SEQUENCIA integer, NOME varchar(25) not "
                          "null, TIPO "
                          "varchar(25), TAMANHO integer, CHAVE_DE_PESQUISA integer, MASCARA varchar(40), DISCRIMINACAO "
                          "varchar(40), VALOR_PADRAO varchar(20), SOMENTE_LEITURA integer, VISIVEL integer, "
                          "PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO integer, LOOKUP_ARQUIVO varchar(50), "
                          "LOOKUP_CP_PESQUISA "
                          "varchar(25), LOOKUP_INDICE varchar(100), LOOKUP_CP_CHAVE varchar(25), LOOKUP_CP_RETORNO "
                          "varchar(25), "
                          "LOG integer, CALCULO varchar(250), primary key (ARQUIVO, NOME))"),
              std::string("create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer)"),
              std::string("create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), SEQUENCIA integer, CAMPO "
                          "varchar(25))"),
              "execute block as declare t integer = 0; declare c integer; declare n varchar(20); begin while (t < " +
                  std::to_string(tabelas) +
                  ") do begin n = 'TAB' || (1000 + t); c = 0; while (c < 25) do begin insert into SATRIB (ARQUIVO, "
                  "SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values (:n, :c, 'CAMPO' || :c, iif(mod(:c, 2) = "
                  "0, "
                  "'ftString', 'ftInteger'), 40, iif(:c < 2, 1, 0)); c = c + 1; end insert into SINDSEC values (:n, :n "
                  "|| "
                  "'_A', 0); insert into SINDSECA values (:n, :n || '_A', 1, 'CAMPO2'); insert into SINDSEC values "
                  "(:n, :n "
                  "|| '_B', 0); insert into SINDSECA values (:n, :n || '_B', 1, 'CAMPO3'); insert into SINDSECA values "
                  "(:n, :n || '_B', 2, 'CAMPO4'); t = t + 1; end end"})
            banco.ExecuteDirect(comando);
    }

    TPastaTemporaria pasta_;
    TParametrosConexao parametros_;
};

/// The statements that make a table, its key and its indexes.
std::vector<std::string> Comandos(const std::string& tabela) {
    std::string colunas;
    for (int c = 0; c < kColunas; ++c)
        colunas += (c ? ",\nCAMPO" : "CAMPO") + std::to_string(c) + (c % 2 == 0 ? " varchar (40)" : " integer ") +
                   (c < 2 ? " not null " : "");
    return {"Create Table " + tabela + " (\n" + colunas + "\n )",
            "alter table " + tabela + "  add constraint PK_" + tabela + " primary key(CAMPO0,CAMPO1)",
            "CREATE INDEX " + tabela + "_A ON " + tabela + "(CAMPO2)",
            "CREATE INDEX " + tabela + "_B ON " + tabela + "(CAMPO3,CAMPO4)"};
}

/// Table by table in turns, since each new table costs the server more than the one before.
std::vector<TMedida> Mede(const TLugar& lugar, int tabelas) {
    const TBancoVazio banco(lugar.servidor, tabelas);
    TTelaMuda tela;
    TDataModulo dm(banco.Aliases(), tela, [&](auto...) { return banco.Conexao(); });
    dm.SQLConnection1.SetAlias("VAZIO");
    dm.SQLConnection1.Open();
    dm.AtualizaListaDeTabelas();
    TOpcoes opcoes;
    TEstado estado;
    TContexto ctx{dm, opcoes, estado, {}, {}};
    const auto conexao = banco.Conexao();
    TMedida medida{.trabalho = "criar " + std::to_string(tabelas) + " tabelas com chave e dois índices, " + lugar.nome,
                   .piso = "os mesmos comandos, um commit cada",
                   .limite = 1.15};
    TTempo nosso, piso;
    const auto dicionario = dm.Atualiza.Dicionario().Lembra();
    for (int t = 0; t < tabelas; ++t) {
        const std::string numero = std::to_string(1000 + t);
        nosso += Cronometra([&] { CriaTabelaComIndices(ctx, "TAB" + numero); });
        const auto comandos = Comandos("CRU" + numero);
        piso += Cronometra([&] {
            for (const std::string& comando : comandos) conexao->ExecuteDirect(comando);
        });
    }
    if (!tela.erros.empty()) throw std::runtime_error(tela.erros.front());
    medida.Nosso(nosso);
    medida.DoPiso(piso);
    return {medida};
}

}  // namespace

std::vector<TMedida> MedeCriacao(TBancada& bancada) {
    return bancada.EmTodosOsLugares([&](const TLugar& lugar) { return Mede(lugar, bancada.Quantos(kTabelas)); });
}

}  // namespace wkd
