#include "aliases/ArquivoIni.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "process/EscritaSegura.h"
#include "values/Texto.h"

#ifdef _WIN32
#include <windows.h>
#include <iterator>
#endif

namespace wkd {

namespace {

namespace fs = std::filesystem;

bool Separador(char c) { return c == '\\' || c == '/'; }

/// Entry of the folder with that name, letter case ignored; the exact name wins, then the first in byte order.
std::optional<fs::path> EntradaSemCaixa(const fs::path& pasta, const fs::path& nome) {
    std::error_code erro;
    if (fs::exists(pasta / nome, erro)) return pasta / nome;
    std::optional<fs::path> achada;
    for (const auto& entrada : fs::directory_iterator(pasta, erro))
        if (IgualSemCaixa(entrada.path().filename().string(), nome.string()) && (!achada || entrada.path() < *achada))
            achada = entrada.path();
    return achada;
}

std::optional<fs::path> ArquivoSemCaixa(fs::path pasta, const fs::path& relativo) {
    if (!pasta.is_absolute()) return std::nullopt;
    for (const auto& parte : relativo) {
        const auto entrada = EntradaSemCaixa(pasta, parte);
        if (!entrada) return std::nullopt;
        pasta = *entrada;
    }
    std::error_code erro;
    return fs::is_regular_file(pasta, erro) ? std::optional(pasta) : std::nullopt;
}

/// Absolute, without separator at the end, so that parent_path() is the folder above.
fs::path PastaLimpa(const fs::path& pasta) {
    const fs::path limpa = fs::absolute(pasta).lexically_normal();
    return limpa.has_filename() ? limpa : limpa.parent_path();
}

}  // namespace

fs::path LocalizaIni(const TLocaisDoIni& locais) {
    const fs::path programa = PastaLimpa(locais.pastaPrograma);
    const std::pair<fs::path, fs::path> lugares[] = {
        {programa, "WKD.ini"},
        {programa.parent_path(), "WKD.ini"},
        {locais.pastaProgramFiles, "WKD Software/WKD.Ini"},
        {locais.pastaProgramFiles, "WKD Software/HBN/WKD.Ini"},
        {locais.desenvolvimento.parent_path(), locais.desenvolvimento.filename()},
    };
    fs::path ultimo;
    for (const auto& [pasta, relativo] : lugares) {
        if (const auto achado = ArquivoSemCaixa(pasta, relativo)) return SemBarrasDobradas(achado->string());
        if (pasta.is_absolute()) ultimo = pasta / relativo;
    }
    throw TErroConfiguracao(
        "Nao encontrou o arquivo" + ultimo.string() +
        "\nCopie o WKD.ini da instalação para a pasta do programa, ou crie um alias com --novo-alias.");
}

std::string SemBarrasDobradas(std::string_view caminho) {
    std::string limpo;
    for (const char c : caminho)
        if (limpo.size() < 2 || !Separador(c) || !Separador(limpo.back())) limpo += c;
    return limpo;
}

#ifdef _WIN32
std::filesystem::path PastaDoPrograma() {
    wchar_t arquivo[32768] = L"";
    GetModuleFileNameW(nullptr, arquivo, static_cast<DWORD>(std::size(arquivo)));
    return std::filesystem::path(arquivo).parent_path();
}

static std::filesystem::path PastaProgramFiles() {
    wchar_t pasta[MAX_PATH] = L"";
    DWORD tamanho = sizeof pasta;
    RegGetValueW(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion", L"ProgramFilesDir", RRF_RT_REG_SZ,
                 nullptr, pasta, &tamanho);
    return pasta;
}
#else
std::filesystem::path PastaDoPrograma() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

static std::filesystem::path PastaProgramFiles() { return "/opt"; }
#endif

TLocaisDoIni LocaisPadraoDoIni() {
    return {PastaDoPrograma(), PastaProgramFiles(), "X:\\SVN\\HBN\\exe\\win32\\WKD.Ini"};
}

namespace {

constexpr std::string_view kBom = "\xEF\xBB\xBF";

std::string LeBytes(const std::filesystem::path& caminho) {
    std::error_code erro;
    if (!std::filesystem::exists(caminho, erro) && !erro) return {};
    std::string bytes;
    try {
        bytes = LeArquivoInteiro(caminho, true);
    } catch (const std::system_error&) {
        throw TErroConfiguracao(
            "Não foi possível ler o arquivo \"" + caminho.string() +
            "\". Peça a quem administra esta máquina que deixe o seu usuário lê-lo (onde foi "
            "instalado por um pacote: que o ponha no grupo atualizawkd), e entre de novo na sessão.");
    }
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        throw TErroConfiguracao("O arquivo \"" + caminho.string() + "\" está em UTF-16. Grave-o em UTF-8 ou ANSI.");
    return bytes;
}

std::vector<std::string> DivideLinhas(std::string_view texto) {
    std::vector<std::string> linhas;
    while (!texto.empty()) {
        const std::size_t fim = std::min(texto.find('\n'), texto.size() - 1) + 1;
        linhas.emplace_back(texto.substr(0, fim));
        texto.remove_prefix(fim);
    }
    return linhas;
}

std::optional<std::string_view> NomeDaSecao(std::string_view linha) {
    linha = Apara(linha);
    const std::size_t fim = linha.find(']');
    if (!linha.starts_with('[') || fim == std::string_view::npos) return std::nullopt;
    return Apara(linha.substr(1, fim - 1));
}

bool Comentario(std::string_view linha) {
    linha = Apara(linha);
    return linha.starts_with(';') || linha.starts_with('#');
}

/// Name and text of a "name = text" line.
std::optional<std::pair<std::string_view, std::string_view>> Par(std::string_view linha) {
    const std::size_t igual = linha.find('=');
    if (igual == std::string_view::npos || Comentario(linha)) return std::nullopt;
    return std::pair(Apara(linha.substr(0, igual)), Apara(linha.substr(igual + 1)));
}

std::string_view SemAspas(std::string_view texto) {
    const bool entreAspas =
        texto.size() >= 2 && texto.front() == texto.back() && (texto.front() == '"' || texto.front() == '\'');
    return entreAspas ? texto.substr(1, texto.size() - 2) : texto;
}

/// Text that reads back as the value: in quotes where reading would take something off.
std::string TextoDoValor(std::string_view valor) {
    const bool inteiro = SemAspas(Apara(valor)) == valor;
    return inteiro ? std::string(valor) : '"' + std::string(valor) + '"';
}

void TrocaValor(std::string& linha, const std::string& texto) {
    const std::size_t inicio = std::min(linha.find_first_not_of(" \t", linha.find('=') + 1), linha.size());
    const std::size_t fimDeLinha = std::min(linha.find_first_of("\r\n"), linha.size());
    linha.replace(inicio, fimDeLinha - std::min(inicio, fimDeLinha), texto);
}

void Confere(std::string_view texto, bool valido) {
    constexpr std::string_view kProibidos("\r\n\0", 3);
    if (!valido || texto.find_first_of(kProibidos) != std::string_view::npos)
        throw TErroConfiguracao("O texto \"" + std::string(texto) +
                                "\" não pode ser gravado no arquivo de configuração: contém quebra de linha ou "
                                "caractere que o formato INI não permite em um nome.");
}

}  // namespace

TArquivoIni::TArquivoIni(std::filesystem::path caminho) : caminho_(std::move(caminho)) {
    std::string bytes = LeBytes(caminho_);
    bom_ = bytes.starts_with(kBom);
    if (bom_) bytes.erase(0, kBom.size());
    ansi_ = !Utf8Valido(bytes);
    linhas_ = DivideLinhas(ansi_ ? De1252(bytes) : bytes);
    if (!linhas_.empty() && linhas_.front().ends_with("\r\n")) fimDeLinha_ = "\r\n";
}

std::vector<std::string> TArquivoIni::Secoes() const {
    std::vector<std::string> nomes;
    std::unordered_set<std::string> vistos;
    for (const auto& linha : linhas_) {
        const auto nome = NomeDaSecao(linha);
        if (nome && vistos.insert(Maiusculas(*nome)).second) nomes.emplace_back(*nome);
    }
    return nomes;
}

bool TArquivoIni::ExisteSecao(std::string_view secao) const { return ProcuraSecao(secao).has_value(); }

std::optional<std::string> TArquivoIni::Le(std::string_view secao, std::string_view chave) const {
    const auto linha = ProcuraChave(secao, chave);
    if (!linha) return std::nullopt;
    return std::string(SemAspas(Par(linhas_[*linha])->second));
}

void TArquivoIni::Grava(std::string_view secao, std::string_view chave, std::string_view valor) {
    Confere(secao, !Apara(secao).empty() && secao.find(']') == std::string_view::npos);
    Confere(chave, !Apara(chave).empty() && chave.find('=') == std::string_view::npos && !Comentario(chave) &&
                       !Apara(chave).starts_with('['));
    Confere(valor, true);
    secao = Apara(secao);
    chave = Apara(chave);

    if (const auto linha = ProcuraChave(secao, chave)) return TrocaValor(linhas_[*linha], TextoDoValor(valor));
    const auto existente = ProcuraSecao(secao);
    const std::size_t cabecalho = existente ? *existente : CriaSecao(secao);
    std::size_t posicao = FimDaSecao(cabecalho);
    while (posicao > cabecalho + 1 && !Par(linhas_[posicao - 1])) --posicao;
    Insere(posicao, std::string(chave) + "=" + TextoDoValor(valor));
}

bool TArquivoIni::ApagaSecao(std::string_view secao) {
    const bool existia = ExisteSecao(secao);
    while (const auto cabecalho = ProcuraSecao(secao)) {
        std::size_t fim = FimDaSecao(*cabecalho);
        if (fim < linhas_.size())
            while (fim > *cabecalho + 1 && Comentario(linhas_[fim - 1])) --fim;
        const auto inicio = linhas_.begin();
        linhas_.erase(inicio + static_cast<std::ptrdiff_t>(*cabecalho), inicio + static_cast<std::ptrdiff_t>(fim));
    }
    return existia;
}

void TArquivoIni::Salva() const {
    try {
        SubstituiArquivo(SemLinks(caminho_), Bytes(), TLeitores::GrupoHerdado);
    } catch (const std::exception& erro) {
        throw TErroConfiguracao("Não foi possível gravar o arquivo \"" + caminho_.string() + "\": " + erro.what());
    }
}

std::string TArquivoIni::Bytes() const {
    const std::string texto = Junta(linhas_, "");
    return (bom_ ? std::string(kBom) : "") + (ansi_ ? Para1252(texto) : texto);
}

std::optional<std::size_t> TArquivoIni::ProcuraSecao(std::string_view secao) const {
    for (std::size_t i = 0; i < linhas_.size(); ++i) {
        const auto nome = NomeDaSecao(linhas_[i]);
        if (nome && IgualSemCaixa(*nome, Apara(secao))) return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> TArquivoIni::ProcuraChave(std::string_view secao, std::string_view chave) const {
    const auto cabecalho = ProcuraSecao(secao);
    if (!cabecalho) return std::nullopt;
    const std::size_t fim = FimDaSecao(*cabecalho);
    for (std::size_t i = *cabecalho + 1; i < fim; ++i) {
        const auto par = Par(linhas_[i]);
        if (par && IgualSemCaixa(par->first, Apara(chave))) return i;
    }
    return std::nullopt;
}

std::size_t TArquivoIni::FimDaSecao(std::size_t cabecalho) const {
    std::size_t fim = cabecalho + 1;
    while (fim < linhas_.size() && !NomeDaSecao(linhas_[fim])) ++fim;
    return fim;
}

std::size_t TArquivoIni::CriaSecao(std::string_view secao) {
    if (!linhas_.empty() && !Apara(linhas_.back()).empty()) Insere(linhas_.size(), "");
    Insere(linhas_.size(), "[" + std::string(secao) + "]");
    return linhas_.size() - 1;
}

void TArquivoIni::Insere(std::size_t posicao, std::string texto) {
    if (posicao > 0 && !linhas_[posicao - 1].ends_with('\n')) linhas_[posicao - 1] += fimDeLinha_;
    linhas_.insert(linhas_.begin() + static_cast<std::ptrdiff_t>(posicao), std::move(texto) + fimDeLinha_);
}

}  // namespace wkd
