// PacoteWKD from outside: packages made of a folder and of a database, shown and turned into other forms.
#include <signal.h>

#include <functional>
#include <random>
#include <set>
#include <thread>

#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "PacoteProgramaApoio.h"
#include "TodosOsTipos.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

TEST_F(TPacoteTest, BuildsAFolderWithPacketsLayoutsAndFiles) {
    CopiaExemplo();
    Fonte("Leia-me.txt", "solto\r\n");
    Fonte(".oculto", "x");
    const auto monta = Roda({"monta", "p.zip", "--pasta", "fontes", "--versao", "8.1"});
    ASSERT_EQ(monta.codigo, 0) << monta.erros;
    EXPECT_TRUE(monta.Diz("14 tabelas, 7 pacotes de dados, 3 layouts, 3 arquivos")) << monta.saida;

    const auto mostra = Json({"mostra", "p.zip"});
    EXPECT_EQ(mostra["bytes"], fs::file_size(pasta_ / "p.zip"));
    EXPECT_EQ(mostra["arquivos"].back(), (nlohmann::json{{"nome", "Leia-me.txt"}, {"bytes", 7}, {"versao", "8.1"}}));
    EXPECT_EQ(mostra["outros"].size(), 0u);
    const auto cliente = mostra["tabelas"][1];
    EXPECT_EQ(cliente["nome"], "TCLI_CON");
    EXPECT_EQ(cliente["versao"], 4);
    EXPECT_EQ(cliente["colunas"][1],
              (nlohmann::json{{"nome", "CODIGO"}, {"tipo", "ftString"}, {"tamanho", "10"}, {"chave", true}}));
    EXPECT_EQ(cliente["indices"][0]["colunas"], nlohmann::json{"NOME"});
    EXPECT_TRUE(Roda({"mostra", "p.zip"}).Diz("SISTEMA  1 linhas  358 bytes  xml"));

    const auto destino = Extrai("p.zip");
    EXPECT_EQ(LeArquivo(destino / "SAtrib.WKD"), LeArquivo(pasta_ / "fontes/SAtrib.WKD"));
    const auto arquivos = LePacote(destino / "ARQUIVOS");
    EXPECT_EQ(arquivos.linhas.back()[2], TValor(TBytes{"solto\r\n"}));
}

TEST_F(TPacoteTest, ASignalLeavesNoHalfPackageAndNoTemporaryFiles) {
    CopiaExemplo();
    std::string grande(60 << 20, ' ');
    std::mt19937 acaso(1);
    for (char& c : grande) c = static_cast<char>(acaso());
    Fonte("grande.bin", grande);
    EscreveArquivo(pasta_ / "p.zip", "o anterior");
    const auto nomes = [&] {
        std::set<std::string> todos;
        for (const auto& item : fs::recursive_directory_iterator(pasta_.Caminho()))
            todos.insert(item.path().lexically_relative(pasta_.Caminho()).string());
        return todos;
    };
    for (const char* saida : {"saida.txt", "erros.txt"}) EscreveArquivo(pasta_ / saida, "");
    const auto antes = nomes();
    int interrompidas = 0;
    for (const int espera : {0, 50, 200, 400, 800, 1200}) {
        SCOPED_TRACE(espera);
        const int sinal = espera % 100 == 0 ? SIGTERM : SIGINT;
        TProgramaEmCurso programa("./PacoteWKD", {"monta", "p.zip", "--pasta", "fontes", "--versao", "8.1"},
                                  pasta_.Caminho());
        programa.EsperaAtender();
        std::this_thread::sleep_for(std::chrono::milliseconds(espera));
        programa.Sinaliza(sinal);
        const int codigo = programa.Espera(std::chrono::seconds(60));
        EXPECT_EQ(nomes(), antes);
        if (codigo == 0) continue;
        ++interrompidas;
        EXPECT_EQ(codigo, 128 + sinal);
        EXPECT_EQ(LeArquivo(pasta_ / "p.zip"), "o anterior");
    }
    EXPECT_GT(interrompidas, 0);
}

