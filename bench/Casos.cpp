#include "Casos.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>

#include "Atualizacao.h"
#include "BancoGrande.h"
#include "DataPacket.h"
#include "TelaMuda.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

constexpr int kVezes = 5;

/// The shortest of a few runs.
template <class F>
double Tempo(F&& trabalho) {
    double menor = 1e9;
    for (int i = 0; i < kVezes; ++i) {
        const auto inicio = TRelogio::now();
        trabalho();
        menor = std::min(menor, Segundos(inicio));
    }
    return menor;
}

TMedida MedePacote(const TDataPacket& modelo, TFormaPacote forma, const char* nome) {
    const fs::path arquivo = fs::temp_directory_path() / "wkd-bench.wkd";
    GravaPacote(modelo, arquivo, forma);
    TMedida medida;
    medida.nosso = Tempo([&] { return LePacote(arquivo).linhas.size(); });
    std::size_t soma = 0;
    medida.piso = Tempo([&] {
        std::ifstream fluxo(arquivo, std::ios::binary);
        std::string bytes(fs::file_size(arquivo), '\0');
        fluxo.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        soma += std::accumulate(bytes.begin(), bytes.end(), std::size_t{0});
        const std::vector<TLinha> linhas = modelo.linhas;
        soma += linhas.size();
    });
    const double mega = static_cast<double>(fs::file_size(arquivo)) / 1e6;
    medida.trabalho = std::string("pacote de ") + std::to_string(modelo.linhas.size()) + " colunas, " + nome + ", " +
                      std::to_string(static_cast<int>(mega / medida.nosso)) + " MB/s" + (soma == 0 ? " " : "");
    fs::remove(arquivo);
    return medida;
}

std::size_t LeTudo(TConnection& banco, const char* sql) {
    std::size_t valores = 0;
    const auto consulta = banco.Prepara(sql);
    for (consulta->Abre(); consulta->Proximo();)
        for (std::size_t i = 0; i < consulta->Campos().size(); ++i) valores += consulta->Valor(i).Nulo() ? 0 : 1;
    return valores;
}

TOpcoes Opcoes(const TBancoGrande& banco) {
    TOpcoes opcoes;
    opcoes.alias = "GRANDE";
    opcoes.pacote = banco.Pacote();
    opcoes.desassistido = true;
    opcoes.querysAnteriores = opcoes.querysPosteriores = false;
    opcoes.marcaNaoCria = banco.Pasta() / "naocria.wkd";
    opcoes.temporaria = opcoes.pastaPrograma = banco.Pasta();
    return opcoes;
}

/// Time and statements of one run up to the end of its tables.
TMedida Corre(const TBancoGrande& banco) {
    TTelaMuda tela;
    TDataModulo dm(banco.Aliases(), tela);
    dm.SQLConnection1.SetAlias("GRANDE");
    dm.SQLConnection1.Open();
    TMedida medida;
    int comandos = 0;
    dm.SQLConnection1.Observa([&](std::string_view) { ++comandos; });
    const auto inicio = TRelogio::now();
    tela.aoMostrar = [&](std::string_view linha) {
        if (!linha.starts_with("Finalizada")) return;
        medida.nosso = Segundos(inicio);
        medida.comandos = comandos;
    };
    const TOpcoes opcoes = Opcoes(banco);
    TEstado estado;
    TAtualizacao(dm, opcoes, estado).Executa();
    if (!tela.erros.empty()) throw std::runtime_error(tela.erros.front());
    return medida;
}

}  // namespace

std::vector<TMedida> MedePacotes() {
    const TDataPacket modelo = DicionarioDeColunas(kTabelas);
    return {MedePacote(modelo, TFormaPacote::Xml, "XML"), MedePacote(modelo, TFormaPacote::Binario, "binário")};
}

std::vector<TMedida> MedeNadaMudou(const TBancoGrande& banco) {
    Corre(banco);  // brings the dictionary tables to their layout
    TMedida medida = Corre(banco);
    for (int i = 1; i < kVezes; ++i) medida.nosso = std::min(medida.nosso, Corre(banco).nosso);
    medida.trabalho = "nada a mudar, 800 tabelas e 20.000 colunas, até o fim das tabelas";
    const auto conexao = banco.Conexao();
    medida.piso = Tempo([&] {
        LeTudo(*conexao, "select * from SARQUIVO");
        LeTudo(*conexao, "select * from SATRIB");
        conexao->TodasAsColunas();
    });
    return {medida};
}

}  // namespace wkd
