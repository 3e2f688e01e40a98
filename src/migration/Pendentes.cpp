#include "Pendentes.h"

#include "ColunaPresa.h"

namespace wkd {

namespace {

/// Whether the server did not take the words; types that do not go together are among them.
bool Recusado(const TErroBanco& erro) { return erro.Falha() == TFalha::Sintaxe || erro.Falha() == TFalha::Conversao; }

}  // namespace

TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    std::string executado;
    TResultado resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, comando.texto);
    if (!resultado && Recusado(resultado.Erro()) && !comando.alternativa.empty())
        resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, executado = comando.alternativa);
    ctx.dm.EsqueceColunas(tabela);
    ctx.evidencia.Comando({comando.texto, executado, resultado.Mensagem()});
    return resultado;
}

}  // namespace wkd
