#include "Atualizacao.h"
#include "Casos.h"
#include "TelaMuda.h"

namespace wkd {

namespace {

void LeTudo(TConnection& banco, const char* sql) {
    std::size_t valores = 0;
    const auto consulta = banco.Prepara(sql);
    for (consulta->Abre(); consulta->Proximo();)
        for (std::size_t i = 0; i < consulta->Campos().size(); ++i) valores += consulta->Valor(i).Nulo() ? 0 : 1;
    if (valores == 0) throw std::runtime_error(std::string(sql) + " não deu valores");
}

/// What any run must read.
void LeDicionarioEColunas(TConnection& banco) {
    LeTudo(banco, "select * from SARQUIVO");
    LeTudo(banco, "select * from SATRIB");
    banco.TodasAsColunas();
}

/// Time of one run up to the end of its tables, and its statements.
double Corre(const TBancoGrande& banco, int& comandos) {
    TTelaMuda tela;
    TDataModulo dm(banco.Aliases(), tela);
    dm.SQLConnection1.SetAlias("GRANDE");
    dm.SQLConnection1.Open();
    int enviados = 0;
    dm.SQLConnection1.Observa([&](std::string_view) { ++enviados; });
    double tempo = 0;
    const auto inicio = TRelogio::now();
    tela.aoMostrar = [&](std::string_view linha) {
        if (!linha.starts_with("Finalizada")) return;
        tempo = Segundos(inicio);
        comandos = enviados;
    };
    const TOpcoes opcoes = banco.Opcoes();
    TEstado estado;
    TAtualizacao(dm, opcoes, estado).Executa();
    if (!tela.erros.empty()) throw std::runtime_error(tela.erros.front());
    return tempo;
}

TMedida Mede(const TBancoGrande& banco, const TLugar& lugar) {
    int comandos = 0;
    Corre(banco, comandos);  // brings the dictionary tables to their layout
    const auto conexao = banco.Conexao();
    TMedida medida = Alterna(
        {.trabalho = "nada a mudar, 800 tabelas e 20.000 colunas, até o fim das tabelas, " + lugar.nome,
         .piso = "dicionário e colunas lidos uma vez",
         .limite = 1.5},
        5, [&] { return Corre(banco, comandos); }, [&] { LeDicionarioEColunas(*conexao); });
    medida.comandos = comandos;
    return medida;
}

}  // namespace

std::vector<TMedida> MedeNadaMudou(TBancada& bancada) { return bancada.NosDoisLugares(Mede); }

}  // namespace wkd
