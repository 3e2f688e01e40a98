// Prints our times beside the least that must be done, both measured in this run: read the ratio, not the seconds.
#include <sys/vfs.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "Casos.h"
#include "Processo.h"
#include "process/Argumentos.h"
#include "process/Programa.h"
#include "values/Texto.h"

namespace {

namespace fs = std::filesystem;
using namespace wkd;

constexpr const char* kAjuda =
    "wkd_bench [opções] [caso...]\n"
    "Mede o nosso tempo ao lado do mínimo que o trabalho exige. Sem caso, mede todos; um caso é escolhido por parte "
    "do\n"
    "seu nome. Tudo é medido num disco em memória (/dev/shm, se houver) e, com as opções, também em outros lugares:\n"
    "  --disco PASTA    numa pasta de um disco de verdade, com menos linhas onde cada commit espera por ele\n"
    "  --atraso MS,...  com a rede até o servidor mais longa: MS (1 a 1000) para ir e outro tanto para voltar; as "
    "voltas\n"
    "                   ao servidor são contadas\n"
    "  --json ARQUIVO   grava as medidas também para programas\n"
    "  --help           mostra esta ajuda\n"
    "Casos:";

constexpr long kNaMemoria = 0x01021994;  // file system of memory, as statfs names it

bool NaMemoria(const fs::path& pasta) {
    struct statfs sistema {};
    return statfs(pasta.c_str(), &sistema) == 0 && sistema.f_type == kNaMemoria;
}

TTurno NoDisco(const fs::path& pasta) {
    if (!fs::is_directory(pasta)) throw std::invalid_argument("--disco: " + pasta.string() + " não é uma pasta.");
    if (NaMemoria(pasta)) throw std::invalid_argument("--disco: " + pasta.string() + " está na memória.");
    return {.disco = "disco", .pasta = fs::absolute(pasta), .naMemoria = false};
}

int Atraso(const std::string& texto) {
    int ms = 0;
    const auto lido = std::from_chars(texto.data(), texto.data() + texto.size(), ms);
    if (lido.ec != std::errc() || lido.ptr != texto.data() + texto.size() || ms < 1 || ms > 1000)
        throw std::invalid_argument("--atraso: '" + texto + "' não é um número de 1 a 1000.");
    return ms;
}

std::vector<TTurno> Turnos(const TArgumentos& argumentos) {
    const fs::path memoria = NaMemoria("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
    std::vector<TTurno> turnos = {{.disco = "memória", .pasta = memoria}};
    if (argumentos.Tem("--disco")) turnos.push_back(NoDisco(argumentos.Opcao("--disco")));
    if (argumentos.Tem("--atraso"))
        for (const std::string& ms : Divide(argumentos.Opcao("--atraso"), ','))
            turnos.push_back({.disco = "memória", .pasta = memoria, .atraso = Atraso(ms)});
    return turnos;
}

/// Those whose name contains one of the words; all when there is none.
std::vector<TCaso> Escolhidos(const TArgumentos& argumentos) {
    std::vector<TCaso> casos;
    std::string palavra = argumentos.PalavraSeHouver(0);
    for (std::size_t i = 0; i == 0 || !palavra.empty(); palavra = argumentos.PalavraSeHouver(++i)) {
        const auto antes = casos.size();
        std::ranges::copy_if(kCasos, std::back_inserter(casos),
                             [&](const TCaso& caso) { return caso.nome.find(palavra) != std::string_view::npos; });
        if (casos.size() == antes) throw std::invalid_argument("Não há caso com '" + palavra + "' no nome.");
    }
    return casos;
}

bool Mede(const TCaso& caso, const TTurno& turno) {
    if (turno.atraso) return caso.turnos == TTurnos::DiscosERede;
    return turno.naMemoria || caso.turnos != TTurnos::SoNaMemoria;
}

void Mede(const std::vector<TCaso>& casos, const TTurno& turno, std::vector<TMedida>& medidas) {
    TBancada bancada(turno);
    for (const TCaso& caso : casos) {
        if (!Mede(caso, turno)) continue;
        for (TMedida& medida : caso.mede(bancada)) {
            medida.caso = caso.nome;
            medida.disco = turno.disco;
            medida.atraso = turno.atraso.value_or(0);
            medida.carga = CargaDaMaquina();
            std::puts(LinhaDaTabela(medida).c_str());
            medidas.push_back(std::move(medida));
        }
        std::fflush(stdout);
    }
}

int Executa(const std::vector<std::string>& palavras) {
    const TArgumentos argumentos(palavras, {.opcoes = {"--disco", "--atraso", "--json", kProcesso},
                                            .chaves = {"--help"},
                                            .palavras = 0,
                                            .talvez = std::size(kCasos)});
    if (argumentos.Tem("--help")) {
        std::fputs(kAjuda, stdout);
        for (const TCaso& caso : kCasos) std::printf(" %s", std::string(caso.nome).c_str());
        std::puts("");
        return 0;
    }
    if (argumentos.Tem(kProcesso)) {
        TrabalhaEInforma(argumentos.Opcao(kProcesso));
        return 0;
    }
    const auto casos = Escolhidos(argumentos);
    const auto turnos = Turnos(argumentos);
    std::vector<TMedida> medidas;
    if (argumentos.Tem("--json")) GravaJson(argumentos.Opcao("--json"), medidas);  // refused before the work
    std::puts(CabecalhoDaTabela().c_str());
    for (const TTurno& turno : turnos) Mede(casos, turno, medidas);
    if (argumentos.Tem("--json")) GravaJson(argumentos.Opcao("--json"), medidas);
    return 0;
}

}  // namespace

int main(int quantos, char** argumentos) {
    try {
        return Executa({argumentos + 1, argumentos + quantos});
    } catch (const std::invalid_argument& erro) {
        std::fprintf(stderr, "%s Veja wkd_bench --help.\n", erro.what());
        return static_cast<int>(TCodigoDeSaida::UsoIncorreto);
    } catch (const std::exception& erro) {
        std::fprintf(stderr, "%s\n", erro.what());
        return 1;
    }
}
