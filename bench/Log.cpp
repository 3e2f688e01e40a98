#include <fstream>

#include "Casos.h"
#include "report/LogDaExecucao.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

constexpr int kEntradas = 10'000;

TDataHora Quando(int entrada) { return {DataDe(2026, 1, 2), THora{entrada * 10'000LL}}; }

void Registra(TLogDaExecucao& log, int entrada) {
    log.SetLog("Query de alteração de campo número " + std::to_string(entrada), "TCLIENTES", "Alterar",
               Quando(entrada));
}

}  // namespace

std::vector<TMedida> MedeLog(TBancada&) {
    const TPastaTemporaria pasta;
    TLogDaExecucao todas(pasta / "nenhum.log");
    std::vector<std::size_t> tamanhos;
    for (int i = 0; i < kEntradas; ++i) {
        Registra(todas, i);
        tamanhos.push_back(todas.Texto().size());
    }
    const std::string texto = todas.Texto();
    const auto arquivo = pasta / "AtualizaWKD.log";
    TMedida medida = Alterna(
        {.trabalho = "log de 10.000 entradas, gravado inteiro a cada uma",
         .piso = "gravar e renomear os mesmos arquivos",
         .limite = 1.2},
        2,
        [&] {
            std::ofstream(arquivo, std::ios::trunc).flush();
            TLogDaExecucao log(arquivo);
            log.Carrega();
            for (int i = 0; i < kEntradas; ++i) Registra(log, i);
            if (log.Texto() != texto) throw std::runtime_error("o log não tem as entradas");
        },
        [&] {
            for (const std::size_t tamanho : tamanhos) {
                std::ofstream novo(pasta / "novo", std::ios::binary);
                novo.write(texto.data() + (texto.size() - tamanho), static_cast<std::streamsize>(tamanho));
                novo.close();
                std::filesystem::rename(pasta / "novo", pasta / "cru.log");
            }
        });
    return {medida};
}

}  // namespace wkd
