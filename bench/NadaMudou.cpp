#include "Casos.h"
#include "Corrida.h"

namespace wkd {

namespace {

void LeTudo(TConnection& banco, const char* sql) {
    std::size_t valores = 0;
    const auto consulta = banco.Prepara(sql);
    for (consulta->Abre(); consulta->Proximo();)
        for (std::size_t i = 0; i < consulta->Campos().size(); ++i) valores += consulta->Valor(i).Nulo() ? 0 : 1;
    if (valores == 0) throw std::runtime_error(std::string(sql) + " não deu valores");
}

/// What a run would read that looked at every table.
void LeDicionarioEColunas(TConnection& banco) {
    LeTudo(banco, "select * from SARQUIVO");
    LeTudo(banco,
           "select ARQUIVO, NOME, TIPO, TAMANHO, VALOR_PADRAO, CALCULO, CHAVE_DE_PESQUISA, SEQUENCIA, LOOKUP_ARQUIVO"
           " from SATRIB");
    banco.TodasAsColunas();
}

std::vector<TMedida> Mede(const TBancoGrande& banco, const TLugar& lugar) {
    int comandos = 0;
    CorreTabelas(banco.Aliases(), banco.Opcoes(), "", comandos);  // brings the dictionary tables to their layout
    const auto conexao = banco.Conexao();
    TMedida medida = Alterna(
        {.trabalho = "nada a mudar, " + banco.Tamanho() + ", até o fim das tabelas, " + lugar.nome,
         .piso = "dicionário e colunas lidos uma vez",
         .limite = 1.5},
        5, [&] { return CorreTabelas(banco.Aliases(), banco.Opcoes(), "", comandos); },
        [&] { LeDicionarioEColunas(*conexao); });
    medida.comandos = comandos;
    return {medida};
}

}  // namespace

std::vector<TMedida> MedeNadaMudou(TBancada& bancada) {
    return bancada.EmTodosOsLugares([&](const TLugar& lugar) { return Mede(bancada.Grande(lugar), lugar); });
}

}  // namespace wkd
