#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// How values of a packet field are laid out.
enum class TFormato {
    Inteiro,
    SemSinal,
    Logico,
    Flutuante,
    Bcd,
    Data,
    Hora,
    DataHora,
    DataHoraSql,
    TextoAnsi,
    TextoUnicode,
    Blob,
    Bytes
};

/// Field type in its two spellings: fieldtype of the XML form, type code and size of the binary one.
struct TTipoPacote {
    std::string_view xml;
    TFormato formato;
    std::uint16_t codigo;
    std::uint16_t tamanho;  // 0: any
    TTipoDado dado;
};

inline constexpr std::uint16_t kVariavel = 0x40;  // the size is that of a length prefix
inline constexpr std::uint16_t kMatriz = 0x80;

/// Null when the type is not read. Letter case of the fieldtype is ignored.
const TTipoPacote* TipoPorXml(std::string_view fieldtype);
const TTipoPacote* TipoPorCodigo(std::uint16_t codigo, std::uint16_t tamanho);
/// Such as "12 (tabela aninhada)", for the message that refuses it.
std::string NomeDoTipo(std::uint16_t codigo, std::uint16_t tamanho);

/// Parameters of a packet that are kept; letter case ignored.
bool ParametroConhecido(std::string_view nome);
/// Those that are lists.
bool ParametroDeLista(std::string_view nome);

/// Subtypes whose blobs are text.
bool MemoAnsi(std::string_view subtipo);
bool MemoUnicode(std::string_view subtipo);
/// Type of the values of a field: blobs of a text subtype are memos.
TTipoDado DadoDoCampo(const TTipoPacote& tipo, std::string_view subtipo);

}  // namespace wkd
