#include "Backup.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "package/Caminho.h"
#include "process/Interrupcao.h"
#include "process/Programa.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kParcial = ".parcial";

/// The alias as a part of a file name.
std::string NomeNoDisco(std::string_view alias) {
    std::string nome;
    for (const char c : Apara(alias)) {
        const bool proibida =
            static_cast<unsigned char>(c) < 0x20 || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
        nome += proibida ? '_' : c;
    }
    return nome;
}

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
    throw TErroDeBackup("A pasta de backup " + TextoDoCaminho(pasta) +
                        (fs::exists(pasta, erro) ? " não é uma pasta" : " não existe") +
                        ". Crie-a, ou escolha outra, e repita.");
}

/// What the last backup took, with room to grow, tells more than the database, which may be half empty.
std::uintmax_t BytesNecessarios(IServidorDeBackup& servidor, const TPedidoDeBackup& pedido) {
    const auto doBanco = servidor.TamanhoDoBanco();
    const auto anteriores = BackupsDoAlias(pedido.pasta, pedido.alias, servidor.Extensao());
    if (anteriores.empty()) return doBanco;
    std::error_code erro;
    const auto anterior = fs::file_size(anteriores.back(), erro);
    return erro ? doBanco : std::min(doBanco, anterior + anterior / 5);
}

void ExigeEspaco(IServidorDeBackup& servidor, const TPedidoDeBackup& pedido) {
    std::error_code erro;
    const auto disco = fs::space(pedido.pasta, erro);
    const auto necessarios = BytesNecessarios(servidor, pedido);
    if (erro || disco.available >= necessarios) return;
    throw TErroDeBackup("O disco da pasta de backup " + TextoDoCaminho(pedido.pasta) + " tem " +
                        TamanhoEmTexto(disco.available) + " livres; o backup pode precisar de " +
                        TamanhoEmTexto(necessarios) + ". Libere espaço, ou escolha outra pasta, e repita.");
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
        if (!depois_ || NinguemEscreveu()) return;
        manifesto.depois = TiraInstantaneo(*depois_, acompanha);
        for (const auto& [nome, tabela] : manifesto.antes)
            if (const auto la = manifesto.depois.find(nome); la != manifesto.depois.end() && la->second == tabela)
                manifesto.depois.erase(la);
    }

  private:
    /// Whether no transaction but the backup's own was under way between the two.
    bool NinguemEscreveu();

    IServidorDeBackup& servidor_;
    std::unique_ptr<TConnection> antes_, depois_;
};

bool TTestemunhas::NinguemEscreveu() {
    if (antes_->TipoBanco() != TTipoBanco::tbInterbase) return false;
    constexpr std::int64_t kDoServico = 3;  // that the service begins itself, at most
    const auto pergunta = [](TConnection& conexao, const char* campo) {
        TWKDQuery q(conexao, std::string("select ") + campo +
                                 " as NUMERO from mon$transactions where mon$transaction_id = current_transaction");
        q.Open();
        return q.Inteiro("NUMERO");
    };
    const auto primeira = pergunta(*antes_, "mon$transaction_id");
    return pergunta(*antes_, "mon$oldest_active") >= primeira &&
           pergunta(*depois_, "mon$transaction_id") - primeira <= kDoServico;
}

/// The file under its name of the time until it is whole; gone at the end of a scope that did not get there.
class TParcial {
  public:
    /// A server writes under the last name.
    TParcial(const fs::path& arquivo, bool aqui) : arquivo_(arquivo), parcial_(arquivo) {
        if (aqui) parcial_ += kParcial;
    }
    ~TParcial() {
        std::error_code erro;
        if (inteiro_ || parcial_ == arquivo_) return;
        fs::remove(parcial_, erro);
        fs::remove(CaminhoDoManifesto(arquivo_), erro);
    }
    const fs::path& Caminho() const { return parcial_; }

    void Conclui(const TManifesto& manifesto) {
        std::error_code erro;
        if (parcial_ != arquivo_ || fs::is_directory(arquivo_.parent_path(), erro)) GravaManifesto(manifesto, arquivo_);
        if (parcial_ != arquivo_) fs::rename(parcial_, arquivo_);
        inteiro_ = true;
    }

  private:
    fs::path arquivo_, parcial_;
    bool inteiro_ = false;
};

/// This one, just made, is the last of them.
std::vector<fs::path> ApagaAntigos(const TPedidoDeBackup& pedido, const std::string& extensao) {
    auto antigos = BackupsDoAlias(pedido.pasta, pedido.alias, extensao);
    const auto guarda = static_cast<std::size_t>(pedido.guarda);
    if (pedido.guarda <= 0 || antigos.size() <= guarda) return {};
    antigos.resize(antigos.size() - guarda);
    for (const auto& arquivo : antigos) {
        fs::remove(arquivo);
        fs::remove(CaminhoDoManifesto(arquivo));
    }
    return antigos;
}

fs::path Nome(const TPedidoDeBackup& pedido, TDataHora quando, const std::string& extensao) {
    return pedido.pasta / CaminhoDoTexto(NomeNoDisco(pedido.alias) + "_" + FormataDataHora(quando, "yyyymmdd") + "_" +
                                         Troca(FormataDataHora(quando, "hh:mm:ss"), ":", "") + extensao);
}

bool Ocupado(const fs::path& arquivo) {
    std::error_code erro;
    fs::path parcial = arquivo;
    parcial += kParcial;
    return fs::exists(arquivo, erro) || fs::exists(parcial, erro);
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
        ExigeEspaco(*servidor, pedido);
        feito.restos = ArquivosDoAlias(pedido.pasta, pedido.alias, servidor->Extensao() + std::string(kParcial));
    }
    TDataHora quando = Agora();
    for (feito.arquivo = Nome(pedido, quando, servidor->Extensao()); Ocupado(feito.arquivo);
         feito.arquivo = Nome(pedido, quando, servidor->Extensao())) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));  // the next second has another name
        quando = Agora();
    }
    TParcial parcial(feito.arquivo, servidor->ArquivosAqui());
    feito.manifesto = Identifica(conexao, *servidor, pedido, feito.arquivo, quando);
    TTestemunhas testemunhas(*servidor);
    const TArquivoFeito arquivo = servidor->FazBackup(
        parcial.Caminho(), [&] { testemunhas.Comecou(); }, acompanha);
    feito.manifesto.tamanho = arquivo.tamanho;
    feito.manifesto.sha256 = arquivo.sha256;
    testemunhas.Le(feito.manifesto, acompanha);
    parcial.Conclui(feito.manifesto);
    if (servidor->ArquivosAqui()) feito.apagados = ApagaAntigos(pedido, servidor->Extensao());
    return feito;
}

}  // namespace wkd
