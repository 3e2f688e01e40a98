#include "plan/ConfereDicionario.h"

#include <algorithm>
#include <map>
#include <set>

#include "context/MarcaDeAnalise.h"
#include "copy/Reposicao.h"
#include "dialect/Dialeto.h"
#include "layout/ReconstrucoesAbertas.h"
#include "layout/Tini.h"
#include "passes/CamposTexto.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Tables that the system keeps beside those of its dictionary.
const std::set<std::string> kDoSistema = {
    "SARQUIVO", "SARQUIVO_USER", "SATRIB",      "SATRIB_USER",        "SINDSEC",         "SINDSECA",
    "SLOOKUP",  "SLOOKUP_USER",  "SPESQ",       "SPESQ_USER",         "SPESQAUX",        "SPESQAUX_USER",
    "SADMMOD",  "SRELATOR",      "SISTEMA",     "SARQ_RELACIONA_PAI", "SLISTA_CONTROLE", "TINI",
    "TRBTABLE", "TRBFIELD",      "TRELATORIOS", "TARQ_VER",           "CSENHA"};

class TConfere {
  public:
    TConfere(TDataModulo& dm, std::filesystem::path pastaPrograma)
        : dm_(dm), conexao_(dm.SQLConnection1), pastaPrograma_(std::move(pastaPrograma)) {}

    std::vector<TDesvio> Confere();

  private:
    void Le();
    std::vector<TColunaDicionario> Fisicas(const std::string& tabela) const;
    void Tabelas();
    void Colunas(const std::string& tabela);
    void Tipo(const std::string& tabela, const TColunaDicionario& coluna, const TColunaFisica& fisica);
    void Chave(const std::string& tabela);
    void Indices(const std::string& tabela);
    void Sobras();
    void Backup(const std::string& nome, const std::string& tabela);
    void Rejeitadas();
    void Marcas();
    void Desvio(std::string tipo, const std::string& tabela, const std::string& objeto, std::string texto) {
        desvios_.push_back({std::move(tipo), tabela, objeto, std::move(texto)});
    }

    TDataModulo& dm_;
    TConnection& conexao_;
    std::filesystem::path pastaPrograma_;
    TDicionario gravado_;
    std::map<std::string, std::string> nomes_;  // of its tables, by ChaveDeNome
    TReconstrucoesAbertas abertas_;
    TColunasPorTabela fisicas_;
    std::vector<TDesvio> desvios_;
};

std::vector<TDesvio> TConfere::Confere() {
    dm_.AtualizaListaDeTabelas();
    Le();
    fisicas_ = conexao_.TodasAsColunas();
    Tabelas();
    Sobras();
    Rejeitadas();
    Marcas();
    return std::move(desvios_);
}

/// The stored dictionary, whose physical columns count.
void TConfere::Le() {
    const auto le = [this](const std::string& sql) { return LeTudo(*conexao_.Prepara(sql)); };
    gravado_.LeTabelas(le("select COD_MODULO, NOME_ARQUIVO from SARQUIVO"));
    gravado_.LeColunas(
        le("select ARQUIVO, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, CALCULO from SATRIB order by ARQUIVO, SEQUENCIA"));
    if (dm_.ExisteTabela("SINDSEC") && dm_.ExisteTabela("SINDSECA"))
        gravado_.LeIndices(le("select * from SINDSEC"), le("select * from SINDSECA"));
    for (const auto& tabela : gravado_.Tabelas()) nomes_[ChaveDeNome(tabela.nome)] = tabela.nome;
    abertas_ = ReconstrucoesAbertas(dm_);
}

std::vector<TColunaDicionario> TConfere::Fisicas(const std::string& tabela) const {
    std::vector<TColunaDicionario> colunas;
    std::ranges::copy_if(gravado_.Colunas(tabela), std::back_inserter(colunas), ColunaFisica);
    return colunas;
}

void TConfere::Tabelas() {
    for (const auto& [chave, tabela] : nomes_) {
        if (!fisicas_.contains(chave)) {
            Desvio("tabela-falta", tabela, "", "está no dicionário e não no banco");
            continue;
        }
        Colunas(tabela);
        Chave(tabela);
        Indices(tabela);
    }
}

void TConfere::Colunas(const std::string& tabela) {
    const auto& fisicas = fisicas_.at(ChaveDeNome(tabela));
    for (const auto& coluna : Fisicas(tabela)) {
        if (const TColunaFisica* fisica = ColunaDeNome(fisicas, coluna.nome))
            Tipo(tabela, coluna, *fisica);
        else
            Desvio("coluna-falta", tabela, coluna.nome, "está no dicionário e não na tabela");
    }
    for (const auto& fisica : fisicas) {
        const bool guardada = std::ranges::any_of(
            Fisicas(tabela), [&](const auto& coluna) { return IgualSemCaixa(coluna.nome, fisica.nome); });
        if (!guardada) Desvio("coluna-sobra", tabela, fisica.nome, "está na tabela e não no dicionário");
    }
}

