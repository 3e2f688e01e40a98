#pragma once

#include <string>
#include <string_view>

namespace wkd {

/// Scrambles a password for the settings file: reversible, the user name takes part, printable output without
/// characters that mean something in an INI file. Empty stays empty. This keeps the password from a casual reader
/// only; who has the file and this program has the password.
std::string MontaSenha(std::string_view usuario, std::string_view senha);
/// Inverse of MontaSenha. A text that MontaSenha did not make comes back as it is.
std::string DesmontaSenha(std::string_view usuario, std::string_view texto);

}  // namespace wkd
