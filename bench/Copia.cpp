#include "BancoDaCopia.h"
#include "Casos.h"
#include "copy/Conferencia.h"
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

std::vector<TMedida> MedeCopia(TMedida modelo, const TLugar& lugar, int linhas, bool comIngenuo,
                               void (*piso)(TConnection&, const std::string&, const std::string&, int)) {
    TBancoDaCopia banco(lugar, linhas);
    double conferencia = 1e9;
    modelo.trabalho = "backup conferido e volta de " + std::to_string(linhas) + " registros, " + lugar.nome;
    TMedida copia = Alterna(
        modelo, 2, [&] { return NossaIdaEVolta(banco, conferencia); }, [&] { return IdaEVolta(banco, piso); });
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
    return {copia, prova};
}

}  // namespace

std::vector<TMedida> MedeCopiaEmbutida(TBancada& bancada) {
    return MedeCopia({.trabalho = {}, .piso = "laço cru pela chave, número do blob passado adiante", .limite = 1.1},
                     {"embutido", ""}, bancada.Quantos(kLinhas), true,
                     [](TConnection& c, const std::string& origem, const std::string& destino, int n) {
                         CopiaPelaChave(c, origem, destino, n, false);
                     });
}

std::vector<TMedida> MedeCopiaNaRede(TBancada& bancada) {
    return MedeCopia({.trabalho = {}, .piso = "um bloco de chaves por lote", .limite = 1.2}, bancada.Rede(),
                     bancada.Quantos(kLinhas), !bancada.Turno().atraso, CopiaPorBlocos);
}

}  // namespace wkd
