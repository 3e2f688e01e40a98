#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "packet/DataPacket.h"

namespace wkd {

/// Whole file as read-only memory, for as long as the object lives; the file may lose its name meanwhile.
class TMapeamento {
  public:
    /// Throws std::system_error.
    explicit TMapeamento(const std::filesystem::path& arquivo);
    ~TMapeamento();
    TMapeamento(const TMapeamento&) = delete;
    TMapeamento& operator=(const TMapeamento&) = delete;

    std::string_view Bytes() const { return {static_cast<const char*>(inicio_), tamanho_}; }

  private:
    void* inicio_ = nullptr;
    std::size_t tamanho_ = 0;
};

/// Cause and place of a fault in the bytes of a packet. It never leaves the packet reader, which knows file and
/// field and throws TErroPacote instead.
struct TErroTrecho {
    const char* onde;
    std::string causa;
};

/// Bytes of a packet file, kept by the reader and by every blob that stays in the file.
class TFontePacote {
  public:
    /// UTF-16 with byte order mark is turned into UTF-8 here. Throws TErroPacote.
    explicit TFontePacote(const std::filesystem::path& arquivo);

    std::string_view Bytes() const { return bytes_; }
    TFormaPacote Forma() const { return forma_; }
    /// Whether the bytes are UTF-8 by the file's byte order mark.
    bool MarcaUtf8() const { return marcaUtf8_; }

    /// Names that messages about blobs show, by position.
    std::vector<std::string> nomesDosCampos;

    /// Throws TErroPacote with file, place, field (when not empty) and cause.
    [[noreturn]] void Recusa(const TErroTrecho& erro, std::string_view campo) const;

  private:
    void Reconhece();

    std::filesystem::path arquivo_;
    TMapeamento mapa_;
    std::string convertido_;
    std::string_view bytes_;
    TFormaPacote forma_ = TFormaPacote::Xml;
    bool marcaUtf8_ = false;
};

/// Memory that rows may take, in proportion to the file: a few hundred bytes for each of its bytes.
class TOrcamento {
  public:
    explicit TOrcamento(std::uint64_t bytesDoArquivo) : resta_((64ULL << 20) + 200 * bytesDoArquivo) {}
    /// Throws TErroTrecho when the file asks for more.
    void Gasta(std::uint64_t bytes, const char* onde) {
        if (bytes > resta_) throw TErroTrecho{onde, "as linhas ocupariam memória demais para o tamanho do arquivo"};
        resta_ -= bytes;
    }

  private:
    std::uint64_t resta_;
};

}  // namespace wkd
