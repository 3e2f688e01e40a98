#include "tables/MarcaDaBackup.h"

#include <algorithm>
#include <iterator>

#include "dialect/Dialeto.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kNomes[] = {"", "guardando", "restaurando", "terminado"};  // of TMarcaDaBackup

std::string_view NomeDaMarca(TMarcaDaBackup marca) { return kNomes[static_cast<std::size_t>(marca)]; }

}  // namespace

TMarcaDaBackup MarcaDaBackup(TConnection& conexao, const std::string& backup) {
    const auto* achado = std::ranges::find(kNomes, Dialeto(conexao).Marca(conexao, backup));
    return achado == std::end(kNomes) ? TMarcaDaBackup::Nenhuma
                                      : static_cast<TMarcaDaBackup>(achado - std::begin(kNomes));
}

void MarcaBackup(TConnection& conexao, const std::string& backup, TMarcaDaBackup marca) {
    Dialeto(conexao).GravaMarca(conexao, backup, NomeDaMarca(marca));
}

std::vector<std::string> BackupsQueGuardam(TConnection& conexao) {
    return Dialeto(conexao).TabelasMarcadas(conexao, NomeDaMarca(TMarcaDaBackup::Restaurando));
}

std::string NomeDaBackup(std::string_view tabela) { return "B" + std::string(tabela); }

const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome) {
    const auto achada =
        std::ranges::find_if(colunas, [&](const TColunaFisica& coluna) { return IgualSemCaixa(coluna.nome, nome); });
    return achada == colunas.end() ? nullptr : &*achada;
}

}  // namespace wkd
