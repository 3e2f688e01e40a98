#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "ConexaoGravada.h"
#include "rows/ClientDataSet.h"

namespace wkd {
namespace {

using TPares = std::vector<std::string>;

TPares Visiveis(TClientDataSet& dados) {
    TPares pares;
    for (dados.First(); !dados.Eof(); dados.Next()) pares.push_back(dados.Texto("GRUPO") + dados.Texto("NOME"));
    return pares;
}

class ClientDataSetAleatorio : public testing::TestWithParam<unsigned> {
  protected:
    ClientDataSetAleatorio() : acaso(GetParam()) {
        conexao.resposta.campos = {{.nome = "GRUPO"}, {.nome = "NOME"}};
        for (int i = 0; i < 12; ++i) conexao.resposta.linhas.push_back({Um("ab"), Um("wxyz")});
        mestre.Carrega({{{.nome = "G"}}, {{"a"}, {"b"}, {"c"}}});
        dados.SetProvedor({&conexao, "select", "T", {"GRUPO", "NOME"}});
        dados.Open();
    }

    std::string Um(std::string_view letras) { return std::string(1, letras[acaso() % letras.size()]); }

    void MudaUmaLinha() {
        mestre.Locate("G", {Um("abc")});
        dados.Locate("NOME", {Um("wxyz")});
        switch (dados.Eof() ? 0 : acaso() % 4) {
            case 3:
                return dados.Delete();
            case 0:
                dados.Append();
                break;
            default:
                dados.Edit();
        }
        dados.SetValor("GRUPO", Um("ab"));
        dados.SetValor("NOME", Um("wxyz"));
        dados.Post();
    }

    /// Link, order and filter of one round; by hand is what they should show of all rows.
    void MudaAVista() {
        ligado = acaso() % 2;
        filtrado = acaso() % 2;
        dados.SetIndexFieldNames(ligado ? "GRUPO" : "NOME;GRUPO");
        dados.SetMaster(ligado ? &mestre : nullptr, ligado ? "G" : "");
        dados.SetFilter("nome", {"X", "y"});
        dados.SetFiltered(filtrado);
    }
    TPares TodasAsLinhas() {
        dados.SetMaster(nullptr, "");
        dados.SetIndexFieldNames("");
        dados.SetFiltered(false);
        return Visiveis(dados);
    }
    TPares AMao(TPares pares) {
        const char grupo = mestre.Texto("G")[0];
        std::erase_if(pares, [&](const std::string& par) {
            return (ligado && par[0] != grupo) || (filtrado && par[1] != 'x' && par[1] != 'y');
        });
        const auto porNome = [](const std::string& a, const std::string& b) {
            return std::string(a.rbegin(), a.rend()) < std::string(b.rbegin(), b.rend());
        };
        if (!ligado) std::stable_sort(pares.begin(), pares.end(), porNome);
        return pares;
    }

    std::mt19937 acaso;
    TConexaoGravada conexao;
    TClientDataSet mestre, dados;
    bool ligado = false, filtrado = false;
};

TEST_P(ClientDataSetAleatorio, AViewKeptStepByStepIsThatOfAllRows) {
    const TPares gravadas = Visiveis(dados);
    for (int rodada = 0; rodada < 60; ++rodada) {
        MudaAVista();
        for (int i = 0; i < 3; ++i) MudaUmaLinha();
        const TPares vistas = Visiveis(dados);
        const TPares todas = TodasAsLinhas();
        ASSERT_EQ(vistas, AMao(todas)) << "rodada " << rodada;
        for (const char* grupo : {"a", "b"})
            for (const char* nome : {"w", "x", "y", "z"}) {
                const bool existe = std::count(todas.begin(), todas.end(), std::string(grupo) + nome) > 0;
                ASSERT_EQ(dados.Existe("NOME;GRUPO", {nome, grupo}), existe);
            }
    }
    dados.CancelUpdates();
    EXPECT_EQ(Visiveis(dados), gravadas);
    EXPECT_EQ(dados.ChangeCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Sementes, ClientDataSetAleatorio, testing::Range(1u, 21u));

}  // namespace
}  // namespace wkd
