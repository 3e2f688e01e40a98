#include "FontePacote.h"

#include <algorithm>
#include <system_error>

#include "Caminho.h"
#include "Codigos.h"

namespace wkd {

namespace {

constexpr std::string_view kMagica("\x96\x19\xE0\xBD", 4);

}  // namespace

TFontePacote::TFontePacote(const std::filesystem::path& arquivo) try : arquivo_(arquivo), mapa_(arquivo) {
    bytes_ = mapa_.Bytes();
    try {
        Reconhece();
    } catch (const TErroTrecho& erro) {
        Recusa(erro, {});
    }
} catch (const std::system_error& erro) {
    const auto causa = erro.code() == std::errc::no_such_file_or_directory ? "não existe" : erro.code().message();
    throw TErroPacote("O pacote de dados '" + TextoDoCaminho(arquivo) + "' não pôde ser lido: " + causa +
                      ". Baixe o pacote de novo.");
}

void TFontePacote::Reconhece() {
    if (bytes_.empty()) throw TErroTrecho{bytes_.data(), "o arquivo está vazio"};
    if (bytes_.starts_with(kMagica)) {
        forma_ = TFormaPacote::Binario;
    } else if (bytes_.starts_with("\xEF\xBB\xBF")) {
        bytes_.remove_prefix(3);
        marcaUtf8_ = true;
    } else if (bytes_.starts_with("\xFF\xFE") || bytes_.starts_with("\xFE\xFF")) {
        std::string trocado(bytes_.substr(2));
        if (bytes_.front() == '\xFE')
            for (std::size_t i = 1; i < trocado.size(); i += 2) std::swap(trocado[i - 1], trocado[i]);
        try {
            convertido_ = Decodifica(TCodigo::Utf16, trocado);
        } catch (const TErroTrecho& erro) {
            throw TErroTrecho{bytes_.data() + 2 + (erro.onde - trocado.data()), erro.causa};
        }
        bytes_ = convertido_;
        marcaUtf8_ = true;
    }
}

void TFontePacote::Recusa(const TErroTrecho& erro, std::string_view campo) const {
    std::string texto = "O pacote de dados '" + NomeDoArquivo(arquivo_) + "' não pode ser lido: ";
    if (!bytes_.empty()) {
        const auto inicio = convertido_.empty() ? mapa_.Bytes().data() : convertido_.data();
        if (forma_ == TFormaPacote::Xml)
            texto += "linha " + std::to_string(1 + std::count(inicio, erro.onde, '\n')) + ", ";
        texto += "posição " + std::to_string(erro.onde - inicio) + ", ";
    }
    if (!campo.empty()) texto += "campo '" + std::string(campo) + "': ";
    throw TErroPacote(texto + erro.causa + ". Baixe o pacote de novo ou peça outro ao suporte.");
}

}  // namespace wkd
