#include "connection/Capacidades.h"

#include <algorithm>
#include <charconv>

namespace wkd {

namespace {

constexpr int kSuposta = 300;

struct TDesde {
    TRecurso recurso;
    int versao;
    std::string_view nome;
};

/// The release notes of each version tell what came with it.
constexpr TDesde kRecursos[] = {
    {TRecurso::MonitorCompleto, 300, "computador e conexões do servidor em MON$ATTACHMENTS"},
    {TRecurso::NotNullPorComando, 300, "ALTER TABLE ... SET NOT NULL"},
    {TRecurso::Identidade, 300, "colunas IDENTITY"},
    {TRecurso::Logico, 300, "tipo BOOLEAN"},
    {TRecurso::TiposDo4, 400, "tipos INT128, DECFLOAT e TIME ZONE"},
    {TRecurso::PalavrasDo4, 400, "palavras reservadas do 4.0"},
    {TRecurso::IdentificadorDe63, 400, "nomes de 63 letras"},
    {TRecurso::PulaBloqueadas, 500, "SKIP LOCKED"},
};

struct TEstruturaDaVersao {
    int versao, estrutura;
};
constexpr TEstruturaDaVersao kEstruturas[] = {{200, 1100}, {201, 1101}, {205, 1102},
                                              {300, 1200}, {400, 1300}, {500, 1301}};

bool Tem(const TDesde& desde, int versao) { return (versao == 0 ? kSuposta : versao) >= desde.versao; }

}  // namespace

bool TCapacidades::Tem(TRecurso recurso) const {
    return wkd::Tem(*std::ranges::find(kRecursos, recurso, &TDesde::recurso), versao);
}

std::vector<TRecursoParaLer> RecursosParaLer(const TCapacidades& capacidades) {
    std::vector<TRecursoParaLer> recursos;
    for (const auto& desde : kRecursos) recursos.push_back({desde.nome, Tem(desde, capacidades.versao)});
    return recursos;
}

int NumeroDaVersao(std::string_view texto) {
    int maior = 0, menor = 0;
    const char* const fim = texto.data() + texto.size();
    const char* aqui = std::find_if(texto.data(), fim, [](char c) { return c >= '0' && c <= '9'; });
    aqui = std::from_chars(aqui, fim, maior).ptr;
    if (aqui != fim && *aqui == '.') std::from_chars(aqui + 1, fim, menor);
    return 100 * maior + menor;
}

int EstruturaDoFirebird(int versao) {
    const auto* achada = std::ranges::find(kEstruturas, versao, &TEstruturaDaVersao::versao);
    return achada == std::end(kEstruturas) ? 0 : achada->estrutura;
}

std::string TextoDaVersao(int numero) { return std::to_string(numero / 100) + "." + std::to_string(numero % 100); }

}  // namespace wkd
