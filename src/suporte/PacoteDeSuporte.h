#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "package/Trava.h"

namespace wkd {

/// A support bundle in the making: its files, in a private folder, and what each is. A part that cannot be had does not
/// keep the others out; why is told in the bundle itself.
class TPacoteDeSuporte {
  public:
    TPacoteDeSuporte(std::string alias, const std::filesystem::path& temporaria)
        : alias_(std::move(alias)), pasta_(temporaria) {}

    const std::filesystem::path& Pasta() const { return pasta_.Caminho(); }
    /// A file of the folder goes in.
    void Junta(const std::string& nome, std::string_view oQueE);
    void Grava(const std::string& nome, std::string_view oQueE, std::string_view texto);
    /// What is not in it, and why.
    void Falta(const std::string& parte, const std::string& porque);

    const std::vector<std::string>& Faltas() const { return faltas_; }
    /// Name, size and meaning of every file, a line each.
    std::string Lista() const;
    /// Packs the files, LEIAME.txt in front. The archive, which must not exist, is there whole or not at all. Throws
    /// TErroPacote, std::system_error.
    void Conclui(const std::filesystem::path& arquivo);

  private:
    struct TMembro {
        std::string nome, oQueE;
    };
    std::string Leiame() const;

    std::string alias_;
    TPastaPassageira pasta_;
    std::vector<TMembro> membros_;
    std::vector<std::string> faltas_;
};

/// Throws TErroPacote when something has the name.
void ExigeNomeLivre(const std::filesystem::path& arquivo);
/// Unpacks a bundle into a private folder. Throws TErroPacote for what is none.
void AbrePacoteDeSuporte(const std::filesystem::path& arquivo, const std::filesystem::path& pasta);

}  // namespace wkd
