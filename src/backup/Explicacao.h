#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "values/Erros.h"

namespace wkd {

/// What there is to do about a database, its file or its service that failed so: cause and next step in one line.
std::string_view Explicacao(TFalha falha);

/// What a failed backup, proof or restore says: the cause in one line, with the next step to take, before the
/// server's own words.
std::string ExplicaFalha(const std::exception& erro);

}  // namespace wkd
