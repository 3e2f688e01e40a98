#include "firebird/SessaoFirebird.h"

#include <chrono>
#include <random>
#include <stdexcept>
#include <thread>

#include "firebird/ClienteFirebird.h"
#include "firebird/ComandoFirebird.h"
#include "firebird/ConexaoFirebird.h"
#include "firebird/ErroFirebird.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TChamada = TRelogioDeEspera::TChamada;

std::string BlocoDeTransacao(TTransacaoFirebird::TModo modo, std::string_view protegida) {
    if (modo == TTransacaoFirebird::TModo::Instantaneo)
        return {isc_tpb_version3, isc_tpb_read, isc_tpb_concurrency, isc_tpb_wait};
    const bool escrita = modo != TTransacaoFirebird::TModo::Leitura;
    const bool espera = modo != TTransacaoFirebird::TModo::EscritaSemEspera;
    std::string bloco{isc_tpb_version3, static_cast<char>(escrita ? isc_tpb_write : isc_tpb_read),
                      isc_tpb_read_committed, isc_tpb_rec_version,
                      static_cast<char>(espera ? isc_tpb_wait : isc_tpb_nowait)};
    if (escrita && espera) AdicionaAoBloco(bloco, isc_tpb_lock_timeout, std::string_view("\x0A\0\0\0", 4));
    if (!protegida.empty()) {
        // Protected read would let other writers in as soon as this transaction writes into the table itself.
        AdicionaAoBloco(bloco, isc_tpb_lock_write, protegida);
        bloco += isc_tpb_protected;
    }
    return bloco;
}

/// Seconds until a server that does not answer is given up.
std::uint32_t LimiteDeConexao(const TParametrosConexao& parametros) {
    const auto limite = parametros.Valor("ConnectTimeout");
    return limite.empty() ? 20 : static_cast<std::uint32_t>(std::stoul(limite));
}

/// Whether the database's own pages could not be read or written.
bool DoDisco(const ISC_STATUS* estado) {
    for (const ISC_STATUS codigo : {isc_io_error, isc_db_corrupt, isc_bad_db_format})
        if (TemCodigo(estado, codigo)) return true;
    return false;
}

TErroBanco Cancelada(const TErroBanco& erro) {
    return TErroBanco(
        {.mensagem = "O comando foi cancelado e a conexão, encerrada: o servidor ficou mudo até o limite (chave "
                     "TempoLimite do alias) ou a trava do banco se perdeu.\n" +
                     std::string(erro.what()),
         .codigoNativo = erro.CodigoNativo(),
         .sqlstate = erro.SqlState(),
         .comando = erro.Comando(),
         .falha = erro.Falha(),
         .conexaoPerdida = true});
}

}  // namespace

void AdicionaAoBloco(std::string& bloco, char item, std::string_view valor) {
    if (valor.size() > 255) throw std::invalid_argument("parâmetro de conexão com mais de 255 bytes");
    bloco += item;
    bloco += static_cast<char>(valor.size());
    bloco += valor;
}

void AdicionaAoBloco(std::string& bloco, char item, std::uint32_t valor) {
    const char bytes[] = {static_cast<char>(valor), static_cast<char>(valor >> 8), static_cast<char>(valor >> 16),
                          static_cast<char>(valor >> 24)};
    AdicionaAoBloco(bloco, item, std::string_view(bytes, sizeof bytes));
}

namespace {

// Items that came with Firebird 4, which an older client's header does not have and an older server passes over:
// isc_dpb_set_bind and isc_dpb_decfloat_traps.
constexpr char kLigacao = 93;
constexpr char kArmadilhas = 95;
/// Its types go through the connection as texts, which hold all of them whatever the client library.
constexpr std::string_view kComoTexto = "INT128 TO VARCHAR; DECFLOAT TO VARCHAR; TIME ZONE TO VARCHAR";
/// Not those of an invalid operation: NaN is compared as among doubles, where it equals nothing and breaks nothing off.
constexpr std::string_view kSemInvalida = "Division_by_zero,Overflow";

}  // namespace

std::string BlocoDeConexao(const TParametrosConexao& parametros, std::string_view conjunto) {
    std::string bloco(1, isc_dpb_version1);
    AdicionaAoBloco(bloco, isc_dpb_user_name, parametros.Valor("User_Name"));
    AdicionaAoBloco(bloco, isc_dpb_password, parametros.Valor("Password"));
    AdicionaAoBloco(bloco, isc_dpb_lc_ctype, conjunto);
    AdicionaAoBloco(bloco, isc_dpb_sql_dialect, std::string_view("\x03", 1));
    AdicionaAoBloco(bloco, isc_dpb_utf8_filename, "");
    AdicionaAoBloco(bloco, isc_dpb_connect_timeout, LimiteDeConexao(parametros));
    AdicionaAoBloco(bloco, kLigacao, kComoTexto);
    AdicionaAoBloco(bloco, kArmadilhas, kSemInvalida);
    if (IgualSemCaixa(parametros.Valor("GarbageCollect"), "False"))
        AdicionaAoBloco(bloco, isc_dpb_no_garbage_collect, std::string_view("\1", 1));
    return bloco;
}

