#pragma once

#include <functional>
#include <stdexcept>

#include "connection/Connection.h"

namespace wkd {

/// Connection to no server: keeps what it is asked to do, statement texts followed by their values in brackets.
class TConexaoGravada : public TConnection {
  public:
    std::vector<std::string> pedidos;
    std::size_t preparados = 0;
    TTabelaEmMemoria resposta;  // rows of every query
    /// Rows a statement touches; may throw. 1 when empty.
    std::function<std::int64_t(const std::string&)> aoExecutar;
    bool commitFalha = false;

    static TErroBanco Erro(const std::string& mensagem) {
        TErroBanco::TDados dados;
        dados.mensagem = mensagem;
        return TErroBanco(dados);
    }

    void Open() override {}
    void Close() noexcept override {}
    bool Connected() const override { return true; }
    TTipoBanco TipoBanco() const override { return TTipoBanco::tbInterbase; }
    std::string VersaoServidor() override { return "nenhum"; }
    void StartTransaction() override { pedidos.push_back("start"); }
    void Commit() override {
        pedidos.push_back("commit");
        if (commitFalha) throw Erro("commit recusado");
    }
    void Rollback() noexcept override { pedidos.push_back("rollback"); }
    bool InTransaction() const override { return false; }
    void MarcaPonto(std::string_view) override {}
    void VoltaAoPonto(std::string_view) override {}
    void ExecuteDirect(std::string_view sql) override { pedidos.emplace_back(sql); }
    std::unique_ptr<TComando> Prepara(std::string_view sql) override;
    std::vector<std::string> NomesDeTabelas() override { return {}; }
    std::vector<TColunaFisica> Colunas(std::string_view) override { return {}; }
    TColunasPorTabela TodasAsColunas() override { return {}; }
    TChavePrimaria ChavePrimaria(std::string_view) override { return {}; }
    std::vector<TIndice> Indices(std::string_view) override { return {}; }
    void Observa(TObservador) override {}
};

class TComandoGravado : public TComando {
  public:
    TComandoGravado(TConexaoGravada& conexao, std::string_view sql) : conexao_(conexao), sql_(sql) {
        for (std::size_t i = sql.find(':'); i != sql.npos; i = sql.find(':', i + 1))
            nomes_.emplace_back(sql.substr(i + 1, sql.find_first_of(",) ", i) - i - 1));
        valores_.resize(nomes_.size());
    }
    const std::vector<std::string>& Parametros() const override { return nomes_; }
    void Atribui(std::size_t parametro, const TValor& valor) override { valores_.at(parametro) = valor; }
    void AtribuiFluxo(std::size_t, TLeitorBytes&) override { throw std::logic_error("fora do uso destes testes"); }
    std::int64_t Executa() override {
        std::string pedido = sql_ + " [";
        for (std::size_t i = 0; i < valores_.size(); ++i) pedido += (i ? "|" : "") + valores_[i].ComoTexto();
        conexao_.pedidos.push_back(pedido + "]");
        return conexao_.aoExecutar ? conexao_.aoExecutar(conexao_.pedidos.back()) : 1;
    }
    void Abre() override { proxima_ = 0; }
    bool Proximo() override { return proxima_++ < conexao_.resposta.linhas.size(); }
    void Fecha() noexcept override {}
    const std::vector<TCampo>& Campos() const override { return conexao_.resposta.campos; }
    TValor Valor(std::size_t campo) override { return conexao_.resposta.linhas.at(proxima_ - 1).at(campo); }

  private:
    TConexaoGravada& conexao_;
    std::string sql_;
    std::vector<std::string> nomes_;
    std::vector<TValor> valores_;
    std::size_t proxima_ = 0;
};

inline std::unique_ptr<TComando> TConexaoGravada::Prepara(std::string_view sql) {
    ++preparados;
    return std::make_unique<TComandoGravado>(*this, sql);
}

}  // namespace wkd
