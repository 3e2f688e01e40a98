// The support bundle, from outside: what is in it, what must not be, and the empty database that comes of it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "Arquivos.h"
#include "Mascara.h"
#include "ProgramaApoio.h"
#include "RelatosSemValores.h"
#include "package/Pacote.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

constexpr const char* kHistorico = "NOME=\"HISTORICO\" TIPO=\"ftString\" TAMANHO=\"80\"";

TEST(Mascara, LetsThroughWhatNoCustomerHasWritten) {
    struct TCaso {
        const char *texto, *mascarado;
    };
    const TCaso casos[] = {
        {"Problematic key value is (\"CNPJ\" = '12.345.678/0001-99')", "Problematic key value is (\"CNPJ\" = '…')"},
        {"violation of PRIMARY or UNIQUE KEY constraint \"PK_TCLI\" on table \"TCLI\"",
         "violation of PRIMARY or UNIQUE KEY constraint \"PK_TCLI\" on table \"TCLI\""},
        {"conversion error from string \"d'Ávila \"Zé\" 3\"", "conversion error from string \"…\""},
        {"conversion error from string \"Zulmira\r\nZeferina\r\nLtda\"", "conversion error from string \"…\""},
        {"The duplicate key value is (Zeferina, 42).", "The duplicate key value is (…)."},
        {"conversion error from string \"banco do cliente\"", "conversion error from string \"…\""},
        {"The duplicate key value is (banco, nome).", "The duplicate key value is (…)."},
        {"Cannot insert duplicate key in object 'dbo.TCLI'; it can't.",
         "Cannot insert duplicate key in object '….TCLI'; it can't."},
        {"o valor 7788 não cabe em smallint", "o valor … não cabe em smallint"},
        {"\"Zeferina\" não é um número válido", "\"…\" não é um número válido"},
        {"CONEXÃO PERDIDA", "CONEXÃO PERDIDA"},
        {"Zeferina-42/Zulmira", "…"},
        {"alter table TCLI alter CNPJ type varchar (40)", "alter table TCLI alter CNPJ type varchar (40)"},
        {"select varchar (40) where CNPJ = 40", "select varchar (40) where CNPJ = …"},
    };
    TMascara mascara;
    for (const char* nome : {"TCLI", "PK_TCLI", "CNPJ", "42", "Zeferina Ltda"}) mascara.Conhece(nome);
    for (const auto& caso : casos) EXPECT_EQ(mascara.Texto(caso.texto), caso.mascarado);
    EXPECT_EQ(mascara.Comando("update TCLI set CNPJ = 'Zeferina' where CNPJ = 42"),
              "update TCLI set CNPJ = '…' where CNPJ = …");
    EXPECT_EQ(mascara.Comando("update TCLI set CNPJ = N'banco' where nome = 'TCLI'"),
              "update TCLI set CNPJ = N'…' where nome = 'TCLI'");
    EXPECT_EQ(mascara.Comando("alter table TCLI add UF varchar(2) default 'SP'"),
              "alter table TCLI add UF varchar(2) default 'SP'");
}

TEST(Mascara, AReportKeepsTheFieldsThatTheProgramKnows) {
    const char* relatorio = R"({"alias": "LOJA", "estranho": "Zeferina", "segundos": 2.5,
        "avisos": [{"tipo": "versoes", "texto": "254 versões de TCLI"}], "naoRodaram": ["Valores padrão"],
        "erros": [{"mensagem": "Zeferina não existe", "codigo": 335544347, "comando": "drop table TCLI", "resto": "Z"}],
        "tabelas": [{"tabela": "TCLI", "comandos": [{"texto": "update TCLI set UF = 'Z1'", "erro": null}]}]})";
    EXPECT_EQ(TJson::parse(RelatorioSemValores(relatorio, TMascara())), TJson::parse(R"({"alias": "LOJA",
        "segundos": 2.5, "avisos": [{"tipo": "versoes", "texto": "254 versões de TCLI"}],
        "naoRodaram": ["Valores padrão"],
        "erros": [{"mensagem": "… não existe", "codigo": 335544347, "comando": "drop table TCLI"}],
        "tabelas": [{"tabela": "…", "comandos": [{"texto": "update … set …'", "erro": null}]}]})"));
}

class TLojaComSuporte : public TProgramaInstalado {
  public:
    using TPartes = std::map<std::string, std::string>;

    /// The members of the bundle that the program makes with these arguments and code.
    TPartes Pacote(int codigo, std::vector<std::string> mais = {}, const std::string& alias = "LOJA") const {
        fs::remove(*this / "s.zip");
        mais.insert(mais.begin(), {"--suporte", alias, "s.zip"});
        const auto saida = Roda(mais);
        EXPECT_EQ(saida.codigo, codigo) << saida.saida << saida.erros;
        return Abre(saida);
    }

