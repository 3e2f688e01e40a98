#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "Arquivos.h"
#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "PastaTemporaria.h"
#include "Retrato.h"
#include "firebird/ConexaoFirebird.h"
#include "package/Pacote.h"
#include "packet/DataPacket.h"

namespace wkd {

struct TColuna {
    const char *tabela, *nome, *tipo;
    int tamanho, chave;
};

/// The package: TALT is altered in place, TREC rebuilt (its key grows), TNOVA created. U_COR is the customer's: the
/// pass over those columns creates its table when it is missing.
inline constexpr TColuna kNovas[] = {
    {"TALT", "CODIGO", "ftInteger", 0, 1},  {"TALT", "NOME", "ftString", 40, 0},
    {"TALT", "VALOR", "ftFloat", 0, 0},     {"TALT", "EXTRA", "ftString", 10, 0},
    {"TREC", "CODIGO", "ftString", 12, 1},  {"TREC", "NOME", "ftString", 30, 0},
    {"TREC", "QUANDO", "ftDateTime", 0, 0}, {"TREC", "FOTO", "ftBlob", 0, 0},
    {"TNOVA", "CODIGO", "ftInteger", 0, 1}, {"TNOVA", "NOME", "ftString", 30, 0},
};
inline constexpr TColuna kVelhas[] = {
    {"TALT", "CODIGO", "ftInteger", 0, 1}, {"TALT", "NOME", "ftString", 20, 0},  {"TALT", "VALOR", "ftInteger", 0, 0},
    {"TREC", "CODIGO", "ftString", 10, 1}, {"TREC", "NOME", "ftString", 30, 0},  {"TREC", "QUANDO", "ftDateTime", 0, 0},
    {"TREC", "FOTO", "ftBlob", 0, 0},      {"TREC", "U_COR", "ftString", 10, 0},
};

inline constexpr const char* kBanco[] = {
    "create table SARQUIVO (COD_MODULO varchar(3) not null, NOME_ARQUIVO varchar(50) not null, ULT_MODIFICACAO "
    "timestamp,"
    " OBS blob, NOME_TABLE varchar(40), VERSAO integer, primary key (COD_MODULO, NOME_ARQUIVO))",
    "create table SATRIB (ARQUIVO varchar(50) not null, SEQUENCIA integer, NOME varchar(25) not null, TIPO varchar(25),"
    " TAMANHO integer, CHAVE_DE_PESQUISA integer, MASCARA varchar(40), COMENTARIO blob, DISCRIMINACAO varchar(40),"
    " VALOR_PADRAO varchar(20), SOMENTE_LEITURA integer, VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer,"
    " INCREMENTO integer, LOOKUP_ARQUIVO varchar(50), LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100),"
    " LOOKUP_CP_CHAVE varchar(25), LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250),"
    " primary key (ARQUIVO, NOME))",
    "create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer)",
    "create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), SEQUENCIA integer, CAMPO varchar(25))",
    "create table SLOOKUP (ARQUIVO varchar(50), CAMPO varchar(25), CAMPOPAI varchar(25), CAMPOFILHO varchar(25))",
    "create table SPESQ (ARQUIVO varchar(50), NOMEPESQUISA varchar(50))",
    "create table SPESQAUX (ARQUIVO varchar(50), NOME varchar(50))",
    "create table SADMMOD (COD_MODULO varchar(3))",
    "create table TINI (SESSAO varchar(50), CHAVE varchar(100), VALOR varchar(250))",
    "create table TRBTABLE (TABLENAME varchar(60), TABLEALIAS varchar(100))",
    "create table TRBFIELD (TABLENAME varchar(60), FIELDNAME varchar(60), FIELDALIAS varchar(60), DATATYPE "
    "varchar(100),"
    " SELECTABLE char(1), SEARCHABLE char(1), SORTABLE char(1), AUTOSEARCH char(1), MANDATORY char(1))",
    "create table CSENHA (CODIGO integer, FLAG1 integer)",
    "create table TALT (CODIGO integer not null, NOME varchar(20), VALOR integer, constraint PK_TALT primary key "
    "(CODIGO))",
    "create table TREC (CODIGO varchar(10) not null, NOME varchar(30), QUANDO timestamp, FOTO blob,"
    " U_COR varchar(10), constraint PK_TREC primary key (CODIGO))",
    "create table SATRIB_USER (ARQUIVO varchar(50), SEQUENCIA integer, NOME varchar(25), TIPO varchar(25),"
    " TAMANHO integer, CHAVE_DE_PESQUISA integer, VALOR_PADRAO varchar(20), CALCULO varchar(250))",
    "insert into SATRIB_USER values ('TREC', 9, 'U_COR', 'ftString', 10, 0, null, null)",
    "create index TALT_NOME on TALT (NOME)",
    "create index TREC_NOME on TREC (NOME)",
    "insert into SINDSEC values ('TALT', 'TALT_NOME', 0)",
    "insert into SINDSECA values ('TALT', 'TALT_NOME', 1, 'NOME')",
    "insert into SINDSEC values ('TREC', 'TREC_NOME', 0)",
    "insert into SINDSECA values ('TREC', 'TREC_NOME', 1, 'NOME')",
    "insert into SINDSEC values ('TNOVA', 'TNOVA_NOME', 1)",
    "insert into SINDSECA values ('TNOVA', 'TNOVA_NOME', 1, 'NOME')",
    "insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', 'TALT', 1)",
    "insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', 'TREC', 1)",
    "execute block as declare i integer = 0; begin while (i < 30) do begin"
    " insert into TALT values (:i, 'Nome ' || :i, :i * 7);"
    " insert into TREC values ('C' || :i, 'Registro ' || :i, dateadd(:i minute to timestamp '2024-01-01 00:00:00'),"
    " 'conteúdo ' || :i, 'cor ' || :i); i = i + 1; end end"};

/// The stored dictionary's rows of these columns.
inline void GravaColunas(TConnection& banco, std::span<const TColuna> colunas) {
    int sequencia = 0;
    for (const TColuna& c : colunas)
        banco.ExecuteDirect(
            "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values ('" +
            std::string(c.tabela) + "', " + std::to_string(sequencia++) + ", '" + c.nome + "', '" + c.tipo + "', " +
            std::to_string(c.tamanho) + ", " + std::to_string(c.chave) + ")");
}

/// Writes "pacote.zip" with the dictionary of these columns, each table in that version and with the description, if
/// any.
inline void Empacota(const std::filesystem::path& pasta, std::span<const TColuna> novas, const char* descricao = "",
                     int versao = 2) {
    TDataPacket tabelas, colunas;
    tabelas.campos = {CampoDePacote("COD_MODULO", TTipoDado::Texto, 3),
                      CampoDePacote("NOME_ARQUIVO", TTipoDado::Texto, 50), CampoDePacote("VERSAO", TTipoDado::Inteiro)};
    if (*descricao) tabelas.campos.push_back(CampoDePacote("DESCRICAO_TABELA", TTipoDado::Texto, 50));
    colunas.campos = {
        CampoDePacote("ARQUIVO", TTipoDado::Texto, 50), CampoDePacote("SEQUENCIA", TTipoDado::Inteiro),
        CampoDePacote("NOME", TTipoDado::Texto, 25),    CampoDePacote("TIPO", TTipoDado::Texto, 25),
        CampoDePacote("TAMANHO", TTipoDado::Inteiro),   CampoDePacote("CHAVE_DE_PESQUISA", TTipoDado::Inteiro)};
    std::string_view tabela;
    int sequencia = 0;
    for (const TColuna& c : novas) {
        if (c.tabela != tabela) {
            tabelas.linhas.push_back({"001", c.tabela, versao});
            if (*descricao) tabelas.linhas.back().push_back(descricao);
        }
        tabela = c.tabela;
        colunas.linhas.push_back({c.tabela, sequencia++, c.nome, c.tipo, c.tamanho, c.chave});
    }
    GravaPacote(tabelas, pasta / "SARQUIVO.WKD", TFormaPacote::Xml);
    GravaPacote(colunas, pasta / "SATRIB.WKD", TFormaPacote::Binario);
    CompactaZip({pasta / "SARQUIVO.WKD", pasta / "SATRIB.WKD"}, pasta / "pacote.zip");
}

/// A folder with database, settings file and package; copies of it are cut.
class TMolde {
  public:
    TMolde() {
        TParametrosConexao parametros = ParametrosFirebird(pasta_ / "loja.fdb");
        parametros.Adiciona("CharacterSet", "WIN1252");
        parametros.Adiciona("ForcedWrites", "False");
        CriaBancoFirebird(parametros, 4096);
        const auto banco = CriaConexaoFirebird(parametros);
        banco->Open();
        for (const char* comando : kBanco) banco->ExecuteDirect(comando);
        GravaColunas(*banco, kVelhas);
        banco->Close();
        Empacota(pasta_.Caminho(), kNovas);
    }

