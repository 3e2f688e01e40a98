#include "report/EnsaioEmTexto.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "report/RelatorioDaExecucao.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

std::string Tempo(double segundos) {
    if (segundos < 60) {
        const auto decimos = std::lround(segundos * 10);
        return std::to_string(decimos / 10) + "," + std::to_string(decimos % 10) + " s";
    }
    return FormataDuracao(std::chrono::seconds(std::lround(segundos)));
}

std::string Tabelas(const TEnsaio& ensaio) {
    std::string texto;
    for (const auto& tabela : ensaio.evidencia.tabelas) {
        if (tabela.desfecho == TDesfecho::NaoSeAplica) continue;
        texto += "  " + tabela.nome + ": " + std::string(NomeDaAcao(tabela.acao)) + ", " + Tempo(tabela.segundos);
        if (tabela.desfecho != TDesfecho::Feito) texto += ", " + std::string(NomeDoDesfecho(tabela.desfecho));
        if (tabela.depois) texto += ", " + ComMilhares(*tabela.depois) + " registros";
        texto += "\n";
    }
    return texto.empty() ? "" : "Tabelas que mudam:\n" + texto;
}

std::string Achados(const TEnsaio& ensaio) {
    std::string texto;
    for (const auto& erro : ensaio.evidencia.erros)
        texto += "Erro: " + (erro.tabela.empty() ? "" : erro.tabela + ": ") + erro.erro.mensagem + "\n";
    for (const auto& linha : ensaio.rejeitadas)
        texto += "Rejeitado: " + linha.tabela + " " + linha.chave + ": " + linha.motivo + "\n";
    for (const auto& desvio : ensaio.desvios)
        texto += "Desvio: " + desvio.tabela + (desvio.objeto.empty() ? "" : "." + desvio.objeto) + ": " + desvio.texto +
                 "\n";
    for (const auto& nome : ensaio.mudaria) texto += "Por terminar: " + nome + " mudaria de novo na próxima vez\n";
    return texto;
}

}  // namespace

std::string EnsaioEmTexto(const TEnsaio& ensaio) {
    std::string texto = "Ensaio da atualização de " + ensaio.evidencia.alias + " numa cópia do banco\n" +
                        ensaio.copia.frase + "\n" + Tabelas(ensaio) + Achados(ensaio);
    texto += "Backup: " + Tempo(ensaio.segundosDoBackup) + ", " + TamanhoEmTexto(ensaio.bytesDoBackup) +
             "; restauração e prova: " + Tempo(ensaio.segundosDaRestauracao) + "\n" + "A atualização levaria " +
             Tempo(ensaio.segundosDaAtualizacao) + " e mais " + TamanhoEmTexto(ensaio.DiscoNecessario()) +
             " no disco do banco\n";
    if (!ensaio.backupNoServidor.empty())
        texto += "O backup do ensaio ficou no servidor, em " + ensaio.backupNoServidor + ": apague-o lá\n";
    if (!ensaio.banco.empty()) texto += "A cópia atualizada ficou em " + ensaio.banco + "\n";
    return texto + "\nResultado: " + ensaio.Frase() + ".\n";
}

std::string EnsaioEmJson(const TEnsaio& ensaio) {
    TJson json = {{"pode", ensaio.Pode()},
                  {"frase", ensaio.Frase()},
                  {"muda", ensaio.Muda()},
                  {"usuarios", ensaio.usuarios},
                  {"copia", ensaio.copia.frase},
                  {"segundosDoBackup", ensaio.segundosDoBackup},
                  {"segundosDaRestauracao", ensaio.segundosDaRestauracao},
                  {"segundosDaAtualizacao", ensaio.segundosDaAtualizacao},
                  {"bytesDoBackup", ensaio.bytesDoBackup},
                  {"discoNecessario", ensaio.DiscoNecessario()},
                  {"banco", ensaio.banco.empty() ? TJson() : TJson(ensaio.banco)},
                  {"backupNoServidor", ensaio.backupNoServidor.empty() ? TJson() : TJson(ensaio.backupNoServidor)},
                  {"rejeitadas", TJson::array()},
                  {"desvios", TJson::array()},
                  {"porTerminar", ensaio.mudaria}};
    for (const auto& linha : ensaio.rejeitadas)
        json["rejeitadas"].push_back(
            {{"tabela", linha.tabela}, {"chave", TJson::parse(linha.chave, nullptr, false)}, {"motivo", linha.motivo}});
    for (const auto& desvio : ensaio.desvios)
        json["desvios"].push_back(
            {{"tipo", desvio.tipo}, {"tabela", desvio.tabela}, {"objeto", desvio.objeto}, {"texto", desvio.texto}});
    json["execucao"] = TJson::parse(RelatorioEmJson(ensaio.evidencia));
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace wkd
