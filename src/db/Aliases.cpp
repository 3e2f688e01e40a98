#include "Aliases.h"

#include <algorithm>
#include <array>

#include "Senha.h"
#include "Texto.h"

namespace wkd {

namespace {

constexpr std::array<std::string_view, 3> kAutenticacoes = {"-1", "0", "1"};  // in the order of TTipoAutenticacao
constexpr std::string_view kAliasPadrao = "MENU";

void GravaAlias(TArquivoIni& ini, std::string_view secao, const TAlias& alias) {
    ini.Grava(secao, "Alias", Apara(alias.nome));
    ini.Grava(secao, "TipoBanco", alias.tipoBanco);
    ini.Grava(secao, "Hostname", alias.hostname);
    ini.Grava(secao, "Path", alias.path);
    ini.Grava(secao, "DataBase", alias.database);
    ini.Grava(secao, "User_Name", alias.usuario);
    ini.Grava(secao, "Password", MontaSenha(alias.usuario, alias.senha));
    ini.Grava(secao, "TipoAutenticacao", TipoAutenticacaoToStr(alias.autenticacao));
    if (!alias.characterSet.empty()) ini.Grava(secao, "CharacterSet", alias.characterSet);
    if (!alias.driver.empty()) ini.Grava(secao, "Driver", alias.driver);
    if (!alias.encrypt.empty()) ini.Grava(secao, "Encrypt", alias.encrypt);
    if (!alias.trustServerCertificate.empty()) ini.Grava(secao, "TrustServerCertificate", alias.trustServerCertificate);
    if (IgualSemCaixa(secao, kAliasPadrao)) ini.Grava(secao, "Versao", "0");
}

}  // namespace

std::string_view TipoAutenticacaoToStr(TTipoAutenticacao tipo) {
    return kAutenticacoes[static_cast<std::size_t>(tipo)];
}

TTipoAutenticacao StrToTipoAutenticacao(std::string_view texto) {
    const auto* achado = std::ranges::find(kAutenticacoes, texto);
    return achado == kAutenticacoes.end() ? TTipoAutenticacao::Nenhuma
                                          : static_cast<TTipoAutenticacao>(achado - kAutenticacoes.begin());
}

TTipoAutenticacao IntToTipoAutenticacao(int valor) { return StrToTipoAutenticacao(std::to_string(valor)); }

int TipoAutenticacaoToInt(TTipoBanco banco, TTipoAutenticacao tipo) {
    if (banco < TTipoBanco::tbSQLServer) return -1;
    return tipo == TTipoAutenticacao::Windows ? 1 : 0;
}

std::string TAliases::INILeString(std::string_view secao, std::string_view chave, std::string_view padrao) const {
    return TArquivoIni(ini_).Le(secao, chave).value_or(std::string(padrao));
}

void TAliases::INIGravaString(std::string_view secao, std::string_view chave, std::string_view valor) const {
    TArquivoIni ini(ini_);
    ini.Grava(secao, chave, valor);
    ini.Salva();
}

std::vector<std::string> TAliases::ListaAlias(bool escondePadrao) const {
    auto nomes = TArquivoIni(ini_).Secoes();
    if (escondePadrao) std::erase_if(nomes, [](const auto& nome) { return IgualSemCaixa(nome, kAliasPadrao); });
    return nomes;
}

bool TAliases::ExisteAlias(std::string_view nome) const { return TArquivoIni(ini_).ExisteSecao(nome); }

void TAliases::AdicionaAlias(const TAlias& alias, bool tambemPadrao) const {
    if (Apara(alias.nome).empty()) throw TErroConfiguracao("Insira corretamento o nome do Alias!");
    TArquivoIni ini(ini_);
    GravaAlias(ini, alias.nome, alias);
    if (tambemPadrao) GravaAlias(ini, kAliasPadrao, alias);
    ini.Salva();
}

bool TAliases::RemoveAlias(std::string_view nome) const {
    TArquivoIni ini(ini_);
    if (!ini.ApagaSecao(nome)) return false;
    ini.Salva();
    return true;
}

TAlias TAliases::CarregaAlias(std::string_view nome) const {
    const TArquivoIni ini(ini_);
    if (!ini.ExisteSecao(nome))
        throw TErroConfiguracao("O alias \"" + std::string(nome) + "\" não existe no arquivo \"" + ini_.string() +
                                "\". Crie-o com a opção --novo-alias.");
    const auto le = [&](std::string_view chave) { return ini.Le(nome, chave).value_or(""); };
    TAlias alias;
    alias.nome = ini.Le(nome, "Alias").value_or(std::string(nome));
    alias.tipoBanco = le("TipoBanco");
    alias.hostname = le("Hostname");
    alias.path = le("Path");
    alias.database = le("DataBase");
    alias.autenticacao = StrToTipoAutenticacao(ini.Le(nome, "TipoAutenticacao").value_or("0"));
    alias.usuario = le("User_Name");
    alias.senha = DesmontaSenha(alias.usuario, le("Password"));
    alias.characterSet = le("CharacterSet");
    alias.driver = le("Driver");
    alias.encrypt = le("Encrypt");
    alias.trustServerCertificate = le("TrustServerCertificate");
    return alias;
}

}  // namespace wkd
