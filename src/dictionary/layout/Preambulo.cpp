#include "layout/Preambulo.h"

#include <iterator>
#include <map>
#include <set>

#include "dialect/Dialeto.h"
#include "layout/ReconstrucoesAbertas.h"
#include "packet/DicionarioDoPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace {

enum class TPasso { Apaga, Cria, CriaNvarchar, Soma };

/// A step of the layout upgrade: issued when the table (Apaga) exists, the table (Cria) or the column (Soma) is
/// missing.
struct TPassoDoDicionario {
    TPasso passo;
    std::string_view tabela;
    std::string_view texto;   // whole statement; of Soma the column name
    std::string_view tipo{};  // of the column
};

constexpr std::string_view kSatribUser =
    "CREATE TABLE SATRIB_USER( ARQUIVO VARCHAR(50) NOT NULL, SEQUENCIA INTEGER, NOME VARCHAR(25) NOT NULL, "
    "TIPO VARCHAR(25), TAMANHO INTEGER, CHAVE_DE_PESQUISA INTEGER, MASCARA VARCHAR(40), COMENTARIO BLOB, "
    "DISCRIMINACAO VARCHAR(40), VALOR_PADRAO VARCHAR(20), SOMENTE_LEITURA INTEGER, VISIVEL INTEGER, "
    "PREENCHIMENTO_OBRIGATORIO INTEGER, INCREMENTO INTEGER, LOOKUP_ARQUIVO VARCHAR(50), "
    "LOOKUP_CP_PESQUISA VARCHAR(25), LOOKUP_INDICE VARCHAR(100), LOOKUP_CP_CHAVE VARCHAR(25), "
    "LOOKUP_CP_RETORNO VARCHAR(25), ATUALIZA_LOOKUP INTEGER, PESQUISA_VISIVEL INTEGER, LOG INTEGER, "
    "CALCULO VARCHAR(250))";

