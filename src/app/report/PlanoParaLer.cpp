// The plan as text, page and statements.
#include <algorithm>
#include <cmath>

#include "copy/CopiaDeLinhas.h"
#include "process/Programa.h"
#include "report/Pagina.h"
#include "report/PlanoEmTexto.h"
#include "run/Atualizacao.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

std::string Linhas(const std::vector<std::string>& linhas, std::string_view recuo) {
    std::string texto;
    for (const auto& linha : linhas) texto += std::string(recuo) + Troca(linha, "\n", "\n" + std::string(recuo)) + "\n";
    return texto;
}

/// Names behind a title, in as many lines as they take.
std::string Lista(std::string_view titulo, const std::vector<std::string>& nomes) {
    constexpr std::size_t kLargura = 100;
    if (nomes.empty()) return {};
    std::string texto(titulo), linha = " (" + ComMilhares(std::ssize(nomes)) + "):";
    std::size_t usada = titulo.size();
    for (const auto& nome : nomes) {
        if (usada + linha.size() + nome.size() > kLargura) {
            texto += linha + "\n   ";
            linha.clear();
            usada = 3;
        }
        linha += " " + nome + (&nome == &nomes.back() ? "" : ",");
    }
    return texto + linha + "\n";
}

template <class TTamanho>
std::string Quantos(TTamanho quantos, std::string_view um, std::string_view varios) {
    const auto numero = static_cast<std::int64_t>(quantos);
    return ComMilhares(numero) + " " + std::string(numero == 1 ? um : varios);
}

std::string Registros(std::int64_t registros) { return Quantos(registros, "registro", "registros"); }

std::string Volume(std::int64_t registros, std::int64_t bytes) {
    return Registros(registros) + ", " + ComMilhares(bytes) + " bytes";
}

std::string_view Sinal(TAcaoDaTabela acao) {
    constexpr std::string_view kSinais[] = {" ", "+", "~", "-/+"};
    return kSinais[static_cast<int>(acao)];
}

std::string EmTexto(const TAchado& achado, std::string_view recuo) {
    std::string texto = std::string(recuo) + "! " + achado.tipo;
    if (!achado.coluna.empty()) texto += " " + achado.coluna;
    texto += ": " + achado.texto;
    if (achado.quantos > 0) texto += " (" + ComMilhares(achado.quantos) + ")";
    return texto + "\n" + Linhas(achado.exemplos, std::string(recuo) + "    ");
}

std::string EmTexto(const TMudancaDaColuna& mudanca) {
    std::string texto = "    " + std::string(1, mudanca.sinal) + " " + mudanca.coluna + ": ";
    if (mudanca.sinal == '~') return texto + mudanca.de + " -> " + mudanca.para + "\n";
    return texto + (mudanca.sinal == '+' ? mudanca.para : mudanca.de) + "\n";
}

std::string CercaDe(double segundos) {
    return "cerca de " + FormataDuracao(std::chrono::seconds(std::llround(std::ceil(segundos))));
}

std::string Caminho(const TPlanoDaTabela& tabela) {
    const std::string volume = Volume(tabela.registros, tabela.bytes) + ", " + CercaDe(tabela.segundos);
    const std::string backup = NomeDaBackup(Maiusculas(tabela.nome));
    if (tabela.retoma)
        return "    uma reconstrução interrompida segue: de " + backup + " faltam voltar " + volume + "\n";
    return "    os registros vão para " + backup + " e voltam: " + volume + "\n";
}

/// What stands below the line of the table.
std::string Detalhe(const TPlanoDaTabela& tabela) {
    std::string texto;
    for (const auto& mudanca : tabela.mudancas) texto += EmTexto(mudanca);
    if (tabela.acao == TAcaoDaTabela::Reconstroi)
        texto += Caminho(tabela);
    else if (tabela.mudancas.empty())
        texto +=
            tabela.comandos.empty() ? "    só o dicionário guardado e os índices\n" : Linhas(tabela.comandos, "    ");
    if (!tabela.exclusivas.empty())
        texto += "    só sem usuários conectados:\n" + Linhas(tabela.exclusivas, "        ");
    for (const auto& achado : tabela.achados) texto += EmTexto(achado, "    ");
    return texto;
}

struct TContagem {
    std::int64_t acoes[4] = {}, achados = 0, registros = 0, bytes = 0;

    std::int64_t operator[](TAcaoDaTabela acao) const { return acoes[static_cast<int>(acao)]; }
};

