#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// A database of one driver for one test.
class TBancoDeTeste {
  public:
    virtual ~TBancoDeTeste() = default;
    virtual TConnection& Conexao() = 0;
    /// Another connection to the same database, open.
    virtual std::unique_ptr<TConnection> Outra() = 0;
    /// The server's own words for a column type that is written as Firebird has it; empty for one that it lacks.
    virtual std::string Tipo(std::string_view firebird) const = 0;
};

/// A driver and a way to reach its server.
struct TAmbienteDeBanco {
    std::string nome;
    std::function<bool()> instalado;
    std::function<std::unique_ptr<TBancoDeTeste>()> cria;
    bool completo = true;              // else only the neutral part of the contract can be asked of the server
    long memoriaPorBlob = 0;           // how often the driver's own library holds a value in memory
    std::int64_t codigoSemNumero = 0;  // native code of errors that the server does not number
};

/// For test reports.
inline void PrintTo(const TAmbienteDeBanco& ambiente, std::ostream* saida) { *saida << ambiente.nome; }

/// Every environment that the contract of TConnection is tested in.
std::vector<TAmbienteDeBanco> AmbientesDeBanco();

}  // namespace wkd
