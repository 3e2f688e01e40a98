#include "copy/CopiaPeloNumero.h"

#include <algorithm>

#include "copy/FormaDaCopia.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kBytesDaChave = 8;
const std::string kDaChave = " where rdb$db_key = ";

/// Whether the server may have to give the column a number, or what a required one gets.
bool Completada(const TColunaDaCopia& coluna) {
    const auto tipo = coluna.destino.tipo;
    const bool longa = tipo == TTipoDado::Blob || tipo == TTipoDado::Memo || tipo == TTipoDado::Bytes;
    return coluna.origem && (coluna.numerada || (coluna.destino.requerido && !coluna.origem->requerido && !longa));
}

/// Condition of the rows to which it gives it.
std::string Falta(const TColunaDaCopia& coluna, const TDialeto& dialeto) {
    const std::string nome = dialeto.Identificador(coluna.origem->nome);
    return coluna.numerada ? "coalesce(" + nome + ", 0) = 0" : nome + " is null";
}

/// What makes a row need the client because of this column; empty for nothing.
std::string Excecao(const TColunaDaCopia& coluna, const TDialeto& dialeto) {
    std::vector<std::string> excecoes;
    if (coluna.destino.requerido && !Completada(coluna))
        excecoes.push_back(dialeto.Identificador(coluna.origem->nome) + " is null");
    if (auto longo = TextoNaoCabe(*coluna.origem, coluna.destino, dialeto); !longo.empty())
        excecoes.push_back(std::move(longo));
    return Junta(excecoes, " or ");
}

/// Record number, whether the row needs the client, and a digit for each column that is completed.
std::string ConsultaDasChaves(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas,
                              const TDialeto& dialeto) {
    std::vector<std::string> excecoes, faltas;
    for (const auto& coluna : colunas) {
        if (!coluna.origem) continue;
        if (Completada(coluna)) faltas.push_back("case when " + Falta(coluna, dialeto) + " then '1' else '0' end");
        if (auto excecao = Excecao(coluna, dialeto); !excecao.empty()) excecoes.push_back(std::move(excecao));
    }
    const std::string precisa = excecoes.empty() ? "0" : "case when " + Junta(excecoes, " or ") + " then 1 else 0 end";
    const std::string digitos = faltas.empty() ? "''" : Junta(faltas, " || ");
    return "select rdb$db_key, " + precisa + ", " + digitos + " from " + copia.origem + copia.condicao;
}

/// Whether the column counts the rows.
bool Contada(const TColunaDaCopia& coluna) {
    return coluna.numerada && !coluna.origem && coluna.fixo.ComoInteiro() == 0;
}

/// The value of a column in the block. What the source lacks, or a row of it, comes as a parameter P0, P1, ...; of one
/// that counts, the last number given, which for the rows of the source is a variable N0, N1, ...
std::string ValorNoBloco(const TColunaDaCopia& coluna, const std::string& numero, const TDialeto& dialeto) {
    if (!coluna.origem) return ":p" + numero + (Contada(coluna) ? " + :lugar + 1" : "");
    const std::string nome = dialeto.Identificador(coluna.origem->nome);
    if (!Completada(coluna)) return nome;
    if (!coluna.numerada) return "coalesce(" + nome + ", :p" + numero + ")";
    return "iif(" + Falta(coluna, dialeto) + ", :n" + numero + ", " + nome + ")";
}

