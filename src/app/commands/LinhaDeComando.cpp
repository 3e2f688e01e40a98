#include "commands/LinhaDeComando.h"

#include <map>

#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kAjuda =
    R"(AtualizaWKD - atualiza o banco de dados de uma instalação para o dicionário de uma nova versão

Uso:
  AtualizaWKD                                abre o assistente
  AtualizaWKD "ALIAS;"                       abre o assistente com o alias escolhido
  AtualizaWKD "ALIAS;" PACOTE.zip            atualiza sem ninguém à frente e termina
                                             ("ALIAS;nobkp" também serve)

Sem mudar nada:
  --plano ALIAS PACOTE.zip [--json]          diz o que a atualização faria, tabela por tabela, com seus motivos e
                                             comandos, e o que nos dados não aceitaria a mudança
  --confere ALIAS [--json]                   diz em que o banco difere do dicionário guardado nele

Aliases (seções do arquivo WKD.ini):
  --lista-alias                              nomes dos aliases, um por linha
  --testa-alias NOME                         conecta e mostra tipo, local e versão do servidor
  --novo-alias NOME --tipo T --hostname H --path P --database D --usuario U
               [--autenticacao A] [--menu]   grava um alias; a senha é pedida no terminal, ou lida de uma
                                             linha da entrada padrão
                                             T: tbInterbase, tbSQLServer ou tbODBC
                                             --menu grava também como alias padrão
  --remove-alias NOME                        apaga um alias

  --help, --version

Código de saída:
  0   terminou sem erro
  1   terminou, e algum erro foi relatado
  2   terminou antes da hora: pacote, confirmação, usuários conectados ou outra atualização em andamento
  3   sem WKD.ini, alias desconhecido ou sem conexão
  10  --plano: há mudanças a fazer (0: nada a fazer)
  11  --plano: há mudanças a fazer, e achados que alguém precisa ver antes; --confere: há desvios
  64  argumentos incorretos
  130, 143  interrompida por um sinal: rode de novo
)";

/// "--name value" pairs and "--name" flags behind the first option.
class TOpcoesDaLinha {
  public:
    TOpcoesDaLinha(const std::vector<std::string>& argumentos, std::size_t primeiro) {
        for (std::size_t i = primeiro; i < argumentos.size(); ++i) {
            const std::string& nome = argumentos[i];
            if (nome == "--menu")
                valores_[nome] = "";
            else if (!nome.starts_with("--") || i + 1 == argumentos.size())
                erro_ = "Argumento sem sentido ou sem valor: " + nome;
            else
                valores_[nome] = argumentos[++i];
        }
    }

    bool Tem(const std::string& nome) const { return valores_.contains(nome); }
    std::string Retira(const std::string& nome) {
        const auto no = valores_.extract(nome);
        return no.empty() ? std::string() : no.mapped();
    }
    std::string Erro() const {
        if (!erro_.empty() || valores_.empty()) return erro_;
        return "Opção desconhecida: " + valores_.begin()->first;
    }

  private:
    std::map<std::string, std::string> valores_;
    std::string erro_;
};

TPedido NovoAlias(const std::vector<std::string>& argumentos) {
    if (argumentos.size() < 2) return TUsoIncorreto{"Falta o nome do alias depois de --novo-alias."};
    TOpcoesDaLinha opcoes(argumentos, 2);
    for (const char* obrigatoria : {"--tipo", "--database", "--usuario"})
        if (!opcoes.Tem(obrigatoria)) return TUsoIncorreto{std::string("Falta a opção ") + obrigatoria + "."};

    TPedeNovoAlias pedido;
    pedido.alias.nome = argumentos[1];
    pedido.alias.tipoBanco = opcoes.Retira("--tipo");
    pedido.alias.hostname = opcoes.Retira("--hostname");
    pedido.alias.path = opcoes.Retira("--path");
    pedido.alias.database = opcoes.Retira("--database");
    pedido.alias.usuario = opcoes.Retira("--usuario");
    if (opcoes.Tem("--autenticacao"))
        pedido.alias.autenticacao = StrToTipoAutenticacao(opcoes.Retira("--autenticacao"));
    pedido.tambemPadrao = opcoes.Tem("--menu");
    opcoes.Retira("--menu");

    if (!StrToTipoBanco(pedido.alias.tipoBanco))
        return TUsoIncorreto{"Tipo de banco desconhecido: " + pedido.alias.tipoBanco +
                             ". Use tbInterbase, tbSQLServer ou tbODBC."};
    if (const std::string erro = opcoes.Erro(); !erro.empty()) return TUsoIncorreto{erro};
    return pedido;
}

/// As on the line of an update, ";" and what follows are no part of the alias.
std::string NomeDoAlias(const std::string& argumento) { return argumento.substr(0, argumento.find(';')); }

TPedido Plano(std::vector<std::string> argumentos) {
    const bool json = std::erase(argumentos, "--json") > 0;
    if (argumentos.size() != 3) return TUsoIncorreto{"Use --plano ALIAS PACOTE.zip, e --json se quiser."};
    return TPedePlano{NomeDoAlias(argumentos[1]), argumentos[2], json};
}

TPedido Confere(std::vector<std::string> argumentos) {
    const bool json = std::erase(argumentos, "--json") > 0;
    if (argumentos.size() != 2) return TUsoIncorreto{"Use --confere ALIAS, e --json se quiser."};
    return TPedeConfere{NomeDoAlias(argumentos[1]), json};
}

TPedido Opcao(const std::vector<std::string>& argumentos) {
    const std::string& opcao = argumentos.front();
    if (opcao == "--help") return TPedeAjuda{};
    if (opcao == "--version") return TPedeVersao{};
    if (opcao == "--novo-alias") return NovoAlias(argumentos);
    if (opcao == "--plano") return Plano(argumentos);
    if (opcao == "--confere") return Confere(argumentos);
    if (opcao == "--lista-alias" && argumentos.size() == 1) return TPedeListaAlias{};
    if (opcao == "--remove-alias" && argumentos.size() == 2) return TPedeRemoveAlias{argumentos[1]};
    if (opcao == "--testa-alias" && argumentos.size() == 2) return TPedeTestaAlias{argumentos[1]};
    if (opcao == "--remove-alias" || opcao == "--testa-alias" || opcao == "--lista-alias")
        return TUsoIncorreto{opcao + ": número errado de argumentos."};
    return TUsoIncorreto{"Opção desconhecida: " + opcao};
}

}  // namespace

TPedido LeLinhaDeComando(const std::vector<std::string>& argumentos) {
    if (!argumentos.empty() && argumentos.front().starts_with("--")) return Opcao(argumentos);
    if (argumentos.size() < 2) return TPedeJanela{argumentos.empty() ? std::string() : argumentos.front()};

    const std::string& primeiro = argumentos.front();
    const std::size_t fim = primeiro.find(';');
    if (fim == std::string::npos)
        return TUsoIncorreto{"O primeiro argumento deve ser o nome do alias seguido de \";\": \"" + primeiro + ";\"."};
    return TPedeAtualizacao{primeiro.substr(0, fim), argumentos[1]};
}

std::string_view TextoDeAjuda() { return kAjuda; }

}  // namespace wkd
