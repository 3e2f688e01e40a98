#include "DicionarioTabelas.h"

#include <utility>
#include <vector>

#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kColunasSemLookup = " from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))";
constexpr std::size_t kTamanhoDataType = 100;

/// One of the two tables of the report dictionary.
struct TAlvo {
    std::string tabela;
    std::string colunas;     // filled by a parameter each
    std::string constantes;  // names and values of the others, behind the former
    std::string valores;
};

/// Value of the first row's field on; an absent column is NULL.
TValor ValorDe(TWKDQuery& q, int campo) {
    return campo < 0 ? TValor() : q.Comando().Valor(static_cast<std::size_t>(campo));
}

/// The rows of TRBTABLE: name and text of each table.
std::vector<TLinha> Tabelas(TConnection& conexao) {
    std::vector<TLinha> linhas;
    TWKDQuery q(conexao, "select * from sarquivo");
    q.Open();
    const int nome = IndiceDoCampo(q.Campos(), "Nome_arquivo");
    const int obs = IndiceDoCampo(q.Campos(), "OBS");
    for (; !q.Eof(); q.Next()) {
        const TValor tabela = ValorDe(q, nome);
        const std::string texto = ValorDe(q, obs).ComoTexto();
        linhas.push_back({tabela, texto.empty() ? tabela : TValor(texto)});
    }
    return linhas;
}

/// "ftString" as the report designer calls it: "dtString".
std::string DataType(const std::string& tipo) {
    std::string texto = "d" + (tipo.empty() ? tipo : tipo.substr(1));
    if (texto.size() > kTamanhoDataType) texto.resize(kTamanhoDataType);
    return texto;
}

/// The rows of TRBFIELD: table, name, caption and type of each column.
std::vector<TLinha> Campos(TConnection& conexao) {
    std::vector<TLinha> linhas;
    TWKDQuery q(conexao, "select *" + std::string(kColunasSemLookup));
    q.Open();
    const int arquivo = IndiceDoCampo(q.Campos(), "arquivo");
    const int nome = IndiceDoCampo(q.Campos(), "nome");
    const int discriminacao = IndiceDoCampo(q.Campos(), "discriminacao");
    const int tipo = IndiceDoCampo(q.Campos(), "tipo");
    for (; !q.Eof(); q.Next())
        linhas.push_back(
            {ValorDe(q, arquivo), ValorDe(q, nome), ValorDe(q, discriminacao), DataType(ValorDe(q, tipo).ComoTexto())});
    return linhas;
}

}  // namespace

}  // namespace wkd
