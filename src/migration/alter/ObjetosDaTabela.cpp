#include "alter/ObjetosDaTabela.h"

#include <algorithm>
#include <map>
#include <span>

#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

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

/// By index name.
std::map<std::string, TIndiceComoEra> IndicesSqlServer(TContexto& ctx, const std::string& tabela) {
    struct TPartes {
        std::string inicio, fim;
        std::vector<std::string> nomes, colunas, incluidas;
    };
    TWKDQuery q(ctx.Conexao(),
                "select i.name as NOME, cast(i.is_unique as int) as UNICO, i.filter_definition as FILTRO,"
                " col_name(k.object_id, k.column_id) as COLUNA, cast(k.is_descending_key as int) as DESCE,"
                " cast(k.is_included_column as int) as INCLUIDA from sys.indexes i join sys.index_columns k"
                " on k.object_id = i.object_id and k.index_id = i.index_id where i.object_id = object_id(:tabela)"
                " and i.type in (1, 2) and (k.key_ordinal > 0 or k.is_included_column = 1)"
                " order by i.name, k.key_ordinal, k.index_column_id");
    q.Param("tabela", tabela).Open();
    std::map<std::string, TPartes> partes;
    for (; !q.Eof(); q.Next()) {
        const std::string nome = q.Texto("NOME"), coluna = Identificador(q.Texto("COLUNA"), ctx.Banco());
        const bool unico = q.Inteiro("UNICO") == 1, incluida = q.Inteiro("INCLUIDA") == 1;
        auto& doIndice = partes[ChaveDeNome(nome)];
        doIndice.inicio = (unico ? "create unique index " : "create index ") + Identificador(nome, ctx.Banco());
        doIndice.nomes.push_back(q.Texto("COLUNA"));
        if (const auto filtro = q.Texto("FILTRO"); !filtro.empty()) doIndice.fim = " where " + filtro;
        if (incluida)
            doIndice.incluidas.push_back(coluna);
        else
            doIndice.colunas.push_back(coluna + (q.Inteiro("DESCE") == 1 ? " desc" : ""));
    }
    std::map<std::string, TIndiceComoEra> indices;
    for (const auto& [nome, p] : partes)
        indices[nome] = {p.inicio + " on " + tabela + " (" + Junta(p.colunas, ",") + ")" +
                             (p.incluidas.empty() ? "" : " include (" + Junta(p.incluidas, ",") + ")") + p.fim,
                         p.nomes};
    return indices;
}

void IndicesForaDoDicionario(TContexto& ctx, const std::string& nome, std::vector<std::string>& comandos) {
    const std::string tabela = Maiusculas(nome);
    std::vector<std::string> conhecidos, inativos;
    if (ctx.dm.ExisteTabela("SINDSEC"))
        conhecidos = Nomes(ctx, "select NOME from SINDSEC where ARQUIVO = :tabela", nome);
    if (Firebird(ctx))
        inativos = Nomes(ctx,
                         "select rdb$index_name as NOME from rdb$indices where rdb$relation_name = :tabela"
                         " and rdb$index_inactive = 1",
                         tabela);
    auto indices = ctx.Conexao().Indices(tabela);
    std::erase_if(indices, [&](const TIndice& indice) {
        return !indice.restricao.empty() || std::ranges::any_of(conhecidos, [&](const std::string& outro) {
            return IgualSemCaixa(Apara(outro), indice.nome);
        });
    });
    for (const auto& indice : IndicesComoEram(ctx, tabela, indices)) comandos.push_back(indice.comando);
    for (const TIndice& indice : indices)
        if (std::ranges::find(inativos, indice.nome) != inativos.end())
            comandos.push_back("alter index " + Identificador(indice.nome, ctx.Banco()) + " inactive");
}

