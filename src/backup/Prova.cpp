#include "Prova.h"

#include <algorithm>

#include "Backup.h"
#include "package/Caminho.h"
#include "process/Interrupcao.h"
#include "process/Sha256.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// Lines that only one of the two has.
std::string DiferencasDeEstrutura(const std::vector<std::string>& esperada, const std::vector<std::string>& obtida) {
    std::vector<std::string> partes;
    const auto soEm = [&](const auto& uma, const auto& outra, const char* texto) {
        for (const auto& linha : uma)
            if (std::ranges::find(outra, linha) == outra.end()) partes.push_back(texto + linha);
    };
    soEm(esperada, obtida, "falta ");
    soEm(obtida, esperada, "sobra ");
    return partes.empty() ? "as colunas estão em outra ordem" : Junta(partes, "; ");
}

std::string Diferenca(const TTabelaNoInstantaneo& esperada, const TTabelaNoInstantaneo& obtida) {
    if (esperada.estrutura != obtida.estrutura) return DiferencasDeEstrutura(esperada.estrutura, obtida.estrutura);
    if (esperada.registros != obtida.registros)
        return ComMilhares(obtida.registros) + " registros em vez de " + ComMilhares(esperada.registros);
    return "o conteúdo dos registros é outro";
}

class TComparacao {
  public:
    explicit TComparacao(const TManifesto& manifesto) : manifesto_(manifesto) {}

    TVeredito Compara(const TInstantaneo& copia) {
        for (const auto& [nome, esperada] : manifesto_.antes) {
            const auto obtida = copia.find(nome);
            if (obtida == copia.end())
                Falta(nome);
            else
                Tabela(nome, esperada, obtida->second);
        }
        for (const auto& [nome, obtida] : copia)
            if (!manifesto_.antes.contains(nome) && !manifesto_.depois.contains(nome)) Erro(nome, "sobra na cópia");
        return Veredito();
    }

  private:
    void Falta(const std::string& nome) { Erro(nome, "falta na cópia"); }

    void Tabela(const std::string& nome, const TTabelaNoInstantaneo& esperada, const TTabelaNoInstantaneo& obtida) {
        const auto depois = manifesto_.depois.find(nome);
        if (obtida == esperada || (depois != manifesto_.depois.end() && obtida == depois->second)) {
            ++iguais_;
            registros_ += obtida.registros;
        } else if (depois != manifesto_.depois.end()) {
            mudadas_.push_back(nome + ": outros a mudaram enquanto o backup começava; não foi comparada");
        } else {
            Erro(nome, Diferenca(esperada, obtida));
        }
    }

    void Erro(const std::string& nome, const std::string& texto) { erros_.push_back(nome + ": " + texto); }

    TVeredito Veredito() {
        TVeredito veredito;
        veredito.bom = erros_.empty();
        const std::string iguais = ComMilhares(iguais_) + " tabelas e " + ComMilhares(registros_) + " registros";
        if (!veredito.bom)
            veredito.frase = "O backup NÃO é bom: " + ComMilhares(static_cast<std::int64_t>(erros_.size())) +
                             " tabelas voltaram diferentes. Não atualize; faça outro backup e, se repetir, chame o "
                             "suporte.";
        else if (mudadas_.empty())
            veredito.frase = "O backup é bom: restaurado, " + iguais + " são iguais aos do banco.";
        else
            veredito.frase = "O backup é bom: restaurado, " + iguais + " são iguais aos do banco; " +
                             std::to_string(mudadas_.size()) + " tabelas mudaram durante o backup.";
        veredito.achados = erros_;
        veredito.achados.insert(veredito.achados.end(), mudadas_.begin(), mudadas_.end());
        return veredito;
    }

    const TManifesto& manifesto_;
    std::int64_t iguais_ = 0, registros_ = 0;
    std::vector<std::string> erros_, mudadas_;
};

TVeredito SemManifesto(TConnection& copia) {
    TVeredito veredito;
    veredito.bom = copia.ExisteTabela("SARQUIVO") && copia.ExisteTabela("SATRIB");
    veredito.frase = veredito.bom ? "O backup restaura e abre, e tem o dicionário; sem o arquivo .json ao lado dele o "
                                    "conteúdo não pôde ser comparado."
                                  : "O backup NÃO serve: restaura e abre, mas não é de um banco deste sistema (faltam "
                                    "as tabelas SARQUIVO e SATRIB). Escolha o arquivo certo.";
    return veredito;
}

}  // namespace

