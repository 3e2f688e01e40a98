#include "firebird/ConexaoFirebird.h"

#include <filesystem>
#include <stdexcept>

#include "firebird/ClienteFirebird.h"
#include "firebird/ComandoFirebird.h"
#include "firebird/ErroFirebird.h"
#include "firebird/MetadadosFirebird.h"
#include "firebird/SessaoFirebird.h"
#include "values/Texto.h"

namespace wkd {
namespace {

using TModo = TTransacaoFirebird::TModo;

class TReservaFirebird : public TReserva {
  public:
    TReservaFirebird(std::shared_ptr<TSessaoFirebird> sessao, std::string_view tabela)
        : sessao_(std::move(sessao)),
          transacao_(std::make_unique<TTransacaoFirebird>(*sessao_, TModo::Escrita, tabela)) {}

    void StartTransaction() override {
        if (sessao_->transacao) throw std::logic_error("já há uma transação aberta");
        sessao_->ConfereConexao();
        sessao_->transacao = std::move(transacao_);
    }

  private:
    std::shared_ptr<TSessaoFirebird> sessao_;
    std::unique_ptr<TTransacaoFirebird> transacao_;
};

class TConexaoFirebird : public TConnection {
  public:
    explicit TConexaoFirebird(const TParametrosConexao& parametros)
        : conjunto_(parametros.Valor("CharacterSet")),
          sessao_(std::make_shared<TSessaoFirebird>(parametros)),
          metadados_(sessao_),
          trava_(sessao_) {}
    ~TConexaoFirebird() override { Close(); }

    void Open() override {
        Close();
        sessao_->Liga(conjunto_.empty() ? "UTF8" : conjunto_);
        try {
            if (!conjunto_.empty() || metadados_.ConjuntoDoBanco() != "NONE") return;
        } catch (...) {
            Close();
            throw;
        }
        sessao_->Desliga();
        sessao_->Liga("WIN1252");
    }

    void Close() noexcept override { sessao_->Desliga(); }
    bool Connected() const override { return sessao_->Ligada(); }
    TTipoBanco TipoBanco() const override { return TTipoBanco::tbInterbase; }
    std::string VersaoServidor() override { return metadados_.VersaoServidor(); }
    const TDialeto* DialetoDoServidor() const override { return &sessao_->Dialeto(); }

    void StartTransaction() override {
        if (InTransaction()) throw std::logic_error("já há uma transação aberta");
        sessao_->transacao = std::make_unique<TTransacaoFirebird>(*sessao_, TModo::Escrita);
    }

    void StartInstantaneo() override {
        if (InTransaction()) throw std::logic_error("já há uma transação aberta");
        sessao_->transacao = std::make_unique<TTransacaoFirebird>(*sessao_, TModo::Instantaneo);
    }

    void Commit() override { Aberta(std::exchange(sessao_->transacao, nullptr)).Commit(); }
    void Rollback() noexcept override { sessao_->transacao.reset(); }
    bool InTransaction() const override { return sessao_->transacao != nullptr; }
    void MarcaPonto(std::string_view nome) override { Ponto("SAVEPOINT ", nome); }
    void VoltaAoPonto(std::string_view nome) override { Ponto("ROLLBACK TO SAVEPOINT ", nome); }

    std::unique_ptr<TReserva> Reserva(std::string_view tabela) override {
        return std::make_unique<TReservaFirebird>(sessao_, metadados_.NomeExato(tabela));
    }

    bool Trava(std::string_view anuncio) override { return trava_.Toma(anuncio); }
    void Anuncia(std::string_view anuncio) override { trava_.Anuncia(anuncio); }
    std::optional<std::string> QuemTrava() override { return trava_.Quem(); }

    bool Perdida() const override { return sessao_->Perdida(); }
    std::chrono::milliseconds Espera() const override { return sessao_->Relogio().Espera(); }
    void Cancela() noexcept override { sessao_->Cancela(); }
    std::string Numero() const override { return sessao_->Numero() ? std::to_string(sessao_->Numero()) : ""; }

    /// While an index is made at its commit no statement is active, but pages are read and written.
    bool Trabalha(std::string_view numero) override {
        TComandoFirebird comando(sessao_,
                                 "select a.mon$state, s.mon$page_fetches + s.mon$page_reads + s.mon$page_writes"
                                 " from mon$attachments a join mon$io_stats s on s.mon$stat_id = a.mon$stat_id"
                                 " where a.mon$attachment_id = " +
                                     std::string(numero));
        comando.Abre();
        if (!comando.Proximo()) return false;
        const auto antes = std::exchange(paginas_, comando.Valor(1).ComoInteiro());
        return comando.Valor(0).ComoInteiro() == 1 || (antes && paginas_ != antes);
    }

    void Derruba(std::string_view numero) noexcept override {
        try {
            ExecuteDirect("delete from mon$attachments where mon$attachment_id = " + std::string(numero));
        } catch (...) {  // the user may not, it is gone, or the process is to end
        }
    }

