#pragma once

#include <span>
#include <string_view>

#include "TipoBanco.h"

namespace wkd {

/// One statement in the form of SQL Server and in that of every other kind; empty where a kind has none.
struct TTextoPorTipo {
    std::string_view sqlServer, outros;

    constexpr std::string_view Para(TTipoBanco banco) const {
        return banco == TTipoBanco::tbSQLServer ? sqlServer : outros;
    }
};

/// A named correction: one statement, or a row of them that ends at the first that fails.
struct TCorrecao {
    std::string_view nome;  // its key in TINI
    TTextoPorTipo comando;
    bool ajustada = false;  // the row limit is rewritten for the server
    std::span<const TTextoPorTipo> passos = {};

    constexpr bool ExisteNo(TTipoBanco banco) const { return !passos.empty() || !comando.Para(banco).empty(); }
};

std::span<const TCorrecao> CorrecoesAnteriores();
std::span<const TCorrecao> CorrecoesPosteriores();

}  // namespace wkd