void ColunasCalculadas(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    for (const auto& coluna : ctx.Conexao().Colunas(tabela))
        if (!coluna.expressao.empty())
            comandos.push_back("alter table " + tabela + " add " + Identificador(coluna.nome, ctx.Banco()) +
                               (SqlServer(ctx) ? " as (" : " computed by (") + coluna.expressao + ")");
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

/// A row for each column of a key: its name and kind, the column, the other table with its column, what follows.
constexpr std::string_view kChavesSqlServer[] = {
    "select u.name as NOME, 'unique' as TIPO, col_name(i.object_id, i.column_id) as COLUNA, '' as OUTRA, '' as DELA,"
    " '' as FIM from sys.key_constraints u join sys.index_columns i on i.object_id = u.parent_object_id"
    " and i.index_id = u.unique_index_id where u.type = 'UQ' and u.parent_object_id = object_id(:tabela)"
    " order by u.name, i.key_ordinal",
    "select f.name as NOME, 'foreign key' as TIPO, col_name(k.parent_object_id, k.parent_column_id) as COLUNA,"
    " object_name(k.referenced_object_id) as OUTRA, col_name(k.referenced_object_id, k.referenced_column_id) as DELA,"
    " ' on update ' + replace(lower(f.update_referential_action_desc), '_', ' ') + ' on delete ' +"
    " replace(lower(f.delete_referential_action_desc), '_', ' ') as FIM from sys.foreign_keys f"
    " join sys.foreign_key_columns k on k.constraint_object_id = f.object_id"
    " where f.parent_object_id = object_id(:tabela) order by f.name, k.constraint_column_id"};

/// RESTRICT is what the server notes where nothing was said.
constexpr std::string_view kChavesFirebird[] = {
    "select c.rdb$constraint_name as NOME, lower(trim(c.rdb$constraint_type)) as TIPO, s.rdb$field_name as COLUNA,"
    " u.rdb$relation_name as OUTRA, d.rdb$field_name as DELA,"
    " iif(r.rdb$update_rule <> 'RESTRICT', ' on update ' || lower(trim(r.rdb$update_rule)), '') ||"
    " iif(r.rdb$delete_rule <> 'RESTRICT', ' on delete ' || lower(trim(r.rdb$delete_rule)), '') as FIM"
    " from rdb$relation_constraints c join rdb$index_segments s on s.rdb$index_name = c.rdb$index_name"
    " left join rdb$ref_constraints r on r.rdb$constraint_name = c.rdb$constraint_name"
    " left join rdb$relation_constraints u on u.rdb$constraint_name = r.rdb$const_name_uq"
    " left join rdb$index_segments d on d.rdb$index_name = u.rdb$index_name and d.rdb$field_position ="
    " s.rdb$field_position where c.rdb$relation_name = :tabela and c.rdb$constraint_type in ('UNIQUE', 'FOREIGN KEY')"
    " order by c.rdb$constraint_type desc, c.rdb$constraint_name, s.rdb$field_position"};

/// "constraint NOME " for ALTER TABLE; a name that the server gave, it gives again.
std::string Batizada(TContexto& ctx, const std::string& nome) {
    const bool doServidor = Firebird(ctx) && nome.starts_with("INTEG_");
    return doServidor ? "" : "constraint " + Identificador(nome, ctx.Banco()) + " ";
}

void Chaves(TContexto& ctx, std::string_view sql, const std::string& tabela, std::vector<std::string>& restricoes) {
    struct TChave {
        std::string nome, tipo, outra, fim;
        std::vector<std::string> colunas, delas;
    };
    std::vector<TChave> chaves;
    TWKDQuery q(ctx.Conexao(), sql);
    q.Param("tabela", tabela).Open();
    const auto nomeLido = [&](std::string_view campo) { return std::string(AparaFim(q.Texto(campo))); };
    for (; !q.Eof(); q.Next()) {
        if (chaves.empty() || chaves.back().nome != nomeLido("NOME"))
            chaves.push_back({nomeLido("NOME"), nomeLido("TIPO"), nomeLido("OUTRA"), q.Texto("FIM"), {}, {}});
        chaves.back().colunas.push_back(Identificador(nomeLido("COLUNA"), ctx.Banco()));
        chaves.back().delas.push_back(Identificador(nomeLido("DELA"), ctx.Banco()));
    }
    for (const auto& chave : chaves)
        restricoes.push_back(Batizada(ctx, chave.nome) + chave.tipo + " (" + Junta(chave.colunas, ",") + ")" +
                             (chave.outra.empty() ? ""
                                                  : " references " + Identificador(chave.outra, ctx.Banco()) + " (" +
                                                        Junta(chave.delas, ",") + ")" + chave.fim));
}

constexpr std::string_view kConferidasSqlServer =
    "select name as NOME, 'check ' + definition as FONTE from sys.check_constraints"
    " where parent_object_id = object_id(:tabela) order by name";

constexpr std::string_view kConferidasFirebird =
    "select c.rdb$constraint_name as NOME, cast((select first 1 g.rdb$trigger_source from rdb$check_constraints k"
    " join rdb$triggers g on g.rdb$trigger_name = k.rdb$trigger_name where k.rdb$constraint_name ="
    " c.rdb$constraint_name) as blob sub_type 0) as FONTE from rdb$relation_constraints c"
    " where c.rdb$relation_name = :tabela and c.rdb$constraint_type = 'CHECK' order by 1";

/// Unique keys before the foreign keys that may mean them.
void Restricoes(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    std::vector<std::string> restricoes;
    for (const auto sql : SqlServer(ctx) ? std::span<const std::string_view>(kChavesSqlServer) : kChavesFirebird)
        Chaves(ctx, sql, tabela, restricoes);
    for (const auto& [nome, fonte] : Fontes(ctx, SqlServer(ctx) ? kConferidasSqlServer : kConferidasFirebird, tabela))
        restricoes.push_back(Batizada(ctx, nome) + fonte);
    for (const auto& restricao : restricoes) comandos.push_back("alter table " + tabela + " add " + restricao);
}

void ComentariosFirebird(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    const std::string sql =
        "select 'table' as TIPO, rdb$relation_name as NOME, cast(rdb$description as blob sub_type 0) as FONTE"
        " from rdb$relations where rdb$relation_name = :tabela and rdb$description is not null"
        " union all select 'column', rdb$field_name, cast(rdb$description as blob sub_type 0) from rdb$relation_fields"
        " where rdb$relation_name = :tabela and rdb$description is not null"
        " union all select 'index', rdb$index_name, cast(rdb$description as blob sub_type 0) from rdb$indices"
        " where rdb$relation_name = :tabela and rdb$description is not null";
    TWKDQuery q(ctx.Conexao(), sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string tipo(AparaFim(q.Texto("TIPO")));
        const std::string nome = Identificador(AparaFim(q.Texto("NOME")), ctx.Banco());
        comandos.push_back("comment on " + tipo + " " +
                           (tipo == "table"    ? tabela
                            : tipo == "column" ? tabela + "." + nome
                                               : nome) +
                           " is " + Aspas(TextoDeBytes(q.Campo("FONTE").ComoBytes())));
    }
}

/// Extended properties of the table and of its columns; MS_Description is what the server's tools call a comment.
void PropriedadesSqlServer(TContexto& ctx, const std::string& tabela, std::vector<std::string>& comandos) {
    TWKDQuery q(ctx.Conexao(),
                "select p.name as NOME, cast(p.value as nvarchar(4000)) as TEXTO, col_name(p.major_id, p.minor_id) as"
                " COLUNA from sys.extended_properties p where p.class = 1 and p.major_id = object_id(:tabela)"
                " order by p.minor_id, p.name");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string coluna = q.Texto("COLUNA");
        comandos.push_back("declare @esquema sysname = schema_name() exec sp_addextendedproperty @name = N" +
                           Aspas(q.Texto("NOME")) + ", @value = N" + Aspas(q.Texto("TEXTO")) +
                           ", @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE',"
                           " @level1name = N" +
                           Aspas(tabela) +
                           (coluna.empty() ? "" : ", @level2type = N'COLUMN', @level2name = N" + Aspas(coluna)));
    }
}

