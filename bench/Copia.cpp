#include <limits>

#include "BancoDaCopia.h"
#include "Casos.h"
#include "copy/Conferencia.h"
#include "copy/CopiaDeLinhas.h"
#include "rebuild/CriaBackup.h"
#include "rebuild/VoltaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr int kLinhas = 100'000;
constexpr std::size_t kColunasDaCopia = 12;
const std::string kLista = "CODIGO,NOME,FANTASIA,CIDADE,UF,DATA,VALOR,LIMITE,ATIVO,VENDEDOR,OBS,FOTO";

/// One row after the other: read by its key, inserted, `porLote` of them in a commit. Blobs go through the client when
/// `blobPeloCliente`, else their numbers are passed on.
void CopiaPelaChave(TConnection& banco, const std::string& origem, const std::string& destino, int porLote,
                    bool blobPeloCliente) {
    const auto chaves = banco.Prepara("select CODIGO from " + origem);
    const auto linha = banco.Prepara("select " + kLista + " from " + origem + " where CODIGO = :C");
    const auto insere =
        banco.Prepara("insert into " + destino + " (" + kLista + ") values (:" + Troca(kLista, ",", ",:") + ")");
    std::optional<TTransacao> transacao;
    int noLote = 0;
    for (chaves->Abre(); chaves->Proximo();) {
        if (!transacao) transacao.emplace(banco);
        linha->Atribui(0, chaves->Valor(0));
        linha->Abre();
        linha->Proximo();
        for (std::size_t i = 0; i < kColunasDaCopia; ++i) {
            const TValor valor = linha->Valor(i);
            insere->Atribui(i, blobPeloCliente && i + 1 == kColunasDaCopia ? TValor(TBytes{valor.ComoBytes()}) : valor);
        }
        linha->Fecha();
        insere->Executa();
        if (++noLote < porLote) continue;
        transacao->Commit();
        transacao.reset();
        noLote = 0;
    }
    if (transacao) transacao->Commit();
}

/// As many keys as a batch has rows go to the server in one statement.
void CopiaPorBlocos(TConnection& banco, const std::string& origem, const std::string& destino, int porLote) {
    std::string parametros, corpo;
    for (int i = 0; i < porLote; ++i) {
        const std::string c = "c" + std::to_string(i);
        parametros += (i ? "," : "") + c + " integer = :" + c;
        corpo += "insert into " + destino + " (" + kLista + ") select " + kLista + " from " + origem +
                 " where CODIGO = :" + c + ";";
    }
    const auto bloco = banco.Prepara("execute block (" + parametros + ") as begin " + corpo + " end");
    const auto chaves = banco.Prepara("select CODIGO from " + origem);
    const auto envia = [&] {
        TTransacao transacao(banco);
        bloco->Executa();
        transacao.Commit();
    };
    int noLote = 0;
    for (chaves->Abre(); chaves->Proximo();) {
        bloco->Atribui(static_cast<std::size_t>(noLote), chaves->Valor(0));
        if (++noLote < porLote) continue;
        envia();
        noLote = 0;
    }
    if (noLote == 0) return;
    for (; noLote < porLote; ++noLote) bloco->Atribui(static_cast<std::size_t>(noLote), TValor());
    envia();
}

/// All rows in one statement, and one commit.
void CopiaDeUmaVez(TConnection& banco, const std::string& origem, const std::string& destino, int /*porLote*/) {
    banco.ExecuteDirect("insert into " + destino + " (" + kLista + ") select " + kLista + " from " + origem);
}

/// Backup into a table without key, and restore into one with it: what `copia` needs for both.
template <class F>
TTempo IdaEVolta(TBancoDaCopia& banco, F&& copia) {
    banco.CriaVazia("IDA", false);
    banco.CriaVazia("VOLTA", true);
    TTempo tempo = Cronometra([&] { copia(banco.Conexao(), "TCLI", "IDA", 100); });
    banco.Executa("create index IDA_CHAVE on IDA (CODIGO)");  // a gift to the raw loops, which find rows by their key
    tempo += Cronometra([&] { copia(banco.Conexao(), "IDA", "VOLTA", 11); });
    if (banco.Conta("VOLTA") != banco.Conta("TCLI")) throw std::runtime_error("a cópia crua perdeu registros");
    banco.Executa("drop table IDA");
    banco.Executa("drop table VOLTA");
    return tempo;
}

