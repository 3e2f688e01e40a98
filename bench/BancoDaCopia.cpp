#include "BancoDaCopia.h"

#include <stdexcept>

#include "BancoTemporario.h"
#include "context/CargaDoPacote.h"
#include "firebird/ConexaoFirebird.h"
#include "odbc/ConexaoOdbc.h"
#include "rows/WKDQuery.h"
#include "tables/DefinicaoCampo.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr struct {
    const char *nome, *tipo;
    int tamanho;
} kColunasDaTabela[] = {{"CODIGO", "ftInteger", 0},   {"NOME", "ftString", 40}, {"FANTASIA", "ftString", 30},
                        {"CIDADE", "ftString", 30},   {"UF", "ftString", 2},    {"DATA", "ftDateTime", 0},
                        {"VALOR", "ftFloat", 0},      {"LIMITE", "ftFloat", 0}, {"ATIVO", "ftInteger", 0},
                        {"VENDEDOR", "ftInteger", 0}, {"OBS", "ftString", 60},  {"FOTO", "ftBlob", 0}};

TColunaDicionario Coluna(std::size_t i) {
    TColunaDicionario coluna;
    coluna.nome = kColunasDaTabela[i].nome;
    coluna.tipo = kColunasDaTabela[i].tipo;
    coluna.tamanho = std::to_string(kColunasDaTabela[i].tamanho);
    coluna.chave = i == 0 ? 1 : 0;
    return coluna;
}

// The columns of SATRIB, the customer's own as well.
const std::string kColunasDoSatrib =
    "(ARQUIVO varchar(50), SEQUENCIA integer, NOME varchar(25), TIPO varchar(25), TAMANHO integer,"
    " CHAVE_DE_PESQUISA integer, MASCARA varchar(40), DISCRIMINACAO varchar(40), VALOR_PADRAO varchar(20),"
    " SOMENTE_LEITURA integer, VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO integer,"
    " LOOKUP_ARQUIVO varchar(50), LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), LOOKUP_CP_CHAVE"
    " varchar(25), LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250))";

const std::string kDicionario[] = {
    "create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)",
    "create table SARQUIVO_USER (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)",
    "create table SATRIB " + kColunasDoSatrib,
    "create table SATRIB_USER " + kColunasDoSatrib,
    "create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer default 0)",
    "create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), CAMPO varchar(25), SEQUENCIA integer)",
    "create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(50))",
    "insert into SARQUIVO values ('1', 'TCLI', 1)"};

}  // namespace

TBancoDaCopia::TBancoDaCopia(const TLugar& lugar, int linhas)
    : tipo_(lugar.servidor == kSqlServer ? TTipoBanco::tbSQLServer : TTipoBanco::tbInterbase),
      aliases_(pasta_ / "WKD.ini"),
      dm_(aliases_, tela_, [this](auto...) { return NovaConexao(); }),
      ctx_{dm_, opcoes_, estado_, {}, {}} {
    CriaBanco(lugar);
    opcoes_.pastaPrograma = opcoes_.pastaCorrente = pasta_.Caminho();
    aliases_.INIGravaString("COPIA", "TipoBanco", std::string(TipoBancoToStr(tipo_)));
    dm_.Atualiza.SetPastaComandos(pasta_.Caminho());
    dm_.SQLConnection1.SetAlias("COPIA");
    dm_.SQLConnection1.Open();
    for (const std::string& comando : kDicionario)
        Executa(tipo_ == TTipoBanco::tbInterbase ? comando : EmTSql(comando));
    for (std::size_t i = 0; i < std::size(kColunasDaTabela); ++i)
        Executa("insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values ('TCLI', " +
                std::to_string(i) + ", '" + Coluna(i).nome + "', '" + Coluna(i).tipo + "', " + Coluna(i).tamanho +
                ", " + (i == 0 ? "1" : "0") + ")");
    CriaVazia("TCLI", true);
    Enche(linhas);
    CarregaPacote();
    dm_.AtualizaListaDeTabelas();
    LeDicionarioNovo(ctx_);
    LeDicionarioGravado(ctx_);
    dm_.SArquivoNovo.First();
}

