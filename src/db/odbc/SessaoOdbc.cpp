#include "odbc/SessaoOdbc.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "odbc/ComandoOdbc.h"
#include "odbc/ComandosTSql.h"
#include "odbc/ConexaoOdbc.h"
#include "odbc/ErroOdbc.h"
#include "values/Texto.h"

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
    const auto chamada = Chamada();
    const auto retorno =
        SQLDriverConnectW(dbc_, nullptr, texto.Dados(), texto.Tamanho(), completa, 1024, &tamanho, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(retorno)) throw Explicado(ErroOdbc(SQL_HANDLE_DBC, dbc_, "", SQL_NULL_HDBC), senha);
    ligada_ = true;
    soquete_ = std::make_shared<TSoqueteOdbc>(dbc_);
}

void TLigacaoOdbc::Desliga(bool perdida) noexcept {
    if (!ligada_) return;
    ligada_ = false;
    const auto chamada = Chamada();
    const bool terminada = !perdida && SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK));
    if (terminada) emCurso_->Numeros().Tira(numero_);
    SQLDisconnect(dbc_);
    soquete_.reset();
}

void TLigacaoOdbc::DefineNumero(const std::string& numero) {
    numero_ = numero;
    emCurso_->Numeros().Inclui(numero);
}

void TLigacaoOdbc::CommitAutomatico(bool liga) {
    if (commitAutomatico_ == liga) return;
    const auto modo = liga ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
    const auto chamada = Chamada();
    ConfereOdbc(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, Numero(modo), SQL_IS_UINTEGER), dbc_, "autocommit");
    commitAutomatico_ = liga;
}

void TLigacaoOdbc::Termina(SQLSMALLINT como, std::string_view comando) {
    const auto chamada = Chamada();
    ConfereOdbc(SQLEndTran(SQL_HANDLE_DBC, dbc_, como), dbc_, comando);
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
    ConfereOdbc(SQLAllocHandle(SQL_HANDLE_STMT, ligacao_->Handle(), &stmt_), ligacao_->Handle(), "statement");
}

TInstrucaoOdbc::~TInstrucaoOdbc() {
    if (!ligacao_->Ligada()) return;
    const auto chamada = ligacao_->Chamada();
    SQLFreeHandle(SQL_HANDLE_STMT, stmt_);
}

void TInstrucaoOdbc::Confere(SQLRETURN retorno, std::string_view comando) const {
    TInterrupcao::Confere(true);
    if (!Correu(retorno)) throw Erro(comando);
}

void TInstrucaoOdbc::Executa(std::string_view sql, std::string_view comando) {
    TTextoOdbc texto(sql);
    const auto chamada = Chamada();
    Confere(SQLExecDirectW(stmt_, texto.Dados(), texto.Tamanho<SQLINTEGER>()), comando);
    Esgota(comando);
    FechaCursor();
}

SQLLEN TInstrucaoOdbc::Esgota(std::string_view comando) {
    SQLLEN linhas = 0;
    const auto chamada = Chamada();
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
    if (!ligacao_->Ligada()) return;
    const auto chamada = ligacao_->Chamada();
    SQLFreeStmt(stmt_, SQL_CLOSE);
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

namespace {

unsigned Segundos(const std::string& texto) {
    unsigned segundos = 60;
    std::from_chars(texto.data(), texto.data() + texto.size(), segundos);
    return segundos;
}

TCapacidades Capacidades(TLigacaoOdbc& ligacao) {
    TCapacidades capacidades;
    capacidades.servidor = ligacao.Informacao(SQL_DBMS_VER);
    capacidades.versao = NumeroDaVersao(capacidades.servidor);
    capacidades.cliente = ligacao.Informacao(SQL_DRIVER_NAME) + " " + ligacao.Informacao(SQL_DRIVER_VER);
    return capacidades;
}

bool Comeca(std::string_view comando, std::initializer_list<std::string_view> palavras) {
    const std::string_view inicio = Apara(comando);
    return std::ranges::any_of(
        palavras, [&](std::string_view palavra) { return IgualSemCaixa(inicio.substr(0, palavra.size()), palavra); });
}

bool SoDeLinhas(std::string_view comando) {
    return Comeca(comando, {"select ", "insert ", "update ", "delete ", "save ", "commit"});
}

}  // namespace

void TSessaoOdbc::Observa(std::string_view comando, bool sozinho) {
    if (!SoDeLinhas(comando)) alvos_.clear();
    if (observador_) observador_(comando);
    if (sozinho) Observa("commit");
}

void TSessaoOdbc::Liga() {
    ajustes_.clear();
    perdida_ = false;
    emCurso_->Recomeca();
    const auto ligacao = Conecta();
    sqlServer_ = ligacao->Informacao(SQL_DBMS_NAME).find("SQL Server") != std::string::npos;
    if (sqlServer_) ajustes_.assign(kAjustesTSql.begin(), kAjustesTSql.end());
    Ajusta(ligacao);
    dialeto_.Conhece(Capacidades(*ligacao));
    principal_ = ligacao;
}

void TSessaoOdbc::Desliga() noexcept {
    emTransacao_ = desfeita_ = false;
    alvos_.clear();
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
    if (sqlServer_) ligacao->DefineNumero(std::to_string(Pergunta(ligacao, kNumeroTSql)));
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

std::pair<std::shared_ptr<TLigacaoOdbc>, bool> TSessaoOdbc::ParaExecutar(std::string_view sql) {
    auto ligacao = Principal();
    const bool sozinho = !emTransacao_ && Comeca(sql, {"insert ", "update ", "delete ", "create ", "alter ", "drop "});
    if (!emTransacao_) ligacao->CommitAutomatico(sozinho);
    return {std::move(ligacao), sozinho};
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
    Principal()->CommitAutomatico(false);
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
    alvos_.clear();
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
    alvos_.clear();
    if (!Ligada() || perdida_) return;
    perdida_ = erro.ConexaoPerdida() || emCurso_->Cancelado();
    if (perdida_ || !desfeita_) motivo_ = Motivo(erro);
    if (!perdida_ && desfeita_) return;
    try {
        if (!perdida_ && emTransacao_ && TransacaoDePe()) return;
        if (!perdida_) principal_->Termina(SQL_ROLLBACK, "rollback");
    } catch (const TErroBanco& outro) {  // else the server had rolled back what it could
        perdida_ = perdida_ || outro.ConexaoPerdida();
    } catch (const TInterrompida&) {
        perdida_ = true;
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

bool TSessaoOdbc::TransacaoDePe() { return !sqlServer_ || Pergunta(principal_, kTransacoesTSql) > 0; }

/// A number that a connection is asked for.
std::int32_t TSessaoOdbc::Pergunta(const std::shared_ptr<TLigacaoOdbc>& ligacao, std::string_view sql) {
    TInstrucaoOdbc instrucao(ligacao);
    TTextoOdbc texto(sql);
    const auto chamada = instrucao.Chamada();
    instrucao.Confere(SQLExecDirectW(instrucao.Handle(), texto.Dados(), SQL_NTS), sql);
    SQLINTEGER numero = 0;
    SQLLEN indicador = 0;
    instrucao.Confere(SQLFetch(instrucao.Handle()), sql);
    SQLGetData(instrucao.Handle(), 1, SQL_C_SLONG, &numero, sizeof numero, &indicador);
    return numero;
}

}  // namespace wkd
