#include "dialect/Dialeto.h"

#include "values/Texto.h"

namespace wkd {

std::string_view ComandoCommit(TTipoBanco banco) {
    switch (banco) {
        case TTipoBanco::tbInterbase:
        case TTipoBanco::tbMySQL:
            return "commit;";
        case TTipoBanco::tbOracle:
            return "commit";
        default:
            return "";
    }
}

std::string_view ComandoRollback(TTipoBanco banco) {
    switch (banco) {
        case TTipoBanco::tbInterbase:
        case TTipoBanco::tbMySQL:
            return "ROLLBACK;";
        case TTipoBanco::tbOracle:
            return "ROLLBACK";
        default:
            return "";
    }
}

std::string AjustaQuery(std::string_view comando, TTipoBanco banco) {
    if (banco == TTipoBanco::tbInterbase) return Troca(comando, " TOP ", " FIRST ");
    if (banco == TTipoBanco::tbSQLServer) return Troca(comando, " FIRST ", " TOP ");
    return std::string(comando);
}

std::string ChaveAlteraColuna(std::string_view coluna, TTipoBanco banco) {
    const std::string nome(coluna);
    switch (banco) {
        case TTipoBanco::tbInterbase:
            return " alter " + nome + " type ";
        case TTipoBanco::tbMySQL:
        case TTipoBanco::tbOracle:
            return " modify  " + nome;
        case TTipoBanco::tbSQLServer:
            return " alter COLUMN " + nome;
        default:
            return "";
    }
}

std::string AjustaCriaTabela(std::string_view comando, TTipoBanco banco) {
    if (banco != TTipoBanco::tbSQLServer) return std::string(comando);
    return Troca(Troca(comando, "BLOB", "IMAGE"), "TIMESTAMP", "datetime");
}

bool TabelaListadaNoOracle(std::string_view tabela) {
    const std::string inicial = Maiusculas(tabela.substr(0, 1));
    return !inicial.empty() && std::string_view("BCST").find(inicial) != std::string_view::npos;
}

}  // namespace wkd
