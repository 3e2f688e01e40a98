#include "copy/ColunasDaCopia.h"

#include <algorithm>
#include <limits>

#include "dialect/Dialeto.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/ConjuntoFirebird.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Number of a dictionary field; 0 when the package has no such field.
std::int64_t Numero(const TClientDataSet& dados, std::string_view campo) {
    return dados.IndiceDoCampo(campo) < 0 ? 0 : dados.Inteiro(campo);
}

}  // namespace

TRenumeracao::TRenumeracao(TClientDataSet& satribNovo) {
    for (satribNovo.First(); !satribNovo.Eof(); satribNovo.Next()) {
        const bool inteira = Minusculas(Apara(satribNovo.Texto("tipo"))) == "ftinteger";
        const bool exigida =
            Numero(satribNovo, "chave_de_pesquisa") == 1 || Numero(satribNovo, "preenchimento_obrigatorio") == 1;
        if (inteira && exigida && Numero(satribNovo, "incremento") > 0)
            contadores_.push_back({std::string(Apara(satribNovo.Texto("nome"))), 0});
    }
}

bool TRenumeracao::Tem(std::string_view coluna) const {
    return std::ranges::any_of(contadores_,
                               [&](const auto& contador) { return IgualSemCaixa(contador.coluna, coluna); });
}

void TRenumeracao::Continua(TConnection& conexao, const std::string& tabela) {
    const auto colunas = conexao.Colunas(tabela);
    for (auto& contador : contadores_) {
        if (!ColunaDeNome(colunas, contador.coluna)) continue;
        TWKDQuery q(conexao,
                    "select max(" + Dialeto(conexao).Identificador(contador.coluna) + ") as ULTIMO from " + tabela);
        q.Open();
        contador.ultimo = std::max<std::int64_t>(q.Inteiro("ULTIMO"), 0);
    }
}

TValor TRenumeracao::Numera(std::string_view coluna, const TValor& valor) {
    if (valor.ComoInteiro() != 0) return valor;
    return ++Contador(coluna).ultimo;
}

TRenumeracao::TContador& TRenumeracao::Contador(std::string_view coluna) {
    return *std::ranges::find_if(contadores_, [&](const auto& c) { return IgualSemCaixa(c.coluna, coluna); });
}

