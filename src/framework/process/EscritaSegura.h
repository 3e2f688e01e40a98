#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace wkd {

struct TFechaArquivo {
    void operator()(std::FILE* arquivo) const { std::fclose(arquivo); }
};
using TArquivo = std::unique_ptr<std::FILE, TFechaArquivo>;

// Files in a folder that others may write to: the program never goes through a link that somebody laid there, and never
// waits at a pipe. Each throws std::system_error.

/// Whether the name itself is a link, or a folder's junction.
bool EhLink(const std::filesystem::path& caminho);
/// An ordinary file for reading. `porLink`: the name may be a link, such as that of the settings file.
TArquivo AbreParaLer(const std::filesystem::path& caminho, bool porLink = false);
/// All of an ordinary file.
std::string LeArquivoInteiro(const std::filesystem::path& caminho, bool porLink = false);
/// Takes away what has the name and makes a file, with the modes that the system gives to a new one.
TArquivo CriaArquivo(const std::filesystem::path& caminho);
/// The same without taking anything away: null where the name is taken, so that one of two who want it gets it.
TArquivo CriaSeNaoHa(const std::filesystem::path& caminho);
/// For adding at the end, and reading. When it is new or ours it is for its owner and, in a folder that hands its group
/// on (setgid), for that group, whose members may add to it, too.
TArquivo AbreParaAcrescentar(const std::filesystem::path& caminho);

/// A stream into an open file. A failed write loses what was not flushed, and nothing else.
class TSaidaEmArquivo : public std::ostream {
  public:
    explicit TSaidaEmArquivo(TArquivo arquivo);

  private:
    class TBuffer : public std::streambuf {
      public:
        explicit TBuffer(TArquivo arquivo);
        ~TBuffer() override { sync(); }

      protected:
        int_type overflow(int_type caractere) override;
        int sync() override;

      private:
        TArquivo arquivo_;
        std::array<char, 1 << 14> bytes_;
    };

    TBuffer buffer_;
};

/// Who may read a file beside its owner: nobody, or the group of its folder, where that group may write there or hands
/// itself on to what is made in it (setgid); of what holds secrets only where it hands itself on, and when it is new.
enum class TLeitores { Nenhum, GrupoDaPasta, GrupoHerdado };

/// Writes a file beside `caminho`, down to the disk, and renames it over: a crash leaves the old content or the new
/// one. A link is replaced, not followed. The old file's mode and owner stay; a new file is for its owner and
/// `leitores` alone. Throws std::system_error, the old file untouched.
void SubstituiArquivo(const std::filesystem::path& caminho, std::string_view bytes,
                      TLeitores leitores = TLeitores::Nenhum);

/// Makes a folder in which everybody may do what he may in `modelo`. Throws std::system_error.
void CriaPastaComo(const std::filesystem::path& pasta, const std::filesystem::path& modelo);

/// The same with a whole file that stands beside `caminho` already and is gone afterwards, also after a failure. A link
/// is followed, and a file system without modes and owners is no failure here.
void SubstituiPor(const std::filesystem::path& novo, const std::filesystem::path& caminho);

/// A rename over what has the other name, which waits a little for who holds it. Throws std::system_error.
void Renomeia(const std::filesystem::path& de, const std::filesystem::path& para);

/// What a link leads to, when nobody but root and the current user can have laid it; else throws std::system_error.
std::filesystem::path SemLinks(const std::filesystem::path& caminho);

/// Waits until all that was written to a file, whoever wrote it, has come down to the disk. Throws std::system_error.
void LevaAoDisco(const std::filesystem::path& caminho);

}  // namespace wkd
