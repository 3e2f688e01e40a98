#include <algorithm>
#include <iterator>
#include <set>

#include "RegistroFirebird.h"
#include "TB.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// A created table gets its defaults in capitals.
std::string Definicao(TColunaDicionario coluna, TTipoBanco banco) {
    coluna.valorPadrao = Maiusculas(coluna.valorPadrao);
    return coluna.nome + DefinicaoCampo(coluna, banco);
}

/// Whether a column of the dictionary's type, texts as wide as they need to be, holds every value of the physical one.
bool Comporta(const TColunaDicionario& coluna, const TColunaFisica& fisica, TTipoBanco banco) {
    const std::string tipo = Maiusculas(Apara(TipoDaColuna(coluna.tipo, coluna.tamanho, banco)));
    const auto comeca = [&](std::string_view texto) { return tipo.starts_with(texto); };
    switch (fisica.tipo) {
        case TTipoDado::Texto:
            return (comeca("VARCHAR") || comeca("NVARCHAR")) && fisica.tamanho > 0;
        case TTipoDado::Inteiro:
            return comeca("INT") && !IgualSemCaixa(fisica.tipoSql, "bigint");
        case TTipoDado::Flutuante:
            return comeca("DOUBLE") || comeca("FLOAT");
        case TTipoDado::Data:
            return comeca("DATE");
        case TTipoDado::Hora:
            return comeca("TIME") && !comeca("TIMESTAMP");
        case TTipoDado::DataHora:
            return (comeca("TIMESTAMP") || comeca("DATETIME")) &&
                   !IgualSemCaixa(fisica.tipoSql.substr(0, 9), "datetime2");
        case TTipoDado::Blob:
            return comeca("BLOB") || comeca("IMAGE") || comeca("LONGBLOB");
        default:
            return false;
    }
}

std::string DefinicaoNaBackup(TColunaDicionario coluna, const TColunaFisica* fisica, TTipoBanco banco) {
    if (fisica && !Comporta(coluna, *fisica, banco))
        return coluna.nome + " " + fisica->tipoSql + (coluna.chave == 1 ? " not null " : "");
    if (fisica && fisica->tipo == TTipoDado::Texto)
        coluna.tamanho = std::to_string(std::max(TamanhoDoTexto(coluna.tamanho), fisica->tamanho));
    return Definicao(std::move(coluna), banco);
}

std::vector<std::string> DefinicoesDaBackup(const std::vector<TColunaDicionario>& dicionario,
                                            const std::vector<TColunaFisica>& fisicas, TTipoBanco banco) {
    std::vector<std::string> linhas;
    std::set<std::string> nomes;
    for (const auto& coluna : dicionario) {
        linhas.push_back(DefinicaoNaBackup(coluna, ColunaDeNome(fisicas, coluna.nome), banco));
        nomes.insert(ChaveDeNome(coluna.nome));
    }
    for (const auto& fisica : fisicas)
        if (fisica.expressao.empty() && !nomes.contains(ChaveDeNome(fisica.nome)))
            linhas.push_back(Identificador(fisica.nome, banco) + " " + fisica.tipoSql);
    return linhas;
}

std::vector<std::string> Definicoes(const std::vector<TColunaDicionario>& dicionario, TTipoBanco banco) {
    std::vector<std::string> linhas;
    for (const auto& coluna : dicionario) linhas.push_back(Definicao(coluna, banco));
    return linhas;
}

std::string Comando(std::string_view inicio, const std::vector<std::string>& linhas) {
    return std::string(inicio) + "\n" + Junta(linhas, ",\n") + "\n )";
}

std::string ComandoDaTabela(std::string_view tabela, const std::vector<TColunaDicionario>& colunas, TTipoBanco banco) {
    return Comando("Create Table " + std::string(tabela) + " (", Definicoes(colunas, banco));
}

}  // namespace

std::string TTB::ComandoCriaTabela(std::string_view tabela, bool backup) {
    const auto colunas = ColunasDoDicionario(tabela);
    if (!backup) return ComandoDaTabela(tabela, colunas, conexao_.TipoBanco());
    return Comando("Create Table " + NomeDaBackup(tabela) + "(",
                   DefinicoesDaBackup(colunas, conexao_.Colunas(tabela), conexao_.TipoBanco()));
}

std::string TTB::ComandoCriaTabela(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) const {
    std::vector<TColunaDicionario> fisicas;
    std::ranges::copy_if(colunas, std::back_inserter(fisicas), ColunaFisica);
    return ComandoDaTabela(tabela, fisicas, conexao_.TipoBanco());
}

/// Throws what the server has against the statement; nothing stays of it.
void TTB::Ensaia(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) {
    const std::string ensaio = NomeDeEnsaio(tabela, conexao_.TipoBanco());
    const auto comando = conexao_.Prepara(ComandoCriaTabela(ensaio.empty() ? tabela : ensaio, colunas));
    if (ensaio.empty()) return;
    const TTransacao desfeita(conexao_);
    comando->Executa();
}

std::optional<std::string> TTB::ImpedimentoParaCriar(std::string_view tabela,
                                                     const std::vector<TColunaDicionario>& colunas) {
    std::set<std::string> nomes;
    for (const auto& coluna : colunas) {
        if (!ColunaFisica(coluna)) continue;
        if (!TipoConhecido(coluna.tipo)) return "Tipo desconhecido na coluna " + coluna.nome + ": " + coluna.tipo;
        if (!nomes.insert(ChaveDeNome(coluna.nome)).second) return "Coluna repetida no dicionário: " + coluna.nome;
    }
    if (nomes.empty()) return "O dicionário não tem colunas da tabela " + std::string(tabela);
    try {
        Ensaia(tabela, colunas);
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return erro.what();
    }
    if (conexao_.TipoBanco() != TTipoBanco::tbInterbase) return std::nullopt;
    const std::int64_t bytes = BytesDoRegistro(conexao_, colunas);
    if (bytes <= kBytesDoRegistro) return std::nullopt;
    return "O registro da tabela " + std::string(tabela) + " teria " + std::to_string(bytes) +
           " bytes; o servidor aceita até " + std::to_string(kBytesDoRegistro);
}

}  // namespace wkd
