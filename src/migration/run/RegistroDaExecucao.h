#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "context/Contexto.h"
#include "decision/DecisaoDaTabela.h"
#include "screen/Tela.h"

namespace wkd {

/// Whether a line of the error list and the message of a log entry are of one error: either holds the other.
bool MesmoErro(std::string_view linha, std::string_view mensagem);

/// A screen that passes everything on to another one and keeps what was reported as an error. A line of the error list
/// and the log entry of the same error count once.
class TTelaRegistrada : public ITela {
  public:
    explicit TTelaRegistrada(ITela& tela) : tela_(tela) {}

    /// What was kept since the last call.
    std::vector<TErroRegistrado> RetiraErros() { return std::exchange(erros_, {}); }

    void Memo1(std::string_view linha) override { tela_.Memo1(linha); }
    void Memo2(std::string_view linha) override;
    void LblAtual(std::string_view texto) override { tela_.LblAtual(texto); }
    void LblGeral(std::string_view texto) override { tela_.LblGeral(texto); }
    IBarra& PbAtual() override { return tela_.PbAtual(); }
    IBarra& PbGeral() override { return tela_.PbGeral(); }
    void MostraOcupado(std::string_view texto, int percentual) override { tela_.MostraOcupado(texto, percentual); }
    void EscondeOcupado() override { tela_.EscondeOcupado(); }
    void PastaDoPacote(const std::filesystem::path& pasta) override { tela_.PastaDoPacote(pasta); }
    void SemResposta(std::string_view texto) override { tela_.SemResposta(texto); }
    void ProcessaMensagens() override { tela_.ProcessaMensagens(); }
    void Informacao(std::string_view texto) override;
    bool Confirmacao(std::string_view texto, bool semPessoa) override;
    TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) override;
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) override;

  private:
    void Guarda(std::string_view mensagem, std::string_view tabela, std::string_view acao);

    ITela& tela_;
    std::vector<TErroRegistrado> erros_;
};

/// Rows of which a table's content hash is computed at most, so that it costs no more than a second.
inline constexpr std::int64_t kLinhasDoHash = 50'000;
inline constexpr std::string_view kMetodoDoHash =
    "soma, em qualquer ordem dos registros, de hash(hash(coluna 1) '.' hash(coluna 2) ...) mod 2147483647; sem valor: "
    "n";

/// Number that depends on all values of all rows and not on their order. Empty on servers without such a function.
std::string HashDoConteudo(TConnection& conexao, const std::string& tabela);

/// Evidence of one table's step, from the beginning of a scope to its end. What cannot be counted is left out.
class TRegistroDaTabela {
  public:
    TRegistroDaTabela(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao);
    ~TRegistroDaTabela();
    TRegistroDaTabela(const TRegistroDaTabela&) = delete;
    TRegistroDaTabela& operator=(const TRegistroDaTabela&) = delete;

  private:
    void Mede(TTabelaRegistrada& registrada);
    std::optional<std::int64_t> Conta(const std::string& tabela);

    TContexto& ctx_;
    const std::string tabela_;
    const bool mexe_;
    const std::chrono::steady_clock::time_point inicio_ = std::chrono::steady_clock::now();
};

}  // namespace wkd
