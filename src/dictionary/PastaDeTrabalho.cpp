#include <algorithm>

#include "Caminho.h"
#include "Pacote.h"
#include "PastaPrivada.h"
#include "Texto.h"
#include "Trava.h"

namespace wkd {

namespace fs = std::filesystem;

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
                              nome + ". Espere que uma das atualizações termine.");
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
