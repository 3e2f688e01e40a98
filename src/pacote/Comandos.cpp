#include "Comandos.h"

#include <nlohmann/json.hpp>

#include "Inventario.h"
#include "Montagem.h"
#include "PacoteJson.h"
#include "RelatoDoPacote.h"
#include "package/Caminho.h"
#include "server/HBNConnection.h"
#include "values/Erros.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// No settings file, unknown alias or no connection.
class TSemConexao : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Abre(THBNConnection& conexao, const std::string& alias) try {
    conexao.SetAlias(alias);
    conexao.Open();
} catch (const std::exception& erro) {
    throw TSemConexao(erro.what());
}

TAliases Aliases(const TLocaisDoIni& locais) try {
    return TAliases(LocalizaIni(locais));
} catch (const TErroConfiguracao& erro) {
    throw TSemConexao(erro.what());
}

struct TExecucao {
    const TLocaisDoIni& locais;
    bool json;
    std::ostream& saida;
    std::ostream& erros;

    TCodigoDeSaida operator()(const TPedeTexto& pedido) const {
        saida << pedido.texto;
        return TCodigoDeSaida::Sucesso;
    }

    TCodigoDeSaida operator()(const TPedidoErrado& pedido) const {
        erros << pedido.mensagem << "\nVeja PacoteWKD --help.\n";
        return TCodigoDeSaida::UsoIncorreto;
    }

    TCodigoDeSaida operator()(const TPedeMonta& pedido) const {
        TMontagem montagem;
        if (!pedido.pasta.empty()) montagem.Pasta(pedido.pasta, pedido.versao);
        if (pedido.alias.empty()) {
            montagem.Grava(pedido.pacote);
        } else {
            THBNConnection conexao(Aliases(locais));
            Abre(conexao, pedido.alias);
            ExportaDicionario(conexao, pedido.tabelas, montagem);
            montagem.Grava(pedido.pacote);
        }
        Resumo(pedido.pacote);
        return TCodigoDeSaida::Sucesso;
    }

    TCodigoDeSaida operator()(const TPedeMostra& pedido) const {
        Mostra(LeInventario(pedido.pacote), json, saida);
        return TCodigoDeSaida::Sucesso;
    }

    TCodigoDeSaida operator()(const TPedeConverte& pedido) const {
        auto pacote =
            NomeDeJson(pedido.origem) ? LeJson(pedido.origem) : LePacote(pedido.origem, TLinhasDoPacote::Todas);
        const auto campos = pacote.campos.size(), linhas = pacote.linhas.size();
        if (pedido.forma == TFormaDeArquivo::Json)
            GravaJson(std::move(pacote), pedido.destino);
        else
            GravaPacote(std::move(pacote), pedido.destino,
                        pedido.forma == TFormaDeArquivo::Xml ? TFormaPacote::Xml : TFormaPacote::Binario);
        if (json)
            ImprimeJson({{"destino", TextoDoCaminho(pedido.destino)},
                         {"campos", campos},
                         {"linhas", linhas},
                         {"bytes", fs::file_size(pedido.destino)}},
                        saida);
        else
            saida << TextoDoCaminho(pedido.destino) << ": " << campos << " campos, " << linhas << " linhas\n";
        return TCodigoDeSaida::Sucesso;
    }

    TCodigoDeSaida operator()(const TPedeRevisao& pedido) const {
        const auto pacote = LeInventario(pedido.pacote);
        auto achados = Confere(pacote);
        if (!pedido.anterior.empty())
            for (auto& achado : ConfereContra(pacote, LeInventario(pedido.anterior)))
                achados.push_back(std::move(achado));
        Mostra(achados, json, saida);
        return achados.empty() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComErros;
    }

  private:
    /// What the finished package holds, read from it.
    void Resumo(const fs::path& pacote) const {
        const auto lido = LeInventario(pacote);
        if (json)
            ImprimeJson({{"pacote", TextoDoCaminho(pacote)},
                         {"bytes", lido.bytes},
                         {"tabelas", lido.tabelas.size()},
                         {"pacotes", lido.sistema.size()},
                         {"layouts", lido.layouts.size()},
                         {"arquivos", lido.arquivos.size()}},
                        saida);
        else
            saida << TextoDoCaminho(pacote) << ": " << lido.bytes << " bytes, " << lido.tabelas.size() << " tabelas, "
                  << lido.sistema.size() << " pacotes de dados, " << lido.layouts.size() << " layouts, "
                  << lido.arquivos.size() << " arquivos de sistema\n";
    }
};

}  // namespace

TCodigoDeSaida ExecutaPedido(const TPedidoDoPacote& pedido, const TLocaisDoIni& locais, std::ostream& saida,
                             std::ostream& erros) {
    try {
        return std::visit(TExecucao{locais, pedido.json, saida, erros}, pedido.comando);
    } catch (const TSemConexao& erro) {
        erros << erro.what() << '\n';
        return TCodigoDeSaida::SemConexao;
    } catch (const std::exception& erro) {
        erros << erro.what() << '\n';
        return TCodigoDeSaida::Encerrada;
    }
}

}  // namespace wkd
