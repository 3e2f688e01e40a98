// The plan of an update, from outside: what it says, what it finds, and that the update then does just that.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "Arquivos.h"
#include "BancoTemporario.h"
#include "Linhas.h"
#include "Programa.h"
#include "ProgramaApoio.h"
#include "Retrato.h"
#include "copy/CopiaDeLinhas.h"
#include "firebird/ConexaoFirebird.h"
#include "report/PlanoEmTexto.h"
#include "tables/MarcaDaBackup.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

TJson Plano(const TProgramaInstalado& loja, int codigo) {
    const auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip", "--json"});
    EXPECT_EQ(saida.codigo, codigo) << saida.saida << saida.erros;
    return TJson::parse(saida.saida, nullptr, false);
}

bool Contem(const std::string& texto, const std::string& parte) { return texto.find(parte) != std::string::npos; }

const TJson& Tabela(const TJson& json, const std::string& nome) {
    for (const auto& tabela : json.at("tabelas"))
        if (tabela.at("tabela") == nome) return tabela;
    throw std::out_of_range(nome);
}

/// Decision, reason and statements of every table, one a line.
std::string Decisoes(const TJson& json) {
    std::string texto;
    for (const auto& tabela : json.at("tabelas")) {
        texto += tabela.at("tabela").get<std::string>() + " " + tabela.at("acao").get<std::string>() + " " +
                 tabela.at("motivo").get<std::string>() + "\n";
        for (const auto& comando : tabela.at("comandos"))
            texto += "  " + (comando.is_object() ? comando.at("texto") : comando).get<std::string>() + "\n";
    }
    return texto;
}

struct TCenario {
    const char* nome;
    std::function<void(const TProgramaInstalado&)> prepara;
};

TEST(Plano, TheTextTellsTheSumFirstAndThenEachChange) {
    const TProgramaInstalado loja;
    const auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip"});
    EXPECT_EQ(saida.codigo, 10) << saida.erros;
    std::size_t onde = 0;
    for (const char* linha :
         {"Resumo: 2 a criar, 3 a alterar, 2 a reconstruir (80 registros, 2.871 bytes), 7 sem mudança; achados: 0.\n",
          "Cópias: 80 registros, confirmados de 100 em 100 na ida e de 11 em 11 na volta: 10 confirmações, cerca de "
          "00:00:0",
          "~ Tabelas do dicionário: ", "\n~ TPRODUTO (versão 4 para 5)\n    ~ DESCRICAO: varchar(60) -> varchar(120)\n",
          "    + NCM: varchar(8)\n    + ORIGEM: integer\n",
          "\n-/+ TVENDA (tipo de DATA_VENDA muda de ftDate para ftDateTime)\n    ~ DATA_VENDA: date -> timestamp\n",
          "    os registros vão para BTVENDA e voltam: 40 registros, 1.000 bytes, cerca de 00:00:01\n",
          "\n+ TNOTA_FISCAL (a tabela não existe)\n    + SERIE: varchar(3)\n", "\nSem mudança (7): TESTADO, TCIDADE, ",
          "Relatórios do pacote (3): ", "Arquivos do pacote (", "Passos finais (8): "}) {
        const auto achada = saida.saida.find(linha, onde);
        EXPECT_NE(achada, std::string::npos) << linha << "\n" << saida.saida;
        if (achada != std::string::npos) onde = achada;
    }
}

