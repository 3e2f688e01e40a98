#include <bit>
#include <cmath>

#include "packet/Codigos.h"
#include "packet/DataPacket.h"
#include "packet/FormaBinaria.h"
#include "packet/LeitoresPacote.h"
#include "packet/ValoresDoPacote.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

/// Field as its values stand in the file.
struct TColunaBinaria {
    const TTipoPacote* tipo = nullptr;
    std::uint16_t tamanho = 0;
    bool variavel = false;
    TCodigo codigo = TCodigo::Bruto;
};

std::int64_t ComSinal(std::uint64_t numero, std::size_t bytes) {
    const int sobra = static_cast<int>(64 - 8 * bytes);
    return static_cast<std::int64_t>(numero << sobra) >> sobra;
}

/// Double next to an 80-bit float: 64 bits of mantissa with the leading 1, 15 bits of exponent, sign.
double DeEstendido(std::string_view bytes) {
    TCursorBinario cursor(bytes);
    const std::uint64_t mantissa = cursor.Numero(8);
    const std::uint16_t alto = cursor.U16();
    const int expoente = alto & 0x7FFF;
    const double valor = expoente == 0x7FFF ? (mantissa << 1 == 0 ? INFINITY : NAN)
                                            : std::ldexp(static_cast<double>(mantissa), expoente - 16383 - 63);
    return alto & 0x8000 ? -valor : valor;
}

double Flutuante(std::string_view bytes) {
    if (bytes.size() == 10) return DeEstendido(bytes);
    const std::uint64_t numero = TCursorBinario(bytes).Numero(bytes.size());
    if (bytes.size() == 4) return std::bit_cast<float>(static_cast<std::uint32_t>(numero));
    return std::bit_cast<double>(numero);
}

TValor SemSinal(std::uint64_t numero) {
    const auto comSinal = static_cast<std::int64_t>(numero);
    return comSinal >= 0 ? TValor(comSinal) : TValor(std::to_string(numero));
}

TValor DataHoraSql(std::string_view bytes) {
    TCursorBinario cursor(bytes);
    const int ano = cursor.U16(), mes = cursor.U16(), dia = cursor.U16();
    const int hora = cursor.U16(), minuto = cursor.U16(), segundo = cursor.U16();
    const std::uint32_t ms = cursor.U32();
    const auto data = DataValida(ano, mes, dia);
    if (!data || hora > 23 || minuto > 59 || segundo > 59 || ms > 999)
        throw TErroTrecho{bytes.data(), "data e hora inválidas"};
    return TDataHora{*data, *HoraDeMs(((hora * 60 + minuto) * 60 + segundo) * 1000 + static_cast<std::int64_t>(ms))};
}

template <class T>
TValor Exige(const std::optional<T>& valor, std::string_view bytes, const std::string& causa) {
    if (!valor) throw TErroTrecho{bytes.data(), causa};
    return TValor(*valor);
}

TValor ValorDeBytes(const TTipoPacote& tipo, std::string_view bytes) {
    const std::uint64_t numero = bytes.size() <= 8 ? TCursorBinario(bytes).Numero(bytes.size()) : 0;
    std::string causa;
    switch (tipo.formato) {
        case TFormato::Inteiro:
            return ComSinal(numero, bytes.size());
        case TFormato::SemSinal:
            return SemSinal(numero);
        case TFormato::Logico:
            return numero != 0;
        case TFormato::Flutuante:
            return Flutuante(bytes);
        case TFormato::Bcd: {
            const auto valor = ValorDeBcd(bytes, causa);
            return Exige(valor, bytes, causa);
        }
        case TFormato::Data:
            return Exige(DataDeDias(ComSinal(numero, 4)), bytes, "data fora do calendário");
        case TFormato::Hora:
            return Exige(HoraDeMs(ComSinal(numero, 4)), bytes, "hora fora do dia");
        case TFormato::DataHora:
            return Exige(DataHoraDeMs(std::bit_cast<double>(numero)), bytes, "data e hora fora do calendário");
        case TFormato::DataHoraSql:
            return DataHoraSql(bytes);
        case TFormato::TextoAnsi:
            return Decodifica(TCodigo::Ansi, bytes);
        case TFormato::TextoUnicode:
            return Decodifica(TCodigo::Utf16, bytes);
        default:
            return TBytes{std::string(bytes)};
    }
}

class TLeitorBinario {
  public:
    TLeitorBinario(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas)
        : fonte_(fonte),
          nomes_(fonte->nomesDosCampos),
          cursor_(fonte->Bytes()),
          orcamento_(fonte->Bytes().size()),
          todas_(linhas == TLinhasDoPacote::Todas) {}

