#include "tables/TB.h"

#include <algorithm>
#include <stdexcept>

#include "dialect/Dialeto.h"
#include "process/EscritaSegura.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

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

bool TTB::Falha(TErro erro) {
    erro_ = std::move(erro);
    return false;
}

bool TTB::Tenta(const std::function<bool()>& operacao) {
    erro_ = {};
    try {
        return operacao();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return Falha(erro.Dados());
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

TErro TTB::NaoEhBackup(std::string_view tabela) {
    const std::string nome(tabela), backup = NomeDaBackup(tabela);
    return {.mensagem = "A tabela " + backup + " não é um backup de " + nome +
                        " e fica como está. A reconstrução precisa desse nome: renomeie " + backup +
                        " e rode a atualização de novo",
            .falha = TFalha::Impedimento};
}

bool TTB::CriaBackup(std::string_view tabela) {
    const std::string backup = NomeDaBackup(tabela);
    if (!ColunasDoDicionario(backup).empty())
        return Falha(TFalha::Impedimento, "A tabela de backup " + backup + " teria o nome de uma tabela do dicionário");
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
        return Falha(TFalha::ObjetoExistente, "A tabela " + tabela + " já existe");
    }
}

bool TTB::AtualizaTabela(std::string_view tabela) {
    return Tenta([&] {
        const auto fisicas = conexao_.Colunas(tabela);
        if (fisicas.empty()) return Falha(TFalha::ObjetoInexistente, "A tabela " + std::string(tabela) + " não existe");
        std::vector<TErro> falhas;
        for (auto coluna : ColunasDoDicionario(tabela)) {
            if (ColunaDeNome(fisicas, coluna.nome)) continue;
            if (coluna.chave == 1 && TemLinhas(conexao_, tabela)) coluna.chave = 0;
            try {
                ExecutaComando(conexao_, "alter table " + std::string(tabela) + " ADD " + coluna.nome + " " +
                                             DefinicaoCampo(coluna, conexao_.TipoBanco()));
            } catch (const TErroBanco& erro) {
                if (erro.ConexaoPerdida()) throw;
                falhas.push_back(erro.Dados());
                falhas.back().mensagem = coluna.nome + ": " + erro.what();
            }
        }
        return falhas.empty() || Falha(JuntaErros(falhas));
    });
}

namespace {

using TValores = std::vector<std::pair<std::string, TValor>>;

std::vector<std::string> Nomes(const TValores& valores) {
    std::vector<std::string> nomes;
    for (const auto& [nome, valor] : valores) nomes.push_back(nome);
    return nomes;
}

/// "COLUMN = :pN" for each, parameters numbered from `primeiro` on.
std::vector<std::string> Igualdades(const TValores& valores, std::size_t primeiro) {
    std::vector<std::string> iguais;
    for (const auto& nome : Nomes(valores)) iguais.push_back(nome + " = :p" + std::to_string(primeiro + iguais.size()));
    return iguais;
}

std::string ComandoAltera(const std::string& tabela, const TValores& valores, const TValores& chave,
                          const std::string& condicao) {
    const std::string onde = chave.empty() ? condicao : Junta(Igualdades(chave, valores.size()), " and ");
    return "update " + tabela + " set " + Junta(Igualdades(valores, 0), ",") + " where " + onde;
}

}  // namespace

bool TTB::PosicionaTB(std::string_view tabela, std::string_view condicao) {
    linha_ = {};
    linha_.tabela = tabela;
    const auto colunas = conexao_.ChavePrimaria(tabela).colunas;
    TWKDQuery q(conexao_, "select " + (colunas.empty() ? "1 as um" : Junta(colunas, ",")) + " from " + linha_.tabela +
                              " where " + std::string(condicao));
    q.Open();
    if (q.Eof()) return false;
    for (const auto& coluna : colunas) linha_.chave.emplace_back(coluna, q.Campo(coluna));
    linha_.condicao = condicao;
    return true;
}

void TTB::Novo(std::string_view tabela) {
    linha_ = {};
    linha_.tabela = tabela;
    linha_.modo = TLinhaAtual::TModo::Inclusao;
}

void TTB::Editar() {
    if (linha_.condicao.empty()) throw std::logic_error("Editar sem registro posicionado");
    linha_.valores.clear();
    linha_.modo = TLinhaAtual::TModo::Edicao;
}

void TTB::SetValor(std::string_view campo, const TValor& valor) {
    if (linha_.modo == TLinhaAtual::TModo::Consulta) throw std::logic_error("SetValor fora de Novo ou Editar");
    for (auto& [nome, atual] : linha_.valores) {
        if (!IgualSemCaixa(nome, campo)) continue;
        atual = valor;
        return;
    }
    linha_.valores.emplace_back(campo, valor);
}

void TTB::Grava() {
    if (linha_.modo == TLinhaAtual::TModo::Consulta) throw std::logic_error("Grava fora de Novo ou Editar");
    const TLinhaAtual linha = std::exchange(linha_, {});
    if (linha.valores.empty()) return;

    const bool inclusao = linha.modo == TLinhaAtual::TModo::Inclusao;
    const auto comando =
        conexao_.Prepara(inclusao ? ComandoInsere(linha.tabela, Nomes(linha.valores))
                                  : ComandoAltera(linha.tabela, linha.valores, linha.chave, linha.condicao));
    std::size_t parametro = 0;
    for (const auto& [nome, valor] : linha.valores) comando->Atribui(parametro++, valor);
    if (!inclusao)
        for (const auto& [nome, valor] : linha.chave) comando->Atribui(parametro++, valor);
    TTransacao transacao(conexao_);
    comando->Executa();
    transacao.Commit();
}

namespace {

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

/// Columns that both tables have and the destination stores.
std::vector<std::string> Comuns(TConnection& conexao, const std::string& origem, const std::string& destino) {
    std::vector<std::string> comuns;
    const auto destinos = conexao.Colunas(destino);
    for (const auto& coluna : conexao.Colunas(origem)) {
        const TColunaFisica* igual = ColunaDeNome(destinos, coluna.nome);
        if (igual && igual->expressao.empty()) comuns.push_back(Dialeto(conexao).Identificador(coluna.nome));
    }
    return comuns;
}

void Executa(TConnection& conexao, const std::string& sql) {
    const auto comando = conexao.Prepara(sql);
    TTransacao transacao(conexao);
    comando->Executa();
    transacao.Commit();
}

/// Server-side copy of the common columns.
void Copia(TConnection& conexao, const std::string& origem, const std::string& destino) {
    const std::string lista = Junta(Comuns(conexao, origem, destino), ",");
    Executa(conexao, "insert into " + destino + " (" + lista + ") select " + lista + " from " + origem);
}

/// The rows of `origem` take the place of those of their key, whose other columns stay, and the others are added.
void Funde(TConnection& conexao, const std::string& origem, const std::string& destino,
           const std::vector<std::string>& chave) {
    std::vector<std::string> iguais, valores, muda;
    for (const auto& coluna : chave)
        iguais.push_back("d." + Dialeto(conexao).Identificador(coluna) + " = o." +
                         Dialeto(conexao).Identificador(coluna));
    const auto comuns = Comuns(conexao, origem, destino);
    for (const auto& coluna : comuns) {
        valores.push_back("o." + coluna);
        muda.push_back(coluna + " = o." + coluna);
    }
    Executa(conexao, "merge into " + destino + " d using " + origem + " o on (" + Junta(iguais, " and ") +
                         ") when matched then update set " + Junta(muda, ", ") + " when not matched then insert (" +
                         Junta(comuns, ", ") + ") values (" + Junta(valores, ", ") + ");");
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
    Copia(conexao_, tabela, backup);
    if (Conta(conexao_, tabela) != Conta(conexao_, backup))
        return Falha(TFalha::EmUso, "A tabela " + tabela + " mudou durante a cópia para " + backup);
    MudaVersao(conexao_, tabela, kVersaoPendente);
    return true;
}

bool TTB::CompletaBackup(const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    const auto colunas = conexao_.Colunas(backup);
    std::vector<std::string> chave = ColunasDaChave(tabela);
    std::erase_if(chave, [&](const std::string& nome) { return !ColunaDeNome(colunas, nome); });
    if (!chave.empty()) {
        Funde(conexao_, tabela, backup, chave);
        return true;
    }
    const auto linhas = Conta(conexao_, tabela);
    if (linhas >= Conta(conexao_, backup)) return GuardaNaBackup(tabela);
    return linhas == 0 ||
           Falha(TFalha::Impedimento, "Sem chave, não se sabe quais registros de " + tabela + " faltam em " + backup);
}

bool TTB::RefazIndices(const std::string& tabela) {
    std::vector<TErro> falhas;
    if (!CriaIndicePrimario(tabela, false)) falhas.push_back(erro_);
    if (!CriaIndiceSecundarios(tabela)) falhas.push_back(erro_);
    return falhas.empty() || Falha(JuntaErros(falhas));
}

bool TTB::ReCriaTabela(std::string_view tabela) {
    return Tenta([&] {
        const std::string nome = Maiusculas(tabela);
        const std::string backup = NomeDaBackup(nome);
        if (const auto impedimento = ImpedimentoParaCriar(nome)) return Falha(*impedimento);
        const auto versao = Versao(conexao_, nome);
        if (!versao) return Falha(TFalha::Impedimento, "A tabela " + nome + " não está em SARQUIVO");

        const bool existe = ExisteTabela(nome);
        auto reserva = existe ? conexao_.Reserva(nome) : nullptr;
        const bool guardada = ExisteTabela(backup) && (!existe || (*versao == kVersaoPendente && Esperam(nome)));
        const bool marcada = guardada && MarcaDaBackup(conexao_, backup) != TMarcaDaBackup::Nenhuma;
        if (marcada) MarcaBackup(conexao_, backup, TMarcaDaBackup::Restaurando);
        if (guardada) MudaVersao(conexao_, nome, kVersaoPendente);
        if (existe && !(guardada ? CompletaBackup(nome) : GuardaNaBackup(nome))) return false;
        if (existe) ApagaEMarca(conexao_, nome, std::move(reserva));
        const bool erguida = Tenta([&] {
            if (!CriaTabela(nome, false)) return false;
            if (existe || guardada) Copia(conexao_, backup, nome);
            return true;
        });
        if (!erguida) {
            erro_.mensagem = "Os registros de " + nome + " estão em " + backup + ": " + erro_.mensagem;
            return false;
        }
        const bool indices = RefazIndices(nome);
        TTransacao fim(conexao_);
        MudaVersao(conexao_, nome, *versao);
        if (existe || marcada) MarcaBackup(conexao_, backup, TMarcaDaBackup::Concluida);
        fim.Commit();
        return indices;
    });
}

}  // namespace wkd
