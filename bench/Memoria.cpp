#include "Casos.h"
#include "Processo.h"
#include "TelaMuda.h"
#include "run/Atualizacao.h"

namespace wkd {

namespace {

TAliases AliasesDe(const std::filesystem::path& pasta) { return TAliases(pasta / "WKD.ini"); }

void Abre(TDataModulo& dm) {
    dm.SQLConnection1.SetAlias("GRANDE");
    dm.SQLConnection1.Open();
}

/// What a run takes above a process that has the same database open.
TMedida Mede(const TBancoGrande& banco, const TLugar& lugar) {
    const std::string pasta = banco.Pasta().string();
    const double ocioso = EmOutroProcesso("espera", pasta).megabytes;
    const auto bytes = std::filesystem::file_size(banco.Pasta() / "SATRIB.WKD") +
                       std::filesystem::file_size(banco.Pasta() / "SARQUIVO.WKD");
    return {.trabalho = "memória dessa corrida acima da de um processo ocioso, " + banco.Tamanho() + ", " + lugar.nome,
            .piso = "os pacotes de dados como estão no arquivo",
            .nosso = EmOutroProcesso("corre", pasta).megabytes - ocioso,
            .doPiso = static_cast<double>(bytes) / (1 << 20),
            .unidade = TUnidade::Megabytes};
}

}  // namespace

double CorreNaPasta(const std::string& pasta) {
    TTelaMuda tela;
    TDataModulo dm(AliasesDe(pasta), tela);
    Abre(dm);
    TEstado estado;
    const TCronometro cronometro;
    TAtualizacao(dm, TBancoGrande::OpcoesEm(pasta), estado).Executa();
    if (!tela.erros.empty()) throw std::runtime_error(tela.erros.front());
    return cronometro.Passou().segundos;
}

double AbreEEspera(const std::string& pasta) {
    TTelaMuda tela;
    TDataModulo dm(AliasesDe(pasta), tela);
    Abre(dm);
    dm.AtualizaListaDeTabelas();
    return 0;
}

std::vector<TMedida> MedeMemoria(TBancada& bancada) {
    return bancada.EmTodosOsLugares([&](const TLugar& lugar) {
        const TBancoGrande& banco = bancada.Grande(lugar);
        CorreNaPasta(banco.Pasta().string());  // brings the dictionary tables to their layout
        return std::vector{Mede(banco, lugar)};
    });
}

}  // namespace wkd
