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

[[noreturn]] void Fechada() {
    TErroBanco::TDados dados;
    dados.mensagem = "A conexão com o banco de dados está fechada";
    dados.sqlstate = "08003";
    dados.falha = TFalha::Conexao;
    throw TErroBanco(std::move(dados));
}

unsigned Segundos(const std::string& texto) {
    unsigned segundos = 60;
    std::from_chars(texto.data(), texto.data() + texto.size(), segundos);
    return segundos;
}

}  // namespace

void TSessaoOdbc::Liga() {
    ajustes_.clear();
    const auto ligacao = Conecta();
    sqlServer_ = ligacao->Informacao(SQL_DBMS_NAME).find("SQL Server") != std::string::npos;
    if (sqlServer_) ajustes_.assign(kAjustesTSql.begin(), kAjustesTSql.end());
    Ajusta(ligacao);
    ligacao->CommitAutomatico(false);
    principal_ = ligacao;
}

void TSessaoOdbc::Desliga() noexcept {
    emTransacao_ = desfeita_ = false;
    for (const auto& leitora : leitoras_) leitora->Desliga();
    if (principal_) principal_->Desliga();
    leitoras_.clear();
    principal_.reset();
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Conecta() {
    const auto cadeia = CadeiaDeConexao(parametros_, DriversInstalados());
    return std::make_shared<TLigacaoOdbc>(cadeia, Segundos(parametros_.Valor("ConnectTimeout")),
                                          parametros_.Valor("Password"));
}

void TSessaoOdbc::Ajusta(const std::shared_ptr<TLigacaoOdbc>& ligacao) {
    for (const auto& ajuste : ajustes_) TInstrucaoOdbc(ligacao).Executa(ajuste, ajuste);
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Nova() {
    if (!Ligada()) Fechada();
    auto ligacao = Conecta();
    Ajusta(ligacao);
    return ligacao;
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::Principal() {
    if (!Ligada()) Fechada();
    if (principal_->cursor) principal_->cursor->GuardaLinhas();
    return principal_;
}

std::shared_ptr<TLigacaoOdbc> TSessaoOdbc::ParaLer() {
    if (emTransacao_) return Principal();
    if (!Ligada()) Fechada();
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
    emTransacao_ = false;
}

void TSessaoOdbc::Rollback() noexcept {
    if (!std::exchange(emTransacao_, false)) return;
    desfeita_ = false;
    if (!Ligada()) return;
    if (principal_->cursor) principal_->cursor->Fecha();
    try {
        principal_->Termina(SQL_ROLLBACK, "rollback");
    } catch (const TErroBanco&) {
        // a connection that is lost has no transaction any more
    }
}

void TSessaoOdbc::DepoisDoErro(const TErroBanco& erro) noexcept {
    if (!Ligada() || desfeita_) return;
    try {
        if (emTransacao_ && TransacaoDePe()) return;
        principal_->Termina(SQL_ROLLBACK, "rollback");
    } catch (const TErroBanco&) {
        // the connection is lost, and its transaction with it
    }
    desfeita_ = emTransacao_;
    motivo_ = erro.what();
}

bool TSessaoOdbc::TransacaoDePe() {
    if (!sqlServer_) return true;
    TInstrucaoOdbc instrucao(principal_);
    TTextoOdbc texto(kTransacoesTSql);
    instrucao.Confere(SQLExecDirectW(instrucao.Handle(), texto.Dados(), SQL_NTS), kTransacoesTSql);
    SQLINTEGER abertas = 0;
    SQLLEN indicador = 0;
    instrucao.Confere(SQLFetch(instrucao.Handle()), kTransacoesTSql);
    SQLGetData(instrucao.Handle(), 1, SQL_C_SLONG, &abertas, sizeof abertas, &indicador);
    return abertas > 0;
}

}  // namespace wkd
