#pragma once

#include <string_view>

#include "BancoTemporario.h"
#include "TelaDeTeste.h"
#include "datamodule/DataModulo.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {

/// A data module, connected through an alias to an empty Firebird database.
class TModuloTemporario {
  public:
    /// Default character set of the database, NONE when empty.
    explicit TModuloTemporario(std::string_view conjunto = "UTF8") : banco_(conjunto) {
        Fala("tbInterbase");
        modulo_.SQLConnection1.Open();
        modulo_.AtualizaListaDeTabelas();
    }

    TDataModulo& Modulo() { return modulo_; }
    TTelaDeTeste& Tela() { return tela_; }
    /// Folder of the database and of the settings file.
    std::filesystem::path Pasta() const { return banco_.Arquivo().parent_path(); }
    /// The dialect of another kind of server on the same connection.
    void Fala(std::string_view tipoBanco) {
        ini_.INIGravaString(tipoBanco, "TipoBanco", tipoBanco);
        modulo_.SQLConnection1.SetAlias(tipoBanco);
    }

  private:
    TBancoTemporario banco_;
    TAliases ini_{banco_.Arquivo().parent_path() / "WKD.ini"};
    TTelaDeTeste tela_;
    TDataModulo modulo_{ini_, tela_, [this](auto...) { return CriaConexaoFirebird(banco_.Parametros()); }};
};

}  // namespace wkd
