#include "CompactaZip.h"

#include <zip.h>

#include <memory>
#include <string>

#include "Caminho.h"
#include "EscritaSegura.h"
#include "Pacote.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Falha(const fs::path& arquivoZip, const std::string& causa) {
    throw TErroPacote("Não foi possível gravar '" + TextoDoCaminho(arquivoZip) + "': " + causa +
                      ". Verifique a pasta, as permissões e o espaço em disco.");
}

struct TDescarta {
    void operator()(zip_t* zip) const { zip_discard(zip); }
};
using TZip = std::unique_ptr<zip_t, TDescarta>;

TZip Cria(const fs::path& arquivoZip) {
    std::error_code erro;
    if (arquivoZip.has_parent_path()) fs::create_directories(arquivoZip.parent_path(), erro);
    if (erro) Falha(arquivoZip, erro.message());
    int codigo = 0;
    TZip zip(zip_open(TextoDoCaminho(arquivoZip).c_str(), ZIP_CREATE | ZIP_TRUNCATE, &codigo));
    if (zip) return zip;
    zip_error_t causa;
    zip_error_init_with_code(&causa, codigo);
    const std::string texto = zip_error_strerror(&causa);
    zip_error_fini(&causa);
    Falha(arquivoZip, texto);
}

void Acrescenta(const TZip& zip, const fs::path& arquivo, const fs::path& arquivoZip) {
    zip_source_t* fonte = zip_source_file(zip.get(), TextoDoCaminho(arquivo).c_str(), 0, 0);
    if (fonte && zip_file_add(zip.get(), NomeDoArquivo(arquivo).c_str(), fonte, ZIP_FL_ENC_UTF_8) >= 0) return;
    const std::string causa = zip_strerror(zip.get());
    if (fonte) zip_source_free(fonte);
    Falha(arquivoZip, causa);
}

}  // namespace

void CompactaZip(const std::vector<fs::path>& arquivos, const fs::path& arquivoZip) {
    fs::path novo = arquivoZip;
    novo += ".novo";
    TZip zip = Cria(novo);
    for (const fs::path& arquivo : arquivos) Acrescenta(zip, arquivo, arquivoZip);
    if (zip_close(zip.get()) != 0) Falha(arquivoZip, zip_strerror(zip.get()));
    static_cast<void>(zip.release());  // the library has freed it
    try {
        SubstituiPor(novo, arquivoZip);
    } catch (const std::system_error& erro) {
        Falha(arquivoZip, erro.code().message());
    }
}

}  // namespace wkd
