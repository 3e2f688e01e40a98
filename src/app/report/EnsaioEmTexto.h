#pragma once

#include <string>

#include "Ensaio.h"

namespace wkd {

/// A rehearsal for people and for programs (one JSON object).
std::string EnsaioEmTexto(const TEnsaio& ensaio);
std::string EnsaioEmJson(const TEnsaio& ensaio);

}  // namespace wkd
