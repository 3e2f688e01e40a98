#include "Inventario.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "LinhaJson.h"
#include "package/Caminho.h"
#include "packet/DicionarioDoPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace fs = std::filesystem;

TPacoteAberto::TPacoteAberto(const fs::path& pacote) {
    pasta_.emplace(temporaria_.Caminho());
    relatos_ = ExtraiPacote(pacote, pasta_->Caminho(), {});
    bytes_ = fs::file_size(pacote);
}

TDataPacket LePacoteInteiro(const std::filesystem::path& arquivo) {
    auto pacote = LePacote(arquivo);
    for (const auto& linha : pacote.linhas)
        for (const auto& valor : linha)
            if (valor.Se<std::shared_ptr<const TConteudo>>()) BytesDoConteudo(valor);
    return pacote;
}

std::uint64_t BytesDoConteudo(const TValor& valor) {
    const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>();
    if (!conteudo) return valor.ComoBytes().size();
    std::uint64_t total = 0;
    char bloco[16384];
    for (const auto leitor = (*conteudo)->Abre(); const auto lidos = leitor->Le(bloco);) total += lidos;
    return total;
}

namespace {

using TPosicoes = std::unordered_map<std::string, std::size_t>;  // by look-up name

class TLeituraDoInventario {
  public:
    explicit TLeituraDoInventario(const TPacoteAberto& pacote) : pasta_(pacote.Pasta()) {
        inventario_.bytes = pacote.Bytes();
        inventario_.relatos = pacote.Relatos();
    }

    TInventario Le() {
        LeTabelas();
        LeColunas();
        LeSistema();
        LeArquivos();
        return std::move(inventario_);
    }

  private:
    void LeTabelas() {
        TLinhasNomeadas linhas(LeSarquivo(pasta_.Arquivo(kSarquivo)));
        linhas.Ordena({"NOME_ARQUIVO"});
        while (linhas.Proxima()) {
            inventario_.tabelas.push_back({linhas.Texto("COD_MODULO"),
                                           linhas.Texto("NOME_ARQUIVO"),
                                           linhas.Texto("DESCRICAO_TABELA"),
                                           linhas.Inteiro("VERSAO"),
                                           {},
                                           {}});
            posicoes_.try_emplace(ChaveDeNome(inventario_.tabelas.back().nome), inventario_.tabelas.size() - 1);
        }
    }

    void LeColunas() {
        TLinhasNomeadas linhas(LeSatrib(pasta_.Arquivo(kSatrib)));
        linhas.Ordena({"ARQUIVO", "SEQUENCIA", "NOME"});
        while (linhas.Proxima()) {
            const auto chave = linhas.Inteiro("CHAVE_DE_PESQUISA") == 1 ? 1 : 0;
            Tabela(linhas.Texto("ARQUIVO"))
                .colunas.push_back({linhas.Texto("NOME"), linhas.Texto("TIPO"), linhas.Texto("TAMANHO"),
                                    linhas.Texto("VALOR_PADRAO"), linhas.Texto("CALCULO"), chave});
        }
    }

    void LeSistema() {
        for (const auto& arquivo : pasta_.Arquivos(".wkd")) {
            TPacoteDeTabela pacote;
            pacote.arquivo = NomeDoArquivo(arquivo);
            pacote.tabela = pacote.arquivo.substr(0, pacote.arquivo.find('.'));
            pacote.bytes = fs::file_size(arquivo);
            try {
                pacote.forma = FormaDoPacote(arquivo);
                LePacoteDeTabela(LePacoteInteiro(arquivo), pacote);
            } catch (const TErroPacote& erro) {
                pacote.erro = erro.what();
            }
            inventario_.sistema.push_back(std::move(pacote));
        }
        for (const auto& [arquivo, indice] : colunasDosIndices_) Indice(arquivo, indice);
    }

