#include "odbc/ConexaoOdbc.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>

#include "aliases/ArquivoIni.h"
#include "odbc/ComandoOdbc.h"
#include "odbc/ComandosTSql.h"
#include "odbc/LexicoSql.h"
#include "odbc/MetadadosOdbc.h"
#include "odbc/SessaoOdbc.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::array<std::string_view, 4> kDrivers = {"ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server",
                                                      "FreeTDS", "SQL Server"};  // the last comes with Windows
#ifdef _WIN32
constexpr std::string_view kComoInstalar = "A Microsoft oferece o primeiro (msodbcsql.msi, de 64 bits)";
#else
constexpr std::string_view kComoInstalar = "No Debian o FreeTDS vem com \"apt-get install tdsodbc\"";
#endif

/// A value in braces where it holds anything else than letters, digits and some harmless characters. A brace inside
/// is doubled, but for FreeTDS, which takes it as it is and ends the value at "};" only.
std::string Valor(std::string_view valor, bool dobra) {
    const bool simples = std::ranges::all_of(valor, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || std::string_view("._-/\\:,").find(c) != std::string::npos;
    });
    return simples ? std::string(valor) : "{" + (dobra ? Troca(valor, "}", "}}") : std::string(valor)) + "}";
}

class TCadeia {
  public:
    explicit TCadeia(bool dobra) : dobra_(dobra) {}
    TCadeia& Adiciona(std::string_view chave, std::string_view valor) {
        if (!valor.empty()) texto_ += std::string(chave) + "=" + Valor(valor, dobra_) + ";";
        return *this;
    }
    std::string Texto() && { return std::move(texto_); }

  private:
    bool dobra_;
    std::string texto_;
};

std::string EscolheDriver(const TParametrosConexao& parametros, const std::vector<std::string>& instalados) {
    if (auto pedido = parametros.Valor("Driver"); !pedido.empty()) return pedido;
    for (const auto nome : kDrivers)
        if (std::ranges::any_of(instalados, [&](const auto& i) { return IgualSemCaixa(i, nome); }))
            return std::string(nome);
    std::vector<std::string> nomes(kDrivers.begin(), kDrivers.end());
    throw TErroConfiguracao(
        "Nenhum driver ODBC para SQL Server está instalado. Instale um destes: " + Junta(nomes, ", ") + ". " +
            std::string(kComoInstalar) + "; outro pode ser informado na chave Driver do alias.",
        TFalha::SemDriver);
}

bool DoFreeTds(std::string_view driver) {
    const auto nome = Minusculas(driver);
    return nome.find("freetds") != std::string::npos || nome.find("tdsodbc") != std::string::npos;
}

/// FreeTDS takes the port on its own, "host\instance" as it is.
void AdicionaFreeTds(TCadeia& cadeia, const std::string& servidor) {
    const auto virgula = servidor.find(',');
    const bool instancia = servidor.find('\\') != std::string::npos;
    cadeia.Adiciona("SERVER", Apara(servidor.substr(0, virgula)));
    if (virgula != std::string::npos)
        cadeia.Adiciona("PORT", Apara(servidor.substr(virgula + 1)));
    else if (!instancia)
        cadeia.Adiciona("PORT", "1433");
    cadeia.Adiciona("TDS_Version", "7.4").Adiciona("ClientCharset", "UTF-8");
}

/// The other drivers check the certificate of an encrypted connection unless the alias says otherwise.
void AdicionaServidor(TCadeia& cadeia, const std::string& driver, const TParametrosConexao& parametros) {
    const auto servidor = parametros.Valor("Server");
    if (DoFreeTds(driver))
        AdicionaFreeTds(cadeia, servidor);
    else
        cadeia.Adiciona("SERVER", servidor)
            .Adiciona("Encrypt", parametros.Valor("Encrypt"))
            .Adiciona("TrustServerCertificate", parametros.Valor("TrustServerCertificate"));
    cadeia.Adiciona("Trusted_Connection", parametros.Valor("Trusted_Connection")).Adiciona("APP", "AtualizaWKD");
}

}  // namespace

std::string CadeiaDeConexao(const TParametrosConexao& parametros, const std::vector<std::string>& instalados) {
    const auto fonte = parametros.Valor("DataSource");
    const auto driver = fonte.empty() ? EscolheDriver(parametros, instalados) : "";
    TCadeia cadeia(!DoFreeTds(driver));
    cadeia.Adiciona("DSN", fonte).Adiciona("DRIVER", driver);
    if (fonte.empty()) AdicionaServidor(cadeia, driver, parametros);
    cadeia.Adiciona("DATABASE", parametros.Valor("Database"));
    cadeia.Adiciona("UID", parametros.Valor("User_Name")).Adiciona("PWD", parametros.Valor("Password"));
    return std::move(cadeia).Texto();
}

