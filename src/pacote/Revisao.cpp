#include "Revisao.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <unordered_map>

#include "packet/DicionarioDoPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Longest names: Firebird 3, the narrower of the servers, and the dictionary's own columns.
constexpr std::size_t kMaiorNome = 31, kMaiorTabelaDoDicionario = 50, kMaiorColunaDoDicionario = 25;
/// Characters that the key "PK_" + table and the backup table "B" + table need beside the name.
constexpr std::size_t kPrefixoDaChave = 3;
/// Longest text column of any server: Firebird 3 with four bytes a character.
constexpr std::int64_t kMaiorTexto = 8191;
constexpr std::int64_t kMaiorTextoSqlServer = 4000;

std::string Entre(const std::string& nome) { return "'" + nome + "'"; }

std::int64_t TamanhoDe(const TColunaDicionario& coluna) {
    std::int64_t tamanho = 0;
    std::from_chars(coluna.tamanho.data(), coluna.tamanho.data() + coluna.tamanho.size(), tamanho);
    return tamanho;
}

/// What the update would not pass over, and what a server takes without quotes.
bool Identificador(std::string_view nome) {
    return NomeDeSql(nome) && nome[0] != '_' && nome[0] != '$' && nome[0] > '9';
}

const TColunaDicionario* Coluna(const TTabelaDoPacote& tabela, std::string_view nome) {
    const auto achada = std::ranges::find_if(
        tabela.colunas, [&](const TColunaDicionario& c) { return ChaveDeNome(c.nome) == ChaveDeNome(nome); });
    return achada == tabela.colunas.end() ? nullptr : &*achada;
}

/// Review of one package.
class TRevisao {
  public:
    explicit TRevisao(const TInventario& pacote) : pacote_(pacote) {}

    std::vector<TAchadoDaRevisao> Executa() {
        std::set<std::string> tabelas;
        for (const auto& tabela : pacote_.tabelas) {
            if (!tabelas.insert(ChaveDeNome(tabela.nome)).second)
                Acha("nome-repetido", tabela, "", "a tabela está mais de uma vez em SARQUIVO");
            Tabela(tabela);
        }
        for (const auto& tabela : pacote_.semTabela) SemTabela(tabela);
        Sistema();
        if (!pacote_.temArquivos)
            achados_.push_back({"sem-arquivos", "", "ARQUIVOS", "o pacote não tem o arquivo ARQUIVOS, nem vazio"});
        for (const auto& relato : pacote_.relatos) achados_.push_back({"entrada-recusada", "", "", relato});
        return std::move(achados_);
    }

  private:
    void Acha(const char* regra, const TTabelaDoPacote& tabela, const std::string& objeto, const std::string& texto) {
        achados_.push_back({regra, tabela.nome, objeto, texto});
    }

    void Tabela(const TTabelaDoPacote& tabela) {
        NomeDeTabela(tabela);
        if (tabela.versao < 0)
            Acha("versao-invalida", tabela, "", "a versão é " + std::to_string(tabela.versao) + ", marca interna");
        if (std::ranges::none_of(tabela.colunas, ColunaFisica))
            Acha("tabela-sem-colunas", tabela, "", "a tabela não tem coluna física");
        else if (std::ranges::none_of(tabela.colunas, [](const auto& c) { return c.chave == 1; }))
            Acha("chave-sem-colunas", tabela, "", "nenhuma coluna é da chave primária");
        std::set<std::string> colunas;
        for (const auto& coluna : tabela.colunas) {
            if (!colunas.insert(ChaveDeNome(coluna.nome)).second)
                Acha("nome-repetido", tabela, coluna.nome, "a coluna está mais de uma vez em SATRIB");
            UmaColuna(tabela, coluna);
        }
        std::set<std::string> indices;
        for (const auto& indice : tabela.indices) {
            if (!indices.insert(ChaveDeNome(indice.nome)).second)
                Acha("nome-repetido", tabela, indice.nome, "o índice está mais de uma vez em SINDSEC");
            Indice(tabela, indice);
        }
    }

    void NomeDeTabela(const TTabelaDoPacote& tabela) {
        if (!Identificador(tabela.nome)) Acha("nome-invalido", tabela, "", "o nome não serve a um comando SQL");
        if (tabela.nome.size() > kMaiorTabelaDoDicionario)
            Acha("nome-longo", tabela, "", "o nome não cabe no dicionário (50 caracteres)");
        else if (tabela.nome.size() + kPrefixoDaChave > kMaiorNome)
            Acha("nome-longo", tabela, "",
                 "a chave PK_" + tabela.nome + " passa dos " + std::to_string(kMaiorNome) + " caracteres do Firebird");
    }

