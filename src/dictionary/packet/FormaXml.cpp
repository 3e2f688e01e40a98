#include "packet/FormaXml.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

#include "packet/Codigos.h"
#include "packet/FontePacote.h"
#include "packet/ValoresDoPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool Branco(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

bool FimDoNome(char c) { return Branco(c) || c == '=' || c == '>' || c == '/' || c == '<' || c == '"' || c == '\''; }

}  // namespace

void TFichasXml::PulaAte(std::string_view fim, const char* causa) {
    const auto achado = texto_.find(fim, posicao_);
    if (achado == std::string_view::npos) throw TErroTrecho{Onde(), causa};
    posicao_ = achado + fim.size();
}

void TFichasXml::PulaBrancos() {
    while (posicao_ < texto_.size() && Branco(texto_[posicao_])) ++posicao_;
}

std::string_view TFichasXml::LeNome() {
    const auto inicio = posicao_;
    while (posicao_ < texto_.size() && !FimDoNome(texto_[posicao_])) ++posicao_;
    return texto_.substr(inicio, posicao_ - inicio);
}

bool TFichasXml::Proxima() {
    Termina();
    for (;;) {
        posicao_ = texto_.find('<', posicao_);
        if (posicao_ == std::string_view::npos) {
            posicao_ = texto_.size();
            return false;
        }
        const auto resto = texto_.substr(posicao_);
        if (resto.starts_with("<?")) {
            PulaAte("?>", "instrução sem fim");
        } else if (resto.starts_with("<!--")) {
            PulaAte("-->", "comentário sem fim");
        } else if (resto.starts_with("<![CDATA[")) {
            PulaAte("]]>", "CDATA sem fim");
        } else if (resto.starts_with("<!")) {
            PulaAte(">", "declaração sem fim");
        } else {
            break;
        }
    }
    ++posicao_;
    fecha_ = posicao_ < texto_.size() && texto_[posicao_] == '/';
    if (fecha_) ++posicao_;
    nome_ = LeNome();
    if (nome_.empty()) throw TErroTrecho{Onde(), "marca sem nome"};
    dentro_ = true;
    return true;
}

bool TFichasXml::Atributo(std::string_view& nome, std::string_view& valor) {
    if (!dentro_) return false;
    PulaBrancos();
    if (texto_.substr(posicao_).starts_with("/>") || texto_.substr(posicao_).starts_with(">")) {
        posicao_ += texto_[posicao_] == '/' ? 2 : 1;
        dentro_ = false;
        return false;
    }
    nome = LeNome();
    PulaBrancos();
    const bool igual = posicao_ < texto_.size() && texto_[posicao_] == '=';
    if (nome.empty() || !igual)
        throw TErroTrecho{Onde(), "marca '" + TextoDeBytes(nome_.substr(0, 40)) + "' incompleta"};
    ++posicao_;
    PulaBrancos();
    const char aspas = posicao_ < texto_.size() ? texto_[posicao_] : '\0';
    if (aspas != '"' && aspas != '\'') throw TErroTrecho{Onde(), "atributo sem aspas"};
    const auto inicio = ++posicao_;
    PulaAte(std::string_view(&aspas, 1), "atributo sem fim");
    valor = texto_.substr(inicio, posicao_ - 1 - inicio);
    return true;
}

std::string TFichasXml::Inicio(std::string_view nome) {
    return std::ranges::any_of(nome, FimDoNome) ? std::string() : " " + std::string(nome) + "=\"";
}

bool TFichasXml::Segue(std::string_view inicio, std::string_view& valor) {
    if (!dentro_ || inicio.empty() || !texto_.substr(posicao_).starts_with(inicio)) return false;
    const auto abre = posicao_ + inicio.size(), fecha = texto_.find('"', abre);
    if (fecha == std::string_view::npos) return false;
    valor = texto_.substr(abre, fecha - abre);
    posicao_ = fecha + 1;
    return true;
}

void TFichasXml::Termina() {
    std::string_view nome, valor;
    while (Atributo(nome, valor)) continue;
}

std::string_view CodificacaoDeclarada(std::string_view texto) {
    while (!texto.empty() && Branco(texto.front())) texto.remove_prefix(1);
    if (!texto.starts_with("<?xml")) return {};
    const auto declaracao = texto.substr(0, texto.find("?>"));
    const auto chave = declaracao.find("encoding");
    if (chave == std::string_view::npos) return {};
    const auto abre = declaracao.find_first_of("\"'", chave);
    if (abre == std::string_view::npos) return {};
    const auto fecha = declaracao.find(declaracao[abre], abre + 1);
    return declaracao.substr(abre + 1, std::min(fecha, declaracao.size()) - abre - 1);
}

