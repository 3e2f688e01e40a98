#include "tables/DefinicaoCampo.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace wkd {
namespace {

TEST(DefinicaoCampo, TypesHaveTheirTextOnEveryServer) {
    struct TCaso {
        std::vector<const char*> tipos;
        std::array<const char*, 5> textos;
    };
    const TCaso casos[] = {
        {{"ftString", "FTGUID", "guid"}, {" varchar (20)", " varchar (20)", " Nvarchar2 (20)", " Nvarchar (20)", ""}},
        {{"ftInteger", "ftSmallint", "ftBoolean", "ftWord", "ftAutoInc", "FTLARGEINT"},
         {" integer ", " int ", " number (9) ", " int ", ""}},
        {{"ftFloat", "ftCurrency"}, {" double Precision ", " double ", " number ", " float  ", ""}},
        {{"ftDate"}, {" Date ", " date ", " date  ", " datetime  ", ""}},
        {{"ftTime"}, {" time ", " time ", " TIMESTAMP  ", " datetime  ", ""}},
        {{"ftDateTime"}, {" TIMESTAMP ", " datetime ", " TIMESTAMP  ", " datetime  ", ""}},
        {{"ftBlob", "ftMemo", " ftGraphic "},
         {" BLOB SUB_TYPE 0 SEGMENT SIZE 80 ", " LONGBLOB ", " BLOB  ", " image ", ""}},
        {{"ftAggregate", "ftTimeStamp", ""}, {"", "", "", "", ""}},
    };
    for (const auto& [tipos, textos] : casos)
        for (const char* tipo : tipos)
            for (std::size_t banco = 0; banco < textos.size(); ++banco)
                EXPECT_EQ(DefinicaoCampo({"C", tipo, "20", "", "", 0}, static_cast<TTipoBanco>(banco)), textos[banco])
                    << tipo << " on " << TipoBancoToStr(static_cast<TTipoBanco>(banco));
    EXPECT_FALSE(TipoConhecido("ftAggregate"));
    EXPECT_TRUE(TipoConhecido("GUID"));
}

TEST(DefinicaoCampo, SizeDefaultAndKeyFollowTheTypeInThatOrder) {
    struct TCaso {
        TColunaDicionario coluna;
        const char* definicao;
    };
    const TCaso casos[] = {
        {{"C", "ftString", "", "", "", 0}, " varchar (150)"},
        {{"C", "ftString", "0", "", "", 0}, " varchar (150)"},
        {{"C", "ftString", "1", "S", "", 0}, " varchar (1)default 'S'"},
        {{"C", "ftString", "1", "S", "", 1}, " varchar (1)default 'S' not null "},
        {{"C", "ftString", "9", "D'AGUA, S", " ", 0}, " varchar (9)default 'D''AGUA, S'"},
        {{"C", "ftString", "1", "S", "A+B", 0}, " varchar (1)"},
        {{"C", "ftInteger", "0", "7", "", 1}, " integer default '7' not null "},
        {{"C", "ftFloat", "", "1,5", "", 0}, " double Precision default '1.5'"},
        {{"C", "ftDate", "", "HOJE", "", 0}, " Date "},
        {{"C", "ftBlob", "", "X", "", 2}, " BLOB SUB_TYPE 0 SEGMENT SIZE 80 "},
    };
    for (const auto& [coluna, definicao] : casos) EXPECT_EQ(DefinicaoCampo(coluna, TTipoBanco::tbInterbase), definicao);
}

TEST(DefinicaoCampo, CalculatedAndAggregateColumnsAreNotPhysical) {
    EXPECT_TRUE(ColunaFisica({"C", "ftString", "", "", "  ", 0}));
    EXPECT_FALSE(ColunaFisica({"C", "ftString", "", "", "A * B", 0}));
    EXPECT_FALSE(ColunaFisica({"C", "FTAGGREGATE", "", "", "", 0}));
}

}  // namespace
}  // namespace wkd
