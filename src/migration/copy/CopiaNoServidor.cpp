#include "copy/CopiaNoServidor.h"

#include <algorithm>
#include <stdexcept>

#include "copy/CopiaPeloNumero.h"
#include "copy/CopiaPorFaixas.h"
#include "copy/FormaDaCopia.h"

namespace wkd {

namespace {

bool MantemAForma(const TColunaDaCopia& coluna) {
    return !coluna.origem ||
           (MesmaForma(*coluna.origem, coluna.destino) && (!coluna.numerada || BytesDoInteiro(*coluna.origem) > 0));
}

}  // namespace

std::unique_ptr<TCopiaNoServidor> TCopiaNoServidor::Para(TConnection& conexao, const TCopia& copia,
                                                         const std::vector<TColunaDaCopia>& colunas) {
    if (!std::ranges::all_of(colunas, MantemAForma)) return nullptr;
    const TDialeto& dialeto = Dialeto(conexao);
    try {
        if (dialeto.NumeraRegistros()) return std::make_unique<TCopiaPeloNumero>(conexao, copia, colunas);
        if (!dialeto.CopiaFaixas()) return nullptr;
        const auto chave = TCopiaPorFaixas::ColunaDaFaixa(conexao, copia, colunas);
        return chave ? std::make_unique<TCopiaPorFaixas>(conexao, copia, colunas, *chave) : nullptr;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return nullptr;
    }
}

TComando& TCopiaNoServidor::Linha(std::string_view chave) {
    linha_->Atribui(0, ValorDaChave(chave));
    linha_->Abre();
    if (!linha_->Proximo()) throw std::runtime_error("um registro sumiu durante a cópia");
    return *linha_;
}

}  // namespace wkd
