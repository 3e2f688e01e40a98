#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

namespace wkd {

/// How fast a piece of work goes and how long it will still take, by what was done in the last ten seconds: a change
/// of pace shows soon, a short stall does not. Feito() may be called for every row. The clock is a parameter.
class TEstimativa {
  public:
    using TInstante = std::chrono::steady_clock::time_point;
    using TRelogio = std::function<TInstante()>;

    explicit TEstimativa(TRelogio relogio = std::chrono::steady_clock::now) : relogio_(std::move(relogio)) {}

    /// A new piece of work of that size; 0: unknown.
    void Comeca(std::int64_t total);
    /// So much is done by now. Less than before begins the piece anew.
    void Feito(std::int64_t quantos);

    std::int64_t Total() const { return total_; }
    /// Nothing until there was a second to measure, and when nothing moved.
    std::optional<double> PorSegundo() const;
    /// Also nothing when the size is unknown or all is done.
    std::optional<std::chrono::seconds> Falta() const;
    /// "12.345 de 27.000 (45%), faltam 00:00:02, 8.211/s", as far as it is known; empty without work.
    std::string Texto() const;

  private:
    struct TAmostra {
        TInstante quando;
        std::int64_t feitos;
    };

    TRelogio relogio_;
    std::int64_t total_ = 0, feitos_ = 0;
    std::deque<TAmostra> amostras_;  // oldest first, half a second apart
};

}  // namespace wkd