/// On a disk in memory a commit costs nothing, so the costs are given here.
TEST(Plano, TellsWhatManyRowsACommitWouldSave) {
    struct TCaso {
        std::optional<TCustoDoCommit> custo;
        std::optional<std::size_t> linhasPorCommit;
        const char* texto;   // as it is to be
        const char* muitas;  // empty: not worth while
    };
    const TVolumeDaCopia volume{200'000, 100'000'000};
    const TCustoDoCommit disco{0, 0.0013}, rede{0.04, 0.0013}, memoria{0, 0};
    const TCaso casos[] = {
        {disco, {}, "11 na volta: 20.182 confirmações, cerca de 00:03:15", "cerca de 00:00:38"},
        {rede, {}, "11 na volta: 20.182 confirmações, cerca de 00:23:26", "cerca de 00:00:40"},
        {disco, 10'000, "de 10.000 em 10.000: 40 confirmações, cerca de 00:00:38", ""},
        {memoria, {}, "20.182 confirmações, cerca de 00:00:05", ""},
    };
    for (const auto& [custo, linhas, texto, muitas] : casos) {
        TPlano plano;
        plano.copias = {volume.registros, volume.Commits(linhas), linhas, volume.Segundos(custo, linhas),
                        volume.Segundos(custo, kMuitasPorCommit)};
        const std::string dito = PlanoEmTexto(plano);
        EXPECT_TRUE(Contem(dito, texto)) << dito;
        EXPECT_EQ(Contem(dito, "com LinhasPorCommit=10000"), *muitas != 0) << dito;
        EXPECT_TRUE(Contem(dito, muitas)) << dito;
    }
    EXPECT_EQ((TVolumeDaCopia{200, 0, true}).Commits({}), 19) << "the way back alone";
    EXPECT_DOUBLE_EQ(volume.Segundos({}, {}), 5);
}

TEST(Plano, ThePageOpensWithoutNetworkAndTellsTheSame) {
    const TProgramaInstalado loja;
    const std::string pagina = loja.Roda({"--plano", "LOJA", "pacote.zip", "--html"}).saida;
    for (const char* texto : {"<h1>Plano da atualização</h1>", "2 a reconstruir", "<span class=\"\">TVENDA</span>",
                              "~ DATA_VENDA: date -&gt; timestamp", "@media print", "Passos finais"})
        EXPECT_NE(pagina.find(texto), std::string::npos) << texto;
    for (const char* deFora : {"http:", "https:", "<script", " src=", "<link", "@import", "url(", "{{", "<!-- parte"})
        EXPECT_EQ(pagina.find(deFora), std::string::npos) << deFora;
}

TEST(Plano, TheServersOwnToolReadsTheStatementsAndLosesNoRow) {
    const TProgramaInstalado loja;
    loja.Banco()->ExecuteDirect("alter table TPRODUTO add OBS varchar(2500)");
    loja.Banco()->ExecuteDirect(
        "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values ('TPRODUTO', 9, 'OBS', "
        "'ftString', 2500, 0)");
    NoPacote(loja, "SAtrib.WKD", "NOME=\"DESCRICAO\" TIPO=\"ftString\" TAMANHO=\"120\"",
             "NOME=\"DESCRICAO\" VALOR_PADRAO=\"d'água; x\" TIPO=\"ftString\" TAMANHO=\"120\"");
    const std::string vendas = Linhas(*loja.Banco(), "select * from TVENDA order by NUMERO");
    loja.Escreve("plano.sql", loja.Roda({"--plano", "LOJA", "pacote.zip", "--sql"}).saida);
    const auto isql = RodaPrograma("isql-fb", {"-b", "-q", "-ch", "UTF8", "-i", "plano.sql", "loja.fdb"}, loja / ".");
    EXPECT_EQ(isql.codigo, 0) << isql.saida << isql.erros << loja.Arquivo("plano.sql");
    EXPECT_EQ(isql.saida + isql.erros, "");

    const auto banco = loja.Banco();
    const auto tipo = [&](const char* tabela, const char* coluna) {
        const auto colunas = banco->Colunas(tabela);
        const auto* achada = ColunaDeNome(colunas, coluna);
        return achada ? achada->tipoSql : "";
    };
    EXPECT_EQ(tipo("TPRODUTO", "DESCRICAO"), "varchar(120)");
    EXPECT_EQ(tipo("TPRODUTO", "NCM"), "varchar(8)");
    EXPECT_EQ(tipo("TPRODUTO", "OBS"), "varchar(1998)");
    EXPECT_EQ(tipo("TNOTA_FISCAL", "CHAVE_ACESSO"), "varchar(44)");
    EXPECT_EQ(Linhas(*banco, "select * from TVENDA order by NUMERO"), vendas);
}

TEST(Plano, ARebuildThatWaitsCountsTheRowsThatAreLeft) {
    const TProgramaInstalado loja;
    std::string cidades;
    {
        const auto banco = loja.Banco();
        banco->ExecuteDirect(
            "create table BTCIDADE (CODIGO integer not null, NOME varchar(40), UF varchar(2), primary key (CODIGO))");
        banco->ExecuteDirect("insert into BTCIDADE select * from TCIDADE");
        cidades = Linhas(*banco, "select * from TCIDADE order by CODIGO");
        banco->ExecuteDirect("delete from TCIDADE where CODIGO > (select min(CODIGO) + 1 from TCIDADE)");
        banco->ExecuteDirect("update SARQUIVO set VERSAO = -1 where NOME_ARQUIVO = 'TCIDADE'");
    }
    const auto faltam = std::stoi(Linhas(
        *loja.Banco(), "select (select count(*) from BTCIDADE) - (select count(*) from TCIDADE) from RDB$DATABASE"));
    ASSERT_GT(faltam, 0);
    const auto cidade = Tabela(Plano(loja, 10), "TCIDADE");
    EXPECT_EQ(cidade.at("registros"), faltam) << cidade.dump(1);
    EXPECT_TRUE(cidade.at("retoma").get<bool>());
    EXPECT_TRUE(
        loja.Roda({"--plano", "LOJA", "pacote.zip"}).Diz("de BTCIDADE faltam voltar " + std::to_string(faltam)));

    loja.Atualiza();
    EXPECT_EQ(Linhas(*loja.Banco(), "select * from TCIDADE order by CODIGO"), cidades);
}

TEST(Plano, TheUpdateDecidesAndRunsWhatThePlanSaid) {
    const TCenario cenarios[] = {
        {"an older release", [](auto&) {}},
        {"a text of 2000 characters, narrowed before the tables",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("alter table TPRODUTO add OBS varchar(2500)");
             banco->ExecuteDirect(
                 "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values ('TPRODUTO', "
                 "9, 'OBS', 'ftString', 2500, 0)");
             NoPacote(loja, "SAtrib.WKD", "<ROW ARQUIVO=\"TPRODUTO\" SEQUENCIA=\"8\"",
                      "<ROW ARQUIVO=\"TPRODUTO\" SEQUENCIA=\"9\" NOME=\"OBS\" TIPO=\"ftString\" TAMANHO=\"1995\" "
                      "CHAVE_DE_PESQUISA=\"0\"/><ROW ARQUIVO=\"TPRODUTO\" SEQUENCIA=\"8\"");
         }},
        {"a mark of a rebuild, a mark of an analysis, a table registered twice",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("update SARQUIVO set VERSAO = -1 where NOME_ARQUIVO = 'TCIDADE'");
             banco->ExecuteDirect("insert into TINI values ('AtualizaTabela', 'TESTADO', 'SIM')");
             banco->ExecuteDirect("alter table SARQUIVO drop constraint PK_SARQUIVO");
             banco->ExecuteDirect("insert into SARQUIVO select * from SARQUIVO where NOME_ARQUIVO = 'TUNIDADE'");
         }},
        {"a key column more, a column that is gone",
         [](auto& loja) {
             NoPacote(loja, "SAtrib.WKD",
                      "ARQUIVO=\"TVENDA_ITENS\" SEQUENCIA=\"3\" NOME=\"COD_PRODUTO\" "
                      "TIPO=\"ftString\" TAMANHO=\"15\" CHAVE_DE_PESQUISA=\"0\"",
                      "ARQUIVO=\"TVENDA_ITENS\" SEQUENCIA=\"3\" NOME=\"COD_PRODUTO\" TIPO=\"ftString\" TAMANHO=\"15\" "
                      "CHAVE_DE_PESQUISA=\"1\"");
             loja.Banco()->ExecuteDirect("alter table TPRODUTO drop UNIDADE");
         }},
    };
    for (const auto& [nome, prepara] : cenarios) {
        SCOPED_TRACE(nome);
        const TProgramaInstalado loja;
        prepara(loja);
        const auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip", "--json"});
        ASSERT_TRUE(saida.codigo == 10 || saida.codigo == 11) << saida.erros;
        const auto plano = TJson::parse(saida.saida);

        const auto atualizacao = loja.Atualiza();
        ASSERT_LE(atualizacao.codigo, 1) << atualizacao.erros;
        SCOPED_TRACE(atualizacao.erros);
        const auto relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
        EXPECT_EQ(Decisoes(plano), Decisoes(relatorio));
        for (const auto& tabela : plano.at("tabelas")) {
            if (!tabela.contains("registros")) continue;
            EXPECT_EQ(tabela.at("registros"), Tabela(relatorio, tabela.at("tabela")).at("registrosAntes"));
        }

        if (atualizacao.codigo == 1) loja.Atualiza();  // what the server refused is looked at once more
        const auto depois = Plano(loja, 0);
        EXPECT_FALSE(depois.at("muda").get<bool>()) << depois.dump(1);
    }
}

