#include "Pendentes.h"

namespace wkd {

TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    TResultado resultado = ctx.dm.Executa(comando.texto);
    if (!resultado && resultado.Erro().Falha() == TFalha::Sintaxe && !comando.alternativa.empty())
        resultado = ctx.dm.Executa(comando.alternativa);
    ctx.dm.EsqueceColunas(tabela);
    return resultado;
}

}  // namespace wkd
