#include "aliases/Aliases.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "values/Texto.h"

namespace wkd {

namespace {

// "W1-" and, in hexadecimal, the bytes of the password and of its check number, each xored with a stream of bytes
// that begins at the user name.
constexpr std::string_view kMarca = "W1-";
constexpr std::size_t kBytesDeConferencia = 4;
constexpr std::string_view kHexadecimal = "0123456789ABCDEF";

/// FNV-1a.
std::uint32_t Resumo(std::string_view texto) {
    std::uint32_t resumo = 2166136261u;
    for (const char c : texto) resumo = (resumo ^ static_cast<unsigned char>(c)) * 16777619u;
    return resumo;
}

std::string Conferencia(std::string_view senha) {
    std::string bytes;
    for (std::size_t i = 0; i < kBytesDeConferencia; ++i) bytes += static_cast<char>(Resumo(senha) >> (8 * i) & 0xFF);
    return bytes;
}

/// Scrambles and unscrambles: done twice it gives the bytes back.
std::string Embaralha(std::string_view usuario, std::string bytes) {
    std::uint32_t estado = Resumo(Maiusculas(Apara(usuario))) | 1u;
    for (char& c : bytes) {  // xorshift32
        estado ^= estado << 13;
        estado ^= estado >> 17;
        estado ^= estado << 5;
        c = static_cast<char>(c ^ static_cast<char>(estado >> 24));
    }
    return bytes;
}

std::string ParaHexadecimal(std::string_view bytes) {
    std::string texto;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        texto += kHexadecimal[byte >> 4];
        texto += kHexadecimal[byte & 0xF];
    }
    return texto;
}

std::optional<std::string> DeHexadecimal(std::string_view texto) {
    if (texto.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < texto.size(); i += 2) {
        const std::size_t alto = kHexadecimal.find(texto[i]);
        const std::size_t baixo = kHexadecimal.find(texto[i + 1]);
        if (alto == std::string_view::npos || baixo == std::string_view::npos) return std::nullopt;
        bytes += static_cast<char>(alto << 4 | baixo);
    }
    return bytes;
}

}  // namespace

std::string MontaSenha(std::string_view usuario, std::string_view senha) {
    if (senha.empty()) return {};
    return std::string(kMarca) + ParaHexadecimal(Embaralha(usuario, Conferencia(senha) + std::string(senha)));
}

std::string DesmontaSenha(std::string_view usuario, std::string_view texto) {
    if (!texto.starts_with(kMarca)) return std::string(texto);
    const auto bytes = DeHexadecimal(texto.substr(kMarca.size()));
    if (!bytes || bytes->size() <= kBytesDeConferencia) return std::string(texto);
    const std::string claro = Embaralha(usuario, *bytes);
    const std::string senha = claro.substr(kBytesDeConferencia);
    return claro.starts_with(Conferencia(senha)) ? senha : std::string(texto);
}

namespace {

/// Without host the file is opened here, by the embedded engine.
std::string BancoFirebird(const TAlias& alias) {
    return (alias.hostname.empty() ? "" : alias.hostname + ":") + alias.path + alias.database;
}

void AdicionaSqlServer(TParametrosConexao& parametros, const TAlias& alias) {
    parametros.Adiciona("Database", alias.database);
    parametros.Adiciona("Server", alias.hostname);
    parametros.Adiciona("SchemaOverride", "sa.dbo");
    parametros.Adiciona("Prepare SQL", "False");
    parametros.Adiciona("ConnectTimeout", "60");
    parametros.Adiciona("Mars_Connection", "True");
    parametros.Adiciona("HostName", alias.hostname);
    parametros.Adiciona("BlobSize", "-1");
    parametros.Adiciona("ErrorResourceFile", "");
    parametros.Adiciona("LocaleCode", "0000");
    parametros.Adiciona("IsolationLevel", "ReadCommitted");
    // The key is often there where a user is named, too.
    if (alias.autenticacao == TTipoAutenticacao::Windows && alias.usuario.empty())
        parametros.Adiciona("Trusted_Connection", "yes");
    if (!alias.driver.empty()) parametros.Adiciona("Driver", alias.driver);
    if (!alias.encrypt.empty()) parametros.Adiciona("Encrypt", alias.encrypt);
    if (!alias.trustServerCertificate.empty())
        parametros.Adiciona("TrustServerCertificate", alias.trustServerCertificate);
}

}  // namespace

