#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "package/ArquivoNovo.h"
#include "packet/DataPacket.h"

namespace wkd {

/// Packet file being written, under another name until it is complete: the old file may be the source of blobs.
class TSaidaPacote {
  public:
    explicit TSaidaPacote(const std::filesystem::path& arquivo);
    TSaidaPacote(const TSaidaPacote&) = delete;
    TSaidaPacote& operator=(const TSaidaPacote&) = delete;

    TSaidaPacote& operator<<(std::string_view bytes);
    /// The packet goes before the file takes its place: its blobs may be held by the old one, which Windows then would
    /// not let go.
    void Conclui(TDataPacket&& gravado);

    /// Throws TErroPacote with file, row (from 1) and field.
    [[noreturn]] void Recusa(std::size_t linha, const TCampoPacote& campo, const std::string& causa) const;

  private:
    std::filesystem::path arquivo_;
    std::filesystem::path novo_;
    TArquivoNovo aberto_;
    std::string bloco_;
};

/// Writers of the two forms. `campos` are those of the packet, each with its `tipoXml`.
void GravaXml(const std::vector<TCampoPacote>& campos, const TDataPacket& pacote, TSaidaPacote& saida);
void GravaBinario(const std::vector<TCampoPacote>& campos, const TDataPacket& pacote, TSaidaPacote& saida);

/// Status byte of a row.
inline std::uint8_t EstadoDaLinha(const TDataPacket& pacote, std::size_t linha) {
    return linha < pacote.estados.size() ? pacote.estados[linha] : 0;
}

/// File type of a field. Throws TErroPacote when there is none of that name.
const TTipoPacote& TipoParaGravar(const TCampoPacote& campo, const TSaidaPacote& saida);
/// Signed or unsigned 64 bits of an integer value, checked against the field's size; std::range_error when it does
/// not fit.
std::uint64_t InteiroParaGravar(const TValor& valor, const TTipoPacote& tipo);

}  // namespace wkd
