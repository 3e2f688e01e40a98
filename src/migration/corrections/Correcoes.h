#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "context/Contexto.h"

namespace wkd {

/// Section of TINI with the names of those that the database has seen.
inline constexpr std::string_view kSecaoDasCorrecoes = "AtualizaQuery";

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

/// Makes COD_RELACIONA of TCRTLCHQ and TCHQCANC a text of 11 characters. The first failing step ends the sequence and
/// its error is thrown, after key and indexes that the steps took away have been created again.
void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos, std::size_t& feitos);

/// One-off corrections of past releases that run before the tables; each runs once per database.
void QuerysAnteriores(TContexto& ctx);
/// One-off corrections that run after the tables. On an older-generation database the earlier ones run first, here.
void QuerysPosteriores(TContexto& ctx);

/// Corrections that a run with these options would execute, by name; the database has seen the others.
std::vector<std::string_view> CorrecoesPendentes(TContexto& ctx);
/// Whether one of them, before the tables, names the table.
bool CorrecaoMexeAntes(TContexto& ctx, std::string_view tabela);

}  // namespace wkd
