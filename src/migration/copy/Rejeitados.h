#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "context/Contexto.h"
#include "process/EscritaSegura.h"

namespace wkd {

/// Columns of a row with their values.
using TPares = std::vector<std::pair<std::string, TValor>>;

/// What one step could not store of one table, appended to "AtualizaWKD.rejeitados.jsonl" in the program's folder: one
/// JSON object a line, so that nothing is lost. The operations answer false when it could not be written there, which
/// is shown once.
class TRejeitados {
  public:
    TRejeitados(TContexto& ctx, std::string_view tabela, std::string_view etapa);

    /// A whole row.
    bool Linha(const TPares& chave, std::string_view erro, const TPares& valores);
    /// A value of a row that was stored without it.
    bool Valor(const TPares& chave, std::string_view erro, std::string_view campo, const TValor& valor);

  private:
    void Abre();
    bool Acrescenta(const TPares& chave, std::string_view erro, const std::function<void(std::ostream&)>& resto);
    void Escreve(std::ostream& saida, const TPares& chave, std::string_view erro,
                 const std::function<void(std::ostream&)>& resto) const;

    TContexto& ctx_;
    std::string tabela_, etapa_;
    std::optional<TSaidaEmArquivo> arquivo_;  // opened with the first line
    bool avisado_ = false;
};

/// To be called before the database loses what the file has taken: brings it down to the disk. Throws
/// std::system_error.
void LevaRejeitadosAoDisco(const TContexto& ctx);

}  // namespace wkd
