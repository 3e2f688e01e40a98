// What the programs write in JSON is what docs/json.md says: no field that it does not tell, none that never comes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "Arquivos.h"
#include "ProgramaApoio.h"
#include "package/Pacote.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;
using TCampos = std::set<std::string>;

/// One section of the page.
struct TSecao {
    TCampos campos;
    std::map<std::string, std::string> como;  // fields whose own fields are those of another one
};

std::string EntreAspas(const std::string& texto, std::size_t desde = 0) {
    const auto inicio = texto.find('`', desde) + 1;
    return inicio == 0 ? "" : texto.substr(inicio, texto.find('`', inicio) - inicio);
}

std::map<std::string, TSecao> LeDocumento() {
    std::map<std::string, TSecao> secoes;
    std::istringstream linhas(LeArquivo(WKD_DOCS "/json.md"));
    TSecao* secao = nullptr;
    for (std::string linha; std::getline(linhas, linha);) {
        if (linha.starts_with("## ")) secao = &secoes[linha.substr(3)];
        if (!secao || !linha.starts_with("| `")) continue;
        const std::string campo = EntreAspas(linha), tipo = linha.substr(0, linha.find(" | ", linha.find(" | ") + 1));
        EXPECT_TRUE(secao->campos.insert(campo).second) << campo << " twice";
        if (const auto como = tipo.find("como `"); como != std::string::npos)
            secao->como[campo] = EntreAspas(tipo, como);
    }
    return secoes;
}

/// Paths of all fields, as the section writes them.
void Junta(const TSecao& secao, const TJson& json, std::string caminho, TCampos& campos) {
    if (const auto como = secao.como.find(caminho); como != secao.como.end()) caminho = como->second;
    if (json.is_array())
        for (const auto& elemento : json) Junta(secao, elemento, caminho + "[]", campos);
    if (!json.is_object()) return;
    const std::string inicio = caminho.empty() ? "" : caminho + ".";
    for (const auto& [nome, valor] : json.items()) {
        const std::string campo = inicio + (secao.campos.contains(inicio + "*") ? "*" : nome);
        campos.insert(campo);
        Junta(secao, valor, campo, campos);
    }
}

std::string Faltam(const TCampos& daqui, const TCampos& dali) {
    std::string faltam;
    for (const auto& campo : daqui)
        if (!dali.contains(campo)) faltam += campo + " ";
    return faltam;
}

constexpr const char* kUmVendedor =
    "<?xml version=\"1.0\" standalone=\"yes\"?><DATAPACKET Version=\"2.0\"><METADATA><FIELDS><FIELD "
    "attrname=\"CODIGO\" fieldtype=\"i4\"/></FIELDS><PARAMS/></METADATA><ROWDATA><ROW CODIGO=\"1\"/></ROWDATA>"
    "</DATAPACKET>";
constexpr const char* kHistorico = "NOME=\"HISTORICO\" TIPO=\"ftString\" TAMANHO=\"80\"";

/// The program, and PacoteWKD beside it, on a database in which much is to be told.
class TLoja : public TProgramaInstalado {
  public:
    TLoja() {
        setenv("XDG_CONFIG_HOME", (*this / "config").c_str(), 1);
        const auto banco = Banco();
        for (const char* comando :
             {"insert into TFORNECE (CODIGO, CNPJ) values ('X1', '1')",
              "insert into TFORNECE (CODIGO, CNPJ) values ('X2', '1')",
              "update SARQUIVO set VERSAO = 1 where NOME_ARQUIVO = 'TFORNECE'", "alter table TUNIDADE add X integer"})
            banco->ExecuteDirect(comando);
    }
    ~TLoja() { unsetenv("XDG_CONFIG_HOME"); }

    TJson Diz(const std::vector<std::string>& argumentos) const { return Le(Roda(argumentos)); }
    TJson PacoteDiz(std::vector<std::string> argumentos) const {
        argumentos.emplace_back("--json");
        return Le(RodaPrograma(WKD_PACOTE, argumentos, *this / "."));
    }
    TJson Relatorio() const { return TJson::parse(Arquivo("AtualizaWKD.relatorio.json")); }

  private:
    static TJson Le(const TSaidaDePrograma& saida) {
        const auto json = TJson::parse(saida.saida, nullptr, false);
        EXPECT_TRUE(json.is_object()) << saida.saida << saida.erros;
        return json;
    }
};

using TFormas = std::vector<TJson>;

TFormas Planos(const TLoja& loja) {
    loja.Escreve("fontes/TVENDEDOR.WKD", kUmVendedor);
    NoPacote(loja, "SAtrib.WKD", "NOME=\"UF\"", "NOME=\"UF int, drop X\"");
    return {loja.Diz({"--plano", "LOJA", "pacote.zip", "--json"})};
}

TFormas Relatorios(const TLoja& loja) {
    // The server takes the change of type, and no default in it.
    NoPacote(loja, "SAtrib.WKD", "NOME=\"DESCRICAO\" TIPO=\"ftString\" TAMANHO=\"120\"",
             "NOME=\"DESCRICAO\" VALOR_PADRAO=\"X\" TIPO=\"ftString\" TAMANHO=\"120\"");
    EXPECT_EQ(loja.Roda({"LOJA;", "pacote.zip", "--com-backup"}).codigo, 1);
    TFormas relatorios = {loja.Relatorio()};
    EXPECT_EQ(loja.Atualiza("nenhum.zip").codigo, 2);
    relatorios.push_back(loja.Relatorio());
    return relatorios;
}