namespace {

/// Value of a default that is a literal; nothing for one that the server computes.
std::optional<TValor> Literal(const std::string& padrao) {
    if (padrao.size() >= 2 && padrao.front() == '\'' && padrao.back() == '\'')
        return TValor(Troca(padrao.substr(1, padrao.size() - 2), "''", "'"));
    return std::nullopt;
}

/// Whether rows stored without the column get a value of its default.
bool PadraoServe(const TColunaFisica& coluna) {
    const auto literal = Literal(coluna.padrao);
    if (!literal) return !coluna.padrao.empty();
    try {
        ConverteParaColuna(*literal, coluna);
        return true;
    } catch (const TErroConversao&) {
        return false;
    }
}

/// What every row gets in a column that the source lacks; nothing where that is up to the server.
std::optional<TValor> ValorSemOrigem(const TColunaFisica& coluna, bool numerada) {
    if (PadraoServe(coluna)) return numerada ? Literal(coluna.padrao) : std::nullopt;
    if (coluna.requerido) return ValorObrigatorio(coluna);
    return numerada || !coluna.padrao.empty() ? std::optional(TValor()) : std::nullopt;
}

std::size_t Caracteres(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::int64_t MaiorInteiro(const TColunaFisica& coluna) {
    const std::string tipo = Minusculas(coluna.tipoSql);
    if (tipo == "smallint") return std::numeric_limits<std::int16_t>::max();
    if (tipo == "integer" || tipo == "int") return std::numeric_limits<std::int32_t>::max();
    return std::numeric_limits<std::int64_t>::max();
}

[[noreturn]] void NaoCabe(const TColunaFisica& coluna) {
    throw TErroConversao("o valor não cabe na coluna " + coluna.nome + " " + coluna.tipoSql);
}

/// The text as the column keeps it. Throws TErroConversao for a character without a place in the column's set.
std::string BytesNaColuna(const std::string& texto, const TColunaFisica& coluna) {
    const auto conjunto = ConjuntoDoNome(coluna.conjunto);
    return conjunto ? DeUtf8(*conjunto, texto) : texto;
}

void ConfereTexto(const std::string& texto, const TColunaFisica& coluna) {
    if (coluna.tamanho > 0 && Caracteres(texto) > static_cast<std::size_t>(coluna.tamanho)) NaoCabe(coluna);
    BytesNaColuna(texto, coluna);
}

}  // namespace

TValor ConverteParaColuna(const TValor& valor, const TColunaFisica& coluna) {
    if (valor.Nulo() || coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo) return valor;
    if (coluna.tipo == TTipoDado::Bytes) {
        if (valor.ComoBytes().size() > static_cast<std::size_t>(coluna.tamanho)) NaoCabe(coluna);
        return valor;
    }
    const auto* real = valor.Se<double>();
    TValor convertido = valor.Converte(coluna.tipo);
    if (const auto* texto = convertido.Se<std::string>()) ConfereTexto(*texto, coluna);
    if (const auto* inteiro = convertido.Se<std::int64_t>()) {
        const auto maior = MaiorInteiro(coluna);
        if (*inteiro > maior || *inteiro < -maior - 1) NaoCabe(coluna);
        if (real && static_cast<double>(*inteiro) != *real) NaoCabe(coluna);
    }
    return convertido;
}

std::vector<TColunaDaCopia> ColunasDaCopia(TConnection& conexao, const std::string& origem, const std::string& destino,
                                           const TRenumeracao& renumeracao) {
    const auto daOrigem = conexao.Colunas(origem);
    std::vector<TColunaDaCopia> colunas;
    std::size_t lugar = 0;
    for (const TColunaFisica& coluna : conexao.Colunas(destino)) {
        if (!coluna.expressao.empty()) continue;
        const bool numerada = renumeracao.Tem(coluna.nome);
        if (const TColunaFisica* igual = ColunaDeNome(daOrigem, coluna.nome))
            colunas.push_back({coluna, *igual, lugar++, {}, numerada});
        else if (auto fixo = ValorSemOrigem(coluna, numerada))
            colunas.push_back({coluna, std::nullopt, 0, *std::move(fixo), numerada});
    }
    return colunas;
}

std::string Lida(const TColunaFisica& coluna, const TDialeto& dialeto, const std::string& apelido) {
    const std::string nome = dialeto.Identificador(coluna.nome);
    const std::string lida = dialeto.EmBytes(coluna, apelido + nome);
    return lida == apelido + nome ? lida : lida + " as " + nome;
}

std::string ListaDaOrigem(const std::vector<TColunaDaCopia>& colunas, const TDialeto& dialeto) {
    std::vector<std::string> nomes;
    for (const auto& coluna : colunas)
        if (coluna.origem) nomes.push_back(Lida(*coluna.origem, dialeto));
    return Junta(nomes, ",");
}

std::string ComandoInsere(const std::string& destino, const std::vector<TColunaDaCopia>& colunas,
                          const TDialeto& dialeto) {
    std::vector<std::string> nomes, parametros;
    for (std::size_t i = 0; i < colunas.size(); ++i) {
        nomes.push_back(dialeto.Identificador(colunas[i].destino.nome));
        parametros.push_back(dialeto.EmBytes(colunas[i].destino, ":P" + std::to_string(i)));
    }
    return ComandoInsere(destino, nomes, std::move(parametros));
}

TValor ValorNaPassagem(const TValor& valor, const TColunaFisica& origem, const TColunaFisica& destino) {
    const auto um = [](TTipoDado tipo, std::initializer_list<TTipoDado> tipos) {
        return std::ranges::find(tipos, tipo) != tipos.end();
    };
    if (valor.Nulo()) return valor;
    if (origem.tipo == TTipoDado::Texto && um(destino.tipo, {TTipoDado::Blob, TTipoDado::Memo, TTipoDado::Bytes}))
        return TBytes{BytesNaColuna(valor.ComoTexto(), destino.tipo == TTipoDado::Memo ? destino : origem)};
    if (origem.tipo != TTipoDado::Memo || um(destino.tipo, {TTipoDado::Blob, TTipoDado::Memo, TTipoDado::Bytes}))
        return valor;
    const auto conjunto = ConjuntoDoNome(origem.conjunto);
    const bool deUmByte = conjunto == TConjunto::Win1252 || conjunto == TConjunto::Iso8859_1;
    return deUmByte ? TValor(ParaUtf8(*conjunto, valor.ComoBytes())) : valor;
}

}  // namespace wkd
