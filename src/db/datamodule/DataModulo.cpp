#include "datamodule/DataModulo.h"

#include <algorithm>
#include <utility>

#include "dialect/Dialeto.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

TDataModulo::TDataModulo(TAliases aliases, ITela& tela, TFabricaDeConexao fabrica)
    : SQLConnection1(std::move(aliases), std::move(fabrica)), Atualiza(SQLConnection1), tela_(tela) {
    Atualiza.Dicionario().SetRecusa([this](std::string_view tabela, const std::string& texto) {
        tela_.Erro(
            TErroDaExecucao::NosDois({.mensagem = texto, .falha = TFalha::Dicionario}, tabela, "Nomes do dicionário"));
    });
    SArquivoNovo.SetFiltered(true);

    SatribNovo.SetIndexFieldNames("ARQUIVO");
    SatribNovo.SetMaster(&SArquivoNovo, "NOME_ARQUIVO");

    SarquivoVelho.SetProvedor({.conexao = &SQLConnection1,
                               .sql = "select * from SARQUIVO",
                               .tabela = "SARQUIVO",
                               .chaves = {"COD_MODULO", "NOME_ARQUIVO"}});
    SarquivoVelho.SetIndexFieldNames("COD_MODULO;NOME_ARQUIVO");
    SarquivoVelho.SetMaster(&SArquivoNovo, "COD_MODULO;NOME_ARQUIVO");

    SatribVelho.SetProvedor(
        {.conexao = &SQLConnection1, .sql = "select * from SATRIB", .tabela = "SATRIB", .chaves = {"ARQUIVO", "NOME"}});
    SatribVelho.SetIndexFieldNames("ARQUIVO;NOME");
    SatribVelho.SetMaster(&SatribNovo, "ARQUIVO;NOME");
    SatribVelho.OnReconcileError = [this](TErro erro) {
        erro.mensagem = "SAtribVelho " + erro.mensagem;
        tela_.Erro(TErroDaExecucao::NaCaixa(std::move(erro), "SATRIB"));
        return TAcaoReconcilia::Pula;
    };
}

bool TDataModulo::ExisteTabela(std::string_view tabela) const { return nomes_.contains(ChaveDeNome(tabela)); }

void TDataModulo::AtualizaListaDeTabelas() {
    LeLista();
    EsqueceTodasAsColunas();
}

void TDataModulo::LeLista() {
    tabelas_ = SQLConnection1.NomesDeTabelas();
    nomes_.clear();
    for (const auto& nome : tabelas_) nomes_.insert(ChaveDeNome(nome));
}

void TDataModulo::Reconecta() {
    ConfereAbertura();
    SQLConnection1.Close();
    SQLConnection1.Open();
    aberturaDasColunas_ = SQLConnection1.Aberturas();
    LeLista();
}

void TDataModulo::IncluiNaLista(std::string_view tabela) {
    EsqueceColunas(tabela);
    if (nomes_.insert(ChaveDeNome(tabela)).second) tabelas_.push_back(Maiusculas(tabela));
}

bool TDataModulo::VerificaExisteCampo(std::string_view tabela, std::string_view coluna) {
    const std::string nome = ChaveDeNome(coluna);
    return std::ranges::any_of(ColunasFisicas(tabela),
                               [&](const TColunaFisica& fisica) { return ChaveDeNome(fisica.nome) == nome; });
}

void TDataModulo::LeColunas(std::set<std::string> tabelas) {
    ConfereAbertura();
    std::erase_if(tabelas, [this](const std::string& tabela) { return colunas_.contains(tabela); });
    if (lidasTodas_ || tabelas.empty()) return;
    if (auto lidas = SQLConnection1.ColunasDe({tabelas.begin(), tabelas.end()}))
        colunas_.merge(*lidas);
    else
        LeTodasAsColunas();
}

