#include <algorithm>
#include <utility>

#include "dialect/DialetoSqlServer.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

std::map<std::string, TIndiceComoEra> TDialetoSqlServer::IndicesComoEram(TConnection& conexao,
                                                                         const std::string& tabela) const {
    struct TPartes {
        std::string inicio, fim;
        std::vector<std::string> nomes, colunas, incluidas;
    };
    TWKDQuery q(conexao,
                "select i.name as NOME, cast(i.is_unique as int) as UNICO, i.filter_definition as FILTRO,"
                " col_name(k.object_id, k.column_id) as COLUNA, cast(k.is_descending_key as int) as DESCE,"
                " cast(k.is_included_column as int) as INCLUIDA from sys.indexes i join sys.index_columns k"
                " on k.object_id = i.object_id and k.index_id = i.index_id where i.object_id = object_id(:tabela)"
                " and i.type in (1, 2) and (k.key_ordinal > 0 or k.is_included_column = 1)"
                " order by i.name, k.key_ordinal, k.index_column_id");
    q.Param("tabela", tabela).Open();
    std::map<std::string, TPartes> partes;
    for (; !q.Eof(); q.Next()) {
        const std::string nome = q.Texto("NOME"), coluna = Identificador(q.Texto("COLUNA"));
        const bool unico = q.Inteiro("UNICO") == 1, incluida = q.Inteiro("INCLUIDA") == 1;
        auto& doIndice = partes[ChaveDeNome(nome)];
        doIndice.inicio = (unico ? "create unique index " : "create index ") + Identificador(nome);
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

std::vector<std::string> TDialetoSqlServer::Restricoes(TConnection& conexao, const std::string& tabela) const {
    static constexpr std::string_view kChaves[] = {
        "select u.name as NOME, 'unique' as TIPO, col_name(i.object_id, i.column_id) as COLUNA, '' as OUTRA, '' as "
        "DELA,"
        " '' as FIM from sys.key_constraints u join sys.index_columns i on i.object_id = u.parent_object_id"
        " and i.index_id = u.unique_index_id where u.type = 'UQ' and u.parent_object_id = object_id(:tabela)"
        " order by u.name, i.key_ordinal",
        "select f.name as NOME, 'foreign key' as TIPO, col_name(k.parent_object_id, k.parent_column_id) as COLUNA,"
        " object_name(k.referenced_object_id) as OUTRA, col_name(k.referenced_object_id, k.referenced_column_id) as "
        "DELA,"
        " ' on update ' + replace(lower(f.update_referential_action_desc), '_', ' ') + ' on delete ' +"
        " replace(lower(f.delete_referential_action_desc), '_', ' ') as FIM from sys.foreign_keys f"
        " join sys.foreign_key_columns k on k.constraint_object_id = f.object_id"
        " where f.parent_object_id = object_id(:tabela) order by f.name, k.constraint_column_id"};
    static constexpr std::string_view kConferidas =
        "select name as NOME, 'check ' + definition as FONTE from sys.check_constraints"
        " where parent_object_id = object_id(:tabela) order by name";
    return RestricoesDoCatalogo(conexao, tabela, kChaves, kConferidas);
}

/// GRANT, DENY, and REVOKE of a column of a table that is granted as a whole.
std::vector<std::string> TDialetoSqlServer::Permissoes(TConnection& conexao, const std::string& tabela) const {
    std::vector<std::string> comandos;
    TWKDQuery q(conexao,
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
                           (coluna.empty() ? "" : " (" + Identificador(coluna) + ")") + " on " + tabela +
                           (revoga ? " from " : " to ") + Identificador(q.Texto("FAVORECIDO")) +
                           (estado == "W" ? " with grant option" : ""));
    }
    return comandos;
}

/// Extended properties of the table and of its columns; MS_Description is what the server's tools call a comment.
std::vector<std::string> TDialetoSqlServer::Comentarios(TConnection& conexao, const std::string& tabela) const {
    std::vector<std::string> comandos;
    TWKDQuery q(conexao,
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
    return comandos;
}

std::vector<TFonte> TDialetoSqlServer::Propriedades(TConnection& conexao, const std::string& tabela) const {
    static constexpr std::string_view kSql =
        "select c.name as NOME, case when c.is_identity = 1 then 'identity(' + cast(i.seed_value as nvarchar(40)) + "
        "',' +"
        " cast(i.increment_value as nvarchar(40)) + ')' else 'collate ' + c.collation_name end as FONTE"
        " from sys.columns c left join sys.identity_columns i on i.object_id = c.object_id and i.column_id = "
        "c.column_id"
        " where c.object_id = object_id(:tabela) and (c.is_identity = 1 or c.collation_name <>"
        " (select d.collation_name from sys.databases d where d.name = db_name())) order by c.column_id";
    return FontesDoCatalogo(conexao, kSql, tabela);
}

std::vector<TFonte> TDialetoSqlServer::Gatilhos(TConnection& conexao, const std::string& tabela) const {
    return FontesDoCatalogo(conexao,
                            "select g.name as NOME, m.definition as FONTE from sys.triggers g join sys.sql_modules m"
                            " on m.object_id = g.object_id where g.parent_id = object_id(:tabela) order by g.name",
                            tabela);
}

std::vector<std::string> TDialetoSqlServer::Dependentes(TConnection& conexao, const std::string& tabela) const {
    return NomesDoCatalogo(
        conexao,
        "select distinct case o.type when 'V' then 'visão ' when 'TR' then 'gatilho '"
        " when 'P' then 'procedimento ' else 'função ' end + o.name as NOME"
        " from sys.sql_expression_dependencies d join sys.objects o on o.object_id = d.referencing_id"
        " where d.referenced_id = object_id(:tabela) and o.parent_object_id <> object_id(:tabela)"
        " union select 'chave estrangeira ' + f.name + ' de ' + object_name(f.parent_object_id)"
        " from sys.foreign_keys f where f.referenced_object_id = object_id(:tabela)"
        " and f.parent_object_id <> f.referenced_object_id",
        tabela);
}

TContorno TDialetoSqlServer::Padrao(TConnection& conexao, const std::string& tabela, std::string_view coluna) const {
    TContorno contorno;
    TWKDQuery q(conexao,
                "select d.name as NOME, d.definition as TEXTO from sys.default_constraints d join sys.columns c"
                " on c.object_id = d.parent_object_id and c.column_id = d.parent_column_id"
                " where d.parent_object_id = object_id(:tabela) and upper(c.name) = :coluna");
    q.Param("tabela", tabela).Param("coluna", Maiusculas(coluna)).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string nome = Identificador(q.Texto("NOME"));
        contorno.tira.push_back("alter table " + tabela + " drop constraint " + nome);
        contorno.devolve.push_back("alter table " + tabela + " add constraint " + nome + " default " +
                                   q.Texto("TEXTO") + " for " + Identificador(coluna));
    }
    return contorno;
}

// Mark and notes are extended properties of the table.

namespace {

constexpr std::string_view kMarca = "WKD_BACKUP";
constexpr std::string_view kNota = "WKD_DEVOLUCAO_";
/// A property holds at most 7,500 bytes; what goes on with the one before begins with the mark of a continuation.
constexpr std::size_t kBytesDaPropriedade = 3'000;
constexpr char kContinua = '\x1f';

void MudaPropriedade(TConnection& conexao, const std::string& tabela, std::string_view procedimento,
                     std::string_view nome, const std::string& valor) {
    conexao
        .Prepara("declare @esquema sysname = schema_name() exec " + std::string(procedimento) + " @name = N" +
                 Aspas(nome) + valor +
                 ", @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE', @level1name = N" +
                 Aspas(tabela))
        ->Executa();
}

void PoePropriedade(TConnection& conexao, const std::string& tabela, bool existe, std::string_view nome,
                    std::string_view valor) {
    MudaPropriedade(conexao, tabela, existe ? "sp_updateextendedproperty" : "sp_addextendedproperty", nome,
                    ", @value = N" + Aspas(valor));
}

/// Values of the table's properties whose name begins so, by name.
std::vector<std::string> ValoresDasPropriedades(TConnection& conexao, const std::string& tabela,
                                                std::string_view inicio) {
    std::vector<std::string> textos;
    TWKDQuery q(conexao,
                "select cast(value as nvarchar(4000)) as NOME from sys.extended_properties where class = 1"
                " and major_id = object_id(:tabela) and minor_id = 0 and name like '" +
                    std::string(inicio) + "%' order by name");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) textos.push_back(q.Texto("NOME"));
    return textos;
}

std::string NomeDaNota(std::size_t numero) {
    const auto texto = std::to_string(numero);
    return std::string(kNota) + std::string(6 - std::min<std::size_t>(6, texto.size()), '0') + texto;
}

}  // namespace

