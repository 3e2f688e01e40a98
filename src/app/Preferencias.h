#pragma once

#include <QSettings>
#include <QString>

namespace wkd {

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
