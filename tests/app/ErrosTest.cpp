// What an unattended run tells of its errors on standard error: whatever its exit code counts.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>

#include "JanelaApoio.h"
#include "Linhas.h"
#include "ModuloTemporario.h"
#include "ProgramaApoio.h"
#include "commands/Eco.h"
#include "commands/PreencheDados.h"
#include "values/Texto.h"
#include "window/TelaDaJanela.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

bool Contem(std::string_view texto, std::string_view parte) { return texto.find(parte) != std::string_view::npos; }

TEST(Erros, EachHasItsLineAndASecondWithWhatThatOneLacks) {
    std::vector<std::string> linhas;
    TEcoDosErros eco([&](std::string_view linha) { linhas.emplace_back(linha); });
    const auto diz = [&](const std::vector<std::string>& esperadas) {
        eco.Conclui();
        EXPECT_EQ(linhas, esperadas);
        linhas.clear();
    };
    const std::string generica =
        "Providência: Corrija a causa e rode a atualização de novo: ela continua de onde parou. Se repetir, chame o "
        "suporte com o arquivo que AtualizaWKD --suporte faz.";

    auto naQuery = TErroDaExecucao::NosDois({.mensagem = "falhou"}, "T", "").ComComando("alter table T ADD C");
    naQuery.entrada->mensagem.insert(0, "Query de alteração de campo");
    eco.Erro(naQuery, "T");
    diz({"falhou", "    Em: Tabela: T - Query de alteração de campo Query: alter table T ADD C. " + generica});

    eco.Erro(TErroDaExecucao::NoLog({.mensagem = "sem colunas"}, "T", "Criando indice"), "T");
    diz({"Tabela: T - Criando indice - sem colunas", "    Em: T. " + generica});

    eco.Erro(TErroDaExecucao::NaLista({.mensagem = "registro 1 recusado"}, ""), "Restaurando T");
    eco.Erro(TErroDaExecucao::NaCaixa({.mensagem = "registro 2 recusado"}), "Restaurando T");
    diz({"registro 1 recusado", "registro 2 recusado", "    Em: Restaurando T. " + generica});

    eco.Erro(TErroDaExecucao::NosDois({.mensagem = "falhou"}, "T", "Atualizar tabela", "Tabela: T - falhou"), "T");
    eco.Erro(TErroDaExecucao::NaLista({.mensagem = "Tabela: U - falhou"}, "U"), "U");
    diz({"Tabela: T - falhou", "    Em: Atualizar tabela. " + generica, "Tabela: U - falhou",
         "    Em: U. " + generica});

    eco.Erro(TErroDaExecucao::NaCaixa({.mensagem = "sem conexão"}), "");
    diz({"sem conexão"});
}

TEST(Erros, ARefusedRowHasOneAdvice) {
    const TPastaTemporaria pasta;
    TLogDaExecucao log(pasta / "AtualizaWKD.log");
    TDialogosDeTeste ninguem;
    TTelaDaJanela tela(log, ninguem, true);
    testing::internal::CaptureStderr();
    tela.EmAndamento(true);
    for (const char* registro : {"registro 1", "registro 2"}) {
        tela.Erro(TErroDaExecucao::NaCaixa({.mensagem = registro, .falha = TFalha::LinhaRecusada}));
        EXPECT_EQ(tela.Reconcilia(registro, TAcaoReconcilia::Pula), TAcaoReconcilia::Pula);
    }
    tela.EmAndamento(false);
    EsperaSaidas();
    const std::string erros = testing::internal::GetCapturedStderr();
    const auto providencia = erros.find("Providência: Veja os registros em AtualizaWKD.rejeitados.jsonl");
    EXPECT_NE(providencia, std::string::npos) << erros;
    EXPECT_EQ(erros.find("Providência", providencia + 1), std::string::npos) << erros;
}

TEST(Erros, OnlyALackingTableOfUsersMakesAnOlderGeneration) {
    TModuloTemporario modulo;
    TEstado estado;
    const auto preenche = [&](const char* comando) {
        modulo.Modulo().SQLConnection1.ExecuteDirect(comando);
        return PreencheDados(modulo.Modulo(), estado, "tbInterbase");
    };
    EXPECT_EQ(preenche("create table T (A integer)").numUsuarios, "-1 (Versão HBN3)");
    EXPECT_FALSE(estado.usuariosOnline);
    EXPECT_EQ(preenche("create table CSENHA (CODIGO integer, FLAG1 integer)").numUsuarios, "-1 (Versão HBN3)");
    EXPECT_FALSE(estado.usuariosOnline) << "without the columns of names";
    preenche("alter table CSENHA add NOME_COMPLETO varchar(9), add DEPARTAMENTO varchar(9), add EMAIL varchar(9)");
    EXPECT_TRUE(estado.usuariosOnline);
    EXPECT_EQ(preenche("insert into CSENHA (CODIGO, FLAG1) values (1, 1)").numUsuarios, "1");

    modulo.Modulo().SQLConnection1.Observa([](std::string_view sql) {
        if (Contem(sql, "csenha")) throw TErroBanco({"sem permissão", 0, "", "", TFalha::Autenticacao, false});
    });
    EXPECT_EQ(preenche("create table U (A integer)").numUsuarios, "-1 (Versão HBN3)");
    EXPECT_TRUE(estado.usuariosOnline) << "users may be connected";
}

/// Changes packets of the example's package, always the same ones for a seed.
class TMutante {
  public:
    TMutante(const TProgramaInstalado& loja, unsigned semente) : loja_(loja), acaso_(semente) {}