/// Pages of a database file but those in which the server counts its transactions, which a reader has, too.
std::string PaginasDeDados(const std::string& arquivo) {
    constexpr std::size_t kPagina = 8192;
    constexpr char kCabecalho = 1, kTransacoes = 3;
    std::string paginas;
    for (std::size_t i = 0; i < arquivo.size(); i += kPagina)
        if (arquivo[i] != kCabecalho && arquivo[i] != kTransacoes) paginas += arquivo.substr(i, kPagina);
    return paginas;
}

/// As a busy day leaves them: who reads these rows next cleans up behind them, unless asked not to.
void DeixaVersoesVelhas(const TProgramaInstalado& loja) {
    auto parametros = ParametrosFirebird(loja / "loja.fdb");
    parametros.Adiciona("GarbageCollect", "False");
    const auto conexao = CriaConexaoFirebird(parametros);
    conexao->Open();
    for (const auto* tabela : {"SATRIB set TAMANHO = TAMANHO", "TVENDA set TOTAL = TOTAL + 1"})
        conexao->ExecuteDirect(std::string("update ") + tabela);
}

TEST(Plano, ChangesNothingAndNeedsNoRightTo) {
    const TProgramaInstalado loja;
    DeixaVersoesVelhas(loja);
    const std::string antes = loja.Arquivo("loja.fdb");
    Plano(loja, 10);
    const std::string depois = loja.Arquivo("loja.fdb");
    EXPECT_EQ(antes.size(), depois.size());
    EXPECT_TRUE(PaginasDeDados(antes) == PaginasDeDados(depois));
    EXPECT_EQ(loja.Arquivo("tmp/AtualWkd.lock"), "");
    EXPECT_FALSE(fs::exists(loja / "AtualizaWKD.log"));
    EXPECT_FALSE(fs::exists(loja / "erroCria.sql"));

    // A database that takes no write at all: the server refuses every one, and its file stays as it is to the byte.
    ASSERT_EQ(std::system(("gfix -mode read_only '" + (loja / "loja.fdb").string() + "'").c_str()), 0);
    const std::string soLeitura = loja.Arquivo("loja.fdb");
    const auto plano = Plano(loja, 11);
    EXPECT_TRUE(soLeitura == loja.Arquivo("loja.fdb"));
    EXPECT_NE(plano.dump().find("read-only"), std::string::npos);  // what an update would meet
}

