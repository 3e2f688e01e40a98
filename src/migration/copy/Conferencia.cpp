#include "copy/Conferencia.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "copy/ColunasDaCopia.h"
#include "dialect/Dialeto.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/SomaDeValores.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kMaiorTexto = 64 * 1024;    // no column of text takes more bytes
constexpr std::size_t kColunasPorConsulta = 200;  // a compiled statement has 64 KB

/// A column and where to read it: what follows "from", and the table's name there with ".".
struct TColunaLida {
    std::string origem, apelido;
    TColunaFisica coluna;
};

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

/// Whether both columns hold the same contents, in whatever order. A text and a blob are the same by the bytes that the
/// text becomes in a blob, or by the text that the blob becomes. Contents are read in pieces.
bool IguaisNoCliente(TConnection& conexao, const TColunaLida& b, const TColunaLida& t) {
    const TSomas daBackup = SomasDe(conexao, b, t.coluna);
    const TSomas daTabela = SomasDe(conexao, t, b.coluna);
    if (daBackup.valores != daTabela.valores) return false;
    return daBackup.bytes == daTabela.bytes || (b.coluna.tipo != t.coluna.tipo && daBackup.textos == daTabela.textos);
}

/// A common column of backup "b" and table "t".
struct TPar : TComparacao {
    std::string nome;
    std::string bCrua, tCrua;  // the columns themselves
    bool noCliente = false;    // the server compares no such pair
    TColunaFisica daBackup, daTabela;

    void SoPresenca() { static_cast<TComparacao&>(*this) = {.b = bCrua, .t = tCrua, .soPresenca = true}; }
};

bool Longo(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }

TPar Par(const TColunaFisica& b, const TColunaFisica& t, const TDialeto& dialeto) {
    TPar par;
    par.nome = t.nome;
    par.b = par.bCrua = "b." + dialeto.Identificador(b.nome);
    par.t = par.tCrua = "t." + dialeto.Identificador(t.nome);
    par.noCliente = dialeto.SoNoCliente(b, t);
    par.daBackup = b;
    par.daTabela = t;
    if (!par.noCliente) static_cast<TComparacao&>(par) = dialeto.Comparacao(b, par.bCrua, t, par.tCrua);
    return par;
}

std::vector<TPar> Pares(const std::vector<TColunaFisica>& daBackup, const std::vector<TColunaFisica>& daTabela,
                        const std::set<std::string>& ignoradas, const TDialeto& dialeto) {
    std::vector<TPar> pares;
    for (const TColunaFisica& t : daTabela) {
        const TColunaFisica* b = ColunaDeNome(daBackup, t.nome);
        if (b && !ignoradas.contains(ChaveDeNome(t.nome))) pares.push_back(Par(*b, t, dialeto));
    }
    return pares;
}

/// Whether a column of the backup has a value that equals none, nor itself.
bool TemIncomparavel(TConnection& conexao, const std::string& backup, const TColunaFisica& coluna) {
    const std::string condicao = Dialeto(conexao).IgualANenhum(coluna);
    return !condicao.empty() &&
           ContaRegistros(conexao, "select count(*) as total from " + backup + " where " + condicao) > 0;
}

/// How rows are paired through the table's primary key.
struct TPareamento {
    std::string condicao;  // empty: it cannot be used
    std::string coluna;    // of the table's key
};

TPareamento Pareamento(TConnection& conexao, const std::vector<TColunaFisica>& daBackup,
                       const std::vector<TColunaFisica>& daTabela, const std::string& backup, const std::string& tabela,
                       const std::set<std::string>& ignoradas) {
    TPareamento pareamento;
    std::vector<std::string> partes;
    for (const auto& coluna : conexao.ChavePrimaria(tabela).colunas) {
        const TColunaFisica* b = ColunaDeNome(daBackup, coluna);
        const TColunaFisica* t = ColunaDeNome(daTabela, coluna);
        // Of another type, the key's index would not serve.
        const bool serve = b && t && b->tipo == t->tipo && b->conjunto == t->conjunto;
        if (!serve || ignoradas.contains(ChaveDeNome(coluna)) || TemIncomparavel(conexao, backup, *b)) return {};
        pareamento.coluna = "t." + Dialeto(conexao).Identificador(t->nome);
        partes.push_back("b." + Dialeto(conexao).Identificador(b->nome) + " = " + pareamento.coluna);
    }
    pareamento.condicao = Junta(partes, " and ");
    return pareamento;
}

std::int64_t LinhasDiferentes(TConnection& conexao, const std::string& backup, const std::string& tabela,
                              const TPareamento& pareamento, std::span<const TPar> pares) {
    std::vector<std::string> condicoes = {pareamento.coluna + " is null"};
    for (const auto& par : pares) condicoes.push_back(Dialeto(conexao).Diferem(par));
    return ContaRegistros(conexao, "select count(*) as total from " + backup + " b left join " + tabela + " t on " +
                                       pareamento.condicao + " where " + Junta(condicoes, " or "));
}

/// Count of values and check sum of every column, one after the other.
std::vector<TValor> Somas(TConnection& conexao, const std::string& origem, std::span<const TPar> pares,
                          std::string TComparacao::*lado) {
    const TDialeto& dialeto = Dialeto(conexao);
    std::vector<std::string> campos;
    for (const auto& par : pares) {
        campos.push_back(dialeto.ContaValores(par.*lado));
        campos.push_back(par.soPresenca ? "0" : dialeto.Soma(par, par.*lado));
    }
    const auto comando = conexao.Prepara("select " + Junta(campos, ", ") + " from " + origem);
    std::vector<TValor> somas;
    comando->Abre();
    if (comando->Proximo())
        for (std::size_t i = 0; i < campos.size(); ++i) somas.push_back(comando->Valor(i));
    return somas;
}

