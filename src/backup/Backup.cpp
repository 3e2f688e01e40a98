#include "Backup.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "package/Caminho.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "process/Programa.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kParcial = ".parcial";

/// Whether a name is that of the alias followed by date and time.
bool EhDoAlias(const std::string& nome, const std::string& alias, const std::string& fim) {
    constexpr std::string_view kPadrao = "_99999999_999999";
    const std::string inicio = NomeNoDisco(alias);
    if (nome.size() != inicio.size() + kPadrao.size() + fim.size() || !nome.starts_with(inicio) || !nome.ends_with(fim))
        return false;
    for (std::size_t i = 0; i < kPadrao.size(); ++i) {
        const char c = nome[inicio.size() + i];
        if (kPadrao[i] == '9' ? c < '0' || c > '9' : c != kPadrao[i]) return false;
    }
    return true;
}

std::vector<fs::path> ArquivosDoAlias(const fs::path& pasta, const std::string& alias, const std::string& fim) {
    std::vector<fs::path> arquivos;
    for (const auto& entrada : fs::directory_iterator(pasta))
        if (EhDoAlias(NomeDoArquivo(entrada.path()), alias, fim)) arquivos.push_back(entrada.path());
    std::ranges::sort(arquivos);
    return arquivos;
}

void ExigePasta(const fs::path& pasta) {
    std::error_code erro;
    if (fs::is_directory(pasta, erro)) return;
    throw TErroDeBackup(TFalha::Arquivo, "A pasta de backup " + TextoDoCaminho(pasta) +
                                             (fs::exists(pasta, erro) ? " não é uma pasta" : " não existe") +
                                             ". Crie-a, ou escolha outra, e repita.");
}

/// What the last backup took, with room to grow, tells more than the database, which may be half empty.
std::uintmax_t BytesNecessarios(IServidorDeBackup& servidor, const TPedidoDeBackup& pedido) {
    const auto doBanco = servidor.TamanhoDoBanco();
    if (!servidor.ArquivosAqui()) return doBanco;
    const auto anteriores = BackupsDoAlias(pedido.pasta, pedido.alias, servidor.Extensao());
    if (anteriores.empty()) return doBanco;
    std::error_code erro;
    const auto anterior = fs::file_size(anteriores.back(), erro);
    return erro ? doBanco : std::min(doBanco, anterior + anterior / 5);
}

void ExigeEspaco(IServidorDeBackup& servidor, const TPedidoDeBackup& pedido) {
    const auto livres = servidor.EspacoPara(pedido.pasta);
    const auto necessarios = BytesNecessarios(servidor, pedido);
    if (!livres || *livres >= necessarios) return;
    throw TErroDeBackup(TFalha::DiscoCheio, "O disco da pasta de backup " + TextoDoCaminho(pedido.pasta) + " tem " +
                                                TamanhoEmTexto(*livres) + " livres; o backup pode precisar de " +
                                                TamanhoEmTexto(necessarios) +
                                                ". Libere espaço, ou escolha outra pasta, e repita.");
}

std::map<std::string, std::int64_t> VersoesDoDicionario(TConnection& conexao) {
    std::map<std::string, std::int64_t> versoes;
    if (!conexao.ExisteTabela("SARQUIVO")) return versoes;
    TWKDQuery q(conexao, "select NOME_ARQUIVO, VERSAO from SARQUIVO");
    for (q.Open(); !q.Eof(); q.Next()) versoes[std::string(Apara(q.Texto("NOME_ARQUIVO")))] = q.Inteiro("VERSAO");
    return versoes;
}

/// The database just before the backup's own moment and just behind it: between the two the backup has it.
class TTestemunhas {
  public:
    explicit TTestemunhas(IServidorDeBackup& servidor)
        : servidor_(servidor), antes_(servidor.Abre(servidor.BancoEmUso())) {
        antes_->StartInstantaneo();
    }