    TDataPacket Le() {
        try {
            LeCabecalho();
            for (std::uint16_t i = 0; i < numCampos_; ++i) LeCampo();
            campoAtual_ = kNenhum;
            LePropriedades();
            LeLinhas();
            return std::move(pacote_);
        } catch (const TErroTrecho& erro) {
            fonte_->Recusa(erro, campoAtual_ == kNenhum ? std::string() : nomes_[campoAtual_]);
        }
    }

  private:
    static constexpr std::size_t kNenhum = ~std::size_t{0};

    void LeCabecalho() {
        cursor_.Bytes(4);
        const char* onde = cursor_.Onde();
        const std::uint16_t versao = cursor_.U16();
        cursor_.U16();
        if (versao < 1 || versao > 2) throw TErroTrecho{onde, "versão " + std::to_string(versao) + " desconhecida"};
        onde = cursor_.Onde();
        if (cursor_.U32() != 24) throw TErroTrecho{onde, "tamanho de cabeçalho desconhecido"};
        onde = cursor_.Onde();
        numCampos_ = cursor_.U16();
        if (numCampos_ == 0) throw TErroTrecho{onde, "o pacote não tem campos"};
        numLinhas_ = cursor_.U32();
        onde = cursor_.Onde();
        if ((cursor_.U32() & 1) == 0) throw TErroTrecho{onde, "o pacote não traz a descrição dos campos"};
        inicioDasLinhas_ = cursor_.U16();
    }

    void LeCampo() {
        TCampoPacote campo;
        TColunaBinaria coluna;
        campo.nome = TextoDeBytes(cursor_.Bytes(cursor_.U8()));
        campoAtual_ = nomes_.size();
        nomes_.push_back(campo.nome);
        const char* onde = cursor_.Onde();
        if (campo.nome.empty()) throw TErroTrecho{onde, "campo sem nome"};
        coluna.tamanho = cursor_.U16();
        const std::uint16_t codigo = cursor_.U16();
        const std::uint16_t atributos = cursor_.U16();
        coluna.tipo = TipoPorCodigo(codigo, coluna.tamanho);
        if (!coluna.tipo || (coluna.tipo->formato == TFormato::Bcd && coluna.tamanho < 2))
            throw TErroTrecho{onde, "o tipo de campo " + NomeDoTipo(codigo, coluna.tamanho) + " não é aceito"};
        coluna.variavel = (codigo & kVariavel) != 0;
        campo.tipoXml = coluna.tipo->xml;
        campo.oculto = (atributos & 1) != 0;
        campo.somenteLeitura = (atributos & 2) != 0;
        campo.requerido = (atributos & 4) != 0;
        campo.ligacao = (atributos & 8) != 0;
        LePropriedadesDoCampo(campo, coluna);
        colunas_.push_back(coluna);
        pacote_.campos.push_back(std::move(campo));
    }

    void LePropriedadesDoCampo(TCampoPacote& campo, TColunaBinaria& coluna) {
        const auto formato = coluna.tipo->formato;
        if (formato == TFormato::Bcd) campo.tamanho = 2 * (coluna.tamanho - 2);
        if (formato == TFormato::Bytes && !coluna.variavel) campo.tamanho = coluna.tamanho;
        for (int i = cursor_.U16(); i > 0; --i) {
            const auto propriedade = LePropriedade(cursor_);
            const int numero = static_cast<int>(std::min<std::uint64_t>(propriedade.Numero(), kMaiorNumeroDoCampo));
            if (IgualSemCaixa(propriedade.nome, "WIDTH"))
                campo.tamanho = formato == TFormato::TextoUnicode ? numero / 2 : numero;
            else if (IgualSemCaixa(propriedade.nome, "DECIMALS"))
                campo.escala = numero;
            else if (IgualSemCaixa(propriedade.nome, "SUBTYPE"))
                campo.subtipo = TextoDeBytes(propriedade.Texto());
        }
        campo.tipo = DadoDoCampo(*coluna.tipo, campo.subtipo);
        if (campo.tipo == TTipoDado::Memo) coluna.codigo = MemoUnicode(campo.subtipo) ? TCodigo::Utf16 : TCodigo::Ansi;
    }

    void LePropriedades() {
        for (int i = cursor_.U16(); i > 0; --i) {
            const char* onde = cursor_.Onde();
            const auto propriedade = LePropriedade(cursor_);
            if (IgualSemCaixa(propriedade.nome, "DATASET_DELTA"))
                throw TErroTrecho{onde, "é uma lista de alterações (DATASET_DELTA), não uma tabela"};
            if (IgualSemCaixa(propriedade.nome, "CHANGE_LOG")) historico_.Carrega(propriedade);
            if (todas_ && ParametroConhecido(propriedade.nome)) GuardaParametro(propriedade);
        }
        if ((cursor_.Posicao() & 0xFFFF) != inicioDasLinhas_)
            throw TErroTrecho{cursor_.Onde(), "as linhas não começam onde o cabeçalho diz"};
    }