constexpr TPassoDoDicionario kPassos[] = {
    {TPasso::Apaga, "TARQ_VERB", "drop table TARQ_VERB"},
    {TPasso::Apaga, "BTARQ_VER", "drop table BTARQ_VER"},

    {TPasso::Soma, "SADMMOD", "TELA_EXCLUSIVA_NAO_ABRE_JUNTO", "varchar(50)"},
    {TPasso::Soma, "SADMMOD", "PESQUISA_AVANCADA", "integer"},

    {TPasso::Cria, "SARQ_RELACIONA_PAI",
     "CREATE TABLE SARQ_RELACIONA_PAI( ARQUIVO_PAI   varchar(50), ARQUIVO_FILHO varchar(50), CAMPO_PAI     "
     "varchar(25), CAMPO_FILHO   varchar(25))"},

    {TPasso::Cria, "SARQUIVO_USER",
     "CREATE TABLE SARQUIVO_USER( COD_MODULO VARCHAR(3), NOME_ARQUIVO VARCHAR(50), ULT_MODIFICACAO TIMESTAMP, "
     "OBS BLOB, NOME_TABLE VARCHAR(40), VERSAO INTEGER)"},
    {TPasso::Soma, "SARQUIVO_USER", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SARQUIVO_USER", "ARQUIVO_PAI", "varchar(50)"},
    {TPasso::Soma, "SARQUIVO_USER", "PESQUISA_AVANCADA", "int"},
    {TPasso::Soma, "SARQUIVO_USER", "DESCRICAO_TABELA", "varchar(50)"},
    {TPasso::Soma, "SARQUIVO", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SARQUIVO", "ARQUIVO_PAI", "varchar(50)"},
    {TPasso::Soma, "SARQUIVO", "PESQUISA_AVANCADA", "int"},
    {TPasso::Soma, "SARQUIVO", "DESCRICAO_TABELA", "varchar(50)"},

    {TPasso::CriaNvarchar, "SLISTA_CONTROLE",
     "CREATE TABLE SLISTA_CONTROLE( ARQUIVO nvarchar(50), CAMPO   varchar(25), TEXTO   nvarchar(100), VALOR   "
     "nvarchar(100))"},

    {TPasso::Cria, "SATRIB_USER", kSatribUser},
    {TPasso::Soma, "SATRIB_USER", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SATRIB_USER", "ATUALIZA_LOOKUP", "integer"},
    {TPasso::Soma, "SATRIB_USER", "PESQUISA_VISIVEL", "integer"},
    {TPasso::Soma, "SATRIB_USER", "TIPO_CONTROLE", "varchar(25)"},
    {TPasso::Soma, "SATRIB_USER", "PROPRIEDADE_CONTROLE", "varchar(2000)"},
    {TPasso::Soma, "SATRIB_USER", "PRINCIPAL", "int"},
    {TPasso::Soma, "SATRIB_USER", "SEQUENCIA_PESQUISA", "int"},
    {TPasso::Soma, "SATRIB", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SATRIB", "ATUALIZA_LOOKUP", "integer"},
    {TPasso::Soma, "SATRIB", "PESQUISA_VISIVEL", "integer"},
    {TPasso::Soma, "SATRIB", "TIPO_CONTROLE", "varchar(25)"},
    {TPasso::Soma, "SATRIB", "PROPRIEDADE_CONTROLE", "varchar(2000)"},
    {TPasso::Soma, "SATRIB", "PRINCIPAL", "int"},
    {TPasso::Soma, "SATRIB", "SEQUENCIA_PESQUISA", "int"},

    {TPasso::Cria, "SPESQ_USER",
     "CREATE TABLE SPESQ_USER( ARQUIVO VARCHAR(50), SEQ INTEGER, NOMEPESQUISA VARCHAR(50), INDICE VARCHAR(50), "
     "TITULO VARCHAR(50), TIPO VARCHAR(1))"},
    {TPasso::Soma, "SPESQ_USER", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SPESQ", "COD_PLUGIN", "varchar(50)"},

    {TPasso::Cria, "SPESQAUX_USER",
     "CREATE TABLE SPESQAUX_USER( ARQUIVO VARCHAR(50), NOME VARCHAR(50), SEQ INTEGER, CAMPOS VARCHAR(25), "
     "AUT_ INTEGER)"},
    {TPasso::Soma, "SPESQAUX_USER", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SPESQAUX", "COD_PLUGIN", "varchar(50)"},

    {TPasso::Cria, "SLOOKUP_USER",
     "CREATE TABLE SLOOKUP_USER( ARQUIVO VARCHAR(50), CAMPO VARCHAR(25), AUT_ INTEGER, CAMPOPAI VARCHAR(25), "
     "CAMPOFILHO VARCHAR(25))"},
    {TPasso::Soma, "SLOOKUP_USER", "COD_PLUGIN", "varchar(50)"},
    {TPasso::Soma, "SLOOKUP", "COD_PLUGIN", "varchar(50)"},
};

/// Runs a statement that creates or drops a table; a refusal is reported and the other steps follow.
void ExecutaEstrutura(TDataModulo& dm, const TPassoDoDicionario& passo, const std::string& comando) {
    if (const TResultado resultado = dm.Executa(comando); !resultado) {
        dm.Tela().Erro(TErroDaExecucao::NosDois(resultado.Erro().Dados(), passo.tabela, "Tabelas do dicionário")
                           .ComComando(comando));
        return;
    }
    if (passo.passo != TPasso::Apaga) return dm.IncluiNaLista(passo.tabela);
    dm.Commit(comando);
    dm.AtualizaListaDeTabelas();
}

std::string ComandoCria(const TPassoDoDicionario& passo, TTipoBanco banco) {
    const bool troca = passo.passo == TPasso::CriaNvarchar && banco != TTipoBanco::tbSQLServer;
    return troca ? Troca(passo.texto, "nvarchar", "varchar") : Dialeto(banco).AjustaCriaTabela(passo.texto);
}

std::string ComandoSoma(const TPassoDoDicionario& passo) {
    return "alter table " + std::string(passo.tabela) + " add " + std::string(passo.texto) + " " +
           std::string(passo.tipo);
}

/// Whether the table is there to be dropped: rows of an interrupted rebuild may be nowhere else, and the drop waits
/// until the rebuild has ended. So it does when nobody can tell.
bool PodeApagar(TDataModulo& dm, std::string_view tabela) {
    try {
        return dm.ExisteTabela(tabela) && !GuardaAberta(ReconstrucoesAbertas(dm), tabela);
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        TErro naoApagada = erro.Dados();
        naoApagada.mensagem = "Tabela " + std::string(tabela) + " não apagada: " + erro.what();
        dm.Tela().Erro(TErroDaExecucao::NaLista(std::move(naoApagada), tabela));
        return false;
    }
}

void Apaga(TDataModulo& dm, const TPassoDoDicionario& passo) {
    if (PodeApagar(dm, passo.tabela)) ExecutaEstrutura(dm, passo, std::string(passo.texto));
}

void Cria(TDataModulo& dm, const TPassoDoDicionario& passo) {
    if (dm.ExisteTabela(passo.tabela)) return;
    ExecutaEstrutura(dm, passo, ComandoCria(passo, dm.SQLConnection1.TipoBanco()));
}

/// A refusal (no such table, no permission) is ignored.
void Soma(TDataModulo& dm, const TPassoDoDicionario& passo) {
    if (dm.VerificaExisteCampo(passo.tabela, passo.texto)) return;
    dm.Executa(ComandoSoma(passo));
    dm.EsqueceColunas(passo.tabela);
}

/// The tables of the dictionary are few of all.
void LeColunasDoDicionario(TDataModulo& dm) {
    std::set<std::string> tabelas(std::begin(kTabelasDoDicionario), std::end(kTabelasDoDicionario));
    for (const auto& passo : kPassos) tabelas.emplace(passo.tabela);
    std::erase_if(tabelas, [&](const std::string& tabela) { return !dm.ExisteTabela(tabela); });
    dm.LeColunas(std::move(tabelas));
}

}  // namespace

void AtualizaTabelasDoDicionario(TDataModulo& dm) {
    LeColunasDoDicionario(dm);
    for (const auto& passo : kPassos) {
        if (passo.passo == TPasso::Apaga)
            Apaga(dm, passo);
        else if (passo.passo == TPasso::Soma)
            Soma(dm, passo);
        else
            Cria(dm, passo);
    }
}

std::vector<TComandoDoDicionario> PendenciasDoDicionario(TDataModulo& dm) {
    LeColunasDoDicionario(dm);
    const TTipoBanco banco = dm.SQLConnection1.TipoBanco();
    std::vector<TComandoDoDicionario> comandos;
    std::map<std::string_view, std::string> criadas;
    for (const auto& passo : kPassos) {
        const std::string tabela(passo.tabela);
        const bool existe = dm.ExisteTabela(tabela);
        if (passo.passo == TPasso::Soma) {
            const auto criada = criadas.find(passo.tabela);
            const bool vira = criada != criadas.end() && criada->second.find(passo.texto) == std::string::npos;
            if (vira || (existe && !dm.VerificaExisteCampo(tabela, passo.texto)))
                comandos.push_back({tabela, ComandoSoma(passo), std::string(passo.texto), std::string(passo.tipo)});
        } else if (passo.passo == TPasso::Apaga && PodeApagar(dm, tabela)) {
            comandos.push_back({tabela, std::string(passo.texto), "", ""});
        } else if (passo.passo != TPasso::Apaga && !existe) {
            criadas[passo.tabela] = ComandoCria(passo, banco);
            comandos.push_back({tabela, criadas[passo.tabela], "", ""});
        }
    }
    return comandos;
}

// Sizes the dictionary has reached, in the order and syntax in which they would be issued on Firebird ("commit" stands
// for a named commit, the connection is renewed at the end):
//   alter table SARQUIVO alter nome_arquivo type varchar(50)
//   commit "SArquivo"
//   alter table SATRIB alter arquivo type varchar(50)
//   alter table SATRIB alter lookup_arquivo type varchar(50)
//   commit "SAtrib"
//   alter table sadmmod add relatorio integer
//   alter table sadmmod add class_for varchar(50)
//   alter table SINDSEC add tipo integer default 0
//   alter table SATRIB ADD Calculo varchar(250)          when SATRIB has no column CALCULO
//   alter table SATRIB alter LOOKUP_INDICE type varchar(100)
//   alter table SINDSEC alter arquivo type varchar(50)
//   alter table SINDSEC alter nome type varchar(100)
//   alter table SINDSECA alter arquivo type varchar(50)
//   alter table SINDSECA alter nome type varchar(100)
//   alter table SRELATOR alter arquivo type varchar(50)
//   alter table SPESQAUX alter arquivo type varchar(50)
//   alter table SPESQAUX alter nome type varchar(50)
//   alter table SPESQ alter arquivo type varchar(50)
//   alter table SPESQ alter nomepesquisa type varchar(50)
//   alter table SLOOKUP alter arquivo type varchar(50)
//   COMMIT
void AtualizaTabelaSistema() {}

}  // namespace wkd
