#include "Manifesto.h"

#include <nlohmann/json.hpp>

#include "package/Caminho.h"
#include "process/EscritaSegura.h"
#include "process/Programa.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

TJson EmJson(const TInstantaneo& instantaneo) {
    TJson json = TJson::object();
    for (const auto& [nome, tabela] : instantaneo)
        json[nome] = {{"registros", tabela.registros}, {"hash", tabela.hash}, {"estrutura", tabela.estrutura}};
    return json;
}

TInstantaneo LeInstantaneo(const TJson& json) {
    TInstantaneo instantaneo;
    for (const auto& [nome, tabela] : json.items())
        instantaneo[nome] = {tabela.at("estrutura").get<std::vector<std::string>>(),
                             tabela.at("registros").get<std::int64_t>(), tabela.at("hash").get<std::string>()};
    return instantaneo;
}

TJson EmJson(const std::optional<TVeredito>& prova) {
    if (!prova) return TJson();
    return {{"quando", prova->quando}, {"bom", prova->bom}, {"frase", prova->frase}, {"achados", prova->achados}};
}

std::optional<TVeredito> LeProva(const TJson& json) {
    if (json.is_null()) return std::nullopt;
    return TVeredito{json.at("quando"), json.at("bom"), json.at("frase"), json.at("achados")};
}

TJson EmJson(const TManifesto& manifesto) {
    return {{"formato", kFormatoJson},
            {"arquivo", manifesto.arquivo},
            {"alias", manifesto.alias},
            {"banco", manifesto.banco},
            {"servidor", manifesto.servidor},
            {"quando", manifesto.quando},
            {"programa", manifesto.programa},
            {"tamanho", manifesto.tamanho},
            {"tamanhoDoBanco", manifesto.tamanhoDoBanco},
            {"sha256", manifesto.sha256},
            {"prova", EmJson(manifesto.prova)},
            {"dicionario", manifesto.dicionario},
            {"hashMetodo", kMetodoDoInstantaneo},
            {"tabelas", EmJson(manifesto.antes)},
            {"tabelasMudadasDurante", EmJson(manifesto.depois)}};
}

TManifesto LeManifesto(const TJson& json) {
    if (json.value("formato", kFormatoJson) > kFormatoJson)
        throw TErroDeBackup("é de uma versão mais nova do programa, que o lê");
    TManifesto manifesto;
    const auto texto = [&](const char* chave) { return json.at(chave).get<std::string>(); };
    manifesto.arquivo = texto("arquivo");
    manifesto.alias = texto("alias");
    manifesto.banco = texto("banco");
    manifesto.servidor = texto("servidor");
    manifesto.quando = texto("quando");
    manifesto.programa = texto("programa");
    manifesto.sha256 = texto("sha256");
    json.at("tamanho").get_to(manifesto.tamanho);
    json.at("tamanhoDoBanco").get_to(manifesto.tamanhoDoBanco);
    json.at("dicionario").get_to(manifesto.dicionario);
    manifesto.prova = LeProva(json.at("prova"));
    manifesto.antes = LeInstantaneo(json.at("tabelas"));
    manifesto.depois = LeInstantaneo(json.at("tabelasMudadasDurante"));
    return manifesto;
}

}  // namespace

std::filesystem::path CaminhoDoManifesto(const std::filesystem::path& arquivo) {
    std::filesystem::path caminho = arquivo;
    return caminho += ".json";
}

void GravaManifesto(const TManifesto& manifesto, const std::filesystem::path& arquivo) {
    SubstituiArquivo(CaminhoDoManifesto(arquivo),
                     EmJson(manifesto).dump(1, ' ', false, TJson::error_handler_t::replace) + "\n",
                     TLeitores::GrupoHerdado);
}

std::optional<TManifesto> LeManifesto(const std::filesystem::path& arquivo) {
    const auto caminho = CaminhoDoManifesto(arquivo);
    std::error_code semErro;
    if (!std::filesystem::exists(caminho, semErro)) return std::nullopt;
    try {
        return LeManifesto(TJson::parse(LeArquivoInteiro(caminho, true)));
    } catch (const std::exception& erro) {
        throw TErroDeBackup("O arquivo " + TextoDoCaminho(caminho) + " não pôde ser lido: " + erro.what() +
                            ". Sem ele o backup ainda pode ser restaurado: dê-lhe outro nome e repita.");
    }
}

}  // namespace wkd