TSessaoFirebird::TSessaoFirebird(const TParametrosConexao& parametros) : parametros_(parametros) {}

void TSessaoFirebird::Liga(std::string_view conjunto) {
    const auto bloco = BlocoDeConexao(parametros_, conjunto);
    const auto arquivo = parametros_.Valor("Database");
    TEstadoFirebird estado;
    {
        const TChamada chamada(relogio_);
        const std::lock_guard trava(ligando_);
        Cliente().isc_attach_database(estado, 0, arquivo.c_str(), &banco_, static_cast<short>(bloco.size()),
                                      bloco.data());
    }
    wkd::Confere(estado, "");
    paraCancelar_ = banco_;
    condenada_.clear();
    perdida_ = cancelada_ = false;
    dialeto_.Conhece(Capacidades());
    ++geracao_;
    nomeDoConjunto_ = conjunto;
    const auto conhecido = ConjuntoDoNome(conjunto);
    if (!conhecido) {
        Desliga();
        throw TErroConversao("CharacterSet=" + nomeDoConjunto_ + ": use UTF8, WIN1252 ou ISO8859_1");
    }
    conjunto_ = *conhecido;
}

std::string TSessaoFirebird::TextoSql(std::string_view utf8) const {
    return DeUtf8(conjunto_, dialeto_.ParaServidor(utf8));
}

void TSessaoFirebird::Desliga() noexcept {
    if (!Ligada()) return;
    for (auto* aberta : abertas_) aberta->Rollback();
    transacao.reset();
    catalogo_.reset();
    const std::lock_guard trava(ligando_);
    TEstadoFirebird estado;
    const TChamada chamada(relogio_);
    Cliente().isc_detach_database(estado, &banco_);
    banco_ = paraCancelar_ = 0;
}

void TSessaoFirebird::Cancela() noexcept {
    isc_db_handle banco = paraCancelar_;
    if (banco == 0) return;
    cancelada_ = true;
    TEstadoFirebird estado;
    Cliente().fb_cancel_operation(estado, &banco, fb_cancel_abort);
}

void TSessaoFirebird::Interrompe(TInterrupcao::TEtapa etapa) noexcept {
    if (etapa < TInterrupcao::TEtapa::Cancela) return;
    const std::unique_lock trava(ligando_, std::try_to_lock);
    if (!trava || !Ligada()) return;
    TEstadoFirebird estado;
    Cliente().fb_cancel_operation(estado, &banco_,
                                  etapa == TInterrupcao::TEtapa::Cancela ? fb_cancel_raise : fb_cancel_abort);
}

TTransacaoFirebird& TSessaoFirebird::Catalogo() {
    if (!catalogo_) catalogo_ = std::make_unique<TTransacaoFirebird>(*this, TTransacaoFirebird::TModo::Leitura);
    return *catalogo_;
}

void TSessaoFirebird::Confere(const ISC_STATUS* estado, std::string_view comando) {
    if (estado[0] == 1 && estado[1] != 0) throw Erro(estado, comando);
}

TErroBanco TSessaoFirebird::Erro(const ISC_STATUS* estado, std::string_view comando) {
    TErroBanco erro = ErroFirebird(estado, comando);
    if (erro.CodigoNativo() == isc_cancelled || erro.ConexaoPerdida()) TInterrupcao::Confere(true);
    if (!erro.ConexaoPerdida()) return erro;
    if (cancelada_) erro = Cancelada(erro);
    if (!condenada_.empty()) return erro;
    condenada_ = erro.what();
    perdida_ = !DoDisco(estado);
    return erro;
}

void TSessaoFirebird::ConfereConexao() {
    if (condenada_.empty()) return;
    Desliga();
    throw TErroBanco({.mensagem = "A conexão com o banco de dados foi encerrada depois do erro: " + condenada_,
                      .codigoNativo = 0,
                      .sqlstate = "08003",
                      .comando = {},
                      .falha = TFalha::Conexao,
                      .conexaoPerdida = true});
}

void TSessaoFirebird::Renova() {
    const std::string conjunto = nomeDoConjunto_;
    Desliga();
    Liga(conjunto);
}

TTransacaoFirebird::TTransacaoFirebird(TSessaoFirebird& sessao, TModo modo, std::string_view protegida)
    : sessao_(sessao), modo_(modo) {
    sessao_.ConfereConexao();
    const auto bloco = BlocoDeTransacao(modo, protegida);
    TEstadoFirebird estado;
    {
        const TChamada chamada(sessao_.Relogio());
        Cliente().isc_start_transaction(estado, &handle_, 1, sessao.Banco(), static_cast<unsigned short>(bloco.size()),
                                        bloco.data());
    }
    sessao_.Confere(estado, "start transaction");
    sessao_.abertas_.push_back(this);
}