TVeredito ConfereCopia(IServidorDeBackup& servidor, const std::string& banco,
                       const std::optional<TManifesto>& manifesto, const TAcompanha& acompanha) {
    const auto copia = servidor.Abre(banco);
    copia->StartInstantaneo();
    TVeredito veredito;
    if (servidor.FechadoParaUm(*copia)) {
        veredito.frase = "O backup NÃO é bom: a restauração não chegou ao fim. Faça outro backup.";
    } else {
        veredito =
            manifesto ? TComparacao(*manifesto).Compara(TiraInstantaneo(*copia, acompanha)) : SemManifesto(*copia);
    }
    veredito.quando = Instante(Agora());
    return veredito;
}

void ExigeArquivo(const fs::path& arquivo, const std::optional<TManifesto>& manifesto, const std::string& alias,
                  const TAcompanha& acompanha) {
    const std::string nome = TextoDoCaminho(arquivo);
    std::error_code erro;
    if (!fs::is_regular_file(arquivo, erro))
        throw TErroDeBackup("O arquivo de backup " + nome + " não existe. Confira o nome e repita.");
    if (!manifesto) return;
    if (!alias.empty() && !IgualSemCaixa(alias, manifesto->alias))
        throw TErroDeBackup(TFalha::NaoEBackup, "O arquivo " + nome + " é backup de outro banco (alias " +
                                                    manifesto->alias + ", " + manifesto->banco + "), não de " + alias +
                                                    ". Escolha o arquivo certo e repita.");
    const auto total = fs::file_size(arquivo);
    const auto leitura = [&](std::uintmax_t lidos) {
        acompanha({"Conferindo o arquivo: " + TamanhoEmTexto(lidos) + " de " + TamanhoEmTexto(total),
                   Percentual(lidos, total)});
    };
    if (manifesto->sha256.empty()) return;
    if (total == manifesto->tamanho && Sha256DoArquivo(arquivo, leitura) == manifesto->sha256) return;
    throw TErroDeBackup(TFalha::BackupCortado,
                        "O arquivo " + nome +
                            " não é mais o que foi gravado: está cortado, ou foi alterado. Use outra "
                            "cópia dele, ou outro backup, e repita.");
}

/// A restored database takes what the database took, less what was empty in it.
void ExigeEspacoParaCopia(IServidorDeBackup& servidor, const fs::path& arquivo,
                          const std::optional<TManifesto>& manifesto) {
    const auto livres = servidor.EspacoParaCopia();
    std::error_code erro;
    const auto doArquivo = fs::file_size(arquivo, erro);
    if (!livres || erro) return;
    const auto necessarios = manifesto ? std::min(manifesto->tamanhoDoBanco, 3 * doArquivo) : doArquivo;
    if (*livres >= necessarios) return;
    throw TErroDeBackup(TFalha::DiscoCheio, "O disco do banco tem " + TamanhoEmTexto(*livres) +
                                                " livres; a cópia restaurada precisa de " +
                                                TamanhoEmTexto(necessarios) + ". Libere espaço nele e repita.");
}

TVeredito ProvaBackup(THBNConnection& conexao, const TPedidoDeProva& pedido, const TAcompanha& ouvinte) {
    const auto servidor = CriaServidorDeBackup(conexao);
    const auto acompanha = [&](const TProgresso& progresso) {
        TInterrupcao::Confere();
        ouvinte(progresso);
    };
    auto manifesto = pedido.manifesto ? pedido.manifesto : LeManifesto(pedido.arquivo);
    if (servidor->ArquivosAqui()) ExigeArquivo(pedido.arquivo, manifesto, "", acompanha);
    ExigeEspacoParaCopia(*servidor, pedido.arquivo, manifesto);
    const bool passageiro = pedido.banco.empty();
    const std::string banco =
        passageiro ? servidor->NomeDaCopia("_prova_" + Troca(FormataDataHora(Agora(), "hh:mm:ss"), ":", ""))
                   : pedido.banco;
    TCopiaPassageira copia(*servidor, banco);
    servidor->Restaura(pedido.arquivo, banco, acompanha);
    copia.Existe();
    TVeredito veredito = ConfereCopia(*servidor, banco, manifesto, acompanha);
    if (!passageiro) copia.Fica();
    std::error_code semErro;
    if (manifesto && fs::exists(CaminhoDoManifesto(pedido.arquivo), semErro)) {
        manifesto->prova = veredito;
        GravaManifesto(*manifesto, pedido.arquivo);
    }
    return veredito;
}

}  // namespace wkd
