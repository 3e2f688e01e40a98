#include "context/CargaDoPacote.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "package/Trava.h"
#include "process/Interrupcao.h"
#include "rows/LinhasDoDataSet.h"
#include "values/Texto.h"

namespace wkd {

std::vector<std::string> NomesListados(const std::vector<std::string>& linhas) {
    std::vector<std::string> nomes;
    for (const auto& linha : linhas)
        if (const auto nome = Apara(linha); !nome.empty()) nomes.emplace_back(nome);
    return nomes;
}

namespace {

/// The busy panel goes when the extraction ends, whatever it ends with.
std::vector<std::string> Extrai(TContexto& ctx, const TPastaDeTrabalho& pasta) {
    const struct TFimDaExtracao {
        TDataModulo& dm;
        ~TFimDaExtracao() { dm.UnzipUnZipComplete(); }
    } fim{ctx.dm};
    return ExtraiPacote(ctx.opcoes.pacote, pasta.Caminho(), [&ctx](int percentual) {
        TInterrupcao::Confere();
        ctx.dm.UnzipTotalPercentDone(percentual);
    });
}

using TGrafias = std::map<std::string, std::string>;  // by the name in capitals

/// A table that the package writes in two ways would have each take the other's turn, in every run: the first one
/// holds. Returns the names of such tables.
TGrafias UnificaTabelas(TContexto& ctx, TTabelaEmMemoria& tabelas) {
    const auto campo = [&](std::string_view nome) {
        return static_cast<std::size_t>(IndiceDoCampo(tabelas.campos, nome));
    };
    const std::size_t nome = campo("NOME_ARQUIVO"), modulo = campo("COD_MODULO");
    TGrafias primeiras, repetidas;
    std::set<std::pair<std::string, std::string>> vistas;
    std::vector<TLinha> linhas;
    for (TLinha& linha : tabelas.linhas) {
        const std::string escrita(Apara(linha[nome].ComoTexto())), chave = Maiusculas(escrita);
        const std::string& vale = primeiras.emplace(chave, escrita).first->second;
        const bool outra = escrita != vale;
        if (outra && repetidas.emplace(chave, vale).second) {
            const std::string aviso = "o pacote escreve a tabela também " + escrita + "; vale " + vale;
            ctx.Tela().Erro(TErroDaExecucao::NosDois({.mensagem = aviso, .falha = TFalha::Dicionario}, vale,
                                                     "Carregar o pacote", "Tabela " + vale + ": " + aviso));
        }
        if (outra) linha[nome] = vale;
        if (vistas.emplace(ChaveDeNome(linha[modulo].ComoTexto()), chave).second || !outra)
            linhas.push_back(std::move(linha));
    }
    tabelas.linhas = std::move(linhas);
    return repetidas;
}

/// Their columns, each once.
void UnificaColunas(TTabelaEmMemoria& colunas, const TGrafias& grafias) {
    const auto arquivo = static_cast<std::size_t>(IndiceDoCampo(colunas.campos, "ARQUIVO"));
    const auto nome = static_cast<std::size_t>(IndiceDoCampo(colunas.campos, "NOME"));
    std::set<std::pair<std::string, std::string>> vistas;
    std::vector<TLinha> linhas;
    for (TLinha& linha : colunas.linhas) {
        const auto vale = grafias.find(ChaveDeNome(Apara(linha[arquivo].ComoTexto())));
        const bool repete =
            vale != grafias.end() && !vistas.emplace(vale->first, ChaveDeNome(Apara(linha[nome].ComoTexto()))).second;
        if (repete) continue;
        if (vale != grafias.end()) linha[arquivo] = vale->second;
        linhas.push_back(std::move(linha));
    }
    colunas.linhas = std::move(linhas);
}

}  // namespace

std::string ServidorVivo(TConnection& conexao) {
    try {
        return conexao.VersaoServidor();
    } catch (const TErroBanco&) {
        if (!conexao.Perdida() || conexao.InTransaction()) throw;
    }
    conexao.Open();
    return conexao.VersaoServidor();
}

bool TemDicionario(TContexto& ctx) {
    ctx.dm.AtualizaListaDeTabelas();
    ctx.dm.Atualiza.Dicionario().EsqueceRecusas();
    for (const std::string_view tabela : {"SARQUIVO", "SATRIB"}) {
        if (ctx.dm.ExisteTabela(tabela)) continue;
        const std::string texto = "O banco de dados não tem a tabela " + std::string(tabela) +
                                  " do dicionário: não é um banco do sistema, ou está incompleto. Verifique o alias " +
                                  ctx.opcoes.alias + ".";
        ctx.Tela().Erro(TErroDaExecucao::NaCaixa({.mensagem = texto, .falha = TFalha::OutroBanco}, tabela));
        return false;
    }
    return true;
}

bool Desempacota(TContexto& ctx, TPastaDeTrabalho& pasta) {
    std::error_code semErro;
    if (!std::filesystem::is_regular_file(ctx.opcoes.pacote, semErro)) {
        ctx.Tela().Erro(
            TErroDaExecucao::NaCaixa({.mensagem = "Arquivo de atualizção não existe", .falha = TFalha::PacoteAusente}));
        return false;
    }
    pasta.Recria();
    const auto recusadas = Extrai(ctx, pasta);
    ctx.Tela().PastaDoPacote(pasta.Caminho());
    for (const std::string& recusada : recusadas)
        ctx.Tela().Erro(TErroDaExecucao::NosDois({.mensagem = recusada, .falha = TFalha::Pacote}, "", "Descompactar"));
    return true;
}

std::vector<TLinhaRecusada> CarregaDicionarios(TContexto& ctx, const TPastaDeTrabalho& pasta) {
    TDataModulo& dm = ctx.dm;
    dm.SarquivoVelho.Close();
    dm.SatribVelho.Close();
    dm.SArquivoNovo.Close();
    dm.SatribNovo.Close();
    auto tabelas = LeSarquivo(pasta.Arquivo(kSarquivo)).Tabela(), colunas = LeSatrib(pasta.Arquivo(kSatrib)).Tabela();
    auto recusadas = RecusaNomes(tabelas, "SARQUIVO", kSarquivo);
    std::ranges::move(RecusaNomes(colunas, "SATRIB", kSatrib), std::back_inserter(recusadas));
    for (const auto& [tabela, texto] : recusadas) {
        ctx.Tela().Erro(
            TErroDaExecucao::NosDois({.mensagem = texto, .falha = TFalha::Dicionario}, tabela, "Carregar pacote"));
        ctx.comRecusadas.insert(ChaveDeNome(tabela));
    }
    if (tabelas.linhas.empty() || colunas.linhas.empty())
        throw TErroPacote("O dicionário do pacote não tem nomes que sirvam. É preciso um pacote completo.");
    const TGrafias grafias = UnificaTabelas(ctx, tabelas);
    if (!grafias.empty()) UnificaColunas(colunas, grafias);
    dm.SArquivoNovo.Carrega(std::move(tabelas));
    dm.SatribNovo.Carrega(std::move(colunas));
    LeDicionarioNovo(ctx);
    return recusadas;
}

void LeDicionarioNovo(TContexto& ctx) {
    ctx.novo.LeTabelas(ctx.dm.SArquivoNovo.Todas());
    ctx.novo.LeColunas(ctx.dm.SatribNovo.Todas());
}

void LeDicionarioGravado(TContexto& ctx) {
    TDataModulo& dm = ctx.dm;
    dm.SarquivoVelho.Open();
    dm.SatribVelho.OpenVazio();
    ctx.gravado.LeTabelas(dm.SarquivoVelho.Todas());
    std::vector<std::string> campos;
    for (const std::string_view campo : kCamposDaColuna)
        if (dm.VerificaExisteCampo("SATRIB", campo)) campos.emplace_back(campo);
    ctx.gravado.LeColunas(*ctx.Conexao().Prepara("select " + Junta(campos, ", ") + " from SATRIB"));
}

/// The version that an open rebuild (VERSAO -1) began at is not known any more: any version ends it.
void DesconsideraVersoesNegativas(TContexto& ctx) {
    TClientDataSet& linhas = ctx.dm.SArquivoNovo;
    for (linhas.First(); !linhas.Eof(); linhas.Next()) {
        const TTabelaDicionario* tabela = TabelaAtual(ctx);
        if (!tabela || tabela->versao.value_or(0) >= 0) continue;
        const std::string linha = "Tabela " + tabela->nome + ": a versão " + std::to_string(*tabela->versao) +
                                  " do pacote não é válida, e conta a gravada no banco";
        ctx.Tela().Erro(TErroDaExecucao::NosDois({.mensagem = linha, .falha = TFalha::Dicionario}, tabela->nome,
                                                 "Versões do pacote"));
        const TTabelaDicionario* gravada = ctx.gravado.Tabela(tabela->modulo, tabela->nome);
        const auto vale = gravada && gravada->versao.value_or(0) >= 0 ? gravada->versao : std::nullopt;
        ctx.novo.SupoeVersao(tabela->modulo, tabela->nome, vale);
        linhas.Edit();
        linhas.SetValor("versao", vale ? TValor(*vale) : TValor());
        linhas.Post();
    }
}

std::vector<std::string> TabelasForaDoPacote(const std::filesystem::path& pacote,
                                             const std::filesystem::path& temporaria,
                                             const std::vector<std::string>& tabelas) {
    const TPastaPassageira privada(temporaria);
    TPastaDeTrabalho pasta(privada.Caminho());
    ExtraiPacote(pacote, pasta.Caminho(), [](int) { TInterrupcao::Confere(); });
    TDicionario dicionario;
    dicionario.LeTabelas(LeSarquivo(pasta.Arquivo(kSarquivo)).Tabela());
    const auto tem = [&](const std::string& nome) {
        return std::ranges::any_of(dicionario.Tabelas(), [&](const auto& tabela) {
            return ChaveDeNome(Apara(tabela.nome)) == ChaveDeNome(Apara(nome));
        });
    };
    std::vector<std::string> faltam;
    std::ranges::remove_copy_if(tabelas, std::back_inserter(faltam), tem);
    return faltam;
}

/// The filter is in force before the first use of the package's tables, so that all steps see the selected ones.
void Seleciona(TContexto& ctx) {
    if (!ctx.opcoes.tabelasSelecionadas) return ctx.dm.SArquivoNovo.SetFiltered(false);
    const auto nomes = NomesListados(ctx.opcoes.tabelas);
    ctx.novo.LimitaA(nomes);
    ctx.dm.SArquivoNovo.SetFilter("nome_arquivo", TLinha(nomes.begin(), nomes.end()));
    ctx.dm.SArquivoNovo.SetFiltered(true);
}

const TTabelaDicionario* TabelaAtual(const TContexto& ctx) {
    const TClientDataSet& atual = ctx.dm.SArquivoNovo;
    const std::string nome = atual.Texto("nome_arquivo");
    return Apara(nome).empty() ? nullptr : ctx.novo.Tabela(ChaveDeValor(atual.Valor("cod_modulo")), nome);
}

}  // namespace wkd
