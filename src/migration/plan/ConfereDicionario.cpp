#include "plan/ConfereDicionario.h"

#include <algorithm>
#include <map>
#include <set>

#include "copy/Reposicao.h"
#include "layout/Tini.h"
#include "passes/CamposTexto.h"
#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Tables that the system keeps beside those of its dictionary.
const std::set<std::string> kDoSistema = {
    "SARQUIVO", "SARQUIVO_USER", "SATRIB",      "SATRIB_USER",        "SINDSEC",         "SINDSECA",
    "SLOOKUP",  "SLOOKUP_USER",  "SPESQ",       "SPESQ_USER",         "SPESQAUX",        "SPESQAUX_USER",
    "SADMMOD",  "SRELATOR",      "SISTEMA",     "SARQ_RELACIONA_PAI", "SLISTA_CONTROLE", "TINI",
    "TRBTABLE", "TRBFIELD",      "TRELATORIOS", "TARQ_VER",           "CSENHA"};

struct TIndiceGuardado {
    std::string nome;
    bool unico = false;
    std::vector<std::string> colunas;
};

struct TTabelaGuardada {
    std::string nome;
    bool pendente = false;  // its rebuild is open
    std::vector<TColunaDicionario> colunas;
    std::vector<TIndiceGuardado> indices;
};

class TConfere {
  public:
    TConfere(TDataModulo& dm, std::filesystem::path pastaPrograma)
        : dm_(dm), conexao_(dm.SQLConnection1), pastaPrograma_(std::move(pastaPrograma)) {}

    std::vector<TDesvio> Confere();

  private:
    void LeSarquivo();
    void LeSatrib();
    void LeIndices();
    void Tabelas();
    void Colunas(const TTabelaGuardada& tabela);
    void Tipo(const TTabelaGuardada& tabela, const TColunaDicionario& coluna, const TColunaFisica& fisica);
    void Chave(const TTabelaGuardada& tabela);
    void Indices(const TTabelaGuardada& tabela);
    void Sobras();
    void Backup(const std::string& nome, const TTabelaGuardada& tabela);
    void Rejeitadas();
    void Marcas();
    void Desvio(std::string tipo, const std::string& tabela, const std::string& objeto, std::string texto) {
        desvios_.push_back({std::move(tipo), tabela, objeto, std::move(texto)});
    }

    TDataModulo& dm_;
    TConnection& conexao_;
    std::filesystem::path pastaPrograma_;
    std::map<std::string, TTabelaGuardada> guardadas_;  // by name in capitals
    TColunasPorTabela fisicas_;
    std::vector<TDesvio> desvios_;
};

std::vector<TDesvio> TConfere::Confere() {
    dm_.AtualizaListaDeTabelas();
    LeSarquivo();
    LeSatrib();
    LeIndices();
    fisicas_ = conexao_.TodasAsColunas();
    Tabelas();
    Sobras();
    Rejeitadas();
    Marcas();
    return std::move(desvios_);
}

void TConfere::LeSarquivo() {
    const auto abertas = ReconstrucoesAbertas(dm_);
    TWKDQuery q(conexao_, "select NOME_ARQUIVO from SARQUIVO");
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string nome(Apara(q.Texto("NOME_ARQUIVO")));
        auto& tabela = guardadas_[ChaveDeNome(nome)];
        tabela.nome = nome;
        tabela.pendente = abertas.contains(ChaveDeNome(nome));
    }
}

void TConfere::LeSatrib() {
    TWKDQuery q(
        conexao_,
        "select ARQUIVO, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, CALCULO from SATRIB order by ARQUIVO, SEQUENCIA");
    for (q.Open(); !q.Eof(); q.Next()) {
        const auto tabela = guardadas_.find(ChaveDeNome(q.Texto("ARQUIVO")));
        TColunaDicionario coluna;
        coluna.nome = Apara(q.Texto("NOME"));
        coluna.tipo = Apara(q.Texto("TIPO"));
        coluna.tamanho = q.Texto("TAMANHO");
        coluna.calculo = q.Texto("CALCULO");
        coluna.chave = static_cast<int>(q.Inteiro("CHAVE_DE_PESQUISA"));
        if (tabela != guardadas_.end() && ColunaFisica(coluna)) tabela->second.colunas.push_back(std::move(coluna));
    }
}