/// The same by the update: the backup with its proof, and the restore.
TTempo NossaIdaEVolta(TBancoDaCopia& banco, double& conferencia) {
    TContexto& ctx = banco.Contexto();
    const std::vector<std::string> chave = {"CODIGO"};
    TBackupFeito backup;
    TTempo tempo = Cronometra([&] { backup = CriaBackup(ctx, "TCLI", chave, true, false); });
    banco.Executa("drop table TCLI");
    banco.CriaVazia("TCLI", true);
    tempo +=
        Cronometra([&] { VoltaBackup(ctx, "TCLI", chave, RestauracaoInteira(ctx, "TCLI", backup.chaveDaTabela)); });
    conferencia = std::min(conferencia, Cronometra([&] {
                                            if (!ConfereComBackup(banco.Conexao(), "BTCLI", "TCLI", {}).Igual())
                                                throw std::runtime_error("não confere");
                                        }).segundos);
    if (banco.Conta("TCLI") != banco.Conta("BTCLI")) throw std::runtime_error("a cópia perdeu registros");
    banco.Executa("drop table BTCLI");
    banco.Executa("update SARQUIVO set VERSAO = 1");
    banco.Contexto().dm.AtualizaListaDeTabelas();
    banco.Contexto().dm.SarquivoVelho.Open();
    banco.ConfereSemErros();
    return tempo;
}

/// Pages of the database that were written while it was open.
double PaginasGravadas(TConnection& banco) {
    const auto paginas = banco.Prepara("select mon$page_writes from mon$io_stats where mon$stat_group = 0");
    paginas->Abre();
    paginas->Proximo();
    return static_cast<double>(paginas->Valor(0).ComoInteiro());
}

/// Runs the work and sets the pages that it wrote.
template <class F>
TTempo Contando(TBancoDaCopia& banco, double& paginas, F&& trabalho) {
    const double antes = PaginasGravadas(banco.Conexao());
    const TTempo tempo = trabalho();
    paginas = PaginasGravadas(banco.Conexao()) - antes;
    return tempo;
}

/// As many rows a commit as an alias may ask for where a disk is waited for, both proofs included.
TMedida MedeMuitasPorCommit(const TLugar& lugar, bool noDisco) {
    TBancoDaCopia banco(lugar, kLinhas);
    banco.Contexto().linhasPorCommit = kMuitasPorCommit;
    double conferencia = std::numeric_limits<double>::max();
    return Alterna(
        {.trabalho = "backup e volta conferidos de " + std::to_string(kLinhas) + " registros, " +
                     std::to_string(kMuitasPorCommit) + " por commit, " + lugar.nome,
         .piso = "insert ... select duas vezes",
         .limite = noDisco ? 2.5 : 0},
        2,
        [&] {
            TTempo tempo = NossaIdaEVolta(banco, conferencia);
            tempo.segundos += conferencia;
            return tempo;
        },
        [&] { return IdaEVolta(banco, CopiaDeUmaVez); });
}

std::vector<TMedida> MedeCopia(TMedida modelo, const TLugar& lugar, int linhas, bool comIngenuo,
                               void (*piso)(TConnection&, const std::string&, const std::string&, int)) {
    TBancoDaCopia banco(lugar, linhas);
    double conferencia = std::numeric_limits<double>::max();
    TMedida paginas{.trabalho = "páginas que essa cópia grava, " + lugar.nome,
                    .piso = "as desse laço",
                    .limite = 1.1,
                    .unidade = TUnidade::Paginas};
    modelo.trabalho = "backup conferido e volta de " + std::to_string(linhas) + " registros, " + lugar.nome;
    TMedida copia = Alterna(
        modelo, 2, [&] { return Contando(banco, paginas.nosso, [&] { return NossaIdaEVolta(banco, conferencia); }); },
        [&] { return Contando(banco, paginas.doPiso, [&] { return IdaEVolta(banco, piso); }); });
    if (comIngenuo)
        copia.ingenuo =
            IdaEVolta(banco, [](TConnection& c, const std::string& origem, const std::string& destino, int n) {
                CopiaPelaChave(c, origem, destino, n, true);
            }).segundos;
    TMedida prova{.trabalho = "as duas conferências dessa cópia, " + lugar.nome,
                  .piso = "a própria cópia",
                  .limite = 0.1,
                  .nosso = 2 * conferencia,
                  .doPiso = copia.nosso - conferencia};
    return {copia, paginas, prova};
}

}  // namespace

std::vector<TMedida> MedeCopiaEmbutida(TBancada& bancada) {
    const TLugar lugar = {"embutido", ""};
    auto medidas =
        MedeCopia({.trabalho = {}, .piso = "laço cru pela chave, número do blob passado adiante", .limite = 1.1}, lugar,
                  bancada.Quantos(kLinhas), true,
                  [](TConnection& c, const std::string& origem, const std::string& destino, int n) {
                      CopiaPelaChave(c, origem, destino, n, false);
                  });
    medidas.push_back(MedeMuitasPorCommit(lugar, !bancada.Turno().naMemoria));
    return medidas;
}

std::vector<TMedida> MedeCopiaNaRede(TBancada& bancada) {
    auto medidas = MedeCopia({.trabalho = {}, .piso = "um bloco de chaves por lote", .limite = 1.2}, bancada.Rede(),
                             bancada.Quantos(kLinhas), !bancada.Turno().atraso, CopiaPorBlocos);
    if (!bancada.Turno().atraso) medidas.push_back(MedeMuitasPorCommit(bancada.Rede(), !bancada.Turno().naMemoria));
    return medidas;
}

}  // namespace wkd
