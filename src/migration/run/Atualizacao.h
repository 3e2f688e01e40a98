#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "context/Contexto.h"
#include "package/Pacote.h"
#include "package/TravaDoBanco.h"

namespace wkd {

/// The update run: brings the database of the open connection up to the dictionary of a package. Reports everything
/// through the screen and the run log and throws nothing of the database's or the package's.
class TAtualizacao {
  public:
    TAtualizacao(TDataModulo& dm, const TOpcoes& opcoes, TEstado& estado);

    TFimDaAtualizacao Executa();
    /// What Executa did.
    const TEvidencia& Evidencia() const { return ctx_.evidencia; }

  private:
    void Identifica();
    TFimDaAtualizacao Corre(TPastaDeTrabalho& pasta);
    void Inicia();
    bool Confirma();
    bool LiberadaPelosUsuarios();
    void ValidaNulos();
    void AtualizaTabelas();
    void CriaTini();
    void CompletaIndices();
    std::vector<std::string> TabelasExistentes();
    void TabelaAtual(class TMarcasDeAnalise& marcas);
    void RelatoriosEArquivos(const TPastaDeTrabalho& pasta);
    void PassosFinais();
    void Encerra();

    /// Throws TErroConhecido for a database that takes no changes.
    void ExigeEscrita();
    /// Before a step: after a loss the connection is opened again, with the lock. Throws when that cannot be.
    void GaranteConexao();
    void Reabre();
    /// Runs one pass; what it raises is reported under its name and the run goes on.
    template <class F>
    void Passo(std::string_view nome, F&& passo);
    void Reporta(std::string_view acao, const std::exception& erro);
    void NaoSeAplica(std::string_view nome);
    void SemDecisao(const std::string& tabela);
    std::vector<std::string> NaoRodaram() const;
    void RecolheErros();
    bool MarcadaParaNaoCriar() const;

    TContexto ctx_;
    std::optional<TTravaDoBanco> trava_;
    TDataHora inicio_;
    std::vector<std::filesystem::path> adiados_;
    std::vector<std::size_t> reaberturas_;  // how many errors there were when a lost connection was open again
};

/// Names of the passes behind the tables, in their order.
std::vector<std::string_view> PassosFinais();

/// The name of a step in people's words; any other name as it is.
std::string PassoParaLer(std::string_view nome);

}  // namespace wkd
