#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>

#include "packet/Codigos.h"
#include "packet/EscritoresPacote.h"
#include "packet/ValoresDoPacote.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

namespace {

std::string Numero(std::uint64_t numero, std::size_t bytes) {
    std::string saida;
    for (std::size_t i = 0; i < bytes; ++i) saida += static_cast<char>(numero >> (8 * i));
    return saida;
}

std::string ComPrefixo(std::string_view bytes, std::size_t prefixo) {
    if (bytes.size() >> (8 * prefixo) != 0)
        throw std::range_error("o texto de " + std::to_string(bytes.size()) + " bytes não cabe");
    return Numero(bytes.size(), prefixo).append(bytes);
}

/// Bytes of an ANSI text: Windows-1252, but UTF-8 when a character has no place there or the bytes would read as
/// UTF-8.
std::string Ansi(const std::string& texto) {
    try {
        auto bytes = Para1252(texto);
        return bytes == texto || !Utf8Valido(bytes) ? bytes : texto;
    } catch (const TErroConversao&) {
        return texto;
    }
}

/// 80-bit float of the same number.
std::string Estendido(double valor) {
    const std::uint64_t sinal = std::signbit(valor) ? 0x8000 : 0;
    if (valor == 0) return Numero(0, 8) + Numero(sinal, 2);
    if (!std::isfinite(valor))
        return Numero(std::isnan(valor) ? 3ULL << 62 : 1ULL << 63, 8) + Numero(sinal | 0x7FFF, 2);
    int expoente = 0;
    const double fracao = std::frexp(std::fabs(valor), &expoente);  // in [0.5, 1)
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fracao, 64));
    return Numero(mantissa, 8) + Numero(sinal | static_cast<std::uint64_t>(expoente - 1 + 16383), 2);
}

std::string Flutuante(double valor, std::size_t bytes) {
    if (bytes == 10) return Estendido(valor);
    if (bytes == 4) return Numero(std::bit_cast<std::uint32_t>(static_cast<float>(valor)), 4);
    return Numero(std::bit_cast<std::uint64_t>(valor), 8);
}

TDigitos Digitos(const TValor& valor) {
    const auto numero = DigitosDeTexto(valor.ComoTexto());
    if (!numero || numero->Precisao() > kMaiorPrecisao)
        throw std::range_error("'" + valor.ComoTexto() + "' não é um decimal de até 64 algarismos");
    return *numero;
}

std::string DataHoraSql(TDataHora quando) {
    const auto c = CalendarioDe(quando.data);
    const int ms = MsDe(quando.hora);
    std::string bytes;
    for (const int parte : {c.ano, c.mes, c.dia, ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60})
        bytes += Numero(static_cast<std::uint64_t>(parte), 2);
    return bytes + Numero(static_cast<std::uint64_t>(ms % 1000), 4);
}

/// Field as its values are written.
struct TColuna {
    const TTipoPacote* tipo = nullptr;
    std::size_t tamanho = 0;  // of a value, or of its length prefix
    std::size_t largura = 0;  // WIDTH, 0: none
    bool memo = false;
    bool memoUnicode = false;
};

std::string BytesDeTexto(const TValor& valor, const TColuna& coluna) {
    const bool unicode = coluna.tipo->formato == TFormato::TextoUnicode || coluna.memoUnicode;
    const auto texto = valor.ComoTexto();
    if (!Utf8Valido(texto)) throw std::range_error("o texto não é UTF-8");
    return ComPrefixo(unicode ? ParaUtf16(texto) : Ansi(texto), coluna.tamanho);
}

std::string Bcd(const TValor& valor, std::size_t tamanho) {
    const auto bytes = BcdDeDigitos(Digitos(valor), tamanho);
    if (!bytes) throw std::range_error("o decimal '" + valor.ComoTexto() + "' não cabe");
    return *bytes;
}

