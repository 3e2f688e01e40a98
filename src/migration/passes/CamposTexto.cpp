#include "passes/CamposTexto.h"

#include <algorithm>
#include <array>
#include <functional>
#include <stdexcept>
#include <vector>

#include "alter/Alteracao.h"
#include "alter/IndicesGuardados.h"
#include "copy/Rejeitados.h"
#include "layout/Tini.h"
#include "passes/Passes.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

// Among the statements: the texts go into the temporary column, their own is dropped, and they come back.
constexpr std::size_t kCopia = 1, kApaga = 2, kVolta = 4;
constexpr std::string_view kPasso = "AjustaCamposStringMaior2000";
constexpr std::string_view kTemporaria = "CAMPO_MIGRA_WKD";

struct TColunaLonga {
    std::string tabela, nome;
};

std::vector<TColunaLonga> ColunasLongas(TContexto& ctx) {
    std::vector<TColunaLonga> colunas;
    TWKDQuery q(ctx.Conexao(), "select arquivo,nome,tamanho from satrib where tipo = 'ftString' and tamanho >= 2000");
    for (q.Open(); !q.Eof(); q.Next()) {
        TColunaLonga coluna{std::string(AparaFim(q.Texto("arquivo"))), std::string(AparaFim(q.Texto("nome")))};
        if (NomeDeSql(coluna.tabela) && NomeDeSql(coluna.nome)) colunas.push_back(std::move(coluna));
    }
    return colunas;
}

/// The statements that move a column through the temporary one, the dictionary's last.
std::array<std::string, 7> Comandos(const TColunaLonga& coluna, TTipoBanco banco) {
    const std::string &a = coluna.tabela, &n = coluna.nome;
    const std::string dicionario =
        "update satrib set tamanho = 1988 where arquivo = " + Aspas(a) + " and nome = " + Aspas(n);
    if (banco == TTipoBanco::tbSQLServer)
        return {"alter table " + a + " add  CAMPO_MIGRA_WKD NVARCHAR(1998)",
                "update " + a + " set CAMPO_MIGRA_WKD = substring(" + n + ",1,1998)",
                "alter table " + a + " drop column " + n,
                "alter table " + a + " add  " + n + " NVARCHAR(1998)",
                "update  " + a + " set  " + n + " = CAMPO_MIGRA_WKD",
                "alter table  " + a + " drop column  CAMPO_MIGRA_WKD",
                dicionario};
    return {"alter table " + a + " add CAMPO_MIGRA_WKD VARCHAR(1998);",
            "update " + a + " set CAMPO_MIGRA_WKD = substring(" + n + " from 1 for 1998);",
            "alter table " + a + " drop " + n + ";",
            "alter table " + a + " add  " + n + " VARCHAR(1998);",
            "update  " + a + " set  " + n + " = CAMPO_MIGRA_WKD;",
            "alter table  " + a + " drop CAMPO_MIGRA_WKD;",
            dicionario + ";"};
}

std::string ColunaMarcada(TContexto& ctx, const std::string& tabela) {
    return ctx.dm.ExisteTabela("TINI") ? LeParametro(kSecaoDaMarca, tabela, "", &ctx.Conexao()) : "";
}

void Marca(TContexto& ctx, const TColunaLonga& coluna) {
    if (ctx.dm.ExisteTabela("TINI")) GravaParametro(kSecaoDaMarca, coluna.tabela, coluna.nome, &ctx.Conexao());
}

void Desmarca(TContexto& ctx, const TColunaLonga& coluna) {
    if (!ctx.dm.ExisteTabela("TINI")) return;
    TWKDQuery q(ctx.Conexao(), "delete from tini where sessao = :pSESSAO and chave = :pCHAVE");
    q.Param("pSESSAO", kSecaoDaMarca).Param("pCHAVE", coluna.tabela).ExecSQL();
}

bool EmConversao(TContexto& ctx, const TColunaLonga& coluna) {
    return ctx.dm.VerificaExisteCampo(coluna.tabela, kTemporaria);
}

/// Whether what is in the temporary column is, or may be, all that is left of this one.
bool Interrompida(TContexto& ctx, const TColunaLonga& coluna) {
    if (!EmConversao(ctx, coluna)) return false;
    const std::string marcada = ColunaMarcada(ctx, coluna.tabela);
    if (!marcada.empty()) return marcada == coluna.nome;
    return !ctx.dm.VerificaExisteCampo(coluna.tabela, coluna.nome);
}