TTransacaoFirebird::~TTransacaoFirebird() {
    Rollback();
    std::erase(sessao_.abertas_, this);
}

void TTransacaoFirebird::Commit(std::string_view comando) {
    if (modo_ != TModo::Leitura) sessao_.Observa("commit");
    TEstadoFirebird estado;
    {
        const TChamada chamada(sessao_.Relogio());
        if (Cliente().isc_commit_transaction(estado, &handle_) == 0) return;
    }
    const auto erro = sessao_.Erro(estado, comando);
    Rollback();
    try {
        if (erro.SqlState() == "22006") sessao_.Renova();
    } catch (const std::exception&) {  // the first error tells the cause
    }
    throw erro;
}

void TTransacaoFirebird::Rollback() noexcept {
    if (handle_ == 0) return;
    TEstadoFirebird estado;
    const TChamada chamada(sessao_.Relogio());
    Cliente().isc_rollback_transaction(estado, &handle_);
    handle_ = 0;
}

namespace {

using TModo = TTransacaoFirebird::TModo;

constexpr std::size_t kTexto = 160;  // bytes: an older server takes 255 for the whole variable

/// Announcements of the others.
constexpr std::string_view kOutros =
    "select cast(v.mon$variable_value as varchar(255) character set octets), trim(a.mon$user),"
    " cast(a.mon$attachment_id as varchar(20)) from mon$context_variables v"
    " join mon$attachments a on a.mon$attachment_id = v.mon$attachment_id"
    " where v.mon$variable_name = 'ATUALIZAWKD' and v.mon$attachment_id <> current_connection";

std::string MarcaNova() {
    std::random_device acaso;
    return std::to_string(acaso()) + "." + std::to_string(acaso()) + " ";
}

}  // namespace

TTravaFirebird::TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao)
    : sessao_(std::move(sessao)), marca_(MarcaNova()) {}

bool TTravaFirebird::Toma(std::string_view texto) {
    constexpr int kTentativas = 25;
    auto reserva = TReserva::Alheia;
    for (int vez = 0; vez < kTentativas && reserva == TReserva::Alheia; ++vez) {
        if (Visivel()) return false;
        if (vez > 0) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        reserva = Reserva();
        if (reserva != TReserva::SemTabela) continue;
        CriaTabela();
        reserva = Reserva();
    }
    if (reserva == TReserva::Alheia) return false;
    Anuncia(texto);
    if (reserva == TReserva::Nossa || !Visivel()) return true;
    Grava(std::nullopt);
    return false;
}

void TTravaFirebird::Anuncia(std::string_view texto) { Grava(marca_ + std::string(texto.substr(0, kTexto))); }

std::optional<std::string> TTravaFirebird::Quem() {
    auto quem = Visivel();
    if (!quem && Reserva() == TReserva::Alheia) quem = "";
    reserva_.reset();
    return quem;
}

TTravaFirebird::TReserva TTravaFirebird::Reserva() try {
    reserva_.reset();
    reserva_ = std::make_unique<TTransacaoFirebird>(*sessao_, TModo::EscritaSemEspera, kTabelaDaTrava);
    return TReserva::Nossa;
} catch (const TErroBanco& erro) {
    if (erro.Falha() == TFalha::EmUso) return TReserva::Alheia;
    if (erro.Falha() == TFalha::ObjetoInexistente) return TReserva::SemTabela;
    throw;
}

void TTravaFirebird::CriaTabela() try {
    TComandoFirebird(sessao_, "create table " + std::string(kTabelaDaTrava) + " (NADA integer)").Executa();
} catch (const TErroBanco& erro) {  // the user may not, or another was quicker
    if (erro.ConexaoPerdida()) throw;
}

std::optional<std::string> TTravaFirebird::Visivel() {
    TComandoFirebird comando(sessao_, kOutros);
    for (comando.Abre(); comando.Proximo();) {
        const std::string anuncio = TextoDeBytes(comando.Valor(0).ComoBytes());
        if (anuncio.starts_with(marca_)) continue;
        return anuncio.substr(anuncio.find(' ') + 1) + " (usuário " + comando.Valor(1).ComoTexto() + ", conexão " +
               comando.Valor(2).ComoTexto() + ")";
    }
    return std::nullopt;
}

void TTravaFirebird::Grava(const std::optional<std::string>& valor) {
    TComandoFirebird comando(sessao_,
                             "select rdb$set_context('USER_SESSION', 'ATUALIZAWKD',"
                             " cast(:pTEXTO as varchar(255) character set octets)) from rdb$database");
    comando.TComando::Atribui("pTEXTO", valor ? TValor(TBytes{*valor}) : TValor());
    for (comando.Abre(); comando.Proximo();) continue;
}

}  // namespace wkd
