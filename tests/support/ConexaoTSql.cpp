#include "ConexaoTSql.h"

#include <algorithm>
#include <regex>

#include "odbc/ComandosTSql.h"
#include "odbc/LexicoSql.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {
namespace {

/// Patterns with what stands in their place, one after the other.
class TTraducao {
  public:
    TTraducao(std::initializer_list<std::pair<const char*, const char*>> trocas) {
        for (const auto& [de, para] : trocas) trocas_.emplace_back(std::regex(de, std::regex::icase), para);
    }
    std::string Traduz(std::string texto) const {
        for (const auto& [de, para] : trocas_) texto = std::regex_replace(texto, de, para);
        return texto;
    }

  private:
    std::vector<std::pair<std::regex, const char*>> trocas_;
};

std::string EmFirebird(std::string_view sql) {
    static const TTraducao palavras = {
        {R"(\bn?varchar\(max\))", "varchar(2000)"},
        {R"(\bvarbinary\(max\))", "varchar(2000) character set octets"},
        {R"(\bnvarchar\b)", "varchar"},
        {R"(\bdatetime\b)", "timestamp"},
        {R"(\bimage\b)", "blob sub_type 0"},
        {R"(\bfloat\b)", "double precision"},
        {R"(\balter column (\w+))", "alter $1 type"},
        {R"(^(alter table \w+ +alter \w+ type.*?) not null *;?$)", "$1"},
        {R"(^drop +index (\S+) on \w+)", "drop index $1"},
        {R"(\bdrop column\b)", "drop"},
        {R"(\btop 1\b)", "first 1"},
        {R"(\blen\((.*?) \+ 'x'\))", "char_length($1 || 'x')"},
        {R"(\bltrim\(rtrim\()", "(trim("},
        {R"(\bsubstring\((\w+), *(\d+), *(\d+)\))", "substring($1 from $2 for $3)"},
        {R"('d' \+ )", "'d' || "},
        {R"(sum\(cast\(cast\(substring\(hashbytes\(.*?, 1, 8000\)\), 1, 4\) as int\) as bigint\) \+ datalength\()",
         "sum(octet_length("},
        {R"(\bdatalength\b)", "octet_length"},
        {R"(#)", "ENSAIO_"},
    };
    return palavras.Traduz(SemSequenciasOdbc(sql));
}

std::string TipoEmTSql(const std::string& tipo) {
    static const TTraducao tipos = {{R"(\bvarchar\b)", "nvarchar"},       {R"(\bblob\b.*)", "image"},
                                    {R"(\btimestamp\b)", "datetime"},     {R"(\bdate\b)", "datetime"},
                                    {R"(\bdouble precision\b)", "float"}, {R"(\binteger\b)", "int"}};
    return tipos.Traduz(tipo);
}

/// What Firebird has no words for, or no object; a SQL Server would take it.
bool SoDoSqlServer(std::string_view sql) {
    const auto tem = [&](std::string_view texto) { return sql.find(texto) != std::string_view::npos; };
    return tem("sys.") || tem("extendedproperty") || tem("CLUSTERED") || tem("dateformat") || tem("TCRTLCHQ") ||
           tem("DF__");
}

/// Whether a query of extended properties asks for this one, of a table: by a name and the table, or by names that
/// begin alike, of a table that is a parameter.
bool Pergunta(std::string_view sql, const std::pair<std::string, std::string>& nome) {
    const auto tem = [&](const std::string& texto) { return sql.find(texto) != std::string_view::npos; };
    return tem("name like") ? nome.second.starts_with("WKD_DEVOLUCAO_")
                            : tem("object_id('" + nome.first + "')") && tem("name = '" + nome.second + "'");
}

TColunaFisica EmTSql(TColunaFisica coluna) {
    coluna.tipoSql = TipoEmTSql(coluna.tipoSql);
    if (coluna.tipo == TTipoDado::Data) coluna.tipo = TTipoDado::DataHora;
    if (!coluna.conjunto.empty()) coluna.conjunto = "UTF16";
    return coluna;
}

std::vector<TColunaFisica> EmTSql(std::vector<TColunaFisica> colunas) {
    std::ranges::transform(colunas, colunas.begin(), [](auto& coluna) { return EmTSql(std::move(coluna)); });
    return colunas;
}

}  // namespace