struct TProblema {
    const char* tabela;
    const char* tipo;
    int quantos;
    const char* exemplo;  // part of it
    std::function<void(const TProgramaInstalado&)> causa;
};

void ChaveDeProdutoViraUnidade(const TProgramaInstalado& loja) {
    NoPacote(loja, "SAtrib.WKD", "NOME=\"UNIDADE\" TIPO=\"ftString\" TAMANHO=\"5\" CHAVE_DE_PESQUISA=\"0\"",
             "NOME=\"UNIDADE\" TIPO=\"ftString\" TAMANHO=\"5\" CHAVE_DE_PESQUISA=\"1\"");
    NoPacote(
        loja, "SAtrib.WKD",
        "ARQUIVO=\"TPRODUTO\" SEQUENCIA=\"1\" NOME=\"CODIGO\" TIPO=\"ftString\" TAMANHO=\"15\" CHAVE_DE_PESQUISA=\"1\"",
        "ARQUIVO=\"TPRODUTO\" SEQUENCIA=\"1\" NOME=\"CODIGO\" TIPO=\"ftString\" TAMANHO=\"15\" "
        "CHAVE_DE_PESQUISA=\"0\"");
}

TEST(Plano, FindsInTheDataWhatTheChangeDoesNotTake) {
    const TProblema problemas[] = {
        {"TCONTAS_REC", "texto-longo", 1, "DOCUMENTO=NF00001, PARCELA=1, HISTORICO=xxx",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("alter table TCONTAS_REC alter HISTORICO type varchar(200)");
             banco->ExecuteDirect("update TCONTAS_REC set HISTORICO = rpad('', 81, 'x') where DOCUMENTO = 'NF00001'");
             banco->ExecuteDirect("update TCONTAS_REC set HISTORICO = rpad('', 80, 'x') where DOCUMENTO = 'NF00002'");
         }},
        {"TVENDA", "nao-converte", 1, "NUMERO=1, TOTAL=doze",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("alter table TVENDA drop TOTAL");
             banco->ExecuteDirect("alter table TVENDA add TOTAL varchar(20)");
             banco->ExecuteDirect("update TVENDA set TOTAL = iif(NUMERO = 1, 'doze', '12,5')");
         }},
        {"TFORNECE", "indice-repetido", 1, "CNPJ=1 (2 registros)",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("insert into TFORNECE (CODIGO, CNPJ) values ('X1', '1')");
             banco->ExecuteDirect("insert into TFORNECE (CODIGO, CNPJ) values ('X2', '1')");
             banco->ExecuteDirect("insert into TFORNECE (CODIGO) values ('X3')");
             banco->ExecuteDirect("insert into TFORNECE (CODIGO) values ('X4')");
             banco->ExecuteDirect("update SARQUIVO set VERSAO = 1 where NOME_ARQUIVO = 'TFORNECE'");
         }},
        {"TPRODUTO", "sem-valor", 1, "",
         [](auto& loja) {
             ChaveDeProdutoViraUnidade(loja);
             loja.Banco()->ExecuteDirect("insert into TPRODUTO (CODIGO) values ('SEM')");
         }},
        {"TPRODUTO", "chave-repetida", 1, "UNIDADE=",
         [](auto& loja) {
             ChaveDeProdutoViraUnidade(loja);
             loja.Banco()->ExecuteDirect("update TPRODUTO set UNIDADE = 'PC'");
         }},
        {"TCLI_CON", "versoes-esgotadas", 253, "",
         [](auto& loja) {
             const auto banco = loja.Banco();
             for (int i = 2; i <= 253; ++i)
                 banco->ExecuteDirect("alter table TCLI_CON alter FANTASIA type varchar(" + std::to_string(39 + i) +
                                      ")");
         }},
        {"TVENDA", "dependentes", 2, "visão V_VENDA",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("create view V_VENDA as select NUMERO from TVENDA");
             banco->ExecuteDirect(
                 "create table TFILHA (NUMERO integer, constraint FK_FILHA foreign key (NUMERO) references TVENDA)");
         }},
        {"TVENDA", "gatilhos", 1, "G_VENDA",
         [](auto& loja) {
             loja.Banco()->ExecuteDirect("create trigger G_VENDA for TVENDA before insert as begin end");
         }},
        {"TVENDA", "propriedades", 1, "SEQ: generated by default as identity",
         [](auto& loja) {
             loja.Banco()->ExecuteDirect("delete from TVENDA");  // rows have no number to be given
             loja.Banco()->ExecuteDirect("alter table TVENDA add SEQ integer generated by default as identity");
         }},
        {"TVENDA", "coluna-desconhecida", 0, "",
         [](auto& loja) { loja.Banco()->ExecuteDirect("alter table TVENDA add NOSSA varchar(10)"); }},
        {"TVENDA", "tipo-fisico", 0, "",
         [](auto& loja) {
             const auto banco = loja.Banco();
             banco->ExecuteDirect("alter table TVENDA drop TOTAL");
             banco->ExecuteDirect("alter table TVENDA add TOTAL decimal(15,2)");
         }},
        {"TPRODUTO", "coluna-nao-muda", 0, "",
         [](auto& loja) {
             NoPacote(loja, "SAtrib.WKD", "NOME=\"UNIDADE\" TIPO=\"ftString\"", "NOME=\"UNIDADE\" TIPO=\"ftInteger\"");
         }},
    };
    for (const TProblema& problema : problemas) {
        SCOPED_TRACE(std::string(problema.tabela) + " " + problema.tipo);
        const TProgramaInstalado loja;
        problema.causa(loja);
        const TJson plano = Plano(loja, 11);
        bool achado = false;
        for (const auto& a : Tabela(plano, problema.tabela).at("achados")) {
            if (a.at("tipo") != problema.tipo) continue;
            achado = true;
            EXPECT_EQ(a.at("quantos"), problema.quantos) << a.dump();
            EXPECT_NE(a.at("exemplos").dump().find(problema.exemplo), std::string::npos) << a.dump();
        }
        EXPECT_TRUE(achado) << Tabela(plano, problema.tabela).dump(1);
    }
}

