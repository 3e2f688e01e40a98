#include "ObjetosDaTabela.h"

#include <algorithm>
#include <map>

#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

bool Conhecido(TContexto& ctx) { return ctx.Banco() == TTipoBanco::tbInterbase; }

std::vector<std::string> Nomes(TContexto& ctx, std::string_view sql, const std::string& tabela) {
    std::vector<std::string> nomes;
    TWKDQuery q(ctx.Conexao(), sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

std::string CriaIndice(const TIndice& indice, const std::string& tabela, TTipoBanco banco) {
    std::vector<std::string> colunas;
    for (const auto& coluna : indice.colunas) colunas.push_back(Identificador(coluna, banco));
    return std::string("create ") + (indice.unico ? "unique " : "") + (indice.descendente ? "descending " : "") +
           "index " + Identificador(indice.nome, banco) + " on " + tabela +
           (indice.expressao.empty() ? " (" + Junta(colunas, ",") + ")" : " computed by (" + indice.expressao + ")");
}

void IndicesForaDoDicionario(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    std::vector<std::string> conhecidos;
    if (ctx.dm.ExisteTabela("SINDSEC"))
        conhecidos = Nomes(ctx, "select NOME from SINDSEC where Upper(ARQUIVO) = :tabela", tabela);
    for (const TIndice& indice : ctx.Conexao().Indices(tabela)) {
        const bool conhecido = std::ranges::any_of(
            conhecidos, [&](const std::string& nome) { return IgualSemCaixa(Apara(nome), indice.nome); });
        if (indice.restricao.empty() && !conhecido) comandos.push_back(CriaIndice(indice, tabela, ctx.Banco()));
    }
}

std::string Favorecido(TWKDQuery& q, TTipoBanco banco) {
    static const std::map<std::int64_t, std::string> kTipos = {
        {1, "view "}, {2, "trigger "}, {5, "procedure "}, {8, "user "}, {13, "role "}};
    const std::string nome(AparaFim(q.Texto("FAVORECIDO")));
    if (nome == "PUBLIC") return "public";
    const auto tipo = kTipos.find(q.Inteiro("TIPO"));
    return (tipo == kTipos.end() ? "" : tipo->second) + Identificador(nome, banco);
}

void Permissoes(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    static const std::map<std::string, std::string> kPrivilegios = {
        {"S", "select"}, {"I", "insert"}, {"U", "update"}, {"D", "delete"}, {"R", "references"}};
    TWKDQuery q(ctx.Conexao(),
                "select p.rdb$user as FAVORECIDO, p.rdb$user_type as TIPO, p.rdb$privilege as PRIVILEGIO,"
                " coalesce(p.rdb$grant_option, 0) as REPASSA, p.rdb$field_name as COLUNA"
                " from rdb$user_privileges p join rdb$relations r on r.rdb$relation_name = p.rdb$relation_name"
                " where p.rdb$relation_name = :tabela and p.rdb$object_type = 0"
                " and not (p.rdb$user = r.rdb$owner_name and p.rdb$user_type = 8)");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const auto privilegio = kPrivilegios.find(std::string(Apara(q.Texto("PRIVILEGIO"))));
        if (privilegio == kPrivilegios.end()) continue;
        const std::string coluna(AparaFim(q.Texto("COLUNA")));
        comandos.push_back("grant " + privilegio->second +
                           (coluna.empty() ? "" : " (" + Identificador(coluna, ctx.Banco()) + ")") + " on " + tabela +
                           " to " + Favorecido(q, ctx.Banco()) +
                           (q.Inteiro("REPASSA") == 1 ? " with grant option" : ""));
    }
}

}  // namespace

std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& tabela) {
    std::vector<std::string> comandos;
    if (!Conhecido(ctx)) return comandos;
    IndicesForaDoDicionario(ctx, tabela, comandos);
    Permissoes(ctx, tabela, comandos);
    return comandos;
}

std::vector<TGatilho> GatilhosDaTabela(TContexto& ctx, const std::string& tabela) {
    std::vector<TGatilho> gatilhos;
    if (!Conhecido(ctx)) return gatilhos;
    TWKDQuery q(
        ctx.Conexao(),
        "select rdb$trigger_name as NOME, cast(rdb$trigger_source as blob sub_type 0) as FONTE from rdb$triggers"
        " where rdb$relation_name = :tabela and coalesce(rdb$system_flag, 0) = 0 order by 1");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next())
        gatilhos.push_back({std::string(AparaFim(q.Texto("NOME"))), TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    return gatilhos;
}

std::vector<std::string> RestricoesDaTabela(TContexto& ctx, const std::string& tabela) {
    if (!Conhecido(ctx)) return {};
    return Nomes(ctx,
                 "select rdb$constraint_name as NOME from rdb$relation_constraints where rdb$relation_name = :tabela"
                 " and rdb$constraint_type in ('FOREIGN KEY', 'UNIQUE', 'CHECK') order by 1",
                 tabela);
}

std::vector<std::string> DependentesDaTabela(TContexto& ctx, const std::string& tabela) {
    if (!Conhecido(ctx)) return {};
    return Nomes(ctx,
                 "select distinct case d.rdb$dependent_type when 1 then 'visão ' when 2 then 'gatilho '"
                 " when 5 then 'procedimento ' when 15 then 'função ' when 19 then 'pacote ' else '' end"
                 " || trim(d.rdb$dependent_name) as NOME from rdb$dependencies d"
                 " where d.rdb$depended_on_name = :tabela and d.rdb$dependent_type in (1, 2, 5, 15, 19)"
                 " and not exists (select 1 from rdb$triggers g where g.rdb$trigger_name = d.rdb$dependent_name"
                 " and g.rdb$relation_name = :tabela)"
                 " union select 'chave estrangeira ' || trim(f.rdb$constraint_name) || ' de ' ||"
                 " trim(f.rdb$relation_name) from rdb$ref_constraints r"
                 " join rdb$relation_constraints f on f.rdb$constraint_name = r.rdb$constraint_name"
                 " join rdb$relation_constraints u on u.rdb$constraint_name = r.rdb$const_name_uq"
                 " where u.rdb$relation_name = :tabela and f.rdb$relation_name <> :tabela",
                 tabela);
}

void GuardaDevolucoes(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    if (!Conhecido(ctx) || comandos == DevolucoesGuardadas(ctx, backup)) return;
    ctx.Conexao().ExecuteDirect("comment on table " + backup + " is " +
                                (comandos.empty() ? "null" : Aspas(Junta(comandos, "\n"))));
}

std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup) {
    if (!Conhecido(ctx)) return {};
    TWKDQuery q(ctx.Conexao(),
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relations"
                " where rdb$relation_name = :tabela");
    q.Param("tabela", backup).Open();
    return q.Eof() ? std::vector<std::string>() : Divide(TextoDeBytes(q.Campo("TEXTO").ComoBytes()), '\n');
}

}  // namespace wkd
