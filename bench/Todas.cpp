#include "Casos.h"
#include "Corrida.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Time of the tables of one run that analyses them all, and its statements from then on.
TTempo Corre(const TBancoGrande& banco, int& comandos) {
    TOpcoes opcoes = banco.Opcoes();
    opcoes.todas = true;
    return CorreTabelas(banco.Aliases(), opcoes, "Tabelas do sistema", comandos);
}

/// Deletes and copies of the customer's columns, as every table has them.
void MesclaCru(TConnection& banco, const std::string& tabela) {
    const std::string nome = Aspas(tabela);
    for (const std::string& comando :
         {"DELETE FROM SATRIB WHERE NOME STARTING 'U_'  AND ARQUIVO = " + nome,
          "INSERT INTO SATRIB (ARQUIVO, NOME) SELECT ARQUIVO, NOME from satrib_user where satrib_user.arquivo = " +
              nome,
          "INSERT INTO SARQUIVO (COD_MODULO, NOME_ARQUIVO) SELECT COD_MODULO, NOME_ARQUIVO from SARQUIVO_user where "
          "NOME_ARQUIVO = " +
              nome})
        banco.Prepara(comando)->Executa();
}

/// What must be read of the tables, and the dictionary statements of every table, a transaction each.
void Regrava(TConnection& banco, const TDataPacket& colunas) {
    banco.TodasAsColunas();
    std::vector<std::string> nomes;
    for (const auto& campo : colunas.campos) nomes.push_back(campo.nome);
    const auto inclui =
        banco.Prepara("insert into SATRIB (" + Junta(nomes, ", ") + ") values (:" + Junta(nomes, ", :") + ")");
    for (auto linha = colunas.linhas.begin(); linha != colunas.linhas.end();) {
        const std::string tabela = linha->at(0).ComoTexto();
        TTransacao transacao(banco);
        banco.Prepara("delete from satrib where arquivo = " + Aspas(tabela))->Executa();
        for (; linha != colunas.linhas.end() && linha->at(0).ComoTexto() == tabela; ++linha) {
            for (std::size_t i = 0; i < linha->size(); ++i) inclui->Atribui(i, linha->at(i));
            inclui->Executa();
        }
        MesclaCru(banco, tabela);
        transacao.Commit();
        const auto indices = banco.Prepara("SELECT DISTINCT * FROM SINDSEC WHERE ARQUIVO = " + Aspas(tabela));
        for (indices->Abre(); indices->Proximo();) continue;
    }
}

std::vector<TMedida> Mede(const TBancoGrande& banco, const TLugar& lugar) {
    int comandos = 0;
    Corre(banco, comandos);  // brings the dictionary tables to their layout
    const auto conexao = banco.Conexao();
    const TDataPacket colunas = DicionarioDeColunas(banco.Tabelas());
    const auto mede = [&](const std::string& diferencas, const std::string& antes) {
        TMedida medida = Alterna(
            {.trabalho = "atualizar todas as tabelas, " + diferencas + ", " + banco.Tamanho() + ", " + lugar.nome,
             .piso = "as colunas lidas uma vez e os comandos de dicionário de cada tabela, uma transação por tabela",
             .limite = 1.3},
            4,
            [&] {
                if (!antes.empty()) conexao->ExecuteDirect(antes);
                return Corre(banco, comandos);
            },
            [&] { Regrava(*conexao, colunas); });
        medida.comandos = comandos;
        return medida;
    };
    return {mede("sem diferenças", ""),
            mede("todo o dicionário diferente", "update SATRIB set DISCRIMINACAO = 'Outra'")};
}

}  // namespace

std::vector<TMedida> MedeTodas(TBancada& bancada) {
    return bancada.EmTodosOsLugares(
        [&](const TLugar& lugar) { return Mede(bancada.Grande(lugar, bancada.Quantos(kTabelas)), lugar); });
}

}  // namespace wkd