    bool SoLeitura() override { return sessao_->Informacao(isc_info_db_read_only) == 1; }

    TSaude Saude() override { return sessao_->Saude(); }

    /// Of a file of this machine: the embedded engine's, or that of a server here which names it.
    std::optional<std::uintmax_t> EspacoLivre() override {
        const auto servidor = sessao_->Servidor();
        if (!servidor.empty() && !IgualSemCaixa(servidor, "localhost") && servidor != "127.0.0.1") return std::nullopt;
        std::error_code erro;
        const std::filesystem::path arquivo(Dialeto(*this).Capacidades().arquivo);
        if (!std::filesystem::is_regular_file(arquivo, erro)) return std::nullopt;
        const auto disco = std::filesystem::space(arquivo.parent_path(), erro);
        return erro ? std::nullopt : std::optional(disco.available);
    }

    void ExecuteDirect(std::string_view sql) override {
        if (InTransaction()) throw std::logic_error("ExecuteDirect dentro de uma transação: " + std::string(sql));
        TTransacaoFirebird transacao(*sessao_, TModo::Escrita);
        Executa(transacao, sql);
        transacao.Commit(sql);
    }

    std::unique_ptr<TComando> Prepara(std::string_view sql) override {
        return std::make_unique<TComandoFirebird>(sessao_, sql);
    }

    std::vector<std::string> NomesDeTabelas() override { return metadados_.NomesDeTabelas(); }
    bool ExisteTabela(std::string_view tabela) override { return metadados_.ExisteTabela(tabela); }
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override { return metadados_.Colunas(tabela); }
    TColunasPorTabela TodasAsColunas() override { return metadados_.TodasAsColunas(); }
    std::optional<TColunasPorTabela> ColunasDe(const std::vector<std::string>& tabelas) override {
        return metadados_.ColunasDe(tabelas);
    }
    TChavePrimaria ChavePrimaria(std::string_view tabela) override { return metadados_.ChavePrimaria(tabela); }
    TChavesPorTabela TodasAsChaves() override { return metadados_.TodasAsChaves(); }
    std::vector<TIndice> Indices(std::string_view tabela) override { return metadados_.Indices(tabela); }
    void Observa(TObservador observador) override { sessao_->DefineObservador(std::move(observador)); }

  private:
    static TTransacaoFirebird& Aberta(const std::unique_ptr<TTransacaoFirebird>& transacao) {
        if (!transacao) throw std::logic_error("não há transação aberta");
        return *transacao;
    }

    void Ponto(std::string_view verbo, std::string_view nome) {
        Executa(Aberta(sessao_->transacao), std::string(verbo) + std::string(nome));
    }

    /// Rows that a statement may have are discarded.
    void Executa(TTransacaoFirebird& transacao, std::string_view sql) {
        sessao_->Observa(sql);
        TInstrucaoFirebird instrucao(*sessao_, transacao, sessao_->TextoSql(sql), sql);
        const TRelogioDeEspera::TChamada chamada(sessao_->Relogio());
        TEstadoFirebird estado;
        Cliente().isc_dsql_execute(estado, transacao.Handle(), instrucao.Handle(), SQLDA_VERSION1, nullptr);
        sessao_->Confere(estado, sql);
    }

    std::string conjunto_;
    std::shared_ptr<TSessaoFirebird> sessao_;
    TMetadadosFirebird metadados_;
    TTravaFirebird trava_;
    std::optional<std::int64_t> paginas_;  // that the connection asked about had used
};

std::string BlocoDeCriacao(const TParametrosConexao& parametros, int tamanhoPagina) {
    const auto conjunto = parametros.Valor("CharacterSet");
    auto bloco = BlocoDeConexao(parametros, conjunto.empty() ? "UTF8" : conjunto);
    AdicionaAoBloco(bloco, isc_dpb_page_size, static_cast<std::uint32_t>(tamanhoPagina));
    if (!conjunto.empty()) AdicionaAoBloco(bloco, isc_dpb_set_db_charset, conjunto);
    const bool semEscritaForcada = IgualSemCaixa(parametros.Valor("ForcedWrites"), "False");
    AdicionaAoBloco(bloco, isc_dpb_force_write, std::string(1, semEscritaForcada ? 0 : 1));
    return bloco;
}

}  // namespace

std::unique_ptr<TConnection> CriaConexaoFirebird(const TParametrosConexao& parametros) {
    return std::make_unique<TConexaoFirebird>(parametros);
}

void CriaBancoFirebird(const TParametrosConexao& parametros, int tamanhoPagina) {
    const auto bloco = BlocoDeCriacao(parametros, tamanhoPagina);
    const auto arquivo = parametros.Valor("Database");
    isc_db_handle banco = 0;
    TEstadoFirebird estado;
    Cliente().isc_create_database(estado, 0, arquivo.c_str(), &banco, static_cast<short>(bloco.size()), bloco.data(),
                                  0);
    Confere(estado, "");
    Cliente().isc_detach_database(estado, &banco);
    Confere(estado, "");
}

}  // namespace wkd
