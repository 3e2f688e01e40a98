#include <zip.h>
#ifndef _WIN32
#include <sys/resource.h>
#include <csignal>
#endif

#include "PacotesDeTeste.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

struct TEntrada {
    std::string nome;
    std::string conteudo;
    zip_uint32_t modo = 0;  // 0: none in the archive
    bool codigoDos = false;
};

fs::path CriaZip(const fs::path& arquivo, const std::vector<TEntrada>& entradas) {
    auto* zip = zip_open(arquivo.string().c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    for (const auto& entrada : entradas) {
        auto* fonte = zip_source_buffer(zip, entrada.conteudo.data(), entrada.conteudo.size(), 0);
        const auto indice = zip_file_add(zip, entrada.nome.c_str(), fonte, entrada.codigoDos ? ZIP_FL_ENC_CP437 : 0);
        EXPECT_GE(indice, 0) << zip_strerror(zip);
        if (entrada.modo != 0)
            zip_file_set_external_attributes(zip, static_cast<zip_uint64_t>(indice), 0, ZIP_OPSYS_UNIX,
                                             entrada.modo << 16);
    }
    EXPECT_EQ(zip_close(zip), 0);
    return arquivo;
}

class ExtraiPacoteTest : public testing::Test {
  protected:
    ExtraiPacoteTest() { fs::create_directory(destino); }

    std::string Erro(const TLimitesDoPacote& limites = {}) {
        try {
            ExtraiPacote(zip, destino, {}, limites);
            return {};
        } catch (const TErroPacote& erro) {
            return erro.what();
        }
    }

    /// Relative names of all files below the destination.
    std::vector<std::string> Extraidos() const {
        std::vector<std::string> nomes;
        for (const auto& entrada : fs::recursive_directory_iterator(destino))
            if (!entrada.is_directory()) nomes.push_back(entrada.path().lexically_relative(destino).generic_string());
        std::sort(nomes.begin(), nomes.end());
        return nomes;
    }

    TPastaTemporaria pasta;
    fs::path zip = pasta / "pacote.zip";
    fs::path destino = pasta / "destino";
};

TEST_F(ExtraiPacoteTest, ExtractsAllWithProgressByBytes) {
    const std::string grande(1'000'000, 'g');
    CriaZip(zip, {{"SARQUIVO.WKD", "um"},
                  {"sub/pasta\\REL.RTM", grande},
                  {"vazia/", ""},
                  {"AÇÃO.wkd", "dois"},
                  {"\x80.wkd", "três", 0, true}});
    std::vector<int> avisos;
    EXPECT_TRUE(ExtraiPacote(zip, destino, [&](int p) { avisos.push_back(p); }).empty());
    EXPECT_EQ(Extraidos(), (std::vector<std::string>{"AÇÃO.wkd", "SARQUIVO.WKD", "sub/pasta/REL.RTM", "Ç.wkd"}));
    EXPECT_EQ(LeArquivo(destino / "sub/pasta/REL.RTM"), grande);
    EXPECT_TRUE(fs::is_directory(destino / "vazia"));
    EXPECT_TRUE(std::is_sorted(avisos.begin(), avisos.end()));
    EXPECT_EQ(avisos.front(), 0);
    EXPECT_EQ(avisos.back(), 100);
    EXPECT_GT(avisos.size(), 5u);
}

TEST_F(ExtraiPacoteTest, RefusesAndReportsHostileEntriesAndExtractsTheOthers) {
    const std::vector<TEntrada> hostis = {{"../fora.wkd", "x"},
                                          {"sub/../../fora.wkd", "x"},
                                          {"..\\fora.wkd", "x"},
                                          {"/tmp/fora.wkd", "x"},
                                          {"\\fora.wkd", "x"},
                                          {"C:\\fora.wkd", "x"},
                                          {"c:fora.wkd", "x"},
                                          {"a.wkd:fluxo", "x"},
                                          {"a\nb.wkd", "x"},
                                          {"sub/CON.wkd", "x"},
                                          {"com7", "x"},
                                          {"ponto./a.wkd", "x"},
                                          {"branco ", "x"},
                                          {"a?.wkd", "x"},
                                          {"link", "/etc", 0120777},
                                          {"cano", "", 0010600},
                                          {"./", ""}};
    auto entradas = hostis;
    entradas.push_back({"link/passwd.wkd", "dentro"});
    entradas.push_back({"bom.wkd", "bom", 0104755});
    CriaZip(zip, entradas);
    const auto relatos = ExtraiPacote(zip, destino, {});
    ASSERT_EQ(relatos.size(), hostis.size());
    for (std::size_t i = 0; i < hostis.size(); ++i)
        EXPECT_TRUE(Contem(relatos[i], "'" + hostis[i].nome + "'")) << relatos[i];
    EXPECT_EQ(Extraidos(), (std::vector<std::string>{"bom.wkd", "link/passwd.wkd"}));
    EXPECT_EQ(std::distance(fs::directory_iterator(pasta.Caminho()), {}), 2);
    EXPECT_EQ(fs::status(destino / "bom.wkd").permissions() & fs::perms::set_uid, fs::perms::none);
}

TEST_F(ExtraiPacoteTest, RepeatedAndConflictingNamesAreReported) {
    CriaZip(zip, {{"sarquivo.wkd", "velho"},
                  {"SARQUIVO.WKD", "novo"},
                  {"Sub/a", "1"},
                  {"SUB/b", "2"},
                  {"arq", "3"},
                  {"arq/dentro", "4"},
                  {"sub", "5"}});
    const auto relatos = ExtraiPacote(zip, destino, {});
    EXPECT_EQ(relatos.size(), 3u);
    EXPECT_EQ(Extraidos(), (std::vector<std::string>{"SARQUIVO.WKD", "Sub/a", "Sub/b", "arq"}));
    EXPECT_EQ(LeArquivo(destino / "SARQUIVO.WKD"), "novo");
}

#ifndef _WIN32
TEST_F(ExtraiPacoteTest, WritesThroughNoLinkThatWasThere) {
    fs::create_directory(pasta / "alheia");
    EscreveArquivo(pasta / "alheia/alvo.wkd", "intacto");
    fs::create_directory_symlink(pasta / "alheia", destino / "sub");
    fs::create_symlink(pasta / "alheia/alvo.wkd", destino / "alvo.wkd");
    CriaZip(zip, {{"sub/novo.wkd", "x"}, {"alvo.wkd", "y"}});
    EXPECT_EQ(ExtraiPacote(zip, destino, {}).size(), 1u);
    EXPECT_EQ(LeArquivo(pasta / "alheia/alvo.wkd"), "intacto");
    EXPECT_FALSE(fs::exists(pasta / "alheia/novo.wkd"));
    EXPECT_FALSE(fs::is_symlink(destino / "alvo.wkd"));
}

#endif

TEST_F(ExtraiPacoteTest, EachUselessPackageHasItsMessage) {
    EXPECT_TRUE(Contem(Erro(), "não existe")) << Erro();
    EscreveArquivo(zip, "isto não é um zip");
    EXPECT_TRUE(Contem(Erro(), "não é um arquivo zip") && Contem(Erro(), "Baixe o pacote de novo")) << Erro();
    EscreveArquivo(zip, "");
    EXPECT_TRUE(Contem(Erro(), "pacote.zip")) << Erro();
    fs::remove(zip);
    fs::create_directory(zip);
    EXPECT_TRUE(Contem(Erro(), "é uma pasta")) << Erro();
}

TEST_F(ExtraiPacoteTest, ACutOrChangedFileIsTold) {
    std::string conteudo;
    for (int i = 0; i < 20'000; ++i) conteudo += std::to_string(i * i % 977);
    CriaZip(zip, {{"DADOS.WKD", conteudo}, {"B.WKD", "b"}});
    const auto inteiro = LeArquivo(zip);
    for (const auto tamanho : {inteiro.size() - 1, inteiro.size() / 2, std::size_t{40}, std::size_t{1}}) {
        EscreveArquivo(zip, inteiro.substr(0, tamanho));
        EXPECT_TRUE(Contem(Erro(), "Baixe o pacote de novo")) << tamanho << ": " << Erro();
    }
    const auto dados = inteiro.find("PK\3\4", 4);
    for (const std::size_t posicao : {std::size_t{60}, dados / 3, dados / 2}) {
        auto trocado = inteiro;
        trocado[posicao] = static_cast<char>(trocado[posicao] ^ 0x55);
        EscreveArquivo(zip, trocado);
        EXPECT_TRUE(Contem(Erro(), "'DADOS.WKD'")) << posicao << ": " << Erro();
    }
}

TEST_F(ExtraiPacoteTest, EachLimitHasItsMessage) {
    CriaZip(zip, {{"a", std::string(300'000, '\0')}, {"b", "b"}, {"c", "c"}});
    EXPECT_EQ(Erro(), "");
    EXPECT_TRUE(Contem(Erro({.entradas = 2}), "3 arquivos; o limite é 2")) << Erro({.entradas = 2});
    EXPECT_TRUE(Contem(Erro({.bytes = 299'999}), "limite de 299999 bytes"));
    EXPECT_TRUE(Contem(Erro({.razao = 100, .bytesLivres = 1000}), "100 vezes"));
    EXPECT_EQ(Erro({.razao = 100}), "");
}

TEST_F(ExtraiPacoteTest, TheLimitCountsWhatComesOutNotWhatIsDeclared) {
    CriaZip(zip, {{"a", std::string(300'000, '\0')}});
    auto bytes = LeArquivo(zip);
    const auto diretorio = bytes.find("PK\1\2");
    ASSERT_NE(diretorio, std::string::npos);
    bytes.replace(22, 4, U32(10));              // size in the local header
    bytes.replace(diretorio + 24, 4, U32(10));  // and in the directory
    EscreveArquivo(zip, bytes);
    EXPECT_FALSE(Erro({.bytes = 1000}).empty());
    EXPECT_LE(fs::exists(destino / "a") ? fs::file_size(destino / "a") : 0, 1000u);
}

#ifndef _WIN32
TEST_F(ExtraiPacoteTest, AFullDiskNamesTheFileAndTheCause) {
    CriaZip(zip, {{"GRANDE.WKD", std::string(200'000, 'x')}});
    struct rlimit antes {};
    getrlimit(RLIMIT_FSIZE, &antes);
    const auto sinal = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit pouco { 50'000, antes.rlim_max };
    setrlimit(RLIMIT_FSIZE, &pouco);
    const auto erro = Erro();
    setrlimit(RLIMIT_FSIZE, &antes);
    std::signal(SIGXFSZ, sinal);
    EXPECT_TRUE(Contem(erro, "Não foi possível gravar") && Contem(erro, "GRANDE.WKD")) << erro;
}
#endif

}  // namespace
}  // namespace wkd
