#include "ValorPadrao.h"

#include <unordered_set>
#include <vector>

#include "Texto.h"
#include "Tolera.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// The statements of all columns with a default, each text once. A column that the database does not have would only
/// fail, so it gets none.
std::vector<std::string> Comandos(TContexto& ctx) {
    std::vector<std::string> comandos;
    std::unordered_set<std::string> vistos;
    TWKDQuery q(ctx.Conexao(),
                "select arquivo,nome,valor_padrao,tipo from satrib where (valor_padrao is not null) and "
                "(valor_padrao <> '')");
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string arquivo = q.Texto("arquivo");
        const std::string nome = q.Texto("nome");
        if (!NomeDeSql(Apara(arquivo)) || !NomeDeSql(Apara(nome))) continue;
        if (!ctx.dm.VerificaExisteCampo(Apara(arquivo), Apara(nome))) continue;
        std::string valor = q.Texto("valor_padrao");
        if (q.Texto("tipo") == "ftFloat") valor = Troca(valor, ",", ".");
        std::string comando =
            "Update " + arquivo + " set " + nome + " = " + Aspas(valor) + " where " + nome + " is null ";
        if (vistos.insert(comando).second) comandos.push_back(std::move(comando));
    }
    return comandos;
}

}  // namespace

void AtualizaValorPadrao(TContexto& ctx) {
    for (const std::string& comando : Comandos(ctx)) Tolera([&] { TWKDQuery(ctx.Conexao(), comando).ExecSQL(); });
}

}  // namespace wkd
