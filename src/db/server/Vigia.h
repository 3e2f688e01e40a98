#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <string_view>
#include <thread>

#include "server/HBNConnection.h"

namespace wkd {

/// Limits of a server's silence.
struct TPrazos {
    std::chrono::milliseconds aviso{30'000};     // then the silence is told
    std::chrono::milliseconds pergunta{15'000};  // between two questions whether the server is at work
    std::chrono::milliseconds limite{600'000};   // without a sign from it the call is given up; 0: never

    /// The times of an alias: `limite` is its key "TempoLimite", in seconds.
    static TPrazos DoAlias(const TAliases& aliases, const std::string& alias);
};

/// Watches from a thread of its own, for as long as it lives, that the server answers a connection. A statement may
/// take long on a server that works at it: a further connection asks the server for that, and each time it says so the
/// limit begins anew. An embedded engine is not watched: it answers, or the program does not run either.
class TVigia {
  public:
    /// Tells how long the server has been silent; empty when it answers again.
    using TAviso = std::function<void(std::string_view)>;

    TVigia(THBNConnection& conexao, TPrazos prazos, TAviso avisa);
    ~TVigia();
    TVigia(const TVigia&) = delete;
    TVigia& operator=(const TVigia&) = delete;

  private:
    using TRelogio = std::chrono::steady_clock;

    void Vigia();
    void Olha();
    void Pergunta();

    THBNConnection& conexao_;
    const TPrazos prazos_;
    const TAviso avisa_;
    std::unique_ptr<TConnection> outra_;
    std::future<bool> resposta_;
    TRelogio::time_point perguntada_{}, sinal_{};
    bool avisado_ = false, trabalha_ = false;
    std::mutex guarda_;
    std::condition_variable avisaFim_;
    bool fim_ = false;  // behind guarda_
    std::thread thread_;
};

}  // namespace wkd
