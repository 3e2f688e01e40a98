#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "BancoTemporario.h"
#include "TelaDeTeste.h"
#include "context/Contexto.h"
#include "firebird/ConexaoFirebird.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

/// A Firebird database with dictionary tables, and a context on it. An alias of every kind leads to it: the dialect
/// is the alias's, the server always the same. Statements are recorded.
class TPassesTest : public ::testing::Test {
  protected:
    TPassesTest() {
        dm_.Atualiza.SetPastaComandos(banco_.Arquivo().parent_path());
        for (const std::string tipo : {"tbInterbase", "tbMySQL", "tbOracle", "tbSQLServer", "tbODBC"})
            ini_.INIGravaString(tipo, "TipoBanco", tipo);
        dm_.SQLConnection1.Observa([this](std::string_view sql) { comandos_.emplace_back(sql); });
        dm_.SQLConnection1.SetAlias("tbInterbase");
        dm_.SQLConnection1.Open();
        CriaDicionario();
        dm_.AtualizaListaDeTabelas();
    }

    /// The dialect of another kind on the connection that is open.
    void Fala(std::string_view alias) { dm_.SQLConnection1.SetAlias(alias); }

    void Executa(std::string_view sql) {
        const TResultado resultado = dm_.Executa(sql);
        ASSERT_TRUE(resultado) << sql << ": " << resultado.Mensagem();
    }
    void ExecutaTudo(const std::vector<std::string>& comandos) {
        for (const auto& comando : comandos) Executa(comando);
    }

    std::vector<std::string> ListaDeLinhas(std::string_view sql) {
        std::vector<std::string> linhas;
        TWKDQuery consulta(dm_.SQLConnection1, sql);
        for (consulta.Open(); !consulta.Eof(); consulta.Next()) {
            linhas.emplace_back();
            for (std::size_t i = 0; i < consulta.Campos().size(); ++i) {
                const TValor valor = consulta.Comando().Valor(i);
                linhas.back() += (i ? "|" : "") + (valor.Nulo() ? "<null>" : valor.ComoTexto());
            }
        }
        return linhas;
    }
    /// Rows of a query as "1|A;2|<null>".
    std::string Linhas(std::string_view sql) { return Junta(ListaDeLinhas(sql), ";"); }

    /// Everything that is in the database: columns, keys, indexes and rows.
    std::string Retrato() {
        TConnection& conexao = dm_.SQLConnection1;
        std::string texto;
        for (const auto& [tabela, colunas] : conexao.TodasAsColunas()) {
            texto += tabela + ":";
            for (const auto& coluna : colunas) texto += " " + coluna.nome + " " + coluna.tipoSql;
            texto += " chave " + conexao.ChavePrimaria(tabela).nome;
            for (const auto& indice : conexao.Indices(tabela)) texto += " indice " + indice.nome;
            auto linhas = ListaDeLinhas("select * from " + tabela);
            std::ranges::sort(linhas);
            texto += "\n" + Junta(linhas, "\n") + "\n";
        }
        return texto;
    }

    /// Tables of the package.
    void Pacote(const std::vector<std::string>& tabelas) {
        TTabelaEmMemoria memoria{{{"COD_MODULO", TTipoDado::Texto, 3}, {"NOME_ARQUIVO", TTipoDado::Texto, 50}}, {}};
        for (const auto& tabela : tabelas) memoria.linhas.push_back({"1", tabela});
        dm_.SArquivoNovo.Carrega(std::move(memoria));
    }

    /// How often a statement of that beginning was executed.
    std::ptrdiff_t Executados(std::string_view inicio) const {
        return std::ranges::count_if(comandos_, [&](const auto& comando) { return comando.starts_with(inicio); });
    }

    TBancoTemporario banco_;
    TAliases ini_{banco_.Arquivo().parent_path() / "WKD.ini"};
    TTelaDeTeste tela_;
    std::vector<std::string> comandos_;
    TDataModulo dm_{ini_, tela_, [this](auto...) { return CriaConexaoFirebird(banco_.Parametros()); }};
    TOpcoes opcoes_;
    TEstado estado_;
    TContexto ctx_{dm_, opcoes_, estado_, {}, {}};

  private:
    void CriaDicionario() {
        const std::string satrib =
            " (ARQUIVO varchar(50) not null, SEQUENCIA integer, NOME varchar(25) not null, TIPO varchar(25), TAMANHO "
            "integer, CHAVE_DE_PESQUISA integer, MASCARA varchar(40), DISCRIMINACAO varchar(40), VALOR_PADRAO "
            "varchar(20), SOMENTE_LEITURA integer, VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO "
            "integer, LOOKUP_ARQUIVO varchar(50), LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), "
            "LOOKUP_CP_CHAVE varchar(25), LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250), COD_PLUGIN "
            "varchar(50)";
        ExecutaTudo(
            {"create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer, OBS blob)",
             "create table SATRIB" + satrib + ", primary key (ARQUIVO, NOME))",
             "create table SATRIB_USER" + satrib + ")",
             "create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer default 0)",
             "create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), CAMPO varchar(25), SEQUENCIA integer)",
             "create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(50))",
             "create table TRBTABLE (TABLENAME varchar(50), TABLEALIAS varchar(100), EXTRA integer)",
             "create table TRBFIELD (TABLENAME varchar(50), FIELDNAME varchar(50), FIELDALIAS varchar(60), DATATYPE "
             "varchar(100), SEARCHABLE varchar(1), SORTABLE varchar(1), SELECTABLE varchar(1), AUTOSEARCH "
             "varchar(1), MANDATORY varchar(1))"});
        for (const std::string usuario : {"", "_USER"})
            ExecutaTudo({"create table SLOOKUP" + usuario +
                             " (ARQUIVO varchar(50), CAMPO varchar(25), AUT_ integer, CAMPOPAI varchar(25), CAMPOFILHO "
                             "varchar(25), COD_PLUGIN varchar(50))",
                         "create table SPESQ" + usuario +
                             " (ARQUIVO varchar(50), SEQ integer, NOMEPESQUISA varchar(50), COD_PLUGIN varchar(50))",
                         "create table SPESQAUX" + usuario +
                             " (ARQUIVO varchar(50), NOME varchar(50), SEQ integer, CAMPOS varchar(25), COD_PLUGIN "
                             "varchar(50))"});
    }
};

}  // namespace wkd
