// What confere points at, package by package.
#include <functional>

#include "PacoteProgramaApoio.h"
#include "package/Pacote.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

/// The rows of a small package without fault; a case changes them.
struct TFontes {
    std::vector<TLinha> tabelas = {{"001", "TCLIENTE", 3}, {"001", "TVENDA", 1}};
    std::vector<TLinha> colunas = {{"TCLIENTE", 1, "CODIGO", "ftInteger", 0, 1, TValor()},
                                   {"TCLIENTE", 2, "NOME", "ftString", 40, 0, TValor()},
                                   {"TCLIENTE", 3, "SALDO", "ftFloat", 0, 0, TValor()},
                                   {"TCLIENTE", 4, "CALC", "ftString", 9, 0, "NOME"},
                                   {"TVENDA", 1, "NUMERO", "ftString", 10, 1, TValor()}};
    std::vector<TLinha> indices = {{"TCLIENTE", "CLI_NOME", 0}};
    std::vector<TLinha> colunasDosIndices = {{"TCLIENTE", "CLI_NOME", 1, "NOME"}};
    bool arquivos = true;
};
using TMuda = std::function<void(TFontes&)>;

class Revisao : public TPacoteTest {
  protected:
    void Pacote(const std::string& nome, const TMuda& muda, const std::vector<fs::path>& tambem = {}) const {
        using enum TTipoDado;
        const auto C = [](const char* campo, TTipoDado tipo) { return CampoDePacote(campo, tipo); };
        TFontes fontes;
        muda(fontes);
        std::vector<fs::path> arquivos = tambem;
        const auto grava = [&](const char* arquivo, std::vector<TCampoPacote> campos, std::vector<TLinha> linhas) {
            arquivos.push_back(pasta_ / "fontes" / arquivo);
            GravaPacote({std::move(campos), std::move(linhas)}, arquivos.back(), TFormaPacote::Binario);
        };
        grava("SARQUIVO.WKD", {C("COD_MODULO", Texto), C("NOME_ARQUIVO", Texto), C("VERSAO", Inteiro)}, fontes.tabelas);
        grava("SATRIB.WKD",
              {C("ARQUIVO", Texto), C("SEQUENCIA", Inteiro), C("NOME", Texto), C("TIPO", Texto), C("TAMANHO", Inteiro),
               C("CHAVE_DE_PESQUISA", Inteiro), C("CALCULO", Texto)},
              fontes.colunas);
        grava("SINDSEC.WKD", {C("ARQUIVO", Texto), C("NOME", Texto), C("TIPO", Inteiro)}, fontes.indices);
        grava("SINDSECA.WKD", {C("ARQUIVO", Texto), C("NOME", Texto), C("SEQUENCIA", Inteiro), C("CAMPO", Texto)},
              fontes.colunasDosIndices);
        if (fontes.arquivos) grava("ARQUIVOS", {C("ARQUIVO", Texto)}, {});
        CompactaZip(arquivos, pasta_ / nome);
    }
    /// "rule table.object" of each finding, and the exit code that goes with them.
    std::vector<std::string> Achados(std::vector<std::string> argumentos) const {
        argumentos.push_back("--json");
        const auto rodada = Roda(argumentos);
        std::vector<std::string> achados;
        const auto json = nlohmann::json::parse(rodada.saida, nullptr, false);
        if (!json.is_object()) return {rodada.erros};
        for (const auto& achado : json["achados"])
            achados.push_back(achado["regra"].get<std::string>() + " " + achado["tabela"].get<std::string>() + "." +
                              achado["objeto"].get<std::string>());
        EXPECT_EQ(rodada.codigo, achados.empty() ? 0 : 1);
        return achados;
    }
};

using TAchados = std::vector<std::string>;

