#include "ObjetosDaTabela.h"

#include <algorithm>
#include <map>

#include "MarcaDaBackup.h"
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

void IndicesForaDoDicionario(TContexto& ctx, const std::string& nome, std::vector<std::string>& comandos) {
    const std::string tabela = Maiusculas(nome);
    std::vector<std::string> conhecidos;
    if (ctx.dm.ExisteTabela("SINDSEC"))
        conhecidos = Nomes(ctx, "select NOME from SINDSEC where ARQUIVO = :tabela", nome);
    for (const TIndice& indice : ctx.Conexao().Indices(tabela)) {
        const bool conhecido = std::ranges::any_of(
            conhecidos, [&](const std::string& outro) { return IgualSemCaixa(Apara(outro), indice.nome); });
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

std::vector<TFonte> Fontes(TContexto& ctx, std::string_view sql, const std::string& tabela) {
    std::vector<TFonte> fontes;
    if (!Conhecido(ctx)) return fontes;
    TWKDQuery q(ctx.Conexao(), sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next())
        fontes.push_back({std::string(AparaFim(q.Texto("NOME"))), TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    return fontes;
}

/// "before insert or update": the number of a trigger's type is one less than a bit for "after" and, above it, two bits
/// for each event (Firebird's Language Reference, RDB$TRIGGERS).
std::string MomentoDoGatilho(std::int64_t tipo) {
    static constexpr const char* kEventos[] = {"", "insert", "update", "delete"};
    const std::int64_t bits = tipo + 1;
    std::string texto;
    for (int lugar = 1; lugar < 6; lugar += 2)
        if (const auto evento = (bits >> lugar) & 3)
            texto += (texto.empty() ? "" : " or ") + std::string(kEventos[evento]);
    return (bits & 1 ? "after " : "before ") + texto;
}

/// The catalogue keeps the source from "as" on.
std::vector<TFonte> GatilhosFirebird(TContexto& ctx, const std::string& tabela) {
    std::vector<TFonte> fontes;
    TWKDQuery q(ctx.Conexao(),
                "select rdb$trigger_name as NOME, cast(rdb$trigger_source as blob sub_type 0) as FONTE,"
                " rdb$trigger_type as TIPO, rdb$trigger_sequence as LUGAR, coalesce(rdb$trigger_inactive, 0) as INATIVO"
                " from rdb$triggers where rdb$relation_name = :tabela and coalesce(rdb$system_flag, 0) = 0 order by 1");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string nome(AparaFim(q.Texto("NOME")));
        fontes.push_back({nome, "create trigger " + Identificador(nome, ctx.Banco()) + " for " + tabela +
                                    (q.Inteiro("INATIVO") == 1 ? " inactive " : " active ") +
                                    MomentoDoGatilho(q.Inteiro("TIPO")) + " position " + q.Texto("LUGAR") + "\n" +
                                    TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    }
    return fontes;
}

constexpr std::string_view kRestricoesSqlServer =
    "select f.name as NOME, 'foreign key (' + stuff((select ',' + col_name(k.parent_object_id, k.parent_column_id)"
    " from sys.foreign_key_columns k where k.constraint_object_id = f.object_id order by k.constraint_column_id"
    " for xml path('')), 1, 1, '') + ') references ' + object_name(f.referenced_object_id) as FONTE"
    " from sys.foreign_keys f where f.parent_object_id = object_id(:tabela)"
    " union all select name, 'check ' + definition from sys.check_constraints where parent_object_id ="
    " object_id(:tabela)"
    " union all select u.name, 'unique (' + stuff((select ',' + col_name(i.object_id, i.column_id)"
    " from sys.index_columns i where i.object_id = u.parent_object_id and i.index_id = u.unique_index_id"
    " order by i.key_ordinal for xml path('')), 1, 1, '') + ')' from sys.key_constraints u where u.type = 'UQ'"
    " and u.parent_object_id = object_id(:tabela) order by 1";

constexpr std::string_view kRestricoesFirebird =
    "select c.rdb$constraint_name as NOME, cast(case c.rdb$constraint_type when 'CHECK' then"
    " (select first 1 g.rdb$trigger_source from rdb$check_constraints k join rdb$triggers g"
    " on g.rdb$trigger_name = k.rdb$trigger_name where k.rdb$constraint_name = c.rdb$constraint_name)"
    " else lower(trim(c.rdb$constraint_type)) || ' (' || (select list(trim(s.rdb$field_name)) from"
    " rdb$index_segments s where s.rdb$index_name = c.rdb$index_name) || ')' || coalesce((select ' references ' ||"
    " trim(u.rdb$relation_name) || ' (' || (select list(trim(s.rdb$field_name)) from rdb$index_segments s"
    " where s.rdb$index_name = u.rdb$index_name) || ') on update ' || lower(trim(r.rdb$update_rule)) ||"
    " ' on delete ' || lower(trim(r.rdb$delete_rule)) from rdb$ref_constraints r join rdb$relation_constraints u"
    " on u.rdb$constraint_name = r.rdb$const_name_uq where r.rdb$constraint_name = c.rdb$constraint_name), '')"
    " end as blob sub_type 0) as FONTE from rdb$relation_constraints c where c.rdb$relation_name = :tabela"
    " and c.rdb$constraint_type in ('FOREIGN KEY', 'UNIQUE', 'CHECK') order by 1";

}  // namespace

std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome) {
    std::vector<std::string> comandos;
    if (!Conhecido(ctx)) return comandos;
    const std::string tabela = Maiusculas(nome);
    IndicesForaDoDicionario(ctx, nome, comandos);
    if (SqlServer(ctx))
        PermissoesSqlServer(ctx, tabela, comandos);
    else
        PermissoesFirebird(ctx, tabela, comandos);
    return comandos;
}

std::vector<TFonte> GatilhosDaTabela(TContexto& ctx, const std::string& tabela) {
    if (Firebird(ctx)) return GatilhosFirebird(ctx, tabela);
    return Fontes(ctx,
                  "select g.name as NOME, m.definition as FONTE from sys.triggers g join sys.sql_modules m"
                  " on m.object_id = g.object_id where g.parent_id = object_id(:tabela) order by g.name",
                  tabela);
}

std::vector<TFonte> RestricoesDaTabela(TContexto& ctx, const std::string& tabela) {
    return Fontes(ctx, SqlServer(ctx) ? kRestricoesSqlServer : kRestricoesFirebird, tabela);
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
    ComentaBackup(ctx.Conexao(), backup, comandos);
}

std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup) {
    if (!Conhecido(ctx)) return {};
    if (SqlServer(ctx)) return PropriedadesGuardadas(ctx, backup);
    return ComentarioDaBackup(ctx.Conexao(), backup);
}

}  // namespace wkd
