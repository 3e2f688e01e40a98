#include "layout/ReconstrucoesAbertas.h"

#include <algorithm>

#include "layout/Tini.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool TemNomeDeBackup(const std::string& tabela) { return ChaveDeNome(tabela).starts_with(NomeDaBackup("")); }

}  // namespace

TReconstrucoesAbertas ReconstrucoesAbertas(TDataModulo& dm) {
    TReconstrucoesAbertas abertas;
    if (dm.ExisteTabela("SARQUIVO")) {
        TWKDQuery q(dm.SQLConnection1,
                    "select NOME_ARQUIVO from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente));
        for (q.Open(); !q.Eof(); q.Next()) abertas.insert(ChaveDeNome(q.Texto("NOME_ARQUIVO")));
    }
    if (dm.ExisteTabela("TINI"))
        for (const auto& marca : Parametros(dm.SQLConnection1, {kSecaoDaReconstrucao}))
            abertas.insert(ChaveDeNome(marca.chave));
    if (std::ranges::none_of(dm.ListaDeTabelas(), TemNomeDeBackup)) return abertas;
    for (const std::string& backup : BackupsQueGuardam(dm.SQLConnection1))
        if (TemNomeDeBackup(backup)) abertas.insert(ChaveDeNome(backup).substr(1));
    return abertas;
}

bool ReconstrucaoPendente(TConnection& conexao, std::string_view tabela) {
    return ContaRegistros(conexao,
                          "select count(*) as total from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente) +
                              " and Upper(NOME_ARQUIVO) = " + Aspas(Maiusculas(tabela))) > 0;
}

bool GuardaAberta(const TReconstrucoesAbertas& abertas, std::string_view tabela) {
    const std::string nome = ChaveDeNome(tabela);
    return abertas.contains(nome) || (TemNomeDeBackup(nome) && abertas.contains(nome.substr(1)));
}

}  // namespace wkd
