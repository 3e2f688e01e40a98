#include "ReconstrucoesAbertas.h"

#include <algorithm>

#include "MarcaDaBackup.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

bool TemNomeDeBackup(const std::string& tabela) { return ChaveDeNome(tabela).starts_with(NomeDaBackup("")); }

void AcrescentaNomes(TDataModulo& dm, const std::string& sql, TReconstrucoesAbertas& abertas) {
    TWKDQuery q(dm.SQLConnection1, sql);
    for (q.Open(); !q.Eof(); q.Next()) abertas.insert(ChaveDeNome(q.Texto("NOME")));
}

}  // namespace

TReconstrucoesAbertas ReconstrucoesAbertas(TDataModulo& dm) {
    TReconstrucoesAbertas abertas;
    if (dm.ExisteTabela("SARQUIVO"))
        AcrescentaNomes(
            dm, "select NOME_ARQUIVO as NOME from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente), abertas);
    if (dm.ExisteTabela("TINI"))
        AcrescentaNomes(dm, "select CHAVE as NOME from TINI where SESSAO = " + Aspas(kSecaoDaReconstrucao), abertas);
    if (std::ranges::none_of(dm.ListaDeTabelas(), TemNomeDeBackup)) return abertas;
    for (const std::string& backup : BackupsQueGuardam(dm.SQLConnection1))
        if (TemNomeDeBackup(backup)) abertas.insert(ChaveDeNome(backup).substr(1));
    return abertas;
}

bool GuardaAberta(const TReconstrucoesAbertas& abertas, std::string_view tabela) {
    const std::string nome = ChaveDeNome(tabela);
    return abertas.contains(nome) || (TemNomeDeBackup(nome) && abertas.contains(nome.substr(1)));
}

}  // namespace wkd
