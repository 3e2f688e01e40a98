#include "BancoVazio.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <nlohmann/json.hpp>

#include "alter/IndicesGuardados.h"
#include "context/MarcaDeAnalise.h"
#include "corrections/Correcoes.h"
#include "dialect/Dialeto.h"
#include "layout/AtualizaSistema.h"
#include "layout/IndicesRetirados.h"
#include "layout/ReconstrucoesAbertas.h"
#include "package/Caminho.h"
#include "packet/DataPacket.h"
#include "passes/CamposTexto.h"
#include "passes/Passes.h"
#include "process/Programa.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

using TJson = nlohmann::ordered_json;

TJson EmJson(const TColunaFisica& coluna) {
    return {{"nome", coluna.nome},
            {"tipo", coluna.tipoSql},
            {"obrigatoria", coluna.requerido},
            {"padrao", TextoDeBytes(coluna.padrao)},
            {"calculo", TextoDeBytes(coluna.expressao)},
            {"conjunto", coluna.conjunto}};
}

TJson EmJson(const TIndice& indice) {
    return {{"nome", indice.nome},           {"unico", indice.unico},     {"descendente", indice.descendente},
            {"restricao", indice.restricao}, {"colunas", indice.colunas}, {"expressao", TextoDeBytes(indice.expressao)},
            {"inativo", indice.inativo}};
}

TJson Objetos(TConnection& conexao, TMascara& mascara) {
    TJson objetos = TJson::array();
    const auto pergunta = Dialeto(conexao).ComandoObjetos();
    if (pergunta.empty()) return objetos;
    TWKDQuery q(conexao, pergunta);
    for (q.Open(); !q.Eof(); q.Next()) {
        objetos.push_back({{"tipo", q.Texto("TIPO")}, {"nome", q.Texto("NOME")}, {"tabela", q.Texto("TABELA")}});
        mascara.Conhece(q.Texto("NOME"));
    }
    return objetos;
}

void Conhece(const std::string& tabela, const std::vector<TColunaFisica>& colunas, const TChavePrimaria& chave,
             const std::vector<TIndice>& indices, TMascara& mascara) {
    mascara.Conhece(tabela);
    mascara.Conhece(chave.nome);
    for (const auto& coluna : colunas) mascara.Conhece(coluna.nome);
    for (const auto& indice : indices) {
        mascara.Conhece(indice.nome);
        mascara.Conhece(indice.restricao);
    }
}

}  // namespace

std::string EsquemaEmJson(TConnection& conexao, TMascara& mascara) {
    TJson json = {{"formato", kFormatoJson}, {"tabelas", TJson::array()}};
    const auto todas = conexao.TodasAsColunas();
    const auto chaves = conexao.TodasAsChaves();
    for (const auto& tabela : conexao.NomesDeTabelas()) {
        const auto colunas = todas.find(Maiusculas(tabela));
        if (colunas == todas.end()) continue;
        const auto chave = chaves.find(Maiusculas(tabela));
        const TChavePrimaria sua = chave == chaves.end() ? TChavePrimaria() : chave->second;
        const auto indices = conexao.Indices(tabela);
        Conhece(std::string(AparaFim(tabela)), colunas->second, sua, indices, mascara);
        TJson uma = {{"tabela", AparaFim(tabela)},
                     {"colunas", TJson::array()},
                     {"chave", {{"nome", sua.nome}, {"colunas", sua.colunas}}},
                     {"indices", TJson::array()}};
        for (const auto& coluna : colunas->second) uma["colunas"].push_back(EmJson(coluna));
        for (const auto& indice : indices) uma["indices"].push_back(EmJson(indice));
        json["tabelas"].push_back(std::move(uma));
    }
    json["objetos"] = Objetos(conexao, mascara);
    return json.dump(1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

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

}  // namespace

TReproduzido ReproduzBanco(THBNConnection& conexao, const fs::path& pasta, const TAcompanha& acompanha) {
    if (!fs::exists(pasta / kBancoVazio))
        throw TErroDeBackup("O pacote não traz " + std::string(kBancoVazio) +
                            ", de que se faz o banco vazio; o LEIAME.txt dele diz por quê. A estrutura está em "
                            "esquema.json.");
    if (conexao.TipoBanco() != TTipoBanco::tbInterbase)
        throw TErroDeBackup("O pacote é de um banco Firebird, e o alias " + conexao.Alias() +
                            " é de outro servidor. Dê um alias tbInterbase e repita.");
    const auto servidor = CriaServidorDeBackup(conexao);
    TCopiaPassageira banco(*servidor, servidor->BancoEmUso());
    servidor->Restaura(pasta / kBancoVazio, banco.Banco(), acompanha);
    banco.Existe();
    try {
        const auto feito = PoeDicionario(conexao, pasta);
        banco.Fica();
        return feito;
    } catch (...) {
        conexao.Close();
        throw;
    }
}

}  // namespace wkd