    void UmaColuna(const TTabelaDoPacote& tabela, const TColunaDicionario& coluna) {
        const bool fisica = ColunaFisica(coluna);
        if (fisica && !TipoConhecido(coluna.tipo))
            Acha("tipo-desconhecido", tabela, coluna.nome, "o tipo " + Entre(coluna.tipo) + " não existe");
        if (!Identificador(coluna.nome))
            Acha("nome-invalido", tabela, coluna.nome, "o nome não serve a um comando SQL");
        if (coluna.nome.size() > kMaiorColunaDoDicionario)
            Acha("nome-longo", tabela, coluna.nome, "o nome não cabe no dicionário (25 caracteres)");
        if (!fisica && coluna.chave == 1)
            Acha("chave-sem-colunas", tabela, coluna.nome, "a coluna da chave é calculada");
        if (fisica) Tamanho(tabela, coluna);
    }

    void Tamanho(const TTabelaDoPacote& tabela, const TColunaDicionario& coluna) {
        const bool texto = IgualSemCaixa(coluna.tipo, "ftString") || IgualSemCaixa(coluna.tipo, "ftGUID") ||
                           IgualSemCaixa(coluna.tipo, "GUID");
        const auto tamanho = TamanhoDe(coluna);
        if (!texto || (tamanho >= 0 && tamanho <= kMaiorTextoSqlServer)) return;
        const bool nenhum = tamanho < 0 || tamanho > kMaiorTexto;
        Acha("tamanho-invalido", tabela, coluna.nome,
             "o tamanho " + coluna.tamanho + (nenhum ? " não existe" : " passa dos 4000 caracteres do SQL Server"));
    }

    void Indice(const TTabelaDoPacote& tabela, const TIndiceDicionario& indice) {
        if (!Identificador(indice.nome))
            Acha("nome-invalido", tabela, indice.nome, "o nome do índice não serve a um comando SQL");
        if (indice.nome.size() > kMaiorNome)
            Acha("nome-longo", tabela, indice.nome,
                 "o nome do índice passa dos " + std::to_string(kMaiorNome) + " caracteres do Firebird");
        if (indice.colunas.empty())
            Acha("indice-sem-colunas", tabela, indice.nome, "o índice não tem colunas em SINDSECA");
        for (const auto& nome : indice.colunas) {
            const auto* coluna = Coluna(tabela, nome);
            if (!coluna)
                Acha("indice-sobre-nada", tabela, indice.nome, "a coluna " + Entre(nome) + " do índice não existe");
            else if (!ColunaFisica(*coluna))
                Acha("indice-sobre-nada", tabela, indice.nome, "a coluna " + Entre(nome) + " do índice é calculada");
        }
    }

    void SemTabela(const TTabelaDoPacote& tabela) {
        for (const auto& coluna : tabela.colunas)
            Acha("tabela-desconhecida", tabela, coluna.nome, "a tabela da coluna não está em SARQUIVO");
        for (const auto& indice : tabela.indices)
            Acha("tabela-desconhecida", tabela, indice.nome, "a tabela do índice não está em SARQUIVO");
    }

    void Sistema() {
        std::set<std::string> tabelas;
        for (const auto& pacote : pacote_.sistema) {
            const auto acha = [&](const char* regra, const std::string& texto) {
                achados_.push_back({regra, pacote.tabela, pacote.arquivo, texto});
            };
            if (!pacote.erro.empty()) acha("pacote-ilegivel", pacote.erro);
            if (!Identificador(pacote.tabela)) acha("nome-invalido", "o nome do arquivo não é nome de tabela");
            if (!tabelas.insert(Maiusculas(pacote.tabela)).second)
                acha("nome-repetido", "a tabela tem mais de um pacote de dados");
            if (DoCliente(pacote.tabela))
                acha("apaga-dados", "em cada cliente, as linhas da tabela são trocadas pelas do pacote");
        }
    }

    /// Whether the rows of the table are the customer's: its packet would take their place.
    bool DoCliente(const std::string& nome) const {
        const auto tabela = Maiusculas(nome);
        if (tabela == "TINI" || tabela.ends_with("_USER")) return true;
        if (tabela == "SISTEMA" || TabelaDoDicionario(tabela)) return false;
        return std::ranges::any_of(pacote_.tabelas, [&](const auto& t) { return IgualSemCaixa(t.nome, tabela); });
    }

    const TInventario& pacote_;
    std::vector<TAchadoDaRevisao> achados_;
};

}  // namespace

std::vector<TAchadoDaRevisao> Confere(const TInventario& pacote) { return TRevisao(pacote).Executa(); }

