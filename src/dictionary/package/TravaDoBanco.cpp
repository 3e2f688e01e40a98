#include "package/TravaDoBanco.h"

#include <future>

#include "package/Caminho.h"
#include "package/Trava.h"
#include "process/Interrupcao.h"
#include "values/TextoDeData.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <pwd.h>
#include <unistd.h>
#endif

namespace wkd {

using namespace std::chrono_literals;
using TRelogio = std::chrono::steady_clock;

namespace {

#ifdef _WIN32
std::string NomeDoSistema(BOOL(WINAPI* pergunta)(wchar_t*, DWORD*)) {
    wchar_t nome[256] = L"";
    DWORD tamanho = std::size(nome);
    return pergunta(nome, &tamanho) ? TextoDoCaminho(nome) : "?";
}

std::string Usuario() { return NomeDoSistema(GetUserNameW); }
std::string Computador() { return NomeDoSistema(GetComputerNameW); }
#else
std::string Usuario() {
    const passwd* conta = getpwuid(geteuid());
    return conta ? conta->pw_name : std::to_string(geteuid());
}

std::string Computador() {
    char nome[256] = "?";
    gethostname(nome, sizeof nome - 1);
    return nome;
}
#endif

std::filesystem::path ArquivoDaTrava(const std::filesystem::path& banco) {
    return std::filesystem::path(banco) += ".AtualizaWKD";
}

constexpr auto kPrazo = 60s, kPaciencia = 5s;

/// The name of one whom the user may not see is empty.
std::string Nome(const std::string& quem) { return quem.empty() ? "quem a roda não é visto por este usuário" : quem; }

std::string Eu() { return Usuario() + " em " + Computador() + ", desde " + FormataDataHora(Agora(), "dd/mm hh:mm"); }

}  // namespace

std::unique_ptr<TTrava> TravaDoArquivo(THBNConnection& conexao) {
    const auto banco = conexao.ArquivoLocal();
    if (!banco) return nullptr;
    const auto arquivo = ArquivoDaTrava(*banco);
    auto trava = TTrava::Tenta(arquivo);
    if (!trava) throw TOutraAtualizacao(Nome(TTrava::QuemTem(arquivo).value_or("")));
    trava->Escreve(Eu());
    return trava;
}

TTravaDoBanco::TTravaDoBanco(THBNConnection& conexao)
    : quem_(Eu()), arquivo_(TravaDoArquivo(conexao)), doTrabalho_(conexao) {
    if (arquivo_) return;
    conexao_ = conexao.Outra();
    conexao_->Open();
    Trava();
    thread_ = std::thread([this] { Corre(); });
}

TTravaDoBanco::~TTravaDoBanco() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard trava(guarda_);
        fim_ = true;
    }
    avisa_.notify_all();
    // An announcement that the server does not answer is not waited for.
    for (const auto ate = TRelogio::now() + kPaciencia; !terminou_; std::this_thread::sleep_for(5ms))
        if (TRelogio::now() > ate) conexao_->Cancela();
    thread_.join();
    ComPrazo(kPaciencia, [this] { conexao_->Close(); });
}

void TTravaDoBanco::Atividade(std::string_view texto) {
    {
        const std::lock_guard trava(guarda_);
        atividade_ = texto;
    }
    if (arquivo_) arquivo_->Escreve(Anuncio());
}

std::string TTravaDoBanco::Anuncio() {
    const std::lock_guard trava(guarda_);
    return atividade_.empty() ? quem_ : quem_ + ", em " + atividade_;
}

void TTravaDoBanco::Trava() {
    if (conexao_->Trava(Anuncio())) return;
    std::optional<std::string> quem;
    try {
        quem = conexao_->QuemTrava();
    } catch (const TErroBanco&) {  // the user may not ask
    }
    throw TOutraAtualizacao(Nome(quem.value_or("")));
}

/// What the server does not answer in that time fails.
void TTravaDoBanco::ComPrazo(std::chrono::milliseconds prazo, const std::function<void()>& pedido) {
    auto feito = std::async(std::launch::async, pedido);
    while (feito.wait_for(prazo) != std::future_status::ready) {
        conexao_->Cancela();
        prazo = 1s;
    }
    feito.get();
}

void TTravaDoBanco::Corre() {
    std::unique_lock trava(guarda_);
    while (!avisa_.wait_for(trava, kIntervalo, [this] { return fim_; })) {
        trava.unlock();
        Anuncia();
        trava.lock();
    }
    terminou_ = true;
}

/// A lost lock is taken again at once. If another update was quicker, nothing more may be done: the connection of the
/// work is given up.
void TTravaDoBanco::Anuncia() {
    const std::lock_guard uso(uso_);
    try {
        Confirma(kPrazo);
    } catch (const TOutraAtualizacao&) {
        doTrabalho_.Cancela();
    } catch (const TInterrompida&) {   // the run ends as well
    } catch (const std::exception&) {  // Garante tells
    }
}

void TTravaDoBanco::Confirma(std::chrono::milliseconds prazo) {
    if (nossa_) try {
            return ComPrazo(prazo, [this] { conexao_->Anuncia(Anuncio()); });
        } catch (const TErroBanco&) {
            nossa_ = false;
        }
    ComPrazo(kPrazo, [this] { Retoma(); });
}

void TTravaDoBanco::Retoma() {
    const std::string perdida = conexao_->Numero();
    conexao_->Close();
    conexao_->Open();
    conexao_->Derruba(perdida);
    Trava();
    nossa_ = true;
}

void TTravaDoBanco::Garante() {
    if (arquivo_) return;
    const std::lock_guard uso(uso_);
    Confirma(kPaciencia);
}

std::optional<std::string> QuemAtualiza(THBNConnection& conexao) {
    if (const auto banco = conexao.ArquivoLocal()) return TTrava::QuemTem(ArquivoDaTrava(*banco));
    if (!conexao.Connected()) return std::nullopt;
    try {
        const auto quem = conexao.QuemTrava();
        return quem ? std::optional(Nome(*quem)) : std::nullopt;
    } catch (const TErroBanco&) {  // the user may not ask
        return std::nullopt;
    }
}

}  // namespace wkd