    TPartes Abre(const TSaida& saida) const {
        const TPastaTemporaria pasta;
        TPartes partes;
        EXPECT_TRUE(ExtraiPacote(*this / "s.zip", pasta.Caminho(), nullptr).empty());
        for (const auto& entrada : fs::directory_iterator(pasta.Caminho())) {
            const std::string nome = entrada.path().filename().string();
            partes[nome] = LeArquivo(entrada.path());
            EXPECT_TRUE(nome == "LEIAME.txt" || saida.Diz("  " + nome + " ")) << nome << " is not listed";
        }
        return partes;
    }

    void Executa(const std::vector<std::string>& comandos) const {
        const auto banco = Banco();
        for (const auto& comando : comandos) banco->ExecuteDirect(comando);
    }

    /// An alias of a database that is not there.
    void ComAliasVazio() const {
        Escreve("WKD.ini",
                Arquivo("WKD.ini") + Troca(Troca(Arquivo("WKD.ini"), "[LOJA]", "[VAZIO]"), "loja.fdb", "vazio.fdb"));
    }
};

/// Rows that make a run report errors with their values, in every way in which a text may take them.
void PlantaSegredos(const TLojaComSuporte& loja) {
    NoPacote(loja, "SAtrib.WKD", kHistorico, "NOME=\"HISTORICO\" TIPO=\"ftInteger\" TAMANHO=\"0\"");
    loja.Executa({
        "update TCONTAS_REC set HISTORICO = 'Zqxv ' || PARCELA, DOCUMENTO = 'ZQXV' || DOCUMENTO",
        "update TCLI_CON set NOME = 'Zqxv & Filhos', FANTASIA = '\"zqxv\" Query: alter table', LIMITE_CREDITO = "
        "77889911",
        "update TFORNECE set CNPJ = 'ZQXV', NOME = 'zqxv', OBS = 'zqxv'",
        "update TVENDA set COD_CLIENTE = 'zqxv', TOTAL = 77889911",
        "insert into TUNIDADE values ('ZQXV', 'zqxv')",
        "insert into CSENHA (CODIGO, NOME_COMPLETO, EMAIL, FLAG1) values (77889911, 'zqxv', 'zqxv', 0)",
        "insert into TRELATORIOS (NOME, DESCRICAO, ARQUIVO) values ('zqxv', 'zqxv', 'zqxv')",
        "insert into TINI values ('Cliente', 'Nome', 'zqxv')",
        "insert into TINI values ('HBN4', 'Licenca', 'zqxv')",
        "insert into TINI values ('AtualizaQuery', 'zqxv', 'SIM')",
        "create table TNATU_OP (TIPO varchar(1), INFORMAR_PLANO_CONTAS_SAI integer, NOME varchar(40))",
        "insert into TNATU_OP values ('S', 0, 'zqxv de Tal')",
        "create exception E_NATU 'recusada'",
        "create trigger G_NATU for TNATU_OP before update as begin exception E_NATU 'a natureza ' || old.NOME || ' é'; "
        "end",
    });
    loja.Escreve("WKD.ini", loja.Arquivo("WKD.ini") + "Password=zqxv\r\nSenhaDoEmail=zqxv\r\nDriver=X;PWD=y\r\n");
}

