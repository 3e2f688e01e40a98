#include "Esquema.h"

#include <iterator>
#include <map>
#include <nlohmann/json.hpp>

#include "dialect/Dialeto.h"
#include "package/Caminho.h"
#include "package/Pacote.h"
#include "process/EscritaSegura.h"
#include "process/Programa.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

TJson EmJson(const TColunaFisica& coluna) {
    return {{"nome", coluna.nome},
            {"tipo", coluna.tipoSql},
            {"obrigatoria", coluna.requerido},
            {"padrao", TextoDeBytes(coluna.padrao)},
            {"calculo", TextoDeBytes(coluna.expressao)},
            {"conjunto", coluna.conjunto}};
}

TJson EmJson(const TIndice& indice) {
    return {{"nome", indice.nome},           {"unico", indice.unico},     {"descendente", indice.descendente},
            {"restricao", indice.restricao}, {"colunas", indice.colunas}, {"expressao", TextoDeBytes(indice.expressao)},
            {"inativo", indice.inativo}};
}

TJson Objetos(TConnection& conexao, TMascara& mascara) {
    TJson objetos = TJson::array();
    const auto pergunta = Dialeto(conexao).ComandoObjetos();
    if (pergunta.empty()) return objetos;
    TWKDQuery q(conexao, pergunta);
    for (q.Open(); !q.Eof(); q.Next()) {
        objetos.push_back({{"tipo", q.Texto("TIPO")}, {"nome", q.Texto("NOME")}, {"tabela", q.Texto("TABELA")}});
        mascara.Conhece(q.Texto("NOME"));
    }
    return objetos;
}

/// The definition of a stored column. Firebird wants a collation behind all else, and an identity in front.
std::string Definicao(const TColunaFisica& coluna, const std::string& propriedade, const TDialeto& dialeto) {
    const bool noFim = propriedade.starts_with("collate");
    std::string texto = dialeto.Identificador(coluna.nome) + " " + coluna.tipoSql;
    if (!noFim && !propriedade.empty()) texto += " " + propriedade;
    if (!coluna.padrao.empty()) texto += " default " + TextoDeBytes(coluna.padrao);
    if (coluna.requerido) texto += " not null";
    return texto + (noFim ? " " + propriedade : "");
}

std::string CriaTabela(TConnection& conexao, const std::string& tabela, const std::vector<TColunaFisica>& colunas,
                       const TChavePrimaria& chave) {
    const TDialeto& dialeto = Dialeto(conexao);
    std::map<std::string, std::string> propriedades;
    for (const auto& [nome, fonte] : dialeto.Propriedades(conexao, tabela)) propriedades[ChaveDeNome(nome)] = fonte;
    std::vector<std::string> partes, daChave;
    for (const auto& coluna : colunas)
        partes.push_back(coluna.expressao.empty() ? Definicao(coluna, propriedades[ChaveDeNome(coluna.nome)], dialeto)
                                                  : TextoDeBytes(dialeto.ColunaCalculada(coluna)));
    for (const auto& coluna : chave.colunas) daChave.push_back(dialeto.Identificador(coluna));
    if (!daChave.empty()) partes.push_back(dialeto.Batizada(chave.nome) + "primary key (" + Junta(daChave, ", ") + ")");
    return "create table " + dialeto.Identificador(tabela) + " (" + Junta(partes, ", ") + ")";
}

/// Statements that make the tables, in the order in which a server takes them: what may mean another table comes last.
class TComandos {
  public:
    explicit TComandos(TConnection& conexao) : conexao_(conexao) {}

