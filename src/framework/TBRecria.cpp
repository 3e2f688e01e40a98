#include <algorithm>

#include "MarcaDaBackup.h"
#include "TB.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::int64_t kRefazendo = -1;  // SARQUIVO.VERSAO while the rows wait in a complete backup table

/// Recorded version of the table; nothing without a SARQUIVO row.
std::optional<std::int64_t> Versao(TConnection& conexao, const std::string& tabela) {
    TWKDQuery q(conexao, "select VERSAO from SARQUIVO where Upper(NOME_ARQUIVO) = " + Aspas(tabela));
    q.Open();
    if (q.Eof()) return std::nullopt;
    return q.Inteiro("VERSAO");
}

void MudaVersao(TConnection& conexao, const std::string& tabela, std::int64_t versao) {
    conexao
        .Prepara("update SARQUIVO set VERSAO = " + std::to_string(versao) +
                 " where Upper(NOME_ARQUIVO) = " + Aspas(tabela))
        ->Executa();
}

/// In one transaction: a table of that name is then known to be without its rows, whoever creates it. Nobody has
/// written into it since it was reserved.
void ApagaEMarca(TConnection& conexao, const std::string& tabela, std::unique_ptr<TReserva> reserva) {
    TTransacao transacao(conexao, std::move(reserva));
    MarcaBackup(conexao, NomeDaBackup(tabela), TMarcaDaBackup::Restaurando);
    conexao.Prepara("drop table " + tabela)->Executa();
    transacao.Commit();
}

std::int64_t Conta(TConnection& conexao, const std::string& tabela) {
    return ContaRegistros(conexao, "select count(*) as total from " + tabela);
}

/// Server-side copy of the columns that both tables have; `condicao` empty or beginning with " where ".
void Copia(TConnection& conexao, const std::string& origem, const std::string& destino, const std::string& condicao) {
    std::vector<std::string> comuns;
    const auto destinos = conexao.Colunas(destino);
    for (const auto& coluna : conexao.Colunas(origem)) {
        const TColunaFisica* igual = ColunaDeNome(destinos, coluna.nome);
        if (igual && igual->expressao.empty()) comuns.push_back(Identificador(coluna.nome, conexao.TipoBanco()));
    }
    const std::string lista = Junta(comuns, ",");
    const auto comando =
        conexao.Prepara("insert into " + destino + " (" + lista + ") select " + lista + " from " + origem + condicao);
    TTransacao transacao(conexao);
    comando->Executa();
    transacao.Commit();
}

}  // namespace

/// Whether rows of the table may wait in the backup of an interrupted rebuild: the old table is not known to be whole.
bool TTB::Esperam(const std::string& tabela) {
    const auto marca = MarcaDaBackup(conexao_, NomeDaBackup(tabela));
    if (marca != TMarcaDaBackup::Nenhuma) return marca == TMarcaDaBackup::Restaurando;
    return EhBackup(tabela) || Conta(conexao_, tabela) == 0;
}

bool TTB::GuardaNaBackup(const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    if (!CriaTabela(tabela, true)) return false;
    Copia(conexao_, tabela, backup, "");
    if (Conta(conexao_, tabela) != Conta(conexao_, backup))
        return Falha("A tabela " + tabela + " mudou durante a cópia para " + backup);
    MudaVersao(conexao_, tabela, kRefazendo);
    return true;
}

bool TTB::CompletaBackup(const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    const auto colunas = conexao_.Colunas(backup);
    std::vector<std::string> iguais;
    for (const auto& chave : ColunasDaChave(tabela))
        if (ColunaDeNome(colunas, chave)) iguais.push_back(backup + "." + chave + " = " + tabela + "." + chave);
    if (!iguais.empty()) {
        Copia(conexao_, tabela, backup,
              " where not exists (select 1 from " + backup + " where " + Junta(iguais, " and ") + ")");
        return true;
    }
    const auto linhas = Conta(conexao_, tabela);
    if (linhas >= Conta(conexao_, backup)) return GuardaNaBackup(tabela);
    return linhas == 0 || Falha("Sem chave, não se sabe quais registros de " + tabela + " faltam em " + backup);
}

bool TTB::RefazIndices(const std::string& tabela) {
    std::vector<std::string> falhas;
    if (!CriaIndicePrimario(tabela, false)) falhas.push_back(erro_);
    if (!CriaIndiceSecundarios(tabela)) falhas.push_back(erro_);
    return falhas.empty() || Falha(Junta(falhas, "\n"));
}

bool TTB::ReCriaTabela(std::string_view tabela) {
    return Tenta([&] {
        const std::string nome = Maiusculas(tabela);
        const std::string backup = NomeDaBackup(nome);
        if (const auto impedimento = ImpedimentoParaCriar(nome)) return Falha(*impedimento);
        const auto versao = Versao(conexao_, nome);
        if (!versao) return Falha("A tabela " + nome + " não está em SARQUIVO");

        const bool existe = ExisteTabela(nome);
        auto reserva = existe ? conexao_.Reserva(nome) : nullptr;
        const bool guardada = ExisteTabela(backup) && (!existe || (*versao == kRefazendo && Esperam(nome)));
        const bool marcada = guardada && MarcaDaBackup(conexao_, backup) != TMarcaDaBackup::Nenhuma;
        if (marcada) MarcaBackup(conexao_, backup, TMarcaDaBackup::Restaurando);
        if (guardada) MudaVersao(conexao_, nome, kRefazendo);
        if (existe && !(guardada ? CompletaBackup(nome) : GuardaNaBackup(nome))) return false;
        if (existe) ApagaEMarca(conexao_, nome, std::move(reserva));
        const bool erguida = Tenta([&] {
            if (!CriaTabela(nome, false)) return false;
            if (existe || guardada) Copia(conexao_, backup, nome, "");
            return true;
        });
        if (!erguida) return Falha("Os registros de " + nome + " estão em " + backup + ": " + erro_);
        const bool indices = RefazIndices(nome);
        TTransacao fim(conexao_);
        MudaVersao(conexao_, nome, *versao);
        if (existe || marcada) MarcaBackup(conexao_, backup, TMarcaDaBackup::Concluida);
        fim.Commit();
        return indices;
    });
}

}  // namespace wkd