TEST(Suporte, NoMemberHasAnyCustomersValue) {
    const TLojaComSuporte loja;
    PlantaSegredos(loja);
    const auto tem = [](const std::string& texto) {
        return Minusculas(texto).find("zqxv") != std::string::npos || texto.find("77889911") != std::string::npos;
    };
    ASSERT_TRUE(tem(loja.Roda({"--plano", "LOJA", "pacote.zip"}).saida)) << "or nothing is shown here";
    for (const auto& [nome, bytes] : loja.Pacote(0, {"--pacote", "pacote.zip"})) EXPECT_FALSE(tem(bytes)) << nome;
    ASSERT_EQ(loja.Roda({"LOJA;", "pacote.zip", "--completo"}).codigo, 1);
    const std::string relatorio = loja.Arquivo("AtualizaWKD.relatorio.json");
    ASSERT_TRUE(tem(relatorio) && tem(loja.Arquivo("AtualizaWKD.log"))) << "or nothing is shown here";

    loja.Escreve("AtualizaWKD.log", "\r\nAção: zqxv\r\nTabela: zqxv\r\n[22/11/2026 10:11:12] zqxv\r\n-at zqxv\r\n" +
                                        loja.Arquivo("AtualizaWKD.log"));
    const auto partes = loja.Pacote(0);
    for (const char* nome :
         {"LEIAME.txt", "versoes.json", "configuracao.json", "esquema.json", "banco.fbk", "dicionario-SATRIB.xml",
          "dicionario-TINI.xml", "confere.json", "plano.json", "plano.txt", "historico.json", "log.txt"})
        EXPECT_TRUE(partes.contains(nome)) << nome;
    EXPECT_EQ(partes.size(), 16u);  // and SARQUIVO, SINDSEC, SINDSECA and a report
    for (const auto& [nome, bytes] : partes) EXPECT_FALSE(tem(bytes)) << nome << "\n" << bytes;
    const std::string numero{'\xB7', '\x7C', '\xA4', '\x04'};  // 77889911 as a row has it
    EXPECT_EQ(partes.at("banco.fbk").find(numero), std::string::npos);

    const auto& log = partes.at("log.txt");
    EXPECT_TRUE(log.find("[22/11/2026 10:11:12] …") != std::string::npos) << log;
    EXPECT_TRUE(log.find("unique index \"TFORNECE_CNPJ\"\nProblematic key value is (\"CNPJ\" = '…')") !=
                std::string::npos)
        << log;
    const auto chaves = TJson::parse(partes.at("configuracao.json")).at("chaves");
    const auto capacidades = TJson::parse(partes.at("versoes.json")).at("capacidades");
    EXPECT_EQ(capacidades.at("pagina"), 8192);
    EXPECT_TRUE(capacidades.at("recursos").at("tipo BOOLEAN").get<bool>());
    EXPECT_EQ(chaves.at("User_Name"), "SYSDBA");
    EXPECT_FALSE(chaves.contains("SenhaDoEmail") || chaves.contains("Password"));
    EXPECT_EQ(chaves.at("Driver").get<std::string>().find("PWD"), std::string::npos);
}

TEST(Suporte, AReportKeepsWhatTellsOfTheErrors) {
    const TLojaComSuporte loja;
    PlantaSegredos(loja);
    ASSERT_EQ(loja.Roda({"LOJA;", "pacote.zip", "--completo"}).codigo, 1);
    const auto inteiro = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    TJson guardado;
    for (const auto& [nome, bytes] : loja.Pacote(0))
        if (nome.starts_with("relatorio-")) guardado = TJson::parse(bytes);
    for (const char* campo : {"alias", "veredicto", "inicio", "pacote"})
        EXPECT_EQ(guardado.at(campo), inteiro.at(campo));
    ASSERT_EQ(guardado.at("erros").size(), inteiro.at("erros").size());
    for (std::size_t i = 0; i < inteiro.at("erros").size(); ++i)
        for (const char* campo : {"tipo", "codigo", "sqlstate", "tabela", "providencia"})
            EXPECT_EQ(guardado.at("erros")[i].at(campo), inteiro.at("erros")[i].at(campo));
    ASSERT_EQ(guardado.at("tabelas").size(), inteiro.at("tabelas").size());
    for (std::size_t i = 0; i < inteiro.at("tabelas").size(); ++i)
        for (const char* campo : {"tabela", "acao", "desfecho", "motivo", "registrosAntes"})
            EXPECT_EQ(guardado.at("tabelas")[i].at(campo), inteiro.at("tabelas")[i].at(campo));
}

/// A plan without what depends on rows, on the place, and on the file as a whole.
TJson Decisoes(const TLojaComSuporte& loja, const std::string& alias) {
    auto plano = TJson::parse(loja.Roda({"--plano", alias, "pacote.zip", "--json"}).saida);
    for (const char* campo : {"alias", "banco", "copias", "avisos", "achados"}) plano.erase(campo);
    auto& achados = plano.at("achadosAntes");
    for (auto achado = achados.begin(); achado != achados.end();)
        achado = achado->at("coluna") == "" ? achados.erase(achado) : achado + 1;
    for (auto& tabela : plano.at("tabelas"))
        for (const char* campo : {"registros", "bytes", "segundos"}) tabela.erase(campo);
    return plano;
}

TJson Desvios(const TLojaComSuporte& loja, const std::string& alias) {
    return TJson::parse(loja.Roda({"--confere", alias, "--json"}).saida).at("desvios");
}

/// Without parentheses, of which an expression may have any number around it.
std::string Tabelas(const TLojaComSuporte::TPartes& partes) {
    std::string tabelas = TJson::parse(partes.at("esquema.json")).at("tabelas").dump(1);
    std::erase_if(tabelas, [](char c) { return c == '(' || c == ')'; });
    return tabelas;
}

