#include "Relatorio.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "package/ArquivoNovo.h"
#include "package/Caminho.h"
#include "package/Pacote.h"
#include "process/EscritaSegura.h"
#include "values/ConteudoDeArquivo.h"
#include "values/Texto.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTabela = "TRELATORIOS";
constexpr std::string_view kLayout = ".rtm";
constexpr std::string_view kEmCopia = ".novo";  // what a killed copy leaves behind

[[noreturn]] void NaoCopia(const fs::path& para, std::error_code erro) {
    throw TErroPacote("Não foi possível copiar o relatório para '" + TextoDoCaminho(para) + "': " + erro.message() +
                          ". Verifique a pasta de relatórios (chave RELATORIO do alias).",
                      TFalha::Arquivo);
}

/// Files of a folder with that end of their names, letter case ignored.
std::vector<fs::path> ArquivosTerminadosEm(const fs::path& pasta, std::string_view fim) {
    const std::string final = Maiusculas(fim);
    std::vector<fs::path> arquivos;
    for (const auto& entrada : fs::directory_iterator(pasta))
        if (entrada.is_regular_file() && Maiusculas(NomeDoArquivo(entrada.path())).ends_with(final))
            arquivos.push_back(entrada.path());
    return arquivos;
}

/// The folder that the business system takes its layouts from. Letter case of their names does not count.
class TPastaDeRelatorios {
  public:
    explicit TPastaDeRelatorios(fs::path pasta) : pasta_(std::move(pasta)) {}

    void Copia(const fs::path& arquivo) {
        fs::path destino = pasta_ / arquivo.filename();
        try {
            if (!nomes_) Lista();
            destino = nomes_->try_emplace(ChaveDeNome(NomeDoArquivo(arquivo)), destino).first->second;
            Substitui(destino, arquivo);
        } catch (const std::system_error& erro) {
            NaoCopia(destino, erro.code());
        }
    }

  private:
    static void Escreve(const fs::path& novo, const fs::path& arquivo) {
        TArquivoNovo saida(novo);
        const auto leitor = ConteudoDeArquivo(arquivo)->Abre();
        std::vector<char> bloco(1 << 16);
        while (const std::size_t lidos = leitor->Le(bloco)) saida.Grava({bloco.data(), lidos});
        saida.Fecha();
    }

    static void Substitui(const fs::path& destino, const fs::path& arquivo) {
        fs::path novo = destino;
        novo += kEmCopia;
        fs::remove(novo);
        try {
            Escreve(novo, arquivo);
            SubstituiPor(novo, destino);
        } catch (...) {
            std::error_code ignorado;
            fs::remove(novo, ignorado);
            throw;
        }
    }

    void Lista() {
        std::map<std::string, fs::path> nomes;
        for (const auto& arquivo : ArquivosTerminadosEm(pasta_, kLayout))
            nomes.emplace(ChaveDeNome(NomeDoArquivo(arquivo)), arquivo);
        for (const auto& resto : ArquivosTerminadosEm(pasta_, std::string(kLayout) + std::string(kEmCopia)))
            fs::remove(resto);
        nomes_ = std::move(nomes);
    }

    fs::path pasta_;
    std::optional<std::map<std::string, fs::path>> nomes_;  // layouts there by their look-up form
};

/// The layouts of the package on their way into the table.
class TCargaDeRelatorios {
  public:
    explicit TCargaDeRelatorios(TDataModulo& dm) : tb_(dm.SQLConnection1) {}

    void Guarda(const fs::path& arquivo) {
        const std::string nome = Maiusculas(NomeDoArquivo(arquivo));
        if (Posiciona(nome))
            tb_.Editar();
        else
            tb_.Novo(kTabela);
        tb_.SetValor("Nome", nome);
        tb_.SetValor("arquivo", ConteudoDeArquivo(arquivo));
        tb_.Grava();
    }

  private:
    /// The server turns accented letters to capitals, too: a name that has some is compared with the server's own form.
    bool Posiciona(const std::string& nome) {
        const bool acentos = std::ranges::any_of(nome, [](char c) { return static_cast<unsigned char>(c) > 0x7F; });
        return tb_.PosicionaTB(kTabela, "Upper(nome) = " + Aspas(nome)) ||
               (acentos && tb_.PosicionaTB(kTabela, "Upper(nome) = Upper(" + Aspas(nome) + ")"));
    }

    TTB tb_;
};

/// The maker's central share is never written to: setting "RELATORIO_CENTRAL" of the section "MENU". The comparison is
/// with the capitals of the folder.
bool PastaCentral(const TAliases& aliases, const std::string& pasta) {
    const std::string central = aliases.INILeString("MENU", "RELATORIO_CENTRAL");
    return !central.empty() && Maiusculas(pasta).find(central) != std::string::npos;
}

void ApagaTerminadosEmZero(TDataModulo& dm) {
    const TResultado apagou = dm.Executa("DELETE FROM trelatorios where upper(nome) like '%0.RTM'");
    if (apagou) return;
    dm.Tela().Erro(TErroDaExecucao::NosDois(apagou.Erro().Dados(), kTabela, "AtualizaRelatorio"));
}

}  // namespace

void AtualizaRelatorio(TDataModulo& dm, const TPastaDeTrabalho& pasta) {
    const TAliases& aliases = dm.SQLConnection1.Aliases();
    const std::string relatorios = aliases.INILeString(Apara(dm.nomeAlias), "RELATORIO");
    if (PastaCentral(aliases, relatorios)) return;
    ApagaTerminadosEmZero(dm);
    const std::vector<fs::path> arquivos = pasta.Arquivos(kLayout);
    if (relatorios.empty() && !arquivos.empty())
        dm.Tela().Memo1("Cópia dos relatórios para a pasta não feita: falta a chave RELATORIO no alias " +
                        dm.nomeAlias);
    TCargaDeRelatorios carga(dm);
    TPastaDeRelatorios destino(CaminhoDoTexto(relatorios));
    for (const fs::path& arquivo : arquivos) {
        carga.Guarda(arquivo);
        if (!relatorios.empty()) destino.Copia(arquivo);
    }
}

void FazBackupDosRelatorios(const fs::path& pasta, const fs::path& arquivoZip) {
    std::vector<fs::path> arquivos;
    try {
        arquivos = ArquivosTerminadosEm(pasta, kLayout);
    } catch (const fs::filesystem_error& erro) {
        throw TErroPacote("Não foi possível ler a pasta de relatórios '" + TextoDoCaminho(pasta) +
                              "': " + erro.code().message() + ". Verifique a chave RELATORIO do alias.",
                          TFalha::Arquivo);
    }
    if (arquivos.empty())
        throw TErroPacote(
            "Não há relatórios (*.rtm) na pasta '" + TextoDoCaminho(pasta) + "'. Verifique a chave RELATORIO do alias.",
            TFalha::Arquivo);
    CompactaZip(arquivos, arquivoZip);
}

}  // namespace wkd
