#pragma once

#include <exception>
#include <string>

namespace wkd {

/// What a failed backup, proof or restore says: the cause in one line, with the next step to take, before the
/// server's own words.
std::string ExplicaFalha(const std::exception& erro);

}  // namespace wkd
