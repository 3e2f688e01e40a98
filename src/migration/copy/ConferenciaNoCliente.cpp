#include "copy/ConferenciaNoCliente.h"

#include <array>
#include <cstdint>

#include "copy/ColunasDaCopia.h"

namespace wkd {

namespace {

constexpr std::size_t kMaiorTexto = 64 * 1024;  // no column of text takes more bytes

bool Longa(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }

/// FNV-1a, mixed once more so that sums of it say something.
class THash {
  public:
    void Soma(std::string_view bytes) {
        for (const char c : bytes) hash_ = (hash_ ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    }
    std::uint64_t Valor() const { return (hash_ ^ (hash_ >> 29)) * 0xbf58476d1ce4e5b9; }

  private:
    std::uint64_t hash_ = 0xcbf29ce484222325;
};

std::uint64_t HashDosBytes(const TValor& valor, std::size_t& tamanho) {
    THash hash;
    tamanho = 0;
    const auto soma = [&](std::string_view bytes) {
        hash.Soma(bytes);
        tamanho += bytes.size();
    };
    if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>()) {
        std::array<char, 32 * 1024> pedaco;
        const auto leitor = (*conteudo)->Abre();
        while (const auto lidos = leitor->Le(pedaco)) soma({pedaco.data(), lidos});
    } else {
        soma(valor.ComoBytes());
    }
    return hash.Valor();
}

struct TSomas {
    std::uint64_t valores = 0, bytes = 0, textos = 0;
};

TSomas SomasDe(TConnection& conexao, const TColunaLida& lida, const TColunaFisica& outra) {
    TSomas somas;
    std::size_t tamanho = 0;
    const bool texto = lida.coluna.tipo == TTipoDado::Texto;
    const auto comando =
        conexao.Prepara("select " + Lida(lida.coluna, conexao.TipoBanco(), lida.apelido) + " from " + lida.origem);
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

bool SoNoCliente(const TColunaFisica& b, const TColunaFisica& t, TTipoBanco banco) {
    const auto mistas = [](const TColunaFisica& um, const TColunaFisica& outro) {
        return um.tipo == TTipoDado::Texto && Longa(outro);
    };
    if (banco != TTipoBanco::tbSQLServer) return mistas(b, t) || mistas(t, b);
    const auto deTexto = [](const TColunaFisica& c) { return c.tipo == TTipoDado::Texto || c.tipo == TTipoDado::Memo; };
    return (deTexto(b) && t.tipo == TTipoDado::Blob) || (deTexto(t) && b.tipo == TTipoDado::Blob);
}

bool IguaisNoCliente(TConnection& conexao, const TColunaLida& b, const TColunaLida& t) {
    const TSomas daBackup = SomasDe(conexao, b, t.coluna);
    const TSomas daTabela = SomasDe(conexao, t, b.coluna);
    if (daBackup.valores != daTabela.valores) return false;
    return daBackup.bytes == daTabela.bytes || (b.coluna.tipo != t.coluna.tipo && daBackup.textos == daTabela.textos);
}

}  // namespace wkd
