#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "package/Pacote.h"
#include "values/Campo.h"
#include "values/Valor.h"

namespace wkd {

/// Whether a row with this status byte is part of the table: neither superseded (1), nor deleted (2), nor an unused
/// hole (0x20).
inline bool LinhaVisivel(unsigned status) { return (status & 0x23) == 0; }

/// Column of a data packet: the neutral field plus what its file form needs to be written again.
struct TCampoPacote : TCampo {
    std::string tipoXml;  // "i4", "string.uni", "bin.hex", ...
    std::string subtipo;  // "Autoinc", "Money", "FixedChar", "Guid", "Text", "Binary", ...
    bool somenteLeitura = false;
    bool oculto = false;
    bool ligacao = false;
};

/// Packet column that holds every value of the neutral field: texts and memos as Unicode, integers of 64 bits.
TCampoPacote CampoDePacote(const TCampo& campo);
TCampoPacote CampoDePacote(std::string_view nome, TTipoDado tipo, int tamanho = 0);

/// Parameter of a packet that is one number or a list of them: CHANGE_LOG (triples of row, predecessor and kind, rows
/// from 1), DEFAULT_ORDER and PRIMARY_KEY (fields from 1), LCID, AUTOINCVALUE.
struct TParametroPacote {
    std::string nome;
    std::vector<std::int64_t> numeros;
    bool operator==(const TParametroPacote&) const = default;
};

/// Client-dataset data packet: columns and rows.
struct TDataPacket {
    std::vector<TCampoPacote> campos;
    std::vector<TLinha> linhas;

    // With TLinhasDoPacote::Todas alone
    std::vector<std::uint8_t> estados = {};  // status byte of each row
    std::vector<TParametroPacote> parametros = {};

    TTabelaEmMemoria Tabela() &&;
};

enum class TFormaPacote { Xml, Binario };

/// By the first bytes of the file. Throws TErroPacote when it cannot be read.
TFormaPacote FormaDoPacote(const std::filesystem::path& arquivo);

/// Rows that are read: the table as it is, or every row of the file, superseded and deleted ones too, with its status
/// and the packet's parameters. A row that says of a field that it did not change has its predecessor's value.
enum class TLinhasDoPacote { Visiveis, Todas };

/// Reads a packet of either form, told apart by its first bytes. Every read is bounds-checked and memory stays in
/// proportion to the file. Blobs longer than 4 KB stay in the file (TConteudo) until they are read; reading them then
/// throws TErroPacote when they are damaged. Texts of no declared character set are UTF-8 when valid, else
/// Windows-1252. A decimal that does not fit TDecimal is its exact text.
/// Throws TErroPacote naming file, offset or line, field and cause.
TDataPacket LePacote(const std::filesystem::path& arquivo, TLinhasDoPacote linhas = TLinhasDoPacote::Visiveis);
/// Writes all rows, each with its status (visible and unchanged where there is none), and the parameters, into a new
/// file that then takes the name; a packet that was read from that very file has to be moved in. Times are kept to the
/// millisecond; the XML form does not tell an empty blob from NULL. A field without `tipoXml` is written as
/// CampoDePacote has it. Throws TErroPacote.
void GravaPacote(TDataPacket pacote, const std::filesystem::path& arquivo, TFormaPacote forma);

/// Throws TErroPacote naming the columns that the packet lacks, letter case ignored.
void ExigeCampos(const TDataPacket& pacote, const std::filesystem::path& arquivo,
                 std::initializer_list<std::string_view> campos);

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

/// Largest width and scale of a field: two bytes in the binary form, and no more counts in XML.
inline constexpr int kMaiorNumeroDoCampo = 0xFFFF;

/// Parameters of a packet that are kept; letter case ignored.
bool ParametroConhecido(std::string_view nome);
/// Whether a packet's parameter of that name is a list.
bool ParametroDeLista(std::string_view nome);
/// Whether both forms hold its numbers: 32 bits each, without sign in a list; one alone elsewhere.
bool ParametroInteiro(const TParametroPacote& parametro);

/// Subtypes whose blobs are text.
bool MemoAnsi(std::string_view subtipo);
bool MemoUnicode(std::string_view subtipo);
/// Type of the values of a field: blobs of a text subtype are memos.
TTipoDado DadoDoCampo(const TTipoPacote& tipo, std::string_view subtipo);

}  // namespace wkd
