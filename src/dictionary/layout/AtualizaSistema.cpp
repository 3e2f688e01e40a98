#include "layout/AtualizaSistema.h"

#include <algorithm>

#include "layout/IndicesRetirados.h"
#include "packet/DicionarioDoPacote.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TArquivos = std::vector<std::filesystem::path>;

std::string NomeUtf8(const std::filesystem::path& arquivo) {
    const auto nome = arquivo.filename().u8string();
    return TextoDeBytes(std::string(nome.begin(), nome.end()));
}

bool DoDicionario(const std::filesystem::path& arquivo) {
    const std::string nome = NomeUtf8(arquivo);
    return IgualSemCaixa(nome, kSatrib) || IgualSemCaixa(nome, kSarquivo);
}

/// The file's name up to its first ".". Throws TErroPacote when that cannot be a table's name.
std::string TabelaDoArquivo(const std::filesystem::path& arquivo) {
    const std::string nome = NomeUtf8(arquivo);
    const std::string tabela = nome.substr(0, nome.find('.'));
    if (!NomeDeSql(tabela)) throw TErroPacote(nome + ": o nome do arquivo não é nome de tabela");
    return tabela;
}

/// A column of the table with the field of the file that fills it; no field where the time of the update does.
struct TDestino {
    TColunaFisica coluna;
    int campo = -1;
};

constexpr std::string_view kUltimaAtualizacao = "UTL_ATUALIZACAO";  // column of SISTEMA

/// The stored columns that receive values from the file.
std::vector<TDestino> Destinos(const std::vector<TColunaFisica>& fisicas, const std::vector<TCampo>& campos,
                               std::string_view tabela) {
    std::vector<TDestino> destinos;
    for (const auto& coluna : fisicas) {
        if (!coluna.expressao.empty()) continue;
        const bool hora = IgualSemCaixa(tabela, "SISTEMA") && IgualSemCaixa(coluna.nome, kUltimaAtualizacao);
        const int campo = hora ? -1 : IndiceDoCampo(campos, coluna.nome);
        if (hora || campo >= 0) destinos.push_back({coluna, campo});
    }
    return destinos;
}

/// Blobs go as they are: converting would bring their whole content into memory.
TValor ParaColuna(const TValor& valor, TTipoDado tipo) {
    const bool blob = tipo == TTipoDado::Blob || tipo == TTipoDado::Memo || tipo == TTipoDado::Bytes;
    return blob ? valor : valor.Converte(tipo);
}

void InsereLinhas(TConnection& conexao, std::string_view tabela, const std::vector<TDestino>& destinos,
                  const std::vector<TLinha>& linhas) {
    if (linhas.empty()) return;
    if (destinos.empty()) throw TErroPacote("nenhum campo do arquivo existe na tabela");
    std::vector<std::string> colunas;
    for (const auto& destino : destinos) colunas.push_back(destino.coluna.nome);
    const auto comando = conexao.Prepara(ComandoInsere(tabela, colunas));
    const TValor agora = Agora();
    for (std::size_t n = 0; n < linhas.size(); ++n) {
        try {
            for (std::size_t i = 0; i < destinos.size(); ++i) {
                const auto& [coluna, campo] = destinos[i];
                comando->Atribui(
                    i, ParaColuna(campo < 0 ? agora : linhas[n][static_cast<std::size_t>(campo)], coluna.tipo));
            }
            comando->Executa();
        } catch (const std::exception& erro) {
            TErro doRegistro = ErroDe(erro);
            doRegistro.mensagem = "Registro " + std::to_string(n + 1) + ": " + erro.what();
            throw TErroConhecido(std::move(doRegistro));
        }
    }
}

struct TRecarga {
    bool completa = false;  // every field of the file has its column
    std::int64_t sairam = 0;
    std::size_t entraram = 0;
    std::vector<TLinhaRecusada> recusadas;
};

/// Empties and refills the table in one transaction.
TRecarga RecarregaTabela(TDataModulo& dm, const std::string& tabela, const std::filesystem::path& arquivo) {
    if (!dm.ExisteTabela(tabela)) throw TErroPacote("o banco não tem a tabela " + tabela);
    TTabelaEmMemoria dados = LePacote(arquivo).Tabela();
    TRecarga recarga;
    recarga.recusadas = RecusaNomes(dados, tabela, arquivo);
    recarga.entraram = dados.linhas.size();
    const auto& fisicas = dm.ColunasFisicas(tabela);
    const auto destinos = Destinos(fisicas, dados.campos, tabela);
    TConnection& conexao = dm.SQLConnection1;
    const auto retirados = IgualSemCaixa(tabela, "SINDSEC") ? RetiradosPor(dm, dados) : TIndicesRetirados();
    {
        const auto apaga = conexao.Prepara("DELETE FROM " + tabela);
        TTransacao transacao(conexao);
        recarga.sairam = apaga->Executa();
        InsereLinhas(conexao, tabela, destinos, dados.linhas);
        GravaRetirados(conexao, retirados);
        transacao.Commit();
    }
    recarga.completa = std::ranges::all_of(dados.campos, [&](const TCampo& campo) {
        return std::ranges::any_of(fisicas, [&](const auto& fisica) { return IgualSemCaixa(fisica.nome, campo.nome); });
    });
    return recarga;
}

