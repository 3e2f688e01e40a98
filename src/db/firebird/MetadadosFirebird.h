#pragma once

#include <memory>

#include "connection/Connection.h"
#include "firebird/SessaoFirebird.h"

namespace wkd {

/// Answers from the system tables. The questions asked table by table stay prepared.
class TMetadadosFirebird {
  public:
    explicit TMetadadosFirebird(std::shared_ptr<TSessaoFirebird> sessao) : sessao_(std::move(sessao)) {}

    /// Such as "Firebird 3.0.11".
    std::string VersaoServidor();
    /// Default character set of the database in capitals.
    std::string ConjuntoDoBanco();
    std::vector<std::string> NomesDeTabelas();
    bool ExisteTabela(std::string_view tabela);
    /// Name of a table as the server has it.
    std::string NomeExato(std::string_view tabela);
    std::vector<TColunaFisica> Colunas(std::string_view tabela);
    TColunasPorTabela TodasAsColunas();
    std::optional<TColunasPorTabela> ColunasDe(const std::vector<std::string>& tabelas);
    TChavePrimaria ChavePrimaria(std::string_view tabela);
    TChavesPorTabela TodasAsChaves();
    std::vector<TIndice> Indices(std::string_view tabela);

  private:
    using TGuardado = std::unique_ptr<TComando>;

    TValor Unico(std::string_view sql);
    TGuardado Pergunta(std::string_view sql) const;
    /// The prepared question about one table, opened.
    TComando& Abre(TGuardado& comando, std::string_view sql, std::string_view tabela);
    /// The name that the question finds for the text; empty when it finds none.
    std::string NomePor(TGuardado& comando, std::string_view onde, std::string_view nome);
    TColunaFisica Coluna(TComando& linha);
    /// Of the ordinary tables for which the condition holds; empty, all of them.
    TColunasPorTabela ColunasOnde(const std::string& condicao);

    std::shared_ptr<TSessaoFirebird> sessao_;
    TGuardado nome_, nomeComum_, nomeEmCapitais_, colunas_, chave_, indices_;
};

}  // namespace wkd
