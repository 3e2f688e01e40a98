#include "Pendentes.h"

#include "ColunaPresa.h"

namespace wkd {

TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    std::string executado;
    TResultado resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, comando.texto);
    if (!resultado && resultado.Erro().Falha() == TFalha::Sintaxe && !comando.alternativa.empty())
        resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, executado = comando.alternativa);
    ctx.dm.EsqueceColunas(tabela);
    ctx.evidencia.Comando({comando.texto, executado, resultado.Mensagem()});
    return resultado;
}

}  // namespace wkd