void ComparaSomas(TConnection& conexao, const std::string& backup, const std::string& tabela,
                  std::span<const TPar> pares, TConferencia& conferencia) {
    const auto b = Somas(conexao, backup + " b", pares, &TComparacao::b);
    const auto t = Somas(conexao, tabela + " t", pares, &TComparacao::t);
    for (std::size_t i = 0; i < pares.size(); ++i)
        if (!(b[2 * i] == t[2 * i]) || !(b[2 * i + 1] == t[2 * i + 1])) conferencia.colunas.push_back(pares[i].nome);
}

/// Reads what the server does not compare, or only by its beginning.
void ComparaNoCliente(TConnection& conexao, const std::string& backup, const std::string& tabela,
                      const TPareamento& pareamento, const std::vector<TPar>& pares, TConferencia& conferencia) {
    const bool pareia = !pareamento.condicao.empty();
    const TDialeto& dialeto = Dialeto(conexao);
    const bool soInicio = !pareia && dialeto.BytesDaSoma() > 0;
    const std::string juntas = backup + " b join " + tabela + " t on " + pareamento.condicao;
    for (const TPar& par : pares) {
        const bool longo = Longo(par.daBackup) && Longo(par.daTabela);
        if (!par.noCliente && !(soInicio && longo && !par.soPresenca)) continue;
        const auto resto = [&](const std::string& coluna) {
            return par.noCliente ? ""
                                 : " where " + dialeto.Bytes(coluna) + " > " + std::to_string(dialeto.BytesDaSoma());
        };
        if (!IguaisNoCliente(conexao, {pareia ? juntas : backup + " b" + resto(par.bCrua), "b.", par.daBackup},
                             {pareia ? juntas : tabela + " t" + resto(par.tCrua), "t.", par.daTabela}))
            conferencia.colunas.push_back(par.nome);
    }
}

}  // namespace

TConferencia ConfereComBackup(TConnection& conexao, const std::string& backup, const std::string& tabela,
                              const std::set<std::string>& ignoradas) {
    TConferencia conferencia;
    conferencia.naBackup = ContaRegistros(conexao, "select count(*) as total from " + backup);
    conferencia.naTabela = ContaRegistros(conexao, "select count(*) as total from " + tabela);
    const bool comparavel = Dialeto(conexao).ComparaConteudo();
    conferencia.emParte = !comparavel || !ignoradas.empty();
    if (!comparavel) return conferencia;

    const auto daBackup = conexao.Colunas(backup);
    const auto daTabela = conexao.Colunas(tabela);
    const auto todos = Pares(daBackup, daTabela, ignoradas, Dialeto(conexao));
    auto pares = todos;
    std::erase_if(pares, [](const TPar& par) { return par.noCliente; });
    const TPareamento pareamento = Pareamento(conexao, daBackup, daTabela, backup, tabela, ignoradas);
    const auto compara = [&] {
        conferencia.diferentes = 0;
        conferencia.colunas.clear();
        for (std::size_t i = 0; i < pares.size(); i += kColunasPorConsulta) {
            const auto parte = std::span(pares).subspan(i, std::min(kColunasPorConsulta, pares.size() - i));
            if (pareamento.condicao.empty())
                ComparaSomas(conexao, backup, tabela, parte, conferencia);
            else
                conferencia.diferentes =
                    std::max(conferencia.diferentes, LinhasDiferentes(conexao, backup, tabela, pareamento, parte));
        }
    };
    try {
        compara();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida() || std::ranges::none_of(pares, &TComparacao::converte)) throw;
        for (auto& par : pares)
            if (par.converte) par.SoPresenca();
        compara();
    }
    ComparaNoCliente(conexao, backup, tabela, pareamento, todos, conferencia);
    conferencia.emParte = conferencia.emParte || std::ranges::any_of(pares, &TComparacao::soPresenca);
    return conferencia;
}

std::vector<std::string> ConsultasDasDiferentes(TConnection& conexao, const std::string& backup,
                                                const std::string& tabela, const std::set<std::string>& ignoradas) {
    const auto daBackup = conexao.Colunas(backup);
    const auto daTabela = conexao.Colunas(tabela);
    const TPareamento pareamento = Pareamento(conexao, daBackup, daTabela, backup, tabela, ignoradas);
    std::vector<std::string> consultas;
    if (pareamento.condicao.empty()) return consultas;
    auto pares = Pares(daBackup, daTabela, ignoradas, Dialeto(conexao));
    for (auto& par : pares) par.soPresenca = par.soPresenca || par.noCliente;
    std::vector<std::string> lidas;
    for (const auto& coluna : daBackup) lidas.push_back(Lida(coluna, Dialeto(conexao), "b."));
    for (std::size_t i = 0; i < pares.size(); i += kColunasPorConsulta) {
        std::vector<std::string> condicoes;
        for (const auto& par : std::span(pares).subspan(i, std::min(kColunasPorConsulta, pares.size() - i)))
            condicoes.push_back(Dialeto(conexao).Diferem(par));
        consultas.push_back("select " + Junta(lidas, ",") + " from " + backup + " b join " + tabela + " t on " +
                            pareamento.condicao + " where " + Junta(condicoes, " or "));
    }
    return consultas;
}

}  // namespace wkd
