#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "context/Saude.h"
#include "datamodule/DataModulo.h"
#include "dialect/Dialeto.h"
#include "layout/ReconstrucoesAbertas.h"
#include "tables/Dicionario.h"
#include "values/Erros.h"
#include "values/Valor.h"

namespace wkd {

/// What a run does with a table.
enum class TAcaoDaTabela { Nada, Cria, Altera, Reconstroi };

constexpr std::string_view NomeDaAcao(TAcaoDaTabela acao) {
    constexpr std::string_view kNomes[] = {"nada", "criar", "alterar", "reconstruir"};
    return kNomes[static_cast<int>(acao)];
}

/// What became of a table, a step or a correction.
enum class TDesfecho { Feito, NaoFeito, PelaMetade, NaoSeAplica };

constexpr std::string_view NomeDoDesfecho(TDesfecho desfecho) {
    constexpr std::string_view kNomes[] = {"feita", "não feita", "pela metade", "não se aplica"};
    return kNomes[static_cast<int>(desfecho)];
}

enum class TFimDaAtualizacao {
    Concluida,     // all steps ran, whatever they reported
    Interrompida,  // the process was asked to end: what is missing is the next run's
    Encerrada      // ended early: package, refused confirmation, connected users, another run
};

/// What the wizard's pages say about one update run.
struct TOpcoes {
    std::string alias;  // as typed
    std::filesystem::path pacote;
    bool tabelasSelecionadas = false;  // cbTabela
    std::vector<std::string> tabelas;  // mListaTabelas
    bool modoCompleto = false;         // rgModoAtualizacao on "Completo"
    bool completo = false;             // cbCompleto
    bool todas = false;                // cbAtualizaTodas
    bool querysAnteriores = true;      // chkQuerysAnteriores
    bool querysPosteriores = true;     // chkQuerysPosteriores

    std::string linhasPorCommit;  // as typed; empty: the alias's own, see LinhasPorCommit
    bool medeCommits = false;     // no batch of a copy commits in its statement, where its wait would not be seen

    std::chrono::milliseconds pausaDeReconexao{10'000};  // before the second try of three, twice that before the third

    std::filesystem::path marcaNaoCria;         // its presence turns null validation, layouts and system files off
    std::filesystem::path temporaria;           // below it the working directory is made
    std::filesystem::path pastaPrograma;        // log, rejects file
    std::filesystem::path pastaCorrente = ".";  // "erroCria.sql", marker files of the tables
};

struct TComandoRegistrado {
    std::string texto;
    std::string executado;  // the form of it that the server took, when that was another one
    std::string erro;       // empty: it ran
};

struct TTabelaRegistrada {
    std::string nome;
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    std::string motivo;
    std::vector<TComandoRegistrado> comandos;
    std::optional<std::int64_t> antes, depois;  // rows; nothing where they were not counted
    std::string hash;                           // of its content afterwards; empty: not computed
    double segundos = 0;
    TDesfecho desfecho = TDesfecho::PelaMetade;  // as long as it is under way
};

/// A step of the run, or a correction.
struct TPassoRegistrado {
    std::string nome;
    double segundos = 0;
    std::string erro = {};
    TDesfecho desfecho = TDesfecho::PelaMetade;  // as long as it is under way
    TFalha falha = TFalha::Outra;                // of the error
};

/// What the copies of rebuilds committed.
struct TCopiasConfirmadas {
    std::int64_t registros = 0, commits = 0;
    std::int64_t commitsComMuitas = 0;  // that they would have been with kMuitasPorCommit
    double segundos = 0;                // waited for

    /// Seconds that these would have saved: most pages of so small a commit are written again by the next one.
    double Economia() const {
        constexpr double kRepetidas = 0.8;
        return commits > commitsComMuitas ? kRepetidas * segundos * static_cast<double>(commits - commitsComMuitas) /
                                                static_cast<double>(commits)
                                          : 0;
    }
};

/// What one run did, collected while it does it.
struct TEvidencia {
    std::string alias, banco, servidor, pacote;
    std::string backup, volta;  // the file made before the run, and the command that goes back; empty without one
    TDataHora inicio, fim;
    TFimDaAtualizacao termino = TFimDaAtualizacao::Encerrada;
    std::vector<TTabelaRegistrada> tabelas;
    std::vector<TPassoRegistrado> passos;
    std::vector<TPassoRegistrado> correcoes;  // those whose turn it was
    TCopiasConfirmadas copias = {};
    TAvisos avisos = {};  // about the database as a whole
    std::vector<TErroDaExecucao> erros;
    std::vector<std::string> naoRodaram = {};  // steps and tables whose turn did not come

    /// A statement of the table under way.
    void Comando(TComandoRegistrado comando) {
        if (!tabelas.empty()) tabelas.back().comandos.push_back(std::move(comando));
    }
};

/// What outlives a run: the flags of the wizard.
struct TEstado {
    bool usuariosOnline = true;  // false: the database has no table of connected users (older generation)
    bool pulaNulos = false;      // leaves the null validation out
    bool falhouApagar = false;   // set when a rebuild could not drop its table; cleared by the next rebuild alone
};

/// What the passes of one run share.
struct TContexto {
    TDataModulo& dm;
    const TOpcoes& opcoes;
    TEstado& estado;
    std::string tabelaAtual;
    std::string acaoAtual;
    /// Rows that each copy of a rebuild commits at once; nothing: 100 on the way into the backup table, 11 on the way
    /// back.
    std::optional<std::size_t> linhasPorCommit = {};
    bool repeteTabela = false;  // something of the table failed: the next run analyses it again
    TEvidencia evidencia = {};
    bool catalogoConferido = false;             // AvisosDoCatalogo
    TDicionario novo = {};                      // of the package
    TDicionario gravado = {};                   // of the database, as the run found it
    std::set<std::string> comRecusadas = {};    // tables of which a row of the package was passed over
    std::set<std::string> desatualizadas = {};  // tables whose rows in SATRIB this run has replaced
    TReconstrucoesAbertas abertas = {};         // as the run found them, and as its rebuilds change them

    bool indicesAdiados = false;                  // the package's SINDSEC or SINDSECA is loaded behind the tables alone
    std::map<std::string, bool> semIndices = {};  // tables that wait for it, and whether something of them failed

    ITela& Tela() { return dm.Tela(); }
    TConnection& Conexao() { return dm.SQLConnection1; }
    TTipoBanco Banco() const { return dm.SQLConnection1.TipoBanco(); }
    const TDialeto& Dialeto() const { return wkd::Dialeto(dm.SQLConnection1); }
    /// Run-log entry of the current table and action.
    void Log(TErro erro) { Tela().Erro(TErroDaExecucao::NoLog(std::move(erro), tabelaAtual, acaoAtual)); }
};

/// Runs `operacao` and swallows what it throws, but for a lost connection: nothing could follow on it.
template <class TOperacao>
void Tolera(TOperacao&& operacao) {
    try {
        operacao();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
    } catch (const std::exception&) {  // a text that the connection's character set cannot hold
    }
}

}  // namespace wkd
