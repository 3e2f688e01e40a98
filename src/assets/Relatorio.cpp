#include "Relatorio.h"

#include <vector>

#include "CompactaZip.h"
#include "ConteudoDeArquivo.h"
#include "Texto.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTabela = "TRELATORIOS";

std::string NomeUtf8(const fs::path& arquivo) {
    const auto nome = arquivo.filename().u8string();
    return {nome.begin(), nome.end()};
}

fs::path CaminhoUtf8(const std::string& texto) { return fs::path(std::u8string(texto.begin(), texto.end())); }

/// The file of that name in the folder, letter case ignored; the name itself when there is none.
fs::path Destino(const fs::path& pasta, const std::string& nome) {
    for (const auto& entrada : fs::directory_iterator(pasta))
        if (IgualSemCaixa(NomeUtf8(entrada.path()), nome)) return entrada.path();
    return pasta / CaminhoUtf8(nome);
}

void CopiaInteiro(const fs::path& origem, const fs::path& destino) {
    fs::path novo = destino;
    novo += ".novo";
    try {
        fs::copy_file(origem, novo, fs::copy_options::overwrite_existing);
        fs::rename(novo, destino);
    } catch (const fs::filesystem_error&) {
        std::error_code semErro;
        fs::remove(novo, semErro);
        throw;
    }
}

/// The layouts of the package on their way into the table and the folder.
class TCargaDeRelatorios {
  public:
    TCargaDeRelatorios(TDataModulo& dm, fs::path pastaRelatorios)
        : dm_(dm), pastaRelatorios_(std::move(pastaRelatorios)) {}

    void Carrega(const fs::path& arquivo) {
        Guarda(arquivo);
        if (!pastaRelatorios_.empty()) CopiaInteiro(arquivo, Destino(pastaRelatorios_, NomeUtf8(arquivo)));
    }

  private:
    void Guarda(const fs::path& arquivo) {
        const std::string nome = Maiusculas(NomeUtf8(arquivo));
        if (Posiciona(nome))
            tb_.Editar();
        else
            tb_.Novo(kTabela);
        tb_.SetValor("Nome", nome);
        tb_.SetValor("arquivo", ConteudoDeArquivo(arquivo));
        tb_.Grava();
    }

    /// The server turns accented letters to capitals, too: a name that has some is compared with the server's own form.
    bool Posiciona(const std::string& nome) {
        return tb_.PosicionaTB(kTabela, "Upper(nome) = " + Aspas(nome)) ||
               tb_.PosicionaTB(kTabela, "Upper(nome) = Upper(" + Aspas(nome) + ")");
    }

    TDataModulo& dm_;
    fs::path pastaRelatorios_;
    TTB tb_{dm_.SQLConnection1};
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
    dm.Tela().Memo2(apagou.Mensagem());
    dm.Tela().SetLog(apagou.Mensagem(), kTabela, "AtualizaRelatorio");
}

}  // namespace

void AtualizaRelatorio(TDataModulo& dm, const TPastaDeTrabalho& pasta) {
    const TAliases& aliases = dm.SQLConnection1.Aliases();
    const std::string relatorios = aliases.INILeString(Apara(dm.nomeAlias), "RELATORIO");
    if (PastaCentral(aliases, relatorios)) return;
    ApagaTerminadosEmZero(dm);
    const std::vector<fs::path> arquivos = pasta.Arquivos(".rtm");
    if (relatorios.empty() && !arquivos.empty())
        dm.Tela().Memo1("Cópia dos relatórios para a pasta não feita: falta a chave RELATORIO no alias " +
                        dm.nomeAlias);
    TCargaDeRelatorios carga(dm, CaminhoUtf8(relatorios));
    for (const fs::path& arquivo : arquivos) carga.Carrega(arquivo);
}

void FazBackupDosRelatorios(const fs::path& pasta, const fs::path& arquivoZip) {
    std::vector<fs::path> arquivos;
    for (const auto& entrada : fs::directory_iterator(pasta))
        if (entrada.is_regular_file() && IgualSemCaixa(entrada.path().extension().string(), ".rtm"))
            arquivos.push_back(entrada.path());
    CompactaZip(arquivos, arquivoZip);
}

}  // namespace wkd
