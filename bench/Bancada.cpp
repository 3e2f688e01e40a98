#include "Bancada.h"

#include <cstdlib>

namespace wkd {

TBancada::TBancada(TTurno turno) : turno_(std::move(turno)) { setenv("TMPDIR", turno_.pasta.c_str(), 1); }

TLugar TBancada::Rede() {
    auto& servidor = TServidorFirebird::DoProcesso();
    if (!turno_.atraso) return {"rede", servidor.Endereco()};
    if (!linha_) linha_.emplace(servidor.Porta(), std::chrono::milliseconds(*turno_.atraso));
    return {"rede", "127.0.0.1/" + std::to_string(linha_->Porta())};
}

std::vector<TLugar> TBancada::Lugares() {
    if (turno_.atraso) return {Rede()};
    return {{"embutido", ""}, Rede()};
}

int TBancada::Quantos(int naMemoria) const {
    const int atraso = turno_.atraso.value_or(0);
    return naMemoria / (atraso > 5 ? 50 : atraso > 0 || !turno_.naMemoria ? 10 : 1);
}

const TBancoGrande& TBancada::Grande(const TLugar& lugar, int tabelas) {
    return grandes_.try_emplace({lugar.servidor, tabelas}, lugar.servidor, tabelas).first->second;
}

}  // namespace wkd
