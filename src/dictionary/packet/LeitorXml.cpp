#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "packet/DataPacket.h"
#include "packet/FormaXml.h"
#include "packet/LeitoresPacote.h"
#include "packet/ValoresDoPacote.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Code of the attribute values of a file.
TCodigo CodigoDoArquivo(const TFontePacote& fonte) {
    if (fonte.MarcaUtf8()) return TCodigo::XmlUtf8;
    const auto declarada = CodificacaoDeclarada(fonte.Bytes());
    if (declarada.empty()) return Utf8Valido(fonte.Bytes()) ? TCodigo::XmlConferido : TCodigo::Xml1252;
    for (const auto utf8 : {"UTF-8", "UTF8", "US-ASCII"})
        if (IgualSemCaixa(declarada, utf8)) return TCodigo::XmlUtf8;
    for (const auto cp1252 : {"WINDOWS-1252", "CP1252", "ISO-8859-1", "LATIN1", "ISO8859-1"})
        if (IgualSemCaixa(declarada, cp1252)) return TCodigo::Xml1252;
    throw TErroTrecho{declarada.data(), "a codificação '" + TextoDeBytes(declarada.substr(0, 40)) + "' não é aceita"};
}

/// Number of a WIDTH or DECIMALS; 0 when it is none.
int NumeroDe(std::string_view texto) {
    int numero = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    return std::clamp(numero, 0, kMaiorNumeroDoCampo);
}

class TLeitorXml {
  public:
    TLeitorXml(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas)
        : fonte_(fonte),
          nomes_(fonte->nomesDosCampos),
          fichas_(fonte->Bytes()),
          orcamento_(fonte->Bytes().size()),
          todas_(linhas == TLinhasDoPacote::Todas) {}

    TDataPacket Le() {
        try {
            codigo_ = CodigoDoArquivo(*fonte_);
            if (!Proxima() || fichas_.Fecha() || !Nome("DATAPACKET"))
                throw TErroTrecho{fonte_->Bytes().data(), "não é um pacote de dados"};
            while (!acabou_ && Proxima()) Ficha();
            if (!acabou_) throw TErroTrecho{fichas_.Onde(), "o arquivo termina antes de </DATAPACKET>"};
            fichas_.Termina();
            if (pacote_.campos.empty()) throw TErroTrecho{fichas_.Onde(), "o pacote não tem campos"};
            return std::move(pacote_);
        } catch (const TErroTrecho& erro) {
            fonte_->Recusa(erro, campoAtual_);
        }
    }

  private:
    bool Nome(std::string_view nome) const { return IgualSemCaixa(fichas_.Nome(), nome); }

    bool Proxima() {
        campoAtual_ = {};
        return fichas_.Proxima();
    }

    void Ficha() {
        if (nasLinhas_ && Nome("ROW") && !fichas_.Fecha()) {
            LeLinha();
        } else if (Nome("ROWDATA")) {
            nasLinhas_ = !fichas_.Fecha();
            camposLidos_ = true;
        } else if (fichas_.Fecha()) {
            acabou_ = Nome("DATAPACKET");
        } else if (Nome("FIELD")) {
            LeCampo();
        } else if (Nome("PARAMS") || Nome("PARAM")) {
            LeParametros();
        }
    }

    std::string Texto(std::string_view bruto) const { return Decodifica(codigo_, bruto); }

