#include "firebird/ComandoFirebird.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <stdexcept>

#include "firebird/ClienteFirebird.h"
#include "firebird/ConteudoFirebird.h"
#include "firebird/ErroFirebird.h"
#include "firebird/ValorFirebird.h"
#include "values/Texto.h"

namespace wkd {
namespace {

using TModo = TTransacaoFirebird::TModo;
using TChamada = TRelogioDeEspera::TChamada;

/// A blob of at most so many bytes goes along with its row; all parameters together have 64 KB.
constexpr std::size_t kBlobCurto = 1024;

/// Bytes in memory as a stream.
class TLeitorDeTexto : public TLeitorBytes {
  public:
    explicit TLeitorDeTexto(std::string_view bytes) : resto_(bytes) {}
    std::size_t Le(std::span<char> destino) override {
        const auto quantos = resto_.copy(destino.data(), destino.size());
        resto_.remove_prefix(quantos);
        return quantos;
    }

  private:
    std::string_view resto_;
};

/// Content of a value that a blob takes: text and bytes as they are, anything else as text.
std::string BytesParaBlob(const TValor& valor) { return valor.Se<TBytes>() ? valor.ComoBytes() : valor.ComoTexto(); }

std::string Tudo(TLeitorBytes& fonte) {
    std::string bytes;
    char pedaco[8192];
    while (const auto lidos = fonte.Le(pedaco)) bytes.append(pedaco, lidos);
    return bytes;
}

/// Numbers of an information buffer: one byte of item, two of length, the number.
int NumeroDaInformacao(const char* p) {
    return static_cast<int>(Cliente().isc_vax_integer(p + 2, static_cast<short>(Cliente().isc_vax_integer(p, 2))));
}

}  // namespace

TInstrucaoFirebird::TInstrucaoFirebird(TSessaoFirebird& sessao, TTransacaoFirebird& transacao, const std::string& texto,
                                       std::string_view comando)
    : geracao_(sessao.Geracao()) {
    const TChamada chamada(sessao.Relogio());
    Aloca(sessao, comando);
    TEstadoFirebird estado;
    Cliente().isc_dsql_prepare(estado, transacao.Handle(), &handle_, 0, texto.c_str(), SQL_DIALECT_V6, colunas_.Da());
    if (estado[1] == 0 && colunas_.Cresce())
        Cliente().isc_dsql_describe(estado, &handle_, SQLDA_VERSION1, colunas_.Da());
    if (estado[1] == 0) {
        colunas_.AlocaLinha();
        return;
    }
    const auto erro = sessao.Erro(estado, comando);
    Cliente().isc_dsql_free_statement(estado, &handle_, DSQL_drop);
    throw erro;
}

void TInstrucaoFirebird::Aloca(TSessaoFirebird& sessao, std::string_view comando) {
    TEstadoFirebird estado;
    Cliente().isc_dsql_allocate_statement(estado, sessao.Banco(), &handle_);
    sessao.Confere(estado, comando);
}

TInstrucaoFirebird::~TInstrucaoFirebird() {
    TEstadoFirebird estado;
    Cliente().isc_dsql_free_statement(estado, &handle_, DSQL_drop);
}

TComandoFirebird::TComandoFirebird(std::shared_ptr<TSessaoFirebird> sessao, std::string_view sql, TLeitura leitura)
    : sessao_(std::move(sessao)),
      sql_(sql),
      leitura_(leitura),
      analise_(AnalisaComando(sql)),
      valores_(analise_.parametros.size()) {
    Prepara();
}

void TComandoFirebird::Prepara() {
    sessao_->ConfereConexao();
    if (instrucao_ && instrucao_->Geracao() == sessao_->Geracao()) return;
    instrucao_.reset();
    propria_.reset();
    const auto texto = sessao_->TextoSql(analise_.texto);
    auto instrucao = std::make_unique<TInstrucaoFirebird>(*sessao_, Transacao(TModo::Leitura), texto, sql_);
    std::swap(instrucao_, instrucao);
    campos_.clear();
    for (std::size_t i = 0; i < instrucao_->Colunas().Quantos(); ++i) {
        const auto& var = instrucao_->Colunas().Var(i);
        campos_.push_back(CampoDe(var));
        if (NomeCortado(var)) campos_.back().nome = NomeDaColuna(i);
    }
    DescreveParametros();
    especie_ = PerguntaEspecie();
    if (especie_ != TEspecie::Consulta) propria_.reset();
}

void TComandoFirebird::DescreveParametros() {
    const TChamada chamada(sessao_->Relogio());
    TEstadoFirebird estado;
    do {
        Cliente().isc_dsql_describe_bind(estado, instrucao_->Handle(), SQLDA_VERSION1, entrada_.Da());
        sessao_->Confere(estado, sql_);
    } while (entrada_.Cresce());
    if (entrada_.Quantos() != analise_.posicoes.size())
        throw std::invalid_argument("o comando tem parâmetros sem nome: " + sql_);
    posicoes_.resize(entrada_.Quantos());
    for (std::size_t i = 0; i < posicoes_.size(); ++i) {
        PreparaParametro(entrada_.Var(i), posicoes_[i].memoria, posicoes_[i].nulo);
        posicoes_[i].descrita = entrada_.Var(i);
    }
}

std::string TComandoFirebird::NomeDaColuna(std::size_t posicao) {
    const TChamada chamada(sessao_->Relogio());
    TEstadoFirebird estado;
    const char itens[] = {isc_info_sql_sqlda_start,
                          2,
                          static_cast<char>(posicao + 1),
                          static_cast<char>((posicao + 1) >> 8),
                          isc_info_sql_select,
                          isc_info_sql_describe_vars,
                          isc_info_sql_alias,
                          isc_info_sql_describe_end};
    char resposta[512];  // the first name is what counts; those behind it may not fit
    Cliente().isc_dsql_sql_info(estado, instrucao_->Handle(), sizeof itens, itens, sizeof resposta, resposta);
    sessao_->Confere(estado, sql_);
    constexpr std::size_t kAteONome = 1 + 1 + 2 + 4;  // the part, and the number of columns
    const char* nome = resposta + kAteONome;
    if (*nome != isc_info_sql_alias)
        throw std::runtime_error("o cliente do Firebird não diz o nome de uma coluna: " + sql_);
    return {nome + 3, static_cast<std::size_t>(Cliente().isc_vax_integer(nome + 1, 2))};
}

TComandoFirebird::TEspecie TComandoFirebird::PerguntaEspecie() {
    const TChamada chamada(sessao_->Relogio());
    TEstadoFirebird estado;
    char item = isc_info_sql_stmt_type;
    char resposta[16];
    Cliente().isc_dsql_sql_info(estado, instrucao_->Handle(), 1, &item, sizeof resposta, resposta);
    sessao_->Confere(estado, sql_);
    switch (NumeroDaInformacao(resposta + 1)) {
        case isc_info_sql_stmt_select:
        case isc_info_sql_stmt_select_for_upd:
            return TEspecie::Consulta;
        case isc_info_sql_stmt_exec_procedure:
            return TEspecie::LinhaUnica;
        case isc_info_sql_stmt_ddl:
            return TEspecie::Definicao;
        case isc_info_sql_stmt_insert: {
            const bool deConsulta = Minusculas(sql_).find("select") != std::string::npos;
            return deConsulta ? TEspecie::Outra : TEspecie::Insercao;
        }
        default:
            return TEspecie::Outra;
    }
}

void TComandoFirebird::Atribui(std::size_t parametro, const TValor& valor) {
    auto& p = valores_.at(parametro);
    p.valor = valor;
    p.fluxo = nullptr;
    p.fluxoLido = false;
}

void TComandoFirebird::AtribuiFluxo(std::size_t parametro, TLeitorBytes& fonte) {
    valores_.at(parametro) = {TValor(), &fonte, false};
}

TTransacaoFirebird& TComandoFirebird::Transacao(TModo modo) {
    if (sessao_->transacao) {
        propria_.reset();
        return *sessao_->transacao;
    }
    if (modo == TModo::Leitura && leitura_ == TLeitura::Catalogo) return sessao_->Catalogo();
    if (modo == TModo::Leitura && propria_ && *propria_->Handle() != 0) return *propria_;
    return propria_.emplace(*sessao_, modo);
}

std::int64_t TComandoFirebird::Executa() {
    Fecha();
    Prepara();
    try {
        auto& transacao = Transacao(TModo::Escrita);
        Roda(transacao, nullptr);
        const auto linhas = LinhasTocadas();
        if (especie_ == TEspecie::Consulta) {
            cursor_ = TCursor::Aberto;
            Fecha();
        }
        if (propria_) propria_->Commit(sql_);
        propria_.reset();
        return linhas;
    } catch (...) {
        Fecha();
        throw;
    }
}

void TComandoFirebird::Abre() {
    if (cursor_ != TCursor::Fechado) Fecha();
    Prepara();
    if (campos_.empty()) throw std::logic_error("o comando não devolve linhas: " + sql_);
    const bool unica = especie_ == TEspecie::LinhaUnica;
    try {
        auto& transacao = Transacao(unica ? TModo::Escrita : TModo::Leitura);
        Roda(transacao, unica ? instrucao_->Colunas().Da() : nullptr);
        if (unica && propria_) propria_->Commit(sql_);
    } catch (...) {
        Fecha();
        throw;
    }
    cursor_ = unica ? TCursor::LinhaUnica : TCursor::Aberto;
}

void TComandoFirebird::Roda(TTransacaoFirebird& transacao, XSQLDA* saida) {
    Codifica(transacao);
    sessao_->Observa(sql_);
    const TChamada chamada(sessao_->Relogio());
    TEstadoFirebird estado;
    if (saida)
        Cliente().isc_dsql_execute2(estado, transacao.Handle(), instrucao_->Handle(), SQLDA_VERSION1, entrada_.Da(),
                                    saida);
    else
        Cliente().isc_dsql_execute(estado, transacao.Handle(), instrucao_->Handle(), SQLDA_VERSION1, entrada_.Da());
    sessao_->Confere(estado, sql_);
}

bool TComandoFirebird::Proximo() {
    if (cursor_ == TCursor::Fechado) return false;
    if (cursor_ == TCursor::LinhaUnica) {
        cursor_ = TCursor::Fechado;
        return true;
    }
    TEstadoFirebird estado;
    const auto codigo = [&] {
        const TChamada chamada(sessao_->Relogio());
        return Cliente().isc_dsql_fetch(estado, instrucao_->Handle(), SQLDA_VERSION1, instrucao_->Colunas().Da());
    }();
    if (codigo == 0) return true;
    Fecha();
    if (codigo != 100) throw sessao_->Erro(estado, sql_);
    return false;
}

void TComandoFirebird::Fecha() noexcept {
    if (cursor_ == TCursor::Aberto && instrucao_) {
        const TChamada chamada(sessao_->Relogio());
        TEstadoFirebird estado;
        Cliente().isc_dsql_free_statement(estado, instrucao_->Handle(), DSQL_close);
    }
    cursor_ = TCursor::Fechado;
    propria_.reset();
}

TValor TComandoFirebird::Valor(std::size_t campo) {
    const auto& var = instrucao_->Colunas().Var(campo);
    if ((var.sqltype & ~1) != SQL_BLOB) return LeValor(var);
    if ((var.sqltype & 1) != 0 && *var.sqlind < 0) return {};
    auto* transacao = TransacaoDoCursor();
    if (!transacao) throw std::logic_error("blob lido depois do fim da transação: " + sql_);
    return ConteudoDoBlob(sessao_, var, *transacao);
}

TTransacaoFirebird* TComandoFirebird::TransacaoDoCursor() {
    if (propria_) return &*propria_;
    if (sessao_->transacao) return sessao_->transacao.get();
    return leitura_ == TLeitura::Catalogo ? &sessao_->Catalogo() : nullptr;
}

void TComandoFirebird::Codifica(TTransacaoFirebird& transacao) {
    for (std::size_t i = 0; i < posicoes_.size(); ++i) {
        try {
            CodificaPosicao(i, transacao);
        } catch (const TErroConversao& erro) {
            throw TErroConversao("parâmetro " + analise_.parametros[analise_.posicoes[i]] + ": " + erro.what());
        }
    }
}

void TComandoFirebird::CodificaPosicao(std::size_t posicao, TTransacaoFirebird& transacao) {
    auto& var = entrada_.Var(posicao);
    auto& parametro = valores_[analise_.posicoes[posicao]];
    if (parametro.fluxoLido) throw std::logic_error("o fluxo do parâmetro já foi lido: " + sql_);
    if ((posicoes_[posicao].descrita.sqltype & ~1) == SQL_BLOB) return GravaBlob(posicao, transacao);
    if (parametro.fluxo) parametro = {TBytes{Tudo(*parametro.fluxo)}};
    GravaValor(var, posicoes_[posicao].memoria, parametro.valor);
}

void TComandoFirebird::GravaBlob(std::size_t posicao, TTransacaoFirebird& transacao) {
    auto& [descrita, memoria, nulo] = posicoes_[posicao];
    auto& [valor, fluxo, fluxoLido] = valores_[analise_.posicoes[posicao]];
    const auto tipo = TipoDoBlob(descrita);
    nulo = !fluxo && valor.Nulo() ? -1 : 0;
    if (nulo < 0) return;
    if (fluxo) {
        fluxoLido = true;
        return GravaIdDeBlob(posicao, CriaBlob(*sessao_, transacao, *std::exchange(fluxo, nullptr), tipo, sql_));
    }
    if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>()) {
        const auto* id = IdDoConteudo(**conteudo, *sessao_, tipo);
        return GravaIdDeBlob(posicao, id ? *id : CriaBlob(*sessao_, transacao, *(*conteudo)->Abre(), tipo, sql_));
    }
    const auto bytes = BytesParaBlob(valor);
    if (bytes.size() <= kBlobCurto)
        return GravaBlobCurto(entrada_.Var(posicao), memoria, tipo.conjunto, BytesDoBlob(tipo, bytes));
    TLeitorDeTexto leitor(bytes);
    GravaIdDeBlob(posicao, CriaBlob(*sessao_, transacao, leitor, tipo, sql_));
}

