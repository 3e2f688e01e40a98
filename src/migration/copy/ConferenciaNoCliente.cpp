#include "copy/ConferenciaNoCliente.h"

#include <cstdint>

#include "copy/ColunasDaCopia.h"
#include "dialect/Dialeto.h"
#include "values/SomaDeValores.h"

namespace wkd {

namespace {

constexpr std::size_t kMaiorTexto = 64 * 1024;  // no column of text takes more bytes

struct TSomas {
    std::uint64_t valores = 0, bytes = 0, textos = 0;
};

TSomas SomasDe(TConnection& conexao, const TColunaLida& lida, const TColunaFisica& outra) {
    TSomas somas;
    std::size_t tamanho = 0;
    const bool texto = lida.coluna.tipo == TTipoDado::Texto;
    const auto comando =
        conexao.Prepara("select " + Lida(lida.coluna, Dialeto(conexao), lida.apelido) + " from " + lida.origem);
    for (comando->Abre(); comando->Proximo();) {
        const TValor valor = comando->Valor(0);
        if (valor.Nulo()) continue;
        const TValor passado = ValorNaPassagem(valor, lida.coluna, outra);
        ++somas.valores;
        somas.bytes += HashDosBytes(texto ? passado : valor, tamanho);
        if (tamanho <= kMaiorTexto) somas.textos += HashDosBytes((texto ? valor : passado).ComoTexto(), tamanho);
    }
    return somas;
}

}  // namespace

bool IguaisNoCliente(TConnection& conexao, const TColunaLida& b, const TColunaLida& t) {
    const TSomas daBackup = SomasDe(conexao, b, t.coluna);
    const TSomas daTabela = SomasDe(conexao, t, b.coluna);
    if (daBackup.valores != daTabela.valores) return false;
    return daBackup.bytes == daTabela.bytes || (b.coluna.tipo != t.coluna.tipo && daBackup.textos == daTabela.textos);
}

}  // namespace wkd
