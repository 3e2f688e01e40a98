#include "Restauracao.h"

#include "values/TextoDeData.h"

namespace wkd {

namespace {

/// The value of the first key, or of the second where the first is missing or empty.
std::string Le(const TAliases& aliases, const std::string& alias, const char* chave, const char* senao) {
    const std::string valor = aliases.INILeString(alias, chave);
    return valor.empty() ? aliases.INILeString(alias, senao) : valor;
}

/// The folder may be on another machine, so its separator is the one it uses itself.
std::string ComSeparador(std::string pasta) {
    if (pasta.empty() || pasta.ends_with('\\') || pasta.ends_with('/')) return pasta;
    return pasta + (pasta.find('/') != std::string::npos ? '/' : '\\');
}

}  // namespace

TLocalDoBanco LeLocalDoBanco(const TAliases& aliases, const std::string& alias) {
    return {ComSeparador(Le(aliases, alias, "CAMINHO", "Path")), Le(aliases, alias, "BANCO", "DataBase"),
            Le(aliases, alias, "LOCAL", "Hostname")};
}

TDestinoDaRestauracao DestinoDaRestauracao(const TAliases& aliases, const std::string& alias, bool naBaseOriginal) {
    const TLocalDoBanco local = LeLocalDoBanco(aliases, alias);
    return {local.servidor, local.caminho + (naBaseOriginal ? local.banco : alias + "_res.fdb")};
}

std::filesystem::path ArquivoPadraoDosRelatorios(const std::filesystem::path& pastaPrograma, TDataHora quando) {
    return pastaPrograma / "Backup" / ("Relatorios_" + FormataDataHora(quando, "dd_mm-hh_mm") + ".zip");
}

std::string NomePropostoDosRelatorios(TDataHora quando) {
    return "Relatorios_" + FormataDataHora(quando, "ddmmyy") + ".zip";
}

}  // namespace wkd