    void GuardaParametro(const TPropriedade& propriedade) {
        TParametroPacote parametro{Maiusculas(propriedade.nome), {}};
        for (std::size_t i = 0; i < propriedade.Elementos(); ++i)
            parametro.numeros.push_back(NumeroDoParametro(propriedade, i));
        orcamento_.Gasta(parametro.numeros.size() * sizeof(std::int64_t), cursor_.Onde());
        if (ParametroInteiro(parametro)) pacote_.parametros.push_back(std::move(parametro));
    }

    /// A list is of numbers without sign, what stands alone has one.
    static std::int64_t NumeroDoParametro(const TPropriedade& propriedade, std::size_t i) {
        const auto numero = propriedade.Numero(i);
        return propriedade.matriz || propriedade.tamanho != 4 ? static_cast<std::int64_t>(numero)
                                                              : static_cast<std::int32_t>(numero);
    }

    void LeLinhas() {
        const std::size_t menorLinha = 1 + (std::size_t{numCampos_} + 3) / 4;
        if (numLinhas_ > cursor_.Resta() / menorLinha)
            throw TErroTrecho{cursor_.Onde(),
                              "o cabeçalho diz " + std::to_string(numLinhas_) + " linhas, o arquivo não as contém"};
        pacote_.linhas.reserve(numLinhas_);
        for (std::uint32_t i = 0; i < numLinhas_; ++i) LeLinha(i);
        campoAtual_ = kNenhum;
        if (cursor_.Resta() != 0)
            throw TErroTrecho{cursor_.Onde(),
                              "há " + std::to_string(cursor_.Resta()) + " bytes depois da última linha"};
        historico_.Completa(pacote_.linhas, orcamento_, cursor_.Onde());
        if (!todas_) DeixaAsVisiveis();
    }

    void DeixaAsVisiveis() {
        std::size_t ficam = 0;
        for (std::size_t i = 0; i < pacote_.linhas.size(); ++i)
            if (LinhaVisivel(pacote_.estados[i]) && ficam++ != i)
                pacote_.linhas[ficam - 1] = std::move(pacote_.linhas[i]);
        pacote_.linhas.resize(ficam);
        pacote_.estados = {};
    }

    void LeLinha(std::uint32_t numero) {
        orcamento_.Gasta(sizeof(TLinha) + numCampos_ * sizeof(TValor), cursor_.Onde());
        pacote_.estados.push_back(cursor_.U8());
        const auto estados = cursor_.Bytes((std::size_t{numCampos_} + 3) / 4);
        const bool temAnterior = historico_.TemAnterior(numero);
        TLinha linha;
        linha.reserve(numCampos_);
        for (std::uint16_t i = 0; i < numCampos_; ++i) {
            const int estado = (static_cast<unsigned char>(estados[i / 4]) >> (2 * (i % 4))) & 3;
            campoAtual_ = i;
            if (estado == 0)
                linha.emplace_back(TFeito{[&] { return LeValor(i); }});
            else
                linha.emplace_back();
            if (estado == 2 && temAnterior) historico_.Pendente(numero, i);
        }
        pacote_.linhas.push_back(std::move(linha));
    }

    TValor LeValor(std::uint16_t campo) {
        const auto& coluna = colunas_[campo];
        const auto bytes = cursor_.Bytes(coluna.variavel ? cursor_.Numero(coluna.tamanho) : coluna.tamanho);
        if (coluna.tipo->formato != TFormato::Blob) return ValorDeBytes(*coluna.tipo, bytes);
        return ValorDeBlob(fonte_, bytes, coluna.codigo, campo, pacote_.campos[campo].tipo);
    }

    std::shared_ptr<const TFontePacote> fonte_;
    std::vector<std::string>& nomes_;  // of the source
    TCursorBinario cursor_;
    TOrcamento orcamento_;
    const bool todas_;
    THistoricoBinario historico_;
    std::uint16_t numCampos_ = 0;
    std::uint32_t numLinhas_ = 0;
    std::uint16_t inicioDasLinhas_ = 0;
    std::vector<TColunaBinaria> colunas_;
    TDataPacket pacote_;
    std::size_t campoAtual_ = kNenhum;
};

}  // namespace

TDataPacket LeBinario(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas) {
    return TLeitorBinario(fonte, linhas).Le();
}

}  // namespace wkd
