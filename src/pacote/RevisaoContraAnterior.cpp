#include <algorithm>
#include <unordered_map>

#include "Revisao.h"
#include "Texto.h"

namespace wkd {

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