    void LeCampo() {
        TCampoPacote campo;
        std::string_view nome, valor, nomeNaLinha, tipo, largura;
        const char* onde = fichas_.Onde();
        const auto sim = [&] { return IgualSemCaixa(valor, "true"); };
        while (fichas_.Atributo(nome, valor)) {
            if (IgualSemCaixa(nome, "attrname")) nomeNaLinha = valor;
            if (IgualSemCaixa(nome, "fieldname")) campo.nome = Texto(valor);
            if (IgualSemCaixa(nome, "fieldtype")) tipo = valor;
            if (IgualSemCaixa(nome, "SUBTYPE")) campo.subtipo = Texto(valor).c_str();  // a zero ends it, as in binary
            if (IgualSemCaixa(nome, "WIDTH")) largura = valor;
            if (IgualSemCaixa(nome, "DECIMALS")) campo.escala = NumeroDe(valor);
            if (IgualSemCaixa(nome, "readonly")) campo.somenteLeitura = sim();
            if (IgualSemCaixa(nome, "required")) campo.requerido = sim();
            if (IgualSemCaixa(nome, "hidden")) campo.oculto = sim();
            if (IgualSemCaixa(nome, "linkfield")) campo.ligacao = sim();
        }
        if (campo.nome.empty()) campo.nome = Texto(nomeNaLinha);
        campoAtual_ = campo.nome;
        if (camposLidos_) throw TErroTrecho{onde, "campo descrito depois das linhas"};
        if (nomeNaLinha.empty()) throw TErroTrecho{onde, "campo sem attrname"};
        Define(campo, tipo, NumeroDe(largura), onde);
        posicoes_.try_emplace(Maiusculas(nomeNaLinha), pacote_.campos.size());
        nomesNaLinha_.push_back(nomeNaLinha);
        iniciosNaLinha_.push_back(TFichasXml::Inicio(nomeNaLinha));
        nomes_.push_back(campo.nome);
        pacote_.campos.push_back(std::move(campo));
    }

    void Define(TCampoPacote& campo, std::string_view fieldtype, int largura, const char* onde) {
        TColunaXml coluna;
        coluna.tipo = TipoPorXml(fieldtype);
        if (!coluna.tipo)
            throw TErroTrecho{onde, "o tipo de campo '" + TextoDeBytes(fieldtype.substr(0, 40)) + "' não é aceito"};
        coluna.dado = campo.tipo = DadoDoCampo(*coluna.tipo, campo.subtipo);
        const bool binario = coluna.tipo->formato == TFormato::Blob && campo.tipo != TTipoDado::Memo;
        coluna.codigo = binario ? TCodigo::Base64 : codigo_;
        campo.tipoXml = coluna.tipo->xml;
        if (campo.tipo == TTipoDado::Texto || campo.tipo == TTipoDado::Decimal)
            campo.tamanho = coluna.tipo->formato == TFormato::TextoUnicode ? largura / 2 : largura;
        colunas_.push_back(coluna);
    }

    void LeParametros() {
        std::string_view nome, valor;
        while (fichas_.Atributo(nome, valor)) {
            if (IgualSemCaixa(nome, "DATASET_DELTA") || IgualSemCaixa(valor, "DATASET_DELTA"))
                throw TErroTrecho{valor.data(), "é uma lista de alterações (DATASET_DELTA), não uma tabela"};
            if (todas_ && ParametroConhecido(nome)) GuardaParametro(nome, valor);
        }
    }

    /// One that is not all numbers, or not such as a packet holds, is passed over.
    void GuardaParametro(std::string_view nome, std::string_view valor) {
        TParametroPacote parametro{Maiusculas(nome), {}};
        while (!(valor = Apara(valor)).empty()) {
            std::int64_t numero = 0;
            const auto lido = std::from_chars(valor.data(), valor.data() + valor.size(), numero);
            if (lido.ec != std::errc()) return;
            parametro.numeros.push_back(numero);
            valor.remove_prefix(static_cast<std::size_t>(lido.ptr - valor.data()));
        }
        if (ParametroInteiro(parametro)) pacote_.parametros.push_back(std::move(parametro));
    }

    /// Position of the field with that name in rows; the number of fields when there is none. Attributes mostly
    /// come in field order, so the next few fields are tried first.
    std::size_t PosicaoDe(std::string_view nome, std::size_t esperada) const {
        constexpr std::size_t kProximos = 16;
        const std::size_t fim = std::min(nomesNaLinha_.size(), esperada + kProximos);
        for (std::size_t i = esperada; i < fim; ++i)
            if (nomesNaLinha_[i] == nome) return i;
        const auto achada = posicoes_.find(Maiusculas(nome));
        return achada == posicoes_.end() ? pacote_.campos.size() : achada->second;
    }