TContagem Conta(const TPlano& plano) {
    TContagem conta;
    conta.achados = static_cast<std::int64_t>(plano.achados.size());
    for (const auto& tabela : plano.tabelas) {
        ++conta.acoes[static_cast<int>(tabela.acao)];
        conta.achados += static_cast<std::int64_t>(tabela.achados.size());
        conta.registros += tabela.registros;
        conta.bytes += tabela.bytes;
    }
    return conta;
}

std::string Copias(const TCopiasDoPlano& copias) {
    const auto linhas = copias.linhasPorCommit;
    std::string texto = "Cópias: " + Registros(copias.registros) + ", confirmados de " +
                        (linhas ? ComMilhares(std::int64_t(*linhas)) + " em " + ComMilhares(std::int64_t(*linhas))
                                : "100 em 100 na ida e de 11 em 11 na volta") +
                        ": " + Quantos(copias.commits, "confirmação", "confirmações") + ", " +
                        CercaDe(copias.segundos) + ".\n";
    if (copias.Valeria())
        texto += "    com LinhasPorCommit=" + std::to_string(kMuitasPorCommit) + " no alias, ou --linhas-por-commit " +
                 std::to_string(kMuitasPorCommit) + ": " + CercaDe(copias.segundosComMuitas) + ".\n";
    return texto;
}

std::string Resumo(const TPlano& plano) {
    const TContagem conta = Conta(plano);
    const std::string move = Volume(conta.registros, conta.bytes);
    std::string texto = "Resumo: " + ComMilhares(conta[TAcaoDaTabela::Cria]) + " a criar, " +
                        ComMilhares(conta[TAcaoDaTabela::Altera]) + " a alterar, " +
                        ComMilhares(conta[TAcaoDaTabela::Reconstroi]) + " a reconstruir (" + move + "), " +
                        ComMilhares(conta[TAcaoDaTabela::Nada]) +
                        " sem mudança; achados: " + ComMilhares(conta.achados) + ".\n";
    if (plano.copias) texto += Copias(*plano.copias);
    if (plano.usuarios > 0)
        texto += "Usuários conectados: " + ComMilhares(plano.usuarios) +
                 (plano.EsperaUsuarios() ? ". A atualização seria recusada até que saiam.\n" : ".\n");
    if (!plano.Muda()) texto += "Nada a fazer.\n";
    return texto;
}

std::string AntesDasTabelas(const TPlano& plano) {
    std::string texto;
    for (const auto& achado : plano.achados) texto += EmTexto(achado, "");
    if (!plano.ajustes.empty()) texto += "~ Textos de 2000 caracteres ou mais\n" + Linhas(plano.ajustes, "    ");
    if (!plano.dicionario.empty())
        texto +=
            "~ Tabelas do dicionário: " + Quantos(plano.dicionario.size(), "comando as leva", "comandos as levam") +
            " ao formato desta versão\n";
    texto += Lista("~ Correções que este banco ainda não viu", plano.correcoes);
    for (const auto& troca : plano.trocas)
        texto += "~ " + troca.tabela + ": saem " + Registros(troca.saem) + " e entram " + ComMilhares(troca.entram) +
                 " de " + troca.arquivo + " do pacote\n";
    return texto;
}

std::string DepoisDasTabelas(const TPlano& plano) {
    std::vector<std::string> passos;
    for (const auto& nome : plano.passos) passos.push_back(PassoParaLer(nome));
    return Lista("Relatórios do pacote", plano.layouts) + Lista("Arquivos do pacote", plano.arquivos) +
           Lista("Passos finais", passos);
}

std::string SobreOBanco(const TPlano& plano) {
    std::string texto;
    for (const auto& aviso : plano.avisos) texto += "? " + aviso.tipo + ": " + aviso.texto + "\n";
    return texto;
}

std::vector<std::string> SemMudanca(const TPlano& plano) {
    std::vector<std::string> nomes;
    for (const auto& tabela : plano.tabelas)
        if (tabela.acao == TAcaoDaTabela::Nada) nomes.push_back(tabela.nome);
    return nomes;
}

}  // namespace

std::string PlanoEmTexto(const TPlano& plano) {
    std::string texto = "Plano da atualização de " + plano.alias + " com " + plano.pacote + "\nBanco: " + plano.banco +
                        " (" + plano.servidor + ")\n\n" + Resumo(plano) +
                        "+ novo   ~ alterado   -/+ reconstruído   - sai   ! achado\n\n";
    if (const auto antes = AntesDasTabelas(plano); !antes.empty()) texto += antes + "\n";
    for (const auto& tabela : plano.tabelas)
        if (tabela.acao != TAcaoDaTabela::Nada)
            texto += std::string(Sinal(tabela.acao)) + " " + tabela.nome + " (" + tabela.motivo + ")\n" +
                     Detalhe(tabela) + "\n";
    if (const auto iguais = Lista("Sem mudança", SemMudanca(plano)); !iguais.empty()) texto += iguais + "\n";
    texto += DepoisDasTabelas(plano);
    const auto sobreOBanco = SobreOBanco(plano);
    return texto + (sobreOBanco.empty() ? "" : "\nSobre o banco:\n" + sobreOBanco);
}

