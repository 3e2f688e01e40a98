#include "report/Historico.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>

#include "package/Caminho.h"
#include "process/EscritaSegura.h"
#include "process/Programa.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::ordered_json;

/// Of the program's folder, whoever may write there may write in it.
fs::path Pasta(const fs::path& pastaPrograma) { return pastaPrograma / "AtualizaWKD.historico"; }

/// What a file name can hold of an alias.
std::string NomeDeArquivo(std::string_view alias) {
    std::string nome = Maiusculas(Apara(alias));
    for (char& c : nome)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-') c = '_';
    return nome;
}

constexpr std::size_t kAntesDoAlias = std::string_view("aaaa-mm-dd_hhmmss_").size();

/// Path of a new report without its extension; its name sorts by its time.
fs::path NovoNome(const fs::path& pasta, const TEvidencia& evidencia) {
    const std::string inicio = FormataDataHora(evidencia.inicio, "yyyy-mm-dd") + "_" +
                               Troca(FormataDataHora(evidencia.inicio, "hh:mm:ss"), ":", "") + "_" +
                               NomeDeArquivo(evidencia.alias);
    fs::path nome = pasta / inicio;
    for (int vez = 2; fs::exists(nome.string() + ".json"); ++vez) nome = pasta / (inicio + "~" + std::to_string(vez));
    return nome;
}

/// What stands of the alias in such a name.
std::string AliasDoNome(const fs::path& relatorio) {
    const std::string nome = relatorio.stem().string();
    return nome.size() < kAntesDoAlias ? "" : nome.substr(kAntesDoAlias, nome.find('~') - kAntesDoAlias);
}

/// When it began, as such a name tells it.
std::string InicioDoNome(const fs::path& relatorio) {
    const std::string nome = relatorio.stem().string();
    return nome.substr(0, 10) + "T" + nome.substr(11, 2) + ":" + nome.substr(13, 2) + ":" + nome.substr(15, 2);
}

/// The JSON reports, oldest first.
std::vector<fs::path> Relatorios(const fs::path& pasta) {
    std::vector<fs::path> relatorios;
    std::error_code semPasta;  // nothing was kept yet
    for (const auto& entrada : fs::directory_iterator(pasta, semPasta))
        if (entrada.path().extension() == ".json") relatorios.push_back(entrada.path());
    std::ranges::sort(relatorios);
    return relatorios;
}

std::int64_t Segundos(std::string_view inicio, std::string_view fim) {
    const auto de = LeDataHora(inicio), ate = LeDataHora(fim);
    if (!de || !ate) return 0;
    return std::int64_t{ate->data.dias - de->data.dias} * 86'400 +
           (ate->hora.tiques - de->hora.tiques) / kTiquesPorSegundo;
}

