#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <string_view>

#include "Arquivos.h"
#include "PastaTemporaria.h"
#include "packet/DataPacket.h"

namespace wkd {

/// Bytes of pairs of hexadecimal digits; everything else, and the rest of a line behind "|", is left out.
inline std::string DeHexa(std::string_view texto) {
    std::string bytes;
    int meio = -1;
    bool comentario = false;
    for (const char c : texto) {
        comentario = c == '|' || (comentario && c != '\n');
        if (comentario || !std::isxdigit(static_cast<unsigned char>(c))) continue;
        const int valor = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
        if (meio >= 0) bytes += static_cast<char>(meio << 4 | valor);
        meio = meio >= 0 ? -1 : valor;
    }
    return bytes;
}

inline std::string U16(std::size_t numero) {
    return {static_cast<char>(numero & 0xFF), static_cast<char>(numero >> 8 & 0xFF)};
}
inline std::string U32(std::size_t numero) { return U16(numero & 0xFFFF) + U16(numero >> 16); }

/// Binary packet of descriptors and rows that were put together by hand.
inline std::string Binario(std::size_t campos, std::size_t linhas, const std::string& descricoes,
                           const std::string& dados, const std::string& propriedades = std::string(2, '\0')) {
    const auto meta = descricoes + propriedades;
    return DeHexa("9619E0BD 0100 0000 18000000") + U16(campos) + U32(linhas) + U32(3) + U16(24 + meta.size()) + meta +
           dados;
}

/// Field "X" without properties.
inline std::string CampoX(std::size_t tamanho, std::size_t tipo) {
    return "\x01X" + U16(tamanho) + U16(tipo) + U16(0) + U16(0);
}

inline TDataPacket LeBytes(std::string_view bytes) {
    static const TPastaTemporaria pasta;
    std::filesystem::remove(pasta / "TESTE.WKD");  // blobs of the packet read before stay in the old file
    EscreveArquivo(pasta / "TESTE.WKD", bytes);
    return LePacote(pasta / "TESTE.WKD");
}

/// What the packet is refused with; empty when it is read.
inline std::string ErroDe(std::string_view bytes) {
    try {
        LeBytes(bytes);
        return {};
    } catch (const TErroPacote& erro) {
        return erro.what();
    }
}

inline bool Contem(const std::string& texto, std::string_view parte) { return texto.find(parte) != std::string::npos; }

}  // namespace wkd
