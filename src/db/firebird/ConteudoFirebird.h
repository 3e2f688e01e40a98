#pragma once

#include <ibase.h>

#include <memory>
#include <optional>

#include "firebird/SessaoFirebird.h"

namespace wkd {

/// What a blob column holds: a text in some character set, or bytes that pass unchanged.
struct TTipoBlob {
    bool texto = false;
    int conjunto = 1;  // number of the server's set; OCTETS for bytes
    bool operator==(const TTipoBlob&) const = default;
};
TTipoBlob TipoDoBlob(const XSQLVAR& var);

/// Content of a blob column, text as UTF-8. A blob of a table stays on the server and is read in a transaction of its
/// own unless one is open. One that the server made for `transacao` alone (a text turned into the connection's
/// character set) is copied at once: to memory, and from 1 MB on to a temporary file.
std::shared_ptr<const TConteudo> ConteudoDoBlob(const std::shared_ptr<TSessaoFirebird>& sessao, const XSQLVAR& var,
                                                TTransacaoFirebird& transacao);

/// Id of a content that is a blob of the same database and kind, which the server copies by itself; null otherwise.
const ISC_QUAD* IdDoConteudo(const TConteudo& conteudo, const TSessaoFirebird& sessao, TTipoBlob tipo);

/// Content as the bytes of such a blob: `bytes` is UTF-8, or Windows-1252 when it is not that, for a text.
std::string BytesDoBlob(TTipoBlob tipo, std::string_view bytes);

/// Makes a new blob from a stream. For a text blob the stream is UTF-8 (pieces that are not, Windows-1252), turned into
/// the character set of the blob. Throws TErroConversao for a character without a place there.
ISC_QUAD CriaBlob(TSessaoFirebird& sessao, TTransacaoFirebird& transacao, TLeitorBytes& fonte, TTipoBlob tipo,
                  std::string_view comando);

}  // namespace wkd
