#include "package/Pacote.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "package/ArquivoNovo.h"
#include "package/BibliotecaZip.h"
#include "package/Caminho.h"
#include "package/DestinoDoPacote.h"
#include "package/Trava.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "values/Texto.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBaixeDeNovo = " Baixe o pacote de novo.";

struct TDescartaZip {
    void operator()(zip_t* zip) const { Zip().zip_discard(zip); }
    void operator()(zip_file_t* arquivo) const { Zip().zip_fclose(arquivo); }
};
using TZip = std::unique_ptr<zip_t, TDescartaZip>;
using TArquivoZip = std::unique_ptr<zip_file_t, TDescartaZip>;

std::string CausaDaAbertura(int codigo) {
    switch (codigo) {
        case ZIP_ER_NOENT:
            return "não existe. Informe o caminho do pacote de atualização.";
        case ZIP_ER_OPEN:
        case ZIP_ER_READ:
        case ZIP_ER_SEEK:
            return "não pôde ser lido. Verifique as permissões do arquivo.";
        case ZIP_ER_NOZIP:
            return "não é um arquivo zip, ou está incompleto." + std::string(kBaixeDeNovo);
        default:
            return "está danificado." + std::string(kBaixeDeNovo);
    }
}

TZip AbreZip(const fs::path& pacote) {
    const auto nome = "O pacote '" + TextoDoCaminho(pacote) + "' ";
    std::error_code erro;
    if (fs::is_directory(pacote, erro)) throw TErroPacote(nome + "é uma pasta. Informe o arquivo zip da atualização.");
    int codigo = 0;
    TZip zip(Zip().zip_open(TextoDoCaminho(pacote).c_str(), ZIP_RDONLY, &codigo));
    if (!zip) throw TErroPacote(nome + CausaDaAbertura(codigo));
    return zip;
}

/// One extraction: counts what comes out against the limits and tells the percentage.
class TExtracao {
  public:
    TExtracao(const fs::path& pacote, const fs::path& destino, const std::function<void(int)>& progresso,
              const TLimitesDoPacote& limites)
        : pacote_(pacote),
          progresso_(progresso),
          limites_(limites),
          zip_(AbreZip(pacote)),
          empacotado_(std::max<std::uint64_t>(1, fs::file_size(pacote))),
          destino_(destino, [this](std::string relato) { relatos_.push_back(std::move(relato)); }) {}

    std::vector<std::string> Executa() {
        Avisa(0);
        const auto entradas = static_cast<zip_uint64_t>(Zip().zip_get_num_entries(zip_.get(), 0));
        if (entradas > limites_.entradas)
            Excede("tem " + std::to_string(entradas) + " arquivos; o limite é " + std::to_string(limites_.entradas));
        for (zip_uint64_t i = 0; i < entradas; ++i) total_ = Soma(total_, Estado(i).size);
        Confere(total_);
        for (zip_uint64_t i = 0; i < entradas; ++i) Extrai(i);
        Avisa(100);
        return std::move(relatos_);
    }

  private:
    static std::uint64_t Soma(std::uint64_t a, std::uint64_t b) { return a + b < a ? UINT64_MAX : a + b; }

    [[noreturn]] void Excede(const std::string& causa) const {
        throw TErroPacote("O pacote '" + TextoDoCaminho(pacote_) + "' " + causa +
                          ". Confirme que é um pacote de atualização e baixe-o de novo.");
    }

    [[noreturn]] void Danificada(const std::string& nome, const char* causa) const {
        throw TErroPacote("O pacote '" + TextoDoCaminho(pacote_) + "' está danificado na entrada '" + nome +
                          "': " + causa + "." + std::string(kBaixeDeNovo));
    }

    zip_stat_t Estado(zip_uint64_t indice) const {
        zip_stat_t estado;
        Zip().zip_stat_init(&estado);
        if (Zip().zip_stat_index(zip_.get(), indice, 0, &estado) != 0)
            Danificada("nº " + std::to_string(indice + 1), Zip().zip_strerror(zip_.get()));
        return estado;
    }

    void Confere(std::uint64_t bytes) const {
        if (bytes > limites_.bytes)
            Excede("descompactado passa do limite de " + std::to_string(limites_.bytes) + " bytes");
        if (bytes > limites_.bytesLivres && bytes / limites_.razao > empacotado_)
            Excede("descompactado passa de " + std::to_string(limites_.razao) + " vezes o seu tamanho");
    }