/// A narrowed text keeps ten characters more than the dictionary says.
void TConfere::Tipo(const std::string& tabela, const TColunaDicionario& coluna, const TColunaFisica& fisica) {
    const std::string esperado = TipoDaColuna(coluna.tipo, coluna.tamanho, conexao_.TipoBanco());
    const std::string normal = TipoNormal(esperado), fisico = TipoNormal(fisica.tipoSql);
    if (normal == fisico) return;
    const bool texto = normal.substr(0, normal.find('(')) == fisico.substr(0, fisico.find('('));
    if (texto && fisica.tamanho == kLarguraAjustada && TamanhoDoTexto(coluna.tamanho) == kTamanhoAjustado) return;
    Desvio(
        texto ? "tamanho" : "tipo", tabela, coluna.nome,
        "é " + fisica.tipoSql + "; o dicionário diz " + (esperado.empty() ? coluna.tipo : Minusculas(Apara(esperado))));
}

void TConfere::Chave(const std::string& tabela) {
    std::vector<std::string> esperada;
    for (const auto& coluna : Fisicas(tabela))
        if (coluna.chave == 1) esperada.push_back(coluna.nome);
    const auto fisica = conexao_.ChavePrimaria(tabela).colunas;
    if (std::ranges::equal(esperada, fisica, IgualSemCaixa)) return;
    const auto lista = [](const auto& colunas) { return colunas.empty() ? "nenhuma" : Junta(colunas, ", "); };
    Desvio("chave", tabela, "", "chave primária: " + lista(fisica) + "; o dicionário diz " + lista(esperada));
}

void TConfere::Indices(const std::string& tabela) {
    auto fisicos = conexao_.Indices(tabela);
    for (const auto& indice : gravado_.Indices(tabela)) {
        const auto fisico = std::ranges::find_if(
            fisicos, [&](const TIndice& candidato) { return IgualSemCaixa(candidato.nome, indice.nome); });
        if (fisico == fisicos.end()) {
            Desvio("indice-falta", tabela, indice.nome, "está no dicionário e não na tabela");
            continue;
        }
        if (fisico->unico != indice.unico || !std::ranges::equal(fisico->colunas, indice.colunas, IgualSemCaixa))
            Desvio("indice-difere", tabela, indice.nome,
                   std::string(fisico->unico ? "único sobre " : "sobre ") + Junta(fisico->colunas, ", ") +
                       "; o dicionário diz " + (indice.unico ? "único sobre " : "sobre ") +
                       Junta(indice.colunas, ", "));
        fisicos.erase(fisico);
    }
    for (const auto& fisico : fisicos)
        if (fisico.restricao.empty()) Desvio("indice-sobra", tabela, fisico.nome, "está na tabela e não no dicionário");
}

void TConfere::Sobras() {
    for (const auto& [nome, colunas] : fisicas_) {
        if (nomes_.contains(nome) || kDoSistema.contains(nome)) continue;
        const auto original = nome.starts_with('B') ? nomes_.find(nome.substr(1)) : nomes_.end();
        if (original == nomes_.end())
            Desvio("tabela-sobra", nome, "", "está no banco e não no dicionário");
        else if (!abertas_.contains(original->first))
            Backup(nome, original->second);
    }
    for (const auto& [nome, tabela] : nomes_)
        if (abertas_.contains(nome))
            Desvio("reconstrucao-pendente", tabela, "",
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
            const std::string nome = Dialeto(conexao).Identificador(coluna);
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

void TConfere::Backup(const std::string& nome, const std::string& tabela) {
    const std::string inicio = "tabela de backup da reconstrução de " + tabela + ", que terminou: ";
    const auto faltam = fisicas_.contains(ChaveDeNome(tabela)) ? SoNaBackup(conexao_, nome, tabela) : std::nullopt;
    if (!faltam)
        Desvio("backup-sobra", nome, "", inicio + "não pôde ser comparada com ela; não a apague sem conferir");
    else if (*faltam > 0)
        Desvio("linhas-rejeitadas", tabela, nome,
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
    for (const auto& [secao, tabela, valor] : Parametros(conexao_, {kSecaoDaAnalise}))
        if (valor == kEmAnalise)
            Desvio("analise-pendente", tabela, "",
                   "a última atualização dela não chegou ao fim: rode a atualização de novo");
}

}  // namespace

std::vector<TDesvio> ConfereDicionario(TDataModulo& dm, const std::filesystem::path& pastaPrograma) {
    return TConfere(dm, pastaPrograma).Confere();
}

}  // namespace wkd
