#pragma once

#include <QStringConverter>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// The run log: text with the newest entry first, mirrored to a file that accumulates across runs. Every write makes
/// a new file and renames it over the old one, so that an interruption leaves one of the two. Lines end with CR LF. A
/// file with a byte-order mark keeps its encoding; one without is UTF-8, and Windows-1252 is read, too. A file that has
/// grown to `limite` bytes is put aside as ".1", the one before as ".2" and so on, and a new one is begun.
class TLogDaExecucao {
  public:
    static constexpr std::size_t kLimite = 4 << 20;  // every entry writes the whole file
    static constexpr int kAntigos = 9;

    explicit TLogDaExecucao(std::filesystem::path caminho, std::size_t limite = kLimite);

    const std::filesystem::path& Caminho() const { return caminho_; }
    /// Takes the file's text, when there is a file. Throws std::system_error; the file, whose text is not known then,
    /// is never written any more.
    void Carrega();
    /// Adds an entry at the top and, when the file exists already, writes it. Throws std::system_error.
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao, TDataHora quando);
    /// Writes the file. Throws std::system_error.
    void Salva() const;
    /// Empties the text; the file stays until the next write.
    void LimparLog();
    std::string Texto() const { return texto_.substr(inicio_); }
    /// The newest entry.
    const std::string& Ultima() const { return ultima_; }

  private:
    std::size_t Tamanho() const { return texto_.size() - inicio_; }
    bool Existe() const;
    void PoeNoTopo(std::string_view texto);
    void Escreve(std::string_view bytes) const;
    void PoeDeLado();

    std::filesystem::path caminho_;
    std::size_t limite_;
    std::string ultima_;
    std::string texto_;  // free room in front, so that an entry at the top moves nothing
    std::size_t inicio_ = 0;
    std::optional<QStringConverter::Encoding> marca_;  // encoding by the loaded file's byte-order mark
    bool ilegivel_ = false;
};

}  // namespace wkd