std::string BytesDoValor(const TValor& valor, const TColuna& coluna) {
    const auto bytes = coluna.tamanho;
    switch (coluna.tipo->formato) {
        case TFormato::Inteiro:
        case TFormato::SemSinal:
            return Numero(InteiroParaGravar(valor, *coluna.tipo), bytes);
        case TFormato::Logico:
            return Numero(valor.Como<bool>(TTipoDado::Logico) ? 1 : 0, bytes);
        case TFormato::Flutuante:
            return Flutuante(valor.ComoDouble(), bytes);
        case TFormato::Bcd:
            return Bcd(valor, bytes);
        case TFormato::Data:
            return Numero(static_cast<std::uint32_t>(DiasDe(valor.Como<TData>(TTipoDado::Data))), bytes);
        case TFormato::Hora:
            return Numero(static_cast<std::uint32_t>(MsDe(valor.Como<THora>(TTipoDado::Hora))), bytes);
        case TFormato::DataHora:
            return Flutuante(MsDe(valor.Como<TDataHora>(TTipoDado::DataHora)), bytes);
        case TFormato::DataHoraSql:
            return DataHoraSql(valor.Como<TDataHora>(TTipoDado::DataHora));
        case TFormato::TextoAnsi:
        case TFormato::TextoUnicode:
            return BytesDeTexto(valor, coluna);
        default:
            return coluna.memo ? BytesDeTexto(valor, coluna) : ComPrefixo(valor.ComoBytes(), bytes);
    }
}

std::string Propriedade(std::string_view nome, std::size_t numero) {
    return ComPrefixo(nome, 1) + Numero(2, 2) + Numero(2, 2) +
           Numero(std::min<std::size_t>(numero, kMaiorNumeroDoCampo), 2);
}

/// Property of the packet, in numbers of four bytes.
std::string Parametro(const TParametroPacote& parametro) {
    constexpr std::uint16_t kSemSinal = 2, kInteiro = 1;
    const bool lista = ParametroDeLista(parametro.nome);
    std::string bytes = ComPrefixo(parametro.nome, 1) + Numero(4, 2);
    bytes += lista ? Numero(kMatriz | kSemSinal, 2) + Numero(parametro.numeros.size(), 4) : Numero(kInteiro, 2);
    if (!lista && parametro.numeros.empty()) return bytes + Numero(0, 4);
    for (std::size_t i = 0; i < (lista ? parametro.numeros.size() : 1); ++i)
        bytes += Numero(static_cast<std::uint64_t>(parametro.numeros[i]), 4);
    return bytes;
}

class TEscritorBinario {
  public:
    TEscritorBinario(const std::vector<TCampoPacote>& campos, const TDataPacket& pacote, TSaidaPacote& saida)
        : campos_(campos), pacote_(pacote), linhas_(pacote.linhas), saida_(saida) {
        for (std::size_t i = 0; i < campos.size(); ++i) colunas_.push_back(Coluna(i));
    }

    void Grava() {
        if (linhas_.size() > UINT32_MAX || campos_.size() > UINT16_MAX)
            throw TErroPacote("São linhas ou campos demais para um pacote de dados binário.");
        std::string campos;
        for (std::size_t i = 0; i < campos_.size(); ++i) campos += Descricao(i);
        campos += Numero(pacote_.parametros.size(), 2);
        for (const auto& parametro : pacote_.parametros) campos += Parametro(parametro);
        constexpr std::size_t kCabecalho = 24;
        saida_ << std::string_view("\x96\x19\xE0\xBD", 4) << Numero(Versao(), 2) << Numero(0, 2)
               << Numero(kCabecalho, 4) << Numero(campos_.size(), 2) << Numero(linhas_.size(), 4) << Numero(3, 4)
               << Numero(kCabecalho + campos.size(), 2) << campos;
        for (const auto& linha : linhas_) GravaLinha(linha, EstadoDaLinha(pacote_, linha_));
    }

  private:
    /// 2 when a type of the second version is used.
    std::uint64_t Versao() const {
        return std::any_of(colunas_.begin(), colunas_.end(),
                           [](const TColuna& c) { return c.tipo->codigo == 0x11 || c.tipo->codigo == 0x12; })
                   ? 2
                   : 1;
    }

    TColuna Coluna(std::size_t posicao) const {
        const auto& campo = campos_[posicao];
        TColuna coluna;
        coluna.tipo = &TipoParaGravar(campo, saida_);
        coluna.tamanho = coluna.tipo->tamanho;
        coluna.memo = DadoDoCampo(*coluna.tipo, campo.subtipo) == TTipoDado::Memo;
        coluna.memoUnicode = coluna.memo && MemoUnicode(campo.subtipo);
        coluna.largura = static_cast<std::size_t>(std::max(campo.tamanho, 0));
        if (coluna.tipo->formato == TFormato::TextoUnicode) coluna.largura *= 2;
        if (campo.tipo == TTipoDado::Texto)
            coluna.tamanho = std::max(coluna.largura, MaiorTexto(posicao)) > 255 ? 2 : 1;
        if (coluna.tipo->formato == TFormato::Bcd) {
            coluna.largura = std::clamp<std::size_t>(coluna.largura, MaiorPrecisao(posicao), kMaiorPrecisao);
            coluna.tamanho = 2 + (coluna.largura + 1) / 2;
        }
        return coluna;
    }