    void LePacoteDeTabela(TDataPacket&& lido, TPacoteDeTabela& pacote) {
        pacote.linhas = lido.linhas.size();
        for (const auto& campo : lido.campos) pacote.campos.push_back(campo.nome);
        TLinhasNomeadas linhas(std::move(lido));
        if (IgualSemCaixa(pacote.tabela, "SINDSEC"))
            while (linhas.Proxima())
                Tabela(linhas.Texto("ARQUIVO"))
                    .indices.push_back({linhas.Texto("NOME"), linhas.Texto("TIPO") == "1", {}});
        if (!IgualSemCaixa(pacote.tabela, "SINDSECA")) return;
        linhas.Ordena({"ARQUIVO", "NOME", "SEQUENCIA"});
        while (linhas.Proxima())
            colunasDosIndices_[{linhas.Texto("ARQUIVO"), linhas.Texto("NOME")}].push_back(linhas.Texto("CAMPO"));
    }

    /// Gives the index its columns, known by SINDSEC or not.
    void Indice(const std::pair<std::string, std::string>& nome, const std::vector<std::string>& colunas) {
        auto& indices = Tabela(nome.first).indices;
        auto achado = std::ranges::find_if(
            indices, [&](const TIndiceDicionario& i) { return ChaveDeNome(i.nome) == ChaveDeNome(nome.second); });
        if (achado == indices.end()) achado = indices.insert(indices.end(), {nome.second, false, {}});
        achado->colunas = colunas;
    }

    void LeArquivos() {
        for (const auto& entrada : fs::recursive_directory_iterator(pasta_.Caminho())) {
            const auto nome = TextoDoCaminho(entrada.path().lexically_relative(pasta_.Caminho()));
            const bool naRaiz = entrada.path().parent_path() == pasta_.Caminho();
            const auto extensao = TextoDoCaminho(entrada.path().extension());
            if (!entrada.is_regular_file() || (naRaiz && IgualSemCaixa(extensao, ".wkd"))) continue;
            if (naRaiz && IgualSemCaixa(nome, "ARQUIVOS"))
                LeArquivosDeSistema(entrada.path());
            else if (naRaiz && IgualSemCaixa(extensao, ".rtm"))
                inventario_.layouts.push_back({nome, {}, entrada.file_size()});
            else
                inventario_.outros.push_back({nome, {}, entrada.file_size()});
        }
        for (auto* lista : {&inventario_.layouts, &inventario_.outros})
            std::ranges::sort(*lista, {}, &TArquivoDoPacote::nome);
    }

    void LeArquivosDeSistema(const fs::path& arquivo) {
        auto pacote = LePacote(arquivo);
        ExigeCampos(pacote, arquivo, {"ARQUIVO"});
        inventario_.temArquivos = true;
        TLinhasNomeadas linhas(std::move(pacote));
        while (linhas.Proxima())
            inventario_.arquivos.push_back(
                {linhas.Texto("ARQUIVO"), linhas.Texto("VERSAO"), BytesDoConteudo(linhas.Valor("CONTEUDO"))});
    }

    /// The table of that name; one of `semTabela` when SARQUIVO lacks it.
    TTabelaDoPacote& Tabela(const std::string& nome) {
        const auto chave = ChaveDeNome(nome);
        if (const auto achada = posicoes_.find(chave); achada != posicoes_.end())
            return inventario_.tabelas[achada->second];
        auto& semTabela = inventario_.semTabela;
        const auto [posicao, nova] = posicoesSemTabela_.try_emplace(chave, semTabela.size());
        if (nova) semTabela.push_back({{}, nome, {}, 0, {}, {}});
        return semTabela[posicao->second];
    }

    const TPastaDeTrabalho& pasta_;
    TInventario inventario_;
    TPosicoes posicoes_, posicoesSemTabela_;
    std::map<std::pair<std::string, std::string>, std::vector<std::string>> colunasDosIndices_;
};

}  // namespace

TInventario LeInventario(const fs::path& pacote) {
    const TPacoteAberto aberto(pacote);
    return TLeituraDoInventario(aberto).Le();
}

}  // namespace wkd