TFormas Ensaios(const TLoja& loja) {
    NoPacote(loja, "SAtrib.WKD", kHistorico, "NOME=\"HISTORICO\" TIPO=\"ftInteger\" TAMANHO=\"0\"");
    TJson ensaio = loja.Diz({"--ensaio", "LOJA", "pacote.zip", "--json"});
    EXPECT_EQ(ensaio.at("execucao").at("formato"), 1);
    ensaio["execucao"] = TJson::object();  // a report
    return {ensaio};
}

TFormas Manifestos(const TLoja& loja) {
    EXPECT_EQ(loja.Roda({"--backup", "LOJA", "."}).codigo, 0);
    fs::path arquivo;
    for (const auto& entrada : fs::directory_iterator(loja / "."))
        if (entrada.path().extension() == ".fbk") arquivo = entrada.path();
    EXPECT_EQ(loja.Roda({"--prova-backup", arquivo.string()}).codigo, 0);
    return {TJson::parse(LeArquivo(arquivo.string() + ".json"))};
}

TFormas Historicos(const TLoja& loja) {
    loja.Atualiza();
    return {loja.Diz({"--historico", "--json"})};
}

TFormas Rejeitadas(const TLoja& loja) {
    NoPacote(loja, "SAtrib.WKD", kHistorico, "NOME=\"HISTORICO\" TIPO=\"ftInteger\" TAMANHO=\"0\"");
    loja.Banco()->ExecuteDirect("update TFORNECE set OBS = 'x'");
    EXPECT_EQ(loja.Roda({"LOJA;", "pacote.zip", "--completo"}).codigo, 1);
    EXPECT_EQ(loja.Roda({"--repoe", "LOJA"}).codigo, 1);
    TFormas linhas;
    std::istringstream arquivo(loja.Arquivo("AtualizaWKD.rejeitados.jsonl"));
    for (std::string linha; std::getline(arquivo, linha);) linhas.push_back(TJson::parse(linha));
    return linhas;
}

/// Of a bundle's members the one of that name.
TFormas NoSuporte(const TLoja& loja, const char* membro) {
    loja.Banco()->ExecuteDirect("create view V_VENDA as select NUMERO from TVENDA");
    EXPECT_EQ(loja.Roda({"--suporte", "LOJA", "s.zip", "--pacote", "pacote.zip"}).codigo, 0);
    const TPastaTemporaria pasta;
    EXPECT_TRUE(ExtraiPacote(loja / "s.zip", pasta.Caminho(), nullptr).empty());
    return {TJson::parse(LeArquivo(pasta / membro))};
}

TFormas Inventarios(const TLoja& loja) {
    NoPacote(loja, "SAtrib.WKD", "CHAVE_DE_PESQUISA=\"0\"",
             "CALCULO=\"A+B\" VALOR_PADRAO=\"1\" CHAVE_DE_PESQUISA=\"0\"");
    loja.Escreve("fontes/SPESQ.WKD", "nada que se leia");
    loja.Empacota();
    return {loja.PacoteDiz({"mostra", "pacote.zip"})};
}

struct TForma {
    const char* secao;
    std::function<TFormas(const TLoja&)> formas;
    TJson formato = 1;
};

TEST(Json, EveryFieldIsDocumentedAndEveryDocumentedFieldComes) {
    const TForma formas[] = {
        {"Plano", Planos},
        {"Conferência",
         [](auto& loja) {
             return TFormas{loja.Diz({"--confere", "LOJA", "--json"})};
         }},
        {"Relatório", Relatorios},
        {"Ensaio", Ensaios},
        {"Manifesto do backup", Manifestos},
        {"Histórico", Historicos},
        {"Linhas rejeitadas", Rejeitadas, TJson()},
        {"Suporte: versões", [](auto& loja) { return NoSuporte(loja, "versoes.json"); }},
        {"Suporte: configuração", [](auto& loja) { return NoSuporte(loja, "configuracao.json"); }},
        {"Suporte: esquema", [](auto& loja) { return NoSuporte(loja, "esquema.json"); }},
        {"PacoteWKD mostra", Inventarios},
        {"PacoteWKD confere",
         [](auto& loja) {
             NoPacote(loja, "SAtrib.WKD", kHistorico, "NOME=\"HISTORICO\" TIPO=\"ftNenhum\" TAMANHO=\"80\"");
             return TFormas{loja.PacoteDiz({"confere", "pacote.zip"})};
         }},
        {"PacoteWKD monta",
         [](auto& loja) {
             return TFormas{loja.PacoteDiz({"monta", "novo.zip", "--pasta", "fontes"})};
         }},
        {"PacoteWKD converte",
         [](auto& loja) {
             return TFormas{loja.PacoteDiz({"converte", "fontes/SAtrib.WKD", "s.jsonl"})};
         }},
    };
    const auto documento = LeDocumento();
    EXPECT_EQ(documento.size(), std::size(formas));
    for (const auto& forma : formas) {
        SCOPED_TRACE(forma.secao);
        const TSecao& secao = documento.at(forma.secao);
        TCampos vindos;
        for (const auto& json : forma.formas(TLoja())) {
            EXPECT_EQ(json.value("formato", TJson()), forma.formato);
            Junta(secao, json, "", vindos);
        }
        EXPECT_EQ(Faltam(vindos, secao.campos), "") << "come and are not documented";
        EXPECT_EQ(Faltam(secao.campos, vindos), "") << "are documented and never come";
    }
}

}  // namespace
}  // namespace wkd