    /// At least the bytes of the longest text of the field.
    std::size_t MaiorTexto(std::size_t campo) const {
        std::size_t maior = 0;
        for (const auto& linha : linhas_)
            if (const auto* texto = linha.at(campo).Se<std::string>()) maior = std::max(maior, 2 * texto->size());
        return maior;
    }

    std::size_t MaiorPrecisao(std::size_t campo) const {
        std::size_t maior = 1;
        for (std::size_t i = 0; i < linhas_.size(); ++i) try {
                if (!linhas_[i].at(campo).Nulo()) maior = std::max(maior, Digitos(linhas_[i][campo]).Precisao());
            } catch (const std::runtime_error& erro) {
                saida_.Recusa(i + 1, campos_[campo], erro.what());
            }
        return maior;
    }

    std::string Descricao(std::size_t posicao) const {
        const auto& campo = campos_[posicao];
        const auto& coluna = colunas_[posicao];
        if (campo.nome.size() > 255) saida_.Recusa(0, campo, "o nome é longo demais");
        const unsigned atributos = (campo.oculto ? 1u : 0u) | (campo.somenteLeitura ? 2u : 0u) |
                                   (campo.requerido ? 4u : 0u) | (campo.ligacao ? 8u : 0u);
        std::string propriedades;
        std::uint64_t quantas = 0;
        if (coluna.largura > 0) ++quantas, propriedades += Propriedade("WIDTH", coluna.largura);
        if (campo.escala > 0)
            ++quantas, propriedades += Propriedade("DECIMALS", static_cast<std::size_t>(campo.escala));
        if (!campo.subtipo.empty())
            ++quantas, propriedades +=
                       ComPrefixo("SUBTYPE", 1) + Numero(2, 2) + Numero(0x49, 2) + ComPrefixo(campo.subtipo + '\0', 2);
        return ComPrefixo(Ansi(campo.nome), 1) + Numero(coluna.tamanho, 2) + Numero(coluna.tipo->codigo, 2) +
               Numero(atributos, 2) + Numero(quantas, 2) + propriedades;
    }

    void GravaLinha(const TLinha& linha, std::uint8_t estado) {
        ++linha_;
        std::string estados((campos_.size() + 3) / 4, '\0');
        for (std::size_t i = 0; i < campos_.size(); ++i)
            if (linha.at(i).Nulo()) estados[i / 4] = static_cast<char>(estados[i / 4] | 1 << (2 * (i % 4)));
        saida_ << Numero(estado, 1) << estados;
        for (std::size_t i = 0; i < campos_.size(); ++i)
            if (!linha[i].Nulo()) GravaValor(linha[i], i);
    }

    void GravaValor(const TValor& valor, std::size_t posicao) {
        try {
            const auto& coluna = colunas_[posicao];
            const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>();
            if (conteudo && coluna.tipo->formato == TFormato::Blob && !coluna.memo)
                GravaConteudo(**conteudo, coluna.tamanho);
            else
                saida_ << BytesDoValor(valor, coluna);
        } catch (const TErroPacote&) {
            throw;
        } catch (const std::runtime_error& erro) {
            saida_.Recusa(linha_, campos_[posicao], erro.what());
        }
    }

    /// Read twice: the length stands before the bytes.
    void GravaConteudo(const TConteudo& conteudo, std::size_t prefixo) {
        char bloco[16384];
        std::uint64_t total = 0;
        for (const auto leitor = conteudo.Abre(); const auto lidos = leitor->Le(bloco);) total += lidos;
        if (total > UINT32_MAX) throw std::range_error("o conteúdo passa de 4 GB");
        saida_ << Numero(total, prefixo);
        for (const auto leitor = conteudo.Abre(); const auto lidos = leitor->Le(bloco);)
            saida_ << std::string_view(bloco, lidos);
    }

    const std::vector<TCampoPacote>& campos_;
    const TDataPacket& pacote_;
    const std::vector<TLinha>& linhas_;
    TSaidaPacote& saida_;
    std::vector<TColuna> colunas_;
    std::size_t linha_ = 0;
};

}  // namespace

void GravaBinario(const std::vector<TCampoPacote>& campos, const TDataPacket& pacote, TSaidaPacote& saida) {
    TEscritorBinario(campos, pacote, saida).Grava();
}

}  // namespace wkd
