#include "tables/Dicionario.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

#include "connection/Connection.h"
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

/// Makes columns of rows of SATRIB.
class TLeitorDeColunas {
  public:
    explicit TLeitorDeColunas(const std::vector<TCampo>& campos) {
        std::ranges::transform(kCamposDaColuna, lugares_.begin(),
                               [&](std::string_view campo) { return IndiceDoCampo(campos, campo); });
    }
    TColunaDicionario Coluna(const TLinha& linha) const {
        enum : std::size_t { cTabela, cNome, cTipo, cTamanho, cPadrao, cCalculo, cChave, cSequencia, cLookup };
        return {.nome = std::string(Apara(Texto(linha, cNome))),
                .tipo = std::string(AparaFim(Texto(linha, cTipo))),
                .tamanho = std::string(AparaFim(Texto(linha, cTamanho))),
                .valorPadrao = Texto(linha, cPadrao),
                .calculo = Texto(linha, cCalculo),
                .chave = static_cast<int>(Inteiro(Texto(linha, cChave))),
                .sequencia = Inteiro(Texto(linha, cSequencia)),
                .lookup = Texto(linha, cLookup),
                .tabela = Texto(linha, cTabela)};
    }

  private:
    std::string Texto(const TLinha& linha, std::size_t campo) const {
        return lugares_[campo] < 0 ? std::string() : linha[static_cast<std::size_t>(lugares_[campo])].ComoTexto();
    }

    std::array<int, std::size(kCamposDaColuna)> lugares_;
};

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
    const TLeitorDeColunas le(*satrib.campos);
    colunas_.clear();
    for (const TLinha* linha : satrib.linhas) Inclui(le.Coluna(*linha));
    for (auto& [tabela, colunas] : colunas_) colunas.shrink_to_fit();
}

void TDicionario::LeColunas(TComando& satrib) {
    colunas_.clear();
    satrib.Abre();
    const TLeitorDeColunas le(satrib.Campos());
    for (TLinha linha(satrib.Campos().size()); satrib.Proximo();) {
        for (std::size_t i = 0; i < linha.size(); ++i) linha[i] = satrib.Valor(i);
        Inclui(le.Coluna(linha));
    }
    for (auto& [tabela, colunas] : colunas_) colunas.shrink_to_fit();
}

void TDicionario::Inclui(TColunaDicionario coluna) {
    colunas_[ChaveDeNome(coluna.tabela)].push_back(std::move(coluna));
}

void TDicionario::TrocaColunas(std::string_view tabela, const TLinhasVistas& satrib) {
    const TLeitorDeColunas le(*satrib.campos);
    const std::string chave = ChaveDeNome(tabela);
    TColunas& colunas = colunas_[chave];
    colunas.clear();
    for (const TLinha* linha : satrib.linhas)
        if (auto coluna = le.Coluna(*linha); ChaveDeNome(coluna.tabela) == chave) colunas.push_back(std::move(coluna));
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
