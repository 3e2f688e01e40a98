#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "connection/Connection.h"
#include "odbc/Odbc.h"
#include "odbc/SessaoOdbc.h"

namespace wkd {

/// One "?" of a statement: its value in the form that the driver takes, which must stay where it is until the
/// statement has run.
class TParametroOdbc {
  public:
    /// Takes the value over in the type of the column that it goes to; without one, in the value's own type. What the
    /// column cannot hold whole throws TErroConversao; a text too long is left to the server to refuse.
    void Define(const TValor& valor, const TColunaFisica* coluna);
    /// A content read from `fonte` while the statement runs.
    void DefineFluxo(TLeitorBytes& fonte, const TColunaFisica* coluna);
    /// Tells the driver where the value is, if that or its form has changed since: a statement whose parameters are
    /// bound anew is prepared anew, which costs two turns to the server.
    void Liga(TInstrucaoOdbc& instrucao, SQLUSMALLINT numero, std::string_view comando);
    /// For another statement handle.
    void Desliga() { ligado_.reset(); }
    /// Sends the content that the driver asks for.
    void EnviaConteudo(TInstrucaoOdbc& instrucao, std::string_view comando);

  private:
    void Nulo(const TColunaFisica* coluna);
    void DefineDaColuna(const TValor& valor, const TColunaFisica& coluna);
    void DefineDoValor(const TValor& valor);
    void Inteiro(std::int64_t v);
    void NumeroEmTexto(std::string_view numero, int escala);
    void Real(double v, bool simples);
    void Logico(bool v);
    void Texto(std::string_view utf8, bool longo);
    void Bytes(std::string_view bytes, bool longo);
    void Data(TData data);
    void Momento(const TDataHora& momento, int escala);
    void Conteudo(std::shared_ptr<const TConteudo> conteudo, bool texto);
    void Fluxo(TLeitorBytes& fonte, bool texto);
    void MedeFluxo();

    struct TForma {
        SQLSMALLINT tipoC = SQL_C_WCHAR, tipoSql = SQL_WVARCHAR;
        SQLULEN tamanho = 1;
        SQLSMALLINT escala = 0;
        void* onde = nullptr;  // of the members below, the value's
        SQLLEN bytes = 0;      // that there is room for, where the length varies

        bool operator==(const TForma&) const = default;
    };
    void Forma(SQLSMALLINT tipoC, SQLSMALLINT tipoSql, SQLULEN tamanho, SQLSMALLINT escala, void* onde,
               SQLLEN bytes = 0) {
        forma_ = {tipoC, tipoSql, tamanho, escala, onde, bytes};
    }

    TForma forma_;
    std::optional<TForma> ligado_;  // as the driver knows it
    SQLLEN indicador_ = SQL_NULL_DATA;

    std::string bytes_;
    std::u16string texto_;
    std::int64_t inteiro_ = 0;
    double real_ = 0;
    unsigned char logico_ = 0;
    SQL_DATE_STRUCT data_{};
    SQL_TIMESTAMP_STRUCT momento_{};

    std::shared_ptr<const TConteudo> conteudo_;
    std::unique_ptr<TLeitorBytes> leitor_;  // of conteudo_
    TLeitorBytes* fluxo_ = nullptr;
    bool conteudoTexto_ = false;
};

}  // namespace wkd
