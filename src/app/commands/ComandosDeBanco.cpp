#include "commands/ComandosDeBanco.h"

#include <iostream>

#include "commands/LinhaDoTerminal.h"
#include "report/PlanoEmTexto.h"
#include "run/TravaDoBanco.h"
#include "server/Vigia.h"
#include "window/PaginaAlias.h"

namespace wkd {

namespace {

TCodigoDeSaida Falha(std::string_view texto, TCodigoDeSaida codigo) {
    EscreveNosErros(texto);
    return codigo;
}

/// Opens the alias and hands the data module over. What fails before is "no connection", behind it "ended early".
template <class F>
TCodigoDeSaida NoAlias(const TAmbiente& ambiente, const std::string& alias, F&& comando) {
    TTelaDoConsole tela;
    TEstado estado;
    std::optional<TDataModulo> dm;
    std::optional<TVigia> vigia;
    try {
        dm.emplace(TAliases(LocalizaIni(ambiente.locais)), tela);
        vigia.emplace(dm->SQLConnection1, TPrazos::DoAlias(dm->SQLConnection1.Aliases(), alias),
                      [&](std::string_view texto) { tela.SemResposta(texto); });
        const TDadosDoAlias dados = PreencheDados(*dm, estado, alias);
        if (!dm->SQLConnection1.Connected())
            return Falha(dados.erro, dados.outraAtualizacao ? TCodigoDeSaida::Encerrada : TCodigoDeSaida::SemConexao);
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

}  // namespace

TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido) {
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado& estado) {
        TOpcoes opcoes;
        opcoes.alias = pedido.alias;
        opcoes.pacote = pedido.pacote;
        opcoes.temporaria = ambiente.temporaria;
        opcoes.pastaPrograma = ambiente.pastaPrograma;
        const auto plano = Planeja(dm, opcoes, estado);
        if (!plano) return TCodigoDeSaida::Encerrada;
        std::cout << (pedido.json ? PlanoEmJson(*plano) : PlanoEmTexto(*plano)) << std::flush;
        if (!plano->Muda() && plano->achados.empty()) return TCodigoDeSaida::Sucesso;
        return plano->TemAchados() ? TCodigoDeSaida::ComAchados : TCodigoDeSaida::ComMudancas;
    });
}

TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido) {
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado&) {
        const auto desvios = ConfereDicionario(dm);
        std::cout << (pedido.json ? DesviosEmJson(pedido.alias, desvios) : DesviosEmTexto(pedido.alias, desvios))
                  << std::flush;
        return desvios.empty() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComAchados;
    });
}

}  // namespace wkd
