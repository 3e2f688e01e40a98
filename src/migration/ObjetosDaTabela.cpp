#include "ObjetosDaTabela.h"

#include <algorithm>
#include <map>

#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

bool Firebird(TContexto& ctx) { return ctx.Banco() == TTipoBanco::tbInterbase; }
bool SqlServer(TContexto& ctx) { return ctx.Banco() == TTipoBanco::tbSQLServer; }
bool Conhecido(TContexto& ctx) { return Firebird(ctx) || SqlServer(ctx); }

std::vector<std::string> Nomes(TContexto& ctx, std::string_view sql, const std::string& tabela) {
    std::vector<std::string> nomes;
    TWKDQuery q(ctx.Conexao(), sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

void IndicesForaDoDicionario(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    std::vector<std::string> conhecidos;
    if (ctx.dm.ExisteTabela("SINDSEC"))
        conhecidos = Nomes(ctx, "select NOME from SINDSEC where Upper(ARQUIVO) = :tabela", tabela);
    for (const TIndice& indice : ctx.Conexao().Indices(tabela)) {
        const bool conhecido = std::ranges::any_of(
            conhecidos, [&](const std::string& nome) { return IgualSemCaixa(Apara(nome), indice.nome); });
        if (indice.restricao.empty() && !conhecido) comandos.push_back(ComandoCriaIndice(indice, tabela, ctx.Banco()));
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

/// GRANT, DENY, and REVOKE of a column of a table that is granted as a whole.
void PermissoesSqlServer(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    TWKDQuery q(ctx.Conexao(),
                "select p.state as ESTADO, p.permission_name as PRIVILEGIO, u.name as FAVORECIDO,"
                " col_name(p.major_id, p.minor_id) as COLUNA from sys.database_permissions p"
                " join sys.database_principals u on u.principal_id = p.grantee_principal_id"
                " where p.class = 1 and p.major_id = object_id(:tabela) order by p.minor_id, p.permission_name");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string estado = q.Texto("ESTADO"), coluna = q.Texto("COLUNA");
        const bool revoga = estado == "R";
        comandos.push_back((estado == "D" ? "deny "
                            : revoga      ? "revoke "
                                          : "grant ") +
                           Minusculas(Apara(q.Texto("PRIVILEGIO"))) +
                           (coluna.empty() ? "" : " (" + Identificador(coluna, ctx.Banco()) + ")") + " on " + tabela +
                           (revoga ? " from " : " to ") + Identificador(q.Texto("FAVORECIDO"), ctx.Banco()) +
                           (estado == "W" ? " with grant option" : ""));
    }
}

void PermissoesFirebird(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
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
    if (SqlServer(ctx))
        PermissoesSqlServer(ctx, tabela, comandos);
    else
        PermissoesFirebird(ctx, tabela, comandos);
    return comandos;
}

std::vector<TGatilho> GatilhosDaTabela(TContexto& ctx, const std::string& tabela) {
    std::vector<TGatilho> gatilhos;
    if (!Conhecido(ctx)) return gatilhos;
    TWKDQuery q(ctx.Conexao(),
                SqlServer(ctx)
                    ? "select g.name as NOME, m.definition as FONTE from sys.triggers g join sys.sql_modules m"
                      " on m.object_id = g.object_id where g.parent_id = object_id(:tabela) order by g.name"
                    : "select rdb$trigger_name as NOME, cast(rdb$trigger_source as blob sub_type 0) as FONTE"
                      " from rdb$triggers where rdb$relation_name = :tabela and coalesce(rdb$system_flag, 0) = 0"
                      " order by 1");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next())
        gatilhos.push_back({std::string(AparaFim(q.Texto("NOME"))), TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    return gatilhos;
}

std::vector<std::string> RestricoesDaTabela(TContexto& ctx, const std::string& tabela) {
    if (!Conhecido(ctx)) return {};
    return Nomes(ctx,
                 SqlServer(ctx)
                     ? "select name as NOME from sys.foreign_keys where parent_object_id = object_id(:tabela)"
                       " union select name from sys.check_constraints where parent_object_id = object_id(:tabela)"
                       " union select name from sys.key_constraints where type = 'UQ'"
                       " and parent_object_id = object_id(:tabela) order by 1"
                     : "select rdb$constraint_name as NOME from rdb$relation_constraints"
                       " where rdb$relation_name = :tabela"
                       " and rdb$constraint_type in ('FOREIGN KEY', 'UNIQUE', 'CHECK') order by 1",
                 tabela);
}

std::vector<std::string> DependentesDaTabela(TContexto& ctx, const std::string& tabela) {
    if (!Conhecido(ctx)) return {};
    return Nomes(ctx,
                 SqlServer(ctx)
                     ? "select distinct case o.type when 'V' then 'visão ' when 'TR' then 'gatilho '"
                       " when 'P' then 'procedimento ' else 'função ' end + o.name as NOME"
                       " from sys.sql_expression_dependencies d join sys.objects o on o.object_id = d.referencing_id"
                       " where d.referenced_id = object_id(:tabela) and o.parent_object_id <> object_id(:tabela)"
                       " union select 'chave estrangeira ' + f.name + ' de ' + object_name(f.parent_object_id)"
                       " from sys.foreign_keys f where f.referenced_object_id = object_id(:tabela)"
                       " and f.parent_object_id <> f.referenced_object_id"
                     : "select distinct case d.rdb$dependent_type when 1 then 'visão ' when 2 then 'gatilho '"
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

namespace {

/// On SQL Server every statement is an extended property of the backup table; one holds at most 7,500 bytes.
constexpr std::string_view kPropriedade = "WKD_DEVOLUCAO_";

std::string NumeroDaPropriedade(std::size_t numero) {
    const auto texto = std::to_string(numero);
    return std::string(kPropriedade) + std::string(6 - std::min<std::size_t>(6, texto.size()), '0') + texto;
}

void GuardaPropriedades(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    const std::size_t antes = DevolucoesGuardadas(ctx, backup).size();
    const std::string tabela =
        ", @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE',"
        " @level1name = N" +
        Aspas(backup);
    const std::string esquema = "declare @esquema sysname = schema_name() exec ";
    TTransacao transacao(ctx.Conexao());
    for (std::size_t i = 0; i < antes; ++i)
        ctx.Conexao()
            .Prepara(esquema + "sp_dropextendedproperty @name = N" + Aspas(NumeroDaPropriedade(i)) + tabela)
            ->Executa();
    for (std::size_t i = 0; i < comandos.size(); ++i)
        ctx.Conexao()
            .Prepara(esquema + "sp_addextendedproperty @name = N" + Aspas(NumeroDaPropriedade(i)) + ", @value = N" +
                     Aspas(comandos[i]) + tabela)
            ->Executa();
    transacao.Commit();
}

std::vector<std::string> PropriedadesGuardadas(TContexto& ctx, const std::string& backup) {
    return Nomes(ctx,
                 "select cast(value as nvarchar(4000)) as NOME from sys.extended_properties where class = 1"
                 " and major_id = object_id(:tabela) and minor_id = 0 and name like '" +
                     std::string(kPropriedade) + "%' order by name",
                 backup);
}

}  // namespace

void GuardaDevolucoes(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    if (!Conhecido(ctx) || comandos == DevolucoesGuardadas(ctx, backup)) return;
    if (SqlServer(ctx)) return GuardaPropriedades(ctx, backup, comandos);
    ExecutaComando(ctx.Conexao(),
                   "comment on table " + backup + " is " + (comandos.empty() ? "null" : Aspas(Junta(comandos, "\n"))));
}

std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup) {
    if (!Conhecido(ctx)) return {};
    if (SqlServer(ctx)) return PropriedadesGuardadas(ctx, backup);
    TWKDQuery q(ctx.Conexao(),
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relations"
                " where rdb$relation_name = :tabela");
    q.Param("tabela", backup).Open();
    return q.Eof() ? std::vector<std::string>() : Divide(TextoDeBytes(q.Campo("TEXTO").ComoBytes()), '\n');
}

}  // namespace wkd
