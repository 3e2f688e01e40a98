#include "Explicacao.h"

#include <system_error>

#include "ServidorDeBackup.h"
#include "values/Erros.h"

namespace wkd {

namespace {

/// The first row with a text that the server's words hold counts.
struct TRegra {
    std::string_view texto, explicacao;
};

constexpr std::string_view kNaoEBackup =
    "O arquivo não é um backup deste tipo de servidor. Escolha o arquivo certo e repita.";
constexpr std::string_view kCortado =
    "O arquivo de backup está cortado ou danificado: não chega ao fim. Use outra cópia dele, ou outro backup.";
constexpr std::string_view kSenha =
    "O servidor recusou o usuário ou a senha do alias. Corrija-os (--novo-alias grava de novo) e repita.";
constexpr std::string_view kSemDireito =
    "O servidor recusou o serviço ao usuário do alias. Use um alias com SYSDBA, ou com o dono do banco, e repita.";
constexpr std::string_view kSoLeitura =
    "O arquivo do banco só pode ser lido. Dê permissão de gravação nele e na pasta, e repita.";
constexpr std::string_view kBancoSoLeitura =
    "O banco está marcado como só de leitura. Desmarque-o (gfix -mode read_write) e repita.";
constexpr std::string_view kSoConhecidos =
    "O servidor só deixa abrir os bancos que a sua configuração nomeia (RemoteAccess), e não o provisório. Peça ao "
    "administrador do servidor que o permita.";
constexpr std::string_view kBancoEstragado =
    "No lugar do banco está um arquivo que não abre como banco de dados. Mude-lhe o nome no servidor e repita.";
constexpr std::string_view kJaExiste =
    "Já existe um banco, ou outro arquivo, com esse nome no servidor. Apague-o, ou mude-lhe o nome, e repita.";
constexpr std::string_view kSemServico =
    "O servidor não atende serviços de backup. Peça ao administrador do servidor que os ligue, ou faça o backup nele.";
constexpr std::string_view kEmUso =
    "O banco está em uso por outro programa. Feche o sistema em todas as estações e repita.";
constexpr std::string_view kServidorCheio = "O disco do banco encheu. Libere espaço nele e repita.";
constexpr std::string_view kSemPasta =
    "O servidor não pôde criar o banco: a pasta não existe para ele, ou não lhe dá permissão. Corrija o caminho e "
    "repita.";

constexpr TRegra kRegras[] = {
    {"expected backup description record", kNaoEBackup},
    {"expected backup version", kNaoEBackup},
    {"is not a valid database", kBancoEstragado},
    {"is not a valid", kNaoEBackup},
    {"reading from backup file", kCortado},
    {"unexpected end of file", kCortado},
    {"do not recognize", kCortado},
    {"RESTORE: decompression length error", kCortado},
    {"No space left", kServidorCheio},
    {"File too large", kServidorCheio},
    {"user name and password are not defined", kSenha},
    {"Error occurred during login", kSenha},
    {"Login failed", kSenha},
    {"no permission for read-write access", kSoLeitura},
    {"read-only database", kBancoSoLeitura},
    {"remote access to database", kSoConhecidos},
    {"no permission", kSemDireito},
    {"nable to perform operation", kSemDireito},
    {"permission denied in database", kSemDireito},
    {"is terminating abnormally", kSemDireito},
    {"services manager", kSemServico},
    {"is not currently supported", kSemServico},
    {"not supported", kSemServico},
    {"service_mgr", kSemServico},
    {"ervice is not defined", kSemServico},
    {"is in use", kEmUso},
    {"already opened with engine instance", kEmUso},
    {"File exists", kJaExiste},
    {"already exists", kJaExiste},
    {"Error while trying to create file", kSemPasta},
    {"Operating system error 3", kSemPasta},
    {"Operating system error 5", kSemPasta},
    {"Operating system error 112", kServidorCheio},
};

std::string DoSistema(const std::system_error& erro) {
    const std::string onde = erro.what();
    if (erro.code() == std::errc::no_space_on_device || erro.code() == std::errc::file_too_large)
        return "O disco encheu, e o que foi gravado saiu de novo. Libere espaço, ou escolha outra pasta, e repita.\n" +
               onde;
    if (erro.code() == std::errc::permission_denied || erro.code() == std::errc::read_only_file_system ||
        erro.code() == std::errc::operation_not_permitted)
        return "Sem permissão de gravação na pasta. Dê a permissão, ou escolha outra pasta, e repita.\n" + onde;
    return "O arquivo não pôde ser lido ou gravado. Confira o disco e repita.\n" + onde;
}

}  // namespace

std::string ExplicaFalha(const std::exception& erro) {
    const std::string texto = erro.what();
    if (const auto* doSistema = dynamic_cast<const std::system_error*>(&erro)) return DoSistema(*doSistema);
    if (!dynamic_cast<const TErroBanco*>(&erro)) return texto;
    for (const auto& [trecho, explicacao] : kRegras)
        if (texto.find(trecho) != std::string::npos) return std::string(explicacao) + "\n" + texto;
    return "O servidor recusou o trabalho. Corrija a causa e repita.\n" + texto;
}

}  // namespace wkd
