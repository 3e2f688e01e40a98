#include "RelatosSemValores.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "values/Texto.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

template <std::size_t N>
bool Uma(const std::array<std::string_view, N>& chaves, std::string_view chave) {
    return std::ranges::find(chaves, chave) != chaves.end();
}

/// Fields whose texts the program makes of a choice of its own, of numbers, of names and places.
constexpr std::array<std::string_view, 22> kComoEstao = {
    "programa",    "alias",  "banco",   "servidor",   "pacote",   "inicio",    "fim",      "quando",
    "hashMetodo",  "hash",   "arquivo", "volta",      "desfecho", "veredicto", "sqlstate", "tipo",
    "providencia", "motivo", "nome",    "naoRodaram", "backup",   "tabelas"};
constexpr std::array<std::string_view, 4> kMascaradas = {"mensagem", "erro", "acao", "tabela"};
constexpr std::array<std::string_view, 3> kComandos = {"comando", "texto", "executado"};
/// Of numbers and truths alone, and the lists.
constexpr std::array<std::string_view, 13> kOutras = {
    "formato",  "concluida", "hashAteRegistros", "passos",         "correcoes",       "erros", "comandos",
    "segundos", "codigo",    "consequencia",     "registrosAntes", "registrosDepois", "copias"};

/// What is told of the database as a whole; none of it comes from a row.
constexpr std::string_view kAvisos = "avisos";

TJson SemValores(const TJson& valor, std::string_view chave, const TMascara& mascara) {
    if (valor.is_array()) {
        TJson lista = TJson::array();
        for (const auto& um : valor) lista.push_back(SemValores(um, chave, mascara));
        return lista;
    }
    if (valor.is_object()) {
        TJson objeto = TJson::object();
        for (const auto& [nome, seu] : valor.items()) {
            if (nome == kAvisos)
                objeto[nome] = seu;
            else if (Uma(kComoEstao, nome) || Uma(kMascaradas, nome) || Uma(kComandos, nome) || Uma(kOutras, nome))
                objeto[nome] = SemValores(seu, nome, mascara);
        }
        return objeto;
    }
    if (!valor.is_string() || Uma(kComoEstao, chave)) return valor;
    const auto texto = valor.get<std::string>();
    return Uma(kComandos, chave) ? mascara.Comando(texto) : mascara.Texto(texto);
}

/// "[22/11/2026 13:15:00] ", as the first line of an entry's message has it: digits and what stands between them.
std::size_t FimDoInstante(std::string_view linha) {
    const auto fim = linha.find(']');
    const bool instante = linha.starts_with('[') && fim != std::string_view::npos && fim <= 30 &&
                          linha.substr(1, fim - 1).find_first_not_of("0123456789/.-: ") == std::string_view::npos;
    return instante ? fim + 1 : 0;
}

void TiraExemplos(TAchados& achados) {
    for (auto& achado : achados) {
        const bool nomes = achado.tipo == "dependentes" || achado.tipo == "gatilhos" || achado.tipo == "propriedades";
        if (!nomes) achado.exemplos.clear();
    }
}

}  // namespace

std::string LogSemValores(std::string_view log, const TMascara& mascara, std::size_t limite) {
    std::string saida;
    bool depoisDaTabela = false;
    for (const auto& comRetorno : Divide(log.substr(0, limite), '\n')) {
        const std::string_view linha = AparaFim(std::string_view(comRetorno).substr(0, comRetorno.find('\r')));
        const std::size_t instante = depoisDaTabela ? FimDoInstante(linha) : 0;
        saida.append(linha.substr(0, instante)).append(mascara.Texto(linha.substr(instante))).append("\n");
        depoisDaTabela = linha.starts_with("Tabela:");
    }
    return saida;
}

std::string RelatorioSemValores(const std::string& json, const TMascara& mascara) {
    return SemValores(TJson::parse(json), "", mascara).dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

TPlano SemExemplos(TPlano plano) {
    TiraExemplos(plano.achados);
    for (auto& tabela : plano.tabelas) TiraExemplos(tabela.achados);
    return plano;
}

void ConheceTabelas(const std::string& json, TMascara& mascara) {
    const TJson relatorio = TJson::parse(json, nullptr, false);
    if (!relatorio.is_object() || !relatorio.contains("tabelas")) return;
    for (const auto& tabela : relatorio["tabelas"]) mascara.Conhece(tabela.at("tabela").get<std::string>());
}

}  // namespace wkd
