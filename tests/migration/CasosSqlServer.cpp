#include "CasosSqlServer.h"

#include <map>

#include "PastaTemporaria.h"
#include "package/Pacote.h"
#include "packet/DataPacket.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTabelas[] = {
    "create table TLONGA (CODIGO int not null primary key, TEXTO nvarchar(2500) default 'x')",
    "create table TVIRABLOB (CODIGO int not null primary key, TEXTO nvarchar(30))",
    "create table TPRESA (CODIGO int not null primary key, B nvarchar(5) default 'b', C int default 1)",
    "create index TPRESA_B on TPRESA (B)",
    "create table TSEMCHAVE (TEXTO nvarchar(20), VALOR float, QUANTO smallint)",
    "create table TCHAVE (CODIGO nvarchar(10) not null, QUANTO nvarchar(10), FOTO image, \"ORDER\" int, constraint "
    "PK_TCHAVE primary "
    "key (CODIGO))",
    "create table TMEIO (CODIGO int not null primary key, NOME nvarchar(20))",
    "create table BTMEIO (CODIGO int not null, NOME nvarchar(20))",
    "create table TNULA (CODIGO int, NOME nvarchar(10))",
    "create table TSAIDA_FATURADO (CODIGO int not null, COD_INTERNO nvarchar(20) not null, constraint "
    "PK_TSAIDA_FATURADO primary key (CODIGO, COD_INTERNO))",
    "create index TSAIDA_A_MAO on TSAIDA_FATURADO (COD_INTERNO)",
    "create table TSAIDA_FATURADO_INDU (CODIGO int not null, COD_INTERNO nvarchar(20) not null)",
    "create table TSAIDA_FATURADO_INDU_PA (CODIGO int not null, COD_INTERNO nvarchar(20) not null)",
    // of the corrections
    "create table TMAQUINA_ANEXOS (COD_EMPRESA nvarchar(3) not null, COD_MAQUINA nvarchar(10) not null, CODIGO int not "
    "null, constraint PK_TMAQUINA_ANEXOS primary key (COD_EMPRESA, COD_MAQUINA))",
    "create table TORCAMENTO_ITENS (CODIGO int)",
    "create table TOS_AUX (CODIGO int)",
    "create table TORCAMENTO (CODIGO int, COD_EMPRESA nvarchar(3), N_ORCAMENTO int)",
    "create table TCOM_AUX (COD_EMPRESA nvarchar(3), REALCIONA_AUTO int, COD_PRODUTO nvarchar(15), AUT_ int, "
    "QTDE_ESTOQUE float, CODIGO_NA_FABRICA nvarchar(20))",
    "create table TCOM_AUX_OS (COD_EMPRESA nvarchar(3), COD_COMPRA int, COD_PRODUTO nvarchar(15), COD_COM_AUX int, "
    "QTDE float)",
    "create table TCRTLCHQ (COD_EMPRESA nvarchar(3) not null, COD_RELACIONA int not null, AUT_ int not null, TIPO "
    "nvarchar(1), constraint PK_TCRTLCHQ primary key (COD_EMPRESA, COD_RELACIONA, AUT_))",
    "create index TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO)",
    "create table TCHQCANC (COD_EMPRESA nvarchar(3) not null, COD_RELACIONA int not null, AUT_ int not null, "
    "constraint PK_TCHQCANC primary key (COD_EMPRESA, COD_RELACIONA, AUT_))",
    "create table TRETORNO_INSTRU_RASTREIO (QTDE_SAIDA int)",
    "create table TRETORNO_FERRA_RASTREIO (QTDE_SAIDA int)",
    "alter table CSENHA add USAR_PRG_EMAIL_PADRAO int",
    "create table TSOL_MAX_OS (COD_OS int, COD_EMPRESA nvarchar(3), NUMERO_ORCAMENTO int, MODULO_ORIGEM nvarchar(3))",
    "create table TNATU_OP (INFORMAR_PLANO_CONTAS_SAI int, TIPO nvarchar(1))",
    "create table TSAIDA_E (COD_FUNC_RETIROU nvarchar(10), IDENTIFICACAO_FUNCIONARIO nvarchar(20), N_OS nvarchar(10), "
    "SAIDA_PRODUTO_ACABADO int)",
    "create table TFUNCION (CODIGO nvarchar(10), COD_EMPRESA nvarchar(3), INDENTIFICACAO nvarchar(20))",
    "create table TCFG_SAIDA (COD_EMPRESA nvarchar(3), COD_FUNCION_SAIDA_AUTO nvarchar(10), IDENT_FUNCION_SAIDA_AUTO "
    "nvarchar(20))",
    "create table TCFG_SER (COD_EMPRESA nvarchar(3), COD_FUNCION_SAIDA_AUTO_PA nvarchar(10), "
    "IDENT_FUNCION_SAIDA_AUTO nvarchar(20))",
};

constexpr const char* kLinhas[] = {
    "insert into TLONGA (CODIGO, TEXTO) values (1, 'longo')",
    "insert into TVIRABLOB values (1, 'texto')",
    "insert into TPRESA values (1, 'b', 2)",
    "insert into TSEMCHAVE values ('sem chave', 1.5, 7)",
    "insert into TCHAVE (CODIGO, QUANTO, \"ORDER\") values ('A', '42', 3)",
    "insert into TMEIO values (1, 'um')",
    "insert into BTMEIO values (1, 'um')",
    "insert into BTMEIO values (2, 'dois')",
    "insert into TNULA values (7, 'sete')",
    "insert into TSAIDA_FATURADO values (1, 'interno')",
    "insert into TINI (SESSAO, CHAVE, VALOR) values ('ReconstroiTabela', 'TMEIO', 'RESTAURANDO')",
    "insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', 'TSOBRA', 1)",
    "insert into SATRIB_USER (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, COD_PLUGIN) values ('TCLI_CON', 90, 'U_APELIDO',"
    " 'ftString', 20, 'P1')",
};

