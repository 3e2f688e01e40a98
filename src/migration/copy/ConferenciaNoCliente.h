#pragma once

#include <string>

#include "connection/Connection.h"

namespace wkd {

/// A column and where to read it: what follows "from", and the table's name there with ".".
struct TColunaLida {
    std::string origem, apelido;
    TColunaFisica coluna;
};

/// Whether a blob on one side is a text on the other, in a form that the server does not compare.
bool SoNoCliente(const TColunaFisica& b, const TColunaFisica& t, TTipoBanco banco);

/// Whether both columns hold the same contents, in whatever order. A text and a blob are the same by the bytes that the
/// text becomes in a blob, or by the text that the blob becomes. Contents are read in pieces. Throws TErroBanco.
bool IguaisNoCliente(TConnection& conexao, const TColunaLida& b, const TColunaLida& t);

}  // namespace wkd
