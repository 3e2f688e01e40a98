#include "Complemento.h"

#include "ColunasDaCopia.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

/// Index over the backup's key for the time of the look-up: without it every row would read the whole backup.
class TIndiceProvisorio {
  public:
    TIndiceProvisorio(TContexto& ctx, const std::string& backup, const std::string& chaves) : ctx_(ctx) {
        apaga_ = "drop index " + std::string(kNome) + (ctx.Banco() == TTipoBanco::tbSQLServer ? " on " + backup : "");
        Apaga();  // left behind by a killed run
        ctx.dm.Executa("create index " + std::string(kNome) + " on " + backup + " (" + chaves + ")");
    }
    ~TIndiceProvisorio() { Apaga(); }
    TIndiceProvisorio(const TIndiceProvisorio&) = delete;
    TIndiceProvisorio& operator=(const TIndiceProvisorio&) = delete;

  private:
    static constexpr std::string_view kNome = "WKD_COMPLETA_BACKUP";

    void Apaga() { ctx_.dm.Executa(apaga_); }

    TContexto& ctx_;
    std::string apaga_;
};

}  // namespace

void CompletaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    TConnection& conexao = ctx.Conexao();
    const std::string backup = NomeDaBackup(tabela);
    if (ContaRegistros(conexao, "select count(*) as total from " + tabela) == 0) return;

    std::vector<std::string> iguais;
    for (const auto& coluna : chave) iguais.push_back("b." + coluna + " = t." + coluna);
    const std::string lista = ListaDaOrigem(ColunasDaCopia(conexao, tabela, backup), ctx.Banco());
    const TIndiceProvisorio indice(ctx, backup, Junta(chave, ","));
    const auto comando =
        conexao.Prepara("insert into " + backup + " (" + lista + ") select " + lista + " from " + tabela +
                        " t where not exists (select 1 from " + backup + " b where " + Junta(iguais, " and ") + ")");
    TTransacao transacao(conexao);
    comando->Executa();
    transacao.Commit();
}

}  // namespace wkd
