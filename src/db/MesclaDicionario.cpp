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

void ApagaECopia(TDataModulo& dm, const std::string& apaga, const TMescla& mescla) {
    if (!apaga.empty()) dm.SQLConnection1.Prepara(apaga)->Executa();
    dm.SQLConnection1.Prepara(ComandoDeMescla(dm, mescla))->Executa();
}

/// In the caller's transaction, back to where it was when the merge fails.
void MesclaNaTransacao(TDataModulo& dm, const std::string& apaga, const TMescla& mescla) {
    constexpr std::string_view kPonto = "MESCLA";
    dm.SQLConnection1.MarcaPonto(kPonto);
    try {
        ApagaECopia(dm, apaga, mescla);
    } catch (const TErroBanco&) {
        dm.SQLConnection1.VoltaAoPonto(kPonto);
    }
}

/// Deletes and copies as one: in the caller's open transaction, else in one of its own. A failure is ignored: it
/// leaves the rows as they were.
void Mescla(TDataModulo& dm, const std::string& apaga, const TMescla& mescla) {
    if (dm.SQLConnection1.InTransaction()) return MesclaNaTransacao(dm, apaga, mescla);
    try {
        TTransacao transacao(dm.SQLConnection1);
        ApagaECopia(dm, apaga, mescla);
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