namespace {

/// A shared lock on the whole table, held by a connection of its own.
class TReservaOdbc : public TReserva {
  public:
    TReservaOdbc(std::shared_ptr<TSessaoOdbc> sessao, std::string_view tabela)
        : sessao_(std::move(sessao)), ligacao_(sessao_->Nova()) {
        ligacao_->CommitAutomatico(false);
        const auto sql = ReservaTSql(tabela);
        TInstrucaoOdbc(ligacao_).Executa(sql, sql);
    }
    ~TReservaOdbc() override {
        if (ligacao_) ligacao_->Desliga();
    }

    void StartTransaction() override { sessao_->StartTransaction(std::move(ligacao_)); }

  private:
    std::shared_ptr<TSessaoOdbc> sessao_;
    std::shared_ptr<TLigacaoOdbc> ligacao_;
};

/// The first two words of a statement, in small letters.
std::string Inicio(std::string_view sql) {
    std::string inicio;
    int palavras = 0;
    for (const auto& lexema : Lexemas(sql)) {
        if (lexema.classe == TLexema::TClasse::Branco) continue;
        inicio += Minusculas(lexema.texto) + " ";
        if (++palavras == 2) break;
    }
    return inicio;
}

/// Statements that the server takes outside a transaction only.
bool SemTransacao(std::string_view inicio) {
    return std::ranges::any_of(
        std::initializer_list<std::string_view>{"create database ", "alter database ", "drop database ",
                                                "backup database ", "backup log ", "restore database "},
        [&](auto texto) { return inicio.starts_with(texto); });
}

class TConexaoOdbc : public TConnection {
  public:
    explicit TConexaoOdbc(const TParametrosConexao& parametros)
        : sessao_(std::make_shared<TSessaoOdbc>(parametros)), metadados_(sessao_) {}
    ~TConexaoOdbc() override { Close(); }

    void Open() override {
        Close();
        sessao_->Liga();
    }

    void Close() noexcept override { sessao_->Desliga(); }
    bool Connected() const override { return sessao_->Ligada(); }
    TTipoBanco TipoBanco() const override { return TTipoBanco::tbSQLServer; }
    std::string VersaoServidor() override { return metadados_.VersaoServidor(); }
    const TDialeto* DialetoDoServidor() const override { return &sessao_->Dialeto(); }
    bool SoLeitura() override { return sessao_->ParaLer()->Informacao(SQL_DATA_SOURCE_READ_ONLY) == "Y"; }

    void StartTransaction() override { sessao_->StartTransaction(); }
    void Commit() override { sessao_->Commit(); }
    void Rollback() noexcept override { sessao_->Rollback(); }
    bool InTransaction() const override { return sessao_->InTransaction(); }

    void MarcaPonto(std::string_view nome) override {
        NaTransacao(sessao_->SqlServer() ? MarcaPontoTSql(nome) : "SAVEPOINT " + std::string(nome));
    }
    void VoltaAoPonto(std::string_view nome) override {
        NaTransacao(sessao_->SqlServer() ? VoltaAoPontoTSql(nome) : "ROLLBACK TO SAVEPOINT " + std::string(nome));
    }

    std::unique_ptr<TReserva> Reserva(std::string_view tabela) override {
        if (!sessao_->SqlServer()) return nullptr;
        return std::make_unique<TReservaOdbc>(sessao_, tabela);
    }

    bool Trava(std::string_view anuncio) override {
        if (!sessao_->SqlServer()) return true;
        if (NaPrincipal(kTravaTSql).ComoInteiro() < 0) return false;
        Anuncia(anuncio);
        return true;
    }
    void Anuncia(std::string_view anuncio) override {
        if (sessao_->SqlServer()) ExecuteDirect(AnuncioTSql(anuncio));
    }
    std::optional<std::string> QuemTrava() override {
        if (!sessao_->SqlServer()) return std::nullopt;
        TComandoOdbc comando(sessao_, QuemTravaTSql());
        comando.Abre();
        if (!comando.Proximo()) return std::nullopt;
        std::string anuncio = TextoDeBytes(comando.Valor(0).ComoBytes());
        anuncio = anuncio.substr(0, anuncio.find('\0')).substr(kMarcaDoAnuncio.size());
        return anuncio + " (usuário " + comando.Valor(1).ComoTexto() + ", conexão " + comando.Valor(2).ComoTexto() +
               ")";
    }

