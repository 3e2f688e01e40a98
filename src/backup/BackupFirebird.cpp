#include "BackupFirebird.h"

#include <cstdio>

#include "firebird/ConexaoFirebird.h"
#include "firebird/ServicosFirebird.h"
#include "package/Caminho.h"
#include "process/EscritaSegura.h"
#include "process/Sha256.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// Everything before the name of the file.
std::string PastaDe(const std::string& banco) { return banco.substr(0, banco.find_last_of("/\\:") + 1); }

/// A backup on its way to the disk.
class TGravacao {
  public:
    /// For its owner alone: all that the database holds is in it.
    explicit TGravacao(const fs::path& arquivo) : arquivo_(arquivo), aberto_(AbreParaAcrescentar(arquivo)) {}

    void Soma(std::string_view bytes) {
        if (std::fwrite(bytes.data(), 1, bytes.size(), aberto_.get()) != bytes.size()) Falha();
        soma_.Soma(bytes);
        tamanho_ += bytes.size();
    }
    std::uintmax_t Tamanho() const { return tamanho_; }

    TArquivoFeito Conclui() {
        if (std::fflush(aberto_.get()) != 0) Falha();
        aberto_.reset();
        LevaAoDisco(arquivo_);
        return {tamanho_, soma_.Valor()};
    }

  private:
    [[noreturn]] void Falha() const { throw std::system_error(errno, std::generic_category(), arquivo_.string()); }

    fs::path arquivo_;
    TArquivo aberto_;
    TSha256 soma_;
    std::uintmax_t tamanho_ = 0;
};

/// A backup on its way to the service.
class TLeituraDoBackup : public TLeitorBytes {
  public:
    explicit TLeituraDoBackup(const fs::path& arquivo) : arquivo_(arquivo), aberto_(AbreParaLer(arquivo, true)) {}

    std::size_t Le(std::span<char> destino) override {
        const auto lidos = std::fread(destino.data(), 1, destino.size(), aberto_.get());
        if (std::ferror(aberto_.get())) throw std::system_error(errno, std::generic_category(), arquivo_.string());
        lidos_ += lidos;
        return lidos;
    }
    std::uintmax_t Lidos() const { return lidos_; }

  private:
    fs::path arquivo_;
    TArquivo aberto_;
    std::uintmax_t lidos_ = 0;
};

/// The name that a line of the service tells, such as "gbak:restoring data for table TVENDA ".
std::string TabelaDaLinha(std::string_view linha) {
    constexpr std::string_view kMarca = "data for table ";
    const auto onde = linha.find(kMarca);
    return onde == std::string_view::npos ? "" : std::string(Apara(linha.substr(onde + kMarca.size())));
}

/// Names of what has such a source. What a server of an older version does not keep there is not asked for.
std::vector<std::string> FontesComSenha(TConnection& conexao) {
    std::vector<std::string> nomes;
    for (const std::string de : {"procedure", "trigger", "function"}) {
        try {
            TWKDQuery q(conexao, "select trim(rdb$" + de + "_name) as NOME from rdb$" + de + "s where rdb$" + de +
                                     "_source containing 'PASSWORD'");
            for (q.Open(); !q.Eof(); q.Next()) nomes.push_back(q.Texto("NOME"));
        } catch (const TErroBanco& erro) {
            if (erro.Falha() != TFalha::ColunaInexistente) throw;
        }
    }
    return nomes;
}

/// A server names the file that it could not open; one that it cannot read, or that others have, is another error.
bool NaoSeAcha(const TErroBanco& erro) {
    constexpr std::int64_t kErroDeArquivo = 335544344;
    return erro.CodigoNativo() == kErroDeArquivo && erro.Falha() != TFalha::EmUso;
}

}  // namespace

std::string TBackupFirebird::BancoEmUso() const { return conexao_.Parametros().Valor("Database"); }

std::string TBackupFirebird::NomeDaCopia(const std::string& fim) const {
    return PastaDe(BancoEmUso()) + NomeNoDisco(conexao_.Alias()) + fim + ".fdb";
}

