#include <algorithm>
#include <cstdio>

#include "process/Programa.h"
#include "report/RelatorioDaExecucao.h"
#include "run/RegistroDaExecucao.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

constexpr std::string_view kEstilo = R"(
:root { --ametista: #5b3f8c; --linha: #d9d3e6; --erro: #b3261e; --certo: #1b6e3c; --fundo: #f6f4fa; }
* { box-sizing: border-box; }
body { font: 14px/1.45 "DejaVu Sans", "Segoe UI", Arial, sans-serif; color: #222; margin: 0 auto; max-width: 1080px;
       padding: 24px; }
header { border-left: 8px solid var(--ametista); padding: 2px 0 2px 16px; margin-bottom: 18px; }
h1 { font-size: 22px; margin: 0 0 2px; color: var(--ametista); }
h2 { font-size: 16px; margin: 26px 0 8px; color: var(--ametista); border-bottom: 1px solid var(--linha); }
.estado { font-weight: bold; font-size: 15px; }
.certo { color: var(--certo); } .erro { color: var(--erro); }
.numeros { display: flex; flex-wrap: wrap; gap: 10px; margin: 16px 0; }
.numeros div { flex: 1 1 110px; background: var(--fundo); border-radius: 6px; padding: 8px 12px; }
.numeros b { display: block; font-size: 20px; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: 2px 14px; margin: 0; }
dt { color: #666; } dd { margin: 0; overflow-wrap: anywhere; }
table { width: 100%; border-collapse: collapse; }
th { text-align: left; background: var(--fundo); }
th, td { padding: 5px 8px; border-bottom: 1px solid var(--linha); vertical-align: top; }
td.n, th.n { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
tr.comandos td { padding-top: 0; } tr.com-comandos td { border-bottom: 0; }
pre { margin: 0; font: 12px/1.4 "DejaVu Sans Mono", Consolas, monospace; white-space: pre-wrap; overflow-wrap: anywhere;
      background: var(--fundo); border-radius: 4px; padding: 6px 8px; }
.falha { border-left: 4px solid var(--erro); background: #fdf3f2; padding: 8px 12px; margin: 8px 0; border-radius: 4px; }
.falha p { margin: 4px 0 0; white-space: pre-wrap; overflow-wrap: anywhere; }
.pequeno { color: #666; font-size: 12px; }
@page { size: A4; margin: 14mm; }
@media print {
  body { max-width: none; padding: 0; font-size: 10.5px; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  thead { display: table-header-group; }
  tr, .falha, .numeros div { break-inside: avoid; }
  tr.com-comandos, h2 { break-after: avoid; }
  pre, .pequeno { font-size: 9px; }
  th, td { padding: 2px 6px; }
  pre { padding: 4px 6px; }
}
)";

std::string H(std::string_view texto) {
    std::string escapado;
    for (const char c : texto) {
        if (c == '&')
            escapado += "&amp;";
        else if (c == '<')
            escapado += "&lt;";
        else if (c == '>')
            escapado += "&gt;";
        else if (c == '"')
            escapado += "&quot;";
        else
            escapado += c;
    }
    return escapado;
}

std::string Tempo(double segundos) {
    if (segundos >= 60) return FormataDuracao(std::chrono::seconds(static_cast<std::int64_t>(segundos + 0.5)));
    char texto[32];
    std::snprintf(texto, sizeof texto, "%.2f s", segundos);
    return Troca(texto, ".", ",");
}

std::string Numero(const std::optional<std::int64_t>& numero) { return numero ? ComMilhares(*numero) : "–"; }

std::string Plural(std::size_t quantos, std::string_view um, std::string_view varios) {
    return ComMilhares(static_cast<std::int64_t>(quantos)) + " " + std::string(quantos == 1 ? um : varios);
}

std::string Estado(const TEvidencia& evidencia) {
    if (!evidencia.concluida) return "<p class=\"estado erro\">Encerrada antes da hora</p>";
    if (evidencia.erros.empty()) return "<p class=\"estado certo\">Concluída sem erros</p>";
    return "<p class=\"estado erro\">Concluída com " + Plural(evidencia.erros.size(), "erro", "erros") + "</p>";
}

std::string Cabecalho(const TEvidencia& evidencia) {
    const auto dado = [](std::string_view nome, std::string_view valor) {
        return "<dt>" + H(nome) + "</dt><dd>" + H(valor) + "</dd>";
    };
    return "<header><h1>Relatório da atualização</h1>" + Estado(evidencia) + "</header><dl>" +
           dado("Alias", evidencia.alias) + dado("Banco", evidencia.banco) + dado("Servidor", evidencia.servidor) +
           dado("Pacote", evidencia.pacote) + dado("Início", FormataDataHora(evidencia.inicio, "dd/mm/yyyy hh:mm:ss")) +
           dado("Duração", FormataDuracao(evidencia.inicio, evidencia.fim)) +
           dado("Programa", "AtualizaWKD " + std::string(kVersao)) + "</dl>";
}

std::string Numeros(const TEvidencia& evidencia) {
    const auto acoes = [&](TAcaoDaTabela acao) {
        return std::ranges::count(evidencia.tabelas, acao, &TTabelaRegistrada::acao);
    };
    const auto numero = [](std::int64_t quantos, std::string_view de) {
        return "<div><b>" + ComMilhares(quantos) + "</b>" + H(de) + "</div>";
    };
    return "<div class=\"numeros\">" + numero(acoes(TAcaoDaTabela::Cria), "criadas") +
           numero(acoes(TAcaoDaTabela::Altera), "alteradas") +
           numero(acoes(TAcaoDaTabela::Reconstroi), "reconstruídas") +
           numero(acoes(TAcaoDaTabela::Nada), "sem mudança") +
           numero(static_cast<std::int64_t>(evidencia.correcoes.size()), "correções executadas") +
           numero(static_cast<std::int64_t>(evidencia.erros.size()), "erros") + "</div>";
}

std::string Erros(const TEvidencia& evidencia) {
    if (evidencia.erros.empty()) return "";
    std::string html = "<h2>Erros, e o que fazer</h2>";
    for (const auto& erro : evidencia.erros) {
        std::vector<std::string> lugar = {FormataDataHora(erro.quando, "hh:mm:ss")};
        if (!erro.tabela.empty()) lugar.push_back(erro.tabela);
        if (!erro.acao.empty()) lugar.push_back(erro.acao);
        html += "<div class=\"falha\"><span class=\"pequeno\">" + H(Junta(lugar, " · ")) + "</span><p>" +
                H(erro.mensagem) + "</p><p><b>O que fazer:</b> " + H(Providencia(erro.mensagem)) + "</p></div>";
    }
    return html;
}

std::string Comandos(const TTabelaRegistrada& tabela) {
    std::string html;
    for (const auto& comando : tabela.comandos) {
        html += H(comando.texto) + "\n";
        if (!comando.executado.empty()) html += "  executado: " + H(comando.executado) + "\n";
        if (!comando.erro.empty()) html += "<span class=\"erro\">  " + H(comando.erro) + "</span>\n";
    }
    return "<tr class=\"comandos\"><td colspan=\"7\"><pre>" + html + "</pre></td></tr>";
}

std::string Linha(const TTabelaRegistrada& tabela) {
    const bool perdeu = tabela.antes && tabela.depois && *tabela.depois < *tabela.antes;
    return "<tr" + std::string(tabela.comandos.empty() ? "" : " class=\"com-comandos\"") + "><td><b>" + H(tabela.nome) +
           "</b></td><td>" + H(NomeDaAcao(tabela.acao)) + "</td><td>" + H(tabela.motivo) + "</td><td class=\"n\">" +
           Numero(tabela.antes) + "</td><td class=\"n" + (perdeu ? " erro" : "") + "\">" + Numero(tabela.depois) +
           "</td><td class=\"n\">" + (tabela.hash.empty() ? "–" : H(tabela.hash)) + "</td><td class=\"n\">" +
           Tempo(tabela.segundos) + "</td></tr>" + (tabela.comandos.empty() ? "" : Comandos(tabela));
}

std::string Tabelas(const TEvidencia& evidencia) {
    std::string linhas;
    std::vector<std::string> iguais;
    for (const auto& tabela : evidencia.tabelas) {
        if (tabela.acao == TAcaoDaTabela::Nada)
            iguais.push_back(tabela.nome);
        else
            linhas += Linha(tabela);
    }
    std::string html = "<h2>Tabelas</h2>";
    if (!linhas.empty())
        html +=
            "<table><thead><tr><th>Tabela</th><th>Decisão</th><th>Motivo</th><th class=\"n\">Registros antes</th>"
            "<th class=\"n\">depois</th><th class=\"n\">Hash</th><th class=\"n\">Duração</th></tr></thead><tbody>" +
            linhas +
            "</tbody></table><p class=\"pequeno\">Hash do conteúdo depois da atualização: " + H(kMetodoDoHash) +
            ". Calculado até " + ComMilhares(kLinhasDoHash) +
            " registros; uma tabela reconstruída de qualquer tamanho é conferida valor a valor com a tabela de "
            "backup.</p>";
    if (!iguais.empty())
        html += "<p>Sem mudança (" + ComMilhares(static_cast<std::int64_t>(iguais.size())) +
                "): " + H(Junta(iguais, ", ")) + "</p>";
    return html + (evidencia.tabelas.empty() ? "<p>Nenhuma tabela foi tocada.</p>" : "");
}

std::string Passos(std::string_view titulo, const std::vector<TPassoRegistrado>& passos) {
    if (passos.empty()) return "";
    std::string html = "<h2>" + H(titulo) +
                       "</h2><table><thead><tr><th>Nome</th><th>Resultado</th>"
                       "<th class=\"n\">Duração</th></tr></thead><tbody>";
    for (const auto& passo : passos)
        html += "<tr><td>" + H(passo.nome) + "</td><td" +
                (passo.erro.empty() ? std::string(">feito") : " class=\"erro\">" + H(passo.erro)) +
                "</td><td class=\"n\">" + Tempo(passo.segundos) + "</td></tr>";
    return html + "</tbody></table>";
}

}  // namespace

std::string RelatorioEmHtml(const TEvidencia& evidencia) {
    return "<!DOCTYPE html>\n<html lang=\"pt-BR\"><head><meta charset=\"utf-8\"><meta name=\"viewport\" "
           "content=\"width=device-width\"><title>Relatório da atualização de " +
           H(evidencia.alias) + "</title><style>" + std::string(kEstilo) + "</style></head><body>" +
           Cabecalho(evidencia) + Numeros(evidencia) + Erros(evidencia) + Tabelas(evidencia) +
           Passos("Passos", evidencia.passos) + Passos("Correções", evidencia.correcoes) +
           (evidencia.correcoes.empty()
                ? ""
                : "<p class=\"pequeno\">Cada correção roda uma vez por banco; a que falha não "
                  "conta como erro: é de outro servidor ou de tabelas que este banco não tem.</p>") +
           "</body></html>\n";
}

}  // namespace wkd