/// Number of the first statement to run, from 1; 0 for a column that is not physical. Goes by what an interrupted
/// conversion has left.
int PrimeiroComando(TContexto& ctx, const TColunaLonga& coluna) {
    const TColunaFisica* fisica = ColunaDeNome(ctx.dm.ColunasFisicas(coluna.tabela), coluna.nome);
    if (!EmConversao(ctx, coluna)) return fisica ? 1 : 0;
    if (!fisica) return 4;
    if (fisica->tamanho != kLarguraAjustada) return 2;
    // A column of that width from before the conversion still holds what the temporary one does not; in a new one there
    // may be what was entered since.
    const auto so = [&](const std::string& uma, const std::string& outra) {
        return ContaRegistros(ctx.Conexao(), "select count(*) as total from " + coluna.tabela + " where " + uma +
                                                 " is not null and " + outra + " is null") > 0;
    };
    const std::string temporaria(kTemporaria);
    return so(coluna.nome, temporaria) && !so(temporaria, coluna.nome) ? 2 : 5;
}

/// Where clause of the rows whose text is cut.
std::string Longos(const TColunaLonga& coluna, const TDialeto& dialeto) {
    return " where " + dialeto.Caracteres(coluna.nome) + " > " + std::to_string(kLarguraAjustada);
}

void RelataCortados(TContexto& ctx, const TColunaLonga& coluna, std::int64_t quantos) {
    if (quantos == 0) return;
    const std::string linha = "Tabela " + coluna.tabela + ": " + std::to_string(quantos) + " texto(s) da coluna " +
                              coluna.nome + " cortado(s) em " + std::to_string(kLarguraAjustada) +
                              " caracteres; inteiros, estão em AtualizaWKD.rejeitados.jsonl";
    ctx.Tela().Erro(
        TErroDaExecucao::NosDois({.mensagem = linha, .falha = TFalha::LinhaRecusada}, coluna.tabela, kPasso));
}

/// Keeps the texts that the conversion is about to cut, and tells of them.
void GuardaCortados(TContexto& ctx, const TColunaLonga& coluna) {
    const std::vector<std::string> chave = ctx.Conexao().ChavePrimaria(coluna.tabela).colunas;
    std::vector<std::string> lidas = {coluna.nome};
    for (const auto& nome : chave) lidas.push_back(ctx.Dialeto().Identificador(nome));
    TWKDQuery q(ctx.Conexao(),
                "select " + Junta(lidas, ",") + " from " + coluna.tabela + Longos(coluna, ctx.Dialeto()));
    TRejeitados rejeitados(ctx, coluna.tabela, kPasso);
    std::int64_t quantos = 0;
    for (q.Open(); !q.Eof(); q.Next(), ++quantos) {
        TPares valores;
        for (const auto& nome : chave) valores.emplace_back(nome, q.Campo(nome));
        const std::string erro = "texto cortado em " + std::to_string(kLarguraAjustada) + " caracteres";
        if (!rejeitados.Valor(valores, erro, coluna.nome, q.Campo(coluna.nome)))
            throw TErroConhecido(TFalha::Arquivo, "A coluna " + coluna.nome + " da tabela " + coluna.tabela +
                                                      " não foi ajustada: os textos cortados não puderam ser "
                                                      "guardados");
    }
    LevaRejeitadosAoDisco(ctx);
    RelataCortados(ctx, coluna, quantos);
}

void Executa(TContexto& ctx, const TColunaLonga& coluna, const std::string& comando, std::string_view apagada = "",
             const std::function<void()>& antes = nullptr) {
    ctx.dm.EsqueceColunas(coluna.tabela);
    if (const auto feito = ExecutaNaColuna(ctx, coluna.tabela, apagada, comando, antes); !feito) throw feito.Erro();
}

