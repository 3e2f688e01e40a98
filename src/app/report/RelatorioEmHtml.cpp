#include <algorithm>
#include <cmath>
#include <cstdio>

#include "process/Programa.h"
#include "report/Pagina.h"
#include "report/RelatorioDaExecucao.h"
#include "run/Atualizacao.h"
#include "run/RegistroDaExecucao.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

std::string Tempo(double segundos) {
    if (segundos >= 60) return FormataDuracao(std::chrono::seconds(std::llround(segundos)));
    char texto[32];
    std::snprintf(texto, sizeof texto, "%.2f s", segundos);
    return Troca(texto, ".", ",");
}

std::string Numero(const std::optional<std::int64_t>& numero) { return numero ? ComMilhares(*numero) : "–"; }

template <class TTamanho>
std::string Quantos(TTamanho quantos) {
    return ComMilhares(static_cast<std::int64_t>(quantos));
}

std::string Consequencias(std::size_t quantas) {
    if (quantas == 0) return "";
    return Preenche("consequencias", {{"quantas", Quantos(quantas) + (quantas == 1 ? " erro" : " erros")}});
}

/// Those that fail of another one are counted with it.
std::string Falhas(const TEvidencia& evidencia) {
    std::string falhas;
    const auto& erros = evidencia.erros;
    for (std::size_t i = 0; i < erros.size(); ++i) {
        if (erros[i].consequencia) continue;
        std::size_t fim = i + 1;
        while (fim < erros.size() && erros[fim].consequencia) ++fim;
        std::vector<std::string> lugar = {FormataDataHora(erros[i].quando, "hh:mm:ss")};
        if (!erros[i].tabela.empty()) lugar.push_back(erros[i].tabela);
        if (!erros[i].acao.empty()) lugar.push_back(PassoParaLer(erros[i].acao));
        falhas += Preenche("falha", {{"lugar", Junta(lugar, " · ")},
                                     {"mensagem", erros[i].erro.mensagem},
                                     {"consequencias", Consequencias(fim - i - 1)},
                                     {"providencia", std::string(Providencia(erros[i].erro.falha))}});
    }
    if (!falhas.empty()) falhas = Preenche("falhas", {{"falhas", falhas}});
    if (evidencia.naoRodaram.empty()) return falhas;
    std::vector<std::string> nomes;
    for (const auto& nome : evidencia.naoRodaram) nomes.push_back(PassoParaLer(nome));
    return falhas + Preenche("nao-rodaram", {{"quantos", Quantos(nomes.size())}, {"nomes", Junta(nomes, ", ")}});
}

std::string Avisos(const TAvisos& avisos) {
    std::string html;
    for (const auto& aviso : avisos) html += Preenche("aviso", {{"texto", aviso.texto}});
    return html.empty() ? "" : Preenche("avisos", {{"avisos", html}});
}

std::string_view Classe(TDesfecho desfecho) {
    if (desfecho == TDesfecho::NaoSeAplica) return "pequeno";
    return desfecho == TDesfecho::Feito ? "" : "erro";
}

std::string Comandos(const TTabelaRegistrada& tabela) {
    std::string comandos;
    for (const auto& comando : tabela.comandos) {
        comandos += Preenche("comando", {{"texto", comando.texto}});
        if (!comando.executado.empty()) comandos += Preenche("executado", {{"texto", comando.executado}});
        if (!comando.erro.empty()) comandos += Preenche("recusado", {{"texto", comando.erro}});
    }
    return comandos.empty() ? "" : Preenche("comandos", {{"comandos", comandos}});
}

std::string Tabela(const TTabelaRegistrada& tabela) {
    const bool perdeu = tabela.antes && tabela.depois && *tabela.depois < *tabela.antes;
    return Preenche("tabela", {{"classe", tabela.comandos.empty() ? "" : "com-comandos"},
                               {"nome", tabela.nome},
                               {"decisao", std::string(NomeDaAcao(tabela.acao))},
                               {"resultado", std::string(NomeDoDesfecho(tabela.desfecho))},
                               {"doResultado", std::string(Classe(tabela.desfecho))},
                               {"motivo", tabela.motivo},
                               {"antes", Numero(tabela.antes)},
                               {"falta", perdeu ? "erro" : ""},
                               {"depois", Numero(tabela.depois)},
                               {"hash", tabela.hash.empty() ? "–" : tabela.hash},
                               {"tempo", Tempo(tabela.segundos)}}) +
           Comandos(tabela);
}