TEST_F(TPacoteTest, WhatWouldMakeNoPackageIsNotBuilt) {
    const struct {
        const char* caso;
        std::function<void()> estraga;
        std::vector<const char*> mencoes;
    } casos[] = {
        {"sem dicionário", [&] { fs::remove(pasta_ / "fontes/SAtrib.WKD"); }, {"SAtrib.WKD"}},
        {"pacote ilegível", [&] { Fonte("SISTEMA.WKD", "<DATAPACKET>"); }, {"SISTEMA.WKD", "linha 1"}},
        {"SATRIB sem coluna",
         [&] {
             fs::copy_file(pasta_ / "fontes/SISTEMA.WKD", pasta_ / "fontes/SAtrib.WKD",
                           fs::copy_options::overwrite_existing);
         },
         {"SAtrib.WKD", "TIPO"}},
        {"SARQUIVO sem linhas",
         [&] {
             using enum TTipoDado;
             GravaPacote({{CampoDePacote("COD_MODULO", Texto), CampoDePacote("NOME_ARQUIVO", Texto),
                           CampoDePacote("VERSAO", Inteiro)},
                          {}},
                         pasta_ / "fontes/SARQUIVO.WKD", TFormaPacote::Xml);
         },
         {"SARQUIVO.WKD", "vazio"}},
        {"blob danificado", [&] { Fonte("SISTEMA.WKD", ComBlobDanificado()); }, {"SISTEMA.WKD"}},
        {"nomes que só diferem na caixa", [&] { Fonte("clientes.RTM", "x"); }, {"dois arquivos", "clientes.RTM"}},
        {"arquivo que já está em ARQUIVOS", [&] { Fonte("MENU.cfg", "x"); }, {"ARQUIVOS já tem", "MENU.cfg"}},
        {"pasta", [&] { fs::create_directory(pasta_ / "fontes/sub"); }, {"'sub'"}},
        {"linhas de JSON erradas", [&] { Fonte("SPESQ.jsonl", "{\"campos\":[]}\n"); }, {"SPESQ.jsonl", "linha 1"}},
        {"tamanho que não é inteiro",
         [&] { Fonte("SPESQ.jsonl", R"({"campos":[{"nome":"A","tipo":"string","tamanho":1e30}]})"); },
         {"SPESQ.jsonl", "inteiro"}},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.caso);
        fs::remove_all(pasta_ / "fontes");
        CopiaExemplo();
        EscreveArquivo(pasta_ / "p.zip", "antigo");
        caso.estraga();
        const auto saida = Roda({"monta", "p.zip", "--pasta", "fontes"});
        EXPECT_EQ(saida.codigo, 2);
        for (const char* mencao : caso.mencoes) EXPECT_TRUE(saida.Diz(mencao)) << mencao << " em: " << saida.erros;
        EXPECT_EQ(LeArquivo(pasta_ / "p.zip"), "antigo");
        EXPECT_TRUE(fs::is_empty(pasta_ / "tmp"));
    }
    EXPECT_EQ(Roda({"monta", "fontes/p.zip", "--pasta", "fontes"}).codigo, 2);
}

class TPacoteDoBanco : public TPacoteTest {
  protected:
    TPacoteDoBanco() {
        fs::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
        EscreveArquivo(pasta_ / "WKD.ini", SecaoDoAlias("LOJA", pasta_.Caminho(), "loja.fdb") +
                                               SecaoDoAlias("SUMIDO", pasta_.Caminho(), "nada.fdb"));
        const auto banco = CriaConexaoFirebird(ParametrosFirebird(pasta_ / "loja.fdb"));
        banco->Open();
        for (const char* comando :
             {"insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', 'U_CLIENTE', 1)",
              "insert into SATRIB (ARQUIVO, NOME, TIPO) values ('U_CLIENTE', 'CODIGO', 'ftInteger')",
              "insert into SATRIB (ARQUIVO, NOME, TIPO) values ('TCIDADE', 'U_BAIRRO', 'ftString')",
              "insert into SPESQ (ARQUIVO, NOMEPESQUISA) values ('TCIDADE', 'TCIDADE_P_U_BAIRRO')",
              "insert into SPESQ (ARQUIVO, NOMEPESQUISA) values ('TCIDADE', 'TCIDADE_NOME')",
              "insert into SINDSEC values ('TCIDADE', 'TCIDADE_BAIRRO', 1)",
              "insert into SINDSECA values ('TCIDADE', 'TCIDADE_BAIRRO', 1, 'UF')",
              "insert into SINDSECA values ('TCIDADE', 'TCIDADE_BAIRRO', 2, 'U_BAIRRO')",
              "alter table SADMMOD drop COD_MODULO",
              "update SATRIB set COMENTARIO = 'ação ' || lpad('', 9000, 'x') where ARQUIVO = 'TCIDADE' and NOME = "
              "'UF'"})
            banco->ExecuteDirect(comando);
    }
};

