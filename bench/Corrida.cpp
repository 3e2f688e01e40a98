#include "Corrida.h"

#include <stdexcept>

#include "TelaMuda.h"
#include "process/Interrupcao.h"
#include "run/Atualizacao.h"

namespace wkd {

TTempo CorreTabelas(const TAliases& aliases, const TOpcoes& opcoes, std::string_view desde, int& comandos) {
    TTelaMuda tela;
    TDataModulo dm(aliases, tela);
    dm.SQLConnection1.SetAlias("GRANDE");
    dm.SQLConnection1.Open();
    int enviados = 0;
    dm.SQLConnection1.Observa([&](std::string_view) { ++enviados; });
    TTempo tempo;
    TCronometro cronometro;
    std::vector<std::string> erros = {"a corrida não chegou ao fim das tabelas"};
    tela.aoMostrar = [&](std::string_view linha) {
        if (!desde.empty() && linha.starts_with(desde)) {
            cronometro = {};
            enviados = 0;
        }
        if (!linha.starts_with("Finalizada")) return;
        tempo = cronometro.Passou();
        comandos = enviados;
        erros = tela.erros;
        throw TInterrompida();
    };
    TEstado estado;
    TAtualizacao(dm, opcoes, estado).Executa();
    if (!erros.empty()) throw std::runtime_error(erros.front());
    return tempo;
}

}  // namespace wkd
