#include "LeituraDoDicionario.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr const char* kColunas =
    "SELECT DISTINCT ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA,MASCARA,DISCRIMINACAO,VALOR_PADRAO, "
    "SOMENTE_LEITURA,  VISIVEL, PREENCHIMENTO_OBRIGATORIO,INCREMENTO, LOOKUP_ARQUIVO, "
    "LOOKUP_CP_PESQUISA,LOOKUP_INDICE, "
    "LOOKUP_CP_CHAVE, LOOKUP_CP_RETORNO,  LOG,CALCULO FROM SATRIB WHERE ";

std::string Lido(TWKDQuery& q, std::string_view campo) { return std::string(Apara(q.Texto(campo))); }

TColunaDicionario LeColuna(TWKDQuery& q) {
    TColunaDicionario coluna;
    coluna.nome = Lido(q, "NOME");
    coluna.tipo = Lido(q, "TIPO");
    coluna.tamanho = Lido(q, "TAMANHO");
    coluna.valorPadrao = AparaFim(q.Texto("VALOR_PADRAO"));
    coluna.calculo = q.Texto("CALCULO");
    coluna.chave = static_cast<int>(q.Inteiro("CHAVE_DE_PESQUISA"));
    return coluna;
}

TIndiceDicionario LeIndice(TWKDQuery& q) {
    const bool temTipo = IndiceDoCampo(q.Campos(), "TIPO") >= 0;  // older dictionaries have no such column
    return {Lido(q, "NOME"), temTipo && Lido(q, "TIPO") == "1"};
}

struct TTabelaLida {
    std::vector<TColunaDicionario> colunas;
    std::vector<std::string> chave;
};

/// The secondary indexes of the tables whose names differ in letter case alone.
struct TIndicesLidos {
    std::set<std::string> grafias;
    std::vector<TIndiceDicionario> indices;
    std::map<std::string, std::vector<std::string>, std::less<>> colunas;  // by index name
};

}  // namespace

/// Each part is read when it is first asked for.
class TLeituraDoDicionario::TMemoria {
  public:
    explicit TMemoria(TConnection& conexao) : conexao_(conexao) {}

    void Anota(std::string_view tabela) {
        if (grafias_) (*grafias_)[Maiusculas(tabela)].insert(std::string(tabela));
        ultima_.clear();
    }

    void Solta() { consulta_.reset(); }

    /// Null for a table that only a search of the whole SATRIB can tell: one of several spellings, or of none.
    const TTabelaLida* Tabela(std::string_view tabela) {
        if (!grafias_) grafias_ = LeGrafias();
        const std::string nome = Maiusculas(tabela);
        const auto grafias = grafias_->find(nome);
        if (grafias == grafias_->end() || grafias->second.size() != 1 || nome == "SATRIB") return nullptr;
        if (ultima_ != nome) lida_ = Le(*grafias->second.begin());
        ultima_ = nome;
        return &lida_;
    }

    /// Null when only the server can tell which of several spellings it takes for this one.
    const TIndicesLidos* Indices(std::string_view tabela) {
        static const TIndicesLidos kNenhum;
        if (!indices_) indices_ = LeIndices();
        const auto lidos = indices_->find(ChaveDeNome(tabela));
        if (lidos == indices_->end()) return &kNenhum;
        const auto& grafias = lidos->second.grafias;
        return grafias.size() == 1 && grafias.contains(std::string(AparaFim(tabela))) ? &lidos->second : nullptr;
    }

  private:
    using TGrafias = std::map<std::string, std::set<std::string>>;  // by the name in the server's capitals
    using TTodosOsIndices = std::map<std::string, TIndicesLidos>;   // by ChaveDeNome of the table

    TGrafias LeGrafias() {
        TGrafias grafias;
        TWKDQuery q(conexao_, "select distinct arquivo, upper(arquivo) as capitais from satrib");
        for (q.Open(); !q.Eof(); q.Next())
            grafias[std::string(AparaFim(q.Texto("capitais")))].emplace(AparaFim(q.Texto("arquivo")));
        return grafias;
    }

    /// A key may name a column without type: it is no column, and the server says so when the key is made.
    TTabelaLida Le(const std::string& grafia) {
        TTabelaLida lida;
        std::set<std::pair<std::string, std::string>> daChave;
        if (!consulta_)
            consulta_ =
                std::make_unique<TWKDQuery>(conexao_, std::string(kColunas) + "ARQUIVO = :arquivo ORDER BY SEQUENCIA");
        consulta_->Param("arquivo", grafia);
        for (consulta_->Open(); !consulta_->Eof(); consulta_->Next()) {
            auto coluna = LeColuna(*consulta_);
            if (coluna.chave == 1 && daChave.emplace(coluna.nome, consulta_->Texto("SEQUENCIA")).second)
                lida.chave.push_back(coluna.nome);
            if (!coluna.tipo.empty() && ColunaFisica(coluna)) lida.colunas.push_back(std::move(coluna));
        }
        return lida;
    }

