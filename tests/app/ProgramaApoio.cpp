#include "ProgramaApoio.h"

#include <gtest/gtest.h>

#include "Arquivos.h"
#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "Retrato.h"
#include "firebird/ConexaoFirebird.h"
#include "package/Pacote.h"

namespace wkd {

namespace fs = std::filesystem;

TProgramaInstalado::TProgramaInstalado() {
    fs::copy_file(WKD_PROGRAMA, pasta_ / "AtualizaWKD");
    fs::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
    fs::copy(fs::path(WKD_EXEMPLOS) / "pacote", PastaDoPacote());
    fs::create_directory(pasta_ / "tmp");
    Escreve("WKD.ini", SecaoDoAlias("LOJA", pasta_.Caminho(), "loja.fdb"));
    Empacota();
}

TSaidaDePrograma TProgramaInstalado::Roda(const std::vector<std::string>& argumentos,
                                          const std::string& entrada) const {
    return RodaPrograma("./AtualizaWKD", argumentos, pasta_.Caminho(), entrada);
}

std::string TProgramaInstalado::Arquivo(const fs::path& nome) const { return LeArquivo(pasta_ / nome); }

void TProgramaInstalado::Escreve(const fs::path& nome, std::string_view bytes) const {
    EscreveArquivo(pasta_ / nome, bytes);
}

void TProgramaInstalado::Empacota() const {
    std::vector<fs::path> arquivos;
    for (const auto& entrada : fs::directory_iterator(PastaDoPacote())) arquivos.push_back(entrada.path());
    CompactaZip(arquivos, pasta_ / "pacote.zip");
}

std::unique_ptr<TConnection> TProgramaInstalado::Banco() const {
    auto conexao = CriaConexaoFirebird(ParametrosFirebird(pasta_ / "loja.fdb"));
    conexao->Open();
    return conexao;
}

std::string TProgramaInstalado::Retrato() const { return wkd::Retrato(*Banco()); }

void NoPacote(const TProgramaInstalado& loja, const std::string& arquivo, const std::string& de,
              const std::string& para) {
    std::string texto = loja.Arquivo("fontes/" + arquivo);
    const auto onde = texto.find(de);
    ASSERT_NE(onde, std::string::npos) << de;
    loja.Escreve("fontes/" + arquivo, texto.replace(onde, de.size(), para));
    loja.Empacota();
}

}  // namespace wkd
