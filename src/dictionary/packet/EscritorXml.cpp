#include <cctype>
#include <charconv>
#include <stdexcept>
#include <unordered_set>

#include "packet/Codigos.h"
#include "packet/EscritoresPacote.h"
#include "packet/ValoresDoPacote.h"
#include "values/Base64.h"
#include "values/Texto.h"

namespace wkd {
namespace {

/// Attribute value: the five entities, and control characters as zero-padded references.
std::string Escapa(std::string_view texto) {
    std::string saida;
    saida.reserve(texto.size());
    for (const char c : texto) {
        const auto codigo = static_cast<unsigned char>(c);
        if (c == '&')
            saida += "&amp;";
        else if (c == '<')
            saida += "&lt;";
        else if (c == '>')
            saida += "&gt;";
        else if (c == '"')
            saida += "&quot;";
        else if (c == '\'')
            saida += "&apos;";
        else if (codigo < 0x20 || codigo == 0x7F)
            saida += "&#" + std::string(codigo < 10 ? "00" : codigo < 100 ? "0" : "") + std::to_string(codigo) + ";";
        else
            saida += c;
    }
    return saida;
}

bool LetraAscii(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

/// Names that may stand as attributes of ROW, one for each field and no two alike.
std::vector<std::string> NomesNaLinha(const std::vector<TCampoPacote>& campos) {
    std::vector<std::string> nomes;
    std::unordered_set<std::string> usados = {"ROWSTATE"};
    for (const auto& campo : campos) {
        std::string nome = campo.nome;
        for (char& c : nome)
            if (!LetraAscii(c) && !(c >= '0' && c <= '9') && c != '.' && c != '-') c = '_';
        if (nome.empty() || !LetraAscii(nome.front())) nome.insert(0, "_");
        for (const auto base = nome; !usados.insert(Maiusculas(nome)).second;)
            nome = base + "_" + std::to_string(nomes.size());
        nomes.push_back(std::move(nome));
    }
    return nomes;
}

std::string TextoDouble(double valor, bool simples) {
    char texto[64];
    const auto fim = simples ? std::to_chars(texto, texto + sizeof texto, static_cast<float>(valor)).ptr
                             : std::to_chars(texto, texto + sizeof texto, valor).ptr;
    return std::string(texto, fim);
}

std::string TextoDecimal(const TValor& valor) {
    const auto numero = DigitosDeTexto(valor.ComoTexto());
    if (!numero) throw std::range_error("'" + valor.ComoTexto() + "' não é um decimal");
    return numero->Texto();
}

std::string TextoInteiro(const TValor& valor, const TTipoPacote& tipo) {
    const auto numero = InteiroParaGravar(valor, tipo);
    return tipo.formato == TFormato::SemSinal ? std::to_string(numero)
                                              : std::to_string(static_cast<std::int64_t>(numero));
}

std::string TextoDoValor(const TValor& valor, const TTipoPacote& tipo) {
    switch (tipo.formato) {
        case TFormato::Inteiro:
        case TFormato::SemSinal:
            return TextoInteiro(valor, tipo);
        case TFormato::Logico:
            return valor.Como<bool>(TTipoDado::Logico) ? "TRUE" : "FALSE";
        case TFormato::Flutuante:
            return TextoDouble(valor.ComoDouble(), tipo.tamanho == 4);
        case TFormato::Bcd:
            return TextoDecimal(valor);
        case TFormato::Data:
            return DataParaXml(valor.Como<TData>(TTipoDado::Data));
        case TFormato::Hora:
            return HoraParaXml(valor.Como<THora>(TTipoDado::Hora));
        case TFormato::DataHora:
        case TFormato::DataHoraSql:
            return DataHoraParaXml(valor.Como<TDataHora>(TTipoDado::DataHora));
        default:
            return Escapa(valor.ComoTexto());
    }
}

class TEscritorXml {
  public:
    TEscritorXml(const std::vector<TCampoPacote>& campos, TSaidaPacote& saida)
        : campos_(campos), nomes_(NomesNaLinha(campos)), saida_(saida) {
        for (const auto& campo : campos) tipos_.push_back(&TipoParaGravar(campo, saida));
    }

    void Grava(const TDataPacket& pacote) {
        saida_ << R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>  <DATAPACKET Version="2.0">)"
               << "<METADATA><FIELDS>";
        for (std::size_t i = 0; i < campos_.size(); ++i) GravaCampo(i);
        saida_ << "</FIELDS><PARAMS";
        for (const auto& parametro : pacote.parametros) GravaParametro(parametro);
        saida_ << "/></METADATA><ROWDATA>";
        for (const auto& linha : pacote.linhas) GravaLinha(linha, EstadoDaLinha(pacote, linha_));
        saida_ << "</ROWDATA></DATAPACKET>";
    }

  private:
    void Atributo(std::string_view nome, std::string_view valor) { saida_ << " " << nome << "=\"" << valor << "\""; }

    void GravaCampo(std::size_t posicao) {
        const auto& campo = campos_[posicao];
        const auto& tipo = *tipos_[posicao];
        saida_ << "<FIELD";
        Atributo("attrname", nomes_[posicao]);
        if (nomes_[posicao] != campo.nome) Atributo("fieldname", Escapa(campo.nome));
        Atributo("fieldtype", tipo.xml);
        if (campo.somenteLeitura) Atributo("readonly", "true");
        if (campo.oculto) Atributo("hidden", "true");
        if (campo.requerido) Atributo("required", "true");
        if (campo.ligacao) Atributo("linkfield", "true");
        if (!campo.subtipo.empty()) Atributo("SUBTYPE", Escapa(campo.subtipo));
        const int largura = tipo.formato == TFormato::TextoUnicode ? 2 * campo.tamanho : campo.tamanho;
        if (largura > 0) Atributo("WIDTH", std::to_string(largura));
        if (campo.escala > 0) Atributo("DECIMALS", std::to_string(campo.escala));
        saida_ << "/>";
    }

    void GravaParametro(const TParametroPacote& parametro) {
        std::vector<std::string> numeros;
        for (const auto numero : parametro.numeros) numeros.push_back(std::to_string(numero));
        Atributo(parametro.nome, Junta(numeros, " "));
    }

    void GravaLinha(const TLinha& linha, std::uint8_t estado) {
        ++linha_;
        saida_ << "<ROW";
        if (estado != 0) Atributo("RowState", std::to_string(estado));
        for (std::size_t i = 0; i < campos_.size(); ++i)
            if (!linha.at(i).Nulo()) GravaValor(linha[i], i);
        saida_ << "/>";
    }

    void GravaValor(const TValor& valor, std::size_t posicao) {
        const auto& tipo = *tipos_[posicao];
        saida_ << " " << nomes_[posicao] << "=\"";
        try {
            const bool blob = tipo.formato == TFormato::Blob || tipo.formato == TFormato::Bytes;
            if (blob && DadoDoCampo(tipo, campos_[posicao].subtipo) != TTipoDado::Memo)
                GravaBlob(valor);
            else
                saida_ << TextoDoValor(valor, tipo);
        } catch (const TErroPacote&) {
            throw;
        } catch (const std::runtime_error& erro) {
            saida_.Recusa(linha_, campos_[posicao], erro.what());
        }
        saida_ << "\"";
    }

    void GravaBlob(const TValor& valor) {
        if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>())
            ParaBase64(**conteudo, [this](std::string_view texto) { saida_ << texto; });
        else
            saida_ << ParaBase64(valor.ComoBytes());
    }

    const std::vector<TCampoPacote>& campos_;
    std::vector<std::string> nomes_;
    std::vector<const TTipoPacote*> tipos_;
    TSaidaPacote& saida_;
    std::size_t linha_ = 0;
};

}  // namespace

void GravaXml(const std::vector<TCampoPacote>& campos, const TDataPacket& pacote, TSaidaPacote& saida) {
    TEscritorXml(campos, saida).Grava(pacote);
}

}  // namespace wkd