std::unique_ptr<TConnection> TBancoDaCopia::NovaConexao() const {
    return sqlServer_ ? CriaConexaoOdbc(TBancoSqlServer::Parametros()) : CriaConexaoFirebird(parametros_);
}

void TBancoDaCopia::CriaBanco(const TLugar& lugar) {
    if (tipo_ == TTipoBanco::tbSQLServer) {
        sqlServer_ = std::make_unique<TBancoSqlServer>();
        return;
    }
    parametros_ = ParametrosFirebird(pasta_ / "copia.fdb", lugar.servidor);
    parametros_.Adiciona("CharacterSet", "WIN1252");
    CriaBancoFirebird(parametros_, 8192);
}

void TBancoDaCopia::CriaVazia(const std::string& tabela, bool comChave) {
    std::vector<std::string> colunas;
    for (std::size_t i = 0; i < std::size(kColunasDaTabela); ++i)
        colunas.push_back(Coluna(i).nome + " " + DefinicaoCampo(Coluna(i), tipo_));
    if (comChave) colunas.push_back("constraint PK_" + tabela + " primary key (CODIGO)");
    Executa("create table " + tabela + " (" + Junta(colunas, ", ") + ")");
}

void TBancoDaCopia::Enche(int linhas) {
    if (tipo_ == TTipoBanco::tbSQLServer)
        return Executa(
            "with n as (select 1 as i union all select i + 1 from n where i < " + std::to_string(linhas) +
            ") insert into TCLI select i, 'Nome do cliente ' + cast(i as varchar(9)), 'Fantasia', 'Cidade ' + cast(i % "
            "500 as varchar(9)), 'SP', dateadd(minute, i, '2001-01-01'), i * 1.1, i / 3.0, i % 2, i % 90, "
            "replicate('obs ', i % 15), cast(replicate('foto', 50) as varbinary(200)) from n option (maxrecursion 0)");
    Executa("execute block as declare i integer = 0; begin while (i < " + std::to_string(linhas) +
            ") do begin i = i + 1; insert into TCLI values (:i, 'Nome do cliente ' || :i, 'Fantasia ' || :i, 'Cidade ' "
            "|| mod(:i, 500), 'SP', timestamp '2001-01-01 10:20:30' + :i * 0.37, :i * 1.1e0, :i / 3e0, mod(:i, 2), "
            "mod(:i, 90), rpad('', mod(:i, 60), 'obs '), rpad('', 200, 'foto' || :i)); end end");
}

void TBancoDaCopia::CarregaPacote() {
    TTabelaEmMemoria arquivos{
        {{"COD_MODULO", TTipoDado::Texto, 3}, {"NOME_ARQUIVO", TTipoDado::Texto, 50}, {"VERSAO", TTipoDado::Inteiro}},
        {{"1", "TCLI", 2}}};
    TTabelaEmMemoria colunas;
    for (const char* texto : {"ARQUIVO", "NOME", "TIPO", "VALOR_PADRAO", "CALCULO", "LOOKUP_ARQUIVO"})
        colunas.campos.push_back({texto, TTipoDado::Texto, 50});
    for (const char* inteiro : {"SEQUENCIA", "TAMANHO", "CHAVE_DE_PESQUISA", "PREENCHIMENTO_OBRIGATORIO", "INCREMENTO"})
        colunas.campos.push_back({inteiro, TTipoDado::Inteiro});
    for (std::size_t i = 0; i < std::size(kColunasDaTabela); ++i)
        colunas.linhas.push_back({"TCLI", Coluna(i).nome, Coluna(i).tipo, "", "", "", static_cast<int>(i),
                                  kColunasDaTabela[i].tamanho, Coluna(i).chave, 0, 0});
    dm_.SArquivoNovo.Carrega(std::move(arquivos));
    dm_.SatribNovo.Carrega(std::move(colunas));
}

std::int64_t TBancoDaCopia::Conta(const std::string& tabela) {
    return ContaRegistros(Conexao(), "select count(*) as total from " + tabela);
}

void TBancoDaCopia::ConfereSemErros() const {
    if (!tela_.erros.empty()) throw std::runtime_error(tela_.erros.front());
}

}  // namespace wkd
