#include "Explicacao.h"

#include <algorithm>
#include <system_error>

namespace wkd {

namespace {

struct TExplicacao {
    TFalha falha;
    std::string_view texto;
};

constexpr TExplicacao kExplicacoes[] = {
    {TFalha::NaoEBackup, "O arquivo não é um backup deste tipo de servidor. Escolha o arquivo certo e repita."},
    {TFalha::BackupCortado,
     "O arquivo de backup está cortado ou danificado: não chega ao fim. Use outra cópia dele, ou outro backup."},
    {TFalha::SemBackup, "Corrija o que a mensagem diz e faça outro backup. Se repetir, chame o suporte."},
    {TFalha::Autenticacao,
     "O servidor recusou o usuário ou a senha do alias. Corrija-os (--novo-alias grava de novo) e repita."},
    {TFalha::SemPermissao,
     "O servidor recusou o serviço ao usuário do alias. Use um alias com SYSDBA, ou com o dono do banco, e repita."},
    {TFalha::BancoNegado,
     "O arquivo do banco não pode ser gravado. Dê permissão de gravação nele e na pasta, e repita."},
    {TFalha::BancoInexistente,
     "O banco não está nesse lugar, ou o servidor não pode abri-lo. Confira o caminho no alias, e a permissão, e "
     "repita."},
    {TFalha::BancoSoLeitura, "O banco está marcado como só de leitura. Desmarque-o (gfix -mode read_write) e repita."},
    {TFalha::BancoFechado, "O banco está fechado (shutdown). Se alguém o fechou, abra-o (gfix -online) e repita."},
    {TFalha::AcessoRemoto,
     "O servidor só deixa abrir os bancos que a sua configuração nomeia (RemoteAccess), e não o provisório. Peça ao "
     "administrador do servidor que o permita."},
    {TFalha::NaoEBanco,
     "No lugar do banco está um arquivo que não abre como banco de dados. Mude-lhe o nome no servidor e repita."},
    {TFalha::BancoExistente,
     "Já existe um banco, ou outro arquivo, com esse nome no servidor. Apague-o, ou mude-lhe o nome, e repita."},
    {TFalha::SemServico,
     "O servidor não atende serviços de backup. Peça ao administrador do servidor que os ligue, ou faça o backup "
     "nele."},
    {TFalha::EmUso, "O banco está em uso por outro programa. Feche o sistema em todas as estações e repita."},
    {TFalha::DiscoCheio, "O disco do banco encheu. Libere espaço nele e repita."},
    {TFalha::LugarSemAcesso,
     "O servidor não pôde criar o arquivo: a pasta não existe para ele, ou não lhe dá permissão. Corrija o caminho e "
     "repita."},
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

std::string_view Explicacao(TFalha falha) {
    const auto* achada = std::ranges::find(kExplicacoes, falha, &TExplicacao::falha);
    return achada == std::end(kExplicacoes) ? "O servidor recusou o trabalho. Corrija a causa e repita."
                                            : achada->texto;
}

std::string ExplicaFalha(const std::exception& erro) {
    if (const auto* doSistema = dynamic_cast<const std::system_error*>(&erro)) return DoSistema(*doSistema);
    if (const auto* doBanco = dynamic_cast<const TErroBanco*>(&erro))
        return std::string(Explicacao(doBanco->Falha())) + "\n" + erro.what();
    return erro.what();
}

}  // namespace wkd