namespace {

template <class T>
std::optional<T> Numero(std::string_view texto) {
    T numero{};
    const auto lido = std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    if (lido.ec != std::errc() || lido.ptr != texto.data() + texto.size()) return std::nullopt;
    return numero;
}

std::optional<std::int64_t> Inteiro(std::string_view texto, int bytes) {
    const auto numero = Numero<std::int64_t>(texto);
    const std::int64_t maior = INT64_MAX >> (64 - 8 * bytes);
    if (!numero || *numero > maior || *numero < -maior - 1) return std::nullopt;
    return numero;
}

/// A negative number stands for the unsigned one of the same bits.
std::optional<TValor> SemSinal(std::string_view texto, int bytes) {
    const std::uint64_t maior = UINT64_MAX >> (64 - 8 * bytes);
    std::optional<std::uint64_t> numero = Numero<std::uint64_t>(texto);
    if (texto.starts_with('-') && Inteiro(texto, bytes))
        numero = static_cast<std::uint64_t>(*Numero<std::int64_t>(texto)) & maior;
    if (!numero || *numero > maior) return std::nullopt;
    if (*numero > static_cast<std::uint64_t>(INT64_MAX)) return TValor(std::to_string(*numero));
    return TValor(static_cast<std::int64_t>(*numero));
}

std::optional<TValor> Logico(std::string_view texto) {
    if (IgualSemCaixa(texto, "TRUE")) return TValor(true);
    if (IgualSemCaixa(texto, "FALSE")) return TValor(false);
    return std::nullopt;
}

std::optional<TValor> Flutuante(std::string_view texto, int bytes) {
    if (bytes != 4) {
        const auto numero = Numero<double>(texto);
        return numero ? std::optional<TValor>(*numero) : std::nullopt;
    }
    const auto numero = Numero<float>(texto);
    return numero ? std::optional<TValor>(static_cast<double>(*numero)) : std::nullopt;
}

std::optional<TValor> Decimal(std::string_view texto) {
    const auto numero = DigitosDeTexto(texto);
    return numero ? std::optional<TValor>(numero->Valor()) : std::nullopt;
}

std::optional<TValor> Data(std::string_view texto) {
    const auto quando = DataHoraDeXml(texto);
    if (!quando || quando->hora.tiques != 0) return std::nullopt;
    return TValor(quando->data);
}

template <class T>
std::optional<TValor> Opcional(const std::optional<T>& valor) {
    return valor ? std::optional<TValor>(*valor) : std::nullopt;
}

bool Texto(TFormato formato) { return formato == TFormato::TextoAnsi || formato == TFormato::TextoUnicode; }

}  // namespace

std::optional<TValor> ValorDoTexto(const TTipoPacote& tipo, std::string_view texto) {
    switch (tipo.formato) {
        case TFormato::Inteiro:
            return Opcional(Inteiro(texto, tipo.tamanho));
        case TFormato::SemSinal:
            return SemSinal(texto, tipo.tamanho);
        case TFormato::Logico:
            return Logico(texto);
        case TFormato::Flutuante:
            return Flutuante(texto, tipo.tamanho);
        case TFormato::Bcd:
            return Decimal(texto);
        case TFormato::Data:
            return Data(texto);
        case TFormato::Hora:
            return Opcional(HoraDeXml(texto));
        default:
            return Opcional(DataHoraDeXml(texto));
    }
}

TValor ValorDeXml(const std::shared_ptr<const TFontePacote>& fonte, const TColunaXml& coluna, std::string_view bruto,
                  std::size_t campo) {
    const TFormato formato = coluna.tipo->formato;
    if (Texto(formato)) return Simples(coluna.codigo, bruto) ? std::string(bruto) : Decodifica(coluna.codigo, bruto);
    if (bruto.empty()) return {};
    if (formato == TFormato::Inteiro)
        if (const auto numero = Inteiro(bruto, coluna.tipo->tamanho)) return *numero;
    if (formato == TFormato::Blob) return ValorDeBlob(fonte, bruto, coluna.codigo, campo, coluna.dado);
    constexpr std::size_t kMaiorNumero = 1000;
    const auto texto = Decodifica(coluna.codigo, bruto.substr(0, kMaiorNumero));
    if (auto valor = bruto.size() > kMaiorNumero ? std::nullopt : ValorDoTexto(*coluna.tipo, Apara(texto)))
        return *std::move(valor);
    constexpr std::size_t kMostra = 40;
    throw TErroTrecho{bruto.data(), "o valor '" + TextoDeBytes(bruto.substr(0, kMostra)) + "' não é do tipo " +
                                        std::string(coluna.tipo->xml)};
}

}  // namespace wkd
