#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// What a warning is for.
enum class TPeso {
    Nota,    // plan and report tell it
    Alerta,  // and a run at its start
    Impede   // the run would not get through: a finding of the plan
};

/// Something about the database as a whole, with the number and what to do.
struct TAviso {
    std::string tipo;  // one word for machines, such as "transacoes-paradas"
    std::string texto;
    TPeso peso = TPeso::Nota;
};
using TAvisos = std::vector<TAviso>;

/// Bytes that the database's disk must have left: more than the engine keeps unwritten.
inline constexpr std::uintmax_t kDiscoMinimo = 64u * 1024 * 1024;

/// Versions of one table that a Firebird database keeps, and from how many on that is said.
inline constexpr std::int64_t kFormatos = 255;
inline constexpr std::int64_t kFormatosPerto = 200;

/// What is out of bounds of what was asked; what is not known is not judged.
TAvisos AvisosDaSaude(const TSaude& saude, const TCapacidades& capacidades);

/// Without a statement: the driver's part and the disk.
TAvisos AvisosDoDriver(TConnection& conexao);
/// The catalogue's part.
TAvisos AvisosDoCatalogo(TConnection& conexao);
/// Of tables by name, with how often each was altered.
TAvisos AvisosDosFormatos(const std::map<std::string, std::int64_t>& formatos);

}  // namespace wkd
