#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BancoTemporario.h"
#include "TelaDeTeste.h"
#include "datamodule/DataModulo.h"
#include "firebird/ConexaoFirebird.h"
#include "rows/WKDQuery.h"

namespace wkd {

/// A data module on one Firebird file, reached through an alias of every kind: the dialect is the alias's, the
/// server always the same. Statements are recorded from the first connect on.
class TDataModuloTest : public ::testing::Test {
  protected:
    TDataModuloTest() {
        for (const std::string tipo : {"tbInterbase", "tbMySQL", "tbOracle", "tbSQLServer", "tbODBC"})
            ini_.INIGravaString(tipo, "TipoBanco", tipo);
        dm_.SQLConnection1.Observa([this](std::string_view sql) { comandos_.emplace_back(sql); });
        Conecta("tbInterbase");
    }

    void Conecta(std::string_view alias) {
        dm_.SQLConnection1.SetAlias(alias);
        dm_.SQLConnection1.Open();
        comandos_.clear();
    }
    /// The dialect of another kind on the connection that is open.
    void Fala(std::string_view alias) { dm_.SQLConnection1.SetAlias(alias); }

    void Executa(std::string_view sql) {
        const TResultado resultado = dm_.Executa(sql);
        ASSERT_TRUE(resultado) << sql << ": " << resultado.Mensagem();
    }

    /// Rows of a query as "1|A;2|<null>".
    std::string Linhas(std::string_view sql) {
        std::string texto;
        TWKDQuery consulta(dm_.SQLConnection1, sql);
        for (consulta.Open(); !consulta.Eof(); consulta.Next()) {
            texto += texto.empty() ? "" : ";";
            for (std::size_t i = 0; i < consulta.Campos().size(); ++i) {
                const TValor valor = consulta.Comando().Valor(i);
                texto += (i ? "|" : "") + (valor.Nulo() ? "<null>" : valor.ComoTexto());
            }
        }
        return texto;
    }

    bool Executou(std::string_view sql) const { return std::ranges::find(comandos_, sql) != comandos_.end(); }

    TBancoTemporario banco_;
    TAliases ini_{banco_.Arquivo().parent_path() / "WKD.ini"};
    TTelaDeTeste tela_;
    std::vector<std::string> comandos_;
    TDataModulo dm_{ini_, tela_, [this](auto...) { return CriaConexaoFirebird(banco_.Parametros()); }};
};

}  // namespace wkd
