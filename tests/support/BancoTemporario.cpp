#include "BancoTemporario.h"

#include <cstdlib>

#include "firebird/ConexaoFirebird.h"
#ifndef _WIN32
#include "ServidorFirebird.h"
#endif

namespace wkd {

std::string ServidorDosTestes() {
#ifndef _WIN32
    if (std::getenv("WKD_FIREBIRD4") != nullptr) return TServidorFirebird::DoProcesso().Endereco();
#endif
    return "";
}

TParametrosConexao ParametrosFirebird(const std::filesystem::path& arquivo, std::string_view pedido) {
    const std::string servidor = pedido.empty() ? ServidorDosTestes() : std::string(pedido);
    TParametrosConexao parametros;
    parametros.Adiciona("User_Name", "SYSDBA");
    parametros.Adiciona("Password", "masterkey");
    parametros.Adiciona("Database", servidor.empty() ? arquivo.string() : servidor + ":" + arquivo.string());
    return parametros;
}

TBancoTemporario::TBancoTemporario(std::string_view conjunto, std::string_view servidor)
    : parametros_(ParametrosFirebird(Arquivo(), servidor)) {
    auto criacao = parametros_;
    if (!conjunto.empty()) criacao.Adiciona("CharacterSet", conjunto);
    criacao.Adiciona("ForcedWrites", "False");
    CriaBancoFirebird(criacao, 8192);
    conexao_ = Outra();
}

std::unique_ptr<TConnection> TBancoTemporario::Outra() const {
    auto conexao = CriaConexaoFirebird(parametros_);
    conexao->Open();
    return conexao;
}

}  // namespace wkd
