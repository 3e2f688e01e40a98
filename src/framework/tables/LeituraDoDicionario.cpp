#include "tables/LeituraDoDicionario.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "rows/WKDQuery.h"
#include "values/Texto.h"

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

/// Tables of the customer's columns and descriptions; those that `ondeColuna` and `ondeTabela` leave.
std::string ConsultaDoCliente(const std::string& ondeColuna, const std::string& ondeTabela) {
    return "select satrib_user.arquivo as NOME from satrib_user" + ondeColuna +
           " union select NOME_ARQUIVO from SARQUIVO_user" + ondeTabela;
}

struct TTabelaLida {
    std::vector<TColunaDicionario> colunas;
    std::vector<std::string> chave;
};

/// What is read of the tables whose names differ in letter case alone.
template <class T>
struct TDeNome {
    std::set<std::string> grafias;
    T lido;
};
template <class T>
using TPorNome = std::map<std::string, TDeNome<T>>;  // by ChaveDeNome

using TIndices = std::vector<TIndiceDicionario>;
using TColunasPorIndice = std::map<std::string, std::vector<std::string>, std::less<>>;

/// The part of the row's table.
template <class T>
T& DaTabela(TPorNome<T>& todos, TWKDQuery& q) {
    const std::string arquivo(AparaFim(q.Texto("ARQUIVO")));
    TDeNome<T>& deNome = todos[ChaveDeNome(arquivo)];
    deNome.grafias.insert(arquivo);
    return deNome.lido;
}

/// Null when only the server can tell which of several spellings it takes for this one.
template <class T>
const T* Acha(const TPorNome<T>& todos, std::string_view tabela) {
    static const T kNada;
    const auto deNome = todos.find(ChaveDeNome(tabela));
    if (deNome == todos.end()) return &kNada;
    const auto& grafias = deNome->second.grafias;
    return grafias.size() == 1 && grafias.contains(std::string(AparaFim(tabela))) ? &deNome->second.lido : nullptr;
}

}  // namespace

/// Each part is read when it is first asked for.
class TLeituraDoDicionario::TMemoria {
  public:
    explicit TMemoria(TConnection& conexao) : conexao_(conexao) {}

    void Anota(std::string_view tabela) {
        if (grafias_) (*grafias_)[Maiusculas(tabela)].insert(std::string(tabela));
        ultima_.clear();
    }

    void Solta() {
        consulta_.reset();
        preparados_.clear();
    }

    std::shared_ptr<TComando> Prepara(const std::string& sql) {
        std::shared_ptr<TComando>& preparado = preparados_[sql];
        if (!preparado) preparado = conexao_.Prepara(sql);
        return preparado;
    }

    /// Null for a table that only a search of the whole SATRIB can tell: one of several spellings, or of none. What
    /// cannot be read here may be there, or be reported from there.
    const TTabelaLida* Tabela(std::string_view tabela) {
        try {
            return Procura(tabela);
        } catch (const TErroBanco& erro) {
            consulta_.reset();
            if (erro.ConexaoPerdida()) throw;
        } catch (const TErroConversao&) {
            consulta_.reset();
        }
        return nullptr;
    }

    bool ClienteTem(std::string_view tabela) {
        if (!doCliente_) doCliente_ = LeDoCliente();
        return doCliente_->contains(ChaveDeNome(tabela));
    }

    const TIndices* Indices(std::string_view tabela) {
        if (DosIndices(tabela)) return nullptr;
        if (!indices_) indices_ = LeIndices();
        return Acha(*indices_, tabela);
    }

    const TColunasPorIndice* Colunas(std::string_view tabela) {
        if (DosIndices(tabela)) return nullptr;
        if (!colunas_) colunas_ = LeColunas();
        return Acha(*colunas_, tabela);
    }

  private:
    using TGrafias = std::map<std::string, std::set<std::string>>;  // by the name in the server's capitals