void TComandoFirebird::GravaIdDeBlob(std::size_t posicao, const ISC_QUAD& id) {
    auto& var = entrada_.Var(posicao);
    var = posicoes_[posicao].descrita;
    var.sqldata = posicoes_[posicao].memoria.data();
    std::memcpy(var.sqldata, &id, sizeof id);
}

std::int64_t TComandoFirebird::LinhasTocadas() {
    if (especie_ == TEspecie::Insercao) return 1;  // saves a question, over the network a round trip
    if (especie_ != TEspecie::Outra) return 0;     // of a block, too: nobody asks
    const TChamada chamada(sessao_->Relogio());
    TEstadoFirebird estado;
    char item = isc_info_sql_records;
    char resposta[64] = {};
    Cliente().isc_dsql_sql_info(estado, instrucao_->Handle(), 1, &item, sizeof resposta, resposta);
    sessao_->Confere(estado, sql_);
    if (resposta[0] != isc_info_sql_records) return 0;
    std::int64_t linhas = 0;
    for (const char* p = resposta + 3; *p != isc_info_end; p += 3 + Cliente().isc_vax_integer(p + 1, 2))
        if (*p != isc_info_req_select_count) linhas += NumeroDaInformacao(p + 1);
    return linhas;
}

}  // namespace wkd
