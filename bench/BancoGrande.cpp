#include "BancoGrande.h"

#include <map>

#include "BancoTemporario.h"
#include "LojaSqlServer.h"
#include "firebird/ConexaoFirebird.h"
#include "package/Pacote.h"
#include "tables/DefinicaoCampo.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr const char* kPacote = "pacote.zip";
constexpr const char* kTipos[] = {"ftString", "ftInteger", "ftFloat", "ftDateTime", "ftString"};

std::string NomeDaTabela(int tabela) { return "TAB" + std::to_string(1000 + tabela); }

TColunaDicionario Coluna(int coluna) {
    TColunaDicionario c;
    c.nome = coluna == 0 ? "CODIGO" : "CAMPO" + std::to_string(coluna);
    c.tipo = coluna == 0 ? "ftInteger" : kTipos[coluna % std::size(kTipos)];
    c.tamanho = c.tipo == "ftString" ? "40" : "0";
    c.chave = coluna == 0 ? 1 : 0;
    return c;
}

TDataPacket DicionarioDeTabelas(int tabelas) {
    TDataPacket pacote;
    pacote.campos = {CampoDePacote("COD_MODULO", TTipoDado::Texto, 3),
                     CampoDePacote("NOME_ARQUIVO", TTipoDado::Texto, 50), CampoDePacote("VERSAO", TTipoDado::Inteiro)};
    for (int t = 0; t < tabelas; ++t) pacote.linhas.push_back({"001", NomeDaTabela(t), 1});
    return pacote;
}

/// Fills a dictionary table with the rows of a packet.
void Enche(TConnection& banco, const std::string& tabela, const TDataPacket& pacote) {
    std::vector<std::string> nomes;
    for (const auto& campo : pacote.campos) nomes.push_back(campo.nome);
    TTransacao transacao(banco);
    const auto inclui =
        banco.Prepara("insert into " + tabela + " (" + Junta(nomes, ", ") + ") values (:" + Junta(nomes, ", :") + ")");
    for (const TLinha& linha : pacote.linhas) {
        for (std::size_t i = 0; i < linha.size(); ++i) inclui->Atribui(i, linha[i]);
        inclui->Executa();
    }
    transacao.Commit();
}

constexpr const char* kDicionario[] = {
    "create table SARQUIVO (COD_MODULO varchar(3) not null, NOME_ARQUIVO varchar(50) not null, ULT_MODIFICACAO "
    "timestamp,"
    " OBS blob sub_type 0, NOME_TABLE varchar(40), VERSAO integer, primary key (COD_MODULO, NOME_ARQUIVO))",
    "create table SATRIB (ARQUIVO varchar(50) not null, SEQUENCIA integer, NOME varchar(25) not null, TIPO varchar(25),"
    " TAMANHO integer, CHAVE_DE_PESQUISA integer, MASCARA varchar(40), COMENTARIO blob sub_type 0,"
    " DISCRIMINACAO varchar(40), VALOR_PADRAO varchar(20), SOMENTE_LEITURA integer, VISIVEL integer,"
    " PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO integer, LOOKUP_ARQUIVO varchar(50),"
    " LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), LOOKUP_CP_CHAVE varchar(25),"
    " LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250), primary key (ARQUIVO, NOME))",
    "create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer)",
    "create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), SEQUENCIA integer, CAMPO varchar(25))",
    "create table SLOOKUP (ARQUIVO varchar(50), CAMPO varchar(25), AUT_ integer, CAMPOPAI varchar(25), CAMPOFILHO "
    "varchar(25))",
    "create table SPESQ (ARQUIVO varchar(50), SEQ integer, NOMEPESQUISA varchar(50))",
    "create table SPESQAUX (ARQUIVO varchar(50), NOME varchar(50), SEQ integer, CAMPOS varchar(25), AUT_ integer)",
    "create table SADMMOD (COD_MODULO varchar(3))",
    "create table TINI (SESSAO varchar(50), CHAVE varchar(100), VALOR varchar(250))",
    "create table TRBTABLE (TABLENAME varchar(60), TABLEALIAS varchar(100))",
    "create table TRBFIELD (TABLENAME varchar(60), FIELDNAME varchar(60), FIELDALIAS varchar(60), DATATYPE "
    "varchar(100),"
    " SELECTABLE char(1), SEARCHABLE char(1), SORTABLE char(1), AUTOSEARCH char(1), MANDATORY char(1))",
    "create table TRELATORIOS (NOME varchar(100), ARQUIVO blob sub_type 0)",
    "create table TARQ_VER (ARQUIVO varchar(100))",
    "create table CSENHA (CODIGO integer, FLAG1 integer)"};

std::unique_ptr<TConnection> Aberta(const TParametrosConexao& parametros) {
    auto conexao = CriaConexaoFirebird(parametros);
    conexao->Open();
    return conexao;
}

void CriaTabelas(TConnection& banco, int tabelas) {
    const TTipoBanco tipo = banco.TipoBanco();
    const bool firebird = tipo == TTipoBanco::tbInterbase;
    for (const char* comando : kDicionario) banco.ExecuteDirect(firebird ? comando : EmTSql(comando));
    for (int t = 0; t < tabelas; ++t) {
        std::string comando = "create table " + NomeDaTabela(t) + " (";
        for (int i = 0; i < kColunas; ++i) {
            const TColunaDicionario c = Coluna(i);
            comando += c.nome + " " + DefinicaoCampo(c, tipo) + ", ";
        }
        banco.ExecuteDirect(comando + "constraint PK_" + NomeDaTabela(t) + " primary key (CODIGO))");
    }
    Enche(banco, "SARQUIVO", DicionarioDeTabelas(tabelas));
    Enche(banco, "SATRIB", DicionarioDeColunas(tabelas));
}