    /// Once the backup's moment is past.
    void Comecou() {
        depois_ = servidor_.Abre(servidor_.BancoEmUso());
        depois_->StartInstantaneo();
    }

    void Le(TManifesto& manifesto, const TAcompanha& acompanha) {
        manifesto.dicionario = VersoesDoDicionario(*antes_);
        manifesto.antes = TiraInstantaneo(*antes_, acompanha);
        if (!depois_ || servidor_.NinguemEscreveu(*antes_, *depois_)) return;
        manifesto.depois = TiraInstantaneo(*depois_, acompanha);
        for (const auto& [nome, tabela] : manifesto.antes)
            if (const auto la = manifesto.depois.find(nome); la != manifesto.depois.end() && la->second == tabela)
                manifesto.depois.erase(la);
    }

  private:
    IServidorDeBackup& servidor_;
    std::unique_ptr<TConnection> antes_, depois_;
};

fs::path Parcial(const fs::path& arquivo) {
    fs::path parcial = arquivo;
    return parcial += kParcial;
}

/// A folder of the server's machine is written as it writes it itself.
fs::path Nome(const TPedidoDeBackup& pedido, TDataHora quando, const IServidorDeBackup& servidor) {
    const std::string nome = NomeNoDisco(pedido.alias) + "_" + FormataDataHora(quando, "yyyymmdd") + "_" +
                             Troca(FormataDataHora(quando, "hh:mm:ss"), ":", "") + servidor.Extensao();
    const std::string pasta = TextoDoCaminho(pedido.pasta);
    if (servidor.ArquivosAqui() || pasta.find('\\') == std::string::npos) return pedido.pasta / CaminhoDoTexto(nome);
    return CaminhoDoTexto(pasta + (pasta.ends_with('\\') ? "" : "\\") + nome);
}

/// The file under its name of the time until it is whole; gone at the end of a scope that did not get there. Of two
/// backups in one second the later one waits for the next, which has another name. A server has the last name at once.
class TParcial {
  public:
    TParcial(const TPedidoDeBackup& pedido, const IServidorDeBackup& servidor) : aqui_(servidor.ArquivosAqui()) {
        while (!Toma(pedido, servidor)) std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    ~TParcial() {
        if (!inteiro_ && aqui_) Retira();
    }
    const fs::path& Arquivo() const { return arquivo_; }
    fs::path Caminho() const { return aqui_ ? Parcial(arquivo_) : arquivo_; }
    TDataHora Quando() const { return quando_; }

    void Conclui(const TManifesto& manifesto) {
        std::error_code erro;
        if (aqui_ || fs::is_directory(arquivo_.parent_path(), erro)) GravaManifesto(manifesto, arquivo_);
        if (aqui_) Renomeia(Caminho(), arquivo_);
        inteiro_ = true;
    }

  private:
    bool Toma(const TPedidoDeBackup& pedido, const IServidorDeBackup& servidor) {
        quando_ = Agora();
        arquivo_ = Nome(pedido, quando_, servidor);
        if (!aqui_) return true;
        if (!CriaSeNaoHa(Caminho())) return false;
        std::error_code erro;
        if (!fs::exists(arquivo_, erro)) return true;
        fs::remove(Caminho(), erro);
        return false;
    }
    void Retira() {
        std::error_code erro;
        fs::remove(Caminho(), erro);
        fs::remove(CaminhoDoManifesto(arquivo_), erro);
    }

    const bool aqui_;
    fs::path arquivo_;
    TDataHora quando_;
    bool inteiro_ = false;
};

/// Whether the last proof of a backup was a good one.
bool Provado(const fs::path& arquivo) {
    try {
        const auto manifesto = LeManifesto(arquivo);
        return manifesto && manifesto->prova && manifesto->prova->bom;
    } catch (const TErroDeBackup&) {
        return false;
    }
}

/// The one just made stays whatever its date, and so does the last one that is known to be good.
void ApagaAntigos(const TPedidoDeBackup& pedido, const std::string& extensao, TBackupFeito& feito) {
    auto antigos = BackupsDoAlias(pedido.pasta, pedido.alias, extensao);
    std::erase(antigos, feito.arquivo);
    const auto ficam = static_cast<std::size_t>(pedido.guarda) - 1;
    if (pedido.guarda <= 0 || antigos.size() <= ficam) return;
    const auto bom = std::find_if(antigos.rbegin(), antigos.rend(), Provado);
    const fs::path ultimoBom = bom == antigos.rend() ? fs::path() : *bom;
    antigos.resize(antigos.size() - ficam);
    for (const auto& arquivo : antigos) {
        if (arquivo == ultimoBom) continue;
        std::error_code erro;
        if (fs::remove(arquivo, erro)) fs::remove(CaminhoDoManifesto(arquivo), erro);
        (fs::exists(arquivo, erro) ? feito.naoApagados : feito.apagados).push_back(arquivo);
    }
}

/// Files of backups that did not come to their end.
std::vector<fs::path> Restos(const TPedidoDeBackup& pedido, const std::string& extensao) {
    auto restos = ArquivosDoAlias(pedido.pasta, pedido.alias, extensao + std::string(kParcial));
    for (std::size_t i = 0, quantos = restos.size(); i < quantos; ++i) {
        const auto manifesto = CaminhoDoManifesto(fs::path(restos[i]).replace_extension());
        std::error_code erro;
        if (fs::exists(manifesto, erro)) restos.push_back(manifesto);
    }
    return restos;
}

TManifesto Identifica(THBNConnection& conexao, IServidorDeBackup& servidor, const TPedidoDeBackup& pedido,
                      const fs::path& arquivo, TDataHora quando) {
    TManifesto manifesto;
    manifesto.arquivo = NomeDoArquivo(arquivo);
    manifesto.alias = pedido.alias;
    manifesto.banco = conexao.RetornaDadosConexao().Texto();
    manifesto.servidor = conexao.VersaoServidor();
    manifesto.programa = "AtualizaWKD " + std::string(kVersao);
    manifesto.quando = Instante(quando);
    manifesto.tamanhoDoBanco = servidor.TamanhoDoBanco();
    return manifesto;
}

}  // namespace

