#pragma once

#include <filesystem>

#include "packet/DataPacket.h"

namespace wkd {

// A packet as lines of JSON, for people, version control and other tools. The first line describes the fields and the
// parameters, every other one is a row: an object by field name, without the fields that are NULL.
//
//     {"campos":[{"nome":"ID","tipo":"i4","requerido":true},{"nome":"FOTO","tipo":"bin.hex"}],"parametros":{"LCID":[1033]}}
//     {"RowState":8,"ID":1,"FOTO":{"base64":"AP+A"}}
//
// "RowState" stands where the status byte is not 0. Of fields of the same name, the later ones have a "chave" of their
// own. Decimals keep their digits, dates and times are texts ("2026-07-01 10:00:00.5").

/// Whether the name is that of such a file: ".jsonl", any letter case.
bool NomeDeJson(const std::filesystem::path& arquivo);

/// Everything the packet has, losslessly, into a new file that then takes the name. Throws TErroPacote.
void GravaJson(TDataPacket pacote, const std::filesystem::path& arquivo);
/// Contents are held in memory. Throws TErroPacote naming file, line, field and cause.
TDataPacket LeJson(const std::filesystem::path& arquivo);

/// Keys of the fields in rows, no two alike.
std::vector<std::string> ChavesDosCampos(const std::vector<TCampoPacote>& campos);

inline constexpr std::string_view kChaveDoEstado = "RowState";
/// Type of short byte fields, which the XML form does not tell from blobs.
inline constexpr std::string_view kTipoBytes = "bytes";

}  // namespace wkd
