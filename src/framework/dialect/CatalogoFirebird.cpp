#include <algorithm>

#include "dialect/DialetoFirebird.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

std::string Favorecido(TWKDQuery& q, const TDialeto& dialeto) {
    static const std::map<std::int64_t, std::string> kTipos = {
        {1, "view "}, {2, "trigger "}, {5, "procedure "}, {8, "user "}, {13, "role "}};
    const std::string nome(AparaFim(q.Texto("FAVORECIDO")));
    if (nome == "PUBLIC") return "public";
    const auto tipo = kTipos.find(q.Inteiro("TIPO"));
    return (tipo == kTipos.end() ? "" : tipo->second) + dialeto.Identificador(nome);
}

}  // namespace

std::vector<std::string> TDialetoFirebird::Permissoes(TConnection& conexao, const std::string& tabela) const {
    std::vector<std::string> comandos;
    static const std::map<std::string, std::string> kPrivilegios = {
        {"S", "select"}, {"I", "insert"}, {"U", "update"}, {"D", "delete"}, {"R", "references"}};
    TWKDQuery q(conexao,
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
        comandos.push_back("grant " + privilegio->second + (coluna.empty() ? "" : " (" + Identificador(coluna) + ")") +
                           " on " + tabela + " to " + Favorecido(q, *this) +
                           (q.Inteiro("REPASSA") == 1 ? " with grant option" : ""));
    }
    return comandos;
}

namespace {

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

}  // namespace

