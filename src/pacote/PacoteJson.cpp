
#include <charconv>
#include <nlohmann/json.hpp>
#include <ostream>
#include <streambuf>
#include <unordered_map>
#include <unordered_set>

#include "LinhaJson.h"
#include "PacoteJson.h"
#include "package/Caminho.h"
#include "packet/DataPacket.h"
#include "packet/EscritoresPacote.h"
#include "packet/FontePacote.h"
#include "values/Json.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Stream into a packet file.
class TFluxoDaSaida : public std::streambuf {
  public:
    explicit TFluxoDaSaida(TSaidaPacote& saida) : saida_(saida) {}

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize quantos) override {
        saida_ << std::string_view(bytes, static_cast<std::size_t>(quantos));
        return quantos;
    }
    int_type overflow(int_type byte) override {
        const char c = traits_type::to_char_type(byte);
        saida_ << std::string_view(&c, 1);
        return byte;
    }

  private:
    TSaidaPacote& saida_;
};

nlohmann::ordered_json Campo(const TCampoPacote& campo, const std::string& chave) {
    nlohmann::ordered_json json;
    json["nome"] = campo.nome;
    if (chave != campo.nome) json["chave"] = chave;
    json["tipo"] = campo.tipo == TTipoDado::Bytes ? std::string(kTipoBytes) : campo.tipoXml;
    if (!campo.subtipo.empty()) json["subtipo"] = campo.subtipo;
    if (campo.tamanho > 0) json["tamanho"] = campo.tamanho;
    if (campo.escala > 0) json["escala"] = campo.escala;
    if (campo.requerido) json["requerido"] = true;
    if (campo.somenteLeitura) json["somenteLeitura"] = true;
    if (campo.oculto) json["oculto"] = true;
    if (campo.ligacao) json["ligacao"] = true;
    return json;
}

std::string Cabecalho(const std::vector<TCampoPacote>& campos, const std::vector<std::string>& chaves,
                      const TDataPacket& pacote) {
    nlohmann::ordered_json json;
    json["campos"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < campos.size(); ++i) json["campos"].push_back(Campo(campos[i], chaves[i]));
    for (const auto& parametro : pacote.parametros) json["parametros"][parametro.nome] = parametro.numeros;
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void GravaLinha(std::ostream& fluxo, const std::vector<std::string>& chaves, const TLinha& linha, unsigned estado) {
    const char* antes = "{";
    const auto chave = [&](std::string_view nome) {
        fluxo << antes;
        EscreveJson(fluxo, nome);
        fluxo << ':';
        antes = ",";
    };
    if (estado != 0) {
        chave(kChaveDoEstado);
        fluxo << estado;
    }
    for (std::size_t i = 0; i < linha.size(); ++i)
        if (!linha[i].Nulo()) {
            chave(chaves[i]);
            EscreveJson(fluxo, linha[i]);
        }
    fluxo << (*antes == '{' ? "{}\n" : "}\n");
}

}  // namespace

bool NomeDeJson(const std::filesystem::path& arquivo) {
    return IgualSemCaixa(TextoDoCaminho(arquivo.extension()), ".jsonl");
}

std::vector<std::string> ChavesDosCampos(const std::vector<TCampoPacote>& campos) {
    std::vector<std::string> chaves;
    std::unordered_set<std::string> usadas = {std::string(kChaveDoEstado)};
    for (const auto& campo : campos) {
        auto chave = campo.nome;
        while (!usadas.insert(chave).second) chave = campo.nome + "_" + std::to_string(usadas.size());
        chaves.push_back(std::move(chave));
    }
    return chaves;
}

void GravaJson(TDataPacket pacote, const std::filesystem::path& arquivo) {
    std::vector<TCampoPacote> campos;
    for (const auto& campo : pacote.campos) campos.push_back(campo.tipoXml.empty() ? CampoDePacote(campo) : campo);
    const auto chaves = ChavesDosCampos(campos);
    TSaidaPacote saida(arquivo);
    TFluxoDaSaida bytes(saida);
    std::ostream fluxo(&bytes);
    fluxo.exceptions(std::ios::badbit);  // an error of the file comes through as it is
    fluxo << Cabecalho(campos, chaves, pacote) << '\n';
    for (std::size_t i = 0; i < pacote.linhas.size(); ++i)
        GravaLinha(fluxo, chaves, pacote.linhas[i], EstadoDaLinha(pacote, i));
    saida.Conclui(std::move(pacote));
}

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
