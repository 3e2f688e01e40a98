#include "report/Estimativa.h"

#include <cmath>

#include "values/TextoDeData.h"

namespace wkd {

namespace {

using namespace std::chrono_literals;

constexpr auto kEntreAmostras = 500ms;
constexpr auto kJanela = 10s;
constexpr auto kMinimo = 1s;  // what is measured in less tells nothing

}  // namespace

void TEstimativa::Comeca(std::int64_t total) {
    total_ = total;
    feitos_ = 0;
    amostras_.assign(1, {relogio_(), 0});
}

void TEstimativa::Feito(std::int64_t quantos) {
    if (amostras_.empty() || quantos < feitos_) Comeca(total_);
    feitos_ = quantos;
    const TInstante agora = relogio_();
    if (agora - amostras_.back().quando < kEntreAmostras) return;
    amostras_.push_back({agora, quantos});
    while (amostras_.size() > 2 && agora - amostras_[1].quando >= kJanela) amostras_.pop_front();
}

std::optional<double> TEstimativa::PorSegundo() const {
    if (amostras_.empty()) return std::nullopt;
    const std::chrono::duration<double> tempo = relogio_() - amostras_.front().quando;
    const auto feitos = feitos_ - amostras_.front().feitos;
    if (tempo < kMinimo || feitos <= 0) return std::nullopt;
    return static_cast<double>(feitos) / tempo.count();
}

std::optional<std::chrono::seconds> TEstimativa::Falta() const {
    const auto ritmo = PorSegundo();
    if (!ritmo || feitos_ >= total_) return std::nullopt;
    return std::chrono::seconds(std::llround(std::ceil(static_cast<double>(total_ - feitos_) / *ritmo)));
}

std::string TEstimativa::Texto() const {
    if (feitos_ == 0) return "";
    std::string texto = ComMilhares(feitos_);
    if (total_ > 0) texto += " de " + ComMilhares(total_) + " (" + std::to_string(feitos_ * 100 / total_) + "%)";
    if (const auto falta = Falta()) texto += ", faltam " + FormataDuracao(*falta);
    if (const auto ritmo = PorSegundo()) texto += ", " + ComMilhares(std::llround(*ritmo)) + "/s";
    return texto;
}

}  // namespace wkd