std::string_view TDialetoSqlServer::ComandoObjetos() const {
    return "select case o.type when 'V' then 'visao' when 'TR' then 'gatilho' when 'P' then 'procedimento'"
           " when 'SO' then 'gerador' else 'funcao' end as TIPO, o.name as NOME, coalesce(t.name, '') as TABELA"
           " from sys.objects o left join sys.tables t on t.object_id = o.parent_object_id"
           " where o.type in ('V', 'TR', 'P', 'SO', 'FN', 'IF', 'TF') and o.is_ms_shipped = 0 order by 1, 2";
}

std::string_view TDialetoSqlServer::ComandoConectados() const {
    return "select login_name as USUARIO, coalesce(host_name, '') as COMPUTADOR, coalesce(program_name, '') as "
           "PROGRAMA,"
           " convert(varchar(16), login_time, 120) as DESDE from sys.dm_exec_sessions"
           " where is_user_process = 1 and database_id = db_id() and session_id <> @@spid order by login_time";
}

std::string TDialetoSqlServer::Marca(TConnection& conexao, const std::string& tabela) const {
    const auto marcas = ValoresDasPropriedades(conexao, tabela, kMarca);
    return marcas.empty() ? "" : marcas.front();
}

void TDialetoSqlServer::GravaMarca(TConnection& conexao, const std::string& tabela, std::string_view marca) const {
    PoePropriedade(conexao, tabela, !Marca(conexao, tabela).empty(), kMarca, marca);
}

