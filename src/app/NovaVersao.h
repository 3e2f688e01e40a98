#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "Aliases.h"
#include "ClienteHttp.h"

namespace wkd {

/// The version named at the start of `texto` when it is newer than this program's.
std::optional<QString> VersaoMaisNova(const QByteArray& texto);

/// Asks the address under "UrlVersao" of the settings file's section "MENU" for the newest version of the program.
/// Without address nothing is contacted, and what fails is silent. Returns at once.
void VerificaNovaVersao(const TAliases& aliases, TClienteHttp& http, std::function<void(const QString&)> achou);

}  // namespace wkd
