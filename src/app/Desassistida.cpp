#include "Desassistida.h"

#include <fstream>
#include <iostream>
#include <memory>

#include "Atualizacao.h"
#include "Console.h"
#include "PreencheDados.h"

namespace wkd {

namespace {

constexpr std::string_view kSemConexao =
    "Não foi possível convetar ao banco, favor informar um alias válido ou verifique as configurações do mesmo";

/// Log and rejected rows are kept in the program's folder: without it nothing is begun.
bool PastaGravavel(const std::filesystem::path& pasta) {
    const std::filesystem::path prova = pasta / "AtualizaWKD.prova";
    const bool gravou = static_cast<bool>(std::ofstream(prova) << "prova" << std::flush);
    std::error_code semErro;
    std::filesystem::remove(prova, semErro);
    return gravou;
}

TOpcoes Opcoes(const TAmbiente& ambiente, const TPedeAtualizacao& pedido) {
    TOpcoes opcoes;
    opcoes.alias = pedido.alias;
    opcoes.pacote = pedido.pacote;
    opcoes.desassistido = true;
    opcoes.marcaNaoCria = ambiente.marcaNaoCria;
    opcoes.temporaria = ambiente.temporaria;
    opcoes.pastaPrograma = ambiente.pastaPrograma;
    return opcoes;
}

TCodigoDeSaida Corre(const TAmbiente& ambiente, const TPedeAtualizacao& pedido, TTelaConsole& tela) {
    TDataModulo dm(TAliases(LocalizaIni(ambiente.locais)), tela);
    TEstado estado;
    const TDadosDoAlias dados = PreencheDados(dm, estado, pedido.alias);
    if (!dm.SQLConnection1.Connected()) {
        tela.Informacao(kSemConexao);
        if (!dados.erro.empty()) tela.Informacao(dados.erro);
        return TCodigoDeSaida::SemConexao;
    }
    const TOpcoes opcoes = Opcoes(ambiente, pedido);
    const TFimDaAtualizacao fim = TAtualizacao(dm, opcoes, estado).Executa();
    dm.SQLConnection1.Close();
    if (fim == TFimDaAtualizacao::Encerrada) return TCodigoDeSaida::Encerrada;
    return tela.HouveErro() ? TCodigoDeSaida::ComErros : TCodigoDeSaida::Sucesso;
}

}  // namespace

TCodigoDeSaida AtualizaDesassistida(const TAmbiente& ambiente, const TPedeAtualizacao& pedido) {
    if (!PastaGravavel(ambiente.pastaPrograma)) {
        std::cerr << "Sem permissão de gravação na pasta do programa, " << ambiente.pastaPrograma.string()
                  << ", onde ficam o log e as linhas rejeitadas. Dê a permissão e rode de novo." << std::endl;
        return TCodigoDeSaida::Encerrada;
    }
    TLogDaExecucao log(ambiente.pastaPrograma / "AtualizaWKD.log");
    TTelaConsole tela(log);
    TCodigoDeSaida codigo = TCodigoDeSaida::SemConexao;
    try {
        log.Carrega();
        codigo = Corre(ambiente, pedido, tela);
    } catch (const TErroConfiguracao& erro) {
        tela.Informacao(erro.what());
    }
    log.Salva();
    return codigo;
}

}  // namespace wkd
