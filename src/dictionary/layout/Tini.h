#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

// TINI, the settings table inside the business database: one row per section and key, all of them texts. Whoever calls
// knows that the table is there.

namespace wkd {

/// A null connection reads nothing and writes nothing.
std::string LeParametro(std::string_view secao, std::string_view chave, std::string_view padrao, TConnection* conexao);
void GravaParametro(std::string_view secao, std::string_view chave, std::string_view valor, TConnection* conexao);

struct TParametro {
    std::string secao, chave, valor;
};
/// All of the sections, in the order of their keys.
std::vector<TParametro> Parametros(TConnection& conexao, std::initializer_list<std::string_view> secoes);
/// Keys that the section does not have, with one statement prepared; in the open transaction, when there is one.
void IncluiParametros(TConnection& conexao, const std::vector<TParametro>& parametros);
/// With one statement for many keys; in the open transaction, when there is one.
void ApagaParametros(TConnection& conexao, std::string_view secao, const std::vector<std::string>& chaves);
/// A statement that gives a key that is there its parameter pVALOR, again and again.
std::unique_ptr<TComando> PreparaValor(TConnection& conexao, std::string_view secao, std::string_view chave);

}  // namespace wkd