/// What a database has that its dictionary does not know.
void Enfeita(const TLojaComSuporte& loja) {
    loja.Executa({
        "create domain D_NOME as varchar(30) character set UTF8 default 'ninguém' check (value <> '')",
        "alter table TCLI_CON add APELIDO D_NOME",
        "alter table TCLI_CON add INTEIRO computed by (CODIGO || NOME)",
        "alter table TVENDA add BYTES char(16) character set OCTETS",
        "create descending index D_VENDA on TVENDA (DATA_VENDA)",
        "create index X_VENDA on TVENDA computed by (upper(COD_CLIENTE))",
        "create generator G_VENDA",
        "alter table TVENDA add constraint UN_VENDA unique (NUMERO, TOTAL)",
        "alter table TPRODUTO add constraint CK_PRECO check (PRECO_VENDA >= 0)",
        "create table TEXTRA (CASA integer generated by default as identity, \"a b\" date)",
        "alter table TPRODUTO add SIGLA varchar(5) collate WIN_PTBR",
        "alter index TVENDA_CLIENTE inactive",
        "comment on table TVENDA is 'as vendas d''água'",
        "alter table TVENDA_ITENS add constraint FK_ITENS foreign key (NUMERO) references TVENDA (NUMERO)",
        "insert into TINI values ('AtualizaTabela', 'TVENDEDOR', 'SIM')",
        "insert into TINI values ('AtualizaQuery', 'Up401I_9', 'SIM')",
        "update SARQUIVO set VERSAO = -1 where NOME_ARQUIVO = 'TCIDADE'",
        "update SATRIB set DISCRIMINACAO = 'Ação \"<&>\"' where NOME = 'NOME'",
    });
    loja.ComAliasVazio();
}

TEST(Suporte, TheReproducedDatabaseIsEmptyAndHasTheSamePlan) {
    const TLojaComSuporte loja;
    Enfeita(loja);
    loja.Executa({"create view V_VENDA as select NUMERO from TVENDA",
                  "create trigger G_CLI for TCLI_CON before insert as begin new.NOME = upper(new.NOME); end"});
    const auto partes = loja.Pacote(0, {"--pacote", "pacote.zip"});
    const auto saida = loja.Roda({"--reproduz", "s.zip", "VAZIO"});
    ASSERT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_TRUE(saida.Diz("Banco vazio feito: "));

    const TJson plano = Decisoes(loja, "LOJA");
    EXPECT_EQ(plano, Decisoes(loja, "VAZIO"));
    bool dependentes = false;
    for (const auto& tabela : plano.at("tabelas"))
        for (const auto& achado : tabela.at("achados")) dependentes |= achado.at("tipo") == "dependentes";
    EXPECT_TRUE(dependentes) << "what the view brings is compared, too";
    EXPECT_EQ(Desvios(loja, "LOJA"), Desvios(loja, "VAZIO"));
    EXPECT_EQ(Tabelas(partes), Tabelas(loja.Pacote(0, {}, "VAZIO")));

    EXPECT_EQ(loja.Roda({"VAZIO;", "pacote.zip"}).codigo, loja.Atualiza().codigo) << "the package runs against it";
}

TEST(Suporte, WithoutConnectionThereIsWhatThereIs) {
    const TLojaComSuporte loja;
    ASSERT_EQ(loja.Atualiza().codigo, 0);
    fs::rename(loja / "loja.fdb", loja / "outro.fdb");
    const auto partes = loja.Pacote(1);
    EXPECT_TRUE(partes.contains("log.txt") && partes.contains("configuracao.json") && partes.contains("versoes.json"));
    EXPECT_EQ(partes.size(), 6u);  // and the history with its report
    const auto& leiame = partes.at("LEIAME.txt");
    EXPECT_NE(leiame.find("O que falta:\n  - banco: banco-inexistente, código 335544344, SQLSTATE 08001: "),
              std::string::npos)
        << leiame;
    loja.Escreve("AtualizaWKD.historico/2026-01-01_000000_LOJA.json", "{ isto não é json");
    EXPECT_EQ(loja.Pacote(1).size(), 6u) << "one that cannot be read keeps no other out";
    EXPECT_EQ(loja.Roda({"--suporte", "NENHUM", "t.zip"}).codigo, 3);
    EXPECT_FALSE(fs::exists(loja / "t.zip"));
}

