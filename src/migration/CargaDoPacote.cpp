#include "CargaDoPacote.h"

#include "DicionarioDoPacote.h"
#include "Selecao.h"
#include "Texto.h"

namespace wkd {

namespace {

/// The busy panel goes when the extraction ends, whatever it ends with.
std::vector<std::string> Extrai(TContexto& ctx, const TPastaDeTrabalho& pasta) {
    const struct TFimDaExtracao {
        TDataModulo& dm;
        ~TFimDaExtracao() { dm.UnzipUnZipComplete(); }
    } fim{ctx.dm};
    return ExtraiPacote(ctx.opcoes.pacote, pasta.Caminho(),
                        [&ctx](int percentual) { ctx.dm.UnzipTotalPercentDone(percentual); });
}

}  // namespace

bool TemDicionario(TContexto& ctx) {
    ctx.dm.AtualizaListaDeTabelas();
    for (const std::string_view tabela : {"SARQUIVO", "SATRIB"}) {
        if (ctx.dm.ExisteTabela(tabela)) continue;
        ctx.Tela().Informacao("O banco de dados não tem a tabela " + std::string(tabela) +
                              " do dicionário: não é um banco do sistema, ou está incompleto. Verifique o alias " +
                              ctx.opcoes.alias + ".");
        return false;
    }
    return true;
}

bool Desempacota(TContexto& ctx, TPastaDeTrabalho& pasta) {
    std::error_code semErro;
    if (!std::filesystem::is_regular_file(ctx.opcoes.pacote, semErro)) {
        ctx.Tela().Informacao("Arquivo de atualizção não existe");
        return false;
    }
    pasta.Recria();
    const auto recusadas = Extrai(ctx, pasta);
    ctx.Tela().PastaDoPacote(pasta.Caminho());
    for (const std::string& recusada : recusadas) {
        ctx.Tela().Memo2(recusada);
        ctx.Tela().SetLog(recusada, "", "Descompactar");
    }
    return true;
}

void CarregaDicionarios(TContexto& ctx, const TPastaDeTrabalho& pasta) {
    TDataModulo& dm = ctx.dm;
    dm.SarquivoVelho.Close();
    dm.SatribVelho.Close();
    dm.SArquivoNovo.Close();
    dm.SatribNovo.Close();
    dm.SArquivoNovo.Carrega(LeSarquivo(pasta.Arquivo(kSarquivo)).Tabela());
    dm.SatribNovo.Carrega(LeSatrib(pasta.Arquivo(kSatrib)).Tabela());
}

/// That of an open rebuild is not known any more: any version ends it.
void DesconsideraVersoesNegativas(TContexto& ctx) {
    TClientDataSet& novo = ctx.dm.SArquivoNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) {
        if (novo.Inteiro("versao") >= 0) continue;
        const std::string tabela(Apara(novo.Texto("nome_arquivo")));
        const std::string linha = "Tabela " + tabela + ": a versão " + novo.Texto("versao") +
                                  " do pacote não é válida, e conta a gravada no banco";
        ctx.Tela().Memo2(linha);
        ctx.Tela().SetLog(linha, tabela, "Versões do pacote");
        const TValor gravada = ctx.dm.SarquivoVelho.Valor("versao");
        novo.Edit();
        novo.SetValor("versao", gravada.ComoInteiro() < 0 ? TValor() : gravada);
        novo.Post();
    }
}

/// The filter is in force before the first use of the package's tables, so that all steps see the selected ones.
void Seleciona(TContexto& ctx) {
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    tabelas.SetFilter(ctx.opcoes.tabelasSelecionadas ? FiltroDeTabelas(ctx.opcoes.tabelas) : std::string());
    tabelas.SetFiltered(ctx.opcoes.tabelasSelecionadas);
}

}  // namespace wkd
