#include "Idioma.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace wkd {

void FalaPortugues(QApplication& aplicacao) {
    QLocale::setDefault(QLocale(QLocale::Portuguese, QLocale::Brazil));
    auto* textos = new QTranslator(&aplicacao);
    if (textos->load("qtbase_pt_BR", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(textos);
}

}  // namespace wkd
