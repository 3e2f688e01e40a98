#include "DataModulo.h"
#include "Mescla.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Statement that deletes the table's "U_" columns; empty for a kind of server without one.
std::string ApagaCamposPersonalizados(TTipoBanco banco, const std::string& tabelaEntreAspas) {
    switch (banco) {
        case TTipoBanco::tbSQLServer:
            return "DELETE FROM SATRIB WHERE NOME LIKE 'U\\_%' {ESCAPE '\\'} AND ARQUIVO = " + tabelaEntreAspas;
        case TTipoBanco::tbInterbase:
            return "DELETE FROM SATRIB WHERE NOME STARTING 'U_'  AND ARQUIVO = " + tabelaEntreAspas;
        default:
            return "";
    }
}

/// Deletes and copies in one transaction. A failure is ignored: it leaves the rows as they were.
void Mescla(TDataModulo& dm, const std::string& apaga, const TMescla& mescla) {
    TConnection& conexao = dm.SQLConnection1;
    try {
        TTransacao transacao(conexao);
        if (!apaga.empty()) conexao.Prepara(apaga)->Executa();
        conexao.Prepara(ComandoDeMescla(dm, mescla))->Executa();
        transacao.Commit();
    } catch (const TErroBanco&) {
    }
}

}  // namespace

void TDataModulo::MesclaCamposPersonalizados(std::string_view tabela) {
    const TTipoBanco banco = SQLConnection1.TipoBanco();
    const std::string nome = Aspas(tabela);
    if (banco == TTipoBanco::tbOracle) tela_.Informacao("Implementar para oracle");
    Mescla(*this, ApagaCamposPersonalizados(banco, nome),
           {"SATRIB", "from satrib_user", "satrib_user.arquivo = " + nome});
    Mescla(*this, "", {"SARQUIVO", "from SARQUIVO_user", "NOME_ARQUIVO = " + nome});
}

void TDataModulo::MesclaPesquisasELookups() {
    Mescla(*this, "", {"SPESQ", "from SPESQ_user"});
    Mescla(*this, "", {"SPESQAUX", "from SPESQAUX_user"});
    Mescla(*this, "", {"SLOOKUP", "FROM SLOOKUP_USER"});
}

}  // namespace wkd
