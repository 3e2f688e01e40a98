#include <stdexcept>

#include "BancoDaCopia.h"
#include "Casos.h"
#include "dialect/Dialeto.h"
#include "rebuild/CriaBackup.h"
#include "rebuild/VoltaBackup.h"

namespace wkd {

namespace {

constexpr int kLinhas = 100'000;
constexpr std::size_t kPorLote = 11;

/// A table of the same columns, in which a number has become a text.
void CriaConvertida(TBancoDaCopia& banco, const std::string& tabela) {
    banco.CriaVazia(tabela, true);
    banco.Executa("alter table " + tabela + " alter ATIVO type varchar(11)");
}

/// Every value read and bound as it is, a batch in one statement and one commit. The last batch is to be full.
class TVoltaCrua {
  public:
    TVoltaCrua(TConnection& banco, const std::string& origem, std::string destino)
        : banco_(banco),
          destino_(std::move(destino)),
          colunas_(banco.Colunas(destino_)),
          linhas_(banco.Prepara("select * from " + origem)) {}

    void Executa() {
        const auto bloco = banco_.Prepara(Dialeto(banco_).InsereLinhas(destino_, colunas_, kPorLote));
        linhas_->Abre();
        while (Enche(*bloco)) {
            TTransacao transacao(banco_);
            bloco->Executa();
            transacao.Commit();
        }
    }

  private:
    bool Enche(TComando& bloco) {
        for (std::size_t linha = 0; linha < kPorLote; ++linha) {
            if (!linhas_->Proximo()) return false;
            for (std::size_t i = 0; i < colunas_.size(); ++i)
                bloco.Atribui(linha * colunas_.size() + i, linhas_->Valor(i));
        }
        return true;
    }

    TConnection& banco_;
    std::string destino_;
    std::vector<TColunaFisica> colunas_;
    std::unique_ptr<TComando> linhas_;
};

TMedida Mede(const TLugar& lugar, int linhas) {
    TBancoDaCopia banco(lugar, linhas);
    TContexto& ctx = banco.Contexto();
    const TBackupFeito backup = CriaBackup(ctx, "TCLI", {"CODIGO"}, true, false);
    const auto confere = [&](const std::string& tabela) {
        banco.ConfereSemErros();
        if (banco.Conta(tabela) != linhas) throw std::runtime_error("a volta perdeu registros");
    };
    return Alterna(
        {.trabalho = "volta de " + std::to_string(linhas) + " registros de que um valor se converte, " + lugar.nome,
         .piso = "lidos e incluídos, um bloco por lote",
         .limite = 1.2},
        2,
        [&] {
            banco.Executa("drop table TCLI");
            CriaConvertida(banco, "TCLI");
            const TTempo tempo = Cronometra(
                [&] { VoltaBackup(ctx, "TCLI", {"CODIGO"}, RestauracaoInteira(ctx, "TCLI", backup.chaveDaTabela)); });
            confere("TCLI");
            return tempo;
        },
        [&] {
            CriaConvertida(banco, "VOLTA");
            const TTempo tempo = Cronometra([&] { TVoltaCrua(banco.Conexao(), "BTCLI", "VOLTA").Executa(); });
            confere("VOLTA");
            banco.Executa("drop table VOLTA");
            return tempo;
        });
}

}  // namespace

std::vector<TMedida> MedeConversao(TBancada& bancada) {
    const int linhas = bancada.Quantos(kLinhas) / static_cast<int>(kPorLote) * static_cast<int>(kPorLote);
    std::vector<TMedida> medidas;
    for (const TLugar& lugar : bancada.Lugares()) medidas.push_back(Mede(lugar, linhas));
    return medidas;
}

}  // namespace wkd
