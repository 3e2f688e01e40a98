#pragma once

#include <string>

#include "connection/Connection.h"

namespace wkd {

/// How the values of a column of the backup and one of the table are compared by content on SQL Server.
struct TExpressoes {
    std::string b, t;
    bool converte = false;    // a value of another form can make the server refuse the comparison
    bool soPresenca = false;  // only whether there is a value
    bool bytes = false;
};

/// `nomeB` and `nomeT` are the columns as statements take them. Texts are compared by their bytes, so that letter
/// case, accents and blanks at the end count whatever the collation says.
TExpressoes ExpressoesSqlServer(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                const std::string& nomeT);

/// Condition that one is another value than the other, NULL being one. Of bytes the server takes those for equal that
/// differ in zeros at the end alone, so that their number counts, too.
std::string DiferemSqlServer(const std::string& b, const std::string& t, bool bytes);

/// Bytes that SomaSqlServer looks at; servers before 2016 make a hash of no more.
inline constexpr int kBytesDoHash = 8000;
/// Sum over a column that hardly two contents have in common, of their first bytes and their sizes.
std::string SomaSqlServer(const std::string& expressao);

}  // namespace wkd
