#include "commands/Comandos.h"

#include <iostream>

#include "commands/LinhaDoTerminal.h"
#include "commands/PreencheDados.h"
#include "context/CargaDoPacote.h"
#include "package/Pacote.h"
#include "package/TravaDoBanco.h"
#include "report/Historico.h"
#include "report/PlanoEmTexto.h"
#include "server/Vigia.h"
#include "values/Texto.h"

namespace wkd {

namespace {

TCodigoDeSaida Falha(std::string_view texto, TCodigoDeSaida codigo) {
    EscreveNosErros(texto);
    return codigo;
}

/// Nothing is cleaned up behind what is looked at: old row versions stay as they are.
std::unique_ptr<TConnection> CriaConexaoSemLimpeza(std::string_view tipoBanco, TParametrosConexao parametros) {
    parametros.Adiciona("GarbageCollect", "False");
    return CriaConexao(tipoBanco, parametros);
}

}  // namespace

TCodigoDeSaida NoAlias(const TAmbiente& ambiente, const std::string& alias, const TComandoNoAlias& comando) {
    TTelaDoConsole tela;
    TEstado estado;
    std::optional<TDataModulo> dm;
    std::optional<TVigia> vigia;
    try {
        dm.emplace(TAliases(LocalizaIni(ambiente.locais)), tela, CriaConexaoSemLimpeza);
        vigia.emplace(dm->SQLConnection1, TPrazos::DoAlias(dm->SQLConnection1.Aliases(), alias),
                      [&](std::string_view texto) { tela.SemResposta(texto); });
        const TDadosDoAlias dados = PreencheDados(*dm, estado, alias);
        if (!dm->SQLConnection1.Connected()) return Falha(ExplicaConexao(*dados.erro), CodigoSemConexao(dados));
        if (const auto quem = QuemAtualiza(dm->SQLConnection1))
            EscreveNosErros("Aviso: uma atualização deste banco de dados está em andamento: " + *quem + ".");
    } catch (const std::exception& erro) {
        return Falha(erro.what(), TCodigoDeSaida::SemConexao);
    }
    try {
        return comando(*dm, estado);
    } catch (const std::exception& erro) {
        return Falha(erro.what(), TCodigoDeSaida::Encerrada);
    }
}

void Escolhe(const TEscolhas& escolhas, TOpcoes& opcoes) {
    const bool algumas = !escolhas.tabelas.empty();
    opcoes.todas = escolhas.todas;
    opcoes.completo = escolhas.completo && !algumas;
    opcoes.tabelasSelecionadas = algumas;
    opcoes.tabelas = escolhas.tabelas;
    opcoes.modoCompleto = escolhas.completo && algumas;
    opcoes.querysAnteriores = escolhas.anteriores;
    opcoes.querysPosteriores = escolhas.posteriores;
    opcoes.linhasPorCommit = escolhas.linhasPorCommit;
}

bool TemAsTabelas(const TAmbiente& ambiente, const std::filesystem::path& pacote, const TEscolhas& escolhas) {
    if (escolhas.tabelas.empty()) return true;
    std::vector<std::string> faltam;
    try {
        faltam = TabelasForaDoPacote(pacote, ambiente.temporaria, escolhas.tabelas);
    } catch (const TErroPacote&) {
        return true;
    }
    if (faltam.empty()) return true;
    EscreveNosErros((faltam.size() == 1 ? "O pacote não tem a tabela " : "O pacote não tem as tabelas ") +
                    Junta(faltam, ", ") +
                    ": nada foi feito. Confira os nomes de --tabelas; PacoteWKD mostra diz os do pacote.");
    return false;
}

TOpcoes OpcoesDoComando(const TAmbiente& ambiente, const std::string& alias, const std::filesystem::path& pacote,
                        const TEscolhas& escolhas) {
    TOpcoes opcoes;
    Escolhe(escolhas, opcoes);
    opcoes.alias = alias;
    opcoes.pacote = pacote;
    opcoes.temporaria = ambiente.temporaria;
    opcoes.pastaPrograma = ambiente.pastaPrograma;
    opcoes.marcaNaoCria = ambiente.marcaNaoCria;
    return opcoes;
}

namespace {

std::string PlanoNaForma(const TPlano& plano, TFormaDoPlano forma) {
    switch (forma) {
        case TFormaDoPlano::Texto:
            return PlanoEmTexto(plano);
        case TFormaDoPlano::Json:
            return PlanoEmJson(plano);
        case TFormaDoPlano::Sql:
            return PlanoEmSql(plano);
        case TFormaDoPlano::Html:
            return PlanoEmHtml(plano);
        case TFormaDoPlano::Nenhuma:
            break;
    }
    return {};
}

}  // namespace

TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido) {
    if (!TemAsTabelas(ambiente, pedido.pacote, pedido.escolhas)) return TCodigoDeSaida::Encerrada;
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado& estado) {
        const auto plano = Planeja(dm, OpcoesDoComando(ambiente, pedido.alias, pedido.pacote, pedido.escolhas), estado);
        if (!plano) return TCodigoDeSaida::Encerrada;
        std::cout << PlanoNaForma(*plano, pedido.forma) << std::flush;
        if (!plano->Muda() && plano->achados.empty()) return TCodigoDeSaida::Sucesso;
        return plano->TemAchados() ? TCodigoDeSaida::ComAchados : TCodigoDeSaida::ComMudancas;
    });
}

TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido) {
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado&) {
        const auto desvios = ConfereDicionario(dm, ambiente.pastaPrograma);
        std::cout << (pedido.json ? DesviosEmJson(pedido.alias, desvios) : DesviosEmTexto(pedido.alias, desvios))
                  << std::flush;
        return desvios.empty() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComAchados;
    });
}

TCodigoDeSaida MostraHistorico(const TAmbiente& ambiente, const TPedeHistorico& pedido) {
    const auto execucoes = Historico(ambiente.pastaPrograma, pedido.alias);
    std::cout << (pedido.json ? HistoricoEmJson(execucoes) : HistoricoEmTexto(execucoes)) << std::flush;
    return TCodigoDeSaida::Sucesso;
}

TCodigoDeSaida ComandoRepoe(const TAmbiente& ambiente, const TPedeRepoe& pedido) {
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado&) {
        const TTravaDoBanco trava(dm.SQLConnection1);
        const TReposicao reposicao = RepoeRejeitadas(dm.SQLConnection1, ambiente.pastaPrograma, pedido.alias);
        for (const auto& linha : reposicao.ficam)
            EscreveNosErros(linha.tabela + " " + linha.chave + ": " + linha.motivo);
        std::cout << ReposicaoEmTexto(reposicao) << std::flush;
        return reposicao.ficam.empty() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComErros;
    });
}

}  // namespace wkd
