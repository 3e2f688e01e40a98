#include <nlohmann/json.hpp>
#include <ostream>
#include <streambuf>
#include <unordered_set>

#include "Caminho.h"
#include "EscritoresPacote.h"
#include "Json.h"
#include "PacoteJson.h"
#include "Texto.h"

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

void GravaJson(const TDataPacket& pacote, const std::filesystem::path& arquivo) {
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
    saida.Conclui();
}

}  // namespace wkd
