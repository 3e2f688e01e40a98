#include "SessaoOdbc.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "CadeiaDeConexao.h"
#include "ComandoOdbc.h"
#include "ComandosTSql.h"
#include "TextoOdbc.h"

namespace wkd {
namespace {

unsigned Segundos(const std::string& texto) {
    unsigned segundos = 60;
    std::from_chars(texto.data(), texto.data() + texto.size(), segundos);
    return segundos;
}

}  // namespace

void TSessaoOdbc::Liga() {
    ajustes_.clear();
    perdida_ = false;
    emCurso_->Recomeca();
    const auto ligacao = Conecta();
    sqlServer_ = ligacao->Informacao(SQL_DBMS_NAME).find("SQL Server") != std::string::npos;
    if (sqlServer_) ajustes_.assign(kAjustesTSql.begin(), kAjustesTSql.end());
    Ajusta(ligacao);
    ligacao->CommitAutomatico(false);
    principal_ = ligacao;
    if (sqlServer_) numero_ = std::to_string(Pergunta(kNumeroTSql));
}

void TSessaoOdbc::Desliga() noexcept {
    emTransacao_ = desfeita_ = false;
    for (const auto& leitora : leitoras_) leitora->Desliga(perdida_);
    for (const auto& ligacao : {principal_, emDescanso_})
        if (ligacao) ligacao->Desliga(perdida_);
    leitoras_.clear();
    principal_.reset();
    emDescanso_.reset();
}

/// On a lost connection nothing more is tried: the step that met it has failed, and the next one gets another.
void TSessaoOdbc::ExigeLigacao() const {
    if (Ligada() && !perdida_) return;
    TErroBanco::TDados dados;
    dados.mensagem = perdida_ ? "A conexão com o banco de dados foi perdida: " + motivo_
                              : "A conexão com o banco de dados está fechada";
    dados.sqlstate = "08003";
    dados.falha = TFalha::Conexao;
    dados.conexaoPerdida = perdida_;
    throw TErroBanco(std::move(dados));
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Conecta() {
    const auto cadeia = CadeiaDeConexao(parametros_, DriversInstalados());
    return std::make_shared<TLigacaoOdbc>(cadeia, Segundos(parametros_.Valor("ConnectTimeout")),
                                          parametros_.Valor("Password"), emCurso_);
}

void TSessaoOdbc::Ajusta(const std::shared_ptr<TLigacaoOdbc>& ligacao) {
    for (const auto& ajuste : ajustes_) TInstrucaoOdbc(ligacao).Executa(ajuste, ajuste);
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Nova() {
    ExigeLigacao();
    auto ligacao = Conecta();
    Ajusta(ligacao);
    return ligacao;
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Principal() {
    ExigeLigacao();
    if (principal_->cursor) principal_->cursor->GuardaLinhas();
    return principal_;
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::ParaLer() {
    if (emTransacao_) return Principal();
    ExigeLigacao();
    std::erase_if(leitoras_, [](const auto& leitora) { return !leitora->Ligada(); });
    const auto livre = std::ranges::find_if(leitoras_, [](const auto& leitora) { return !leitora->cursor; });
    if (livre != leitoras_.end()) return *livre;
    return leitoras_.emplace_back(Nova());
}

void TSessaoOdbc::StartTransaction() {
    if (emTransacao_) throw std::logic_error("já há uma transação aberta");
    Principal();
    emTransacao_ = true;
    desfeita_ = false;
}

void TSessaoOdbc::StartTransaction(std::shared_ptr<TLigacaoOdbc> ligacao) {
    StartTransaction();
    emDescanso_ = std::exchange(principal_, std::move(ligacao));
}

void TSessaoOdbc::Commit() {
    if (!emTransacao_) throw std::logic_error("não há transação aberta");
    try {
        if (desfeita_) {
            TErroBanco::TDados dados;
            dados.mensagem = "O servidor desfez a transação: " + motivo_;
            dados.comando = "commit";
            throw TErroBanco(std::move(dados));
        }
        const auto ligacao = Principal();
        Observa("commit");
        ligacao->Termina(SQL_COMMIT, "commit");
    } catch (...) {
        Rollback();
        throw;
    }
    Encerra();
}

void TSessaoOdbc::Rollback() noexcept {
    if (!std::exchange(emTransacao_, false)) return;
    desfeita_ = false;
    if (!Ligada()) return;
    if (principal_->cursor) principal_->cursor->Fecha();
    if (perdida_) return;
    try {
        principal_->Termina(SQL_ROLLBACK, "rollback");
    } catch (const TErroBanco& erro) {  // there is no transaction any more, or no connection
        perdida_ = erro.ConexaoPerdida();
    }
    Encerra();
}

void TSessaoOdbc::Encerra() noexcept {
    emTransacao_ = false;
    if (!emDescanso_) return;
    principal_->Desliga();
    principal_ = std::exchange(emDescanso_, nullptr);
}

void TSessaoOdbc::DepoisDoErro(const TErroBanco& erro) noexcept {
    if (!Ligada() || perdida_) return;
    perdida_ = erro.ConexaoPerdida() || emCurso_->Cancelado();
    if (perdida_ || !desfeita_) motivo_ = Motivo(erro);
    if (!perdida_ && desfeita_) return;
    try {
        if (!perdida_ && emTransacao_ && TransacaoDePe()) return;
        if (!perdida_) principal_->Termina(SQL_ROLLBACK, "rollback");
    } catch (const TErroBanco& outro) {  // else the server had rolled back what it could
        perdida_ = perdida_ || outro.ConexaoPerdida();
    }
    desfeita_ = emTransacao_;
}

/// With what to do, where the call was given up.
std::string TSessaoOdbc::Motivo(const TErroBanco& erro) const {
    if (!emCurso_->Cancelado()) return erro.what();
    return "O comando foi cancelado e a conexão, encerrada: o servidor ficou mudo até o limite (chave TempoLimite do "
           "alias) ou a trava do banco se perdeu.\n" +
           std::string(erro.what());
}

bool TSessaoOdbc::TransacaoDePe() { return !sqlServer_ || Pergunta(kTransacoesTSql) > 0; }

/// A number that the main connection is asked for.
std::int32_t TSessaoOdbc::Pergunta(std::string_view sql) {
    TInstrucaoOdbc instrucao(principal_);
    const TEmCurso::TChamada chamada(*emCurso_, instrucao.Handle());
    TTextoOdbc texto(sql);
    instrucao.Confere(SQLExecDirectW(instrucao.Handle(), texto.Dados(), SQL_NTS), sql);
    SQLINTEGER numero = 0;
    SQLLEN indicador = 0;
    instrucao.Confere(SQLFetch(instrucao.Handle()), sql);
    SQLGetData(instrucao.Handle(), 1, SQL_C_SLONG, &numero, sizeof numero, &indicador);
    return numero;
}

}  // namespace wkd