    const TTabelaLida* Procura(std::string_view tabela) {
        if (!grafias_) grafias_ = LeGrafias();
        const std::string nome = Maiusculas(tabela);
        const auto grafias = grafias_->find(nome);
        if (grafias == grafias_->end() || grafias->second.size() != 1 || nome == "SATRIB") return nullptr;
        if (ultima_ != nome) lida_ = Le(*grafias->second.begin());
        ultima_ = nome;
        return &lida_;
    }

    /// The work on the tables of the indexes changes what they hold.
    bool DosIndices(std::string_view tabela) {
        const std::string nome = ChaveDeNome(tabela);
        if (nome != "SINDSEC" && nome != "SINDSECA") return false;
        indices_.reset();
        colunas_.reset();
        return true;
    }

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
        ultima_.clear();
        if (!consulta_)
            consulta_ =
                std::make_unique<TWKDQuery>(conexao_, std::string(kColunas) + "ARQUIVO = :arquivo ORDER BY SEQUENCIA");
        consulta_->Param("arquivo", grafia);
        for (consulta_->Open(); !consulta_->Eof(); consulta_->Next()) {
            auto coluna = LeColuna(*consulta_);
            if (coluna.chave == 1 && daChave.emplace(coluna.nome, consulta_->Texto("SEQUENCIA")).second)
                lida.chave.push_back(coluna.nome);
            if (!consulta_->Campo("TIPO").Nulo() && ColunaFisica(coluna)) lida.colunas.push_back(std::move(coluna));
        }
        return lida;
    }

    std::set<std::string> LeDoCliente() {
        std::set<std::string> nomes;
        TWKDQuery q(conexao_, ConsultaDoCliente("", ""));
        for (q.Open(); !q.Eof(); q.Next()) nomes.insert(ChaveDeNome(q.Texto("NOME")));
        return nomes;
    }

    TPorNome<TIndices> LeIndices() {
        TPorNome<TIndices> todos;
        TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSEC");
        for (q.Open(); !q.Eof(); q.Next()) DaTabela(todos, q).push_back(LeIndice(q));
        return todos;
    }

    TPorNome<TColunasPorIndice> LeColunas() {
        TPorNome<TColunasPorIndice> todas;
        TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSECA ORDER BY SEQUENCIA");
        for (q.Open(); !q.Eof(); q.Next()) DaTabela(todas, q)[Lido(q, "NOME")].push_back(Lido(q, "CAMPO"));
        return todas;
    }

    TConnection& conexao_;
    std::optional<TGrafias> grafias_;
    std::unique_ptr<TWKDQuery> consulta_;
    std::map<std::string, std::shared_ptr<TComando>> preparados_;  // by text
    std::string ultima_;                                           // table of lida_, in capitals
    TTabelaLida lida_;
    std::optional<std::set<std::string>> doCliente_;  // names as of ChaveDeNome
    std::optional<TPorNome<TIndices>> indices_;
    std::optional<TPorNome<TColunasPorIndice>> colunas_;
};

std::shared_ptr<const void> TLeituraDoDicionario::Lembra() {
    auto memoria = std::make_shared<TMemoria>(conexao_);
    memoria_ = memoria;
    return memoria;
}

void TLeituraDoDicionario::Anota(std::string_view tabela) {
    if (const auto memoria = memoria_.lock()) memoria->Anota(tabela);
}

std::shared_ptr<TComando> TLeituraDoDicionario::Prepara(std::string_view tabela, const std::string& sql) {
    const auto memoria = IgualSemCaixa(tabela, "SATRIB") ? nullptr : memoria_.lock();
    return memoria ? memoria->Prepara(sql) : conexao_.Prepara(sql);
}

void TLeituraDoDicionario::Solta() {
    if (const auto memoria = memoria_.lock()) memoria->Solta();
}

bool TLeituraDoDicionario::Aceita(std::string_view tabela, std::string_view parte, std::string_view nome) {
    if (NomeDeSql(Apara(nome))) return true;
    const std::string texto =
        RecusaDoNome("Tabela " + std::string(Apara(tabela)) + ", " + std::string(parte) + " do dicionário", nome);
    if (recusados_.insert(texto).second && recusa_) recusa_(tabela, texto);
    return false;
}

