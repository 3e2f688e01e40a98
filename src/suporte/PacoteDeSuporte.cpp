#include "PacoteDeSuporte.h"

#include <algorithm>

#include "ServidorDeBackup.h"
#include "package/Caminho.h"
#include "package/Pacote.h"
#include "process/EscritaSegura.h"
#include "process/Programa.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLeiame = "LEIAME.txt";

constexpr std::string_view kRegras = R"(
O que não vai, por regra:
  - registros: das tabelas vão só os do dicionário (SARQUIVO, SATRIB, SINDSEC, SINDSECA) e, de TINI, as marcas que o
    próprio atualizador guarda; o arquivo de rejeitados e o relatório em HTML ficam de fora;
  - valores: nos textos do log, dos relatórios e dos erros só ficam palavras que o programa ou o servidor dizem e nomes
    do esquema, e entre aspas só estes; qualquer outra palavra, e todo número, vira "…". Os achados do plano contam
    registros, sem exemplos;
  - senhas: do alias vão só as chaves que o programa conhece, sem a senha.

Em esquema.json vão os comandos que fazem as tabelas, com padrões, restrições e comentários; em banco.fbk o esquema como o
servidor o conhece: também o código de visões, gatilhos e procedimentos, permissões e os contadores dos geradores. Se uma
dessas fontes fala de senha (PASSWORD), banco.fbk não é feito.

Para quem ajuda: crie um alias para um banco que ainda não existe e rode
  AtualizaWKD --reproduz ARQUIVO.zip ALIAS
  AtualizaWKD --plano ALIAS PACOTE.zip
)";

/// As many columns as the text has letters.
std::size_t Largura(std::string_view utf8) {
    return static_cast<std::size_t>(std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Alinhado(std::string_view texto, std::size_t largura) {
    return std::string(texto) + std::string(largura - std::min(largura, Largura(texto)), ' ');
}

}  // namespace

void TPacoteDeSuporte::Junta(const std::string& nome, std::string_view oQueE) {
    membros_.push_back({nome, std::string(oQueE)});
}

void TPacoteDeSuporte::Grava(const std::string& nome, std::string_view oQueE, std::string_view texto) {
    SubstituiArquivo(Pasta() / nome, texto);
    Junta(nome, oQueE);
}

void TPacoteDeSuporte::Falta(const std::string& parte, const std::string& porque) {
    faltas_.push_back(parte + ": " + porque);
}

std::string TPacoteDeSuporte::Lista() const {
    std::size_t largura = 0;
    for (const auto& membro : membros_) largura = std::max(largura, Largura(membro.nome));
    std::string texto;
    for (const auto& membro : membros_)
        texto += "  " + Alinhado(membro.nome, largura) + "  " +
                 Alinhado(TamanhoEmTexto(fs::file_size(Pasta() / membro.nome)), 8) + "  " + membro.oQueE + "\n";
    return texto;
}

std::string TPacoteDeSuporte::Leiame() const {
    std::string texto = "Pacote de suporte do AtualizaWKD " + std::string(kVersao) + "\nAlias " + alias_ +
                        ", feito em " + FormataDataHora(Agora(), "dd/mm/yyyy hh:mm:ss") + "\n\nO que vai:\n" + Lista();
    if (!faltas_.empty()) texto += "\nO que falta:\n";
    for (const auto& falta : faltas_) texto += "  - " + falta + "\n";
    return texto.append(kRegras);
}

void TPacoteDeSuporte::Conclui(const fs::path& arquivo) {
    SubstituiArquivo(Pasta() / kLeiame, Leiame());
    std::vector<fs::path> arquivos = {Pasta() / kLeiame};
    for (const auto& membro : membros_) arquivos.push_back(Pasta() / membro.nome);
    const fs::path zip = Pasta() / "pacote.zip";
    CompactaZip(arquivos, zip);
    ExigeNomeLivre(arquivo);
    SubstituiArquivo(arquivo, LeArquivoInteiro(zip), TLeitores::GrupoDaPasta);
}

void ExigeNomeLivre(const fs::path& arquivo) {
    if (fs::exists(fs::symlink_status(arquivo)))
        throw TErroPacote("Já existe " + TextoDoCaminho(arquivo) + ". Dê outro nome ao pacote de suporte e repita.",
                          TFalha::Arquivo);
}

void AbrePacoteDeSuporte(const fs::path& arquivo, const fs::path& pasta) {
    try {
        const auto recusadas = ExtraiPacote(arquivo, pasta, nullptr);
        if (!recusadas.empty()) throw TErroPacote(wkd::Junta(recusadas, "; "));
    } catch (const TErroPacote& erro) {
        throw TErroPacote("Não é um pacote de suporte que se possa usar: " + std::string(erro.what()) +
                          " Peça outro a quem o enviou.");
    }
    if (!fs::exists(pasta / kLeiame) || !fs::exists(pasta / "versoes.json"))
        throw TErroPacote("O arquivo " + TextoDoCaminho(arquivo) +
                          " não é um pacote de suporte: use o que AtualizaWKD --suporte gravou.");
}

}  // namespace wkd
