#include "layout/Tini.h"

#include <algorithm>
#include <span>

#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kInclui = "INSERT INTO TINI(SESSAO ,CHAVE ,VALOR) VALUES (:pSESSAO,:pCHAVE, :pVALOR)";
constexpr std::size_t kPorComando = 50;  // keys; a statement's length has a limit

std::string Lista(std::span<const std::string> textos) {
    std::vector<std::string> literais;
    for (const auto& texto : textos) literais.push_back(Aspas(texto));
    return "(" + Junta(literais, ", ") + ")";
}

}  // namespace

std::string LeParametro(std::string_view secao, std::string_view chave, std::string_view padrao, TConnection* conexao) {
    if (!conexao) return "";
    TWKDQuery q(*conexao, "select * from tini WHERE CHAVE = :pCHAVE AND SESSAO =:pSESSAO");
    q.Param("pSESSAO", secao).Param("pCHAVE", chave).Open();
    const std::string valor = q.Eof() ? "" : q.Texto("VALOR");
    return valor.empty() ? std::string(padrao) : valor;
}

void GravaParametro(std::string_view secao, std::string_view chave, std::string_view valor, TConnection* conexao) {
    if (!conexao) return;
    const auto executa = [&](std::string_view sql) {
        TWKDQuery q(*conexao, sql);
        return q.Param("pSESSAO", secao).Param("pCHAVE", chave).Param("pVALOR", valor).ExecSQL();
    };
    const auto alterados = executa(
        "Update TINI set SESSAO = :pSESSAO, CHAVE = :pCHAVE, VALOR = :pVALOR WHERE"
        " CHAVE = :pCHAVE AND SESSAO =:pSESSAO");
    if (alterados == 0) executa(kInclui);
}

std::vector<TParametro> Parametros(TConnection& conexao, std::initializer_list<std::string_view> secoes) {
    const std::vector<std::string> nomes(secoes.begin(), secoes.end());
    TWKDQuery q(conexao, "select sessao, chave, valor from tini where sessao in " + Lista(nomes) + " order by chave");
    std::vector<TParametro> parametros;
    for (q.Open(); !q.Eof(); q.Next())
        parametros.push_back({std::string(AparaFim(q.Texto("SESSAO"))), q.Texto("CHAVE"), q.Texto("VALOR")});
    return parametros;
}

void IncluiParametros(TConnection& conexao, const std::vector<TParametro>& parametros) {
    if (parametros.empty()) return;
    TWKDQuery q(conexao, kInclui);
    for (const auto& [secao, chave, valor] : parametros)
        q.Param("pSESSAO", secao).Param("pCHAVE", chave).Param("pVALOR", valor).ExecSQL();
}

void ApagaParametros(TConnection& conexao, std::string_view secao, const std::vector<std::string>& chaves) {
    for (std::span<const std::string> resto = chaves; !resto.empty();) {
        const auto parte = resto.first(std::min(kPorComando, resto.size()));
        resto = resto.subspan(parte.size());
        TWKDQuery(conexao, "delete from tini where sessao = " + Aspas(secao) + " and chave in " + Lista(parte))
            .ExecSQL();
    }
}

std::unique_ptr<TComando> PreparaValor(TConnection& conexao, std::string_view secao, std::string_view chave) {
    auto comando = conexao.Prepara("update tini set valor = :pVALOR where sessao = :pSESSAO and chave = :pCHAVE");
    comando->Atribui("pSESSAO", secao);
    comando->Atribui("pCHAVE", chave);
    return comando;
}

}  // namespace wkd
