#include "LigacaoOdbc.h"

#include <algorithm>

#include "ErroOdbc.h"
#include "TextoOdbc.h"

namespace wkd {
namespace {

template <class TNumero>
SQLPOINTER Numero(TNumero numero) {
    return reinterpret_cast<SQLPOINTER>(static_cast<std::uintptr_t>(numero));
}

SQLHENV Ambiente() {
    SQLHENV env = SQL_NULL_HENV;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, Numero(SQL_OV_ODBC3), 0);
    return env;
}

constexpr std::string_view kAjudaDoCertificado =
    "\nO driver não confia no certificado do servidor. Instale nesta máquina o da autoridade que o emitiu; numa rede "
    "de "
    "confiança, a chave TrustServerCertificate=yes do alias aceita o que o próprio servidor faz.";

/// Without the password, and with what to do about a certificate.
TErroBanco Explicado(const TErroBanco& erro, std::string_view senha) {
    std::string texto = erro.what();
    if (!senha.empty()) texto = Troca(texto, senha, "***");
    if (Minusculas(texto).find("certificate") != std::string::npos) texto += kAjudaDoCertificado;
    return TErroBanco(
        {std::move(texto), erro.CodigoNativo(), erro.SqlState(), erro.Comando(), erro.Falha(), erro.ConexaoPerdida()});
}

}  // namespace

TEmCurso::TChamada::TChamada(TEmCurso& emCurso, SQLHSTMT instrucao) : emCurso_(emCurso), relogio_(emCurso.relogio_) {
    const std::lock_guard trava(emCurso_.guarda_);
    emCurso_.instrucao_ = instrucao;
}

TEmCurso::TChamada::~TChamada() {
    const std::lock_guard trava(emCurso_.guarda_);
    emCurso_.instrucao_ = SQL_NULL_HSTMT;
}

void TEmCurso::Cancela() noexcept {
    const std::lock_guard trava(guarda_);
    if (instrucao_ == SQL_NULL_HSTMT) return;
    cancelado_ = true;
    SQLCancel(instrucao_);
}

TLigacaoOdbc::TLigacaoOdbc(const std::string& cadeia, unsigned segundos, std::string_view senha,
                           std::shared_ptr<TEmCurso> emCurso)
    : emCurso_(std::move(emCurso)), env_(Ambiente()) {
    SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_);
    try {
        Conecta(cadeia, segundos, senha);
    } catch (...) {
        SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
        SQLFreeHandle(SQL_HANDLE_ENV, env_);
        throw;
    }
}

TLigacaoOdbc::~TLigacaoOdbc() {
    Desliga();
    SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
    SQLFreeHandle(SQL_HANDLE_ENV, env_);
}

void TLigacaoOdbc::Conecta(const std::string& cadeia, unsigned segundos, std::string_view senha) {
    SQLSetConnectAttr(dbc_, SQL_ATTR_LOGIN_TIMEOUT, Numero(segundos), 0);
    TTextoOdbc texto(cadeia);
    SQLWCHAR completa[1024];
    SQLSMALLINT tamanho = 0;
    const TEmCurso::TChamada chamada(*emCurso_, SQL_NULL_HSTMT);
    const auto retorno =
        SQLDriverConnectW(dbc_, nullptr, texto.Dados(), texto.Tamanho(), completa, 1024, &tamanho, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(retorno)) throw Explicado(ErroOdbc(SQL_HANDLE_DBC, dbc_, ""), senha);
    ligada_ = true;
}

void TLigacaoOdbc::Desliga(bool perdida) noexcept {
    if (!ligada_) return;
    ligada_ = false;
    const TEmCurso::TChamada chamada(*emCurso_, SQL_NULL_HSTMT);
    if (!perdida) SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
    SQLDisconnect(dbc_);
}

void TLigacaoOdbc::CommitAutomatico(bool liga) {
    const auto modo = liga ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
    ConfereOdbc(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, Numero(modo), SQL_IS_UINTEGER), SQL_HANDLE_DBC, dbc_,
                "autocommit");
}

void TLigacaoOdbc::Termina(SQLSMALLINT como, std::string_view comando) {
    const TEmCurso::TChamada chamada(*emCurso_, SQL_NULL_HSTMT);
    ConfereOdbc(SQLEndTran(SQL_HANDLE_DBC, dbc_, como), SQL_HANDLE_DBC, dbc_, comando);
}

std::string TLigacaoOdbc::Informacao(SQLUSMALLINT qual) {
    SQLWCHAR texto[256] = {};
    SQLSMALLINT bytes = 0;
    if (!SQL_SUCCEEDED(SQLGetInfoW(dbc_, qual, texto, sizeof texto, &bytes))) return {};
    return TextoLido(texto, std::min<SQLLEN>(bytes / static_cast<SQLSMALLINT>(sizeof(SQLWCHAR)), 255));
}

bool TLigacaoOdbc::QuerTamanhoAntes() {
    if (!querTamanhoAntes_) querTamanhoAntes_ = Informacao(SQL_NEED_LONG_DATA_LEN) == "Y";
    return *querTamanhoAntes_;
}

TInstrucaoOdbc::TInstrucaoOdbc(std::shared_ptr<TLigacaoOdbc> ligacao) : ligacao_(std::move(ligacao)) {
    ConfereOdbc(SQLAllocHandle(SQL_HANDLE_STMT, ligacao_->Handle(), &stmt_), SQL_HANDLE_DBC, ligacao_->Handle(),
                "statement");
}

TInstrucaoOdbc::~TInstrucaoOdbc() {
    if (ligacao_->Ligada()) SQLFreeHandle(SQL_HANDLE_STMT, stmt_);
}

void TInstrucaoOdbc::Confere(SQLRETURN retorno, std::string_view comando) const {
    ConfereOdbc(retorno, SQL_HANDLE_STMT, stmt_, comando);
}

void TInstrucaoOdbc::Executa(std::string_view sql, std::string_view comando) {
    const TEmCurso::TChamada chamada(ligacao_->EmCurso(), stmt_);
    TTextoOdbc texto(sql);
    Confere(SQLExecDirectW(stmt_, texto.Dados(), texto.Tamanho<SQLINTEGER>()), comando);
    Esgota(comando);
    FechaCursor();
}

SQLLEN TInstrucaoOdbc::Esgota(std::string_view comando) {
    SQLLEN linhas = 0;
    for (;;) {
        SQLSMALLINT colunas = 0;
        SQLNumResultCols(stmt_, &colunas);
        SQLLEN contadas = -1;
        if (colunas == 0 && SQL_SUCCEEDED(SQLRowCount(stmt_, &contadas)) && contadas >= 0) linhas = contadas;
        const auto retorno = SQLMoreResults(stmt_);
        if (retorno == SQL_NO_DATA) return linhas;
        Confere(retorno, comando);
    }
}

void TInstrucaoOdbc::FechaCursor() noexcept {
    if (ligacao_->Ligada()) SQLFreeStmt(stmt_, SQL_CLOSE);
}

std::vector<std::string> DriversInstalados() {
    std::vector<std::string> nomes;
    const SQLHENV env = Ambiente();
    SQLWCHAR nome[256];
    SQLSMALLINT tamanho = 0;
    SQLWCHAR atributos[2];
    SQLSMALLINT doAtributo = 0;
    SQLUSMALLINT sentido = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(SQLDriversW(env, sentido, nome, 256, &tamanho, atributos, 2, &doAtributo))) {
        nomes.push_back(TextoLido(nome, std::min<SQLLEN>(tamanho, 255)));
        sentido = SQL_FETCH_NEXT;
    }
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    return nomes;
}

}  // namespace wkd
