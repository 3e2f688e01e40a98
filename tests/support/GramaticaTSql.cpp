#include "GramaticaTSql.h"

#include <cstdlib>

#include "Arquivos.h"
#include "PastaTemporaria.h"
#include "values/Texto.h"

namespace wkd {

std::optional<std::set<std::string>> RecusadosPelaGramatica(const std::vector<std::string>& comandos) {
    if (std::system("command -v sqlfluff >/dev/null") != 0) return std::nullopt;
    const TPastaTemporaria pasta;
    EscreveArquivo(pasta / ".sqlfluff", "[sqlfluff]\ndialect = tsql\ntemplater = raw\nencoding = utf-8\n");
    for (std::size_t i = 0; i < comandos.size(); ++i)
        EscreveArquivo(pasta / (std::to_string(i) + ".sql"), comandos[i] + "\n");
    const auto lint =
        "cd '" + pasta.Caminho().string() + "' && sqlfluff lint --rules L001 --processes 2 . > saida.txt 2>&1";
    if (std::system(lint.c_str()) == -1) return std::nullopt;
    std::set<std::string> recusados;
    std::string arquivo;
    for (const auto& linha : Divide(LeArquivo(pasta / "saida.txt"), '\n')) {
        const auto tem = [&linha](const char* marca) { return linha.find(marca) != std::string::npos; };
        if (linha.starts_with("== [")) arquivo = linha.substr(4, linha.find(".sql") - 4);
        if (tem(" PRS |") || tem(" LXR |")) recusados.insert(comandos.at(std::stoul(arquivo)));
    }
    return recusados;
}

}  // namespace wkd