std::string TParametrosConexao::Valor(std::string_view chave) const {
    for (const auto& [nome, valor] : pares_)
        if (IgualSemCaixa(nome, chave)) return valor;
    return {};
}

TParametrosConexao ParametrosDoAlias(const TAlias& alias) {
    TParametrosConexao parametros;
    const auto tipo = StrToTipoBanco(alias.tipoBanco);
    if (!tipo || *tipo == TTipoBanco::tbMySQL || *tipo == TTipoBanco::tbOracle) return parametros;
    parametros.Adiciona("User_Name", alias.usuario);
    parametros.Adiciona("Password", alias.senha);
    if (*tipo == TTipoBanco::tbInterbase) {
        parametros.Adiciona("Database", BancoFirebird(alias));
        if (!alias.characterSet.empty()) parametros.Adiciona("CharacterSet", alias.characterSet);
    } else if (*tipo == TTipoBanco::tbSQLServer) {
        AdicionaSqlServer(parametros, alias);
    } else {
        parametros.Adiciona("Database", alias.database);
        parametros.Adiciona("DataSource", alias.hostname);
    }
    return parametros;
}

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

TAlias Arrumado(TAlias alias) {
    for (std::string* texto : {&alias.nome, &alias.hostname, &alias.path, &alias.database, &alias.usuario})
        *texto = Apara(*texto);
    std::string& pasta = alias.path;
    if (alias.tipoBanco != "tbInterbase" || pasta.empty() || pasta.ends_with('/') || pasta.ends_with('\\'))
        return alias;
    const bool doWindows = pasta.find('\\') != std::string::npos || pasta.substr(1, 1) == ":";
    pasta += doWindows ? '\\' : '/';
    return alias;
}

namespace {

std::string DefeitoDoNome(const std::string& nome) {
    if (nome.empty()) return "Insira corretamento o nome do Alias!";
    if (IgualSemCaixa(nome, kAliasPadrao)) return "MENU é o alias padrão do menu: dê ao alias outro nome.";
    if (nome.find_first_of(";[]") != std::string::npos) return "O nome do alias não pode ter \";\", \"[\" nem \"]\".";
    return {};
}

std::string DefeitoDoServidor(const TAlias& alias, TTipoBanco tipo) {
    if (tipo == TTipoBanco::tbInterbase)
        return alias.hostname.empty() || !alias.usuario.empty() ? "" : "Falta o usuário do banco de dados.";
    if (alias.hostname.empty())
        return tipo == TTipoBanco::tbODBC ? "Falta o nome da fonte de dados ODBC, que vai no lugar do servidor."
                                          : "Falta o servidor.";
    const auto virgula = alias.hostname.find(',');
    const bool porta = virgula == std::string::npos ||
                       alias.hostname.find_first_not_of(" 0123456789", virgula + 1) == std::string::npos;
    return porta ? "" : "Depois da vírgula, no servidor, vem o número da porta.";
}

}  // namespace

std::string DefeitoDoAlias(const TAlias& alias) {
    if (auto defeito = DefeitoDoNome(alias.nome); !defeito.empty()) return defeito;
    const auto tipo = StrToTipoBanco(alias.tipoBanco);
    if (!tipo || *tipo == TTipoBanco::tbMySQL || *tipo == TTipoBanco::tbOracle)
        return "O tipo de banco " + alias.tipoBanco + (tipo ? " não tem driver" : " não é conhecido") +
               ". Use tbInterbase, tbSQLServer ou tbODBC.";
    if (alias.database.empty()) return "Falta o banco de dados.";
    return DefeitoDoServidor(alias, *tipo);
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

bool TAliases::EhPadrao(std::string_view nome) const {
    return IgualSemCaixa(TArquivoIni(ini_).Le(kAliasPadrao, "Alias").value_or(""), nome);
}

void TAliases::MudaSenha(std::string_view nome, std::string_view senha) const {
    TArquivoIni ini(ini_);
    const auto muda = [&](std::string_view secao) {
        ini.Grava(secao, "Password", MontaSenha(ini.Le(secao, "User_Name").value_or(""), senha));
    };
    muda(nome);
    if (EhPadrao(nome)) muda(kAliasPadrao);
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