void RelataTroca(ITela& tela, const std::string& tabela, const std::string& arquivo, const TRecarga& recarga) {
    if (TrocaRegistrosDoCliente(tabela))
        tela.Memo1("Tabela " + tabela + ": saíram " + std::to_string(recarga.sairam) + " registro(s) e entraram " +
                   std::to_string(recarga.entraram) + " de " + arquivo + " do pacote");
}

void RelataRecusadas(ITela& tela, const TRecarga& recarga) {
    for (const auto& [tabela, texto] : recarga.recusadas) {
        tela.Erro(TErroDaExecucao::NosDois({.mensagem = texto, .falha = TFalha::Dicionario}, tabela,
                                           "Atualizando tabelas de sistema"));
    }
}

/// Reloads the files in turn, then merges what the customer added. The first time, whatever fails may be for want of a
/// table or column, or of its size, that the update is about to make: such files are returned, not reported.
/// So are those of a table whose rebuild is open, or of its backup: what is in them is not to be taken out.
TArquivos Recarrega(TDataModulo& dm, const TArquivos& arquivos, const TReconstrucoesAbertas& abertas,
                    bool primeiraVez) {
    TArquivos adiados;
    ITela& tela = dm.Tela();
    tela.PbAtual().Define(0, static_cast<int>(arquivos.size()), 10, 0);
    for (const auto& arquivo : arquivos) {
        tela.ProcessaMensagens();
        tela.PbAtual().Posicao(tela.PbAtual().Posicao() + 1);
        if (DoDicionario(arquivo)) continue;
        const std::string nome = NomeUtf8(arquivo);
        tela.LblAtual("Atualizando tabelas de sistema..." + nome);
        try {
            const std::string tabela = TabelaDoArquivo(arquivo);
            if (GuardaAberta(abertas, tabela))
                throw TErroPacote("a reconstrução da tabela não terminou; rode a atualização de novo",
                                  TFalha::ReconstrucaoAberta);
            const TRecarga recarga = RecarregaTabela(dm, tabela, arquivo);
            RelataTroca(tela, tabela, nome, recarga);
            if (primeiraVez && !recarga.completa)
                adiados.push_back(arquivo);
            else
                RelataRecusadas(tela, recarga);
        } catch (const std::exception& erro) {
            if (primeiraVez) {
                adiados.push_back(arquivo);
                continue;
            }
            tela.Erro(TErroDaExecucao::NosDois(ErroDe(erro), nome, "Atualizando tabelas de sistema",
                                               "Erro atualizando tabela de sistema " + nome + ": " + erro.what()));
        }
    }
    dm.MesclaPesquisasELookups();
    tela.PbAtual().Posicao(0);
    tela.LblAtual("Parado.");
    return adiados;
}

}  // namespace

std::size_t IncluiLinhas(TConnection& conexao, const std::string& tabela, const std::filesystem::path& arquivo) {
    const TTabelaEmMemoria dados = LePacote(arquivo).Tabela();
    InsereLinhas(conexao, tabela, Destinos(conexao.Colunas(tabela), dados.campos, tabela), dados.linhas);
    return dados.linhas.size();
}

bool TrocaRegistrosDoCliente(std::string_view tabela) {
    return !TabelaDoDicionario(tabela) && !IgualSemCaixa(tabela, "SISTEMA");
}

std::vector<TTrocaDeRegistros> TrocasDeRegistros(TDataModulo& dm, const TPastaDeTrabalho& pasta) {
    std::vector<TTrocaDeRegistros> trocas;
    for (const auto& arquivo : pasta.Arquivos(".wkd")) {
        const std::string nome = NomeUtf8(arquivo), tabela = nome.substr(0, nome.find('.'));
        if (!NomeDeSql(tabela) || !TrocaRegistrosDoCliente(tabela) || !dm.ExisteTabela(tabela)) continue;
        try {
            const auto entram = static_cast<std::int64_t>(LePacote(arquivo).linhas.size());
            const auto saem = ContaRegistros(dm.SQLConnection1, "select count(*) as total from " + tabela);
            trocas.push_back({Maiusculas(tabela), nome, saem, entram});
        } catch (const TErroPacote&) {  // the update leaves the rows as they are, and says so
        }
    }
    return trocas;
}

TArquivos AtualizaSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta, const TReconstrucoesAbertas& abertas) {
    return Recarrega(dm, pasta.Arquivos(".wkd"), abertas, true);
}

void RecarregaAdiados(TDataModulo& dm, const TArquivos& arquivos) {
    if (!arquivos.empty()) Recarrega(dm, arquivos, ReconstrucoesAbertas(dm), false);
}

}  // namespace wkd
