#pragma once

#include <utility>
#include <vector>

#include "Evidencia.h"
#include "Tela.h"

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

}  // namespace wkd
