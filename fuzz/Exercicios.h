#pragma once

#include <filesystem>

namespace wkd {

/// What is done with a file of any content. Nothing of it may crash, hang or take memory out of proportion; a file that
/// is refused is fine, one that is read must mean the same after it was written again. Throws std::logic_error where it
/// does not. New files are made in the folder of the file.

/// Packet, in either form: all its contents are read, then it is written in both forms and read back.
void ExercitaPacote(const std::filesystem::path& arquivo);
/// Packet as lines of JSON: it is written in that form and in the binary one and read back.
void ExercitaJson(const std::filesystem::path& arquivo);
/// Zip package: nothing may come to stand outside the folder it is extracted to.
void ExercitaZip(const std::filesystem::path& arquivo);
/// Settings file: what is written into it reads back, and the rest of it stays.
void ExercitaIni(const std::filesystem::path& arquivo);

}  // namespace wkd
