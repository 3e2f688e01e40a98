#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// A statement whose named parameters (":pNome") became the "?" that drivers know.
struct TComandoSql {
    std::string texto;
    std::vector<std::string> parametros;  // each name once, in order of first appearance, without ":"
    std::vector<std::size_t> posicoes;    // for every "?", its place in `parametros`
};

/// Finds the named parameters of a statement: ":" and an identifier, letter case ignored, outside quotes, brackets
/// and comments. In an "execute block" only the head has parameters: behind its AS a ":" names a variable.
TComandoSql AnalisaComando(std::string_view sql);

/// Query component: statement text, parameters by name, rows forward only.
///
///     TWKDQuery q(conexao, "select valor from tini where chave = :pCHAVE");
///     q.Param("pCHAVE", chave);
///     for (q.Open(); !q.Eof(); q.Next()) usa(q.Campo("VALOR"));
class TWKDQuery {
  public:
    TWKDQuery(TConnection& conexao, std::string_view sql);

    TWKDQuery& Param(std::string_view nome, const TValor& valor);
    /// Opens and moves to the first row.
    void Open();
    void Close();
    bool Eof() const { return fim_; }
    void Next();
    /// Value of the current row by field name, letter case ignored; std::invalid_argument when there is none.
    TValor Campo(std::string_view nome);
    std::string Texto(std::string_view nome) { return Campo(nome).ComoTexto(); }
    std::int64_t Inteiro(std::string_view nome) { return Campo(nome).ComoInteiro(); }
    const std::vector<TCampo>& Campos() const { return comando_->Campos(); }
    /// Runs a statement without rows; returns the number of rows touched.
    std::int64_t ExecSQL() { return comando_->Executa(); }
    TComando& Comando() { return *comando_; }

  private:
    std::unique_ptr<TComando> comando_;
    bool fim_ = true;
};

/// Runs one statement in a transaction of its own and commits it, whatever its words: ExecuteDirect passes over a text
/// with "commit", such as a column of that name.
void ExecutaComando(TConnection& conexao, std::string_view sql);
/// Number in the only field of the only row; 0 without a row.
std::int64_t ContaRegistros(TConnection& conexao, std::string_view sql);

}  // namespace wkd