TEST(Plano, SaysWhatWaitsForConnectedUsers) {
    const TProgramaInstalado loja;
    loja.Banco()->ExecuteDirect("update csenha set flag1 = 1");
    const TJson plano = Plano(loja, 11);
    EXPECT_TRUE(plano.at("recusadaPorUsuarios").get<bool>());
    EXPECT_EQ(Tabela(plano, "TCONTAS_REC").at("exclusivas").size(), 1u);
    EXPECT_TRUE(loja.Roda({"--plano", "LOJA;", "pacote.zip"}).Diz("seria recusada até que saiam"));
}

TEST(Plano, FindsWhatIsLostBeforeTheTables) {
    const TProgramaInstalado loja;
    {
        const auto banco = loja.Banco();
        banco->ExecuteDirect("alter table TPRODUTO add OBS varchar(2500)");
        banco->ExecuteDirect(
            "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values ('TPRODUTO', 9, "
            "'OBS', 'ftString', 2500, 0)");
        banco->ExecuteDirect(
            "update TPRODUTO set OBS = rpad('', iif(CODIGO = (select min(CODIGO) from TPRODUTO), "
            "1999, 1998), 'x')");
    }
    const std::string registros = Linhas(*loja.Banco(), "select count(*) from TVENDEDOR");
    loja.Escreve("fontes/TVENDEDOR.WKD",
                 "<?xml version=\"1.0\" standalone=\"yes\"?><DATAPACKET Version=\"2.0\"><METADATA><FIELDS><FIELD "
                 "attrname=\"CODIGO\" fieldtype=\"i4\"/></FIELDS><PARAMS/></METADATA><ROWDATA><ROW CODIGO=\"1\"/>"
                 "</ROWDATA></DATAPACKET>");
    NoPacote(loja, "SAtrib.WKD", "NOME=\"UF\"", "NOME=\"UF int, drop X\"");
    const TJson plano = Plano(loja, 11);
    std::string achados;
    for (const auto& achado : plano.at("achadosAntes"))
        achados += achado.at("tipo").get<std::string>() + " " + achado.at("coluna").get<std::string>() + " " +
                   achado.at("quantos").dump() + ";";
    EXPECT_EQ(achados, "nome-improprio TESTADO 0;texto-cortado TPRODUTO.OBS 1;");
    const TJson troca = {
        {"tabela", "TVENDEDOR"}, {"arquivo", "TVENDEDOR.WKD"}, {"saem", std::stoi(registros)}, {"entram", 1}};
    EXPECT_EQ(plano.at("trocas"), TJson::array({troca}));
    const auto texto = loja.Roda({"--plano", "LOJA", "pacote.zip"});
    EXPECT_TRUE(texto.Diz("TVENDEDOR: saem " + registros + " registros e entram 1 de TVENDEDOR.WKD do pacote"));
    EXPECT_TRUE(texto.Diz("! texto-cortado TPRODUTO.OBS: ") && texto.Diz("! nome-improprio TESTADO: "));

    const auto feita = loja.Atualiza();
    EXPECT_EQ(feita.codigo, 1);
    EXPECT_TRUE(Contem(feita.saida, "Tabela TVENDEDOR: saíram " + registros + " registro(s) e entraram 1"));
    EXPECT_TRUE(Contem(feita.erros, "1 texto(s) da coluna OBS cortado(s)"));
}

TEST(Plano, EndsWithTheCodeOfWhatIsMissing) {
    const TProgramaInstalado loja;
    EXPECT_EQ(loja.Roda({"--plano", "LOJA"}).codigo, 64);
    EXPECT_EQ(loja.Roda({"--plano", "LOJA", "nenhum.zip"}).codigo, 2);
    EXPECT_EQ(loja.Roda({"--plano", "NENHUM", "pacote.zip"}).codigo, 3);
}

}  // namespace
}  // namespace wkd