    void CopiaPara(const std::filesystem::path& destino) const {
        std::filesystem::remove_all(destino);
        std::filesystem::create_directories(destino);
        std::filesystem::copy_file(pasta_ / "loja.fdb", destino / "loja.fdb");
        std::filesystem::copy_file(pasta_ / "pacote.zip", destino / "pacote.zip");
        EscreveArquivo(destino / "WKD.ini", SecaoDoAlias("LOJA", destino, "loja.fdb"));
    }

  protected:
    TPastaTemporaria pasta_;
};

/// Runs the update in its own process: exit code of tests/quedas/Corrida.cpp, -1 when it crashed. `antes` goes before
/// it in the shell.
inline int Corre(const std::filesystem::path& pasta, int ultimo, const char* comErro = "",
                 const std::string& antes = "") {
    EscreveArquivo(pasta / "naocria.wkd", "");
    const int estado = std::system(("cd '" + pasta.string() + "' && " + antes + " '" WKD_CORRIDA "' . " +
                                    std::to_string(ultimo) + " " + comErro + " >saida.txt 2>>erros.txt")
                                       .c_str());
    return WIFEXITED(estado) ? WEXITSTATUS(estado) : -1;
}

inline std::string RetratoDe(const std::filesystem::path& pasta) {
    const auto conexao = CriaConexaoFirebird(ParametrosFirebird(pasta / "loja.fdb"));
    conexao->Open();
    return Retrato(*conexao);
}

}  // namespace wkd