namespace {

std::string Comentario(const std::string& texto) { return "-- " + Troca(texto, "\n", "\n--   ") + "\n"; }

/// A change of rows is committed before the next statement changes the table, where the tool does not do it by itself.
std::string Comando(const std::string& comando, TTipoBanco tipo) {
    const std::string inicio = Maiusculas(comando.substr(0, comando.find(' ')));
    const bool deRegistros = inicio == "UPDATE" || inicio == "INSERT" || inicio == "DELETE";
    return comando + ";\n" + (deRegistros && tipo == TTipoBanco::tbInterbase ? "commit;\n" : "");
}

std::string EmSql(const TPlanoDaTabela& tabela, TTipoBanco tipo) {
    std::string sql =
        "\n" + Comentario(std::string(Sinal(tabela.acao)) + " " + tabela.nome + " (" + tabela.motivo + ")");
    if (tabela.acao == TAcaoDaTabela::Reconstroi)
        sql += Comentario("Os registros vão para " + NomeDaBackup(Maiusculas(tabela.nome)) +
                          " e voltam, o que só o programa faz sem perder nenhum:");
    for (const auto& comando : tabela.aceitos)
        sql += tabela.acao == TAcaoDaTabela::Reconstroi ? Comentario("  " + comando) : Comando(comando, tipo);
    return sql;
}

}  // namespace

std::string PlanoEmSql(const TPlano& plano) {
    std::string sql = Comentario("Plano da atualização de " + plano.alias + " com " + plano.pacote + " (AtualizaWKD " +
                                 std::string(kVersao) + ")") +
                      Comentario(
                          "Para ler: quem atualiza é o programa. Índices, chaves, o dicionário guardado e as "
                          "correções não estão aqui.");
    for (const auto* antes : {&plano.ajustes, &plano.dicionario})
        for (const auto& comando : *antes) sql += Comando(comando, plano.tipo);
    for (const auto& tabela : plano.tabelas)
        if (!tabela.aceitos.empty()) sql += EmSql(tabela, plano.tipo);
    return sql;
}

std::string PlanoEmHtml(const TPlano& plano) {
    const TContagem conta = Conta(plano);
    const auto bloco = [](std::string_view titulo, const std::string& texto) {
        return texto.empty() ? "" : Preenche("plano-bloco", {{"titulo", std::string(titulo)}, {"texto", texto}});
    };
    std::string tabelas;
    for (const auto& tabela : plano.tabelas)
        if (tabela.acao != TAcaoDaTabela::Nada)
            tabelas += Preenche("plano-tabela", {{"sinal", std::string(Sinal(tabela.acao))},
                                                 {"nome", tabela.nome},
                                                 {"decisao", std::string(NomeDaAcao(tabela.acao))},
                                                 {"classe", tabela.achados.empty() ? "" : "erro"},
                                                 {"motivo", tabela.motivo},
                                                 {"detalhe", Detalhe(tabela)}});
    if (!tabelas.empty()) tabelas = Preenche("plano-tabelas", {{"linhas", tabelas}});
    return Preenche("plano", {{"estilo", Preenche("estilo", {})},
                              {"alias", plano.alias},
                              {"classe", plano.TemAchados() ? "erro" : "certo"},
                              {"resumo", Resumo(plano)},
                              {"banco", plano.banco},
                              {"servidor", plano.servidor},
                              {"pacote", plano.pacote},
                              {"versao", std::string(kVersao)},
                              {"criar", ComMilhares(conta[TAcaoDaTabela::Cria])},
                              {"alterar", ComMilhares(conta[TAcaoDaTabela::Altera])},
                              {"reconstruir", ComMilhares(conta[TAcaoDaTabela::Reconstroi])},
                              {"iguais", ComMilhares(conta[TAcaoDaTabela::Nada])},
                              {"achados", ComMilhares(conta.achados)},
                              {"antes", bloco("Antes das tabelas", AntesDasTabelas(plano))},
                              {"tabelas", tabelas},
                              {"semMudanca", bloco("Sem mudança", Lista("Tabelas", SemMudanca(plano)))},
                              {"depois", bloco("Depois das tabelas", DepoisDasTabelas(plano)) +
                                             bloco("Sobre o banco", SobreOBanco(plano))}});
}

}  // namespace wkd
