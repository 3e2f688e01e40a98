#pragma once

#include <string_view>

namespace wkd {

/// First argument of a process that rebuilds one table; the second is the number of its rows.
inline constexpr std::string_view kReconstroi = "--reconstroi";

/// Rebuilds a table of so many rows and prints the seconds and the peak of memory in MB.
void ReconstroiEInforma(int linhas);

}  // namespace wkd
