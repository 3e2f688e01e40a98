#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <fstream>
#include <string>
#include <vector>

#include "Arquivos.h"
#include "Linhas.h"
#include "ModuloTemporario.h"
#include "package/Caminho.h"
#include "package/Pacote.h"

namespace wkd {

/// A business database with the tables of layouts and system files, the working directory of a package, and a reports
/// folder. Statements are recorded.
class TAssetsTest : public ::testing::Test {
  protected:
    explicit TAssetsTest(std::string_view conjunto = "UTF8") : modulo_(conjunto) {
        Dm().nomeAlias = " tbInterbase ";
        Dm().SQLConnection1.Observa([this](std::string_view sql) { comandos_.emplace_back(sql); });
        Executa("create table TRELATORIOS (NOME varchar(100), DESCRICAO varchar(100), ARQUIVO blob, EXPORTA integer)");
        Executa(
            "create table TARQ_VER (ARQUIVO varchar(100), VERSAO varchar(20) default 'nova', DATA date, CONTEUDO "
            "blob)");
        std::filesystem::create_directory(Relatorios());
        DefineRelatorios(TextoDoCaminho(Relatorios()));
        comandos_.clear();
    }

    TDataModulo& Dm() { return modulo_.Modulo(); }
    TTelaDeTeste& Tela() { return modulo_.Tela(); }
    std::filesystem::path Relatorios() const { return modulo_.Pasta() / "relatórios"; }
    void DefineRelatorios(const std::string& pasta) { Ini().INIGravaString("tbInterbase", "RELATORIO", pasta); }
    const TAliases& Ini() { return Dm().SQLConnection1.Aliases(); }

    void Executa(const std::string& sql) {
        const TResultado resultado = Dm().Executa(sql);
        ASSERT_TRUE(resultado) << resultado.Mensagem();
    }
    std::string Linhas(std::string_view sql) { return wkd::Linhas(Dm().SQLConnection1, sql); }
    std::ptrdiff_t Executados(std::string_view comando) const { return std::ranges::count(comandos_, comando); }
    /// Bytes of the only field of the only row.
    std::string Bytes(const std::string& sql) {
        TWKDQuery q(Dm().SQLConnection1, sql);
        q.Open();
        return q.Eof() ? "nenhuma linha" : q.Comando().Valor(0).ComoBytes();
    }

    TPastaTemporaria temporaria_;
    TPastaDeTrabalho pacote_{temporaria_.Caminho()};
    TModuloTemporario modulo_;
    std::vector<std::string> comandos_;
};

/// Writes a file of that size whose bytes do not repeat within a block.
inline void EscreveGrande(const std::filesystem::path& caminho, std::size_t tamanho) {
    std::string bloco(1 << 16, '\0');
    std::ofstream arquivo(caminho, std::ios::binary);
    for (std::size_t escrito = 0; escrito < tamanho; escrito += bloco.size()) {
        for (std::size_t i = 0; i < bloco.size(); ++i) bloco[i] = static_cast<char>((escrito >> 16) * 31 + i * 7);
        arquivo.write(bloco.data(), static_cast<std::streamsize>(std::min(bloco.size(), tamanho - escrito)));
    }
}

/// Whether a blob holds the bytes of a file, both read in pieces.
inline bool Iguais(const TValor& blob, const std::filesystem::path& caminho) {
    const auto* conteudo = blob.Se<std::shared_ptr<const TConteudo>>();
    if (!conteudo) return blob.ComoBytes() == LeArquivo(caminho);
    std::ifstream arquivo(caminho, std::ios::binary);
    const auto leitor = (*conteudo)->Abre();
    std::vector<char> doBlob(1 << 15), doArquivo;
    while (const std::size_t lidos = leitor->Le(doBlob)) {
        doArquivo.resize(lidos);
        if (!arquivo.read(doArquivo.data(), static_cast<std::streamsize>(lidos))) return false;
        if (!std::equal(doArquivo.begin(), doArquivo.end(), doBlob.begin())) return false;
    }
    return arquivo.peek() == std::ifstream::traits_type::eof();
}

/// While it lives, the process may take that much memory more than it has; files that are mapped for reading aside.
/// No limit under the address sanitizer, which keeps freed memory back.
class TLimiteDeMemoria {
  public:
    explicit TLimiteDeMemoria([[maybe_unused]] std::size_t folga) {
        getrlimit(RLIMIT_DATA, &antes_);
#if !defined(__SANITIZE_ADDRESS__)
        rlimit limite = antes_;
        limite.rlim_cur = EmUso() + folga;
        setrlimit(RLIMIT_DATA, &limite);
#endif
    }
    ~TLimiteDeMemoria() { setrlimit(RLIMIT_DATA, &antes_); }
    TLimiteDeMemoria(const TLimiteDeMemoria&) = delete;
    TLimiteDeMemoria& operator=(const TLimiteDeMemoria&) = delete;

  private:
    [[maybe_unused]] static std::size_t EmUso() {
        std::ifstream estado("/proc/self/status");
        for (std::string linha; std::getline(estado, linha);)
            if (linha.starts_with("VmData:")) return std::stoul(linha.substr(7)) * 1024;
        return 0;
    }

    rlimit antes_{};
};

/// A file system of its own in a folder: small, and of read only when asked for. Only root may have one.
class TSistemaDeArquivos {
  public:
    TSistemaDeArquivos(const std::filesystem::path& pasta, const char* opcoes) : pasta_(pasta) {
        std::filesystem::create_directories(pasta);
        montado_ = mount("tmpfs", pasta_.c_str(), "tmpfs", 0, opcoes) == 0;
    }
    ~TSistemaDeArquivos() {
        if (montado_) umount2(pasta_.c_str(), MNT_DETACH);
    }
    TSistemaDeArquivos(const TSistemaDeArquivos&) = delete;
    TSistemaDeArquivos& operator=(const TSistemaDeArquivos&) = delete;

    bool Montado() const { return montado_; }
    bool SoLeitura() const { return mount("tmpfs", pasta_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0; }

  private:
    std::filesystem::path pasta_;
    bool montado_ = false;
};

}  // namespace wkd
