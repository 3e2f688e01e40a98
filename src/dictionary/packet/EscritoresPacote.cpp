#include "packet/EscritoresPacote.h"

#include <charconv>
#include <stdexcept>
#include <string>
#include <utility>

#include "package/Caminho.h"
#include "package/Pacote.h"
#include "process/EscritaSegura.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBloco = 65536;

fs::path NomeProvisorio(const fs::path& arquivo) {
    auto novo = arquivo;
    novo += ".novo";
    std::error_code erro;
    fs::remove(novo, erro);
    return novo;
}

}  // namespace

TSaidaPacote::TSaidaPacote(const fs::path& arquivo)
    : arquivo_(arquivo), novo_(NomeProvisorio(arquivo)), aberto_(novo_) {}

TSaidaPacote& TSaidaPacote::operator<<(std::string_view bytes) {
    bloco_ += bytes;
    if (bloco_.size() >= kBloco) {
        aberto_.Grava(bloco_);
        bloco_.clear();
    }
    return *this;
}

void TSaidaPacote::Conclui(TDataPacket&& gravado) {
    aberto_.Grava(bloco_);
    aberto_.Fecha();
    gravado = {};
    try {
        SubstituiPor(novo_, arquivo_);
    } catch (const std::system_error& erro) {
        NaoGrava(arquivo_, erro.code());
    }
}

void TSaidaPacote::Recusa(std::size_t linha, const TCampoPacote& campo, const std::string& causa) const {
    throw TErroPacote("O pacote de dados '" + NomeDoArquivo(arquivo_) +
                      "' não pode ser gravado: " + (linha > 0 ? "linha " + std::to_string(linha) + ", " : "") +
                      "campo '" + campo.nome + "': " + causa);
}

const TTipoPacote& TipoParaGravar(const TCampoPacote& campo, const TSaidaPacote& saida) {
    const bool bytes = campo.tipo == TTipoDado::Bytes && campo.tipoXml == "bin.hex";
    const auto* tipo = bytes ? TipoPorCodigo(0x4B, 2) : TipoPorXml(campo.tipoXml);
    if (!tipo) saida.Recusa(0, campo, "o tipo '" + campo.tipoXml + "' não é aceito");
    return *tipo;
}

std::uint64_t InteiroParaGravar(const TValor& valor, const TTipoPacote& tipo) {
    const int sobra = 64 - 8 * tipo.tamanho;
    const bool semSinal = tipo.formato == TFormato::SemSinal;
    if (const auto* texto = valor.Se<std::string>(); texto && semSinal) {
        std::uint64_t numero = 0;
        const auto lido = std::from_chars(texto->data(), texto->data() + texto->size(), numero);
        if (lido.ec == std::errc() && lido.ptr == texto->data() + texto->size() && numero <= UINT64_MAX >> sobra)
            return numero;
    }
    const std::int64_t numero = valor.ComoInteiro();
    const auto maior = static_cast<std::int64_t>((UINT64_MAX >> sobra) >> (semSinal && sobra > 0 ? 0 : 1));
    const std::int64_t menor = semSinal ? 0 : -maior - 1;
    if (numero < menor || numero > maior)
        throw std::range_error("o número " + std::to_string(numero) + " não cabe no tipo " + std::string(tipo.xml));
    return static_cast<std::uint64_t>(numero);
}

}  // namespace wkd
