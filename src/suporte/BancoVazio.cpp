#include "BancoVazio.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "Esquema.h"
#include "alter/IndicesGuardados.h"
#include "context/MarcaDeAnalise.h"
#include "corrections/Correcoes.h"
#include "layout/AtualizaSistema.h"
#include "layout/IndicesRetirados.h"
#include "layout/ReconstrucoesAbertas.h"
#include "package/Caminho.h"
#include "packet/DataPacket.h"
#include "passes/CamposTexto.h"
#include "passes/Passes.h"
#include "values/Texto.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

/// In the order in which keys of one may mean the other.
constexpr std::array<std::string_view, 5> kTabelas = {"SARQUIVO", "SATRIB", "SINDSEC", "SINDSECA", "TINI"};

bool UmaDas(std::span<const TCorrecao> correcoes, std::string_view nome) {
    return std::ranges::find(correcoes, nome, &TCorrecao::nome) != correcoes.end();
}

/// Whether a row of TINI is the program's: in its own sections, and in those that it shares with other programs its own
/// keys.
bool DoPrograma(const std::string& secao, const std::string& chave) {
    constexpr std::array kSecoes = {kSecaoDaAnalise, kSecaoDaReconstrucao, kSecaoDosRetirados, kSecaoDosGuardados,
                                    kSecaoDaMarca};
    if (std::ranges::find(kSecoes, secao) != kSecoes.end()) return true;
    if (secao == kSecaoDasCorrecoes)
        return UmaDas(CorrecoesAnteriores(), chave) || UmaDas(CorrecoesPosteriores(), chave);
    return secao == kSecaoUmaVez && (chave == kLookupFisico || chave == kNvarchar);
}

void TiraAlheias(TTabelaEmMemoria& tini) {
    const int secao = IndiceDoCampo(tini.campos, "SESSAO"), chave = IndiceDoCampo(tini.campos, "CHAVE");
    if (secao < 0 || chave < 0) return tini.linhas.clear();
    std::erase_if(tini.linhas, [&](const TLinha& linha) {
        const auto texto = [&](int campo) {
            return std::string(AparaFim(linha[static_cast<std::size_t>(campo)].ComoTexto()));
        };
        return !DoPrograma(texto(secao), texto(chave));
    });
}

TDataPacket EmPacote(TTabelaEmMemoria linhas) {
    TDataPacket pacote;
    std::ranges::transform(linhas.campos, std::back_inserter(pacote.campos),
                           [](const TCampo& campo) { return CampoDePacote(campo); });
    pacote.linhas = std::move(linhas.linhas);
    return pacote;
}

/// No name that an update would take for a packet of its package.
std::string ArquivoDa(std::string_view tabela) { return "dicionario-" + std::string(tabela) + ".xml"; }

}  // namespace

std::vector<TTabelaGuardada> GuardaDicionario(TConnection& conexao, const fs::path& pasta) {
    std::vector<TTabelaGuardada> guardadas;
    for (const auto tabela : kTabelas) {
        if (!conexao.ExisteTabela(tabela)) continue;
        auto linhas = LeTudo(*conexao.Prepara("select * from " + std::string(tabela)));
        if (tabela == "TINI") TiraAlheias(linhas);
        guardadas.push_back({std::string(tabela), ArquivoDa(tabela), linhas.linhas.size()});
        GravaPacote(EmPacote(std::move(linhas)), pasta / guardadas.back().arquivo, TFormaPacote::Xml);
    }
    return guardadas;
}

namespace {

TReproduzido PoeDicionario(THBNConnection& conexao, const fs::path& pasta) {
    conexao.Open();
    TReproduzido feito{conexao.RetornaDadosConexao().Texto(), conexao.NomesDeTabelas().size()};
    TTransacao transacao(conexao);
    for (const auto tabela : kTabelas)
        if (const auto arquivo = pasta / ArquivoDa(tabela); fs::exists(arquivo))
            feito.registros += IncluiLinhas(conexao, std::string(tabela), arquivo);
    transacao.Commit();
    return feito;
}

/// Statements that the server does not take, such as a check by a function that is not there, keep no other out.
void RodaComandos(THBNConnection& conexao, const std::vector<std::string>& comandos,
                  std::vector<std::string>& recusados) {
    conexao.Open();
    for (const auto& comando : comandos) {
        try {
            conexao.ExecuteDirect(comando);
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
            recusados.push_back(comando + ": " + erro.what());
        }
    }
}

}  // namespace

TReproduzido ReproduzBanco(THBNConnection& conexao, const fs::path& pasta, const TAcompanha& acompanha) {
    const TEsquema esquema = LeEsquema(pasta / kEsquema);
    if (esquema.tipoBanco != TipoBancoToStr(conexao.TipoBanco()))
        throw TErroDeBackup("O pacote é de um banco " + esquema.tipoBanco + ", e o alias " + conexao.Alias() + " é " +
                            std::string(TipoBancoToStr(conexao.TipoBanco())) + ". Dê um alias do mesmo tipo e repita.");
    const auto servidor = CriaServidorDeBackup(conexao);
    TCopiaPassageira banco(*servidor, servidor->BancoEmUso());
    const bool copiado = fs::exists(pasta / kBancoVazio);
    if (copiado)
        servidor->Restaura(pasta / kBancoVazio, banco.Banco(), acompanha);
    else
        servidor->CriaVazio(banco.Banco(), esquema.conjunto, esquema.pagina);
    banco.Existe();
    try {
        std::vector<std::string> recusados;
        if (!copiado) RodaComandos(conexao, esquema.comandos, recusados);
        TReproduzido feito = PoeDicionario(conexao, pasta);
        feito.soTabelas = !copiado;
        feito.recusados = std::move(recusados);
        banco.Fica();
        return feito;
    } catch (...) {
        conexao.Close();
        throw;
    }
}

}  // namespace wkd