void TConversaTSql::Anota(std::string_view sql) {
    std::string texto = SemSequenciasOdbc(AnalisaComando(sql).texto);
    if (anota && vistos_.insert(texto).second) enviados.push_back(std::move(texto));
}

TConexaoTSql::TConexaoTSql(std::unique_ptr<TConnection> firebird, TConversaTSql& conversa)
    : firebird_(std::move(firebird)), conversa_(conversa) {}

void TConexaoTSql::Open() {
    firebird_->Open();
    for (const auto ajuste : kAjustesTSql) conversa_.Anota(ajuste);
    conversa_.Anota(kEsquemaTSql);
    conversa_.Anota(kTransacoesTSql);
}

void TConexaoTSql::MarcaPonto(std::string_view nome) {
    conversa_.Anota(MarcaPontoTSql(nome));
    firebird_->MarcaPonto(nome);
}

void TConexaoTSql::VoltaAoPonto(std::string_view nome) {
    conversa_.Anota(VoltaAoPontoTSql(nome));
    firebird_->VoltaAoPonto(nome);
}

std::unique_ptr<TReserva> TConexaoTSql::Reserva(std::string_view tabela) {
    conversa_.Anota(ReservaTSql(tabela));
    return nullptr;
}

void TConexaoTSql::Envia(std::string_view sql) {
    conversa_.Anota(sql);
    if (constexpr std::string_view kApaga = "drop table "; sql.starts_with(kApaga))
        std::erase_if(propriedades_, [&](const auto& p) { return p.first.first == sql.substr(kApaga.size()); });
    if (conversa_.antes) conversa_.antes(std::string(sql));
}

void TConexaoTSql::ExecuteDirect(std::string_view sql) {
    Envia(sql);
    if (!SoDoSqlServer(sql)) firebird_->ExecuteDirect(EmFirebird(sql));
}

std::unique_ptr<TComando> TConexaoTSql::Prepara(std::string_view sql) {
    Envia(sql);
    if (SoDoSqlServer(sql)) return Responde(sql);
    return firebird_->Prepara(EmFirebird(sql));
}

std::unique_ptr<TComando> TConexaoTSql::Responde(std::string_view sql) {
    TConexaoGravada& resposta = respostas_.emplace_back();
    GuardaPropriedade(std::string(sql));
    if (sql.find("sys.extended_properties") != std::string_view::npos && sql.find("WKD_") != std::string_view::npos) {
        resposta.resposta.campos = {{"NOME", TTipoDado::Texto, 4000}};
        for (const auto& [nome, valor] : propriedades_)
            if (Pergunta(sql, nome)) resposta.resposta.linhas.push_back({valor});
    }
    for (const auto& [texto, linhas] : conversa_.catalogo)
        if (sql.find(texto) != std::string_view::npos) resposta.resposta = linhas;
    return resposta.Prepara(sql);
}

void TConexaoTSql::GuardaPropriedade(const std::string& sql) {
    static const std::regex padrao(
        "@name = N'(WKD_\\w+)'(?:, @value = N'(.*)')?, @level0type.*@level1name = N'(\\w+)'");
    std::smatch partes;
    if (!std::regex_search(sql, partes, padrao)) return;
    const std::pair<std::string, std::string> nome(partes[3], partes[1]);
    if (partes[2].matched)
        propriedades_[nome] = Troca(partes[2].str(), "''", "'");
    else
        propriedades_.erase(nome);
}

std::vector<TColunaFisica> TConexaoTSql::Colunas(std::string_view tabela) {
    conversa_.Anota(PadroesTSql(tabela));
    conversa_.Anota(ComputadasTSql(tabela));
    return EmTSql(firebird_->Colunas(tabela));
}

TColunasPorTabela TConexaoTSql::TodasAsColunas() {
    conversa_.Anota(TabelasTSql("1"));
    conversa_.Anota(ChavesTSql("1"));
    conversa_.Anota(PadroesTSql(""));
    conversa_.Anota(ComputadasTSql(""));
    auto todas = firebird_->TodasAsColunas();
    for (auto& [tabela, colunas] : todas) colunas = EmTSql(std::move(colunas));
    return todas;
}

std::vector<TIndice> TConexaoTSql::Indices(std::string_view tabela) {
    conversa_.Anota(RestricoesTSql(tabela));
    return firebird_->Indices(tabela);
}

}  // namespace wkd
