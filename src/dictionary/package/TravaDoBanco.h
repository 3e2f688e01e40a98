#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "server/HBNConnection.h"

namespace wkd {

class TTrava;

/// Another update has the database: the text names who, where, since when and at what.
class TOutraAtualizacao : public TErroConhecido {
  public:
    explicit TOutraAtualizacao(const std::string& quem)
        : TErroConhecido(TFalha::OutraAtualizacao, "Outra atualização deste banco de dados está em andamento: " + quem +
                                                       ". Espere que ela termine e rode de novo.") {}
};

/// One update a database, whatever the machine. On a server the lock is held by a connection of its own, whose thread
/// announces the holder anew every `kIntervalo`, and with that learns whether the lock still stands. A file that the
/// embedded engine opens admits one process anyway: there the holder is named by a locked file beside it.
class TTravaDoBanco {
  public:
    static constexpr std::chrono::seconds kIntervalo{10};

    /// Takes the lock. Throws TOutraAtualizacao, TErroBanco, or TErroPacote for a lock file that cannot be used.
    explicit TTravaDoBanco(THBNConnection& conexao);
    ~TTravaDoBanco();
    TTravaDoBanco(const TTravaDoBanco&) = delete;
    TTravaDoBanco& operator=(const TTravaDoBanco&) = delete;

    /// What is being done, for whoever asks.
    void Atividade(std::string_view texto);
    /// Whether the lock is held, as far as it is known.
    bool Nossa() const { return nossa_; }
    /// Takes a lost lock again. Throws as the constructor does.
    void Garante();

  private:
    void Trava();
    void Retoma();
    void Confirma(std::chrono::milliseconds prazo);
    void ComPrazo(std::chrono::milliseconds prazo, const std::function<void()>& pedido);
    void Corre();
    void Anuncia();
    std::string Anuncio();

    const std::string quem_;  // and since when
    std::unique_ptr<TTrava> arquivo_;
    THBNConnection& doTrabalho_;
    std::unique_ptr<TConnection> conexao_;  // behind uso_
    std::atomic<bool> nossa_ = true, terminou_ = false;
    std::mutex uso_;
    std::mutex guarda_;
    std::condition_variable avisa_;
    std::string atividade_;  // behind guarda_
    bool fim_ = false;       // behind guarda_
    std::thread thread_;
};

/// Holds off updates, and others who would do the same, while the file of a database that the embedded engine opens is
/// exchanged. Null on a server. Throws TOutraAtualizacao, or TErroPacote for a lock file that cannot be used.
std::unique_ptr<TTrava> TravaDoArquivo(THBNConnection& conexao);

/// Who updates the alias's database now, as far as it can be seen: by the connection if it is open, else by the file.
std::optional<std::string> QuemAtualiza(THBNConnection& conexao);

}  // namespace wkd
