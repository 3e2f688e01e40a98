#include "ProgramaApoio.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "Arquivos.h"
#include "BancoTemporario.h"
#include "CompactaZip.h"
#include "Retrato.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

/// Runs the statements of a script that end with ";" at a line's end.
void ExecutaScript(TConnection& conexao, const fs::path& arquivo) {
    std::ifstream script(arquivo);
    std::string comando, linha;
    while (std::getline(script, linha)) {
        if (linha.starts_with("--")) continue;
        comando += linha + "\n";
        if (!linha.ends_with(';')) continue;
        comando.resize(comando.size() - 2);
        const bool doIsql = comando.starts_with("set sql") || comando.starts_with("commit");
        if (!doIsql && comando.starts_with("create")) {
            if (conexao.InTransaction()) conexao.Commit();
            conexao.ExecuteDirect(comando);
        } else if (!doIsql) {
            if (!conexao.InTransaction()) conexao.StartTransaction();
            conexao.Prepara(comando)->Executa();
        }
        comando.clear();
    }
    if (conexao.InTransaction()) conexao.Commit();
}

std::string Aspas(const std::string& argumento) {
    std::string texto = "'";
    for (const char c : argumento) texto += c == '\'' ? "'\\''" : std::string(1, c);
    return texto + "'";
}

/// One example database for the whole test program; every installation gets a copy.
const fs::path& BancoDeExemplo() {
    static const TPastaTemporaria pasta;
    static const fs::path arquivo = [] {
        TParametrosConexao parametros = ParametrosFirebird(pasta / "loja.fdb");
        parametros.Adiciona("CharacterSet", "WIN1252");
        parametros.Adiciona("ForcedWrites", "False");
        CriaBancoFirebird(parametros, 8192);
        const auto conexao = CriaConexaoFirebird(parametros);
        conexao->Open();
        ExecutaScript(*conexao, fs::path(WKD_EXEMPLOS) / "banco.sql");
        return pasta / "loja.fdb";
    }();
    return arquivo;
}

}  // namespace

TProgramaInstalado::TProgramaInstalado() {
    fs::copy_file(WKD_PROGRAMA, pasta_ / "AtualizaWKD");
    fs::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
    fs::copy(fs::path(WKD_EXEMPLOS) / "pacote", PastaDoPacote());
    fs::create_directory(pasta_ / "tmp");
    Escreve("WKD.ini", "[LOJA]\nAlias=LOJA\nTipoBanco=tbInterbase\nHostname=\nPath=" + pasta_.Caminho().string() +
                           "/\nDataBase=loja.fdb\nUser_Name=SYSDBA\nPassword=\nTipoAutenticacao=0\n");
    Empacota();
}

TProgramaInstalado::TSaida TProgramaInstalado::Roda(const std::vector<std::string>& argumentos,
                                                    const std::string& entrada) const {
    Escreve("entrada.txt", entrada);
    std::string comando = "cd " + Aspas(pasta_.Caminho().string()) + " && TMPDIR=tmp ./AtualizaWKD";
    for (const std::string& argumento : argumentos) comando += " " + Aspas(argumento);
    const int estado = std::system((comando + " <entrada.txt >saida.txt 2>erros.txt").c_str());
    return {WIFEXITED(estado) ? WEXITSTATUS(estado) : -1, Arquivo("saida.txt"), Arquivo("erros.txt")};
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

}  // namespace wkd