    void Extrai(zip_uint64_t indice) {
        const auto estado = Estado(indice);
        auto entrada = AnalisaNomeDeEntrada(estado.name);
        zip_uint8_t sistema = 0;
        zip_uint32_t atributos = 0;
        if (Zip().zip_file_get_external_attributes(zip_.get(), indice, 0, &sistema, &atributos) == 0 &&
            entrada.recusa.empty())
            entrada.recusa = RecusaDoTipo(atributos);
        if (!entrada.recusa.empty()) {
            relatos_.push_back("Entrada do pacote recusada: '" + std::string(estado.name) + "' (" + entrada.recusa +
                               ")");
            return;
        }
        const auto lugar = destino_.Lugar(entrada, estado.name);
        if (!lugar.empty() && !entrada.pasta) Copia(indice, estado.name, lugar);
    }

    void Copia(zip_uint64_t indice, const std::string& nome, const fs::path& lugar) {
        TArquivoZip origem(Zip().zip_fopen_index(zip_.get(), indice, 0));
        if (!origem) Danificada(nome, Zip().zip_strerror(zip_.get()));
        TArquivoNovo arquivo(lugar);
        for (;;) {
            const auto lidos = Zip().zip_fread(origem.get(), bloco_.data(), bloco_.size());
            if (lidos < 0) Danificada(nome, Zip().zip_file_strerror(origem.get()));
            if (lidos == 0) break;
            extraido_ += static_cast<std::uint64_t>(lidos);
            Confere(extraido_);
            arquivo.Grava({bloco_.data(), static_cast<std::size_t>(lidos)});
            Avisa(static_cast<int>(std::min<std::uint64_t>(99, extraido_ * 100 / std::max<std::uint64_t>(1, total_))));
        }
        arquivo.Fecha();
    }

    void Avisa(int percentual) {
        if (percentual <= avisado_) return;
        avisado_ = percentual;
        if (progresso_) progresso_(percentual);
    }

    const fs::path& pacote_;
    const std::function<void(int)>& progresso_;
    const TLimitesDoPacote& limites_;
    TZip zip_;
    std::uint64_t empacotado_;
    TDestinoDoPacote destino_;
    std::vector<std::string> relatos_;
    std::array<char, 65536> bloco_;
    std::uint64_t total_ = 0;
    std::uint64_t extraido_ = 0;
    int avisado_ = -1;
};

}  // namespace

std::vector<std::string> ExtraiPacote(const fs::path& pacote, const fs::path& destino,
                                      const std::function<void(int)>& progresso, const TLimitesDoPacote& limites) {
    return TExtracao(pacote, destino, progresso, limites).Executa();
}

namespace {

constexpr int kPastas = 1000;  // more runs at a time than any machine stands

template <class TAceita>
std::vector<fs::path> ArquivosDe(const fs::path& pasta, TAceita aceita) {
    std::vector<fs::path> arquivos;
    std::error_code erro, sumiu;
    for (fs::directory_iterator it(pasta, erro), fim; !erro && it != fim; it.increment(erro))
        if (it->symlink_status(sumiu).type() == fs::file_type::regular && aceita(it->path()))
            arquivos.push_back(it->path());
    std::sort(arquivos.begin(), arquivos.end(), [](const fs::path& a, const fs::path& b) {
        return Maiusculas(NomeDoArquivo(a)) < Maiusculas(NomeDoArquivo(b));
    });
    return arquivos;
}

}  // namespace

TPastaDeTrabalho::TPastaDeTrabalho(const fs::path& temporaria) {
    for (int n = 1; !trava_; ++n) {
        const std::string nome = "AtualWkd" + (n > 1 ? std::to_string(n) : "");
        if (n > kPastas)
            throw TErroPacote("Todas as pastas de trabalho de '" + TextoDoCaminho(temporaria) + "' estão em uso, até " +
                                  nome + ". Espere que uma das atualizações termine.",
                              TFalha::OutraAtualizacao);
        caminho_ = temporaria / nome;
        trava_ = TTrava::Tenta(temporaria / (nome + ".lock"));
    }
    Recria();
}

