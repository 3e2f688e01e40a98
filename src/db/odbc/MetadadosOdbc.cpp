#include "odbc/MetadadosOdbc.h"

#include <algorithm>
#include <set>

#include "odbc/ComandosTSql.h"
#include "odbc/ErroOdbc.h"
#include "odbc/ValorOdbc.h"

namespace wkd {
namespace {

constexpr std::string_view kCatalogo = "catálogo";

// Columns of the catalogue functions' answers, from 0.
enum : std::size_t { tNome = 2 };
enum : std::size_t { cTabela = 2, cNome, cTipo, cTipoSql, cTamanho, cEscala = 8, cNulo = 10, cPadrao = 12 };
enum : std::size_t { kColuna = 3, kSequencia, kNome };
enum : std::size_t { iNaoUnico = 3, iNome = 5, iTipo, iColuna = 8, iSentido };

/// Name as a pattern that only itself fits; servers without an escape character take it as it is.
std::string SemCoringas(std::string_view nome, const std::string& escape) {
    std::string padrao;
    for (const char c : nome) {
        if (c == '_' || c == '%') padrao += escape;
        padrao += c;
    }
    return padrao;
}

/// "((0))" as "0": servers keep a default in parentheses.
std::string SemParenteses(std::string_view padrao) {
    padrao = Apara(padrao);
    if (padrao.empty() || IgualSemCaixa(padrao, "null")) return {};
    const auto envolve = [](std::string_view texto) {
        if (texto.size() < 2 || texto.front() != '(' || texto.back() != ')') return false;
        int nivel = 0;
        bool aspas = false;
        for (std::size_t i = 0; i + 1 < texto.size(); ++i) {
            aspas ^= texto[i] == '\'';
            if (!aspas) nivel += texto[i] == '(' ? 1 : texto[i] == ')' ? -1 : 0;
            if (nivel == 0) return false;
        }
        return true;
    };
    while (envolve(padrao)) padrao = Apara(padrao.substr(1, padrao.size() - 2));
    return std::string(padrao);
}

/// The type as CREATE TABLE takes it, without what belongs to the column alone ("int identity"). A row version is what
/// the server alone writes: elsewhere its values are bytes.
std::string TipoSql(std::string tipo, const TDescricaoOdbc& d) {
    if (const auto identity = Minusculas(tipo).find(" identity"); identity != std::string::npos)
        tipo = Troca(tipo.substr(0, identity), "()", "");
    if (tipo.find('(') != std::string::npos) return tipo;
    const auto nome = Minusculas(tipo);
    if (nome == "timestamp" && d.tipo == SQL_BINARY) return "binary(8)";
    const auto e = [&](std::initializer_list<std::string_view> nomes) {
        return std::ranges::find(nomes, nome) != nomes.end();
    };
    const auto tamanho = std::to_string(d.tamanho);
    if (e({"char", "varchar", "nchar", "nvarchar", "binary", "varbinary"}))
        return tipo + (d.tamanho == 0 || d.tamanho > 8000 ? "(max)" : "(" + tamanho + ")");
    if (e({"decimal", "numeric"})) return tipo + "(" + tamanho + "," + std::to_string(d.escala) + ")";
    if (e({"datetime2", "time", "datetimeoffset"})) return tipo + "(" + std::to_string(d.escala) + ")";
    return tipo;
}

bool TipoLargo(std::string_view tipoSql) {
    return Minusculas(tipoSql).starts_with('n') || Minusculas(tipoSql).starts_with("xml");
}

TColunaFisica Coluna(const TLinha& linha) {
    TDescricaoOdbc d;
    d.tipo = static_cast<SQLSMALLINT>(linha[cTipo].ComoInteiro());
    d.tamanho = static_cast<SQLULEN>(std::max<std::int64_t>(linha[cTamanho].ComoInteiro(), 0));
    d.escala = static_cast<SQLSMALLINT>(linha[cEscala].ComoInteiro());
    TColunaFisica coluna;
    static_cast<TCampo&>(coluna) = TipoDe(d);
    if (coluna.tipo == TTipoDado::DataHora || coluna.tipo == TTipoDado::Hora) coluna.escala = d.escala;
    coluna.nome = AparaFim(linha[cNome].ComoTexto());
    coluna.tipoSql = TipoSql(linha[cTipoSql].ComoTexto(), d);
    coluna.requerido = linha[cNulo].ComoInteiro() == SQL_NO_NULLS;
    coluna.padrao = SemParenteses(linha[cPadrao].ComoTexto());
    if (coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Memo)
        coluna.conjunto = TipoLargo(coluna.tipoSql) ? "UTF16" : "SERVIDOR";
    return coluna;
}

}  // namespace

/// Runs a catalogue function on a statement handle and reads all it answers.
template <class TPergunta>
TMetadadosOdbc::TLinhas TMetadadosOdbc::Pergunta(TPergunta pergunta) {
    const auto ligacao = sessao_->ParaLer();
    TInstrucaoOdbc instrucao(ligacao);
    const auto chamada = instrucao.Chamada();
    instrucao.Confere(pergunta(instrucao.Handle()), kCatalogo);
    SQLSMALLINT colunas = 0;
    SQLNumResultCols(instrucao.Handle(), &colunas);
    std::vector<TDescricaoOdbc> descricoes;
    for (SQLUSMALLINT i = 1; i <= colunas; ++i) {
        TDescricaoOdbc d;
        SQLWCHAR nome[256];
        SQLSMALLINT tamanho = 0, anulavel = 0;
        SQLDescribeColW(instrucao.Handle(), i, nome, 256, &tamanho, &d.tipo, &d.tamanho, &d.escala, &anulavel);
        descricoes.push_back(d);
    }
    TLinhas linhas;
    for (;;) {
        const auto retorno = SQLFetch(instrucao.Handle());
        if (retorno == SQL_NO_DATA) return linhas;
        instrucao.Confere(retorno, kCatalogo);
        auto& linha = linhas.emplace_back();
        for (SQLUSMALLINT i = 1; i <= colunas; ++i)
            linha.push_back(LeValor(instrucao, i, descricoes[i - 1u], kCatalogo));
    }
}

std::string TMetadadosOdbc::VersaoServidor() {
    const auto ligacao = sessao_->ParaLer();
    return ligacao->Informacao(SQL_DBMS_NAME) + " " + ligacao->Informacao(SQL_DBMS_VER);
}

TMetadadosOdbc::TLinhas TMetadadosOdbc::Consulta(const std::string& sql) {
    TTextoOdbc texto(sql);
    return Pergunta([&](SQLHSTMT stmt) { return SQLExecDirectW(stmt, texto.Dados(), texto.Tamanho<SQLINTEGER>()); });
}

const TMetadadosOdbc::TEsquema& TMetadadosOdbc::Esquema() {
    if (!esquema_ && !sessao_->SqlServer()) esquema_.emplace();
    if (!esquema_) {
        const TLinha linha = Consulta(std::string(kEsquemaTSql)).at(0);
        esquema_ = {linha.at(0).ComoTexto(), linha.at(1).ComoTexto()};
    }
    return *esquema_;
}

std::vector<std::string> TMetadadosOdbc::NomesDeTabelas() {
    if (sessao_->SqlServer()) return Nomes(TabelasTSql(Esquema().numero));
    TTextoOdbc esquema(Esquema().nome), tipo("TABLE");
    const auto linhas = Pergunta([&](SQLHSTMT stmt) {
        return SQLTablesW(stmt, nullptr, 0, esquema.Tamanho() > 0 ? esquema.Dados() : nullptr, esquema.Tamanho(),
                          nullptr, 0, tipo.Dados(), tipo.Tamanho());
    });
    std::vector<std::string> nomes;
    for (const auto& linha : linhas) nomes.emplace_back(AparaFim(linha[tNome].ComoTexto()));
    return nomes;
}

/// Of one table, or of all with an empty name.
TMetadadosOdbc::TLinhas TMetadadosOdbc::LinhasDeColunas(std::string_view tabela) {
    const auto escape = sessao_->ParaLer()->Informacao(SQL_SEARCH_PATTERN_ESCAPE);
    TTextoOdbc esquema(Esquema().nome), padrao(tabela.empty() ? "%" : SemCoringas(tabela, escape));
    auto linhas = Pergunta([&](SQLHSTMT stmt) {
        return SQLColumnsW(stmt, nullptr, 0, esquema.Tamanho() > 0 ? esquema.Dados() : nullptr, esquema.Tamanho(),
                           padrao.Dados(), padrao.Tamanho(), nullptr, 0);
    });
    if (!tabela.empty())
        std::erase_if(linhas,
                      [&](const TLinha& l) { return !IgualSemCaixa(AparaFim(l[cTabela].ComoTexto()), tabela); });
    return linhas;
}

std::vector<TColunaFisica> TMetadadosOdbc::Colunas(std::string_view tabela) {
    auto colunas = ColunasDe(tabela);
    return colunas.empty() ? std::vector<TColunaFisica>() : std::move(colunas.begin()->second);
}

TColunasPorTabela TMetadadosOdbc::TodasAsColunas() {
    std::set<std::string> tabelas;
    for (const auto& nome : NomesDeTabelas()) tabelas.insert(Maiusculas(nome));
    auto todas = ColunasDe("");
    std::erase_if(todas, [&](const auto& par) { return !tabelas.contains(par.first); });
    return todas;
}

TColunasPorTabela TMetadadosOdbc::ColunasDe(std::string_view tabela) {
    TColunasPorTabela tabelas;
    const auto linhas = LinhasDeColunas(tabela);
    if (linhas.empty()) return tabelas;
    const auto padroes = Textos(PadroesTSql(tabela)), computadas = Textos(ComputadasTSql(tabela));
    const auto texto = [](const TTextos& textos, const std::string& daTabela, const std::string& coluna) {
        const auto achado = textos.find({daTabela, Maiusculas(coluna)});
        return achado == textos.end() ? std::string() : achado->second;
    };
    for (const auto& linha : linhas) {
        const auto nome = Maiusculas(AparaFim(linha[cTabela].ComoTexto()));
        auto coluna = Coluna(linha);
        if (sessao_->SqlServer()) coluna.padrao = SemParenteses(texto(padroes, nome, coluna.nome));
        coluna.expressao = texto(computadas, nome, coluna.nome);
        tabelas[nome].push_back(std::move(coluna));
    }
    return tabelas;
}

std::optional<TChavesPorTabela> TMetadadosOdbc::TodasAsChaves() {
    if (!sessao_->SqlServer()) return std::nullopt;
    TChavesPorTabela chaves;
    for (const auto& linha : Consulta(ChavesTSql(Esquema().numero))) {
        TChavePrimaria& chave = chaves[Maiusculas(linha[0].ComoTexto())];
        chave.nome = linha[1].ComoTexto();
        chave.colunas.push_back(linha[2].ComoTexto());
    }
    return chaves;
}

TChavePrimaria TMetadadosOdbc::ChavePrimaria(std::string_view tabela) {
    TTextoOdbc esquema(Esquema().nome), nome(tabela);
    auto linhas = Pergunta([&](SQLHSTMT stmt) {
        return SQLPrimaryKeysW(stmt, nullptr, 0, esquema.Tamanho() > 0 ? esquema.Dados() : nullptr, esquema.Tamanho(),
                               nome.Dados(), nome.Tamanho());
    });
    std::ranges::sort(linhas, {}, [](const TLinha& l) { return l[kSequencia].ComoInteiro(); });
    TChavePrimaria chave;
    for (const auto& linha : linhas) {
        chave.nome = AparaFim(linha[kNome].ComoTexto());
        chave.colunas.emplace_back(AparaFim(linha[kColuna].ComoTexto()));
    }
    return chave;
}

std::vector<TIndice> TMetadadosOdbc::Indices(std::string_view tabela) {
    TTextoOdbc esquema(Esquema().nome), nome(tabela);
    const auto linhas = Pergunta([&](SQLHSTMT stmt) {
        return SQLStatisticsW(stmt, nullptr, 0, esquema.Tamanho() > 0 ? esquema.Dados() : nullptr, esquema.Tamanho(),
                              nome.Dados(), nome.Tamanho(), SQL_INDEX_ALL, SQL_QUICK);
    });
    const auto chave = ChavePrimaria(tabela);
    const auto restricoes = linhas.empty() ? std::vector<std::string>() : Restricoes(tabela);
    std::vector<TIndice> indices;
    for (const auto& linha : linhas) {
        const std::string doIndice(AparaFim(linha[iNome].ComoTexto()));
        if (linha[iTipo].ComoInteiro() == SQL_TABLE_STAT || IgualSemCaixa(doIndice, chave.nome)) continue;
        if (indices.empty() || indices.back().nome != doIndice) {
            auto& indice = indices.emplace_back();
            indice.nome = doIndice;
            indice.unico = linha[iNaoUnico].ComoInteiro() == 0;
            indice.descendente = linha[iSentido].ComoTexto() == "D";
            for (const auto& restricao : restricoes)
                if (IgualSemCaixa(restricao, doIndice)) indice.restricao = restricao;
        }
        indices.back().colunas.emplace_back(AparaFim(linha[iColuna].ComoTexto()));
    }
    return indices;
}

TMetadadosOdbc::TTextos TMetadadosOdbc::Textos(const std::string& sql) {
    TTextos textos;
    if (!sessao_->SqlServer()) return textos;
    for (const auto& linha : Consulta(sql))
        textos[{Maiusculas(linha[0].ComoTexto()), Maiusculas(linha[1].ComoTexto())}] = linha[2].ComoTexto();
    return textos;
}

/// Names of the unique constraints.
std::vector<std::string> TMetadadosOdbc::Restricoes(std::string_view tabela) {
    return sessao_->SqlServer() ? Nomes(RestricoesTSql(tabela)) : std::vector<std::string>();
}

/// The first column of what a SQL Server answers.
std::vector<std::string> TMetadadosOdbc::Nomes(const std::string& sql) {
    std::vector<std::string> nomes;
    for (const auto& linha : Consulta(sql)) nomes.push_back(linha[0].ComoTexto());
    return nomes;
}

}  // namespace wkd
