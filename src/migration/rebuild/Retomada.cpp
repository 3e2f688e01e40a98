// What a rebuild does about one that an earlier run began.
#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "rebuild/CriaBackup.h"
#include "rebuild/Nova.h"
#include "rebuild/Reconstrucao.h"
#include "rows/WKDQuery.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

/// Goes on with the restore that an earlier run broke off. The table has been in use since, and what is in it stays.
/// One that the package wants otherwise is whole then, and is rebuilt anew.
void TReconstrucao::Retoma() {
    fase_ = TFase::Retomando;
    const bool doPacote = ColunasDoPacote();
    ReabreReconstrucao(ctx_, tabela_);
    const TRestante restante = RestauracaoQueFalta(ctx_, tabela_);
    RelataRetorno(restante);
    chave_ = ChaveGuardada(ctx_, tabela_);
    antes_ = ContaRegistros(ctx_.Conexao(), "select count(*) as total from " + tabela_) + restante.linhas;
    if (doPacote) RegravaDicionarioNovo();
    const bool restaurada = Restaura(restante);
    const TConferencia conferencia = Confere();
    if (restaurada && doPacote) Termina(conferencia.Igual());
    if (!restaurada && doPacote) CompletaIndices();
    if (!restaurada || doPacote) {
        fase_ = TFase::Terminada;
        return;
    }
    const bool temTudo = conferencia.Igual() && !conferencia.emParte && ColunasSoDe(tabela_, backup_).empty();
    if (!temTudo) DispensaBackup();
    fase_ = temTudo ? TFase::Devolvida : TFase::Superada;
}

/// Nobody knows whether rows that a backup without mark has, and the table has not, were deleted since.
void TReconstrucao::RelataRetorno(const TRestante& restante) {
    if (restante.linhas == 0 || EstadoDaReconstrucao(ctx_, tabela_) != TEstadoDaReconstrucao::Desconhecida) return;
    ctx_.Tela().Memo1("Tabela " + tabela_ + ": " + std::to_string(restante.linhas) + " registros que só " + backup_ +
                      " tinha voltam para a tabela");
}

/// The table holds more than its backup, or may do: the next one takes its place, but for values that the package has a
/// column for, and no other place.
void TReconstrucao::DispensaBackup() {
    const auto ficaram = ColunasSoDe(backup_, tabela_);
    std::vector<std::string> pedidas;
    for (const auto& coluna : ColunasNovas(ctx_, nome_))
        std::ranges::copy_if(ficaram, std::back_inserter(pedidas),
                             [&](const std::string& nome) { return IgualSemCaixa(coluna.nome, nome); });
    if (!pedidas.empty())
        throw TErroConhecido(TFalha::SobraNoBackup, "a tabela mudou desde a reconstrução interrompida, e só " +
                                                        backup_ + " tem os valores de " + Junta(pedidas, ", "));
    DevolveObjetos();
    MarcaGuardada(ctx_, tabela_);
}

/// Whether the table was created from the package's columns. Without a mark its own columns must say so, too.
bool TReconstrucao::ColunasDoPacote() {
    const auto novas = ColunasNovas(ctx_, nome_);
    const auto definicoes = [this](const std::vector<TColunaDicionario>& colunas) {
        std::set<std::string> textos;
        for (const auto& coluna : colunas)
            if (ColunaFisica(coluna)) textos.insert(Maiusculas(coluna.nome + DefinicaoCampo(coluna, ctx_.Banco())));
        return textos;
    };
    if (definicoes(ctx_.dm.Atualiza.ColunasDoDicionario(tabela_)) != definicoes(novas)) return false;
    return EstadoDaReconstrucao(ctx_, tabela_) == TEstadoDaReconstrucao::Restaurando || TemColunas(novas);
}

/// Whether the table has these columns, of these types, and no others.
bool TReconstrucao::TemColunas(const std::vector<TColunaDicionario>& colunas) {
    const auto fisicas = ctx_.Conexao().Colunas(tabela_);
    const auto tem = [&](const TColunaDicionario& coluna) {
        const TColunaFisica* fisica = ColunaDeNome(fisicas, coluna.nome);
        return fisica &&
               TipoNormal(fisica->tipoSql) == TipoNormal(TipoDaColuna(coluna.tipo, coluna.tamanho, ctx_.Banco()));
    };
    const auto esperadas = std::ranges::count_if(colunas, ColunaFisica);
    return std::ssize(fisicas) == esperadas &&
           std::ranges::all_of(colunas, [&](const auto& coluna) { return !ColunaFisica(coluna) || tem(coluna); });
}

}  // namespace wkd