std::optional<TExecucaoGuardada> Le(const fs::path& arquivo) {
    try {
        const auto json = TJson::parse(LeArquivoInteiro(arquivo));
        const auto texto = [&](const char* campo) { return json.at(campo).get<std::string>(); };
        TExecucaoGuardada execucao{
            texto("alias"), texto("pacote"), texto("veredicto"), texto("inicio"), texto("fim"), 0, arquivo};
        execucao.segundos = Segundos(execucao.inicio, execucao.fim);
        return execucao;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// Newest first: all, or those that may be of the alias, by their names.
std::vector<fs::path> RelatoriosDe(const fs::path& pasta, std::string_view alias) {
    auto relatorios = Relatorios(pasta);
    std::ranges::reverse(relatorios);
    const std::string nome = NomeDeArquivo(alias);
    if (!alias.empty()) std::erase_if(relatorios, [&](const fs::path& um) { return AliasDoNome(um) != nome; });
    return relatorios;
}

std::string NomeDoPacote(const TExecucaoGuardada& execucao) {
    return TextoDoCaminho(CaminhoDoTexto(execucao.pacote).filename());
}

bool Do(const TExecucaoGuardada& execucao, std::string_view alias) {
    return alias.empty() || IgualSemCaixa(Apara(execucao.alias), Apara(alias));
}

}  // namespace

void GuardaNoHistorico(const TEvidencia& evidencia, std::string_view json, std::string_view html,
                       const fs::path& pastaPrograma) {
    const fs::path pasta = Pasta(pastaPrograma);
    if (EhLink(pasta))
        throw std::system_error(std::make_error_code(std::errc::too_many_symbolic_link_levels), TextoDoCaminho(pasta));
    if (!fs::exists(pasta)) CriaPastaComo(pasta, pastaPrograma);
    const fs::path nome = NovoNome(pasta, evidencia);
    SubstituiArquivo(nome.string() + ".html", html, TLeitores::GrupoDaPasta);
    SubstituiArquivo(nome.string() + ".json", json, TLeitores::GrupoDaPasta);
    const auto relatorios = Relatorios(pasta);
    for (std::size_t i = 0; i + kExecucoesGuardadas < relatorios.size(); ++i) {
        std::error_code ficaParaAProxima;
        fs::remove(fs::path(relatorios[i]).replace_extension(".html"), ficaParaAProxima);
        fs::remove(relatorios[i], ficaParaAProxima);
    }
}

std::vector<TExecucaoGuardada> Historico(const fs::path& pastaPrograma, std::string_view alias) {
    std::vector<TExecucaoGuardada> execucoes;
    for (const auto& relatorio : RelatoriosDe(Pasta(pastaPrograma), alias))
        if (const auto execucao = Le(relatorio); execucao && Do(*execucao, alias)) execucoes.push_back(*execucao);
    return execucoes;
}

std::optional<TExecucaoGuardada> UltimaExecucao(const fs::path& pastaPrograma, std::string_view alias) {
    for (const auto& relatorio : RelatoriosDe(Pasta(pastaPrograma), alias)) {
        const auto execucao = Le(relatorio);
        if (!execucao)
            return TExecucaoGuardada{.alias = std::string(alias),
                                     .veredicto = "o relatório guardado não pode ser lido",
                                     .inicio = InicioDoNome(relatorio),
                                     .relatorio = relatorio};
        if (Do(*execucao, alias)) return execucao;
    }
    return std::nullopt;
}

std::string UltimaEmTexto(const std::optional<TExecucaoGuardada>& ultima) {
    if (!ultima) return "nenhuma registrada";
    const auto inicio = LeDataHora(ultima->inicio);
    std::vector<std::string> partes = {inicio ? FormataDataHora(*inicio, "dd/mm/yyyy hh:mm") : ultima->inicio};
    if (!ultima->pacote.empty()) partes.push_back(NomeDoPacote(*ultima));
    partes.push_back(ultima->veredicto);
    return Junta(partes, ", ");
}

std::string HistoricoEmTexto(const std::vector<TExecucaoGuardada>& execucoes) {
    if (execucoes.empty()) return "Nenhuma atualização registrada.\n";
    std::string texto;
    for (const auto& execucao : execucoes) {
        const auto inicio = LeDataHora(execucao.inicio);
        texto += (inicio ? FormataDataHora(*inicio, "dd/mm/yyyy hh:mm:ss") : execucao.inicio) + "  " +
                 FormataDuracao(std::chrono::seconds(execucao.segundos)) + "  " + execucao.alias + "  " +
                 NomeDoPacote(execucao) + "  " + execucao.veredicto + "\n";
    }
    return texto;
}

std::string HistoricoEmJson(const std::vector<TExecucaoGuardada>& execucoes) {
    TJson json = {
        {"formato", kFormatoJson}, {"programa", "AtualizaWKD " + std::string(kVersao)}, {"execucoes", TJson::array()}};
    for (const auto& execucao : execucoes)
        json["execucoes"].push_back({{"alias", execucao.alias},
                                     {"inicio", execucao.inicio},
                                     {"fim", execucao.fim},
                                     {"segundos", execucao.segundos},
                                     {"pacote", execucao.pacote},
                                     {"veredicto", execucao.veredicto},
                                     {"relatorio", TextoDoCaminho(execucao.relatorio)}});
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace wkd