    bool Perdida() const override { return sessao_->Perdida(); }
    std::chrono::milliseconds Espera() const override { return sessao_->EmCurso().Espera(); }
    void Cancela() noexcept override { sessao_->EmCurso().Cancela(); }
    std::string Numero() const override { return sessao_->Numeros(); }
    bool Trabalha(std::string_view numero) override {
        try {
            return sessao_->SqlServer() && NaPrincipal(TrabalhaTSql(numero)).ComoInteiro() > 0;
        } catch (const TErroBanco& erro) {  // the user may not ask, or the server has no such view
            if (erro.ConexaoPerdida()) throw;
            return false;
        }
    }
    void Derruba(std::string_view numero) noexcept override {
        try {
            if (!sessao_->SqlServer()) return;
            for (const auto& um : Divide(numero, ',')) ExecutaSozinho(DerrubaTSql(um));
        } catch (...) {  // the user may not, it is gone, or the process is to end
        }
    }

    void ExecuteDirect(std::string_view sql) override {
        if (sessao_->Comecada()) throw std::logic_error("ExecuteDirect dentro de uma transação: " + std::string(sql));
        const auto inicio = Inicio(sql);
        if (inicio.starts_with("set ")) sessao_->Lembra(sql);
        if (SemTransacao(inicio)) return ExecutaSozinho(sql);
        Executa(sql);
    }

    std::unique_ptr<TComando> Prepara(std::string_view sql) override {
        return std::make_unique<TComandoOdbc>(sessao_, sql);
    }

    std::vector<std::string> NomesDeTabelas() override { return metadados_.NomesDeTabelas(); }
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override { return metadados_.Colunas(tabela); }
    TColunasPorTabela TodasAsColunas() override { return metadados_.TodasAsColunas(); }
    TChavesPorTabela TodasAsChaves() override {
        auto chaves = metadados_.TodasAsChaves();
        return chaves ? *std::move(chaves) : TConnection::TodasAsChaves();
    }
    TChavePrimaria ChavePrimaria(std::string_view tabela) override { return metadados_.ChavePrimaria(tabela); }
    std::vector<TIndice> Indices(std::string_view tabela) override { return metadados_.Indices(tabela); }
    void Observa(TObservador observador) override { sessao_->DefineObservador(std::move(observador)); }

  private:
    /// The only value of a query that must not go over a reading connection.
    TValor NaPrincipal(std::string_view sql) {
        TTransacao transacao(*this);
        TComandoOdbc comando(sessao_, sql);
        comando.Abre();
        TValor valor = comando.Proximo() ? comando.Valor(0) : TValor();
        comando.Fecha();
        transacao.Commit();
        return valor;
    }

    void NaTransacao(const std::string& sql) {
        if (!sessao_->Comecada()) throw std::logic_error("não há transação aberta");
        Executa(sql);
    }

    /// A ":" in the text is no parameter here.
    void Executa(std::string_view sql) {
        const auto [ligacao, sozinho] = sessao_->ParaExecutar(sql);
        try {
            sessao_->Observa(sql, sozinho);
            TInstrucaoOdbc(ligacao).Executa(SemSequenciasOdbc(sql), sql);
            if (sozinho || sessao_->Comecada()) return;
            sessao_->Observa("commit");
            ligacao->Termina(SQL_COMMIT, sql);
        } catch (const TErroBanco& erro) {
            sessao_->DepoisDoErro(erro);
            throw;
        } catch (const std::exception& erro) {
            sessao_->DepoisDoErro(TErroBanco({erro.what(), 0, "", std::string(sql), TFalha::Outra, false}));
            throw;
        }
    }

    void ExecutaSozinho(std::string_view sql) {
        sessao_->Observa(sql);
        const auto ligacao = sessao_->Nova();
        TInstrucaoOdbc(ligacao).Executa(sql, sql);
    }

    std::shared_ptr<TSessaoOdbc> sessao_;
    TMetadadosOdbc metadados_;
};

}  // namespace

std::unique_ptr<TConnection> CriaConexaoOdbc(const TParametrosConexao& parametros) {
    return std::make_unique<TConexaoOdbc>(parametros);
}

}  // namespace wkd