/// A column as the stored dictionary and the package have it; a type that is null: not there.
struct TColunaDosCasos {
    const char *tabela, *nome, *tipo;
    int tamanho;
    const char* novoTipo;
    int novoTamanho, chave;
    const char* padrao = "";
};

constexpr TColunaDosCasos kColunas[] = {
    {"TLONGA", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TLONGA", "TEXTO", "ftString", 2500, "ftString", 1988, 0},
    {"TVIRABLOB", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TVIRABLOB", "TEXTO", "ftString", 30, "ftBlob", 0, 0},
    {"TPRESA", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TPRESA", "B", "ftString", 5, "ftString", 9, 0, "b"},
    {"TPRESA", "C", "ftInteger", 0, "ftFloat", 0, 0},
    {"TSEMCHAVE", "TEXTO", "ftString", 20, "ftString", 20, 0},
    {"TSEMCHAVE", "VALOR", "ftFloat", 0, "ftFloat", 0, 0},
    {"TSEMCHAVE", "QUANTO", "ftSmallint", 0, "ftInteger", 0, 0},
    {"TCHAVE", "CODIGO", "ftString", 10, "ftString", 12, 1},
    {"TCHAVE", "QUANTO", "ftString", 10, "ftInteger", 0, 0},
    {"TCHAVE", "FOTO", "ftBlob", 0, "ftBlob", 0, 0},
    {"TMEIO", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TMEIO", "NOME", "ftString", 20, "ftString", 20, 0},
    {"TNULA", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TNULA", "NOME", "ftString", 10, "ftString", 10, 0},
    {"TSAIDA_FATURADO", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TSAIDA_FATURADO", "COD_INTERNO", "ftString", 20, "ftString", 20, 1},
    {"TSAIDA_FATURADO_INDU", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
    {"TSAIDA_FATURADO_INDU_PA", "CODIGO", "ftInteger", 0, "ftInteger", 0, 1},
};

/// Appends a row of the values named; the other fields have none.
void Acrescenta(TDataPacket& pacote, const std::map<std::string, TValor>& valores) {
    TLinha linha;
    for (const auto& campo : pacote.campos) {
        const auto achado = valores.find(Maiusculas(campo.nome));
        linha.push_back(achado == valores.end() ? TValor() : achado->second);
    }
    pacote.linhas.push_back(std::move(linha));
}

}  // namespace

void AcrescentaCasos(TDataModulo& dm) {
    TConnection& conexao = dm.SQLConnection1;
    for (const char* comando : kTabelas) conexao.ExecuteDirect(comando);
    for (const char* comando : kLinhas) conexao.ExecuteDirect(comando);
    std::string anterior;
    for (const auto& [tabela, nome, tipo, tamanho, novoTipo, novoTamanho, chave, padrao] : kColunas) {
        if (tabela != anterior)
            conexao.ExecuteDirect("insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', " +
                                  Aspas(tabela) + ", " + (anterior = tabela, anterior == "TMEIO" ? "-1" : "1") + ")");
        conexao.ExecuteDirect(
            "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, VALOR_PADRAO) values (" +
            Junta({Aspas(tabela), "0", Aspas(nome), Aspas(tipo), std::to_string(tamanho), std::to_string(chave),
                   Aspas(padrao)},
                  ", ") +
            ")");
    }
    dm.AtualizaListaDeTabelas();
}

void EmpacotaCasos(const fs::path& pacote) {
    const TPastaTemporaria pasta;
    for (const auto& entrada : fs::directory_iterator(fs::path(WKD_EXEMPLOS) / "pacote"))
        fs::copy_file(entrada.path(), pasta / entrada.path().filename());
    auto tabelas = LePacote(pasta / "SARQUIVO.WKD"), colunas = LePacote(pasta / "SAtrib.WKD");
    std::string anterior;
    int sequencia = 0;
    for (const auto& c : kColunas) {
        if (c.tabela != anterior)
            Acrescenta(tabelas, {{"COD_MODULO", "001"}, {"NOME_ARQUIVO", anterior = c.tabela}, {"VERSAO", 2}});
        Acrescenta(colunas, {{"ARQUIVO", c.tabela},
                             {"SEQUENCIA", ++sequencia},
                             {"NOME", c.nome},
                             {"TIPO", c.novoTipo},
                             {"TAMANHO", c.novoTamanho},
                             {"CHAVE_DE_PESQUISA", c.chave},
                             {"VALOR_PADRAO", c.padrao}});
    }
    GravaPacote(tabelas, pasta / "SARQUIVO.WKD", TFormaPacote::Xml);
    GravaPacote(colunas, pasta / "SAtrib.WKD", TFormaPacote::Xml);
    std::vector<fs::path> arquivos;
    for (const auto& entrada : fs::directory_iterator(pasta.Caminho())) arquivos.push_back(entrada.path());
    CompactaZip(arquivos, pacote);
}

}  // namespace wkd
