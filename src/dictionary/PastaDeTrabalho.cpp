#include <algorithm>

#include "Caminho.h"
#include "Pacote.h"
#include "PastaPrivada.h"
#include "Texto.h"
#include "Trava.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTrava = "AtualWkd.lock";

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

TPastaDeTrabalho::TPastaDeTrabalho(const fs::path& temporaria)
    : caminho_(temporaria / "AtualWkd"), trava_(std::make_unique<TTrava>(temporaria / kTrava)) {
    Recria();
}

void TPastaDeTrabalho::ConfereLivre(const fs::path& temporaria) { const TTrava trava(temporaria / kTrava); }

TPastaDeTrabalho::~TPastaDeTrabalho() {
    std::error_code erro;
    if (DefeitoDaPasta(caminho_).empty()) fs::remove_all(caminho_, erro);
}

void TPastaDeTrabalho::Recria() {
    const auto nome = "A pasta de trabalho '" + TextoDoCaminho(caminho_) + "' ";
    if (const auto defeito = DefeitoDaPasta(caminho_); !defeito.empty())
        throw TErroPacote(nome + defeito + ". Apague-a e tente de novo.");
    std::error_code erro;
    fs::remove_all(caminho_, erro);
    if (!CriaPastaPrivada(caminho_))
        throw TErroPacote(nome + "não pôde ser " + (erro ? "esvaziada: " + erro.message() : "criada") +
                          ". Verifique as permissões e o espaço em disco.");
}

std::vector<fs::path> TPastaDeTrabalho::Arquivos(std::string_view extensao) const {
    return ArquivosDe(caminho_,
                      [&](const fs::path& p) { return IgualSemCaixa(TextoDoCaminho(p.extension()), extensao); });
}

fs::path TPastaDeTrabalho::Arquivo(std::string_view nome) const {
    const auto achados = ArquivosDe(caminho_, [&](const fs::path& p) { return IgualSemCaixa(NomeDoArquivo(p), nome); });
    return achados.empty() ? fs::path() : achados.front();
}

}  // namespace wkd