std::string Instante(TDataHora quando) {
    return FormataDataHora(quando, "yyyy-mm-dd") + "T" + FormataDataHora(quando, "hh:mm:ss");
}

std::vector<fs::path> BackupsDoAlias(const fs::path& pasta, const std::string& alias, const std::string& extensao) {
    return ArquivosDoAlias(pasta, alias, extensao);
}

TBackupFeito FazBackup(THBNConnection& conexao, const TPedidoDeBackup& pedido, const TAcompanha& ouvinte) {
    const auto servidor = CriaServidorDeBackup(conexao);
    const auto acompanha = [&](const TProgresso& progresso) {
        TInterrupcao::Confere();
        ouvinte(progresso);
    };
    TBackupFeito feito;
    if (servidor->ArquivosAqui()) {
        ExigePasta(pedido.pasta);
        feito.restos = Restos(pedido, servidor->Extensao());
    }
    ExigeEspaco(*servidor, pedido);
    TParcial parcial(pedido, *servidor);
    feito.arquivo = parcial.Arquivo();
    feito.manifesto = Identifica(conexao, *servidor, pedido, feito.arquivo, parcial.Quando());
    TTestemunhas testemunhas(*servidor);
    const TArquivoFeito arquivo = servidor->FazBackup(
        parcial.Caminho(), [&] { testemunhas.Comecou(); }, acompanha);
    feito.manifesto.tamanho = arquivo.tamanho;
    feito.manifesto.sha256 = arquivo.sha256;
    testemunhas.Le(feito.manifesto, acompanha);
    parcial.Conclui(feito.manifesto);
    if (servidor->ArquivosAqui()) ApagaAntigos(pedido, servidor->Extensao(), feito);
    return feito;
}

}  // namespace wkd