namespace {

/// Types that hold each other's values in the same column.
std::string Familia(std::string_view tipo) {
    constexpr std::pair<std::string_view, std::string_view> kFamilias[] = {
        {"GUID", "FTSTRING"},    {"FTGUID", "FTSTRING"},     {"FTSMALLINT", "FTINTEGER"}, {"FTBOOLEAN", "FTINTEGER"},
        {"FTWORD", "FTINTEGER"}, {"FTAUTOINC", "FTINTEGER"}, {"FTLARGEINT", "FTINTEGER"}, {"FTCURRENCY", "FTFLOAT"},
        {"FTMEMO", "FTBLOB"},    {"FTGRAPHIC", "FTBLOB"}};
    for (const auto& [nome, familia] : kFamilias)
        if (IgualSemCaixa(tipo, nome)) return std::string(familia);
    return Maiusculas(tipo);
}

/// Types that any value of the other type goes into.
bool Alarga(const std::string& velho, const std::string& novo) {
    return novo == "FTSTRING" || (velho == "FTINTEGER" && novo == "FTFLOAT") ||
           (velho == "FTDATE" && novo == "FTDATETIME");
}

class TComparacaoDePacotes {
  public:
    TComparacaoDePacotes(const TInventario& pacote, const TInventario& anterior) : anterior_(anterior) {
        for (const auto& tabela : pacote.tabelas) novas_.try_emplace(ChaveDeNome(tabela.nome), &tabela);
    }

    std::vector<TAchadoDaRevisao> Executa() {
        for (const auto& velha : anterior_.tabelas) {
            const auto nova = novas_.find(ChaveDeNome(velha.nome));
            if (nova == novas_.end())
                achados_.push_back({"tabela-sumiu", velha.nome, "", "o pacote anterior tinha a tabela"});
            else
                Tabela(*nova->second, velha);
        }
        return std::move(achados_);
    }

  private:
    void Tabela(const TTabelaDoPacote& nova, const TTabelaDoPacote& velha) {
        const auto acha = [&](const char* regra, const std::string& objeto, const std::string& texto) {
            achados_.push_back({regra, nova.nome, objeto, texto});
        };
        std::unordered_map<std::string, const TColunaDicionario*> novas;
        for (const auto& coluna : nova.colunas) novas.try_emplace(ChaveDeNome(coluna.nome), &coluna);
        bool mudou = nova.colunas.size() != velha.colunas.size();
        for (const auto& coluna : velha.colunas) {
            const auto achada = novas.find(ChaveDeNome(coluna.nome));
            mudou = mudou || achada == novas.end() || Difere(*achada->second, coluna);
            if (achada == novas.end())
                acha("coluna-sumiu", coluna.nome, "o pacote anterior tinha a coluna");
            else
                Coluna(nova.nome, *achada->second, coluna);
        }
        if (nova.versao < velha.versao)
            acha("versao-menor", "",
                 "a versão caiu de " + std::to_string(velha.versao) + " para " + std::to_string(nova.versao));
        else if (mudou && nova.versao == velha.versao)
            acha("versao-igual", "",
                 "as colunas mudaram e a versão continua " + std::to_string(nova.versao) +
                     ": a atualização não veria a mudança");
    }

    static bool Difere(const TColunaDicionario& nova, const TColunaDicionario& velha) {
        return Maiusculas(nova.tipo) != Maiusculas(velha.tipo) || nova.tamanho != velha.tamanho ||
               nova.chave != velha.chave || nova.valorPadrao != velha.valorPadrao || nova.calculo != velha.calculo;
    }

    void Coluna(const std::string& tabela, const TColunaDicionario& nova, const TColunaDicionario& velha) {
        if (!ColunaFisica(nova) || !ColunaFisica(velha)) return;
        const auto tipoNovo = Familia(nova.tipo), tipoVelho = Familia(velha.tipo);
        if (tipoNovo != tipoVelho && !Alarga(tipoVelho, tipoNovo))
            achados_.push_back(
                {"tipo-mudou", tabela, nova.nome,
                 "o tipo mudou de " + velha.tipo + " para " + nova.tipo + ": há valores que não se convertem"});
        if (tipoNovo == "FTSTRING" && tipoVelho == "FTSTRING" &&
            TamanhoDoTexto(nova.tamanho) < TamanhoDoTexto(velha.tamanho))
            achados_.push_back({"tamanho-menor", tabela, nova.nome,
                                "o tamanho caiu de " + std::to_string(TamanhoDoTexto(velha.tamanho)) + " para " +
                                    std::to_string(TamanhoDoTexto(nova.tamanho))});
    }

    const TInventario& anterior_;
    std::unordered_map<std::string, const TTabelaDoPacote*> novas_;
    std::vector<TAchadoDaRevisao> achados_;
};

}  // namespace

std::vector<TAchadoDaRevisao> ConfereContra(const TInventario& pacote, const TInventario& anterior) {
    return TComparacaoDePacotes(pacote, anterior).Executa();
}

}  // namespace wkd
