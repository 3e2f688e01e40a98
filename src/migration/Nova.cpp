#include "Nova.h"

#include "DicionarioDaTabela.h"
#include "Texto.h"

namespace wkd {

void Nova(TContexto& ctx, std::string_view tabela) {
    const std::string nome = Maiusculas(tabela);
    ctx.tabelaAtual = nome;
    ctx.acaoAtual = "Criar Tabela";
    ctx.estado.falhouApagar = false;
    RegravaDicionario(ctx, nome, true);
    if (!ctx.dm.Atualiza.ReCriaTabela(nome)) {
        ctx.estado.falhouApagar = true;
        ctx.Tela().Memo2("A tabela " + nome + " não foi reconstruída: " + ctx.dm.Atualiza.Erro());
        ctx.Log(ctx.dm.Atualiza.Erro());
    }
    ctx.dm.AtualizaListaDeTabelas();
}

}  // namespace wkd