    void Estraga() {
        static const char* const kPacotes[] = {"SARQUIVO.WKD", "SAtrib.WKD",   "SAtrib.WKD",
                                               "SINDSEC.WKD",  "SINDSECA.WKD", "SISTEMA.WKD"};
        for (auto vezes = 1 + Ate(3); vezes > 0; --vezes) {
            const auto arquivo = fs::path("fontes") / kPacotes[Ate(std::size(kPacotes))];
            std::string texto = loja_.Arquivo(arquivo);
            Muda(texto);
            loja_.Escreve(arquivo, texto);
        }
        loja_.Empacota();
    }

    /// Nothing but a name that must not reach a statement.
    void EstragaUmNome() const {
        const auto arquivo = fs::path("fontes") / "SAtrib.WKD";
        std::string texto = loja_.Arquivo(arquivo);
        texto.insert(texto.find(" NOME=\"", texto.find("<ROWDATA>")) + 7, "a b, --");
        loja_.Escreve(arquivo, texto);
        loja_.Empacota();
    }

  private:
    std::size_t Ate(std::size_t n) { return acaso_() % n; }

    void Muda(std::string& texto) {
        const auto linha = texto.find("<ROW ", texto.find("<ROWDATA>") + Ate(texto.size() - texto.find("<ROWDATA>")));
        if (linha == std::string::npos) return;
        const auto fim = texto.find("/>", linha) + 2;
        switch (Ate(12)) {
            case 0:
            case 1:
                texto.erase(linha, fim - linha);
                break;
            case 2:
            case 3:
                texto.insert(linha, texto.substr(linha, fim - linha));
                break;
            case 4:
                texto[linha + Ate(fim - linha)] = static_cast<char>(' ' + Ate(90));
                break;
            default:
                MudaValor(texto, linha, fim);
        }
    }

    /// Another value of the kind, which the packet can hold.
    void MudaValor(std::string& texto, std::size_t linha, std::size_t fim) {
        static const std::vector<std::string> kNumeros = {"0", "1", "2", "-1", "99999", ""};
        static const std::vector<std::string> kTextos = {"",        "X",           "ftBlob",   "ftDate",    "ftInteger",
                                                         "ftFloat", "ftAggregate", "ftNada",   "ftString",  "D'água",
                                                         "a b, --", "SELECT",      "TPRODUTO", "DESCRICAO", "€"};
        const auto abre = texto.find("=\"", linha + Ate(fim - linha)) + 2;
        if (abre >= fim) return;
        const std::string velho = texto.substr(abre, texto.find('"', abre) - abre);
        const bool numero = !velho.empty() && velho.find_first_not_of("-0123456789") == std::string::npos;
        const auto& valores = numero ? kNumeros : kTextos;
        texto.replace(abre, velho.size(), valores[Ate(valores.size())]);
    }

    const TProgramaInstalado& loja_;
    std::mt19937 acaso_;
};

/// The log has the statement behind the message; a line may have told either of them before.
bool DizMensagem(std::string_view erros, std::string_view mensagem) {
    constexpr std::string_view kComando = " Query: ";
    const auto fim = std::min(mensagem.find(kComando), mensagem.size());
    return Contem(erros, Apara(mensagem.substr(0, fim))) && Contem(erros, Apara(mensagem.substr(fim)));
}

/// With --gtest_shuffle the seed is the shuffle's, so that a repeated run goes through other packages.
TEST(Erros, WhatTheExitCodeCountsIsOnStandardError) {
    const auto base = static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()) * 1000;
    constexpr unsigned kPacotes = 20;
    const TProgramaInstalado loja;
    fs::copy_file(loja / "loja.fdb", loja / "antes.fdb");
    fs::copy(loja.PastaDoPacote(), loja / "antes");
    int codigos[3] = {};
    for (unsigned semente = base; semente < base + kPacotes; ++semente) {
        SCOPED_TRACE(semente);
        constexpr auto kTroca = fs::copy_options::overwrite_existing | fs::copy_options::recursive;
        fs::copy_file(loja / "antes.fdb", loja / "loja.fdb", kTroca);
        fs::copy(loja / "antes", loja.PastaDoPacote(), kTroca);
        fs::remove(loja / "AtualizaWKD.relatorio.json");
        TMutante mutante(loja, semente);
        semente == base ? mutante.EstragaUmNome() : mutante.Estraga();

        const auto saida = loja.Atualiza();
        ASSERT_TRUE(saida.codigo >= 0 && saida.codigo <= 2) << "exit code or -signal: " << saida.codigo << "\n"
                                                            << saida.erros;
        EXPECT_TRUE(semente != base || saida.codigo == 1) << "an unfit name alone";
        ++codigos[saida.codigo];
        EXPECT_EQ(saida.erros.empty(), saida.codigo == 0) << saida.erros;
        const auto erros = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json")).at("erros");
        EXPECT_EQ(erros.empty(), saida.codigo == 0) << erros.dump(1);
        for (const auto& erro : erros) {
            EXPECT_TRUE(DizMensagem(saida.erros, erro.at("mensagem").get<std::string>())) << erro.dump(1) << "\nin\n"
                                                                                          << saida.erros;
            for (const char* campo : {"tabela", "acao", "providencia"})
                EXPECT_TRUE(Contem(saida.erros, Apara(erro.at(campo).get<std::string>())))
                    << campo << " of " << erro.dump(1) << "\nin\n"
                    << saida.erros;
        }
    }
    std::printf("exit codes 0, 1, 2: %d, %d, %d\n", codigos[0], codigos[1], codigos[2]);
}

}  // namespace
}  // namespace wkd
