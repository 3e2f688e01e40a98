#include "PacoteInteiro.h"

namespace wkd {

TDataPacket LePacoteInteiro(const std::filesystem::path& arquivo) {
    auto pacote = LePacote(arquivo);
    for (const auto& linha : pacote.linhas)
        for (const auto& valor : linha)
            if (valor.Se<std::shared_ptr<const TConteudo>>()) BytesDoConteudo(valor);
    return pacote;
}

std::uint64_t BytesDoConteudo(const TValor& valor) {
    const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>();
    if (!conteudo) return valor.ComoBytes().size();
    std::uint64_t total = 0;
    char bloco[16384];
    for (const auto leitor = (*conteudo)->Abre(); const auto lidos = leitor->Le(bloco);) total += lidos;
    return total;
}

}  // namespace wkd
