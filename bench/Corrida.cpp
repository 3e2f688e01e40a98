#include "Corrida.h"

#include <stdexcept>

#include "Medida.h"
#include "TelaMuda.h"
#include "run/Atualizacao.h"

namespace wkd {

double CorreTabelas(const TBancoGrande& banco, const TOpcoes& opcoes, std::string_view desde, int& comandos) {
    TTelaMuda tela;
    TDataModulo dm(banco.Aliases(), tela);
    dm.SQLConnection1.SetAlias("GRANDE");
    dm.SQLConnection1.Open();
    int enviados = 0;
    dm.SQLConnection1.Observa([&](std::string_view) { ++enviados; });
    double tempo = 0;
    TRelogio::time_point inicio = TRelogio::now();
    tela.aoMostrar = [&](std::string_view linha) {
        if (!desde.empty() && linha.starts_with(desde)) {
            inicio = TRelogio::now();
            enviados = 0;
        }
        if (!linha.starts_with("Finalizada")) return;
        tempo = Segundos(inicio);
        comandos = enviados;
    };
    TEstado estado;
    TAtualizacao(dm, opcoes, estado).Executa();
    if (!tela.erros.empty()) throw std::runtime_error(tela.erros.front());
    return tempo;
}

}  // namespace wkd