void TDataModulo::LeTodasAsColunas() {
    colunas_.merge(SQLConnection1.TodasAsColunas());
    lidasTodas_ = true;
}

const std::vector<TColunaFisica>& TDataModulo::ColunasFisicas(std::string_view tabela) {
    constexpr int kSos = 8;  // which take as many turns to the server as half a sweep of 800 tables
    ConfereAbertura();
    const std::string nome = ChaveDeNome(tabela);
    if (const auto achada = colunas_.find(nome); achada != colunas_.end()) return achada->second;
    if (!lidasTodas_ && ++lidasSos_ > kSos) LeTodasAsColunas();
    if (const auto achada = colunas_.find(nome); achada != colunas_.end()) return achada->second;
    return colunas_.emplace(nome, SQLConnection1.Colunas(nome)).first->second;
}

const TChavePrimaria& TDataModulo::ChavePrimaria(std::string_view tabela) {
    ConfereAbertura();
    const std::string nome = ChaveDeNome(tabela);
    if (chaves_.empty()) {
        chaves_ = SQLConnection1.TodasAsChaves();
        for (const auto& semChave : nomes_) chaves_.try_emplace(semChave);
    }
    const auto achada = chaves_.find(nome);
    if (achada != chaves_.end()) return achada->second;
    return chaves_.emplace(nome, SQLConnection1.ChavePrimaria(tabela)).first->second;
}

void TDataModulo::ConfereAbertura() {
    if (aberturaDasColunas_ != SQLConnection1.Aberturas()) EsqueceTodasAsColunas();
}

void TDataModulo::EsqueceTodasAsColunas() {
    colunas_.clear();
    chaves_.clear();
    lidasTodas_ = false;
    lidasSos_ = 0;
    aberturaDasColunas_ = SQLConnection1.Aberturas();
}

void TDataModulo::SupoeColunas(std::string_view tabela, std::vector<TColunaFisica> colunas) {
    colunas_[ChaveDeNome(tabela)] = std::move(colunas);
}

void TDataModulo::EsqueceColunas(std::string_view tabela) {
    colunas_.erase(ChaveDeNome(tabela));
    chaves_.erase(ChaveDeNome(tabela));
}

TResultado TDataModulo::Executa(std::string_view sql) {
    try {
        ExecutaComando(SQLConnection1, sql);
        return TResultado();
    } catch (const TErroBanco& erro) {
        return TResultado(erro);
    } catch (const TErroConversao& erro) {  // a text that the connection cannot hold: nothing was sent
        return TResultado(
            TErroBanco({.mensagem = erro.what(), .comando = std::string(sql), .falha = TFalha::Conversao}));
    }
}

// Sends nothing on Firebird, where ExecuteDirect passes over a bare commit, nor on SQL Server, which has no text for
// it: each statement has committed when Executa returned. The calls mark where a step ends, for servers that need one.
void TDataModulo::Commit(std::string_view lugar) {
    const TDialeto& dialeto = Dialeto(SQLConnection1);
    const auto executa = [this](std::string_view comando) {
        if (!comando.empty()) SQLConnection1.ExecuteDirect(comando);
    };
    try {
        executa(dialeto.ComandoCommit());
    } catch (const std::exception& erro) {
        TErro doCommit = ErroDe(erro);
        doCommit.mensagem = "Tabela: " + std::string(lugar) + "\rErro COMMIT - " + erro.what();
        tela_.Memo1(doCommit.mensagem);
        tela_.Erro(TErroDaExecucao::NosDois(std::move(doCommit), lugar, "COMMIT"));
        try {
            executa(dialeto.ComandoRollback());
        } catch (const std::exception&) {  // the commit's error is the one that tells
        }
    }
}

void TDataModulo::UnzipTotalPercentDone(int percentual) { tela_.MostraOcupado("Descompactando...", percentual); }

void TDataModulo::UnzipUnZipComplete() { tela_.EscondeOcupado(); }

}  // namespace wkd
