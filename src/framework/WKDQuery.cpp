#include "WKDQuery.h"

#include <stdexcept>

namespace wkd {

TWKDQuery::TWKDQuery(TConnection& conexao, std::string_view sql) : comando_(conexao.Prepara(sql)) {}

TWKDQuery& TWKDQuery::Param(std::string_view nome, const TValor& valor) {
    comando_->Atribui(nome, valor);
    return *this;
}

void TWKDQuery::Open() {
    fim_ = true;
    comando_->Abre();
    Next();
}

void TWKDQuery::Close() {
    comando_->Fecha();
    fim_ = true;
}

void TWKDQuery::Next() { fim_ = !comando_->Proximo(); }

TValor TWKDQuery::Campo(std::string_view nome) {
    const int indice = IndiceDoCampo(comando_->Campos(), nome);
    if (indice < 0) throw std::invalid_argument("Campo inexistente na consulta: " + std::string(nome));
    return comando_->Valor(static_cast<std::size_t>(indice));
}

void ExecutaComando(TConnection& conexao, std::string_view sql) {
    TTransacao transacao(conexao);
    conexao.Prepara(sql)->Executa();
    transacao.Commit();
}

std::int64_t ContaRegistros(TConnection& conexao, std::string_view sql) {
    TWKDQuery consulta(conexao, sql);
    consulta.Open();
    return consulta.Eof() ? 0 : consulta.Comando().Valor(0).ComoInteiro();
}

}  // namespace wkd
