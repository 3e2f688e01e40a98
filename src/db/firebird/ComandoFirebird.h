#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "firebird/SessaoFirebird.h"
#include "firebird/ValorFirebird.h"
#include "rows/WKDQuery.h"

namespace wkd {

/// Statement handle of one attachment, allocated and prepared by the constructor, freed by the destructor.
class TInstrucaoFirebird {
  public:
    /// `texto` is in the connection's character set; `comando` is what errors name.
    TInstrucaoFirebird(TSessaoFirebird& sessao, TTransacaoFirebird& transacao, const std::string& texto,
                       std::string_view comando);
    ~TInstrucaoFirebird();
    TInstrucaoFirebird(const TInstrucaoFirebird&) = delete;
    TInstrucaoFirebird& operator=(const TInstrucaoFirebird&) = delete;

    isc_stmt_handle* Handle() { return &handle_; }
    TDescritorFirebird& Colunas() { return colunas_; }
    unsigned Geracao() const { return geracao_; }

  private:
    void Aloca(TSessaoFirebird& sessao, std::string_view comando);

    isc_stmt_handle handle_ = 0;
    unsigned geracao_;
    TDescritorFirebird colunas_;
};

class TComandoFirebird : public TComando {
  public:
    /// Where a cursor reads while the program has no transaction open: in a transaction of its own, which is that of
    /// the preparation the first time, or, for the system tables, in the session's.
    enum class TLeitura { Propria, Catalogo };

    TComandoFirebird(std::shared_ptr<TSessaoFirebird> sessao, std::string_view sql,
                     TLeitura leitura = TLeitura::Propria);
    ~TComandoFirebird() override { Fecha(); }

    using TComando::Atribui;
    const std::vector<std::string>& Parametros() const override { return analise_.parametros; }
    void Atribui(std::size_t parametro, const TValor& valor) override;
    void AtribuiFluxo(std::size_t parametro, TLeitorBytes& fonte) override;
    std::int64_t Executa() override;
    void Abre() override;
    bool Proximo() override;
    void Fecha() noexcept override;
    const std::vector<TCampo>& Campos() const override { return campos_; }
    TValor Valor(std::size_t campo) override;

  private:
    struct TParametro {
        TValor valor;
        TLeitorBytes* fluxo = nullptr;
        bool fluxoLido = false;
    };
    /// Place of a "?" in the statement.
    struct TPosicao {
        XSQLVAR descrita;
        std::vector<char> memoria;
        ISC_SHORT nulo = 0;
    };
    enum class TEspecie { Outra, Consulta, Insercao, LinhaUnica, Definicao };
    enum class TCursor { Fechado, Aberto, LinhaUnica };

    void Prepara();
    void DescreveParametros();
    /// Whole name of a column of the result whose description holds its beginning alone.
    std::string NomeDaColuna(std::size_t posicao);
    TEspecie PerguntaEspecie();
    TTransacaoFirebird& Transacao(TTransacaoFirebird::TModo modo);
    TTransacaoFirebird* TransacaoDoCursor();
    void Roda(TTransacaoFirebird& transacao, XSQLDA* saida);
    void Codifica(TTransacaoFirebird& transacao);
    void CodificaPosicao(std::size_t posicao, TTransacaoFirebird& transacao);
    void GravaBlob(std::size_t posicao, TTransacaoFirebird& transacao);
    void GravaIdDeBlob(std::size_t posicao, const ISC_QUAD& id);
    std::int64_t LinhasTocadas();

    std::shared_ptr<TSessaoFirebird> sessao_;
    std::string sql_;
    TLeitura leitura_;
    TComandoSql analise_;
    std::vector<TParametro> valores_;
    std::unique_ptr<TInstrucaoFirebird> instrucao_;
    TEspecie especie_ = TEspecie::Outra;
    TDescritorFirebird entrada_;
    std::vector<TPosicao> posicoes_;
    std::vector<TCampo> campos_;
    std::optional<TTransacaoFirebird> propria_;
    TCursor cursor_ = TCursor::Fechado;
};

}  // namespace wkd
