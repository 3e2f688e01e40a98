#pragma once

#include <optional>
#include <string_view>

namespace wkd {

/// Pages of the wizard in their order.
enum class TPagina { Alias, Backup, Atualizacao, Opcoes, Status };

std::string_view NomeDaPagina(TPagina pagina);

inline constexpr std::string_view kTituloInicial = "Definir Alias que será atualizado";

/// Where the wizard is after a step.
struct TPasso {
    TPagina pagina;
    std::optional<std::string_view> titulo;  // none: the title stays as it was
};

/// The way through the pages. Without backup page ("nobkp" not asked for) "alias" is followed by "atualizacao".
class TNavegacao {
  public:
    void MostraBackup() { mostraBackup_ = true; }
    TPagina Pagina() const { return pagina_; }

    TPasso Proximo();
    TPasso Volta();

  private:
    TPagina pagina_ = TPagina::Alias;
    bool mostraBackup_ = false;
};

}  // namespace wkd
