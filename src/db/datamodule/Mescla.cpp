#include "datamodule/Mescla.h"

#include <algorithm>
#include <vector>

#include "datamodule/DataModulo.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TNomes = std::vector<std::string>;

/// Columns that identify a row of a dictionary table created without primary key.
struct TIdentificacao {
    std::string_view tabela, colunas;
};
constexpr TIdentificacao kIdentificacoes[] = {
    {"SATRIB", "ARQUIVO;NOME"},
    {"SARQUIVO", "COD_MODULO;NOME_ARQUIVO"},
    {"SPESQ", "ARQUIVO;NOMEPESQUISA"},
    {"SPESQAUX", "ARQUIVO;NOME;SEQ;CAMPOS"},
    {"SLOOKUP", "ARQUIVO;CAMPO;CAMPOPAI;CAMPOFILHO"},
};

/// A column of the destination and what it gets.
struct TColunaCopiada {
    std::string nome, valor;
};
using TCopiadas = std::vector<TColunaCopiada>;

TNomes NomesDasColunas(const std::vector<TColunaFisica>& colunas) {
    TNomes nomes;
    for (const auto& coluna : colunas) nomes.push_back(ChaveDeNome(coluna.nome));
    return nomes;
}

/// For a required column that the customer's table lacks: a release may bring one that the customer's rows precede.
std::string ValorQueFalta(const TColunaFisica& coluna) {
    if (!coluna.padrao.empty()) return coluna.padrao;
    const bool data =
        coluna.tipo == TTipoDado::Data || coluna.tipo == TTipoDado::Hora || coluna.tipo == TTipoDado::DataHora;
    return data ? "current_timestamp" : "'0'";
}

TCopiadas Copiadas(const std::vector<TColunaFisica>& destino, const std::vector<TColunaFisica>& origem) {
    TCopiadas copiadas;
    for (const auto& coluna : destino) {
        const std::string nome = ChaveDeNome(coluna.nome);
        if (ColunaDeNome(origem, coluna.nome))
            copiadas.push_back({nome, nome});
        else if (coluna.requerido)
            copiadas.push_back({nome, ValorQueFalta(coluna)});
    }
    return copiadas;
}

/// The part of a where clause that pairs a customer row with its twin in the destination, here called EXISTENTE.
std::string Pareamento(const TCopiadas& chave, std::string_view origem, bool podeSerNulo) {
    TNomes partes;
    for (const auto& [nome, valor] : chave) {
        const std::string existente = "EXISTENTE." + nome;
        const std::string nova = valor == nome ? std::string(origem) + "." + nome : valor;
        const std::string igual = existente + " = " + nova;
        partes.push_back(podeSerNulo ? "(" + igual + " or (" + existente + " is null and " + nova + " is null))"
                                     : igual);
    }
    return Junta(partes, " and ");
}

/// Condition true for customer rows that the destination has already; empty when nothing tells.
std::string CondicaoDePresente(TDataModulo& dm, const TMescla& mescla, std::string_view origem,
                               const TCopiadas& copiadas) {
    TNomes nomes = dm.ChavePrimaria(mescla.destino).colunas;
    const bool semChave = nomes.empty();
    const auto* identificacao = std::ranges::find(kIdentificacoes, mescla.destino, &TIdentificacao::tabela);
    if (semChave && identificacao != std::end(kIdentificacoes)) nomes = Divide(identificacao->colunas, ';');
    TCopiadas chave;
    for (const auto& nome : nomes) {
        const auto copiada = std::ranges::find(copiadas, ChaveDeNome(nome), &TColunaCopiada::nome);
        if (copiada == copiadas.end()) return "";
        chave.push_back(*copiada);
    }
    if (chave.empty()) return "";
    return "exists (select 1 from " + std::string(mescla.destino) + " EXISTENTE where " +
           Pareamento(chave, origem, semChave) + ")";
}

std::string Onde(const std::string& condicao, const std::string& outra) {
    if (condicao.empty() && outra.empty()) return "";
    return " where " + condicao + (condicao.empty() || outra.empty() ? "" : " and ") + outra;
}

}  // namespace

std::string ComandoDeMescla(TDataModulo& dm, const TMescla& mescla) {
    const std::string de(mescla.de);
    const std::string origem = de.substr(de.rfind(' ') + 1);
    const auto doDestino = dm.ColunasFisicas(mescla.destino), daOrigem = dm.ColunasFisicas(origem);
    const TCopiadas copiadas = Copiadas(doDestino, daOrigem);

    const std::string presente = CondicaoDePresente(dm, mescla, origem, copiadas);
    const bool repete = !presente.empty() && ContaRegistros(dm.SQLConnection1, "select count(*) " + de +
                                                                                   Onde(mescla.condicao, presente)) > 0;
    TNomes nomes, valores;
    for (const auto& [nome, valor] : copiadas) {
        nomes.push_back(nome);
        valores.push_back(valor);
    }
    const bool iguais = nomes.empty() || NomesDasColunas(doDestino) == NomesDasColunas(daOrigem);
    return "INSERT INTO " + std::string(mescla.destino) +
           (iguais ? " SELECT * " : " (" + Junta(nomes, ",") + ") SELECT " + Junta(valores, ",") + " ") + de +
           Onde(mescla.condicao, repete ? "not " + presente : "");
}

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

/// Whether the customer has searches or lookups, asked in one question; also where that cannot be told.
bool TemPesquisasOuLookups(TDataModulo& dm) {
    if (dm.SQLConnection1.InTransaction()) return true;
    try {
        TWKDQuery q(dm.SQLConnection1,
                    "select count(*) as total from SPESQ_user union all select count(*) from SPESQAUX_user"
                    " union all select count(*) from SLOOKUP_USER");
        for (q.Open(); !q.Eof(); q.Next())
            if (q.Comando().Valor(0).ComoInteiro() > 0) return true;
        return false;
    } catch (const TErroBanco&) {  // one of the tables is missing
        return true;
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
    if (!TemPesquisasOuLookups(*this)) return;
    Mescla(*this, "", {"SPESQ", "from SPESQ_user"});
    Mescla(*this, "", {"SPESQAUX", "from SPESQAUX_user"});
    Mescla(*this, "", {"SLOOKUP", "FROM SLOOKUP_USER"});
}

}  // namespace wkd
