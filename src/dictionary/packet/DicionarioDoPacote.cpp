#include "packet/DicionarioDoPacote.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "package/Caminho.h"
#include "tables/DefinicaoCampo.h"
#include "values/Texto.h"

namespace wkd {

namespace {

TDataPacket Le(const std::filesystem::path& arquivo, std::string_view nome,
               std::initializer_list<std::string_view> colunas) {
    if (arquivo.empty())
        throw TErroPacote("O pacote não contém o arquivo " + std::string(nome) + ". É preciso um pacote completo.");
    TDataPacket pacote = LePacote(arquivo);
    ExigeCampos(pacote, arquivo, colunas);
    if (pacote.linhas.empty())
        throw TErroPacote("O arquivo " + std::string(nome) + " do pacote está vazio. É preciso um pacote completo.");
    return pacote;
}

/// Fields of a dictionary table that hold names which get into statements, the table's first, and those that rows have
/// in common that belong together.
struct TNomesDaTabela {
    std::string_view tabela;
    std::vector<std::string_view> nomes, grupo;
};

const TNomesDaTabela* NomesDaTabela(std::string_view tabela) {
    static const TNomesDaTabela kNomes[] = {{"SARQUIVO", {"NOME_ARQUIVO"}, {}},
                                            {"SATRIB", {"ARQUIVO", "NOME"}, {"ARQUIVO"}},
                                            {"SINDSEC", {"ARQUIVO", "NOME"}, {}},
                                            {"SINDSECA", {"ARQUIVO", "NOME", "CAMPO"}, {"ARQUIVO", "NOME"}}};
    const auto* achada =
        std::ranges::find_if(kNomes, [&](const auto& nomes) { return IgualSemCaixa(nomes.tabela, tabela); });
    return achada == std::end(kNomes) ? nullptr : achada;
}

class TRecusaDeNomes {
  public:
    TRecusaDeNomes(TTabelaEmMemoria& linhas, const TNomesDaTabela& nomes, std::string arquivo)
        : linhas_(linhas), nomes_(nomes), arquivo_(std::move(arquivo)) {
        for (const auto nome : nomes.nomes) campos_.push_back(IndiceDoCampo(linhas.campos, nome));
    }

    std::vector<TLinhaRecusada> Recusa() {
        std::vector<TLinhaRecusada> recusadas;
        std::set<std::string> grupos;
        std::size_t numero = 0;
        std::erase_if(linhas_.linhas, [&](const TLinha& linha) {
            ++numero;
            const auto campo = Improprio(linha);
            if (!campo) return false;
            if (LevaOGrupo(linha)) grupos.insert(Grupo(linha));
            const std::string onde =
                arquivo_ + ", registro " + std::to_string(numero) + ", campo " + std::string(nomes_.nomes[*campo]);
            recusadas.push_back({Texto(linha, campos_.front()), RecusaDoNome(onde, Texto(linha, campos_[*campo]))});
            return true;
        });
        if (!grupos.empty())
            std::erase_if(linhas_.linhas, [&](const TLinha& linha) { return grupos.contains(Grupo(linha)); });
        return recusadas;
    }

  private:
    static std::string Texto(const TLinha& linha, int campo) {
        return campo < 0 ? std::string() : std::string(Apara(linha[static_cast<std::size_t>(campo)].ComoTexto()));
    }
    std::string Texto(const TLinha& linha, std::string_view campo) const {
        return Texto(linha, IndiceDoCampo(linhas_.campos, campo));
    }
    std::string Grupo(const TLinha& linha) const {
        std::string grupo;
        for (const auto campo : nomes_.grupo) grupo += ChaveDeNome(Texto(linha, campo)) + '\n';
        return grupo;
    }
    bool DasColunas() const { return nomes_.tabela == "SATRIB"; }
    bool LevaOGrupo(const TLinha& linha) const {
        return !nomes_.grupo.empty() && (!DasColunas() || Texto(linha, "CHAVE_DE_PESQUISA") == "1");
    }
    bool Calculada(const TLinha& linha) const {
        return DasColunas() && !ColunaFisica({"", Texto(linha, "TIPO"), "", "", Texto(linha, "CALCULO")});
    }
    /// Which of the names is none. Nothing asks a server for a calculated column, nor for a table without name.
    std::optional<std::size_t> Improprio(const TLinha& linha) const {
        for (std::size_t i = 0; i < campos_.size(); ++i) {
            const std::string nome = Texto(linha, campos_[i]);
            if (NomeDeSql(nome) || (nome.empty() && i == 0)) continue;
            return Calculada(linha) ? std::nullopt : std::optional(i);
        }
        return std::nullopt;
    }

    TTabelaEmMemoria& linhas_;
    const TNomesDaTabela& nomes_;
    std::string arquivo_;
    std::vector<int> campos_;  // of the names, the table's first; -1 where the packet lacks one
};

}  // namespace

bool TabelaDoDicionario(std::string_view nome) {
    return std::ranges::any_of(kTabelasDoDicionario, [&](auto tabela) { return IgualSemCaixa(tabela, nome); });
}

std::vector<TLinhaRecusada> RecusaNomes(TTabelaEmMemoria& linhas, std::string_view tabela,
                                        const std::filesystem::path& arquivo) {
    const auto* nomes = NomesDaTabela(tabela);
    return nomes ? TRecusaDeNomes(linhas, *nomes, NomeDoArquivo(arquivo)).Recusa() : std::vector<TLinhaRecusada>();
}

TDataPacket LeSarquivo(const std::filesystem::path& arquivo) {
    return Le(arquivo, kSarquivo, {"COD_MODULO", "NOME_ARQUIVO", "VERSAO"});
}

TDataPacket LeSatrib(const std::filesystem::path& arquivo) {
    return Le(arquivo, kSatrib, {"ARQUIVO", "NOME", "TIPO", "TAMANHO", "CHAVE_DE_PESQUISA"});
}

}  // namespace wkd
