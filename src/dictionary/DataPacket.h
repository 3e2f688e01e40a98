#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Campo.h"
#include "Pacote.h"

namespace wkd {

/// Column of a data packet: the neutral field plus what its file form needs to be written again.
struct TCampoPacote : TCampo {
    std::string tipoXml;     // "i4", "string.uni", "bin.hex", ...
    std::string subtipo;     // "Autoinc", "Money", "FixedChar", "Guid", "Text", "Binary", ...
    bool somenteLeitura = false;
    bool oculto = false;
    bool ligacao = false;
};

/// Client-dataset data packet: columns and visible rows.
struct TDataPacket {
    std::vector<TCampoPacote> campos;
    std::vector<TLinha> linhas;

    TTabelaEmMemoria Tabela() &&;
};

enum class TFormaPacote { Xml, Binario };

/// Reads a packet of either form, told apart by its first bytes. Every read is bounds-checked and memory stays in
/// proportion to the file. Blobs longer than a few KB stay in the file (TConteudo) until they are read.
/// Throws TErroPacote naming file, offset or line, field and cause.
TDataPacket LePacote(const std::filesystem::path& arquivo);
/// Writes all rows as visible, unchanged rows. Throws TErroPacote.
void GravaPacote(const TDataPacket& pacote, const std::filesystem::path& arquivo, TFormaPacote forma);

}  // namespace wkd
