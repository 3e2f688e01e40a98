#include "LogDaExecucao.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "Formato.h"
#include "Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kMarcaUtf8 = "\xEF\xBB\xBF";

[[noreturn]] void Falha(const std::filesystem::path& arquivo, const char* acao) {
    throw std::system_error(errno, std::generic_category(), std::string(acao) + " " + arquivo.string());
}

std::string LeTudo(const std::filesystem::path& caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    if (!arquivo) Falha(caminho, "Não foi possível ler o log");
    return {std::istreambuf_iterator<char>(arquivo), std::istreambuf_iterator<char>()};
}

void AcrescentaUtf8(std::string& texto, char32_t c) {
    if (c < 0x80) {
        texto += static_cast<char>(c);
    } else if (c < 0x800) {
        texto += static_cast<char>(0xC0 | (c >> 6));
        texto += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        texto += static_cast<char>(0xE0 | (c >> 12));
        texto += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        texto += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        texto += static_cast<char>(0xF0 | (c >> 18));
        texto += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        texto += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        texto += static_cast<char>(0x80 | (c & 0x3F));
    }
}

/// UTF-16 behind its byte-order mark; `alto` is the offset of the high byte in each pair.
std::string DeUtf16(std::string_view bytes, std::size_t alto) {
    std::string texto;
    const auto unidade = [&](std::size_t i) {
        const auto h = static_cast<unsigned char>(bytes[i + alto]);
        const auto b = static_cast<unsigned char>(bytes[i + 1 - alto]);
        return static_cast<char32_t>(h << 8 | b);
    };
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        char32_t c = unidade(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < bytes.size()) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unidade(i + 2) - 0xDC00);
            i += 2;
        }
        AcrescentaUtf8(texto, c);
    }
    return texto;
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
    std::string bytes = LeTudo(caminho_);
    marcaUtf8_ = bytes.starts_with(kMarcaUtf8);
    if (marcaUtf8_) {
        bytes.erase(0, kMarcaUtf8.size());
    } else if (bytes.starts_with("\xFF\xFE")) {
        bytes = DeUtf16(bytes, 1);
    } else if (bytes.starts_with("\xFE\xFF")) {
        bytes = DeUtf16(bytes, 0);
    } else {
        bytes = TextoDeBytes(bytes);
    }
    texto_ = ComCrLf(bytes);
    inicio_ = 0;
}

void TLogDaExecucao::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao,
                            TDataHora quando) {
    std::string entrada = "\r\nAção: ";
    entrada.append(acao).append("\r\nTabela: ").append(tabela);
    entrada.append("\r\n[").append(FormataDataHora(quando, "dd/mm/yyyy hh:mm:ss")).append("] ").append(mensagem);
    PoeNoTopo(entrada + "\r\n");
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
    std::filesystem::path novo = caminho_;
    novo += ".novo";
    {
        std::ofstream arquivo(novo, std::ios::binary | std::ios::trunc);
        if (marcaUtf8_) arquivo.write(kMarcaUtf8.data(), static_cast<std::streamsize>(kMarcaUtf8.size()));
        arquivo.write(texto_.data() + inicio_, static_cast<std::streamsize>(texto_.size() - inicio_));
        arquivo.close();
        if (!arquivo) Falha(caminho_, "Não foi possível gravar o log");
    }
    std::filesystem::rename(novo, caminho_);
}

void TLogDaExecucao::LimparLog() {
    texto_.clear();
    inicio_ = 0;
}

}  // namespace wkd