constexpr std::string_view kPropriedadesSqlServer =
    "select c.name as NOME, case when c.is_identity = 1 then 'identity(' + cast(i.seed_value as nvarchar(40)) + ',' +"
    " cast(i.increment_value as nvarchar(40)) + ')' else 'collate ' + c.collation_name end as FONTE"
    " from sys.columns c left join sys.identity_columns i on i.object_id = c.object_id and i.column_id = c.column_id"
    " where c.object_id = object_id(:tabela) and (c.is_identity = 1 or c.collation_name <>"
    " (select d.collation_name from sys.databases d where d.name = db_name())) order by c.column_id";

constexpr std::string_view kPropriedadesFirebird =
    "select rf.rdb$field_name as NOME, iif(rf.rdb$identity_type is null, '', 'generated by default as identity ') ||"
    " iif(c.rdb$collation_name is null, '', 'collate ' || trim(c.rdb$collation_name)) as FONTE"
    " from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source"
    " left join rdb$character_sets s on s.rdb$character_set_id = f.rdb$character_set_id"
    " left join rdb$collations c on c.rdb$character_set_id = f.rdb$character_set_id and c.rdb$collation_id ="
    " coalesce(rf.rdb$collation_id, f.rdb$collation_id) and c.rdb$collation_name <> s.rdb$default_collate_name"
    " where rf.rdb$relation_name = :tabela and (rf.rdb$identity_type is not null or c.rdb$collation_name is not null)"
    " order by rf.rdb$field_position";

}  // namespace

