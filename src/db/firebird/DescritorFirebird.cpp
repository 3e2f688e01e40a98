#include "DescritorFirebird.h"

namespace wkd {
namespace {

std::unique_ptr<std::max_align_t[]> Bloco(std::size_t bytes) {
    return std::make_unique<std::max_align_t[]>(bytes / sizeof(std::max_align_t) + 1);
}

constexpr std::size_t kAlinhamento = 8;

}  // namespace

std::size_t BytesDoValor(const XSQLVAR& var) {
    const bool variavel = (var.sqltype & ~1) == SQL_VARYING;
    return static_cast<std::size_t>(var.sqllen) + (variavel ? sizeof(ISC_USHORT) : 0);
}

void TDescritorFirebird::Reserva(std::size_t lugares) {
    memoria_ = Bloco(XSQLDA_LENGTH(lugares));
    Da()->version = SQLDA_VERSION1;
    Da()->sqln = static_cast<ISC_SHORT>(lugares);
}

bool TDescritorFirebird::Cresce() {
    if (Da()->sqld <= Da()->sqln) return false;
    Reserva(Quantos());
    return true;
}

void TDescritorFirebird::AlocaLinha() {
    std::vector<std::size_t> onde(Quantos());
    std::size_t total = 0;
    for (std::size_t i = 0; i < Quantos(); ++i) {
        onde[i] = total;
        total += (BytesDoValor(Var(i)) + kAlinhamento - 1) / kAlinhamento * kAlinhamento;
    }
    linha_ = Bloco(total);
    indicadores_.assign(Quantos(), 0);
    for (std::size_t i = 0; i < Quantos(); ++i) {
        Var(i).sqldata = reinterpret_cast<ISC_SCHAR*>(linha_.get()) + onde[i];
        Var(i).sqlind = &indicadores_[i];
    }
}

}  // namespace wkd
