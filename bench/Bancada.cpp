#include "Bancada.h"

namespace wkd {

TLugar TBancada::Rede() { return {"rede", TServidorFirebird::DoProcesso().Endereco()}; }

const TBancoGrande& TBancada::Grande(const TLugar& lugar) {
    auto& banco = lugar.servidor.empty() ? embutido_ : naRede_;
    if (!banco) banco = std::make_unique<TBancoGrande>(lugar.servidor);
    return *banco;
}

}  // namespace wkd
