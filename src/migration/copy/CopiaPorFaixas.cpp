#include "copy/CopiaPorFaixas.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "copy/FormaDaCopia.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// The only column of the key, when it is a whole number in every row.
const TColunaFisica* InteiroDaChave(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas) {
    if (copia.chave.size() != 1) return nullptr;
    const auto achada = std::ranges::find_if(
        colunas, [&](const auto& c) { return c.origem && IgualSemCaixa(c.origem->nome, copia.chave.front()); });
    if (achada == colunas.end() || !achada->origem->requerido) return nullptr;
    return BytesDoInteiro(*achada->origem) > 0 ? &*achada->origem : nullptr;
}

bool EhSo(const std::vector<std::string>& colunas, const std::string& nome) {
    return colunas.size() == 1 && IgualSemCaixa(colunas.front(), nome);
}

/// Ranges of a table without an index would each read all of it. It goes with the backup table, and refuses no row.
void ExigeIndice(TConnection& conexao, const std::string& backup, const std::string& coluna) {
    const auto indices = conexao.Indices(backup);
    if (std::ranges::any_of(indices, [&](const TIndice& indice) { return EhSo(indice.colunas, coluna); })) return;
    TIndice indice;
    indice.nome = backup + "_CHAVE";
    indice.colunas = {coluna};
    conexao.ExecuteDirect(Dialeto(conexao).CriaIndice(indice, backup));
}

bool Repete(TConnection& conexao, const std::string& tabela, const std::string& coluna) {
    return ContaRegistros(conexao, "select count(*) as total from (select " + coluna + " from " + tabela +
                                       " group by " + coluna + " having count(*) > 1) repetidas") > 0;
}

/// Condition of the rows that need the client because of this column; empty for none.
std::string Excecao(const TColunaDaCopia& coluna, const TDialeto& dialeto) {
    const std::string nome = dialeto.Identificador(coluna.origem->nome);
    std::vector<std::string> excecoes;
    if (coluna.numerada) excecoes.push_back("coalesce(" + nome + ", 0) = 0");
    if (coluna.destino.requerido && !coluna.origem->requerido) excecoes.push_back(nome + " is null");
    if (auto longo = TextoNaoCabe(*coluna.origem, coluna.destino, dialeto); !longo.empty())
        excecoes.push_back(std::move(longo));
    return Junta(excecoes, " or ");
}

std::string ConsultaDasChaves(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas, const std::string& chave,
                              const TDialeto& dialeto) {
    std::vector<std::string> excecoes;
    for (const auto& coluna : colunas)
        if (auto excecao = Excecao(coluna, dialeto); !excecao.empty()) excecoes.push_back(std::move(excecao));
    const std::string precisa = excecoes.empty() ? "0" : "case when " + Junta(excecoes, " or ") + " then 1 else 0 end";
    return "select " + chave + ", " + precisa + " from " + copia.origem + " order by " + chave;
}

std::string ComandoDaFaixa(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas, const std::string& chave,
                           const TDialeto& dialeto) {
    std::vector<std::string> nomes, valores;
    for (const auto& coluna : colunas) {
        nomes.push_back(dialeto.Identificador(coluna.destino.nome));
        valores.push_back(dialeto.Identificador(coluna.origem->nome));
    }
    return "insert into " + copia.destino + " (" + Junta(nomes, ",") + ") select " + Junta(valores, ",") + " from " +
           copia.origem + " where " + chave + " between :DE and :ATE";
}

std::int64_t Inteiro(std::string_view chave) {
    std::int64_t numero = 0;
    std::from_chars(chave.data(), chave.data() + chave.size(), numero);
    return numero;
}

}  // namespace

std::optional<std::string> TCopiaPorFaixas::ColunaDaFaixa(TConnection& conexao, const TCopia& copia,
                                                          const std::vector<TColunaDaCopia>& colunas) {
    const bool emParte = !copia.condicao.empty() || copia.pula > 0 || copia.aoGravar;
    const bool completa = std::ranges::any_of(colunas, [](const auto& c) { return !c.origem; });
    const TColunaFisica* coluna = InteiroDaChave(copia, colunas);
    if (emParte || completa || !coluna) return std::nullopt;
    const std::string nome = Dialeto(conexao).Identificador(coluna->nome);
    if (EhSo(conexao.ChavePrimaria(copia.origem).colunas, coluna->nome)) return nome;
    if (copia.origem != NomeDaBackup(copia.tabela)) return std::nullopt;
    ExigeIndice(conexao, copia.origem, coluna->nome);
    return Repete(conexao, copia.origem, nome) ? std::nullopt : std::optional(nome);
}

TCopiaPorFaixas::TCopiaPorFaixas(TConnection& conexao, const TCopia& copia, const std::vector<TColunaDaCopia>& colunas,
                                 const std::string& chave)
    : origem_(copia.origem) {
    const TDialeto& dialeto = Dialeto(conexao);
    chaves_ = conexao.Prepara(ConsultaDasChaves(copia, colunas, chave, dialeto));
    linha_ = conexao.Prepara("select " + ListaDaOrigem(colunas, dialeto) + " from " + copia.origem + " where " + chave +
                             " = :CHAVE");
    copia_ = conexao.Prepara(ComandoDaFaixa(copia, colunas, chave, dialeto));
}

std::string TCopiaPorFaixas::Chave() { return std::to_string(chaves_->Valor(0).ComoInteiro()); }

TValor TCopiaPorFaixas::ValorDaChave(std::string_view chave) const { return Inteiro(chave); }

/// A row that came in between two of them has changed their number.
std::set<std::string> TCopiaPorFaixas::Copia(std::span<const std::string_view> chaves, std::string_view /*faltas*/,
                                             TRenumeracao& /*renumeracao*/) {
    copia_->Atribui("DE", Inteiro(chaves.front()));
    copia_->Atribui("ATE", Inteiro(chaves.back()));
    if (copia_->Executa() != std::ssize(chaves))
        throw std::runtime_error("os registros de " + origem_ + " mudaram durante a cópia");
    return {};
}

}  // namespace wkd
