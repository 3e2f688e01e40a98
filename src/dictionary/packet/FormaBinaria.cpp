#include "packet/FormaBinaria.h"

#include "packet/DataPacket.h"

namespace wkd {

std::uint64_t TPropriedade::Numero(std::size_t posicao) const {
    if (tamanho > 8 || posicao >= Elementos()) return 0;
    return TCursorBinario(dados.substr(posicao * tamanho)).Numero(tamanho);
}

TPropriedade LePropriedade(TCursorBinario& cursor) {
    TPropriedade propriedade;
    propriedade.nome = cursor.Bytes(cursor.U8());
    const char* onde = cursor.Onde();
    propriedade.tamanho = cursor.U16();
    const std::uint16_t tipo = cursor.U16();
    propriedade.matriz = (tipo & kMatriz) != 0;
    if (propriedade.matriz) {
        propriedade.dados = cursor.Bytes(std::uint64_t{cursor.U32()} * propriedade.tamanho);
    } else if (tipo & kVariavel) {
        if (propriedade.tamanho != 1 && propriedade.tamanho != 2 && propriedade.tamanho != 4)
            throw TErroTrecho{onde, "propriedade com prefixo de " + std::to_string(propriedade.tamanho) + " bytes"};
        propriedade.dados = cursor.Bytes(cursor.Numero(propriedade.tamanho));
    } else {
        propriedade.dados = cursor.Bytes(propriedade.tamanho);
    }
    return propriedade;
}

namespace {

/// Memory of a value outside its row.
std::size_t Peso(const TValor& valor) {
    if (const auto* texto = valor.Se<std::string>()) return texto->size();
    if (const auto* bytes = valor.Se<TBytes>()) return bytes->bytes.size();
    return 0;
}

}  // namespace

void THistoricoBinario::Carrega(const TPropriedade& registro) {
    if (!registro.matriz) return;
    for (std::size_t i = 0; i + 3 <= registro.Elementos(); i += 3) {
        const auto linha = static_cast<std::uint32_t>(registro.Numero(i));
        const auto anterior = static_cast<std::uint32_t>(registro.Numero(i + 1));
        if (linha != 0 && anterior != 0) anteriores_.insert_or_assign(linha - 1, anterior - 1);
    }
}

void THistoricoBinario::Completa(std::uint32_t linha, std::vector<TLinha>& linhas, TOrcamento& orcamento,
                                 const char* onde) {
    struct TElo {
        std::uint32_t linha, anterior;
        TCampos campos;
    };
    std::vector<TElo> cadeia;  // down to a row that has all its values
    for (auto achada = pendentes_.find(linha); achada != pendentes_.end();
         achada = pendentes_.find(cadeia.back().anterior)) {
        cadeia.push_back({achada->first, anteriores_.at(achada->first), std::move(achada->second)});
        pendentes_.erase(achada);  // so a circle in the log ends the walk
    }
    for (auto elo = cadeia.rbegin(); elo != cadeia.rend(); ++elo) {
        if (elo->anterior >= linhas.size()) continue;
        for (const auto campo : elo->campos) {
            const TValor& herdado = linhas[elo->anterior][campo];
            orcamento.Gasta(Peso(herdado), onde);
            linhas[elo->linha][campo] = herdado;
        }
    }
}

void THistoricoBinario::Completa(std::vector<TLinha>& linhas, TOrcamento& orcamento, const char* onde) {
    while (!pendentes_.empty()) Completa(pendentes_.begin()->first, linhas, orcamento, onde);
}

}  // namespace wkd
