#include "server/HBNConnection.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <utility>

#include "aliases/ArquivoIni.h"
#include "connection/Connection.h"
#include "dialect/Dialeto.h"
#include "firebird/ConexaoFirebird.h"
#include "odbc/ConexaoOdbc.h"
#include "process/Interrupcao.h"
#include "rows/ClientDataSet.h"
#include "values/Texto.h"

namespace wkd {

void TCacheSatrib::Carrega(TConnection& conexao) {
    Esquece();
    const auto tabelas = conexao.NomesDeTabelas();
    const auto satrib = [](const std::string& nome) { return IgualSemCaixa(nome, "SATRIB"); };
    if (std::ranges::any_of(tabelas, satrib)) {
        const auto comando = conexao.Prepara("select * from satrib order by arquivo,sequencia");
        comando->Abre();
        campos_ = comando->Campos();
        const auto arquivo = static_cast<std::size_t>(IndiceDoCampo(campos_, "ARQUIVO"));
        while (comando->Proximo()) {
            TLinha linha;
            for (std::size_t i = 0; i < campos_.size(); ++i) linha.push_back(comando->Valor(i));
            linhas_[ChaveDeNome(linha.at(arquivo).ComoTexto())].push_back(std::move(linha));
        }
    }
    carregado_ = true;
}

void TCacheSatrib::Esquece() {
    carregado_ = false;
    campos_.clear();
    linhas_.clear();
}

void TCacheSatrib::Copia(std::string_view tabela, TClientDataSet& alvo) const {
    alvo.Close();
    if (campos_.empty()) return;
    const auto achada = linhas_.find(ChaveDeNome(tabela));
    alvo.Carrega({campos_, achada == linhas_.end() ? std::vector<TLinha>{} : achada->second});
}

namespace {

[[noreturn]] void Recusa(std::string_view tipoBanco, std::string_view motivo) {
    throw TErroConfiguracao("O tipo de banco \"" + std::string(tipoBanco) + "\" " + std::string(motivo));
}

}  // namespace

std::unique_ptr<TConnection> CriaConexao(std::string_view tipoBanco, const TParametrosConexao& parametros) {
    const auto tipo = StrToTipoBanco(tipoBanco);
    if (!tipo) Recusa(tipoBanco, "não é conhecido. Corrija a chave TipoBanco do alias: tbInterbase ou tbSQLServer.");
    switch (*tipo) {
        case TTipoBanco::tbInterbase:
            return CriaConexaoFirebird(parametros);
        case TTipoBanco::tbSQLServer:
        case TTipoBanco::tbODBC:
            return CriaConexaoOdbc(parametros);
        default:
            Recusa(tipoBanco, "não tem driver. Use um alias de tipo tbInterbase ou tbSQLServer.");
    }
}

void AbreOuDesiste(const std::shared_ptr<TConnection>& conexao, const std::function<bool()>& desiste) {
    const auto abertura = std::make_shared<std::promise<void>>();
    auto fim = abertura->get_future();
    std::thread([abertura, conexao] {
        try {
            conexao->Open();
            abertura->set_value();
        } catch (...) {
            abertura->set_exception(std::current_exception());
        }
    }).detach();
    constexpr std::chrono::milliseconds kEntrePerguntas{50};
    while (fim.wait_for(kEntrePerguntas) == std::future_status::timeout)
        if (desiste()) throw TErroBanco({.mensagem = "A conexão foi cancelada.", .falha = TFalha::Interrompida});
    fim.get();
}

std::string ProvaAlias(const TAlias& alias, const std::function<bool()>& desiste) {
    const std::shared_ptr<TConnection> conexao = CriaConexao(alias.tipoBanco, ParametrosDoAlias(alias));
    AbreOuDesiste(conexao, desiste);
    return conexao->VersaoServidor();
}

namespace {

/// Dialect of a kind text.
TTipoBanco DialetoDe(std::string_view texto) {
    const TTipoBanco tipo = StrToTipoBanco(texto).value_or(TTipoBanco::tbInterbase);
    return tipo == TTipoBanco::tbODBC ? TTipoBanco::tbSQLServer : tipo;
}

}  // namespace

THBNConnection::THBNConnection(TAliases aliases, TFabricaDeConexao fabrica)
    : aliases_(std::move(aliases)), fabrica_(std::move(fabrica)) {}

void THBNConnection::SetAlias(std::string_view nome) {
    alias_ = nome;
    if (Apara(nome).empty()) return;
    // An alias that cannot be loaded opens nothing, least of all the database of the one before.
    tipoBanco_.clear();
    parametros_ = {};
    aliasTrocado_ = true;
    const TAlias alias = aliases_.CarregaAlias(nome);
    tipoBanco_ = alias.tipoBanco;
    parametros_ = ParametrosDoAlias(alias);
}

std::string THBNConnection::TDadosConexao::Texto() const {
    const bool separado = path.ends_with('\\') || path.ends_with('/');
    return hostname + (hostname.empty() ? "" : ":") + path + (separado ? "" : "\\") + database;
}

THBNConnection::TDadosConexao THBNConnection::RetornaDadosConexao() const {
    return {aliases_.INILeString(alias_, "Hostname"), aliases_.INILeString(alias_, "Path"),
            aliases_.INILeString(alias_, "DataBase")};
}

std::unique_ptr<TConnection> THBNConnection::Outra() const { return fabrica_(tipoBanco_, parametros_); }

TParametrosConexao THBNConnection::ParametrosDe(std::string_view banco) const {
    TParametrosConexao parametros;
    for (const auto& [chave, valor] : parametros_.Pares())
        parametros.Adiciona(chave, IgualSemCaixa(chave, "Database") ? banco : std::string_view(valor));
    return parametros;
}

std::unique_ptr<TConnection> THBNConnection::Outra(const TParametrosConexao& parametros) const {
    return fabrica_(tipoBanco_, parametros);
}

std::optional<std::filesystem::path> THBNConnection::ArquivoLocal() const {
    std::error_code erro;
    if (StrToTipoBanco(tipoBanco_) != TTipoBanco::tbInterbase || !RetornaDadosConexao().hostname.empty()) return {};
    const auto banco = std::filesystem::absolute(parametros_.Valor("Database"), erro);
    auto arquivo = std::filesystem::weakly_canonical(banco, erro);
    return erro || !arquivo.has_filename() ? std::nullopt : std::optional(std::move(arquivo));
}

void THBNConnection::Open() {
    Close();
    if (aliasTrocado_ || desiste_) {  // otherwise the same driver object goes on, and with it what was prepared on it
        TrocaDriver(fabrica_(tipoBanco_, parametros_));
        if (!desiste_) LigaObservador();
        aliasTrocado_ = false;
    }
    TInterrupcao::Confere();
    AbreDriver();
    ++aberturas_;
    try {
        if (TipoBanco() == TTipoBanco::tbSQLServer) driver_->ExecuteDirect("set dateformat mdy");
    } catch (...) {
        Close();
        throw;
    }
}

/// The observer is of this object, which a driver that is left alone may outlive: it comes afterwards.
void THBNConnection::AbreDriver() {
    if (!desiste_) return driver_->Open();
    try {
        AbreOuDesiste(driver_, desiste_);
    } catch (...) {
        TrocaDriver(nullptr);
        aliasTrocado_ = true;
        throw;
    }
    LigaObservador();
}

void THBNConnection::TrocaDriver(std::shared_ptr<TConnection> novo) {
    const std::lock_guard trava(guarda_);
    driver_.swap(novo);
}

void THBNConnection::Close() noexcept {
    satrib_.Esquece();
    if (driver_) driver_->Close();
}

bool THBNConnection::Connected() const { return driver_ && driver_->Connected(); }

TTipoBanco THBNConnection::TipoBanco() const { return DialetoDe(tipoBanco_); }

TTipoBanco THBNConnection::TipoBanco(const std::filesystem::path& ini) const {
    return tipoBanco_.empty() ? DialetoDe(TAliases(ini).INILeString("HBN", "TipoBanco")) : TipoBanco();
}

std::string THBNConnection::VersaoServidor() { return Driver().VersaoServidor(); }

/// An alias that was changed to another kind since the opening is not spoken to in the old one's words.
const TDialeto* THBNConnection::DialetoDoServidor() const {
    return driver_ && driver_->TipoBanco() == TipoBanco() ? driver_->DialetoDoServidor() : nullptr;
}

void THBNConnection::StartTransaction() {
    TInterrupcao::Confere();
    Driver().StartTransaction();
}

void THBNConnection::StartInstantaneo() {
    TInterrupcao::Confere();
    Driver().StartInstantaneo();
}

void THBNConnection::Commit() { Driver().Commit(); }

void THBNConnection::Rollback() noexcept {
    if (driver_) driver_->Rollback();
}

bool THBNConnection::InTransaction() const { return driver_ && driver_->InTransaction(); }
void THBNConnection::MarcaPonto(std::string_view nome) { Driver().MarcaPonto(nome); }
void THBNConnection::VoltaAoPonto(std::string_view nome) { Driver().VoltaAoPonto(nome); }

bool THBNConnection::SoLeitura() { return Driver().SoLeitura(); }

TSaude THBNConnection::Saude() { return Driver().Saude(); }

std::optional<std::uintmax_t> THBNConnection::EspacoLivre() { return Driver().EspacoLivre(); }

std::unique_ptr<TReserva> THBNConnection::Reserva(std::string_view tabela) { return Driver().Reserva(tabela); }

bool THBNConnection::Trava(std::string_view anuncio) { return Driver().Trava(anuncio); }
void THBNConnection::Anuncia(std::string_view anuncio) { Driver().Anuncia(anuncio); }
std::optional<std::string> THBNConnection::QuemTrava() { return Driver().QuemTrava(); }

bool THBNConnection::Perdida() const { return driver_ && driver_->Perdida(); }

std::chrono::milliseconds THBNConnection::Espera() const {
    const auto driver = DriverDeOutraThread();
    return driver ? driver->Espera() : std::chrono::milliseconds();
}

void THBNConnection::Cancela() noexcept {
    if (const auto driver = DriverDeOutraThread()) driver->Cancela();
}

std::string THBNConnection::Numero() const {
    const auto driver = DriverDeOutraThread();
    return driver ? driver->Numero() : "";
}

bool THBNConnection::Trabalha(std::string_view numero) { return Driver().Trabalha(numero); }

void THBNConnection::Derruba(std::string_view numero) noexcept {
    if (driver_) driver_->Derruba(numero);
}

void THBNConnection::ExecuteDirect(std::string_view sql) {
    const bool temCommit = Minusculas(sql).find("commit") != std::string::npos;
    if (TipoBanco() == TTipoBanco::tbInterbase && temCommit) return;
    Driver().ExecuteDirect(sql);
}

std::unique_ptr<TComando> THBNConnection::Prepara(std::string_view sql) { return Driver().Prepara(sql); }

std::vector<std::string> THBNConnection::NomesDeTabelas() {
    return TipoBanco() == TTipoBanco::tbOracle ? TabelasDoUsuarioOracle() : Driver().NomesDeTabelas();
}

bool THBNConnection::ExisteTabela(std::string_view tabela) {
    return TipoBanco() == TTipoBanco::tbOracle ? TConnection::ExisteTabela(tabela) : Driver().ExisteTabela(tabela);
}

std::vector<TColunaFisica> THBNConnection::Colunas(std::string_view tabela) { return Driver().Colunas(tabela); }
TColunasPorTabela THBNConnection::TodasAsColunas() { return Driver().TodasAsColunas(); }
std::optional<TColunasPorTabela> THBNConnection::ColunasDe(const std::vector<std::string>& tabelas) {
    return Driver().ColunasDe(tabelas);
}
TChavePrimaria THBNConnection::ChavePrimaria(std::string_view tabela) { return Driver().ChavePrimaria(tabela); }
TChavesPorTabela THBNConnection::TodasAsChaves() { return Driver().TodasAsChaves(); }
std::vector<TIndice> THBNConnection::Indices(std::string_view tabela) { return Driver().Indices(tabela); }

void THBNConnection::Observa(TObservador observador) {
    observador_ = std::move(observador);
    if (driver_) LigaObservador();
}

/// Where a process that was asked to end leaves the work: before a statement.
void THBNConnection::LigaObservador() {
    driver_->Observa([this](std::string_view comando) {
        if (observador_) observador_(comando);
        if (comando != "commit") TInterrupcao::Confere(driver_->InTransaction());
    });
}

void THBNConnection::SAtrbi(std::string_view tabela, TClientDataSet& alvo) {
    if (!satrib_.Carregado()) AtualizaSAtrib();
    satrib_.Copia(tabela, alvo);
}

void THBNConnection::AtualizaSAtrib() { satrib_.Carrega(*this); }

std::shared_ptr<TConnection> THBNConnection::DriverDeOutraThread() const {
    const std::lock_guard trava(guarda_);
    return driver_;
}

TConnection& THBNConnection::Driver() const {
    if (driver_) return *driver_;
    TErroBanco::TDados dados;
    dados.mensagem = "Não há conexão aberta com o banco de dados";
    dados.falha = TFalha::Conexao;
    throw TErroBanco(dados);
}

std::vector<std::string> THBNConnection::TabelasDoUsuarioOracle() {
    std::vector<std::string> nomes;
    const auto comando = Prepara("SELECT * FROM USER_TABLES");
    comando->Abre();
    const auto campo = static_cast<std::size_t>(IndiceDoCampo(comando->Campos(), "TABLE_NAME"));
    while (comando->Proximo()) {
        std::string nome = comando->Valor(campo).ComoTexto();
        if (Dialeto(TTipoBanco::tbOracle).ListaTabela(nome)) nomes.push_back(std::move(nome));
    }
    ExecuteDirect("commit");
    return nomes;
}

}  // namespace wkd
