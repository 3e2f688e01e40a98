#pragma once

#include <string>
#include <string_view>

namespace wkd {

class TDataModulo;

/// Copy of customer-defined dictionary rows into a dictionary table.
struct TMescla {
    std::string_view destino;   // "SATRIB"
    std::string_view de;        // "from satrib_user"
    std::string condicao = {};  // what follows "where"; empty copies all
};

/// "INSERT INTO " + destino + " SELECT * " + de + " where " + condicao, as long as both tables have the same columns
/// in the same order; else the columns common to both are named, and required ones
/// that the customer's rows lack, which get their default, else "0", date and time. When rows are in the destination
/// already (by its primary key, else by the columns that identify a row of it), a condition that leaves them out is
/// added. Reads the database in the connection's open transaction. Throws TErroBanco.
std::string ComandoDeMescla(TDataModulo& dm, const TMescla& mescla);

}  // namespace wkd
