#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "odbc/Odbc.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

/// A text on its way to the driver, which takes UTF-16 whatever the locale is.
class TTextoOdbc {
  public:
    explicit TTextoOdbc(std::string_view utf8) : texto_(TextoLargo(utf8)) {}
    SQLWCHAR* Dados() { return reinterpret_cast<SQLWCHAR*>(texto_.data()); }
    template <class TTamanho = SQLSMALLINT>
    TTamanho Tamanho() const {
        return static_cast<TTamanho>(texto_.size());
    }
    std::size_t Bytes() const { return texto_.size() * sizeof(SQLWCHAR); }

  private:
    std::u16string texto_;
};

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));

/// A text of so many characters from the driver.
inline std::string TextoLido(const SQLWCHAR* texto, SQLLEN tamanho) {
    return TextoEstreito({reinterpret_cast<const char16_t*>(texto), static_cast<std::size_t>(tamanho)});
}

/// A diagnostic record of a handle.
struct TRegistroOdbc {
    std::string sqlstate, texto;
    SQLINTEGER codigo = 0;
};

/// The error that the records tell, their texts joined. `comando` is the statement; empty while a connection is being
/// opened. `morta`: the driver knows that the connection is gone, whatever the records say.
TErroBanco ErroDosRegistros(std::vector<TRegistroOdbc> registros, std::string_view comando, bool morta);

/// The error that a handle's diagnostics tell. `ligacao` is the connection, when it is open.
TErroBanco ErroOdbc(SQLSMALLINT tipo, SQLHANDLE handle, std::string_view comando, SQLHDBC ligacao);

/// "No data" is how drivers report a success without rows, such as DDL.
inline bool Correu(SQLRETURN retorno) { return SQL_SUCCEEDED(retorno) || retorno == SQL_NO_DATA; }

/// Throws the error of a call for an open connection unless it went well.
inline void ConfereOdbc(SQLRETURN retorno, SQLHDBC ligacao, std::string_view comando) {
    if (!Correu(retorno)) throw ErroOdbc(SQL_HANDLE_DBC, ligacao, comando, ligacao);
}

}  // namespace wkd