TEST_F(TPacoteDoBanco, BuildsFromTheDictionaryWithoutTheCustomersOwn) {
    Fonte("Novo.rtm", "layout");
    const auto monta = Roda({"monta", "p.zip", "--alias", "LOJA", "--tabelas", "sistema", "--pasta", "fontes"});
    ASSERT_EQ(monta.codigo, 0) << monta.erros;
    const auto mostra = Json({"mostra", "p.zip"});
    EXPECT_EQ(mostra["tabelas"].size(), 12u);
    EXPECT_EQ(mostra["semTabela"].size(), 0u);
    EXPECT_EQ(mostra["tabelas"][0]["nome"], "TCIDADE");
    EXPECT_EQ(mostra["tabelas"][0]["colunas"].size(), 3u);
    EXPECT_EQ(mostra["tabelas"][0]["indices"].size(), 0u);
    EXPECT_EQ(LePacote(Extrai("p.zip") / "SPESQ.WKD").linhas.size(), 1u);
    EXPECT_EQ(mostra["layouts"][0]["nome"], "Novo.rtm");
    EXPECT_EQ(mostra["sistema"].back()["tabela"], "SRELATOR");

    const auto satrib = LePacote(pasta_ / "p.zip.dir/SAtrib.WKD");
    const auto comentario = IndiceDoCampo({satrib.campos.begin(), satrib.campos.end()}, "COMENTARIO");
    std::size_t maior = 0;
    for (const auto& linha : satrib.linhas)
        maior = std::max(maior, linha[static_cast<std::size_t>(comentario)].ComoBytes().size());
    EXPECT_GT(maior, 9000u);
    ASSERT_EQ(Roda({"monta", "q.zip", "--alias", "LOJA"}).codigo, 0);
    EXPECT_EQ(Roda({"confere", "q.zip"}).saida, "Nada apontado.\n");
    for (const char* nome : {"SARQUIVO.WKD", "SAtrib.WKD"})
        EXPECT_EQ(LeArquivo(Extrai("q.zip") / nome), LeArquivo(pasta_ / "p.zip.dir" / nome)) << nome;
}

TEST_F(TPacoteDoBanco, EachFailureHasItsCodeAndMessage) {
    const struct {
        std::vector<std::string> argumentos;
        int codigo;
        const char* mencao;
    } casos[] = {
        {{"monta", "p.zip", "--alias", "NENHUM"}, 3, "NENHUM"},
        {{"monta", "p.zip", "--alias", "SUMIDO"}, 3, "nada.fdb"},
        {{"monta", "p.zip", "--alias", "LOJA", "--tabelas", "TNADA"}, 2, "TNADA"},
        {{"monta", "p.zip"}, 64, "--pasta"},
        {{"monta", "p.zip", "--pasta", "x", "--tabelas", "A"}, 64, "--alias"},
        {{"monta", "p.zip", "--pasta"}, 64, "valor"},
        {{"mostra", "nada.zip"}, 2, "não existe"},
        {{"mostra", "WKD.ini"}, 2, "não é um arquivo zip"},
        {{"mostra", "a.zip", "b.zip"}, 64, "Número errado"},
        {{"confere", "p.zip", "--antes", "q.zip"}, 64, "--antes"},
        {{"converte", "nada.wkd", "x.jsonl"}, 2, "nada.wkd"},
        {{"converte", "a", "b", "--forma", "csv"}, 64, "csv"},
        {{"desmonta"}, 64, "Quis dizer monta?"},
        {{"mostra", "p.zip", "--jason"}, 64, "Quis dizer --json?"},
        {{"converte", "a", "b", "--forma=csv"}, 64, "csv"},
        {{}, 64, "comando"},
        {{"--help"}, 0, "--anterior"},
        {{"--version"}, 0, "PacoteWKD 7.17"},
    };
    for (const auto& caso : casos) {
        const auto saida = Roda(caso.argumentos);
        EXPECT_EQ(saida.codigo, caso.codigo) << caso.mencao << saida.erros;
        EXPECT_TRUE(saida.Diz(caso.mencao)) << caso.mencao << " em: " << saida.erros << saida.saida;
        EXPECT_FALSE(fs::exists(pasta_ / "p.zip"));
    }
    fs::remove(pasta_ / "WKD.ini");
    EXPECT_EQ(Roda({"monta", "p.zip", "--alias", "LOJA"}).codigo, 3);
}