TArquivoFeito TBackupFirebird::FazBackup(const fs::path& arquivo, const std::function<void()>& comecou,
                                         const TAcompanha& acompanha) {
    const auto total = TamanhoDoBanco();
    TGravacao gravacao(arquivo);
    TServicosFirebird(conexao_.Parametros()).FazBackup([&](std::string_view bytes) {
        if (gravacao.Tamanho() == 0 && !bytes.empty()) comecou();
        gravacao.Soma(bytes);
        acompanha({"Fazendo o backup: " + TamanhoEmTexto(gravacao.Tamanho()), Percentual(gravacao.Tamanho(), total)});
    });
    return gravacao.Conclui();
}

std::optional<TArquivoFeito> TBackupFirebird::FazBackupDoEsquema(const fs::path& arquivo, const TAcompanha& acompanha) {
    if (const auto fontes = FontesComSenha(conexao_); !fontes.empty())
        throw TErroDeBackup(
            "A estrutura do banco ficou de fora: estas fontes falam de senha (PASSWORD): " + Junta(fontes, ", ") + ".");
    TGravacao gravacao(arquivo);
    TServicosFirebird(conexao_.Parametros())
        .FazBackup(
            [&](std::string_view bytes) {
                gravacao.Soma(bytes);
                acompanha({"Copiando a estrutura: " + TamanhoEmTexto(gravacao.Tamanho()), -1});
            },
            true);
    return gravacao.Conclui();
}

void TBackupFirebird::Restaura(const fs::path& arquivo, const std::string& banco, const TAcompanha& acompanha) {
    ExigeNovo(banco);
    const auto total = fs::file_size(arquivo);
    TLeituraDoBackup fonte(arquivo);
    std::string tabela;
    TServicosFirebird servicos(conexao_.ParametrosDe(banco));
    try {
        servicos.Restaura(fonte, [&](std::string_view linha) {
            if (auto nova = TabelaDaLinha(linha); !nova.empty()) tabela = std::move(nova);
            acompanha({"Restaurando " + (tabela.empty() ? "" : tabela + ": ") + TamanhoEmTexto(fonte.Lidos()) + " de " +
                           TamanhoEmTexto(total),
                       Percentual(fonte.Lidos(), total)});
        });
    } catch (...) {
        if (servicos.Criou()) DescartaPedaco(banco);
        throw;
    }
}

void TBackupFirebird::CriaVazio(const std::string& banco, const std::string& conjunto, int pagina) {
    constexpr int kPagina = 8192;
    ExigeNovo(banco);
    const TParametrosConexao seus = conexao_.ParametrosDe(banco);
    TParametrosConexao parametros;
    parametros.Adiciona("CharacterSet", conjunto);  // the first of a name counts
    for (const auto& [chave, valor] : seus.Pares()) parametros.Adiciona(chave, valor);
    CriaBancoFirebird(parametros, pagina == 0 ? kPagina : pagina);
}

/// A database that a restore began is whole for whoever opens it, with the rows that it got so far, or not yet one.
void TBackupFirebird::DescartaPedaco(const std::string& banco) noexcept {
    try {
        Apaga(banco);
    } catch (const std::exception&) {
        std::error_code erro;  // on a server it stays
        if (NestaMaquina()) fs::remove(CaminhoDoTexto(banco), erro);
    }
}

bool TBackupFirebird::Existe(const std::string& banco) {
    if (NestaMaquina()) return fs::exists(CaminhoDoTexto(banco));
    try {
        conexao_.Outra(conexao_.ParametrosDe(banco))->Open();
        return true;
    } catch (const TErroBanco& erro) {
        if (NaoSeAcha(erro)) return false;
        throw;
    }
}

void TBackupFirebird::Apaga(const std::string& banco) { ApagaBancoFirebird(conexao_.ParametrosDe(banco)); }

