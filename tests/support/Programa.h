#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What a program said, and its exit code; minus the number of the signal that ended it.
struct TSaidaDePrograma {
    int codigo = -1;
    std::string saida, erros;
    bool Diz(std::string_view texto) const { return (saida + erros).find(texto) != std::string::npos; }
};

/// Runs a program in that folder, whose "tmp" is its temporary one, with `entrada` as its standard input.
TSaidaDePrograma RodaPrograma(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                              const std::filesystem::path& pasta, std::string_view entrada = "");

/// A program under way; ended with the object if it still is. Standard output and error as in RodaPrograma, or to
/// these descriptors.
class TProgramaEmCurso {
  public:
    TProgramaEmCurso(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                     const std::filesystem::path& pasta, int saida = -1, int erros = -1);
    ~TProgramaEmCurso();
    TProgramaEmCurso(const TProgramaEmCurso&) = delete;
    TProgramaEmCurso& operator=(const TProgramaEmCurso&) = delete;

    /// Waits until it takes signals by itself: before, the system ends it.
    void EsperaAtender() const;
    void Sinaliza(int sinal) const;
    static constexpr int kCorreAinda = -1000;
    /// Waits for the end; the code as in TSaidaDePrograma, kCorreAinda when it takes longer.
    int Espera(std::chrono::milliseconds prazo);

  private:
    int processo_;
};

}  // namespace wkd
