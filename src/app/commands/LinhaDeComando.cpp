#include "commands/LinhaDeComando.h"

#include <algorithm>
#include <stdexcept>

#include "process/Argumentos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kAjuda =
    R"(AtualizaWKD - atualiza o banco de dados de uma instalação para o dicionário de uma nova versão

Uso:
  AtualizaWKD                                abre o assistente
  AtualizaWKD "ALIAS;"                       abre o assistente com o alias escolhido
  AtualizaWKD "ALIAS;" PACOTE.zip [opções]   atualiza sem ninguém à frente e termina
                                             ("ALIAS;nobkp" também serve)

Opções da atualização, de --plano e de --ensaio, como as da página "Opções de Atualização":
  --todas                                    todas as tabelas, também as que já estão na versão do pacote
  --completo                                 reconstrói todas as tabelas; com --tabelas, só essas
  --tabelas A,B                              só estas tabelas
  --sem-anteriores, --sem-posteriores        sem as correções de antes, ou de depois, das tabelas
  --linhas-por-commit N                      confirma as cópias de N em N linhas, como LinhasPorCommit no alias
Só da atualização e de --plano:
  --silencioso                               nada na saída padrão: só erros, na saída de erros, e o código

Sem mudar nada:
  --plano ALIAS PACOTE.zip [--json | --sql | --html]
                                             diz o que a atualização faria, tabela por tabela, com seus motivos, e
                                             o que nos dados não aceitaria a mudança; --sql dá os comandos
  --confere ALIAS [--json]                   diz em que o banco difere do dicionário guardado nele
  --ensaio ALIAS PACOTE.zip [--json] [--mantem]
                                             faz a atualização inteira numa cópia do banco e diz se ele pode ser
                                             atualizado, quanto tempo leva e o que seria rejeitado;
                                             --mantem deixa a cópia

Backup:
  --backup ALIAS [PASTA] [--guarda N]        faz um backup do banco inteiro; sem PASTA, na última usada;
                                             --guarda apaga os mais antigos e deixa os N últimos,
                                             e o último que foi provado
  --prova-backup ARQUIVO [ALIAS]             restaura o backup num banco provisório e o compara com o original
  --restaura ALIAS ARQUIVO [--sim]           põe o backup no lugar do banco em uso, que fica guardado com outro
                                             nome; sem ninguém para responder, só com --sim
  "ALIAS;" PACOTE.zip --com-backup           atualiza só depois de um backup feito e provado

Depois de uma atualização:
  --historico [ALIAS] [--json]               lista as atualizações feitas, da mais nova à mais antiga
  --repoe ALIAS                              põe de volta os registros rejeitados que agora cabem

Para quem ajuda de longe:
  --suporte ALIAS [ARQUIVO.zip] [--pacote PACOTE.zip]
                                             junta log, relatórios, plano, conferência, versões, configuração sem
                                             senha, esquema e dicionário do banco, sem registro de cliente nenhum,
                                             e diz antes o que vai; sem --pacote, o plano é o do último pacote
  --reproduz ARQUIVO.zip ALIAS               faz, com o que está num pacote de suporte, um banco vazio no lugar do
                                             alias, onde ainda não pode haver nenhum

Aliases (seções do arquivo WKD.ini):
  --lista-alias                              nomes dos aliases, um por linha
  --testa-alias NOME                         conecta e mostra tipo, local e versão do servidor
  --novo-alias NOME --tipo T --hostname H --path P --database D --usuario U
               [--autenticacao A] [--menu] [--troca] [--sem-teste]
                                             grava um alias, se ele conecta; a senha é pedida duas vezes no terminal,
                                             ou lida de uma linha da entrada padrão
                                             T: tbInterbase, tbSQLServer ou tbODBC
                                             --menu grava também como alias padrão
                                             --troca grava por cima de um que existe
                                             --sem-teste grava sem conectar
  --muda-senha NOME [--sem-teste]            troca a senha de um alias, se com ela ele conecta
  --remove-alias NOME                        apaga um alias

  --help, --version

  Um valor vem depois da opção ou colado nela: --tipo tbInterbase, --tipo=tbInterbase