    TTodosOsIndices LeIndices() {
        TTodosOsIndices todos;
        const auto daTabela = [&](TWKDQuery& q) -> TIndicesLidos& {
            const std::string arquivo(AparaFim(q.Texto("ARQUIVO")));
            TIndicesLidos& lidos = todos[ChaveDeNome(arquivo)];
            lidos.grafias.insert(arquivo);
            return lidos;
        };
        TWKDQuery indices(conexao_, "SELECT DISTINCT * FROM SINDSEC");
        for (indices.Open(); !indices.Eof(); indices.Next()) daTabela(indices).indices.push_back(LeIndice(indices));
        TWKDQuery colunas(conexao_, "SELECT DISTINCT * FROM SINDSECA ORDER BY SEQUENCIA");
        for (colunas.Open(); !colunas.Eof(); colunas.Next())
            daTabela(colunas).colunas[Lido(colunas, "NOME")].push_back(Lido(colunas, "CAMPO"));
        return todos;
    }

    TConnection& conexao_;
    std::optional<TGrafias> grafias_;
    std::unique_ptr<TWKDQuery> consulta_;
    std::string ultima_;  // table of lida_, in capitals
    TTabelaLida lida_;
    std::optional<TTodosOsIndices> indices_;
};

std::shared_ptr<const void> TLeituraDoDicionario::Lembra() {
    auto memoria = std::make_shared<TMemoria>(conexao_);
    memoria_ = memoria;
    return memoria;
}

void TLeituraDoDicionario::Anota(std::string_view tabela) {
    if (const auto memoria = memoria_.lock()) memoria->Anota(tabela);
}

void TLeituraDoDicionario::Solta() {
    if (const auto memoria = memoria_.lock()) memoria->Solta();
}

std::vector<TColunaDicionario> TLeituraDoDicionario::Colunas(std::string_view tabela) {
    if (const auto memoria = memoria_.lock())
        if (const TTabelaLida* lida = memoria->Tabela(tabela)) return lida->colunas;
    std::vector<TColunaDicionario> colunas;
    TWKDQuery q(conexao_, kColunas + ("UPPER(ARQUIVO) = " + Aspas(Maiusculas(tabela))) +
                              " AND (TIPO <> 'ftAggregate') ORDER BY SEQUENCIA");
    for (q.Open(); !q.Eof(); q.Next())
        if (auto coluna = LeColuna(q); ColunaFisica(coluna)) colunas.push_back(std::move(coluna));
    return colunas;
}

std::vector<std::string> TLeituraDoDicionario::Chave(std::string_view tabela) {
    if (const auto memoria = memoria_.lock())
        if (const TTabelaLida* lida = memoria->Tabela(tabela)) return lida->chave;
    std::vector<std::string> chave;
    TWKDQuery q(conexao_,
                " select DISTINCT nome,sequencia from satrib where chave_de_pesquisa = :chave and Upper(arquivo) = "
                ":arquivo order by sequencia");
    q.Param("chave", 1).Param("arquivo", Maiusculas(tabela));
    for (q.Open(); !q.Eof(); q.Next()) chave.push_back(Lido(q, "nome"));
    return chave;
}

std::vector<TIndiceDicionario> TLeituraDoDicionario::Indices(std::string_view tabela) {
    if (const auto memoria = memoria_.lock())
        if (const TIndicesLidos* lidos = memoria->Indices(tabela)) return lidos->indices;
    std::vector<TIndiceDicionario> indices;
    TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSEC WHERE ARQUIVO = " + Aspas(tabela));
    for (q.Open(); !q.Eof(); q.Next()) indices.push_back(LeIndice(q));
    return indices;
}

std::vector<std::string> TLeituraDoDicionario::ColunasDoIndice(std::string_view tabela, std::string_view indice) {
    if (const auto memoria = memoria_.lock())
        if (const TIndicesLidos* lidos = memoria->Indices(tabela))
            if (const auto achadas = lidos->colunas.find(indice); achadas != lidos->colunas.end())
                return achadas->second;
    std::vector<std::string> colunas;
    TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSECA WHERE ARQUIVO = " + Aspas(tabela) +
                              " AND NOME  = " + Aspas(indice) + " ORDER BY SEQUENCIA");
    for (q.Open(); !q.Eof(); q.Next()) colunas.push_back(Lido(q, "CAMPO"));
    return colunas;
}

}  // namespace wkd
