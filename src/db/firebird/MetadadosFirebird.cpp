#include "firebird/MetadadosFirebird.h"

#include <ibase.h>

#include "firebird/ComandoFirebird.h"
#include "firebird/SessaoFirebird.h"
#include "values/Texto.h"

namespace wkd {
namespace {

/// Two columns for a source text: its bytes, or a blob for a long one. Most are short, and the narrower the rows, the
/// more of them come with each turn to the server. Legacy databases keep sources in another character set than the
/// catalogue says, so the server must not look into them.
std::string Fonte(const std::string& coluna) {
    return "iif(octet_length(" + coluna + ") <= 60, cast(" + coluna +
           " as varchar(60) character set octets), null), iif(octet_length(" + coluna + ") > 60, cast(" + coluna +
           " as blob sub_type 0), null)";
}

enum : std::size_t {
    cTabela,
    cNome,
    cTipo,
    cSubtipo,
    cBytes,
    cCaracteres,
    cPrecisao,
    cEscala,
    cConjunto,
    cConjuntoDoBanco,
    cRequerido,
    cPadrao,
    cPadraoDoDominio = cPadrao + 2,
    cExpressao = cPadraoDoDominio + 2
};

std::string SqlDeColunas(const std::string& onde) {
    return "select rf.rdb$relation_name, rf.rdb$field_name, f.rdb$field_type, f.rdb$field_sub_type, f.rdb$field_length,"
           " f.rdb$character_length, f.rdb$field_precision, f.rdb$field_scale, cs.rdb$character_set_name,"
           " (select coalesce(d.rdb$character_set_name, 'NONE') from rdb$database d),"
           " iif(rf.rdb$null_flag = 1 or f.rdb$null_flag = 1, 1, 0), " +
           Fonte("rf.rdb$default_source") + ", " + Fonte("f.rdb$default_source") + ", " +
           Fonte("f.rdb$computed_source") +
           " from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source"
           " left join rdb$character_sets cs on cs.rdb$character_set_id = f.rdb$character_set_id " +
           onde + " order by rf.rdb$relation_name, rf.rdb$field_position";
}

const std::string kTabelaComum =
    "r.rdb$system_flag = 0 and r.rdb$view_blr is null and coalesce(r.rdb$relation_type, 0) = 0"
    " and r.rdb$relation_name <> '" +
    std::string(kTabelaDaTrava) + "'";

std::string LeFonte(TComando& linha, std::size_t coluna) {
    for (const auto parte : {coluna, coluna + 1})
        if (const auto valor = linha.Valor(parte); !valor.Nulo()) return TextoDeBytes(valor.ComoBytes());
    return {};
}

/// "DEFAULT 'A'" or "= 'A'" without its first word.
std::string SemPalavraDefault(std::string_view fonte) {
    fonte = Apara(fonte);
    if (IgualSemCaixa(fonte.substr(0, 7), "default"))
        fonte.remove_prefix(7);
    else if (fonte.starts_with('='))
        fonte.remove_prefix(1);
    return std::string(Apara(fonte));
}

struct TTipoFisico {
    std::int64_t tipo, subtipo, bytes, caracteres, precisao;
    int escala;
};

std::string TipoDeTexto(std::string_view nome, const TColunaFisica& coluna, const std::string& conjuntoDoBanco) {
    std::string tipo = std::string(nome) + "(" + std::to_string(coluna.tamanho) + ")";
    if (coluna.conjunto != conjuntoDoBanco) tipo += " character set " + coluna.conjunto;
    return tipo;
}

void DefineTexto(TColunaFisica& coluna, std::string_view nome, const TTipoFisico& f,
                 const std::string& conjuntoDoBanco) {
    coluna.tipo = coluna.conjunto == "OCTETS" ? TTipoDado::Bytes : TTipoDado::Texto;
    coluna.tamanho = static_cast<int>(f.caracteres > 0 ? f.caracteres : f.bytes);
    coluna.tipoSql = TipoDeTexto(nome, coluna, conjuntoDoBanco);
}

void DefineInteiro(TColunaFisica& coluna, std::string_view nome, int digitos, const TTipoFisico& f) {
    const auto precisao = f.precisao > 0 ? static_cast<int>(f.precisao) : digitos;
    coluna.tipo = f.escala == 0 ? TTipoDado::Inteiro : TTipoDado::Decimal;
    coluna.escala = f.escala;
    if (f.escala != 0) coluna.tamanho = precisao;
    const bool fixo = f.escala != 0 || f.subtipo == 1 || f.subtipo == 2;
    coluna.tipoSql = !fixo ? std::string(nome)
                           : (f.subtipo == 2 ? "decimal(" : "numeric(") + std::to_string(precisao) + "," +
                                 std::to_string(f.escala) + ")";
}

void DefineBlob(TColunaFisica& coluna, const TTipoFisico& f, const std::string& conjuntoDoBanco) {
    coluna.tipo = f.subtipo == isc_blob_text ? TTipoDado::Memo : TTipoDado::Blob;
    coluna.tipoSql = "blob sub_type " + std::to_string(f.subtipo);
    if (coluna.tipo == TTipoDado::Blob) coluna.conjunto.clear();
    if (!coluna.conjunto.empty() && coluna.conjunto != conjuntoDoBanco)
        coluna.tipoSql += " character set " + coluna.conjunto;
}

// Types of Firebird 4 in the catalogue, which an older client's header does not have.
enum : std::int64_t {
    kDecfloat16 = 24,
    kDecfloat34 = 25,
    kInt128 = 26,
    kHoraComFuso = 28,
    kDataHoraComFuso = 29,
};

void DefineSimples(TColunaFisica& coluna, std::int64_t tipo) {
    static constexpr struct {
        std::int64_t tipo;
        TTipoDado dado;
        const char* sql;
    } kTipos[] = {
        {kDecfloat16, TTipoDado::Flutuante, "decfloat(16)"},
        {kDecfloat34, TTipoDado::Flutuante, "decfloat(34)"},
        {kHoraComFuso, TTipoDado::Hora, "time with time zone"},
        {kDataHoraComFuso, TTipoDado::DataHora, "timestamp with time zone"},
        {blr_float, TTipoDado::Flutuante, "float"},
        {blr_double, TTipoDado::Flutuante, "double precision"},
        {blr_sql_date, TTipoDado::Data, "date"},
        {blr_sql_time, TTipoDado::Hora, "time"},
        {blr_timestamp, TTipoDado::DataHora, "timestamp"},
        {blr_bool, TTipoDado::Logico, "boolean"},
    };
    for (const auto& linha : kTipos) {
        if (linha.tipo != tipo) continue;
        coluna.tipo = linha.dado;
        coluna.tipoSql = linha.sql;
    }
}

void DefineTipo(TColunaFisica& coluna, const TTipoFisico& f, const std::string& conjuntoDoBanco) {
    switch (f.tipo) {
        case blr_text:
            return DefineTexto(coluna, "char", f, conjuntoDoBanco);
        case blr_varying:
            return DefineTexto(coluna, "varchar", f, conjuntoDoBanco);
        case blr_short:
            return DefineInteiro(coluna, "smallint", 4, f);
        case blr_long:
            return DefineInteiro(coluna, "integer", 9, f);
        case blr_int64:
            return DefineInteiro(coluna, "bigint", 18, f);
        case kInt128:
            DefineInteiro(coluna, "int128", 38, f);
            coluna.tipo = TTipoDado::Decimal;
            return;
        case blr_blob:
            return DefineBlob(coluna, f, conjuntoDoBanco);
        default:
            return DefineSimples(coluna, f.tipo);
    }
}

std::string Nome(TComando& linha, std::size_t coluna) { return linha.Valor(coluna).ComoTexto(); }

}  // namespace

std::string TMetadadosFirebird::VersaoServidor() {
    return "Firebird " + Unico("select rdb$get_context('SYSTEM', 'ENGINE_VERSION') from rdb$database").ComoTexto();
}

std::string TMetadadosFirebird::ConjuntoDoBanco() {
    return std::string(
        AparaFim(Unico("select coalesce(rdb$character_set_name, 'NONE') from rdb$database").ComoTexto()));
}

TValor TMetadadosFirebird::Unico(std::string_view sql) {
    const auto comando = Pergunta(sql);
    comando->Abre();
    return comando->Proximo() ? comando->Valor(0) : TValor();
}

std::vector<std::string> TMetadadosFirebird::NomesDeTabelas() {
    const auto comando =
        Pergunta("select r.rdb$relation_name from rdb$relations r where " + kTabelaComum + " order by 1");
    std::vector<std::string> nomes;
    for (comando->Abre(); comando->Proximo();) nomes.push_back(Nome(*comando, 0));
    return nomes;
}

TMetadadosFirebird::TGuardado TMetadadosFirebird::Pergunta(std::string_view sql) const {
    return std::make_unique<TComandoFirebird>(sessao_, sql, TComandoFirebird::TLeitura::Catalogo);
}

TComando& TMetadadosFirebird::Abre(TGuardado& comando, std::string_view sql, std::string_view tabela) {
    if (!comando) comando = Pergunta(sql);
    comando->Atribui("pTabela", NomeExato(tabela));
    comando->Abre();
    return *comando;
}

std::string TMetadadosFirebird::NomePor(TGuardado& comando, std::string_view onde, std::string_view nome) {
    if (!comando) comando = Pergunta("select r.rdb$relation_name from rdb$relations r where " + std::string(onde));
    comando->Atribui("pNome", nome);
    comando->Abre();
    std::string achado = comando->Proximo() ? Nome(*comando, 0) : "";
    comando->Fecha();
    return achado;
}

/// The second question reads the names of all tables; only a table made with its name in double quotes needs it.
std::string TMetadadosFirebird::NomeExato(std::string_view tabela) {
    const std::string capitais = Maiusculas(tabela);
    for (const auto& [comando, onde] : {std::pair(&nome_, "r.rdb$relation_name = :pNome"),
                                        std::pair(&nomeEmCapitais_, "upper(trim(r.rdb$relation_name)) = :pNome")})
        if (std::string nome = NomePor(*comando, onde, capitais); !nome.empty()) return nome;
    return std::string(tabela);
}

bool TMetadadosFirebird::ExisteTabela(std::string_view tabela) {
    return !NomePor(nomeComum_, "r.rdb$relation_name = :pNome and " + kTabelaComum, NomeExato(tabela)).empty();
}

TColunaFisica TMetadadosFirebird::Coluna(TComando& linha) {
    const auto inteiro = [&](std::size_t i) { return linha.Valor(i).ComoInteiro(); };
    TColunaFisica coluna;
    coluna.nome = Nome(linha, cNome);
    coluna.conjunto = Nome(linha, cConjunto);
    coluna.requerido = inteiro(cRequerido) == 1;
    coluna.padrao = SemPalavraDefault(LeFonte(linha, cPadrao));
    if (coluna.padrao.empty()) coluna.padrao = SemPalavraDefault(LeFonte(linha, cPadraoDoDominio));
    coluna.expressao = LeFonte(linha, cExpressao);
    DefineTipo(coluna,
               {inteiro(cTipo), inteiro(cSubtipo), inteiro(cBytes), inteiro(cCaracteres), inteiro(cPrecisao),
                static_cast<int>(-inteiro(cEscala))},
               Nome(linha, cConjuntoDoBanco));
    return coluna;
}

std::vector<TColunaFisica> TMetadadosFirebird::Colunas(std::string_view tabela) {
    auto& linha = Abre(colunas_, SqlDeColunas("where rf.rdb$relation_name = :pTabela"), tabela);
    std::vector<TColunaFisica> colunas;
    while (linha.Proximo()) colunas.push_back(Coluna(linha));
    return colunas;
}

TColunasPorTabela TMetadadosFirebird::TodasAsColunas() { return ColunasOnde(""); }

std::optional<TColunasPorTabela> TMetadadosFirebird::ColunasDe(const std::vector<std::string>& tabelas) {
    constexpr std::size_t kMuitas = 100;  // a list has room for 1500
    if (tabelas.size() > kMuitas) return std::nullopt;
    std::vector<std::string> nomes;
    for (const auto& tabela : tabelas) nomes.push_back(Aspas(tabela));
    return ColunasOnde(" and rf.rdb$relation_name in (" + Junta(nomes, ", ") + ")");
}

TColunasPorTabela TMetadadosFirebird::ColunasOnde(const std::string& condicao) {
    const auto comando = Pergunta(SqlDeColunas(
        "join rdb$relations r on r.rdb$relation_name = rf.rdb$relation_name where " + kTabelaComum + condicao));
    TColunasPorTabela tabelas;
    for (comando->Abre(); comando->Proximo();) tabelas[Maiusculas(Nome(*comando, cTabela))].push_back(Coluna(*comando));
    for (auto& [tabela, colunas] : tabelas) colunas.shrink_to_fit();
    return tabelas;
}

TChavePrimaria TMetadadosFirebird::ChavePrimaria(std::string_view tabela) {
    // The outer join keeps the server from starting at the segments of all indexes.
    auto& linha = Abre(chave_,
                       "select c.rdb$constraint_name, s.rdb$field_name from rdb$relation_constraints c"
                       " left join rdb$index_segments s on s.rdb$index_name = c.rdb$index_name"
                       " where c.rdb$relation_name = :pTabela and c.rdb$constraint_type = 'PRIMARY KEY'"
                       " order by s.rdb$field_position",
                       tabela);
    TChavePrimaria chave;
    while (linha.Proximo()) {
        chave.nome = Nome(linha, 0);
        chave.colunas.push_back(Nome(linha, 1));
    }
    return chave;
}

TChavesPorTabela TMetadadosFirebird::TodasAsChaves() {
    const auto linha = Pergunta(
        "select c.rdb$relation_name, c.rdb$constraint_name, s.rdb$field_name"
        " from rdb$relation_constraints c"
        " left join rdb$index_segments s on s.rdb$index_name = c.rdb$index_name"
        " where c.rdb$constraint_type = 'PRIMARY KEY'"
        " order by c.rdb$relation_name, s.rdb$field_position");
    TChavesPorTabela chaves;
    for (linha->Abre(); linha->Proximo();) {
        TChavePrimaria& chave = chaves[Maiusculas(Nome(*linha, 0))];
        chave.nome = Nome(*linha, 1);
        chave.colunas.push_back(Nome(*linha, 2));
    }
    return chaves;
}

std::vector<TIndice> TMetadadosFirebird::Indices(std::string_view tabela) {
    auto& linha = Abre(indices_,
                       "select i.rdb$index_name, coalesce(i.rdb$unique_flag, 0), coalesce(i.rdb$index_type, 0),"
                       " c.rdb$constraint_name, s.rdb$field_name, coalesce(i.rdb$index_inactive, 0), " +
                           Fonte("i.rdb$expression_source") +
                           " from rdb$indices i left join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name"
                           " left join rdb$relation_constraints c on c.rdb$index_name = i.rdb$index_name"
                           " where i.rdb$relation_name = :pTabela"
                           " and coalesce(c.rdb$constraint_type, '') <> 'PRIMARY KEY'"
                           " order by i.rdb$index_name, s.rdb$field_position",
                       tabela);
    std::vector<TIndice> indices;
    while (linha.Proximo()) {
        const auto nome = Nome(linha, 0);
        if (indices.empty() || indices.back().nome != nome) {
            indices.push_back({nome,
                               linha.Valor(1).ComoInteiro() == 1,
                               linha.Valor(2).ComoInteiro() == 1,
                               Nome(linha, 3),
                               {},
                               LeFonte(linha, 6),
                               linha.Valor(5).ComoInteiro() == 1});
        }
        if (const auto coluna = Nome(linha, 4); !coluna.empty()) indices.back().colunas.push_back(coluna);
    }
    return indices;
}

}  // namespace wkd