/// The catalogue keeps the source from "as" on.
std::vector<TFonte> TDialetoFirebird::Gatilhos(TConnection& conexao, const std::string& tabela) const {
    std::vector<TFonte> fontes;
    TWKDQuery q(conexao,
                "select rdb$trigger_name as NOME, cast(rdb$trigger_source as blob sub_type 0) as FONTE,"
                " rdb$trigger_type as TIPO, rdb$trigger_sequence as LUGAR, coalesce(rdb$trigger_inactive, 0) as INATIVO"
                " from rdb$triggers where rdb$relation_name = :tabela and coalesce(rdb$system_flag, 0) = 0 order by 1");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string nome(AparaFim(q.Texto("NOME")));
        fontes.push_back({nome, "create trigger " + Identificador(nome) + " for " + tabela +
                                    (q.Inteiro("INATIVO") == 1 ? " inactive " : " active ") +
                                    MomentoDoGatilho(q.Inteiro("TIPO")) + " position " + q.Texto("LUGAR") + "\n" +
                                    TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    }
    return fontes;
}

std::vector<std::string> TDialetoFirebird::Restricoes(TConnection& conexao, const std::string& tabela) const {
    // RESTRICT is what the server notes where nothing was said.
    static constexpr std::string_view kChaves[] = {
        "select c.rdb$constraint_name as NOME, lower(trim(c.rdb$constraint_type)) as TIPO, s.rdb$field_name as COLUNA,"
        " u.rdb$relation_name as OUTRA, d.rdb$field_name as DELA,"
        " iif(r.rdb$update_rule <> 'RESTRICT', ' on update ' || lower(trim(r.rdb$update_rule)), '') ||"
        " iif(r.rdb$delete_rule <> 'RESTRICT', ' on delete ' || lower(trim(r.rdb$delete_rule)), '') as FIM"
        " from rdb$relation_constraints c join rdb$index_segments s on s.rdb$index_name = c.rdb$index_name"
        " left join rdb$ref_constraints r on r.rdb$constraint_name = c.rdb$constraint_name"
        " left join rdb$relation_constraints u on u.rdb$constraint_name = r.rdb$const_name_uq"
        " left join rdb$index_segments d on d.rdb$index_name = u.rdb$index_name and d.rdb$field_position ="
        " s.rdb$field_position where c.rdb$relation_name = :tabela and c.rdb$constraint_type in ('UNIQUE', 'FOREIGN "
        "KEY')"
        " order by c.rdb$constraint_type desc, c.rdb$constraint_name, s.rdb$field_position"};
    static constexpr std::string_view kConferidas =
        "select c.rdb$constraint_name as NOME, cast((select first 1 g.rdb$trigger_source from rdb$check_constraints k"
        " join rdb$triggers g on g.rdb$trigger_name = k.rdb$trigger_name where k.rdb$constraint_name ="
        " c.rdb$constraint_name) as blob sub_type 0) as FONTE from rdb$relation_constraints c"
        " where c.rdb$relation_name = :tabela and c.rdb$constraint_type = 'CHECK' order by 1";
    return RestricoesDoCatalogo(conexao, tabela, kChaves, kConferidas);
}

std::vector<std::string> TDialetoFirebird::Comentarios(TConnection& conexao, const std::string& tabela) const {
    std::vector<std::string> comandos;
    const std::string sql =
        "select 'table' as TIPO, rdb$relation_name as NOME, cast(rdb$description as blob sub_type 0) as FONTE"
        " from rdb$relations where rdb$relation_name = :tabela and rdb$description is not null"
        " union all select 'column', rdb$field_name, cast(rdb$description as blob sub_type 0) from rdb$relation_fields"
        " where rdb$relation_name = :tabela and rdb$description is not null"
        " union all select 'index', rdb$index_name, cast(rdb$description as blob sub_type 0) from rdb$indices"
        " where rdb$relation_name = :tabela and rdb$description is not null";
    TWKDQuery q(conexao, sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) {
        const std::string tipo(AparaFim(q.Texto("TIPO")));
        const std::string nome = Identificador(AparaFim(q.Texto("NOME")));
        comandos.push_back("comment on " + tipo + " " +
                           (tipo == "table"    ? tabela
                            : tipo == "column" ? tabela + "." + nome
                                               : nome) +
                           " is " + Aspas(TextoDeBytes(q.Campo("FONTE").ComoBytes())));
    }
    return comandos;
}

std::vector<TFonte> TDialetoFirebird::Propriedades(TConnection& conexao, const std::string& tabela) const {
    const bool identidade = Capacidades().Tem(TRecurso::Identidade);
    const std::string sql =
        "select rf.rdb$field_name as NOME, " +
        std::string(identidade ? "iif(rf.rdb$identity_type is null, '', 'generated by default as identity ') || "
                               : "") +
        "iif(c.rdb$collation_name is null, '', 'collate ' || trim(c.rdb$collation_name)) as FONTE"
        " from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source"
        " left join rdb$character_sets s on s.rdb$character_set_id = f.rdb$character_set_id"
        " left join rdb$collations c on c.rdb$character_set_id = f.rdb$character_set_id and c.rdb$collation_id ="
        " coalesce(rf.rdb$collation_id, f.rdb$collation_id) and c.rdb$collation_name <> s.rdb$default_collate_name"
        " where rf.rdb$relation_name = :tabela and (" +
        (identidade ? "rf.rdb$identity_type is not null or " : "") +
        "c.rdb$collation_name is not null) order by rf.rdb$field_position";
    return FontesDoCatalogo(conexao, sql, tabela);
}

std::vector<std::string> TDialetoFirebird::Dependentes(TConnection& conexao, const std::string& tabela) const {
    return NomesDoCatalogo(
        conexao,
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

std::string_view TDialetoFirebird::ComandoObjetos() const {
    return "select trim('visao') as TIPO, trim(rdb$relation_name) as NOME, '' as TABELA from rdb$relations"
           " where rdb$view_blr is not null and coalesce(rdb$system_flag, 0) = 0"
           " union all select trim('gatilho'), trim(rdb$trigger_name), coalesce(trim(rdb$relation_name), '')"
           " from rdb$triggers where coalesce(rdb$system_flag, 0) = 0"
           " union all select trim('procedimento'), trim(rdb$procedure_name), '' from rdb$procedures"
           " where coalesce(rdb$system_flag, 0) = 0"
           " union all select trim('funcao'), trim(rdb$function_name), '' from rdb$functions"
           " where coalesce(rdb$system_flag, 0) = 0"
           " union all select trim('gerador'), trim(rdb$generator_name), '' from rdb$generators"
           " where coalesce(rdb$system_flag, 0) = 0 order by 1, 2";
}

std::string_view TDialetoFirebird::ComandoConectados() const {
    if (!Capacidades().Tem(TRecurso::MonitorCompleto))
        return "select mon$user as USUARIO, coalesce(mon$remote_address, '') as COMPUTADOR,"
               " coalesce(mon$remote_process, '') as PROGRAMA, cast(mon$timestamp as varchar(24)) as DESDE"
               " from mon$attachments where mon$attachment_id <> current_connection order by mon$timestamp";
    return "select mon$user as USUARIO, coalesce(mon$remote_host, mon$remote_address, '') as COMPUTADOR,"
           " coalesce(mon$remote_process, '') as PROGRAMA, cast(mon$timestamp as varchar(24)) as DESDE"
           " from mon$attachments where mon$system_flag = 0 and mon$attachment_id <> current_connection"
           " order by mon$timestamp";
}

std::string TDialetoFirebird::ConjuntoDoBanco(TConnection& conexao) const {
    TWKDQuery q(conexao, "select rdb$character_set_name as CONJUNTO from rdb$database");
    q.Open();
    return std::string(Apara(q.Texto("CONJUNTO")));
}

TSaude TDialetoFirebird::Saude(TConnection& conexao) const {
    constexpr std::int64_t kUmSo = 2;  // 1 lets the owner in as often as he likes
    TSaude saude;
    try {
        TWKDQuery q(conexao, "select mon$shutdown_mode as MODO from mon$database");
        q.Open();
        if (!q.Eof()) saude.umSoUsuario = q.Inteiro("MODO") >= kUmSo;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        saude.naoSabidos.emplace_back("quantas conexões o banco aceita");
    }
    return saude;
}

std::map<std::string, std::int64_t> TDialetoFirebird::Formatos(TConnection& conexao) const {
    std::map<std::string, std::int64_t> formatos;
    TWKDQuery q(conexao,
                "select rdb$relation_name as NOME, rdb$format as FORMATO from rdb$relations"
                " where coalesce(rdb$system_flag, 0) = 0 and rdb$format is not null");
    for (q.Open(); !q.Eof(); q.Next()) formatos[ChaveDeNome(q.Texto("NOME"))] = q.Inteiro("FORMATO");
    return formatos;
}

// Mark and notes are comments: of the table the mark and the first piece of the notes, of its columns the others.

namespace {

constexpr std::string_view kInicio = "AtualizaWKD: backup ";
/// Between the pieces of the table's comment, and between the notes, each of which may have lines of its own.
constexpr char kMarca = '\x1f';
/// A literal has at most 65,535 bytes.
constexpr std::size_t kBytesDoComentario = 30'000;

/// The table's comment, from the mark on, in its pieces.
std::vector<std::string> Pedacos(TConnection& conexao, const std::string& tabela) {
    TWKDQuery q(conexao,
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relations"
                " where rdb$relation_name = :tabela");
    q.Param("tabela", Maiusculas(tabela)).Open();
    return q.Eof() ? std::vector<std::string>() : Divide(TextoDeBytes(q.Campo("TEXTO").ComoBytes()), kMarca);
}

bool TemMarca(const std::vector<std::string>& pedacos) {
    return !pedacos.empty() && pedacos.front().starts_with(kInicio);
}

void Comenta(TConnection& conexao, const std::string& objeto, const std::string& texto) {
    conexao.Prepara("comment on " + objeto + " is " + (texto.empty() ? "null" : Aspas(texto)))->Executa();
}

void ComentaTabela(TConnection& conexao, const std::string& tabela, const std::vector<std::string>& pedacos) {
    Comenta(conexao, "table " + tabela, Junta(pedacos, std::string(1, kMarca)));
}

/// The table's own behind its mark, then those of its columns in their order.
std::vector<std::string> TextosDasNotas(TConnection& conexao, const std::string& tabela) {
    auto pedacos = Pedacos(conexao, tabela);
    if (TemMarca(pedacos)) pedacos.erase(pedacos.begin());
    std::vector<std::string> textos = {Junta(pedacos, std::string(1, kMarca))};
    TWKDQuery q(conexao,
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relation_fields"
                " where rdb$relation_name = :tabela and rdb$description is not null order by rdb$field_position");
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) textos.push_back(TextoDeBytes(q.Campo("TEXTO").ComoBytes()));
    return textos;
}

}  // namespace

std::string TDialetoFirebird::Marca(TConnection& conexao, const std::string& tabela) const {
    const auto pedacos = Pedacos(conexao, tabela);
    return TemMarca(pedacos) ? pedacos.front().substr(kInicio.size()) : "";
}

void TDialetoFirebird::GravaMarca(TConnection& conexao, const std::string& tabela, std::string_view marca) const {
    auto pedacos = Pedacos(conexao, tabela);
    if (!TemMarca(pedacos)) pedacos.emplace(pedacos.begin());
    pedacos.front() = std::string(kInicio) + std::string(marca);
    ComentaTabela(conexao, tabela, pedacos);
}

std::vector<std::string> TDialetoFirebird::TabelasMarcadas(TConnection& conexao, std::string_view marca) const {
    std::vector<std::string> nomes;
    TWKDQuery q(conexao, "select rdb$relation_name as NOME from rdb$relations where rdb$description starting with " +
                             Aspas(std::string(kInicio) + std::string(marca)));
    for (q.Open(); !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

std::vector<std::string> TDialetoFirebird::Notas(TConnection& conexao, const std::string& tabela) const {
    const auto texto = Junta(TextosDasNotas(conexao, tabela), "");
    return texto.empty() ? std::vector<std::string>() : Divide(texto, kMarca);
}

void TDialetoFirebird::GravaNotas(TConnection& conexao, const std::string& tabela,
                                  const std::vector<std::string>& notas) const {
    auto pedacos = PedacosDoTexto(Junta(notas, std::string(1, kMarca)), kBytesDoComentario);
    const auto colunas = conexao.Colunas(tabela);
    if (pedacos.size() > colunas.size() + 1)
        throw TErroConhecido(TFalha::Conversao, "comentários, índices e permissões demais para guardar em " + tabela);
    pedacos.resize(std::max(pedacos.size(), TextosDasNotas(conexao, tabela).size()));
    TTransacao transacao(conexao);
    auto daTabela = Pedacos(conexao, tabela);
    daTabela.resize(TemMarca(daTabela) ? 1 : 0);
    if (!pedacos.front().empty()) daTabela.push_back(pedacos.front());
    ComentaTabela(conexao, tabela, daTabela);
    for (std::size_t i = 1; i < pedacos.size(); ++i)
        Comenta(conexao, "column " + tabela + "." + Identificador(colunas.at(i - 1).nome), pedacos[i]);
    transacao.Commit();
}

}  // namespace wkd
