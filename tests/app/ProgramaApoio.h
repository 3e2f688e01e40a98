#pragma once

#include <memory>
#include <string>
#include <vector>

#include "PastaTemporaria.h"
#include "Programa.h"
#include "connection/Connection.h"

namespace wkd {

/// The installed program in a folder of its own, with an example database of an older release (alias "LOJA") and the
/// example package of a newer one, run from outside.
class TProgramaInstalado {
  public:
    TProgramaInstalado();

    using TSaida = TSaidaDePrograma;
    /// Runs the program with these arguments; standard input is `entrada`.
    TSaida Roda(const std::vector<std::string>& argumentos, const std::string& entrada = "") const;
    /// The unattended update of the alias "LOJA".
    TSaida Atualiza(const std::string& pacote = "pacote.zip") const { return Roda({"LOJA;", pacote}); }

    /// The same update, left under way.
    TProgramaEmCurso Comeca(int saida = -1, int erros = -1) const {
        return TProgramaEmCurso("./AtualizaWKD", {"LOJA;", "pacote.zip"}, pasta_.Caminho(), saida, erros);
    }

    std::filesystem::path operator/(const std::filesystem::path& nome) const { return pasta_ / nome; }
    std::string Arquivo(const std::filesystem::path& nome) const;
    void Escreve(const std::filesystem::path& nome, std::string_view bytes) const;
    /// Folder of the package's files; Empacota makes the package of what it holds.
    std::filesystem::path PastaDoPacote() const { return pasta_ / "fontes"; }
    void Empacota() const;

    /// The database, open; nobody else may have it open meanwhile.
    std::unique_ptr<TConnection> Banco() const;
    std::string Retrato() const;

  private:
    TPastaTemporaria pasta_;
};

/// Changes the first place of a packet's text, and makes the package anew. A text that is not there fails the test.
void NoPacote(const TProgramaInstalado& loja, const std::string& arquivo, const std::string& de,
              const std::string& para);

}  // namespace wkd
