#pragma once

#include "Erros.h"

namespace wkd {

/// Runs `operacao` and swallows what it throws, but for a lost connection: nothing could follow on it.
template <class TOperacao>
void Tolera(TOperacao&& operacao) {
    try {
        operacao();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
    } catch (const std::exception&) {  // a text that the connection's character set cannot hold
    }
}

}  // namespace wkd