void TConfere::LeIndices() {
    if (!dm_.ExisteTabela("SINDSEC") || !dm_.ExisteTabela("SINDSECA")) return;
    TWKDQuery q(conexao_, "select * from SINDSEC");
    for (q.Open(); !q.Eof(); q.Next()) {
        const auto tabela = guardadas_.find(ChaveDeNome(q.Texto("ARQUIVO")));
        if (tabela == guardadas_.end()) continue;
        const bool temTipo = IndiceDoCampo(q.Campos(), "TIPO") >= 0;
        tabela->second.indices.push_back(
            {std::string(Apara(q.Texto("NOME"))), temTipo && Apara(q.Texto("TIPO")) == "1", {}});
    }
    TWKDQuery colunas(conexao_, "select ARQUIVO, NOME, CAMPO from SINDSECA order by SEQUENCIA");
    for (colunas.Open(); !colunas.Eof(); colunas.Next()) {
        const auto tabela = guardadas_.find(ChaveDeNome(colunas.Texto("ARQUIVO")));
        if (tabela == guardadas_.end()) continue;
        for (auto& indice : tabela->second.indices)
            if (IgualSemCaixa(indice.nome, Apara(colunas.Texto("NOME"))))
                indice.colunas.emplace_back(Apara(colunas.Texto("CAMPO")));
    }
}

void TConfere::Tabelas() {
    for (const auto& [chave, tabela] : guardadas_) {
        if (!fisicas_.contains(chave)) {
            Desvio("tabela-falta", tabela.nome, "", "está no dicionário e não no banco");
            continue;
        }
        Colunas(tabela);
        Chave(tabela);
        Indices(tabela);
    }
}

void TConfere::Colunas(const TTabelaGuardada& tabela) {
    const auto& fisicas = fisicas_.at(ChaveDeNome(tabela.nome));
    for (const auto& coluna : tabela.colunas) {
        if (const TColunaFisica* fisica = ColunaDeNome(fisicas, coluna.nome))
            Tipo(tabela, coluna, *fisica);
        else
            Desvio("coluna-falta", tabela.nome, coluna.nome, "está no dicionário e não na tabela");
    }
    for (const auto& fisica : fisicas) {
        const bool guardada = std::ranges::any_of(
            tabela.colunas, [&](const auto& coluna) { return IgualSemCaixa(coluna.nome, fisica.nome); });
        if (!guardada) Desvio("coluna-sobra", tabela.nome, fisica.nome, "está na tabela e não no dicionário");
    }
}

/// A narrowed text keeps ten characters more than the dictionary says.
void TConfere::Tipo(const TTabelaGuardada& tabela, const TColunaDicionario& coluna, const TColunaFisica& fisica) {
    const std::string esperado = TipoDaColuna(coluna.tipo, coluna.tamanho, conexao_.TipoBanco());
    const std::string normal = TipoNormal(esperado), fisico = TipoNormal(fisica.tipoSql);
    if (normal == fisico) return;
    const bool texto = normal.substr(0, normal.find('(')) == fisico.substr(0, fisico.find('('));
    if (texto && fisica.tamanho == kLarguraAjustada && TamanhoDoTexto(coluna.tamanho) == kTamanhoAjustado) return;
    Desvio(
        texto ? "tamanho" : "tipo", tabela.nome, coluna.nome,
        "é " + fisica.tipoSql + "; o dicionário diz " + (esperado.empty() ? coluna.tipo : Minusculas(Apara(esperado))));
}

void TConfere::Chave(const TTabelaGuardada& tabela) {
    std::vector<std::string> esperada;
    for (const auto& coluna : tabela.colunas)
        if (coluna.chave == 1) esperada.push_back(coluna.nome);
    const auto fisica = conexao_.ChavePrimaria(tabela.nome).colunas;
    if (std::ranges::equal(esperada, fisica, IgualSemCaixa)) return;
    const auto lista = [](const auto& colunas) { return colunas.empty() ? "nenhuma" : Junta(colunas, ", "); };
    Desvio("chave", tabela.nome, "", "chave primária: " + lista(fisica) + "; o dicionário diz " + lista(esperada));
}

