#include "rows/EnvioDeAlteracoes.h"

#include <stdexcept>

#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kMaximoDeComandos = 64;

}  // namespace

/// A statement and its parameter values in order.
struct TEnvioDeAlteracoes::TTexto {
    std::string sql;
    std::vector<const TValor*> valores;

    std::string Parametro(const TValor& valor) {
        valores.push_back(&valor);
        return ":p" + std::to_string(valores.size());
    }
};

TEnvioDeAlteracoes::TEnvioDeAlteracoes(const TProvedor& provedor, const std::vector<TCampo>& campos)
    : provedor_(provedor), campos_(campos) {
    if (!provedor_.conexao) throw std::logic_error("Alterações sem conexão: " + provedor_.tabela);
    for (const std::string& chave : provedor_.chaves) {
        const int posicao = IndiceDoCampo(campos_, chave);
        if (posicao < 0) throw std::invalid_argument("Campo-chave inexistente: " + provedor_.tabela + "." + chave);
        chaves_.push_back(static_cast<std::size_t>(posicao));
    }
}

void TEnvioDeAlteracoes::Envia(const TRegistro& registro) {
    if (registro.situacao == TSituacao::Inserida) Insere(registro.linha);
    if (registro.situacao == TSituacao::Alterada) Atualiza(*registro.original, registro.linha);
    if (registro.situacao == TSituacao::Excluida) Exclui(registro.Original());
}

/// Columns that are NULL stay out, so the table's defaults apply.
void TEnvioDeAlteracoes::Insere(const TLinha& linha) {
    TTexto texto;
    std::vector<std::string> nomes, parametros;
    for (std::size_t i = 0; i < campos_.size(); ++i) {
        if (linha[i].Nulo()) continue;
        nomes.push_back(campos_[i].nome);
        parametros.push_back(texto.Parametro(linha[i]));
    }
    texto.sql = ComandoInsere(provedor_.tabela, nomes, std::move(parametros));
    Executa(texto);
}

void TEnvioDeAlteracoes::Atualiza(const TLinha& antes, const TLinha& depois) {
    TTexto texto;
    texto.sql = "update " + provedor_.tabela + " set ";
    for (std::size_t i = 0; i < campos_.size(); ++i) {
        if (antes[i] == depois[i]) continue;
        if (!texto.valores.empty()) texto.sql += ", ";
        texto.sql += campos_[i].nome + " = " + texto.Parametro(depois[i]);
    }
    AcrescentaChave(texto, antes);
    if (Executa(texto) == 0) NaoEncontrado(texto);
}

void TEnvioDeAlteracoes::Exclui(const TLinha& linha) {
    TTexto texto;
    texto.sql = "delete from " + provedor_.tabela;
    AcrescentaChave(texto, linha);
    const std::int64_t excluidas = Executa(texto);
    std::int64_t& jaExcluidas = jaExcluidas_[ChaveDaLinha(linha, chaves_)];
    if (excluidas == 0 && jaExcluidas == 0) NaoEncontrado(texto);
    jaExcluidas += excluidas - 1;
}

void TEnvioDeAlteracoes::AcrescentaChave(TTexto& texto, const TLinha& linha) const {
    if (chaves_.empty()) throw std::logic_error("Tabela sem campos-chave no provedor: " + provedor_.tabela);
    const char* ligacao = " where ";
    for (std::size_t campo : chaves_) {
        texto.sql += ligacao + campos_[campo].nome;
        texto.sql += linha[campo].Nulo() ? " is null" : " = " + texto.Parametro(linha[campo]);
        ligacao = " and ";
    }
}

std::int64_t TEnvioDeAlteracoes::Executa(const TTexto& texto) {
    auto comando = comandos_.find(texto.sql);
    if (comando == comandos_.end()) {
        if (comandos_.size() >= kMaximoDeComandos) comandos_.clear();
        comando = comandos_.emplace(texto.sql, provedor_.conexao->Prepara(texto.sql)).first;
    }
    for (std::size_t i = 0; i < texto.valores.size(); ++i) comando->second->Atribui(i, *texto.valores[i]);
    return comando->second->Executa();
}

void TEnvioDeAlteracoes::NaoEncontrado(const TTexto& texto) const {
    throw TErroBanco({.mensagem = provedor_.tabela + ": registro não encontrado ou alterado por outro usuário",
                      .codigoNativo = 0,
                      .sqlstate = {},
                      .comando = texto.sql,
                      .falha = TFalha::Outra,
                      .conexaoPerdida = false});
}

}  // namespace wkd