TEST_F(TPacoteTest, ConvertsThereAndBackLosingNothing) {
    auto original = DeTodosOsTipos();
    original.estados = {8, 2, 0};
    original.parametros = {{"CHANGE_LOG", {1, 0, 4, 2, 0, 2}}, {"PRIMARY_KEY", {}}, {"LCID", {1033}}};
    GravaPacote(original, pasta_ / "0.wkd", TFormaPacote::Binario);
    const char* caminhos[] = {"0.wkd", "1.jsonl", "2.wkd", "3.xml", "4.jsonl", "5.xml", "6.dat"};
    for (std::size_t i = 1; i < std::size(caminhos); ++i) {
        const auto saida = Roda({"converte", caminhos[i - 1], caminhos[i]});
        ASSERT_EQ(saida.codigo, 0) << caminhos[i] << saida.erros;
    }
    for (const char* nome : {"2.wkd", "3.xml", "5.xml", "6.dat"}) {
        SCOPED_TRACE(nome);
        const auto lido = LePacote(pasta_ / nome, TLinhasDoPacote::Todas);
        ConfereIguais(lido, original);
        EXPECT_EQ(lido.estados, original.estados);
        EXPECT_EQ(lido.parametros, original.parametros);
    }
    EXPECT_EQ(Json({"converte", "6.dat", "7.wkd", "--forma", "xml"})["linhas"], 3);
    EXPECT_EQ(FormaDoPacote(pasta_ / "7.wkd"), TFormaPacote::Xml);
    EXPECT_EQ(LeArquivo(pasta_ / "7.wkd"), LeArquivo(pasta_ / "5.xml"));
}

TEST_F(TPacoteTest, ARefusedConversionLeavesTheTargetAsItWas) {
    const std::string campos = R"({"campos":[{"nome":"A","tipo":"i2"},{"nome":"B","tipo":"string"}]})";
    const struct {
        std::string linhas;
        std::vector<const char*> mencoes;
    } casos[] = {
        {"{\"A\":1}\n{\"A\":40000}", {"linha 3", "campo 'A'", "i2"}},
        {R"({"B":1})", {"linha 2", "campo 'B'", "string"}},
        {R"({"C":1})", {"linha 2", "campo 'C'", "primeira linha"}},
        {R"({"A":[1]})", {"linha 2", "valores simples"}},
        {R"({"A":1)", {"linha 2", "não é JSON"}},
        {R"({"RowState":256})", {"linha 2", "RowState"}},
        {R"({"B":{"base64":"A"}})", {"linha 2", "campo 'B'"}},
        {"{\"B\":\"" + std::string(70'000, 'x') + "\"}", {"linha 1", "campo 'B'", "não cabe"}},
    };
    EscreveArquivo(pasta_ / "destino.wkd", "antigo");
    for (const auto& caso : casos) {
        EscreveArquivo(pasta_ / "origem.jsonl", campos + "\n" + caso.linhas + "\n");
        const auto saida = Roda({"converte", "origem.jsonl", "destino.wkd"});
        EXPECT_EQ(saida.codigo, 2) << caso.linhas;
        for (const char* mencao : caso.mencoes) EXPECT_TRUE(saida.Diz(mencao)) << mencao << " em: " << saida.erros;
        EXPECT_EQ(LeArquivo(pasta_ / "destino.wkd"), "antigo");
        EXPECT_FALSE(fs::exists(pasta_ / "destino.wkd.novo"));
    }
}

}  // namespace
}  // namespace wkd
