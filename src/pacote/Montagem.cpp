#include "Montagem.h"

#include <algorithm>

#include "Inventario.h"
#include "PacoteJson.h"
#include "package/Caminho.h"
#include "package/Pacote.h"
#include "packet/DicionarioDoPacote.h"
#include "values/ConteudoDeArquivo.h"
#include "values/Texto.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kArquivos = "ARQUIVOS";

bool TemExtensao(const fs::path& arquivo, std::string_view extensao) {
    return IgualSemCaixa(TextoDoCaminho(arquivo.extension()), extensao);
}

/// Files of the folder by name.
std::vector<fs::path> ArquivosDe(const fs::path& pasta) {
    std::vector<fs::path> arquivos;
    try {
        for (const auto& entrada : fs::directory_iterator(pasta)) {
            const auto nome = NomeDoArquivo(entrada.path());
            if (nome.starts_with('.')) continue;
            if (!entrada.is_regular_file())
                throw TErroPacote("'" + nome + "' não é um arquivo. Um pacote não tem pastas: mova-o para fora.");
            arquivos.push_back(entrada.path());
        }
    } catch (const fs::filesystem_error& erro) {
        throw TErroPacote("A pasta '" + TextoDoCaminho(pasta) + "' não pôde ser lida: " + erro.code().message() + ".");
    }
    std::ranges::sort(arquivos);
    return arquivos;
}

TDataPacket ArquivosVazio() {
    TDataPacket pacote;
    pacote.campos = {CampoDePacote("ARQUIVO", TTipoDado::Texto, 100), CampoDePacote("VERSAO", TTipoDado::Texto, 20),
                     CampoDePacote("CONTEUDO", TTipoDado::Blob)};
    return pacote;
}

std::size_t Posicao(const TDataPacket& pacote, std::string_view nome) {
    return static_cast<std::size_t>(IndiceDoCampo({pacote.campos.begin(), pacote.campos.end()}, nome));
}

}  // namespace

fs::path TMontagem::Incluido(std::string_view nome) const {
    const auto incluido = arquivos_.find(Maiusculas(nome));
    return incluido == arquivos_.end() ? fs::path() : incluido->second;
}

void TMontagem::ExigeLivre(const std::string& nome) const {
    if (!Incluido(nome).empty())
        throw TErroPacote("O pacote teria dois arquivos '" + nome +
                          "' (maiúsculas e minúsculas não diferem). Tire um deles.");
}

void TMontagem::Inclui(const fs::path& arquivo) {
    ExigeLivre(NomeDoArquivo(arquivo));
    arquivos_.emplace(Maiusculas(NomeDoArquivo(arquivo)), arquivo);
}

void TMontagem::Pacote(const TDataPacket& pacote, const std::string& nome) {
    ExigeLivre(nome);
    const auto arquivo = passageira_.Caminho() / CaminhoDoTexto(nome);
    GravaPacote(pacote, arquivo, TFormaPacote::Binario);
    Inclui(arquivo);
}

void TMontagem::Arquivo(const fs::path& arquivo, std::vector<fs::path>& soltos) {
    if (NomeDeJson(arquivo)) return Pacote(LeJson(arquivo), TextoDoCaminho(arquivo.stem()) + ".WKD");
    const bool pacote = TemExtensao(arquivo, ".wkd") || IgualSemCaixa(NomeDoArquivo(arquivo), kArquivos);
    if (pacote) LePacoteInteiro(arquivo);
    if (pacote || TemExtensao(arquivo, ".rtm"))
        Inclui(arquivo);
    else
        soltos.push_back(arquivo);
}

void TMontagem::Pasta(const fs::path& pasta, const std::string& versao) {
    std::vector<fs::path> soltos;
    pasta_ = pasta;
    for (const auto& arquivo : ArquivosDe(pasta)) Arquivo(arquivo, soltos);
    if (!soltos.empty()) IncluiSoltos(soltos, versao);
}

void TMontagem::IncluiSoltos(const std::vector<fs::path>& soltos, const std::string& versao) {
    auto pacote = ArquivosVazio();
    if (const auto no = arquivos_.extract(std::string(kArquivos)); !no.empty()) {
        pacote = LePacote(no.mapped());
        ExigeCampos(pacote, no.mapped(), {"ARQUIVO", "VERSAO", "CONTEUDO"});
    }
    const auto nome = Posicao(pacote, "ARQUIVO"), qual = Posicao(pacote, "VERSAO"), onde = Posicao(pacote, "CONTEUDO");
    for (const auto& solto : soltos) {
        const bool repetido = std::ranges::any_of(pacote.linhas, [&](const TLinha& linha) {
            return ChaveDeNome(linha[nome].ComoTexto()) == ChaveDeNome(NomeDoArquivo(solto));
        });
        if (repetido) throw TErroPacote("O pacote ARQUIVOS já tem o arquivo '" + NomeDoArquivo(solto) + "'.");
        TLinha linha(pacote.campos.size());
        linha[nome] = NomeDoArquivo(solto);
        if (!versao.empty()) linha[qual] = versao;
        linha[onde] = ConteudoDeArquivo(solto);
        pacote.linhas.push_back(std::move(linha));
    }
    Pacote(pacote, std::string(kArquivos));
}

void TMontagem::Grava(const fs::path& pacote) {
    std::error_code erro;
    if (!pasta_.empty() && fs::equivalent(fs::absolute(pacote).parent_path(), pasta_, erro))
        throw TErroPacote("Grave o pacote fora da pasta de que ele é feito.");
    LeSarquivo(Incluido(kSarquivo));
    LeSatrib(Incluido(kSatrib));
    if (Incluido(kArquivos).empty()) Pacote(ArquivosVazio(), std::string(kArquivos));
    std::vector<fs::path> arquivos;
    for (const auto& [nome, arquivo] : arquivos_) arquivos.push_back(arquivo);
    CompactaZip(arquivos, pacote);
}

}  // namespace wkd
