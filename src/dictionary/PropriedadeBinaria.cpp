#include "PropriedadeBinaria.h"

#include "TiposPacote.h"

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

}  // namespace wkd