TPastaDeTrabalho::~TPastaDeTrabalho() {
    std::error_code erro;
    if (DefeitoDaPasta(caminho_).empty()) fs::remove_all(caminho_, erro);
}

void TPastaDeTrabalho::Recria() {
    const auto nome = "A pasta de trabalho '" + TextoDoCaminho(caminho_) + "' ";
    if (const auto defeito = DefeitoDaPasta(caminho_); !defeito.empty())
        throw TErroPacote(nome + defeito + ". Apague-a e tente de novo.", TFalha::Arquivo);
    std::error_code erro;
    fs::remove_all(caminho_, erro);
    if (!CriaPastaPrivada(caminho_))
        throw TErroPacote(nome + "não pôde ser " + (erro ? "esvaziada: " + erro.message() : "criada") +
                              ". Verifique as permissões e o espaço em disco.",
                          TFalha::Arquivo);
}

std::vector<fs::path> TPastaDeTrabalho::Arquivos(std::string_view extensao) const {
    return ArquivosDe(caminho_,
                      [&](const fs::path& p) { return IgualSemCaixa(TextoDoCaminho(p.extension()), extensao); });
}

fs::path TPastaDeTrabalho::Arquivo(std::string_view nome) const {
    const auto achados = ArquivosDe(caminho_, [&](const fs::path& p) { return IgualSemCaixa(NomeDoArquivo(p), nome); });
    return achados.empty() ? fs::path() : achados.front();
}

namespace {

[[noreturn]] void Falha(const fs::path& arquivoZip, const std::string& causa) {
    throw TErroPacote("Não foi possível gravar '" + TextoDoCaminho(arquivoZip) + "': " + causa +
                          ". Verifique a pasta, as permissões e o espaço em disco.",
                      TFalha::Arquivo);
}

TZip Cria(const fs::path& arquivoZip) {
    std::error_code erro;
    if (arquivoZip.has_parent_path()) fs::create_directories(arquivoZip.parent_path(), erro);
    if (erro) Falha(arquivoZip, erro.message());
    int codigo = 0;
    TZip zip(Zip().zip_open(TextoDoCaminho(arquivoZip).c_str(), ZIP_CREATE | ZIP_TRUNCATE, &codigo));
    if (zip) return zip;
    zip_error_t causa;
    Zip().zip_error_init_with_code(&causa, codigo);
    const std::string texto = Zip().zip_error_strerror(&causa);
    Zip().zip_error_fini(&causa);
    Falha(arquivoZip, texto);
}

void Acrescenta(const TZip& zip, const fs::path& arquivo, const fs::path& arquivoZip) {
    zip_source_t* fonte = Zip().zip_source_file(zip.get(), TextoDoCaminho(arquivo).c_str(), 0, 0);
    if (fonte && Zip().zip_file_add(zip.get(), NomeDoArquivo(arquivo).c_str(), fonte, ZIP_FL_ENC_UTF_8) >= 0) return;
    const std::string causa = Zip().zip_strerror(zip.get());
    if (fonte) Zip().zip_source_free(fonte);
    Falha(arquivoZip, causa);
}

/// A process that is asked to end takes along what was written so far.
void Grava(const TZip& zip, const fs::path& arquivoZip) {
    const auto desiste = [](zip_t*, void*) -> int { return TInterrupcao::Sinal() != 0; };
    Zip().zip_register_cancel_callback_with_state(zip.get(), desiste, nullptr, nullptr);
    if (Zip().zip_close(zip.get()) == 0) return;
    TInterrupcao::Confere();
    Falha(arquivoZip, Zip().zip_strerror(zip.get()));
}

}  // namespace

void CompactaZip(const std::vector<fs::path>& arquivos, const fs::path& arquivoZip) {
    fs::path novo = arquivoZip;
    novo += ".novo";
    TZip zip = Cria(novo);
    for (const fs::path& arquivo : arquivos) Acrescenta(zip, arquivo, arquivoZip);
    Grava(zip, arquivoZip);
    static_cast<void>(zip.release());  // the library has freed it
    try {
        SubstituiPor(novo, arquivoZip);
    } catch (const std::system_error& erro) {
        Falha(arquivoZip, erro.code().message());
    }
}

}  // namespace wkd
