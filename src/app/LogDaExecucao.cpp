#include "LogDaExecucao.h"

#include <QString>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "Formato.h"
#include "Texto.h"

namespace wkd {

namespace {

[[noreturn]] void Falha(const std::filesystem::path& arquivo, const char* acao) {
    throw std::system_error(errno, std::generic_category(), std::string(acao) + " " + arquivo.string());
}

std::string LeTudo(const std::filesystem::path& caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    if (!arquivo) Falha(caminho, "Não foi possível ler o log");
    return {std::istreambuf_iterator<char>(arquivo), std::istreambuf_iterator<char>()};
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

TLogDaExecucao::TLogDaExecucao(std::filesystem::path caminho) : caminho_(std::move(caminho)) {}

void TLogDaExecucao::Carrega() {
    if (!std::filesystem::exists(caminho_)) return;
    ilegivel_ = true;
    const std::string bytes = LeTudo(caminho_);
    ilegivel_ = false;
    marca_ = QStringConverter::encodingForData(bytes);
    const QString marcado = marca_ ? QStringDecoder(*marca_)(bytes) : QString();
    texto_ = ComCrLf(marca_ ? marcado.toStdString() : TextoDeBytes(bytes));
    inicio_ = 0;
}

void TLogDaExecucao::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao,
                            TDataHora quando) {
    std::string entrada = "\r\nAção: ";
    entrada.append(acao).append("\r\nTabela: ").append(tabela);
    entrada.append("\r\n[").append(FormataDataHora(quando, "dd/mm/yyyy hh:mm:ss")).append("] ").append(mensagem);
    PoeNoTopo(ComCrLf(entrada));
    if (std::filesystem::exists(caminho_)) Salva();
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
    const std::string_view texto = Topo(Tamanho());
    if (!marca_) return Escreve(texto);
    QStringEncoder codificador(*marca_, QStringConverter::Flag::WriteBom);
    const QByteArray bytes = codificador(QString::fromUtf8(texto));
    Escreve({bytes.data(), static_cast<std::size_t>(bytes.size())});
}

void TLogDaExecucao::Escreve(std::string_view bytes) const {
    std::filesystem::path novo = caminho_;
    novo += ".novo";
    try {
        std::ofstream arquivo(novo, std::ios::binary | std::ios::trunc);
        arquivo.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        arquivo.close();
        if (!arquivo) Falha(caminho_, "Não foi possível gravar o log");
        std::filesystem::rename(novo, caminho_);
    } catch (...) {
        std::error_code ignorado;
        std::filesystem::remove(novo, ignorado);
        throw;
    }
}

void TLogDaExecucao::LimparLog() {
    texto_.clear();
    inicio_ = 0;
}

}  // namespace wkd