Código de saída:
  0   terminou sem erro
  1   terminou, e algum erro foi relatado; --prova-backup: o backup não é bom; --repoe: algum registro ficou;
      --suporte: o pacote foi gravado, e falta nele algo que a saída diz
  2   terminou antes da hora: pacote, confirmação, usuários conectados, outra atualização em andamento, ou um
      backup que não pôde ser feito
  3   sem WKD.ini, alias desconhecido ou sem conexão
  10  --plano, --ensaio: há mudanças a fazer (0: nada a fazer)
  11  --plano, --ensaio: há achados que alguém precisa ver antes; --confere: há desvios
  64  argumentos incorretos
  130, 143  interrompida por um sinal: rode de novo
)";

TPedido NovoAlias(const TArgumentos& argumentos) {
    for (const char* obrigatoria : {"--tipo", "--database", "--usuario"})
        if (!argumentos.Tem(obrigatoria)) return TUsoIncorreto{std::string("Falta a opção ") + obrigatoria + "."};

    TPedeNovoAlias pedido;
    pedido.alias.nome = argumentos.Opcao("--novo-alias");
    pedido.alias.tipoBanco = argumentos.Opcao("--tipo");
    pedido.alias.hostname = argumentos.Opcao("--hostname");
    pedido.alias.path = argumentos.Opcao("--path");
    pedido.alias.database = argumentos.Opcao("--database");
    pedido.alias.usuario = argumentos.Opcao("--usuario");
    if (const auto texto = argumentos.Opcao("--autenticacao"); argumentos.Tem("--autenticacao")) {
        pedido.alias.autenticacao = StrToTipoAutenticacao(texto);
        if (TipoAutenticacaoToStr(pedido.alias.autenticacao) != texto)
            return TUsoIncorreto{"Depois de --autenticacao vem -1, 0 ou 1."};
    }
    pedido.tambemPadrao = argumentos.Tem("--menu");
    pedido.troca = argumentos.Tem("--troca");
    pedido.prova = !argumentos.Tem("--sem-teste");
    pedido.alias = Arrumado(pedido.alias);
    if (const auto defeito = DefeitoDoAlias(pedido.alias); !defeito.empty()) return TUsoIncorreto{defeito};
    return pedido;
}

/// As on the line of an update, ";" and what follows are no part of the alias.
std::string NomeDoAlias(const std::string& argumento) { return argumento.substr(0, argumento.find(';')); }

TArgumentosAceitos ComEscolhas(TArgumentosAceitos aceitos) {
    for (const char* opcao : {"--tabelas", "--linhas-por-commit"}) aceitos.opcoes.push_back(opcao);
    for (const char* chave : {"--todas", "--completo", "--sem-anteriores", "--sem-posteriores"})
        aceitos.chaves.push_back(chave);
    return aceitos;
}

/// Throws std::invalid_argument for what the wizard's page would not let anybody choose.
TEscolhas Escolhas(const TArgumentos& argumentos) {
    TEscolhas escolhas;
    escolhas.todas = argumentos.Tem("--todas");
    escolhas.completo = argumentos.Tem("--completo");
    escolhas.anteriores = !argumentos.Tem("--sem-anteriores");
    escolhas.posteriores = !argumentos.Tem("--sem-posteriores");
    if (argumentos.Tem("--linhas-por-commit")) escolhas.linhasPorCommit = argumentos.Opcao("--linhas-por-commit");
    if (!argumentos.Tem("--tabelas")) return escolhas;
    for (const auto& tabela : Divide(argumentos.Opcao("--tabelas"), ','))
        if (!Apara(tabela).empty()) escolhas.tabelas.push_back(Maiusculas(Apara(tabela)));
    if (escolhas.tabelas.empty()) throw std::invalid_argument("Depois de --tabelas vêm nomes, separados por vírgula.");
    if (escolhas.todas) throw std::invalid_argument("Use --todas ou --tabelas, não as duas.");
    return escolhas;
}

