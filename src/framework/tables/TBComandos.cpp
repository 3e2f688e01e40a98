#include "tables/TBComandos.h"

#include <algorithm>
#include <string>

#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kPalavras =
    " ADD ADMIN ALL ALTER AND ANY AS AT AVG BEGIN BETWEEN BIGINT BINARY BIT_LENGTH BLOB BOOLEAN BOTH BY CASE CAST"
    " CHAR CHARACTER CHARACTER_LENGTH CHAR_LENGTH CHECK CLOSE COLLATE COLUMN COMMIT CONNECT CONSTRAINT CORR COUNT"
    " COVAR_POP COVAR_SAMP CREATE CROSS CURRENT CURRENT_CONNECTION CURRENT_DATE CURRENT_ROLE CURRENT_TIME"
    " CURRENT_TIMESTAMP CURRENT_TRANSACTION CURRENT_USER CURSOR DATE DAY DEC DECFLOAT DECIMAL DECLARE DEFAULT DELETE"
    " DELETING DETERMINISTIC DISCONNECT DISTINCT DOUBLE DROP ELSE END ESCAPE EXECUTE EXISTS EXTERNAL EXTRACT FALSE"
    " FETCH FILTER FLOAT FOR FOREIGN FROM FULL FUNCTION GDSCODE GLOBAL GRANT GROUP HAVING HOUR IN INDEX INNER"
    " INSENSITIVE INSERT INSERTING INT INT128 INTEGER INTO IS JOIN LATERAL LEADING LEFT LIKE LOCAL LOCALTIME"
    " LOCALTIMESTAMP LONG LOWER MAX MERGE MIN MINUTE MONTH NATIONAL NATURAL NCHAR NO NOT NULL NUMERIC OCTET_LENGTH"
    " OF OFFSET ON ONLY OPEN OR ORDER OUTER OVER PARAMETER PLAN POSITION POST_EVENT PRECISION PRIMARY PROCEDURE"
    " PUBLICATION RDB$DB_KEY RDB$ERROR RDB$GET_CONTEXT RDB$GET_TRANSACTION_CN RDB$RECORD_VERSION RDB$ROLE_IN_USE"
    " RDB$SET_CONTEXT RDB$SYSTEM_PRIVILEGE REAL RECORD_VERSION RECREATE RECURSIVE REFERENCES REGR_AVGX REGR_AVGY"
    " REGR_COUNT REGR_INTERCEPT REGR_R2 REGR_SLOPE REGR_SXX REGR_SXY REGR_SYY RELEASE RESETTING RETURN"
    " RETURNING_VALUES RETURNS REVOKE RIGHT ROLLBACK ROW ROWS ROW_COUNT SAVEPOINT SCROLL SECOND SELECT SENSITIVE SET"
    " SIMILAR SMALLINT SOME SQLCODE SQLSTATE START STDDEV_POP STDDEV_SAMP SUM TABLE THEN TIME TIMESTAMP"
    " TIMEZONE_HOUR TIMEZONE_MINUTE TO TRAILING TRIGGER TRIM TRUE UNBOUNDED UNION UNIQUE UNKNOWN UPDATE UPDATING"
    " UPPER USER USING VALUE VALUES VARBINARY VARCHAR VARIABLE VARYING VAR_POP VAR_SAMP VIEW WHEN WHERE WHILE WINDOW"
    " WITH WITHOUT YEAR ";

}  // namespace

bool PalavraReservada(std::string_view nome) {
    return kPalavras.find(' ' + std::string(nome) + ' ') != std::string_view::npos;
}

namespace {

std::int64_t BytesPorLetra(TConnection& conexao) {
    return std::max<std::int64_t>(1, ContaRegistros(conexao,
                                                    "select max(c.rdb$bytes_per_character) as total from rdb$database d"
                                                    " join rdb$character_sets c on c.rdb$character_set_name ="
                                                    " d.rdb$character_set_name"));
}

/// Where a value ends that begins at the next multiple of `passo`.
std::int64_t Depois(std::int64_t onde, std::int64_t passo, std::int64_t bytes) {
    return (onde + passo - 1) / passo * passo + bytes;
}

}  // namespace

std::int64_t BytesDoRegistro(TConnection& conexao, const std::vector<TColunaDicionario>& colunas) {
    const std::int64_t letra = BytesPorLetra(conexao);
    const auto fisicas = std::ranges::count_if(colunas, ColunaFisica);
    std::int64_t bytes = (fisicas + 32) / 32 * 4;  // a bit a column says that it is NULL
    for (const auto& coluna : colunas) {
        if (!ColunaFisica(coluna)) continue;
        const std::string tipo = TipoNormal(TipoDaColuna(coluna.tipo, coluna.tamanho, TTipoBanco::tbInterbase));
        if (tipo.starts_with("varchar"))
            bytes = Depois(bytes, 2, 2 + letra * TamanhoDoTexto(coluna.tamanho));
        else if (tipo == "integer" || tipo == "date" || tipo == "time")
            bytes = Depois(bytes, 4, 4);
        else
            bytes = Depois(bytes, 8, 8);
    }
    return bytes;
}

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
