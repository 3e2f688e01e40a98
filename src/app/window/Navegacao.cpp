#include "window/Navegacao.h"

namespace wkd {

namespace {

struct TTitulos {
    std::string_view nome, indo, voltando;
};
constexpr TTitulos kPaginas[] = {
    {"alias", kTituloInicial, kTituloInicial},
    {"backup", "Backup/Restauração", "Backup/Restauração"},
    {"atualizacao", "Atualização", "Atualização"},
    {"opcoes", "Opções de Atualização", "Opções"},  // told apart by direction
    {"status", "Status", "Status"},
};

const TTitulos& Titulos(TPagina pagina) { return kPaginas[static_cast<int>(pagina)]; }
TPagina Vizinha(TPagina pagina, int passos) { return static_cast<TPagina>(static_cast<int>(pagina) + passos); }

}  // namespace

std::string_view NomeDaPagina(TPagina pagina) { return Titulos(pagina).nome; }

TPasso TNavegacao::Proximo() {
    if (pagina_ == TPagina::Alias && !mostraBackup_) {
        pagina_ = TPagina::Atualizacao;
        return {pagina_, {}};
    }
    if (pagina_ != TPagina::Status) pagina_ = Vizinha(pagina_, 1);
    return {pagina_, Titulos(pagina_).indo};
}

TPasso TNavegacao::Volta() {
    if (pagina_ == TPagina::Atualizacao)
        pagina_ = TPagina::Alias;  // also when "backup" was shown on the way
    else if (pagina_ != TPagina::Alias)
        pagina_ = Vizinha(pagina_, -1);
    return {pagina_, Titulos(pagina_).voltando};
}

}  // namespace wkd
