#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "connection/Connection.h"
#include "rows/ClientDataSet.h"
#include "rows/LinhasDoDataSet.h"

namespace wkd {

/// Sends pending changes to a provider's table, one statement a row. Statements of the same shape are prepared once
/// and released with this object.
class TEnvioDeAlteracoes {
  public:
    TEnvioDeAlteracoes(const TProvedor& provedor, const std::vector<TCampo>& campos);

    /// Throws TErroBanco, also when the stored row is not found again, and TErroConversao.
    void Envia(const TRegistro& registro);

  private:
    struct TTexto;

    void Insere(const TLinha& linha);
    void Atualiza(const TLinha& antes, const TLinha& depois);
    void Exclui(const TLinha& linha);
    void AcrescentaChave(TTexto& texto, const TLinha& linha) const;
    std::int64_t Executa(const TTexto& texto);
    [[noreturn]] void NaoEncontrado(const TTexto& texto) const;

    const TProvedor& provedor_;
    const std::vector<TCampo>& campos_;
    std::vector<std::size_t> chaves_;
    std::unordered_map<std::string, std::unique_ptr<TComando>> comandos_;
    std::unordered_map<std::string, std::int64_t> jaExcluidas_;  // equal rows that went with an earlier one, by key
};

}  // namespace wkd