/// One insert for each record number. The digits F0, F1, ... tell which rows take the next number.
std::string Bloco(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas, const TDialeto& dialeto) {
    const std::string bytes = std::to_string(kBytesDaChave);
    const std::size_t linhas = std::min(copia.linhasPorLote, kLinhasPorComando);
    std::string parametros, variaveis, inicio, conta;
    std::vector<std::string> nomes, valores;
    for (std::size_t i = 0; i < colunas.size(); ++i) {
        const std::string numero = std::to_string(i);
        nomes.push_back(dialeto.Identificador(colunas[i].destino.nome));
        valores.push_back(ValorNoBloco(colunas[i], numero, dialeto));
        if (!colunas[i].origem || Completada(colunas[i]))
            parametros += ", p" + numero + " " + colunas[i].destino.tipoSql + " = :P" + numero;
        if (!Completada(colunas[i]) || !colunas[i].numerada) continue;
        parametros += ", f" + numero + " varchar(" + std::to_string(linhas) + ") character set ascii = :F" + numero;
        variaveis += " declare n" + numero + " bigint;";
        inicio += " n" + numero + " = p" + numero + ";";
        conta +=
            " if (substring(:f" + numero + " from :lugar + 1 for 1) = '1') then n" + numero + " = n" + numero + " + 1;";
    }
    return "execute block (quantas integer = :QUANTAS, chaves varchar(" + std::to_string(kBytesDaChave * linhas) +
           ") character set octets = :CHAVES" + parametros + ") as declare lugar integer = 0;" + variaveis + " begin" +
           inicio + " while (lugar < quantas) do begin" + conta + " insert into " + copia.destino + " (" +
           Junta(nomes, ",") + ") select " + Junta(valores, ",") + " from " + copia.origem + kDaChave +
           "substring(:chaves from :lugar * " + bytes + " + 1 for " + bytes + "); lugar = lugar + 1; end end";
}

}  // namespace

TCopiaPeloNumero::TCopiaPeloNumero(TConnection& conexao, const TCopia& copia,
                                   const std::vector<TColunaDaCopia>& colunas) {
    const TDialeto& dialeto = Dialeto(conexao);
    chaves_ = conexao.Prepara(ConsultaDasChaves(copia, colunas, dialeto));
    linha_ =
        conexao.Prepara("select " + ListaDaOrigem(colunas, dialeto) + " from " + copia.origem + kDaChave + ":CHAVE");
    copia_ = conexao.Prepara(Bloco(copia, colunas, dialeto));
    for (std::size_t i = 0; i < colunas.size(); ++i) {
        const std::string numero = std::to_string(i);
        if (Completada(colunas[i])) completadas_.push_back({numero, colunas[i].destino, colunas[i].numerada});
        if (colunas[i].origem) continue;
        copia_->Atribui("P" + numero, colunas[i].fixo);
        if (Contada(colunas[i])) contadas_.emplace_back("P" + numero, colunas[i].destino.nome);
    }
}

std::set<std::string> TCopiaPeloNumero::Copia(std::span<const std::string_view> chaves, std::string_view faltas,
                                              TRenumeracao& renumeracao) {
    const auto quantas = static_cast<std::int64_t>(chaves.size());
    std::string juntas;
    for (const auto chave : chaves) juntas += chave;
    copia_->Atribui("QUANTAS", quantas);
    copia_->Atribui("CHAVES", TBytes{std::move(juntas)});
    for (const auto& [parametro, coluna] : contadas_) copia_->Atribui(parametro, renumeracao.Ultimo(coluna));
    std::vector<std::string> digitos(completadas_.size());
    for (std::size_t i = 0; i < faltas.size(); ++i) digitos[i % digitos.size()] += faltas[i];
    for (std::size_t i = 0; i < completadas_.size(); ++i) {
        const auto& [numero, destino, numerada] = completadas_[i];
        copia_->Atribui("P" + numero, numerada ? TValor(renumeracao.Ultimo(destino.nome)) : ValorObrigatorio(destino));
        if (numerada) copia_->Atribui("F" + numero, digitos[i]);
    }
    copia_->Executa();
    for (const auto& [parametro, coluna] : contadas_) renumeracao.Avanca(coluna, quantas);
    std::set<std::string> alteradas;
    for (std::size_t i = 0; i < completadas_.size(); ++i) {
        const auto completou = std::ranges::count(digitos[i], '1');
        if (completou > 0) alteradas.insert(ChaveDeNome(completadas_[i].destino.nome));
        if (completadas_[i].numerada) renumeracao.Avanca(completadas_[i].destino.nome, completou);
    }
    return alteradas;
}

}  // namespace wkd