std::vector<std::string> TLeituraDoDicionario::TodosOuNenhum(std::string_view tabela, std::vector<std::string> nomes) {
    const bool todos = std::ranges::all_of(nomes, [&](const auto& nome) { return Aceita(tabela, "coluna", nome); });
    return todos ? std::move(nomes) : std::vector<std::string>();
}

std::vector<TColunaDicionario> TLeituraDoDicionario::Colunas(std::string_view tabela) {
    auto colunas = TodasAsColunas(tabela);
    std::erase_if(colunas, [&](const auto& coluna) { return !Aceita(tabela, "coluna", coluna.nome); });
    return colunas;
}

std::vector<std::string> TLeituraDoDicionario::Chave(std::string_view tabela) {
    return TodosOuNenhum(tabela, TodaAChave(tabela));
}

std::vector<TIndiceDicionario> TLeituraDoDicionario::Indices(std::string_view tabela) {
    auto indices = TodosOsIndices(tabela);
    std::erase_if(indices, [&](const auto& indice) { return !Aceita(tabela, "índice", indice.nome); });
    return indices;
}

std::vector<std::string> TLeituraDoDicionario::ColunasDoIndice(std::string_view tabela, std::string_view indice) {
    return TodosOuNenhum(tabela, TodasDoIndice(tabela, indice));
}

std::vector<TColunaDicionario> TLeituraDoDicionario::TodasAsColunas(std::string_view tabela) {
    if (const auto memoria = memoria_.lock())
        if (const TTabelaLida* lida = memoria->Tabela(tabela)) return lida->colunas;
    std::vector<TColunaDicionario> colunas;
    TWKDQuery q(conexao_, kColunas + ("UPPER(ARQUIVO) = " + Aspas(Maiusculas(tabela))) +
                              " AND (TIPO <> 'ftAggregate') ORDER BY SEQUENCIA");
    for (q.Open(); !q.Eof(); q.Next())
        if (auto coluna = LeColuna(q); ColunaFisica(coluna)) colunas.push_back(std::move(coluna));
    return colunas;
}

std::vector<std::string> TLeituraDoDicionario::TodaAChave(std::string_view tabela) {
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

std::vector<TIndiceDicionario> TLeituraDoDicionario::TodosOsIndices(std::string_view tabela) {
    if (const auto memoria = memoria_.lock())
        if (const TIndices* lidos = memoria->Indices(tabela)) return *lidos;
    std::vector<TIndiceDicionario> indices;
    TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSEC WHERE ARQUIVO = " + Aspas(tabela));
    for (q.Open(); !q.Eof(); q.Next()) indices.push_back(LeIndice(q));
    return indices;
}

std::vector<std::string> TLeituraDoDicionario::TodasDoIndice(std::string_view tabela, std::string_view indice) {
    if (const auto memoria = memoria_.lock())
        if (const TColunasPorIndice* lidas = memoria->Colunas(tabela))
            if (const auto achadas = lidas->find(indice); achadas != lidas->end()) return achadas->second;
    std::vector<std::string> colunas;
    TWKDQuery q(conexao_, "SELECT DISTINCT * FROM SINDSECA WHERE ARQUIVO = " + Aspas(tabela) +
                              " AND NOME  = " + Aspas(indice) + " ORDER BY SEQUENCIA");
    for (q.Open(); !q.Eof(); q.Next()) colunas.push_back(Lido(q, "CAMPO"));
    return colunas;
}

bool TLeituraDoDicionario::ClienteTem(std::string_view tabela) {
    try {
        if (const auto memoria = memoria_.lock()) return memoria->ClienteTem(tabela);
        const std::string nome = Aspas(tabela);
        TWKDQuery q(conexao_,
                    ConsultaDoCliente(" where satrib_user.arquivo = " + nome, " where NOME_ARQUIVO = " + nome));
        q.Open();
        return !q.Eof();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return true;
    }
}

}  // namespace wkd