    void Tabela(const std::string& tabela, const std::vector<TColunaFisica>& colunas, const TChavePrimaria& chave,
                const std::vector<TIndice>& indices) {
        const TDialeto& dialeto = Dialeto(conexao_);
        criam_.push_back(CriaTabela(conexao_, tabela, colunas, chave));
        const auto comoEram = dialeto.IndicesComoEram(conexao_, tabela);
        for (const auto& indice : indices) {
            if (!indice.restricao.empty()) continue;
            const auto seu = comoEram.find(ChaveDeNome(indice.nome));
            const bool nosTermos = seu != comoEram.end() && !seu->second.comando.empty();
            depois_.push_back(nosTermos ? seu->second.comando
                                        : dialeto.CriaIndice(indice, dialeto.Identificador(tabela)));
            if (indice.inativo) depois_.push_back("alter index " + dialeto.Identificador(indice.nome) + " inactive");
        }
        for (auto& restricao : dialeto.Restricoes(conexao_, tabela))
            (restricao.find(" foreign key ") == std::string::npos ? depois_ : porFim_).push_back(std::move(restricao));
        for (auto& comentario : dialeto.Comentarios(conexao_, tabela)) porFim_.push_back(std::move(comentario));
    }

    std::vector<std::string> Todos() && {
        for (auto* lista : {&depois_, &porFim_})
            criam_.insert(criam_.end(), std::make_move_iterator(lista->begin()), std::make_move_iterator(lista->end()));
        return std::move(criam_);
    }

  private:
    TConnection& conexao_;
    std::vector<std::string> criam_, depois_, porFim_;
};

void Conhece(const std::string& tabela, const std::vector<TColunaFisica>& colunas, const TChavePrimaria& chave,
             const std::vector<TIndice>& indices, TMascara& mascara) {
    mascara.Conhece(tabela);
    mascara.Conhece(chave.nome);
    for (const auto& coluna : colunas) mascara.Conhece(coluna.nome);
    for (const auto& indice : indices) {
        mascara.Conhece(indice.nome);
        mascara.Conhece(indice.restricao);
    }
}

}  // namespace

std::string EsquemaEmJson(TConnection& conexao, TMascara& mascara) {
    TJson json = {{"formato", kFormatoJson},
                  {"tipoBanco", TipoBancoToStr(conexao.TipoBanco())},
                  {"conjunto", Dialeto(conexao).ConjuntoDoBanco(conexao)},
                  {"pagina", Dialeto(conexao).Capacidades().pagina},
                  {"tabelas", TJson::array()}};
    TComandos comandos(conexao);
    const auto todas = conexao.TodasAsColunas();
    const auto chaves = conexao.TodasAsChaves();
    for (const auto& escrita : conexao.NomesDeTabelas()) {
        const std::string tabela(AparaFim(escrita));
        const auto colunas = todas.find(Maiusculas(tabela));
        if (colunas == todas.end()) continue;
        const auto chave = chaves.find(Maiusculas(tabela));
        const TChavePrimaria sua = chave == chaves.end() ? TChavePrimaria() : chave->second;
        const auto indices = conexao.Indices(tabela);
        comandos.Tabela(tabela, colunas->second, sua, indices);
        Conhece(tabela, colunas->second, sua, indices, mascara);
        TJson uma = {{"tabela", tabela},
                     {"colunas", TJson::array()},
                     {"chave", {{"nome", sua.nome}, {"colunas", sua.colunas}}},
                     {"indices", TJson::array()}};
        for (const auto& coluna : colunas->second) uma["colunas"].push_back(EmJson(coluna));
        for (const auto& indice : indices) uma["indices"].push_back(EmJson(indice));
        json["tabelas"].push_back(std::move(uma));
    }
    json["objetos"] = Objetos(conexao, mascara);
    json["comandos"] = std::move(comandos).Todos();
    return json.dump(1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

TEsquema LeEsquema(const std::filesystem::path& arquivo) {
    try {
        const TJson json = TJson::parse(LeArquivoInteiro(arquivo));
        return {json.at("tipoBanco").get<std::string>(), json.at("conjunto").get<std::string>(),
                json.at("pagina").get<int>(), json.at("comandos").get<std::vector<std::string>>()};
    } catch (const std::exception& erro) {
        throw TErroPacote(TextoDoCaminho(arquivo.filename()) + " do pacote não pôde ser lido: " + erro.what() +
                          ". Peça outro a quem o enviou.");
    }
}

}  // namespace wkd
