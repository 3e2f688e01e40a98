#include <stdexcept>

#include "BancoDaCopia.h"
#include "Casos.h"
#include "Processo.h"
#include "rebuild/Nova.h"

namespace wkd {

namespace {

constexpr int kPoucas = 100'000, kMuitas = 1'000'000;

}  // namespace

double Reconstroi(const std::string& linhas) {
    TBancoDaCopia banco({"embutido", ""}, std::stoi(linhas));
    const TTempo tempo = Cronometra([&] { Nova(banco.Contexto(), "TCLI"); });
    banco.ConfereSemErros();
    if (banco.Conta("TCLI") != std::stoi(linhas)) throw std::runtime_error("a reconstrução perdeu registros");
    return tempo.segundos;
}

std::vector<TMedida> MedeReconstrucao(TBancada& bancada) {
    const std::string poucas = std::to_string(bancada.Quantos(kPoucas));
    const std::string muitas = std::to_string(bancada.Quantos(kMuitas));
    TMedida tempo{
        .trabalho = "reconstrução de " + muitas + " registros, embutido", .piso = "a de " + poucas, .limite = 10.5};
    const TGasto antes = EmOutroProcesso("reconstroi", poucas), longa = EmOutroProcesso("reconstroi", muitas),
                 depois = EmOutroProcesso("reconstroi", poucas);
    tempo.nosso = longa.segundos;
    tempo.doPiso = (antes.segundos + depois.segundos) / 2;
    return {tempo,
            {.trabalho = "memória dessa reconstrução",
             .piso = "a de " + poucas,
             .limite = 1.05,
             .nosso = longa.megabytes,
             .doPiso = depois.megabytes,
             .unidade = TUnidade::Megabytes}};
}

}  // namespace wkd
