#include "ContratoDriver.h"
#include "values/Texto.h"

namespace wkd {
namespace {

std::string Descricao(const std::vector<TColunaFisica>& colunas) {
    std::string texto;
    for (const auto& c : colunas)
        texto += (texto.empty() ? "" : ", ") + c.nome + ":" + std::to_string(static_cast<int>(c.tipo)) + ":" +
                 std::to_string(c.tamanho) + ":" + std::to_string(c.escala) + (c.requerido ? "!" : "");
    return texto;
}

TEST_P(ContratoDriver, ATableMadeFromTheReadTypesIsTheSameTable) {
    if (!Completo()) GTEST_SKIP() << "not of every server";
    Executa(
        "create table T (A integer not null, B varchar(30) default 'é x' not null, C char(3), D numeric(15,2),"
        " E smallint, F bigint, G " +
        Tipo("double precision") + ", H " + Tipo("timestamp") + ", I date, J time, K " + Tipo("blob sub_type 0") +
        ", L " + Tipo("blob sub_type 1") + ", M " + Tipo("boolean") + ", constraint PK_T primary key (B, A))");
    const auto colunas = Conexao().Colunas("t");
    ASSERT_EQ(colunas.size(), 13u);
    EXPECT_TRUE(colunas[0].requerido);
    EXPECT_EQ(colunas[1].tamanho, 30);
    EXPECT_NE(colunas[1].padrao.find("'é x'"), std::string::npos) << colunas[1].padrao;
    EXPECT_EQ(colunas[3].tipo, TTipoDado::Decimal);
    EXPECT_EQ(colunas[3].escala, 2);

    std::string sql;
    for (const auto& c : colunas)
        sql += (sql.empty() ? "" : ", ") + c.nome + " " + c.tipoSql + (c.padrao.empty() ? "" : " default " + c.padrao) +
               (c.requerido ? " not null" : "");
    Executa("create table T2 (" + sql + ")");
    EXPECT_EQ(Descricao(Conexao().Colunas("T2")), Descricao(colunas));
    const auto todas = Conexao().TodasAsColunas();
    ASSERT_EQ(todas.size(), 2u);
    EXPECT_EQ(Descricao(todas.at("T2")), Descricao(colunas));
    if (const auto algumas = Conexao().ColunasDe({"T2", "NADA"})) {
        ASSERT_EQ(algumas->size(), 1u);
        EXPECT_EQ(Descricao(algumas->at("T2")), Descricao(colunas));
    }
    EXPECT_EQ(Conexao().NomesDeTabelas().size(), 2u);
    EXPECT_TRUE(Conexao().Colunas("NADA").empty());
}

TEST_P(ContratoDriver, KeysAndIndexesAreTold) {
    if (!Completo()) GTEST_SKIP() << "not of every server";
    Executa("create table P (A integer not null primary key)");
    Executa(
        "create table T (A integer not null, B integer not null, C integer references P (A),"
        " constraint PK_T primary key (B, A), constraint UN_T unique (C, B))");
    Executa(GetParam().nome.starts_with("Firebird") ? "create descending index IX_T on T (A)"
                                                    : "create index IX_T on T (A desc)");
    const auto chave = Conexao().ChavePrimaria("T");
    EXPECT_EQ(Maiusculas(chave.nome), "PK_T");
    EXPECT_EQ(chave.colunas, (std::vector<std::string>{"B", "A"}));
    EXPECT_EQ(Conexao().ChavePrimaria("NADA").nome, "");
    const auto todas = Conexao().TodasAsChaves();
    EXPECT_EQ(todas.size(), 2u) << "of tables that have one";
    EXPECT_EQ(Maiusculas(todas.at("T").nome), "PK_T");
    EXPECT_EQ(Maiusculas(Junta(todas.at("T").colunas, ",")), "B,A");  // an emulation of the server tells them small
    EXPECT_TRUE(Conexao().ExisteTabela("t"));
    EXPECT_FALSE(Conexao().ExisteTabela("UN_T"));
    bool simples = false, descendente = false, unico = false;
    for (const auto& indice : Conexao().Indices("T")) {
        const auto nome = Maiusculas(indice.nome);
        EXPECT_NE(nome, "PK_T");
        if (nome == "IX_T") simples = !indice.unico && indice.restricao.empty();
        if (nome == "IX_T") descendente = indice.descendente;
        if (Maiusculas(indice.restricao) == "UN_T")
            unico = indice.unico && indice.colunas == std::vector<std::string>{"C", "B"};
    }
    EXPECT_TRUE(simples);
    EXPECT_TRUE(descendente || GetParam().codigoSemNumero != 0);  // an emulation of the server hides it
    EXPECT_TRUE(unico);
    EXPECT_TRUE(Conexao().Indices("NADA").empty());
}

}  // namespace
}  // namespace wkd
