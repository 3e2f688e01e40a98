#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "Connection.h"
#include "ParametrosConexao.h"

namespace wkd {

/// Connection of the driver for a kind of server, not opened yet; the kind is the settings file's text. Throws
/// TErroConfiguracao for an unknown kind and for one without driver.
std::unique_ptr<TConnection> CriaConexao(std::string_view tipoBanco, const TParametrosConexao& parametros);

using TFabricaDeConexao =
    std::function<std::unique_ptr<TConnection>(std::string_view tipoBanco, const TParametrosConexao& parametros)>;

}  // namespace wkd
