#include <charconv>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "FontePacote.h"
#include "LinhaJson.h"
#include "PacoteJson.h"
#include "Texto.h"
#include "TiposPacote.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

class TLeitorJson {
  public:
    explicit TLeitorJson(const std::filesystem::path& arquivo)
        : fonte_(arquivo), resto_(fonte_.Bytes()), orcamento_(resto_.size()) {}

    TDataPacket Le() {
        try {
            LeCabecalho(ProximaLinha());
            while (!resto_.empty())
                if (const auto linha = ProximaLinha(); !Apara(linha).empty()) LeLinha(linha);
            return std::move(pacote_);
        } catch (const TErroTrecho& erro) {
            fonte_.Recusa(erro, campoAtual_);
        }
    }

  private:
    std::string_view ProximaLinha() {
        campoAtual_.clear();
        const auto linha = resto_.substr(0, resto_.find('\n'));
        resto_.remove_prefix(std::min(linha.size() + 1, resto_.size()));
        return linha;
    }

    void LeCabecalho(std::string_view linha) {
        try {
            const auto json = TJson::parse(linha);
            for (const auto& campo : json.at("campos")) LeCampo(campo, linha);
            if (json.contains("parametros"))
                for (const auto& [nome, numeros] : json["parametros"].items()) {
                    if (!ParametroConhecido(nome)) throw TErroTrecho{linha.data(), "parâmetro desconhecido: " + nome};
                    auto& parametro = pacote_.parametros.emplace_back(TParametroPacote{Maiusculas(nome), {}});
                    for (const auto& numero : numeros.get_ref<const TJson::array_t&>())
                        parametro.numeros.push_back(Inteiro(numero, linha));
                }
        } catch (const TJson::exception& erro) {
            throw TErroTrecho{linha.data(), std::string("a descrição dos campos não serve: ") + erro.what()};
        }
        if (pacote_.campos.empty()) throw TErroTrecho{linha.data(), "o pacote não tem campos"};
    }

    /// The conversions of the library take a number too large for the type as it comes.
    static std::int64_t Inteiro(const TJson& json, std::string_view linha) {
        if (!json.is_number_integer()) throw TErroTrecho{linha.data(), json.dump() + " não é um número inteiro"};
        return json.get<std::int64_t>();
    }

    /// Size or scale; 0 when there is none.
    static int Medida(const TJson& campo, const char* nome, std::string_view linha) {
        if (!campo.contains(nome)) return 0;
        return static_cast<int>(std::clamp<std::int64_t>(Inteiro(campo[nome], linha), 0, 0xFFFFFF));
    }

    void LeCampo(const TJson& json, std::string_view linha) {
        TCampoPacote campo;
        campo.nome = campoAtual_ = json.at("nome").get<std::string>();
        const auto fieldtype = json.at("tipo").get<std::string>();
        const bool bytes = fieldtype == kTipoBytes;
        const auto* tipo = TipoPorXml(bytes ? "bin.hex" : fieldtype);
        if (!tipo) throw TErroTrecho{linha.data(), "o tipo de campo '" + fieldtype + "' não é aceito"};
        campo.tipoXml = tipo->xml;
        campo.subtipo = json.value("subtipo", "");
        campo.tipo = bytes ? TTipoDado::Bytes : DadoDoCampo(*tipo, campo.subtipo);
        campo.tamanho = Medida(json, "tamanho", linha);
        campo.escala = Medida(json, "escala", linha);
        campo.requerido = json.value("requerido", false);
        campo.somenteLeitura = json.value("somenteLeitura", false);
        campo.oculto = json.value("oculto", false);
        campo.ligacao = json.value("ligacao", false);
        const bool nova = posicoes_.try_emplace(json.value("chave", campo.nome), pacote_.campos.size()).second;
        if (campo.nome.empty() || !nova) throw TErroTrecho{linha.data(), "campo sem nome, ou com a chave de outro"};
        tipos_.push_back(tipo);
        pacote_.campos.push_back(std::move(campo));
    }

    void LeLinha(std::string_view texto) {
        orcamento_.Gasta(sizeof(TLinha) + pacote_.campos.size() * sizeof(TValor), texto.data());
        TLinha linha(pacote_.campos.size());
        std::uint8_t estado = 0;
        const auto recebe = [&](const std::string& chave, TItemJson&& item) {
            const auto posicao = posicoes_.find(chave);
            campoAtual_ = chave;
            if (posicao == posicoes_.end() && chave == kChaveDoEstado)
                estado = Estado(item, texto);
            else if (posicao == posicoes_.end())
                throw TErroTrecho{texto.data(), "o campo não foi descrito na primeira linha"};
            else
                linha[posicao->second] = ValorDeJson(*tipos_[posicao->second], pacote_.campos[posicao->second].tipo,
                                                     std::move(item), texto.data());
        };
        const auto erro = PercorreLinhaJson(texto, recebe);
        if (!erro.empty()) throw TErroTrecho{texto.data(), erro};
        pacote_.linhas.push_back(std::move(linha));
        pacote_.estados.push_back(estado);
    }

    static std::uint8_t Estado(const TItemJson& item, std::string_view texto) {
        std::uint8_t estado = 0;
        const auto lido = std::from_chars(item.texto.data(), item.texto.data() + item.texto.size(), estado);
        if (item.forma != TItemJson::Numero || lido.ec != std::errc() ||
            lido.ptr != item.texto.data() + item.texto.size())
            throw TErroTrecho{texto.data(), "RowState não é um número de 0 a 255"};
        return estado;
    }

    TFontePacote fonte_;
    std::string_view resto_;
    TOrcamento orcamento_;
    std::unordered_map<std::string, std::size_t> posicoes_;  // by key
    std::vector<const TTipoPacote*> tipos_;                  // of the fields
    TDataPacket pacote_;
    std::string campoAtual_;
};

}  // namespace

TDataPacket LeJson(const std::filesystem::path& arquivo) { return TLeitorJson(arquivo).Le(); }

}  // namespace wkd
