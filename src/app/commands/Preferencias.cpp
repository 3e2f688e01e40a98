#include "commands/Preferencias.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace wkd {

TAmbiente AmbientePadrao() {
#ifdef _WIN32
    const std::filesystem::path marca = "c:\\naocria.wkd";
#else
    const std::filesystem::path marca = "/naocria.wkd";
#endif
    const TLocaisDoIni locais = LocaisPadraoDoIni();
    std::error_code semErro;
    auto temporaria = std::filesystem::temp_directory_path(semErro);
    if (semErro) temporaria = locais.pastaPrograma;  // TMPDIR names no folder
    return {locais.pastaPrograma, temporaria, marca, locais};
}

void FalaPortugues(QApplication& aplicacao) {
    QLocale::setDefault(QLocale(QLocale::Portuguese, QLocale::Brazil));
    auto* textos = new QTranslator(&aplicacao);
    if (textos->load("qtbase_pt_BR", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(textos);
}

#ifdef _WIN32
TPreferencias::TPreferencias() : ajustes_("HKEY_CURRENT_USER\\AtualizaWKD", QSettings::NativeFormat) {}
#else
TPreferencias::TPreferencias() : ajustes_(QSettings::NativeFormat, QSettings::UserScope, "AtualizaWKD") {}
#endif

}  // namespace wkd