std::unique_ptr<TConnection> TBackupFirebird::Abre(const std::string& banco) {
    TParametrosConexao parametros = conexao_.ParametrosDe(banco);
    parametros.Adiciona("GarbageCollect", "False");
    auto outra = conexao_.Outra(parametros);
    outra->Open();
    return outra;
}

/// A second name for the old file, and the new one over the first: the place is never empty. A file system that gives
/// no second names gets two renames.
void TBackupFirebird::PoeNoLugar(const std::string& novo, const std::string& antigo) {
    const fs::path emUso = SemLinks(CaminhoDoTexto(BancoEmUso()));
    if (!antigo.empty()) {
        std::error_code semLigacao;
        fs::create_hard_link(emUso, CaminhoDoTexto(antigo), semLigacao);
        if (semLigacao) Renomeia(emUso, CaminhoDoTexto(antigo));
    }
    SubstituiPor(CaminhoDoTexto(novo), emUso);
}

/// A rename between two names of one file does nothing, and leaves both.
void TBackupFirebird::Devolve(const std::string& antigo) {
    const fs::path la = CaminhoDoTexto(antigo);
    if (!fs::exists(la)) return;
    if (MesmoBanco(antigo))
        fs::remove(la);
    else
        Renomeia(la, SemLinks(CaminhoDoTexto(BancoEmUso())));
}

bool TBackupFirebird::MesmoBanco(const std::string& antigo) {
    std::error_code erro;
    return NestaMaquina() && fs::equivalent(CaminhoDoTexto(BancoEmUso()), CaminhoDoTexto(antigo), erro);
}

std::vector<std::string> TBackupFirebird::CopiasPassageiras() {
    std::vector<std::string> nomes;
    std::error_code erro;
    if (!NestaMaquina()) return nomes;
    for (const auto& entrada : fs::directory_iterator(PastaDoBanco(), erro)) {
        const std::string nome = NomeDoArquivo(entrada.path());
        for (const char* meio : {"_prova_", "_ensaio_"})
            if (nome.starts_with(NomeNoDisco(conexao_.Alias()) + meio) && nome.ends_with(".fdb"))
                nomes.push_back(TextoDoCaminho(entrada.path()));
    }
    return nomes;
}

bool TBackupFirebird::FechadoParaUm(TConnection& banco) {
    constexpr int kUmSo = 2;  // and 3, nobody at all
    return ContaRegistros(banco, "select mon$shutdown_mode as total from mon$database") >= kUmSo;
}

bool TBackupFirebird::NinguemEscreveu(TConnection& antes, TConnection& depois) {
    constexpr std::int64_t kDoServico = 4;  // of the service, and of the second snapshot until it asks
    const auto pergunta = [](TConnection& conexao, const std::string& campo) {
        return ContaRegistros(conexao, "select " + campo +
                                           " as total from mon$transactions"
                                           " where mon$transaction_id = current_transaction");
    };
    const auto primeira = pergunta(antes, "mon$transaction_id");
    return pergunta(antes, "mon$oldest_active") >= primeira &&
           pergunta(depois, "mon$transaction_id") - primeira <= kDoServico;
}

std::uintmax_t TBackupFirebird::TamanhoNoDisco(TConnection& banco) {
    return static_cast<std::uintmax_t>(
        ContaRegistros(banco, "select mon$pages * mon$page_size as total from mon$database"));
}

std::optional<std::uintmax_t> TBackupFirebird::EspacoParaCopia() {
    return NestaMaquina() ? EspacoPara(PastaDoBanco()) : std::nullopt;
}

std::optional<std::uintmax_t> TBackupFirebird::EspacoPara(const fs::path& pasta) {
    std::error_code erro;
    const auto disco = fs::space(pasta, erro);
    return erro ? std::nullopt : std::optional(disco.available);
}

fs::path TBackupFirebird::PastaDoBanco() const { return fs::absolute(CaminhoDoTexto(BancoEmUso())).parent_path(); }

}  // namespace wkd