    void LeLinha() {
        const char* onde = fichas_.Onde();
        std::string_view nome, valor;
        unsigned status = 0;
        atribuidos_.clear();
        for (std::size_t esperada = 0;;) {
            while (esperada < iniciosNaLinha_.size() && fichas_.Segue(iniciosNaLinha_[esperada], valor))
                atribuidos_.emplace_back(esperada++, valor);
            if (!fichas_.Atributo(nome, valor)) break;
            const auto posicao = PosicaoDe(nome, esperada);
            if (posicao < pacote_.campos.size()) {
                atribuidos_.emplace_back(posicao, valor);
                esperada = posicao + 1;
            } else if (IgualSemCaixa(nome, "RowState")) {
                status = StatusDe(valor);
            }
        }
        if (!todas_ && !LinhaVisivel(status)) return;
        if (pacote_.linhas.empty()) PreveLinhas(onde);
        MontaLinha(onde);
        if (todas_) pacote_.estados.push_back(static_cast<std::uint8_t>(status));
    }

    /// As many as follow if all are as long as the one that began there.
    void PreveLinhas(const char* onde) {
        constexpr std::string_view kAbre = "<ROW";
        const auto resto = fonte_->Bytes().substr(static_cast<std::size_t>(onde - fonte_->Bytes().data()));
        pacote_.linhas.reserve(resto.size() / (kAbre.size() + static_cast<std::size_t>(fichas_.Onde() - onde)) + 1);
    }

    unsigned StatusDe(std::string_view texto) const {
        unsigned status = 0;
        const auto lido = std::from_chars(texto.data(), texto.data() + texto.size(), status);
        if (lido.ec != std::errc() || lido.ptr != texto.data() + texto.size())
            throw TErroTrecho{texto.data(), "RowState não é um número"};
        return status;
    }

    void MontaLinha(const char* onde) {
        const auto campos = pacote_.campos.size();
        orcamento_.Gasta(sizeof(TLinha) + campos * sizeof(TValor), onde);
        TLinha linha;
        linha.reserve(campos);
        for (const auto& atribuido : atribuidos_) {
            const std::size_t posicao = atribuido.first;
            const auto feito = TFeito{[&] { return Valor(posicao, atribuido.second); }};
            if (posicao >= linha.size()) linha.resize(posicao);
            if (posicao == linha.size())
                linha.emplace_back(feito);
            else
                linha[posicao] = feito;
        }
        linha.resize(campos);
        pacote_.linhas.push_back(std::move(linha));
    }

    TValor Valor(std::size_t posicao, std::string_view bruto) try {
        return ValorDeXml(fonte_, colunas_[posicao], bruto, posicao);
    } catch (const TErroTrecho&) {
        campoAtual_ = nomes_[posicao];
        throw;
    }

    std::shared_ptr<const TFontePacote> fonte_;
    std::vector<std::string>& nomes_;  // of the source
    TFichasXml fichas_;
    TOrcamento orcamento_;
    const bool todas_;
    TCodigo codigo_ = TCodigo::XmlUtf8;
    std::vector<TColunaXml> colunas_;
    std::vector<std::string_view> nomesNaLinha_;
    std::vector<std::string> iniciosNaLinha_;  // of their attributes
    std::unordered_map<std::string, std::size_t> posicoes_;
    std::vector<std::pair<std::size_t, std::string_view>> atribuidos_;
    TDataPacket pacote_;
    std::string campoAtual_;
    bool nasLinhas_ = false;
    bool camposLidos_ = false;
    bool acabou_ = false;
};

}  // namespace

TDataPacket LeXml(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas) {
    return TLeitorXml(fonte, linhas).Le();
}

}  // namespace wkd
