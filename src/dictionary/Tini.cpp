#include "Tini.h"

#include "WKDQuery.h"

namespace wkd {

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
    if (alterados == 0) executa("INSERT INTO TINI(SESSAO ,CHAVE ,VALOR) VALUES (:pSESSAO,:pCHAVE, :pVALOR)");
}

}  // namespace wkd