/// Throws std::invalid_argument for more than one.
TFormaDoPlano FormaDoPlano(const TArgumentos& argumentos) {
    TFormaDoPlano forma = TFormaDoPlano::Texto;
    for (const auto& [chave, dela] :
         {std::pair{"--json", TFormaDoPlano::Json}, std::pair{"--sql", TFormaDoPlano::Sql},
          std::pair{"--html", TFormaDoPlano::Html}, std::pair{"--silencioso", TFormaDoPlano::Nenhuma}}) {
        if (!argumentos.Tem(chave)) continue;
        if (forma != TFormaDoPlano::Texto)
            throw std::invalid_argument("Use só uma destas: --json, --sql, --html, --silencioso.");
        forma = dela;
    }
    return forma;
}

TPedido Backup(const TArgumentos& argumentos) {
    TPedeBackup pedido{NomeDoAlias(argumentos.Opcao("--backup")), argumentos.PalavraSeHouver(0)};
    if (!argumentos.Tem("--guarda")) return pedido;
    const std::string quantos = argumentos.Opcao("--guarda");
    const bool numero = !quantos.empty() && quantos.size() < 6 &&
                        quantos.find_first_not_of("0123456789") == std::string::npos && std::stoi(quantos) > 0;
    if (!numero) return TUsoIncorreto{"Depois de --guarda vem quantos backups ficam, 1 ou mais."};
    pedido.guarda = std::stoi(quantos);
    return pedido;
}

/// A command is the first option of the line; its own value, where it has one, is among its options.
struct TComando {
    std::string_view nome;
    TArgumentosAceitos aceitos;
    TPedido (*pedido)(const TArgumentos&);
};

const std::vector<TComando>& Comandos() {
    static const std::vector<TComando> comandos = {
        {"--help", {{}, {"--help"}}, [](const TArgumentos&) -> TPedido { return TPedeAjuda{}; }},
        {"--version", {{}, {"--version"}}, [](const TArgumentos&) -> TPedido { return TPedeVersao{}; }},
        {"--lista-alias", {{}, {"--lista-alias"}}, [](const TArgumentos&) -> TPedido { return TPedeListaAlias{}; }},
        {"--testa-alias",
         {{"--testa-alias"}, {}},
         [](const TArgumentos& a) -> TPedido { return TPedeTestaAlias{a.Opcao("--testa-alias")}; }},
        {"--remove-alias",
         {{"--remove-alias"}, {}},
         [](const TArgumentos& a) -> TPedido { return TPedeRemoveAlias{a.Opcao("--remove-alias")}; }},
        {"--novo-alias",
         {{"--novo-alias", "--tipo", "--hostname", "--path", "--database", "--usuario", "--autenticacao"},
          {"--menu", "--troca", "--sem-teste"}},
         NovoAlias},
        {"--muda-senha",
         {{"--muda-senha"}, {"--sem-teste"}},
         [](const TArgumentos& a) -> TPedido {
             return TPedeMudaSenha{NomeDoAlias(a.Opcao("--muda-senha")), !a.Tem("--sem-teste")};
         }},
        {"--plano", ComEscolhas({{"--plano"}, {"--json", "--sql", "--html", "--silencioso"}, 1}),
         [](const TArgumentos& a) -> TPedido {
             return TPedePlano{NomeDoAlias(a.Opcao("--plano")), a.Palavra(0), FormaDoPlano(a), Escolhas(a)};
         }},
        {"--confere",
         {{"--confere"}, {"--json"}},
         [](const TArgumentos& a) -> TPedido {
             return TPedeConfere{NomeDoAlias(a.Opcao("--confere")), a.Tem("--json")};
         }},
        {"--historico",
         {{}, {"--historico", "--json"}, 0, 1},
         [](const TArgumentos& a) -> TPedido {
             return TPedeHistorico{NomeDoAlias(a.PalavraSeHouver(0)), a.Tem("--json")};
         }},
        {"--backup", {{"--backup", "--guarda"}, {}, 0, 1}, Backup},
        {"--prova-backup",
         {{"--prova-backup"}, {}, 0, 1},
         [](const TArgumentos& a) -> TPedido {
             return TPedeProva{a.Opcao("--prova-backup"), NomeDoAlias(a.PalavraSeHouver(0))};
         }},
        {"--restaura",
         {{"--restaura"}, {"--sim"}, 1},
         [](const TArgumentos& a) -> TPedido {
             return TPedeRestaura{NomeDoAlias(a.Opcao("--restaura")), a.Palavra(0), a.Tem("--sim")};
         }},
        {"--ensaio", ComEscolhas({{"--ensaio"}, {"--json", "--mantem"}, 1}),
         [](const TArgumentos& a) -> TPedido {
             return TPedeEnsaio{NomeDoAlias(a.Opcao("--ensaio")), a.Palavra(0), a.Tem("--json"), a.Tem("--mantem"),
                                Escolhas(a)};
         }},
        {"--repoe",
         {{"--repoe"}, {}},
         [](const TArgumentos& a) -> TPedido { return TPedeRepoe{NomeDoAlias(a.Opcao("--repoe"))}; }},
        {"--suporte",
         {{"--suporte", "--pacote"}, {}, 0, 1},
         [](const TArgumentos& a) -> TPedido {
             return TPedeSuporte{NomeDoAlias(a.Opcao("--suporte")), a.PalavraSeHouver(0),
                                 a.Tem("--pacote") ? a.Opcao("--pacote") : ""};
         }},
        {"--reproduz",
         {{"--reproduz"}, {}, 1},
         [](const TArgumentos& a) -> TPedido {
             return TPedeReproduz{a.Opcao("--reproduz"), NomeDoAlias(a.Palavra(0))};
         }},
    };
    return comandos;
}