TEST_F(Revisao, PointsAtEachFaultOfThePackage) {
    const struct {
        TMuda muda;
        TAchados achados;
    } casos[] = {
        {[](TFontes&) {}, {}},
        {[](TFontes& f) {
             f.colunas.push_back({"TNADA", 1, "X", "ftInteger", 0, 1, TValor()});
         },
         {"tabela-desconhecida TNADA.X"}},
        {[](TFontes& f) {
             f.indices.push_back({"TNADA", "I", 0});
         },
         {"tabela-desconhecida TNADA.I"}},
        {[](TFontes& f) { f.colunas[2][3] = "ftDinheiro"; }, {"tipo-desconhecido TCLIENTE.SALDO"}},
        {[](TFontes& f) { f.colunas[3][3] = "ftDinheiro"; }, {}},  // calculated: no server sees the type
        {[](TFontes& f) { f.colunas[1][2] = "codigo "; },
         {"nome-repetido TCLIENTE.codigo", "indice-sobre-nada TCLIENTE.CLI_NOME"}},
        {[](TFontes& f) {
             f.tabelas.push_back({"002", "tvenda", 1});
         },
         {"nome-repetido tvenda.", "tabela-sem-colunas tvenda."}},
        {[](TFontes& f) {
             f.indices.push_back({"tcliente", "cli_nome", 1});
         },
         {"nome-repetido TCLIENTE.cli_nome", "indice-sem-colunas TCLIENTE.cli_nome"}},
        {[](TFontes& f) { f.colunas[0][5] = 0; }, {"chave-sem-colunas TCLIENTE."}},
        {[](TFontes& f) { f.colunas[3][5] = 1; }, {"chave-sem-colunas TCLIENTE.CALC"}},
        {[](TFontes& f) { f.colunas.pop_back(); }, {"tabela-sem-colunas TVENDA."}},
        {[](TFontes& f) { f.colunasDosIndices[0][3] = "APELIDO"; }, {"indice-sobre-nada TCLIENTE.CLI_NOME"}},
        {[](TFontes& f) { f.colunasDosIndices[0][3] = "CALC"; }, {"indice-sobre-nada TCLIENTE.CLI_NOME"}},
        {[](TFontes& f) { f.colunasDosIndices.clear(); }, {"indice-sem-colunas TCLIENTE.CLI_NOME"}},
        {[](TFontes& f) { f.colunas[2][2] = std::string(26, 'C'); }, {"nome-longo TCLIENTE." + std::string(26, 'C')}},
        {[](TFontes& f) { f.tabelas[1][1] = f.colunas[4][0] = std::string(29, 'T'); },
         {"nome-longo " + std::string(29, 'T') + "."}},
        {[](TFontes& f) { f.tabelas[1][1] = f.colunas[4][0] = std::string(28, 'T'); }, {}},
        {[](TFontes& f) { f.indices[0][1] = f.colunasDosIndices[0][1] = std::string(32, 'I'); },
         {"nome-longo TCLIENTE." + std::string(32, 'I')}},
        {[](TFontes& f) { f.colunas[2][2] = "SALDO TOTAL"; }, {"nome-invalido TCLIENTE.SALDO TOTAL"}},
        {[](TFontes& f) { f.colunas[1][4] = 4001; }, {"tamanho-invalido TCLIENTE.NOME"}},
        {[](TFontes& f) { f.tabelas[0][2] = -1; }, {"versao-invalida TCLIENTE."}},
        {[](TFontes& f) { f.arquivos = false; }, {"sem-arquivos .ARQUIVOS"}},
    };
    for (const auto& caso : casos) {
        Pacote("p.zip", caso.muda);
        EXPECT_EQ(Achados({"confere", "p.zip"}), caso.achados);
    }
}

