#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Arquivos.h"
#include "PastaTemporaria.h"
#include "Programa.h"
#include "package/Pacote.h"
#include "packet/DataPacket.h"

namespace wkd {

/// Packet whose only blob, longer than what is read with its row, is no Base64.
inline std::string ComBlobDanificado() {
    return R"(<DATAPACKET><METADATA><FIELDS><FIELD attrname="A" fieldtype="bin.hex" SUBTYPE="Binary"/></FIELDS>)"
           "</METADATA><ROWDATA><ROW A=\"" +
           std::string(8000, 'A') + "!\"/></ROWDATA></DATAPACKET>";
}

/// PacoteWKD in a folder of its own, run from outside; packages are made of the folder "fontes".
class TPacoteTest : public ::testing::Test {
  protected:
    TPacoteTest() {
        for (const char* pasta : {"tmp", "fontes"}) std::filesystem::create_directory(pasta_ / pasta);
        std::filesystem::copy_file(WKD_PROGRAMA, pasta_ / "PacoteWKD");
    }

    TSaidaDePrograma Roda(const std::vector<std::string>& argumentos) const {
        return RodaPrograma("./PacoteWKD", argumentos, pasta_.Caminho());
    }
    /// What the command prints with --json.
    nlohmann::json Json(std::vector<std::string> argumentos, int codigo = 0) const {
        argumentos.push_back("--json");
        const auto rodada = Roda(argumentos);
        EXPECT_EQ(rodada.codigo, codigo) << rodada.saida << rodada.erros;
        return nlohmann::json::parse(rodada.saida, nullptr, false);
    }
    void Fonte(const std::filesystem::path& nome, std::string_view bytes) const {
        EscreveArquivo(pasta_ / "fontes" / nome, bytes);
    }
    void CopiaExemplo() const {
        std::filesystem::copy(std::filesystem::path(WKD_EXEMPLOS) / "pacote", pasta_ / "fontes");
    }
    /// Files of a package, in the folder that is returned.
    std::filesystem::path Extrai(const std::string& pacote) const {
        const auto destino = pasta_ / (pacote + ".dir");
        std::filesystem::create_directory(destino);
        EXPECT_TRUE(ExtraiPacote(pasta_ / pacote, destino, {}).empty());
        return destino;
    }

    TPastaTemporaria pasta_;
};

}  // namespace wkd