std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome) {
    std::vector<std::string> comandos;
    if (!Conhecido(ctx)) return comandos;
    const std::string tabela = Maiusculas(nome);
    ColunasCalculadas(ctx, tabela, comandos);
    IndicesForaDoDicionario(ctx, nome, comandos);
    Restricoes(ctx, tabela, comandos);
    if (SqlServer(ctx))
        PermissoesSqlServer(ctx, tabela, comandos);
    else
        PermissoesFirebird(ctx, tabela, comandos);
    if (SqlServer(ctx))
        PropriedadesSqlServer(ctx, tabela, comandos);
    else
        ComentariosFirebird(ctx, tabela, comandos);
    return comandos;
}

std::vector<TIndiceComoEra> IndicesComoEram(TContexto& ctx, const std::string& tabela,
                                            const std::vector<TIndice>& indices) {
    std::vector<TIndiceComoEra> comoEram;
    std::map<std::string, TIndiceComoEra> doServidor;
    if (SqlServer(ctx) && !indices.empty()) doServidor = IndicesSqlServer(ctx, tabela);
    for (const TIndice& indice : indices) {
        const auto detalhado = doServidor.find(ChaveDeNome(indice.nome));
        comoEram.push_back(detalhado == doServidor.end()
                               ? TIndiceComoEra{ComandoCriaIndice(indice, tabela, ctx.Banco()), indice.colunas}
                               : detalhado->second);
    }
    return comoEram;
}

std::vector<TFonte> GatilhosDaTabela(TContexto& ctx, const std::string& tabela) {
    if (Firebird(ctx)) return GatilhosFirebird(ctx, tabela);
    return Fontes(ctx,
                  "select g.name as NOME, m.definition as FONTE from sys.triggers g join sys.sql_modules m"
                  " on m.object_id = g.object_id where g.parent_id = object_id(:tabela) order by g.name",
                  tabela);
}

std::vector<TFonte> PropriedadesPerdidas(TContexto& ctx, const std::string& tabela) {
    auto propriedades = Fontes(ctx, SqlServer(ctx) ? kPropriedadesSqlServer : kPropriedadesFirebird, tabela);
    const auto conhecidas = ctx.dm.Atualiza.ColunasDoDicionario(tabela);
    for (const auto& fisica : ctx.Conexao().Colunas(tabela)) {
        const auto conhecida =
            std::ranges::find_if(conhecidas, [&](const auto& c) { return IgualSemCaixa(c.nome, fisica.nome); });
        if (!fisica.padrao.empty() && conhecida != conhecidas.end() && conhecida->valorPadrao.empty())
            propriedades.push_back({fisica.nome, "default " + fisica.padrao});
    }
    return propriedades;
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

}  // namespace wkd