void TConfere::Indices(const TTabelaGuardada& tabela) {
    auto fisicos = conexao_.Indices(tabela.nome);
    for (const auto& indice : tabela.indices) {
        const auto fisico = std::ranges::find_if(
            fisicos, [&](const TIndice& candidato) { return IgualSemCaixa(candidato.nome, indice.nome); });
        if (fisico == fisicos.end()) {
            Desvio("indice-falta", tabela.nome, indice.nome, "está no dicionário e não na tabela");
            continue;
        }
        if (fisico->unico != indice.unico || !std::ranges::equal(fisico->colunas, indice.colunas, IgualSemCaixa))
            Desvio("indice-difere", tabela.nome, indice.nome,
                   std::string(fisico->unico ? "único sobre " : "sobre ") + Junta(fisico->colunas, ", ") +
                       "; o dicionário diz " + (indice.unico ? "único sobre " : "sobre ") +
                       Junta(indice.colunas, ", "));
        fisicos.erase(fisico);
    }
    for (const auto& fisico : fisicos)
        if (fisico.restricao.empty())
            Desvio("indice-sobra", tabela.nome, fisico.nome, "está na tabela e não no dicionário");
}

void TConfere::Sobras() {
    for (const auto& [nome, colunas] : fisicas_) {
        if (guardadas_.contains(nome) || kDoSistema.contains(nome)) continue;
        const auto original = nome.starts_with('B') ? guardadas_.find(nome.substr(1)) : guardadas_.end();
        if (original == guardadas_.end())
            Desvio("tabela-sobra", nome, "", "está no banco e não no dicionário");
        else if (!original->second.pendente)
            Backup(nome, original->second);
    }
    for (const auto& [nome, tabela] : guardadas_)
        if (tabela.pendente)
            Desvio("reconstrucao-pendente", tabela.nome, "",
                   fisicas_.contains(NomeDaBackup(nome))
                       ? "a reconstrução não terminou e os registros estão em " + NomeDaBackup(nome) +
                             ": rode a atualização de novo"
                       : "marcada para reconstrução (versão -1): a próxima atualização a faz");
}

/// Rows of a backup table that the table lacks: refused when they came back, or deleted since.
std::optional<std::int64_t> SoNaBackup(TConnection& conexao, const std::string& backup, const std::string& tabela) {
    const auto total = [&](const std::string& resto) {
        return ContaRegistros(conexao, "select count(*) as total from " + resto);
    };
    try {
        std::vector<std::string> pares;
        const auto daBackup = conexao.Colunas(backup);
        for (const auto& coluna : conexao.ChavePrimaria(tabela).colunas) {
            const std::string nome = Identificador(coluna, conexao.TipoBanco());
            if (ColunaDeNome(daBackup, coluna)) pares.push_back("t." + nome + " = b." + nome);
        }
        if (pares.empty()) return std::max<std::int64_t>(0, total(backup) - total(tabela));
        return total(backup + " b where not exists (select 1 from " + tabela + " t where " + Junta(pares, " and ") +
                     ")");
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return std::nullopt;  // keys of other types
    }
}

void TConfere::Backup(const std::string& nome, const TTabelaGuardada& tabela) {
    const std::string inicio = "tabela de backup da reconstrução de " + tabela.nome + ", que terminou: ";
    const auto faltam =
        fisicas_.contains(ChaveDeNome(tabela.nome)) ? SoNaBackup(conexao_, nome, tabela.nome) : std::nullopt;
    if (!faltam)
        Desvio("backup-sobra", nome, "", inicio + "não pôde ser comparada com ela; não a apague sem conferir");
    else if (*faltam > 0)
        Desvio("linhas-rejeitadas", tabela.nome, nome,
               "a tabela de backup " + nome + " tem " + std::to_string(*faltam) +
                   " registros que a tabela não tem, rejeitados na volta ou apagados depois: rode --repoe, e não a "
                   "apague antes de conferir");
    else
        Desvio("backup-sobra", nome, "", inicio + "pode ser apagada depois de conferida");
}

void TConfere::Rejeitadas() {
    for (const auto& [tabela, linhas] : RejeitadasAbertas(pastaPrograma_, dm_.nomeAlias))
        Desvio("linhas-rejeitadas", tabela, "",
               std::to_string(linhas) + " registros rejeitados esperam em AtualizaWKD.rejeitados.jsonl: rode --repoe");
}

void TConfere::Marcas() {
    if (!dm_.ExisteTabela("TINI")) return;
    TWKDQuery q(conexao_, "select CHAVE from TINI where SESSAO = 'AtualizaTabela' and VALOR = 'SIM' order by CHAVE");
    for (q.Open(); !q.Eof(); q.Next())
        Desvio("analise-pendente", q.Texto("CHAVE"), "",
               "a última atualização dela não chegou ao fim: rode a atualização de novo");
}

}  // namespace

std::vector<TDesvio> ConfereDicionario(TDataModulo& dm, const std::filesystem::path& pastaPrograma) {
    return TConfere(dm, pastaPrograma).Confere();
}

}  // namespace wkd