TPedido Opcao(std::vector<std::string> argumentos) {
    const std::string nome = argumentos.front().substr(0, argumentos.front().find('='));
    if (nome == "--historico" && nome != argumentos.front()) {  // whose value may be missing, and is a word
        argumentos.insert(argumentos.begin() + 1, argumentos.front().substr(nome.size() + 1));
        argumentos.front() = nome;
    }
    const auto comando = std::ranges::find(Comandos(), nome, &TComando::nome);
    if (comando == Comandos().end()) {
        std::vector<std::string_view> nomes;
        for (const auto& conhecido : Comandos()) nomes.push_back(conhecido.nome);
        return TUsoIncorreto{Desconhecido("Opção desconhecida", nome, nomes)};
    }
    try {
        return comando->pedido(TArgumentos(argumentos, comando->aceitos));
    } catch (const std::invalid_argument& erro) {
        return TUsoIncorreto{nome + ": " + erro.what()};
    }
}

TPedido Atualizacao(const std::vector<std::string>& argumentos) {
    const std::string& primeiro = argumentos.front();
    const std::size_t fim = primeiro.find(';');
    if (fim == std::string::npos)
        return TUsoIncorreto{"O primeiro argumento deve ser o nome do alias seguido de \";\": \"" + primeiro + ";\"."};
    try {
        const std::size_t sobras = argumentos.size();
        const TArgumentos lidos(argumentos, ComEscolhas({{}, {"--com-backup", "--silencioso"}, 2, sobras}));
        return TPedeAtualizacao{primeiro.substr(0, fim), lidos.Palavra(1), lidos.Tem("--com-backup"),
                                lidos.Tem("--silencioso"), Escolhas(lidos)};
    } catch (const std::invalid_argument& erro) {
        return TUsoIncorreto{erro.what() + std::string(" Use \"ALIAS;\" PACOTE.zip, e depois as opções.")};
    }
}

}  // namespace

TPedido LeLinhaDeComando(std::vector<std::string> argumentos) {
    if (!argumentos.empty() && argumentos.front().starts_with("--")) return Opcao(argumentos);
    if (argumentos.size() < 2) return TPedeJanela{argumentos.empty() ? std::string() : argumentos.front()};
    return Atualizacao(argumentos);
}

std::string_view TextoDeAjuda() { return kAjuda; }

}  // namespace wkd
