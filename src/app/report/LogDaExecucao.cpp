#include "report/LogDaExecucao.h"

#include <QString>
#include <algorithm>
#include <cerrno>
#include <system_error>

#include "process/EscritaSegura.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

/// The system's error with what it means here.
std::system_error Falha(std::string_view acao, const std::filesystem::path& arquivo, const std::system_error& erro) {
    return {erro.code(), std::string(acao) + " " + arquivo.string()};
}

std::string ComCrLf(std::string_view texto) {
    std::string saida;
    saida.reserve(texto.size() + texto.size() / 16);
    for (std::size_t i = 0; i < texto.size(); ++i) {
        if (texto[i] == '\n' && (i == 0 || texto[i - 1] != '\r')) saida += '\r';
        saida += texto[i];
    }
    if (!saida.empty() && !saida.ends_with("\r\n")) saida += "\r\n";
    return saida;
}

}  // namespace

TLogDaExecucao::TLogDaExecucao(std::filesystem::path caminho, std::size_t limite)
    : caminho_(std::move(caminho)), limite_(limite) {}

bool TLogDaExecucao::Existe() const {
    return std::filesystem::symlink_status(caminho_).type() != std::filesystem::file_type::not_found;
}

void TLogDaExecucao::Carrega() {
    if (!Existe()) return;
    ilegivel_ = true;
    try {
        AbreParaLer(caminho_);
        if (std::filesystem::file_size(caminho_) >= limite_) PoeDeLado();
        const std::string bytes = LeArquivoInteiro(caminho_);
        marca_ = QStringConverter::encodingForData(bytes);
        const QString marcado = marca_ ? QStringDecoder(*marca_)(bytes) : QString();
        texto_ = ComCrLf(marca_ ? marcado.toStdString() : TextoDeBytes(bytes));
    } catch (const std::system_error& erro) {
        throw Falha("Não foi possível ler o log", caminho_, erro);
    }
    ilegivel_ = false;
    inicio_ = 0;
}

void TLogDaExecucao::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao,
                            TDataHora quando) {
    std::string entrada = "\r\nAção: ";
    entrada.append(acao).append("\r\nTabela: ").append(tabela);
    entrada.append("\r\n[")
        .append(FormataDataHora(quando, PadraoDoUsuario("dd/mm/yyyy hh:mm:ss")))
        .append("] ")
        .append(mensagem);
    ultima_ = ComCrLf(entrada);
    PoeNoTopo(ultima_);
    const bool cheio = Tamanho() >= limite_;
    if (cheio || Existe()) Salva();
    if (cheio) PoeDeLado();
}

/// Begins a new file.
void TLogDaExecucao::PoeDeLado() {
    const auto antigo = [this](int numero) { return std::filesystem::path(caminho_) += "." + std::to_string(numero); };
    std::error_code ainda;  // there are not so many yet
    for (int numero = kAntigos; numero > 1; --numero)
        std::filesystem::rename(antigo(numero - 1), antigo(numero), ainda);
    Renomeia(caminho_, antigo(1));
    LimparLog();
    Escreve({});
}

void TLogDaExecucao::PoeNoTopo(std::string_view texto) {
    if (texto.size() > inicio_) {
        const std::size_t folga = std::max(texto_.size() - inicio_, texto.size()) + 4096;
        texto_.insert(0, folga, ' ');
        inicio_ += folga;
    }
    inicio_ -= texto.size();
    std::copy(texto.begin(), texto.end(), texto_.begin() + static_cast<std::ptrdiff_t>(inicio_));
}

void TLogDaExecucao::Salva() const {
    if (ilegivel_)
        throw std::system_error(EACCES, std::generic_category(), "Não foi possível gravar o log " + caminho_.string());
    const std::string_view texto = std::string_view(texto_).substr(inicio_);
    if (!marca_) return Escreve(texto);
    QStringEncoder codificador(*marca_, QStringConverter::Flag::WriteBom);
    const QByteArray bytes = codificador(QString::fromUtf8(texto));
    Escreve({bytes.data(), static_cast<std::size_t>(bytes.size())});
}

void TLogDaExecucao::Escreve(std::string_view bytes) const {
    const std::filesystem::path novo = std::filesystem::path(caminho_) += ".novo";
    try {
        if (!(TSaidaEmArquivo(CriaArquivo(novo)) << bytes << std::flush))
            throw std::system_error(errno, std::generic_category());
        Renomeia(novo, caminho_);
    } catch (const std::system_error& erro) {
        std::error_code ignorado;
        std::filesystem::remove(novo, ignorado);
        throw Falha("Não foi possível gravar o log", caminho_, erro);
    }
}

void TLogDaExecucao::LimparLog() {
    texto_.clear();
    inicio_ = 0;
}

}  // namespace wkd
