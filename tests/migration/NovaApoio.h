#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Arquivos.h"
#include "BancoTemporario.h"
#include "Linhas.h"
#include "TelaDeTeste.h"
#include "context/CargaDoPacote.h"
#include "context/Contexto.h"
#include "firebird/ConexaoFirebird.h"
#include "rebuild/Nova.h"
#include "values/Texto.h"

namespace wkd {

/// Row of a column dictionary.
struct TAtributo {
    std::string nome, tipo = "ftString";
    int tamanho = 0, chave = 0;
    std::string padrao = {};
    int obrigatorio = 0, incremento = 0;
    std::string titulo = {};
};
using TAtributos = std::vector<TAtributo>;

/// Whether a statement stores rows of a copy: one row, or a batch that the server moves.
inline bool Insere(std::string_view sql, std::string_view tabela) {
    return sql.find("insert into " + std::string(tabela) + " (") != std::string_view::npos;
}

/// The package's only table, in version 2.
inline void CarregaPacote(TDataModulo& dm, const std::string& tabela, const TAtributos& atributos) {
    TTabelaEmMemoria arquivos{
        {{"COD_MODULO", TTipoDado::Texto, 3}, {"NOME_ARQUIVO", TTipoDado::Texto, 50}, {"VERSAO", TTipoDado::Inteiro}},
        {{"1", tabela, 2}}};
    TTabelaEmMemoria colunas;
    for (const char* texto : {"ARQUIVO", "NOME", "TIPO", "VALOR_PADRAO", "CALCULO", "LOOKUP_ARQUIVO", "DISCRIMINACAO"})
        colunas.campos.push_back({texto, TTipoDado::Texto, 50});
    for (const char* inteiro : {"SEQUENCIA", "TAMANHO", "CHAVE_DE_PESQUISA", "PREENCHIMENTO_OBRIGATORIO", "INCREMENTO"})
        colunas.campos.push_back({inteiro, TTipoDado::Inteiro});
    for (const auto& a : atributos)
        colunas.linhas.push_back({tabela, a.nome, a.tipo, a.padrao, "", "", a.titulo,
                                  static_cast<int>(colunas.linhas.size()), a.tamanho, a.chave, a.obrigatorio,
                                  a.incremento});
    dm.SArquivoNovo.Carrega(std::move(arquivos));
    dm.SatribNovo.Carrega(std::move(colunas));
}

/// A database with dictionary tables, and a package for it.
class TBancoDaNova {
  public:
    /// `servidor`: "host/port", the embedded engine when empty. `conexao`: "CharacterSet" of the alias, empty without
    /// one.
    explicit TBancoDaNova(std::string_view conjunto = "UTF8", bool comTini = true, std::string_view servidor = "",
                          std::string_view conexao = "")
        : banco_(conjunto, servidor), parametros_(banco_.Parametros()) {
        if (!conexao.empty()) parametros_.Adiciona("CharacterSet", conexao);
        ini_.INIGravaString("tbInterbase", "TipoBanco", "tbInterbase");
        opcoes_.pastaPrograma = opcoes_.pastaCorrente = Pasta();
        dm_.Atualiza.SetPastaComandos(Pasta());
        dm_.SQLConnection1.SetAlias("tbInterbase");
        dm_.SQLConnection1.Open();
        Executa("create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        const std::string satrib =
            " (ARQUIVO varchar(50), SEQUENCIA integer, NOME varchar(25), TIPO varchar(25), TAMANHO integer,"
            " CHAVE_DE_PESQUISA integer, MASCARA varchar(40), DISCRIMINACAO varchar(40), VALOR_PADRAO varchar(20),"
            " SOMENTE_LEITURA integer, VISIVEL integer, PREENCHIMENTO_OBRIGATORIO integer, INCREMENTO integer,"
            " LOOKUP_ARQUIVO varchar(50), LOOKUP_CP_PESQUISA varchar(25), LOOKUP_INDICE varchar(100), LOOKUP_CP_CHAVE"
            " varchar(25), LOOKUP_CP_RETORNO varchar(25), LOG integer, CALCULO varchar(250))";
        Executa("create table SATRIB" + satrib);
        Executa("create table SATRIB_USER" + satrib);
        Executa("create table SARQUIVO_USER (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        Executa("create table SINDSEC (ARQUIVO varchar(50), NOME varchar(100), TIPO integer default 0)");
        Executa("create table SINDSECA (ARQUIVO varchar(50), NOME varchar(100), CAMPO varchar(25), SEQUENCIA integer)");
        if (comTini) Executa("create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(50))");
    }

    void Executa(std::string_view sql) { Conexao().ExecuteDirect(sql); }
    /// Several statements in one transaction.
    void ExecutaTudo(const std::vector<std::string>& comandos) {
        TTransacao transacao(Conexao());
        for (const auto& comando : comandos) Conexao().Prepara(comando)->Executa();
        transacao.Commit();
    }
    std::string Le(std::string_view sql) { return Linhas(Conexao(), sql); }

    /// The stored dictionary's table, in version 1.
    void Guardada(const std::string& tabela, const TAtributos& atributos) {
        std::vector<std::string> comandos = {"insert into SARQUIVO values ('1', '" + tabela + "', 1)"};
        for (std::size_t i = 0; i < atributos.size(); ++i)
            comandos.push_back(
                "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, VALOR_PADRAO) values"
                " ('" +
                tabela + "', " + std::to_string(i) + ", '" + atributos[i].nome + "', '" + atributos[i].tipo + "', " +
                std::to_string(atributos[i].tamanho) + ", " + std::to_string(atributos[i].chave) + ", '" +
                atributos[i].padrao + "')");
        ExecutaTudo(comandos);
    }

    void Pacote(const std::string& tabela, const TAtributos& atributos) { CarregaPacote(dm_, tabela, atributos); }

    /// As a run does at its beginning and for the table, when its version is not the package's.
    void Reconstroi() {
        Conexao().Rollback();
        dm_.AtualizaListaDeTabelas();
        LeDicionarioNovo(ctx_);
        LeDicionarioGravado(ctx_);
        dm_.SArquivoNovo.First();
        if (dm_.SarquivoVelho.Inteiro("versao") == 2) return;
        Nova(ctx_, dm_.SArquivoNovo.Texto("nome_arquivo"));
    }

    /// Columns, key, indexes and rows of the table, its dictionary, versions and marks.
    std::string Retrato(const std::string& tabela) {
        std::string texto;
        for (const auto& coluna : Conexao().Colunas(tabela))
            texto += coluna.nome + " " + coluna.tipoSql + (coluna.requerido ? "! " : " ") + coluna.padrao + ", ";
        const auto chave = Conexao().ChavePrimaria(tabela);
        texto += "\n" + chave.nome + " " + Junta(chave.colunas, ",") + "\n";
        for (const auto& indice : Conexao().Indices(tabela))
            texto += indice.nome + " " + Junta(indice.colunas, ",") + "\n";
        std::vector<std::string> consultas = {
            "select * from " + tabela, "select * from SARQUIVO",
            "select NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA from SATRIB where ARQUIVO = '" + tabela +
                "' order by SEQUENCIA"};
        if (dm_.ExisteTabela("TINI")) consultas.push_back("select * from TINI");
        for (const auto& sql : consultas) texto += Le(sql) + "\n";
        return texto;
    }

    TConnection& Conexao() { return dm_.SQLConnection1; }
    std::filesystem::path Pasta() const { return banco_.Arquivo().parent_path(); }
    std::string Rejeitados() const { return LeArquivo(Pasta() / "AtualizaWKD.rejeitados.jsonl"); }

    TBancoTemporario banco_;
    TParametrosConexao parametros_;
    TAliases ini_{banco_.Arquivo().parent_path() / "WKD.ini"};
    TTelaDeTeste tela_;
    TDataModulo dm_{ini_, tela_, [this](auto...) { return CriaConexaoFirebird(parametros_); }};
    TOpcoes opcoes_;
    TEstado estado_;
    TContexto ctx_{dm_, opcoes_, estado_, {}, {}};
};

}  // namespace wkd
