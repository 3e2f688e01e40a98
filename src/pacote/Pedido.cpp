#include "Pedido.h"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>

#include "PacoteJson.h"
#include "package/Caminho.h"
#include "process/Programa.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kAjuda =
    R"(PacoteWKD - monta, mostra, converte e confere pacotes de atualização

Uso:
  PacoteWKD monta PACOTE.zip [--pasta PASTA] [--alias ALIAS [--tabelas A,B]] [--versao V]
      Da pasta vão os pacotes de dados (.wkd, .jsonl), os layouts (.rtm), o pacote ARQUIVOS e, dentro dele,
      todos os outros arquivos, com a versão V. Do banco do alias (seção do WKD.ini) vai o dicionário, sem o
      que é do cliente ("U_"), e o conteúdo das tabelas pedidas.
  PacoteWKD mostra PACOTE.zip
      Tabelas, colunas, versões, tabelas de sistema, layouts, arquivos e tamanhos.
  PacoteWKD converte ORIGEM DESTINO [--forma xml|binario|jsonl]
      Passa um pacote de dados para outra forma, com todas as linhas, estados e blobs. Sem --forma vale o nome
      do destino: .xml, .jsonl, qualquer outro binario.
  PacoteWKD confere PACOTE.zip [--anterior PACOTE.zip]
      Aponta o que não deve seguir: colunas de tabelas desconhecidas, tipos desconhecidos, nomes repetidos ou
      longos demais, chaves e índices sem colunas, e o que encolheu ou sumiu desde o pacote anterior.

  --json     resultado em JSON, para outros programas
  --help, --version

Código de saída:
  0   sem erro, nada apontado
  1   confere apontou alguma coisa
  2   pacote ou arquivo que não pode ser lido ou gravado
  3   sem WKD.ini, alias desconhecido ou sem conexão
  64  argumentos incorretos
)";

/// Words and options of a command.
class TArgumentos {
  public:
    /// Throws std::invalid_argument for an option that is not among `conhecidas`, or one without its value.
    TArgumentos(const std::vector<std::string>& argumentos, const std::vector<std::string>& conhecidas) {
        for (std::size_t i = 1; i < argumentos.size(); ++i) {
            const auto& argumento = argumentos[i];
            if (argumento == "--json") {
                json_ = true;
            } else if (!argumento.starts_with("--")) {
                palavras_.push_back(argumento);
            } else {
                if (std::ranges::find(conhecidas, argumento) == conhecidas.end())
                    throw std::invalid_argument("Opção desconhecida: " + argumento + ".");
                if (++i == argumentos.size()) throw std::invalid_argument("Falta o valor de " + argumento + ".");
                opcoes_[argumento] = argumentos[i];
            }
        }
    }

    bool Json() const { return json_; }
    const std::vector<std::string>& Exatamente(std::size_t quantas) const {
        if (palavras_.size() != quantas) throw std::invalid_argument("Número errado de argumentos.");
        return palavras_;
    }
    std::string Opcao(const std::string& nome) const {
        const auto achada = opcoes_.find(nome);
        return achada == opcoes_.end() ? std::string() : achada->second;
    }

  private:
    std::vector<std::string> palavras_;
    std::map<std::string, std::string> opcoes_;
    bool json_ = false;
};

TPedeMonta Monta(const TArgumentos& argumentos) {
    TPedeMonta pedido;
    pedido.pacote = CaminhoDoTexto(argumentos.Exatamente(1)[0]);
    pedido.pasta = CaminhoDoTexto(argumentos.Opcao("--pasta"));
    pedido.alias = argumentos.Opcao("--alias");
    pedido.versao = argumentos.Opcao("--versao");
    for (const auto& tabela : Divide(argumentos.Opcao("--tabelas"), ','))
        if (!Apara(tabela).empty()) pedido.tabelas.emplace_back(Apara(tabela));
    if (pedido.pasta.empty() && pedido.alias.empty())
        throw std::invalid_argument("Diga de onde montar: --pasta, --alias ou ambos.");
    if (pedido.alias.empty() && !pedido.tabelas.empty()) throw std::invalid_argument("--tabelas só serve com --alias.");
    return pedido;
}

std::optional<TFormaDeArquivo> FormaDoNome(std::string_view nome) {
    if (nome == "xml") return TFormaDeArquivo::Xml;
    if (nome == "binario") return TFormaDeArquivo::Binario;
    if (nome == "jsonl") return TFormaDeArquivo::Json;
    return std::nullopt;
}

TPedeConverte Converte(const TArgumentos& argumentos) {
    const auto& palavras = argumentos.Exatamente(2);
    TPedeConverte pedido{CaminhoDoTexto(palavras[0]), CaminhoDoTexto(palavras[1]), TFormaDeArquivo::Binario};
    if (NomeDeJson(pedido.destino)) pedido.forma = TFormaDeArquivo::Json;
    if (IgualSemCaixa(TextoDoCaminho(pedido.destino.extension()), ".xml")) pedido.forma = TFormaDeArquivo::Xml;
    if (const auto nome = argumentos.Opcao("--forma"); !nome.empty()) {
        const auto forma = FormaDoNome(nome);
        if (!forma) throw std::invalid_argument("Forma desconhecida: " + nome + ". Use xml, binario ou jsonl.");
        pedido.forma = *forma;
    }
    return pedido;
}

TPedidoDoPacote Comando(const std::vector<std::string>& argumentos) {
    const auto& nome = argumentos.front();
    if (nome == "--help") return {TPedeTexto{std::string(kAjuda)}};
    if (nome == "--version") return {TPedeTexto{"PacoteWKD " + std::string(kVersao) + "\n"}};
    if (nome == "monta") {
        const TArgumentos lidos(argumentos, {"--pasta", "--alias", "--tabelas", "--versao"});
        return {Monta(lidos), lidos.Json()};
    }
    if (nome == "mostra") {
        const TArgumentos lidos(argumentos, {});
        return {TPedeMostra{CaminhoDoTexto(lidos.Exatamente(1)[0])}, lidos.Json()};
    }
    if (nome == "converte") {
        const TArgumentos lidos(argumentos, {"--forma"});
        return {Converte(lidos), lidos.Json()};
    }
    if (nome == "confere") {
        const TArgumentos lidos(argumentos, {"--anterior"});
        return {TPedeRevisao{CaminhoDoTexto(lidos.Exatamente(1)[0]), CaminhoDoTexto(lidos.Opcao("--anterior"))},
                lidos.Json()};
    }
    throw std::invalid_argument("Comando desconhecido: " + nome + ".");
}

}  // namespace

TPedidoDoPacote LePedidoDoPacote(const std::vector<std::string>& argumentos) {
    try {
        if (argumentos.empty()) throw std::invalid_argument("Falta o comando: monta, mostra, converte ou confere.");
        return Comando(argumentos);
    } catch (const std::invalid_argument& erro) {
        return {TPedidoErrado{erro.what()}};
    }
}

}  // namespace wkd
