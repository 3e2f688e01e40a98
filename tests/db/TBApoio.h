#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "BancoTemporario.h"
#include "Linhas.h"
#include "rows/WKDQuery.h"
#include "tables/TB.h"
#include "values/Texto.h"

namespace wkd {

/// A database with dictionary tables, and a TTB on it.
class TBTest : public ::testing::Test {
  protected:
    TBTest() {
        Executa("create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        Executa(
            "create table SATRIB (ARQUIVO varchar(50), SEQUENCIA integer, NOME varchar(25), TIPO varchar(25), TAMANHO "
            "integer, CHAVE_DE_PESQUISA integer, MASCARA varchar(40), DISCRIMINACAO varchar(40), VALOR_PADRAO "
            "varchar(20), SOMENTE_LEITURA integer, VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO "
            "integer, LOOKUP_ARQUIVO varchar(50), LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), "
            "LOOKUP_CP_CHAVE varchar(25), LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250))");
        Executa("create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer default 0)");
        Executa("create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), CAMPO varchar(25), SEQUENCIA integer)");
    }

    void Executa(std::string_view sql) { conexao_.ExecuteDirect(sql); }

    void Dicionario(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) {
        TWKDQuery q(conexao_,
                    "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, VALOR_PADRAO, "
                    "CALCULO) values (:arquivo, :sequencia, :nome, :tipo, :tamanho, :chave, :padrao, :calculo)");
        for (const auto& c : colunas)
            q.Param("arquivo", tabela)
                .Param("sequencia", ++sequencia_)
                .Param("nome", c.nome)
                .Param("tipo", c.tipo)
                .Param("tamanho", TValor(c.tamanho).Converte(TTipoDado::Inteiro))
                .Param("chave", c.chave)
                .Param("padrao", c.valorPadrao)
                .Param("calculo", c.calculo)
                .ExecSQL();
    }

    void Indice(const std::string& tabela, const std::string& nome, int tipo, const std::vector<std::string>& colunas) {
        Executa("insert into SINDSEC values ('" + tabela + "', '" + nome + "', " + std::to_string(tipo) + ")");
        for (std::size_t i = 0; i < colunas.size(); ++i)
            Executa("insert into SINDSECA values ('" + tabela + "', '" + nome + "', '" + colunas[i] + "', " +
                    std::to_string(i + 1) + ")");
    }

    std::string Linhas(std::string_view sql) { return wkd::Linhas(conexao_, sql); }

    /// Columns as "CODIGO integer!" with "!" for NOT NULL, default behind "=".
    std::string Estrutura(std::string_view tabela) {
        std::string texto;
        for (const auto& coluna : conexao_.Colunas(tabela))
            texto += (texto.empty() ? "" : ", ") + coluna.nome + " " + coluna.tipoSql + (coluna.requerido ? "!" : "") +
                     (coluna.padrao.empty() ? "" : "=" + coluna.padrao);
        return texto;
    }

    /// Secondary indexes as "IX(A,B)", "!" for unique, in name order.
    std::string Indices(std::string_view tabela) {
        std::set<std::string> textos;
        for (const auto& indice : conexao_.Indices(tabela))
            textos.insert(indice.nome + "(" + Junta(indice.colunas, ",") + ")" + (indice.unico ? "!" : ""));
        return Junta({textos.begin(), textos.end()}, " ");
    }

    std::string Chave(std::string_view tabela) {
        const auto chave = conexao_.ChavePrimaria(tabela);
        return chave.nome.empty() ? "" : chave.nome + "(" + Junta(chave.colunas, ",") + ")";
    }

    TPastaTemporaria pasta_;
    TBancoTemporario banco_;
    TConnection& conexao_ = banco_.Conexao();
    TTB tb_{conexao_, pasta_.Caminho()};

  private:
    int sequencia_ = 0;
};

}  // namespace wkd