TEST(Suporte, NothingIsOverwrittenAndTheGroupOfTheFolderMayRead) {
    const TLojaComSuporte loja;
    ASSERT_EQ(chmod((loja / ".").c_str(), 02775), 0);
    loja.Escreve("meu.zip", "meu");
    const auto saida = loja.Roda({"--suporte", "LOJA", "meu.zip"});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("Já existe ")) << saida.erros;
    EXPECT_EQ(loja.Arquivo("meu.zip"), "meu");
    EXPECT_EQ(loja.Roda({"--suporte", "LOJA", "nenhuma/x.zip"}).codigo, 2);

    ASSERT_EQ(loja.Roda({"--suporte", "LOJA"}).codigo, 0);
    int quantos = 0;
    for (const auto& entrada : fs::directory_iterator(loja / ".")) {
        if (!entrada.path().filename().string().starts_with("Suporte_LOJA_")) continue;
        struct stat estado {};
        ASSERT_EQ(stat(entrada.path().c_str(), &estado), 0);
        EXPECT_EQ(estado.st_mode & 07777, 0640u);
        ++quantos;
    }
    EXPECT_EQ(quantos, 1);
    EXPECT_TRUE(fs::is_empty(loja / "tmp"));
}

TEST(Suporte, ASourceThatSpeaksOfAPasswordStaysAndTheTablesGo) {
    const TLojaComSuporte loja;
    Enfeita(loja);
    loja.Executa(
        {"create procedure P_FORA as begin execute statement 'x' on external 'y' as user 'u' password 'zqxv'; end"});
    const auto partes = loja.Pacote(1);
    EXPECT_FALSE(partes.contains("banco.fbk"));
    EXPECT_NE(partes.at("LEIAME.txt").find("P_FORA"), std::string::npos) << partes.at("LEIAME.txt");
    for (const auto& [nome, bytes] : partes) EXPECT_EQ(bytes.find("zqxv"), std::string::npos) << nome;
    const auto saida = loja.Roda({"--reproduz", "s.zip", "VAZIO"});
    EXPECT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_TRUE(saida.Diz("só tabelas, chaves, índices e restrições")) << saida.erros;
    EXPECT_EQ(Decisoes(loja, "LOJA"), Decisoes(loja, "VAZIO"));
    EXPECT_EQ(Desvios(loja, "LOJA"), Desvios(loja, "VAZIO"));
    EXPECT_EQ(Tabelas(partes), Tabelas(loja.Pacote(0, {}, "VAZIO")));
}

TEST(Suporte, WhatIsNoBundleMakesNoDatabase) {
    const TLojaComSuporte loja;
    loja.ComAliasVazio();
    loja.Pacote(0);
    const std::string inteiro = loja.Arquivo("s.zip");
    const auto recusa = [&](const char* arquivo, const char* alias, int codigo, const char* diz) {
        const auto saida = loja.Roda({"--reproduz", arquivo, alias});
        EXPECT_EQ(saida.codigo, codigo) << diz;
        EXPECT_TRUE(saida.Diz(diz)) << saida.erros;
        EXPECT_FALSE(fs::exists(loja / "vazio.fdb")) << diz;
        EXPECT_FALSE(fs::exists(loja / "fora.txt") || fs::exists(loja / "tmp/fora.txt")) << diz;
    };
    recusa("s.zip", "LOJA", 2, "Já existe o banco");
    recusa("s.zip", "NENHUM", 3, "não existe no arquivo");
    recusa("nada.zip", "VAZIO", 2, "não existe");
    recusa("pacote.zip", "VAZIO", 2, "não é um pacote de suporte");
    loja.Escreve("cortado.zip", inteiro.substr(0, inteiro.size() / 2));
    recusa("cortado.zip", "VAZIO", 2, "Não é um pacote de suporte que se possa usar");
    const TPastaTemporaria pasta;
    EscreveArquivo(pasta / "xx_fora.txt", "fora");
    CompactaZip({pasta / "xx_fora.txt"}, loja / "fuga.zip");
    loja.Escreve("fuga.zip", Troca(loja.Arquivo("fuga.zip"), "xx_fora", "../fora"));
    recusa("fuga.zip", "VAZIO", 2, "Não é um pacote de suporte que se possa usar");
    loja.Escreve("torto.zip", inteiro);
    {
        const TPastaTemporaria partes;
        ASSERT_TRUE(ExtraiPacote(loja / "s.zip", partes.Caminho(), nullptr).empty());
        EscreveArquivo(partes / "dicionario-SATRIB.xml", "<DATAPACKET");
        std::vector<fs::path> arquivos;
        for (const auto& entrada : fs::directory_iterator(partes.Caminho())) arquivos.push_back(entrada.path());
        CompactaZip(arquivos, loja / "torto.zip");
    }
    recusa("torto.zip", "VAZIO", 2, "dicionario-SATRIB.xml");
}

}  // namespace
}  // namespace wkd
