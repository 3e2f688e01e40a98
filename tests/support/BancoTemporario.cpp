#include "BancoTemporario.h"

#include "firebird/ConexaoFirebird.h"

namespace wkd {

TParametrosConexao ParametrosFirebird(const std::filesystem::path& arquivo, std::string_view servidor) {
    TParametrosConexao parametros;
    parametros.Adiciona("User_Name", "SYSDBA");
    parametros.Adiciona("Password", "masterkey");
    parametros.Adiciona("Database",
                        servidor.empty() ? arquivo.string() : std::string(servidor) + ":" + arquivo.string());
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
