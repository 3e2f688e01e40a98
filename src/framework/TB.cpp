#include "TB.h"

#include <algorithm>

#include "EscritaSegura.h"
#include "MarcaDaBackup.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// For whoever wants to see the statement that the server refused; failing to write it stops nothing. The file is made
/// anew: some file systems bring one that was emptied to the disk at once, ten times slower.
void GuardaComando(const std::filesystem::path& pasta, const std::string& comando) {
    try {
        TSaidaEmArquivo(CriaArquivo(pasta / "erroCria.sql")) << comando;
    } catch (const std::system_error&) {
    }
}

bool TemLinhas(TConnection& conexao, std::string_view tabela) {
    TWKDQuery q(conexao, "select 1 as um from " + std::string(tabela));
    q.Open();
    return !q.Eof();
}

}  // namespace

TTB::TTB(TConnection& conexao, std::filesystem::path pastaComandos)
    : conexao_(conexao), pastaComandos_(std::move(pastaComandos)), dicionario_(conexao) {}

bool TTB::Falha(std::string motivo) {
    erro_ = std::move(motivo);
    return false;
}

bool TTB::Tenta(const std::function<bool()>& operacao) {
    erro_.clear();
    try {
        return operacao();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return Falha(erro.what());
    }
}

bool TTB::ExisteTabela(std::string_view tabela) { return conexao_.ExisteTabela(tabela); }

bool TTB::CriaTabela(std::string_view tabela, bool backup) {
    comando_.clear();
    return Tenta([&] { return backup ? CriaBackup(tabela) : CriaDoDicionario(std::string(tabela)); });
}

bool TTB::EhBackup(const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    if (MarcaDaBackup(conexao_, backup) != TMarcaDaBackup::Nenhuma) return true;
    const auto daTabela = conexao_.Colunas(tabela);
    const auto doDicionario = ColunasDoDicionario(tabela);
    return std::ranges::all_of(conexao_.Colunas(backup), [&](const TColunaFisica& coluna) {
        return ColunaDeNome(daTabela, coluna.nome) || std::ranges::any_of(doDicionario, [&](const auto& outra) {
                   return IgualSemCaixa(outra.nome, coluna.nome);
               });
    });
}

std::string TTB::NaoEhBackup(std::string_view tabela) {
    const std::string nome(tabela), backup = NomeDaBackup(tabela);
    return "A tabela " + backup + " não é um backup de " + nome +
           " e fica como está. A reconstrução precisa desse nome: renomeie " + backup + " e rode a atualização de novo";
}

bool TTB::CriaBackup(std::string_view tabela) {
    const std::string backup = NomeDaBackup(tabela);
    if (!ColunasDoDicionario(backup).empty())
        return Falha("A tabela de backup " + backup + " teria o nome de uma tabela do dicionário");
    const bool existe = ExisteTabela(backup);
    if (existe && !EhBackup(std::string(tabela))) return Falha(NaoEhBackup(tabela));
    comando_ = ComandoCriaTabela(tabela, true);
    GuardaComando(pastaComandos_, comando_);
    if (existe) ExecutaComando(conexao_, "drop table " + backup);
    TTransacao transacao(conexao_);
    conexao_.Prepara(comando_)->Executa();
    MarcaBackup(conexao_, backup, TMarcaDaBackup::Guardando);
    transacao.Commit();
    return true;
}

bool TTB::CriaDoDicionario(const std::string& tabela) {
    comando_ = ComandoCriaTabela(tabela, false);
    GuardaComando(pastaComandos_, comando_);
    try {
        ExecutaComando(conexao_, comando_);
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida() || !ExisteTabela(tabela)) throw;
        return Falha("A tabela " + tabela + " já existe");
    }
}

bool TTB::AtualizaTabela(std::string_view tabela) {
    return Tenta([&] {
        const auto fisicas = conexao_.Colunas(tabela);
        if (fisicas.empty()) return Falha("A tabela " + std::string(tabela) + " não existe");
        std::vector<std::string> falhas;
        for (auto coluna : ColunasDoDicionario(tabela)) {
            if (ColunaDeNome(fisicas, coluna.nome)) continue;
            if (coluna.chave == 1 && TemLinhas(conexao_, tabela)) coluna.chave = 0;
            try {
                ExecutaComando(conexao_, "alter table " + std::string(tabela) + " ADD " + coluna.nome + " " +
                                             DefinicaoCampo(coluna, conexao_.TipoBanco()));
            } catch (const TErroBanco& erro) {
                if (erro.ConexaoPerdida()) throw;
                falhas.push_back(coluna.nome + ": " + erro.what());
            }
        }
        return falhas.empty() || Falha(Junta(falhas, "\n"));
    });
}

}  // namespace wkd