std::vector<std::string> TDialetoSqlServer::TabelasMarcadas(TConnection& conexao, std::string_view marca) const {
    std::vector<std::string> nomes;
    TWKDQuery q(conexao,
                "select object_name(major_id) as NOME from sys.extended_properties where class = 1 and minor_id = 0"
                " and name = '" +
                    std::string(kMarca) + "' and cast(value as nvarchar(4000)) = '" + std::string(marca) + "'");
    for (q.Open(); !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

namespace {

void LeBanco(TConnection& conexao, TSaude& saude) {
    TWKDQuery q(conexao,
                "select compatibility_level as NIVEL, recovery_model_desc as RECUPERACAO, snapshot_isolation_state as"
                " INSTANTANEO, user_access as ACESSO from sys.databases where name = db_name()");
    q.Open();
    if (q.Eof()) return;
    saude.compatibilidade = static_cast<int>(q.Inteiro("NIVEL"));
    saude.recuperacao = q.Texto("RECUPERACAO");
    saude.instantaneo = q.Inteiro("INSTANTANEO") == 1;
    saude.umSoUsuario = q.Inteiro("ACESSO") == 1;
}

/// From 2012 on, and for those who may see the server's state.
void LeLog(TConnection& conexao, TSaude& saude) {
    TWKDQuery q(conexao, "select cast(used_log_space_in_percent as float) as USADO from sys.dm_db_log_space_usage");
    q.Open();
    if (!q.Eof()) saude.logUsado = q.Campo("USADO").ComoDouble();
}

/// Where "José" and "Jose" are one key.
void LeSemAcentos(TConnection& conexao, TSaude& saude) {
    TWKDQuery q(conexao,
                "select distinct object_name(i.object_id) + '.' + c.name as NOME from sys.indexes i"
                " join sys.index_columns k on k.object_id = i.object_id and k.index_id = i.index_id"
                " join sys.columns c on c.object_id = k.object_id and c.column_id = k.column_id"
                " join sys.tables t on t.object_id = i.object_id"
                " where i.is_unique = 1 and k.key_ordinal > 0 and c.collation_name like '%[_]AI%' order by 1");
    for (q.Open(); !q.Eof(); q.Next()) saude.semAcentos.push_back(q.Texto("NOME"));
}

}  // namespace

TSaude TDialetoSqlServer::Saude(TConnection& conexao) const {
    static constexpr std::pair<std::string_view, void (*)(TConnection&, TSaude&)> kPerguntas[] = {
        {"o estado do banco", LeBanco}, {"o uso do log de transações", LeLog}, {"as chaves sem acentos", LeSemAcentos}};
    TSaude saude;
    for (const auto& [nome, le] : kPerguntas) {
        try {
            le(conexao, saude);
        } catch (const TErroBanco& erro) {  // the user may not, or the version has it not
            if (erro.ConexaoPerdida()) throw;
            saude.naoSabidos.emplace_back(nome);
        }
    }
    return saude;
}

std::vector<std::string> TDialetoSqlServer::Notas(TConnection& conexao, const std::string& tabela) const {
    std::vector<std::string> notas;
    for (const auto& pedaco : ValoresDasPropriedades(conexao, tabela, kNota)) {
        if (pedaco.starts_with(kContinua) && !notas.empty())
            notas.back() += pedaco.substr(1);
        else
            notas.push_back(pedaco);
    }
    return notas;
}

void TDialetoSqlServer::GravaNotas(TConnection& conexao, const std::string& tabela,
                                   const std::vector<std::string>& notas) const {
    std::vector<std::string> pedacos;
    for (const auto& nota : notas)
        for (bool continua = false; auto& pedaco : PedacosDoTexto(nota, kBytesDaPropriedade))
            pedacos.push_back((std::exchange(continua, true) ? std::string(1, kContinua) : std::string()) + pedaco);
    const std::size_t antes = ValoresDasPropriedades(conexao, tabela, kNota).size();
    TTransacao transacao(conexao);
    for (std::size_t i = 0; i < antes; ++i)
        MudaPropriedade(conexao, tabela, "sp_dropextendedproperty", NomeDaNota(i), "");
    for (std::size_t i = 0; i < pedacos.size(); ++i) PoePropriedade(conexao, tabela, false, NomeDaNota(i), pedacos[i]);
    transacao.Commit();
}

}  // namespace wkd
