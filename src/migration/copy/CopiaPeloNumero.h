#pragma once

#include <string>
#include <utility>
#include <vector>

#include "copy/CopiaNoServidor.h"

namespace wkd {

/// Rows named by their record number (RDB$DB_KEY of Firebird), which needs no key and costs no index.
class TCopiaPeloNumero : public TCopiaNoServidor {
  public:
    /// Throws TErroBanco for a statement that the server does not take.
    TCopiaPeloNumero(TConnection& conexao, const TCopia& copia, const std::vector<TColunaDaCopia>& colunas);

    std::string Chave() override { return chaves_->Valor(0).ComoBytes(); }
    std::string Faltas() override { return chaves_->Valor(2).ComoTexto(); }
    std::set<std::string> Copia(std::span<const std::string_view> chaves, std::string_view faltas,
                                TRenumeracao& renumeracao) override;

  private:
    TValor ValorDaChave(std::string_view chave) const override { return TBytes{std::string(chave)}; }

    struct TCompletada {
        std::string numero;  // of its parameters
        TColunaFisica destino;
        bool numerada;
    };
    std::vector<std::pair<std::string, std::string>> contadas_;  // parameter and column that it counts
    std::vector<TCompletada> completadas_;
};

}  // namespace wkd
