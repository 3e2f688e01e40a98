#pragma once

#include <QSettings>
#include <QString>
#include <filesystem>

#include "aliases/Aliases.h"

class QApplication;

namespace wkd {

/// Places of this machine that the program uses. Every one a value, so that a test points it elsewhere.
struct TAmbiente {
    std::filesystem::path pastaPrograma;   // log, rejects file, settings file
    std::filesystem::path temporaria;      // below it the working directory
    std::filesystem::path marcaNaoCria;    // marker file
    TLocaisDoIni locais;                   // settings file
    std::filesystem::path corrente = ".";  // "erroCria.sql", marker files of the tables
};

TAmbiente AmbientePadrao();

/// Makes the toolkit's own texts (file dialogs, menus of edit boxes) Portuguese.
void FalaPortugues(QApplication& aplicacao);

/// Texts that the wizard remembers between runs, one value "Valor" under the name of each control: on Windows in the
/// current user's registry below the key "AtualizaWKD", elsewhere in a file of the user's configuration folder.
class TPreferencias {
  public:
    TPreferencias();
    /// In an INI file instead.
    explicit TPreferencias(const QString& arquivo) : ajustes_(arquivo, QSettings::IniFormat) {}

    /// Empty when nothing is stored.
    QString Le(const QString& controle) const { return ajustes_.value(controle + "/Valor").toString(); }
    void Grava(const QString& controle, const QString& valor) { ajustes_.setValue(controle + "/Valor", valor); }

  private:
    QSettings ajustes_;
};

}  // namespace wkd