std::string Tabelas(const TEvidencia& evidencia) {
    if (evidencia.tabelas.empty()) return Preenche("nenhuma", {});
    std::string linhas;
    std::vector<std::string> iguais;
    for (const auto& tabela : evidencia.tabelas) {
        if (tabela.desfecho == TDesfecho::NaoSeAplica)
            iguais.push_back(tabela.nome);
        else
            linhas += Tabela(tabela);
    }
    std::string html;
    if (!linhas.empty())
        html =
            Preenche("tabelas",
                     {{"linhas", linhas}, {"metodo", std::string(kMetodoDoHash)}, {"limite", Quantos(kLinhasDoHash)}});
    if (!iguais.empty())
        html += Preenche("iguais", {{"quantas", Quantos(iguais.size())}, {"nomes", Junta(iguais, ", ")}});
    return html;
}

std::string Passos(std::string_view titulo, const std::vector<TPassoRegistrado>& passos) {
    std::string linhas;
    for (const auto& passo : passos)
        linhas += Preenche("passo", {{"nome", PassoParaLer(passo.nome)},
                                     {"classe", std::string(Classe(passo.desfecho))},
                                     {"resultado", std::string(NomeDoDesfecho(passo.desfecho)) +
                                                       (passo.erro.empty() ? "" : ": " + passo.erro)},
                                     {"tempo", Tempo(passo.segundos)}});
    return linhas.empty() ? "" : Preenche("passos", {{"titulo", std::string(titulo)}, {"linhas", linhas}});
}

}  // namespace

std::string RelatorioEmHtml(const TEvidencia& evidencia) {
    const auto feitas = [&](TAcaoDaTabela acao) {
        return Quantos(std::ranges::count_if(evidencia.tabelas, [&](const TTabelaRegistrada& tabela) {
            return tabela.acao == acao && tabela.desfecho == TDesfecho::Feito;
        }));
    };
    const auto com = [](const auto& registrados, TDesfecho desfecho) {
        return Quantos(std::ranges::count_if(registrados, [&](const auto& um) { return um.desfecho == desfecho; }));
    };
    return Preenche(
        "pagina",
        {{"estilo", Preenche("estilo", {})},
         {"alias", evidencia.alias},
         {"classe", TudoFeito(evidencia) ? "certo" : "erro"},
         {"estado", Veredicto(evidencia)},
         {"banco", evidencia.banco},
         {"servidor", evidencia.servidor},
         {"pacote", evidencia.pacote},
         {"backup", evidencia.backup.empty() ? "nenhum por esta execução"
                                             : evidencia.backup + " (para voltar atrás: " + evidencia.volta + ")"},
         {"inicio", FormataDataHora(evidencia.inicio, "dd/mm/yyyy hh:mm:ss")},
         {"duracao", FormataDuracao(evidencia.inicio, evidencia.fim)},
         {"versao", std::string(kVersao)},
         {"criadas", feitas(TAcaoDaTabela::Cria)},
         {"alteradas", feitas(TAcaoDaTabela::Altera)},
         {"reconstruidas", feitas(TAcaoDaTabela::Reconstroi)},
         {"iguais", com(evidencia.tabelas, TDesfecho::NaoSeAplica)},
         {"naoFeitas", com(evidencia.tabelas, TDesfecho::NaoFeito)},
         {"pelaMetade", com(evidencia.tabelas, TDesfecho::PelaMetade)},
         {"correcoes", com(evidencia.correcoes, TDesfecho::Feito)},
         {"erros", Quantos(std::ranges::count(evidencia.erros, false, &TErroDaExecucao::consequencia))},
         {"falhas", Falhas(evidencia) + Avisos(evidencia.avisos)},
         {"tabelas", Tabelas(evidencia)},
         {"passos", Passos("Passos", evidencia.passos) + Passos("Correções", evidencia.correcoes) +
                        (evidencia.correcoes.empty() ? "" : Preenche("correcoes", {}))}});
}

}  // namespace wkd
