#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "odbc/LexicoSql.h"
#include "odbc/MetadadosOdbc.h"
#include "odbc/ParametroOdbc.h"
#include "odbc/SessaoOdbc.h"
#include "odbc/ValorOdbc.h"
#include "rows/WKDQuery.h"

namespace wkd {

class TComandoOdbc : public TComando {
  public:
    TComandoOdbc(std::shared_ptr<TSessaoOdbc> sessao, std::string_view sql);
    ~TComandoOdbc() override { Fecha(); }

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

    /// Reads the rest of the rows into memory: another statement needs the connection.
    void GuardaLinhas();

  private:
    struct TParametro {
        TValor valor;
        TLeitorBytes* fluxo = nullptr;
        bool fluxoLido = false;
    };

    template <class TOperacao>
    void Tenta(TOperacao operacao);
    void PreparaEm(const std::shared_ptr<TLigacaoOdbc>& ligacao);
    void DescreveAlvos();
    void EsqueceLigacoes() {
        for (auto& posicao : posicoes_) posicao.Desliga();
    }
    void LigaParametros();
    void Roda(bool sozinho);
    void DescreveColunas();
    void Adianta();
    bool Busca();
    TLinha LinhaInteira();
    void CompletaAte(std::size_t campo);
    void Falhou(const TErroBanco& erro) noexcept;

    std::shared_ptr<TSessaoOdbc> sessao_;
    std::string sql_;
    TComandoSql analise_;
    std::string texto_;  // as the driver takes it
    TAlvosDosParametros alvos_;
    bool alvosLidos_ = false;
    std::vector<TColunaFisica> colunasDaTabela_;
    std::vector<TParametro> valores_;
    std::vector<TParametroOdbc> posicoes_;  // one a "?"

    std::unique_ptr<TInstrucaoOdbc> instrucao_;
    std::shared_ptr<TLigacaoOdbc> ligacao_;  // of instrucao_
    bool aberto_ = false;                    // rows are still to be fetched
    std::vector<TCampo> campos_;
    std::vector<TDescricaoOdbc> descricoes_;
    bool naLinha_ = false;          // the current row is still the driver's
    std::deque<TLinha> guardadas_;  // read ahead
    TLinha atual_;                  // what has been read of the current row
};

}  // namespace wkd