/// A database that all others of as many tables are copies of: made once, where the first of them is wanted.
class TModelo {
  public:
    explicit TModelo(int tabelas) {
        auto parametros = ParametrosFirebird(Arquivo());
        parametros.Adiciona("CharacterSet", "WIN1252");
        CriaBancoFirebird(parametros, 8192);
        CriaTabelas(*Aberta(parametros), tabelas);
    }
    std::filesystem::path Arquivo() const { return pasta_ / "modelo.fdb"; }

    static const TModelo& De(int tabelas) {
        static std::map<int, TModelo> modelos;
        return modelos.try_emplace(tabelas, tabelas).first->second;
    }

  private:
    TPastaTemporaria pasta_;
};

}  // namespace

TDataPacket DicionarioDeColunas(int tabelas) {
    TDataPacket pacote;
    pacote.campos = {
        CampoDePacote("ARQUIVO", TTipoDado::Texto, 50),       CampoDePacote("SEQUENCIA", TTipoDado::Inteiro),
        CampoDePacote("NOME", TTipoDado::Texto, 25),          CampoDePacote("TIPO", TTipoDado::Texto, 25),
        CampoDePacote("TAMANHO", TTipoDado::Inteiro),         CampoDePacote("CHAVE_DE_PESQUISA", TTipoDado::Inteiro),
        CampoDePacote("DISCRIMINACAO", TTipoDado::Texto, 40), CampoDePacote("VISIVEL", TTipoDado::Inteiro),
        CampoDePacote("INCREMENTO", TTipoDado::Inteiro),      CampoDePacote("LOOKUP_ARQUIVO", TTipoDado::Texto, 50),
        CampoDePacote("CALCULO", TTipoDado::Texto, 250)};
    for (int t = 0; t < tabelas; ++t)
        for (int i = 0; i < kColunas; ++i) {
            const TColunaDicionario c = Coluna(i);
            pacote.linhas.push_back({NomeDaTabela(t), i + 1, c.nome, c.tipo, std::stoi(c.tamanho), c.chave,
                                     "Descrição da coluna " + c.nome, 1, 0, TValor(), TValor()});
        }
    return pacote;
}

TBancoGrande::TBancoGrande(const std::string& servidor, int tabelas) : tabelas_(tabelas) {
    if (servidor == kSqlServer)
        CriaNoSqlServer();
    else
        CriaNoFirebird(servidor);
    EnchePacote();
}

void TBancoGrande::CriaNoFirebird(const std::string& servidor) {
    parametros_ = ParametrosFirebird(pasta_ / "grande.fdb", servidor);
    parametros_.Adiciona("CharacterSet", "WIN1252");
    std::filesystem::copy_file(TModelo::De(tabelas_).Arquivo(), pasta_ / "grande.fdb");
    Aliases().AdicionaAlias({.nome = "GRANDE",
                             .tipoBanco = "tbInterbase",
                             .hostname = servidor,
                             .path = Pasta().string() + "/",
                             .database = "grande.fdb",
                             .usuario = "SYSDBA",
                             .senha = parametros_.Valor("Password"),
                             .characterSet = "WIN1252",
                             .driver = ""},
                            false);
}

void TBancoGrande::CriaNoSqlServer() {
    sqlServer_ = std::make_unique<TBancoSqlServer>();
    CriaTabelas(sqlServer_->Conexao(), tabelas_);
    Aliases().AdicionaAlias(AliasDoSqlServer("GRANDE"), false);
}

std::string EmTSql(std::string comando) {
    for (const auto& [firebird, sqlServer] :
         {std::pair("blob sub_type 0", "image"), {"timestamp", "datetime"}, {"varchar", "nvarchar"}})
        comando = Troca(comando, firebird, sqlServer);
    return comando;
}

std::unique_ptr<TConnection> TBancoGrande::Conexao() const {
    return sqlServer_ ? sqlServer_->Outra() : Aberta(parametros_);
}

std::string TBancoGrande::Tamanho() const {
    return std::to_string(tabelas_) + " tabelas e " + std::to_string(tabelas_ * kColunas) + " colunas";
}

TOpcoes TBancoGrande::OpcoesEm(const std::filesystem::path& pasta) {
    TOpcoes opcoes;
    opcoes.alias = "GRANDE";
    opcoes.pacote = pasta / kPacote;
    opcoes.querysAnteriores = opcoes.querysPosteriores = false;
    opcoes.marcaNaoCria = pasta / "naocria.wkd";
    opcoes.temporaria = opcoes.pastaPrograma = pasta;
    return opcoes;
}

void TBancoGrande::EnchePacote() {
    GravaPacote(DicionarioDeTabelas(tabelas_), pasta_ / "SARQUIVO.WKD", TFormaPacote::Binario);
    GravaPacote(DicionarioDeColunas(tabelas_), pasta_ / "SATRIB.WKD", TFormaPacote::Binario);
    TDataPacket arquivos;
    arquivos.campos = {CampoDePacote("ARQUIVO", TTipoDado::Texto, 100)};
    GravaPacote(arquivos, pasta_ / "ARQUIVOS", TFormaPacote::Binario);
    CompactaZip({pasta_ / "SARQUIVO.WKD", pasta_ / "SATRIB.WKD", pasta_ / "ARQUIVOS"}, pasta_ / kPacote);
}

}  // namespace wkd
