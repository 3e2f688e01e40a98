#include "DicionarioDoPacote.h"

namespace wkd {

namespace {

TDataPacket Le(const std::filesystem::path& arquivo, std::string_view nome,
               std::initializer_list<std::string_view> colunas) {
    if (arquivo.empty())
        throw TErroPacote("O pacote não contém o arquivo " + std::string(nome) + ". É preciso um pacote completo.");
    TDataPacket pacote = LePacote(arquivo);
    ExigeCampos(pacote, arquivo, colunas);
    if (pacote.linhas.empty())
        throw TErroPacote("O arquivo " + std::string(nome) + " do pacote está vazio. É preciso um pacote completo.");
    return pacote;
}

}  // namespace

TDataPacket LeSarquivo(const std::filesystem::path& arquivo) {
    return Le(arquivo, kSarquivo, {"COD_MODULO", "NOME_ARQUIVO", "VERSAO"});
}

TDataPacket LeSatrib(const std::filesystem::path& arquivo) {
    return Le(arquivo, kSatrib, {"ARQUIVO", "NOME", "TIPO", "TAMANHO", "CHAVE_DE_PESQUISA"});
}

}  // namespace wkd
