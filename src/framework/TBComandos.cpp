#include "TBComandos.h"

#include <algorithm>

#include "PalavrasReservadas.h"
#include "Texto.h"

namespace wkd {

namespace {

bool Regular(std::string_view nome, TTipoBanco banco) {
    if (banco == TTipoBanco::tbSQLServer) return false;        // it takes every name in quotes
    const bool minusculas = banco != TTipoBanco::tbInterbase;  // Firebird folds unquoted names to capitals
    const auto letra = [&](char c) { return (c >= 'A' && c <= 'Z') || (minusculas && c >= 'a' && c <= 'z'); };
    const auto resto = [&](char c) { return letra(c) || (c >= '0' && c <= '9') || c == '_' || c == '$'; };
    return !nome.empty() && (letra(nome.front()) || (minusculas && nome.front() == '_')) &&
           std::ranges::all_of(nome, resto) && !PalavraReservada(nome);
}

}  // namespace

std::string NomeDaBackup(std::string_view tabela) { return "B" + std::string(tabela); }

std::string NomeDeEnsaio(std::string_view tabela, TTipoBanco banco) {
    return banco == TTipoBanco::tbSQLServer ? "#" + std::string(tabela) : std::string();
}

std::string Identificador(std::string_view nome, TTipoBanco banco) {
    return Regular(nome, banco) ? std::string(nome) : '"' + Troca(nome, "\"", "\"\"") + '"';
}

std::string ComandoCriaIndice(const TIndice& indice, std::string_view tabela, TTipoBanco banco) {
    const bool firebird = banco == TTipoBanco::tbInterbase;
    std::vector<std::string> colunas;
    for (const auto& coluna : indice.colunas)
        colunas.push_back(Identificador(coluna, banco) + (indice.descendente && !firebird ? " desc" : ""));
    return std::string("create ") + (indice.unico ? "unique " : "") +
           (indice.descendente && firebird ? "descending " : "") + "index " + Identificador(indice.nome, banco) +
           " on " + std::string(tabela) +
           (indice.expressao.empty() ? " (" + Junta(colunas, ",") + ")" : " computed by (" + indice.expressao + ")");
}

std::string ComandoApagaIndice(const TIndice& indice, std::string_view tabela, TTipoBanco banco) {
    return "drop index " + Identificador(indice.nome, banco) +
           (banco == TTipoBanco::tbSQLServer ? " on " + std::string(tabela) : "");
}

namespace {

std::string ComandoMudaValor(std::string_view tabela, const TColunaFisica& coluna, TTipoBanco banco, bool exige) {
    const std::string inicio = "alter table " + std::string(tabela) + " alter ";
    if (banco == TTipoBanco::tbSQLServer)
        return inicio + "column " + coluna.nome + " " + coluna.tipoSql + (exige ? " not null" : " null");
    return inicio + coluna.nome + (exige ? " set not null" : " drop not null");
}

}  // namespace

std::string ComandoExigeValor(std::string_view tabela, const TColunaFisica& coluna, TTipoBanco banco) {
    return ComandoMudaValor(tabela, coluna, banco, true);
}

std::string ComandoDispensaValor(std::string_view tabela, const TColunaFisica& coluna, TTipoBanco banco) {
    return ComandoMudaValor(tabela, coluna, banco, false);
}

const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome) {
    const auto achada =
        std::ranges::find_if(colunas, [&](const TColunaFisica& coluna) { return IgualSemCaixa(coluna.nome, nome); });
    return achada == colunas.end() ? nullptr : &*achada;
}

}  // namespace wkd
