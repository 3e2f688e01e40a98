#include "tables/Dicionario.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "rows/LinhasDoDataSet.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Fields of a row by name; one that is missing is NULL.
class TLeitor {
  public:
    explicit TLeitor(const TLinhasVistas& linhas) : campos_(*linhas.campos) {}

    const TValor& Valor(const TLinha& linha, std::string_view campo) const {
        static const TValor kNulo;
        const int indice = IndiceDoCampo(campos_, campo);
        return indice < 0 ? kNulo : linha[static_cast<std::size_t>(indice)];
    }
    std::string Texto(const TLinha& linha, std::string_view campo) const { return Valor(linha, campo).ComoTexto(); }
    std::string Nome(const TLinha& linha, std::string_view campo) const {
        return std::string(Apara(Texto(linha, campo)));
    }

  private:
    const std::vector<TCampo>& campos_;
};

/// 0 for what is no number.
std::int64_t Inteiro(std::string_view texto) {
    std::int64_t numero = 0;
    texto = Apara(texto);
    std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    return numero;
}

TColunaDicionario Coluna(const TLeitor& le, const TLinha& linha) {
    return {.nome = le.Nome(linha, "NOME"),
            .tipo = std::string(AparaFim(le.Texto(linha, "TIPO"))),
            .tamanho = std::string(AparaFim(le.Texto(linha, "TAMANHO"))),
            .valorPadrao = le.Texto(linha, "VALOR_PADRAO"),
            .calculo = le.Texto(linha, "CALCULO"),
            .chave = static_cast<int>(Inteiro(le.Texto(linha, "CHAVE_DE_PESQUISA"))),
            .sequencia = Inteiro(le.Texto(linha, "SEQUENCIA")),
            .lookup = le.Texto(linha, "LOOKUP_ARQUIVO"),
            .tabela = le.Texto(linha, "ARQUIVO")};
}

/// Rows of SINDSECA in the order of its SEQUENCIA, those of the same one as they came.
std::vector<const TLinha*> EmSequencia(const TLinhasVistas& sindseca) {
    const TLeitor le(sindseca);
    std::vector<const TLinha*> linhas = sindseca.linhas;
    std::ranges::stable_sort(linhas, {},
                             [&](const TLinha* linha) { return le.Valor(*linha, "SEQUENCIA").ComoInteiro(); });
    return linhas;
}

template <class T>
const std::vector<T>& DaTabela(const std::map<std::string, std::vector<T>>& todos, std::string_view tabela) {
    static const std::vector<T> kNenhum;
    const auto achado = todos.find(ChaveDeNome(tabela));
    return achado == todos.end() ? kNenhum : achado->second;
}

template <class TItens>
auto DeNome(TItens& itens, std::string_view nome) {
    nome = Apara(nome);
    const auto achado = std::ranges::find_if(itens, [&](const auto& item) { return IgualSemCaixa(item.nome, nome); });
    return achado == itens.end() ? nullptr : &*achado;
}

}  // namespace

std::int64_t TColunaDicionario::Tamanho() const { return Inteiro(tamanho); }

void TDicionario::LeTabelas(const TLinhasVistas& sarquivo) {
    const TLeitor le(sarquivo);
    tabelas_.clear();
    for (const TLinha* linha : sarquivo.linhas) {
        const TValor& versao = le.Valor(*linha, "VERSAO");
        tabelas_.push_back({.modulo = ChaveDeValor(le.Valor(*linha, "COD_MODULO")),
                            .nome = le.Nome(*linha, "NOME_ARQUIVO"),
                            .descricao = le.Nome(*linha, "DESCRICAO_TABELA"),
                            .versao = versao.Nulo() ? std::nullopt : std::optional(versao.ComoInteiro())});
    }
    Numera();
}

void TDicionario::LeColunas(const TLinhasVistas& satrib) {
    const TLeitor le(satrib);
    colunas_.clear();
    for (const TLinha* linha : satrib.linhas)
        colunas_[ChaveDeNome(le.Texto(*linha, "ARQUIVO"))].push_back(wkd::Coluna(le, *linha));
}

void TDicionario::TrocaColunas(std::string_view tabela, const TLinhasVistas& satrib) {
    const TLeitor le(satrib);
    const std::string chave = ChaveDeNome(tabela);
    TColunas& colunas = colunas_[chave];
    colunas.clear();
    for (const TLinha* linha : satrib.linhas)
        if (ChaveDeNome(le.Texto(*linha, "ARQUIVO")) == chave) colunas.push_back(wkd::Coluna(le, *linha));
}

void TDicionario::LeIndices(const TLinhasVistas& sindsec, const TLinhasVistas& sindseca) {
    const TLeitor le(sindsec), daColuna(sindseca);
    indices_.clear();
    for (const TLinha* linha : sindsec.linhas)
        indices_[ChaveDeNome(le.Texto(*linha, "ARQUIVO"))].push_back(
            {.nome = le.Nome(*linha, "NOME"), .unico = le.Nome(*linha, "TIPO") == "1"});
    for (const TLinha* linha : EmSequencia(sindseca))
        for (TIndiceDicionario& indice : indices_[ChaveDeNome(daColuna.Texto(*linha, "ARQUIVO"))])
            if (IgualSemCaixa(indice.nome, daColuna.Nome(*linha, "NOME")))
                indice.colunas.push_back(daColuna.Nome(*linha, "CAMPO"));
}

void TDicionario::Numera() {
    lugares_.clear();
    for (std::size_t i = 0; i < tabelas_.size(); ++i)
        lugares_.try_emplace({tabelas_[i].modulo, ChaveDeNome(tabelas_[i].nome)}, i);
}

void TDicionario::LimitaA(const std::vector<std::string>& tabelas) {
    if (tabelas.empty()) return;
    std::set<std::string> chaves;
    for (const std::string& tabela : tabelas) chaves.insert(ChaveDeNome(tabela));
    std::erase_if(tabelas_, [&](const auto& tabela) { return !chaves.contains(ChaveDeNome(tabela.nome)); });
    Numera();
}

const TTabelaDicionario* TDicionario::Tabela(std::string_view modulo, std::string_view nome) const {
    const auto lugar = lugares_.find({std::string(modulo), ChaveDeNome(Apara(nome))});
    return lugar == lugares_.end() ? nullptr : &tabelas_[lugar->second];
}

void TDicionario::SupoeVersao(std::string_view modulo, std::string_view nome, std::optional<std::int64_t> versao) {
    if (const auto lugar = lugares_.find({std::string(modulo), ChaveDeNome(Apara(nome))}); lugar != lugares_.end())
        tabelas_[lugar->second].versao = versao;
}

void TDicionario::EsqueceTabela(std::string_view modulo, std::string_view nome) {
    lugares_.erase({std::string(modulo), ChaveDeNome(Apara(nome))});
}

const TDicionario::TColunas& TDicionario::Colunas(std::string_view tabela) const { return DaTabela(colunas_, tabela); }

const TColunaDicionario* TDicionario::Coluna(std::string_view tabela, std::string_view nome) const {
    return DeNome(Colunas(tabela), nome);
}

TColunaDicionario* TDicionario::Coluna(std::string_view tabela, std::string_view nome) {
    const auto achada = colunas_.find(ChaveDeNome(tabela));
    return achada == colunas_.end() ? nullptr : DeNome(achada->second, nome);
}

const TDicionario::TIndices& TDicionario::Indices(std::string_view tabela) const { return DaTabela(indices_, tabela); }

}  // namespace wkd