TEST_F(Revisao, PointsAtFilesThatAPackageMayNotBring) {
    Fonte("SISTEMA.WKD", "<DATAPACKET");
    Fonte("FOTO.WKD", ComBlobDanificado());
    Fonte("nome errado.wkd", R"(<DATAPACKET><METADATA><FIELDS><FIELD attrname="A" fieldtype="i4"/></FIELDS></METADATA>
                                <ROWDATA/></DATAPACKET>)");
    Pacote("p.zip", [](TFontes&) {},
           {pasta_ / "fontes/SISTEMA.WKD", pasta_ / "fontes/FOTO.WKD", pasta_ / "fontes/nome errado.wkd"});
    EXPECT_EQ(Achados({"confere", "p.zip"}),
              (TAchados{"pacote-ilegivel FOTO.FOTO.WKD", "nome-invalido nome errado.nome errado.wkd",
                        "pacote-ilegivel SISTEMA.SISTEMA.WKD"}));
    EXPECT_EQ(Json({"mostra", "p.zip"})["sistema"].size(), 7u);
    std::vector<fs::path> doCliente;
    for (const char* nome : {"SISTEMA.WKD", "SPESQ_USER.WKD", "TINI.WKD", "TUNIDADE.WKD", "tvenda.wkd"})
        GravaPacote({{CampoDePacote("A", TTipoDado::Inteiro)}, {}}, doCliente.emplace_back(pasta_ / "fontes" / nome),
                    TFormaPacote::Xml);
    Pacote(
        "c.zip", [](TFontes&) {}, doCliente);
    EXPECT_EQ(Achados({"confere", "c.zip"}), (TAchados{"apaga-dados SPESQ_USER.SPESQ_USER.WKD",
                                                       "apaga-dados TINI.TINI.WKD", "apaga-dados tvenda.tvenda.wkd"}));
    fs::copy_file(fs::path(WKD_SEMENTES) / "zip/hostil.zip", pasta_ / "h.zip");
    EXPECT_TRUE(Roda({"confere", "h.zip"}).Diz("SARQUIVO.WKD"));
    Pacote("vazio.zip", [](TFontes& f) { f.tabelas.clear(); });
    EXPECT_EQ(Achados({"confere", "vazio.zip"}),
              TAchados{"O arquivo SARQUIVO.WKD do pacote está vazio. É preciso um pacote completo.\n"});
}

TEST_F(Revisao, PointsAtWhatAnInstallationOfTheFormerPackageWouldLose) {
    const struct {
        TMuda muda;
        TAchados achados;
    } casos[] = {
        {[](TFontes&) {}, {}},
        {[](TFontes& f) {
             f.colunas[1][4] = 39;
             f.tabelas[0][2] = 4;
         },
         {"tamanho-menor TCLIENTE.NOME"}},
        {[](TFontes& f) {
             f.colunas[1][4] = 60;
             f.tabelas[0][2] = 4;
         },
         {}},
        {[](TFontes& f) { f.colunas[1][4] = 60; }, {"versao-igual TCLIENTE."}},
        {[](TFontes& f) { f.tabelas[0][2] = 2; }, {"versao-menor TCLIENTE."}},
        {[](TFontes& f) {
             f.colunas[1][3] = "ftInteger";
             f.tabelas[0][2] = 4;
         },
         {"tipo-mudou TCLIENTE.NOME"}},
        {[](TFontes& f) {
             f.colunas[0][3] = "ftString";
             f.tabelas[0][2] = 4;
         },
         {}},
        {[](TFontes& f) {
             f.colunas.erase(f.colunas.begin() + 2);
             f.tabelas[0][2] = 4;
         },
         {"coluna-sumiu TCLIENTE.SALDO"}},
        {[](TFontes& f) {
             f.tabelas.pop_back();
             f.colunas.pop_back();
         },
         {"tabela-sumiu TVENDA."}},
    };
    Pacote("antes.zip", [](TFontes&) {});
    for (const auto& caso : casos) {
        Pacote("p.zip", caso.muda);
        EXPECT_EQ(Achados({"confere", "p.zip", "--anterior", "antes.zip"}), caso.achados);
    }
}

}  // namespace
}  // namespace wkd
