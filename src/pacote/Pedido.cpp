#include "Pedido.h"

#include <optional>
#include <span>
#include <stdexcept>

#include "PacoteJson.h"
#include "package/Caminho.h"
#include "process/Argumentos.h"
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
  Um valor vem depois da opção ou colado nela: --versao 7.17, --versao=7.17
  --help, --version

Código de saída:
  0   sem erro, nada apontado
  1   confere apontou alguma coisa
  2   pacote ou arquivo que não pode ser lido ou gravado
  3   sem WKD.ini, alias desconhecido ou sem conexão
  64  argumentos incorretos
)";

TPedeMonta Monta(const TArgumentos& argumentos) {
    TPedeMonta pedido;
    pedido.pacote = CaminhoDoTexto(argumentos.Palavra(0));
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
    TPedeConverte pedido{CaminhoDoTexto(argumentos.Palavra(0)), CaminhoDoTexto(argumentos.Palavra(1)),
                         TFormaDeArquivo::Binario};
    if (NomeDeJson(pedido.destino)) pedido.forma = TFormaDeArquivo::Json;
    if (IgualSemCaixa(TextoDoCaminho(pedido.destino.extension()), ".xml")) pedido.forma = TFormaDeArquivo::Xml;
    if (const auto nome = argumentos.Opcao("--forma"); !nome.empty()) {
        const auto forma = FormaDoNome(nome);
        if (!forma) throw std::invalid_argument("Forma desconhecida: " + nome + ". Use xml, binario ou jsonl.");
        pedido.forma = *forma;
    }
    return pedido;
}

TPedeMostra Mostra(const TArgumentos& argumentos) { return {CaminhoDoTexto(argumentos.Palavra(0))}; }

TPedeRevisao Confere(const TArgumentos& argumentos) {
    return {CaminhoDoTexto(argumentos.Palavra(0)), CaminhoDoTexto(argumentos.Opcao("--anterior"))};
}

TPedidoDoPacote Comando(const std::vector<std::string>& argumentos) {
    const auto& nome = argumentos.front();
    if (nome == "--help") return {TPedeTexto{std::string(kAjuda)}};
    if (nome == "--version") return {TPedeTexto{"PacoteWKD " + std::string(kVersao) + "\n"}};
    const auto com = [&](auto pedido, std::vector<std::string_view> opcoes, std::size_t palavras) -> TPedidoDoPacote {
        const TArgumentos lidos(std::span<const std::string>(argumentos).subspan(1),
                                {std::move(opcoes), {"--json"}, palavras});
        return {pedido(lidos), lidos.Tem("--json")};
    };
    if (nome == "monta") return com(Monta, {"--pasta", "--alias", "--tabelas", "--versao"}, 1);
    if (nome == "mostra") return com(Mostra, {}, 1);
    if (nome == "converte") return com(Converte, {"--forma"}, 2);
    if (nome == "confere") return com(Confere, {"--anterior"}, 1);
    constexpr std::string_view kComandos[] = {"monta", "mostra", "converte", "confere", "--help", "--version"};
    throw std::invalid_argument(Desconhecido("Comando desconhecido", nome, kComandos));
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
