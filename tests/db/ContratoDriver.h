#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "AmbienteDeBanco.h"

namespace wkd {

/// What every driver of TConnection keeps to, tried on a new database of each environment.
class ContratoDriver : public testing::TestWithParam<TAmbienteDeBanco> {
  protected:
    void SetUp() override {
        if (!GetParam().instalado()) GTEST_SKIP() << GetParam().nome << " is not installed here";
        banco_ = GetParam().cria();
    }

    TConnection& Conexao() { return banco_->Conexao(); }
    std::string Tipo(std::string_view firebird) const { return banco_->Tipo(firebird); }
    bool Completo() const { return GetParam().completo; }
    void Executa(std::string_view sql) { Conexao().ExecuteDirect(sql); }

    /// First column of the first row.
    TValor Um(std::string_view sql) {
        auto comando = Conexao().Prepara(sql);
        comando->Abre();
        return comando->Proximo() ? comando->Valor(0) : TValor();
    }

    /// Rows as text, columns joined by "|" and rows by ",".
    std::string Linhas(std::string_view sql) {
        auto comando = Conexao().Prepara(sql);
        std::string texto;
        for (comando->Abre(); comando->Proximo();) {
            if (!texto.empty()) texto += ',';
            for (std::size_t i = 0; i < comando->Campos().size(); ++i)
                texto += (i > 0 ? "|" : "") + comando->Valor(i).ComoTexto();
        }
        return texto;
    }

    std::unique_ptr<TBancoDeTeste> banco_;
};

/// The error that `operacao` raises; nothing when it raises none.
template <class TOperacao>
std::optional<TErroBanco> ErroDe(TOperacao operacao) {
    try {
        operacao();
    } catch (const TErroBanco& erro) {
        return erro;
    }
    return std::nullopt;
}

/// True when the value or text is refused, be it by the client or by the server.
template <class TOperacao>
bool Recusa(TOperacao operacao) {
    try {
        const auto erro = ErroDe(operacao);
        return erro && erro->Falha() == TFalha::Conversao;
    } catch (const TErroConversao&) {
        return true;
    }
}

}  // namespace wkd