/// The column goes in the transaction that has copied it, and the texts come back over nothing that others have
/// written: who writes meanwhile waits.
void Ajusta(TContexto& ctx, const TColunaLonga& coluna) {
    const int primeiro = PrimeiroComando(ctx, coluna);
    if (primeiro == 0) return;
    Marca(ctx, coluna);
    const auto comandos = Comandos(coluna, ctx.Banco());
    const auto guarda = [&] {
        GuardaCortados(ctx, coluna);
        ctx.Conexao().Prepara(comandos[kCopia])->Executa();
    };
    const auto guardaNovos = [&] {
        ctx.Conexao()
            .Prepara("update " + coluna.tabela + " set CAMPO_MIGRA_WKD = " + coluna.nome + " where " + coluna.nome +
                     " is not null")
            ->Executa();
    };
    for (std::size_t i = static_cast<std::size_t>(primeiro) - 1; i < comandos.size(); ++i) {
        if (i == kCopia) ++i;
        if (i == kApaga)
            Executa(ctx, coluna, comandos[i], coluna.nome, guarda);
        else
            Executa(ctx, coluna, comandos[i], "", i == kVolta ? guardaNovos : std::function<void()>());
    }
    ctx.dm.EsqueceColunas(coluna.tabela);
    Desmarca(ctx, coluna);
}

void AlargaCodInterno(TContexto& ctx, const std::string& tabela, TIndicesGuardados& guardados) {
    TTB& tb = ctx.dm.Atualiza;
    guardados.GuardaIndices(ctx.Conexao().Indices(tabela));
    guardados.GuardaChave({});
    tb.ApagaInidices(tabela, true);
    tb.ApagaInidices(tabela, false);
    const auto mudada = ExecutaNaColuna(ctx, tabela, "COD_INTERNO",
                                        "ALTER TABLE " + tabela + " ALTER COLUMN COD_INTERNO nvarchar(25) not null");
    if (!mudada) throw mudada.Erro();
    ctx.dm.EsqueceColunas(tabela);
}

/// The keys and indexes that are not made otherwise.
void Devolve(TContexto& ctx, std::vector<TIndicesGuardados>& guardados) {
    for (auto& daTabela : guardados) {
        ctx.dm.Atualiza.CriaIndiceSecundarios(daTabela.Tabela());
        daTabela.Devolve();
    }
}

}  // namespace

void AjustaCamposStringMaior2000(TContexto& ctx) {
    auto colunas = ColunasLongas(ctx);
    std::stable_partition(colunas.begin(), colunas.end(),
                          [&](const TColunaLonga& coluna) { return Interrompida(ctx, coluna); });
    for (const auto& coluna : colunas) Ajusta(ctx, coluna);
}

std::vector<TTextoParaAjustar> TextosParaAjustar(TContexto& ctx) {
    std::vector<TTextoParaAjustar> textos;
    for (const auto& coluna : ColunasLongas(ctx)) {
        const int primeiro = PrimeiroComando(ctx, coluna);
        if (primeiro == 0) continue;
        const auto comandos = Comandos(coluna, ctx.Banco());
        const auto cortados = primeiro > 2
                                  ? 0
                                  : ContaRegistros(ctx.Conexao(), "select count(*) as total from " + coluna.tabela +
                                                                      Longos(coluna, ctx.Dialeto()));
        textos.push_back({coluna.tabela, coluna.nome, {comandos.begin() + primeiro - 1, comandos.end()}, cortados});
    }
    return textos;
}

void AtualizaCamposVarCharparaNvarChar(TContexto& ctx) {
    if (ctx.Banco() != TTipoBanco::tbSQLServer || LeParametro(kSecaoUmaVez, kNvarchar, "NAO", &ctx.Conexao()) == "SIM")
        return;

    const std::array<std::string, 3> tabelas = {"TSAIDA_FATURADO", "TSAIDA_FATURADO_INDU", "TSAIDA_FATURADO_INDU_PA"};
    std::vector<TIndicesGuardados> guardados;
    try {
        for (const auto& tabela : tabelas) AlargaCodInterno(ctx, tabela, guardados.emplace_back(ctx, tabela, true));
        for (const auto& tabela : tabelas)
            if (!ctx.dm.Atualiza.CriaIndicePrimario(tabela, false)) throw TErroConhecido(ctx.dm.Atualiza.Erro());
    } catch (...) {
        Devolve(ctx, guardados);
        throw;
    }
    Devolve(ctx, guardados);
    for (auto& daTabela : guardados) daTabela.Esquece();
    GravaParametro(kSecaoUmaVez, kNvarchar, "SIM", &ctx.Conexao());
}

}  // namespace wkd
