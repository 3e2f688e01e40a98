#pragma once

#include <QDir>
#include <QListWidget>

namespace wkd {

/// Names of the files of one folder that match a mask, letter case ignored.
class TListaDeArquivos : public QListWidget {
    Q_OBJECT
  public:
    explicit TListaDeArquivos(const QString& mascara) : mascara_(mascara) {}

    const QString& Mascara() const { return mascara_; }
    void Lista(const QString& pasta) {
        clear();
        addItems(QDir(pasta).entryList({mascara_}, QDir::Files, QDir::Name | QDir::IgnoreCase));
    }

  private:
    QString mascara_;
};

/// Folders on the way to the chosen one, which comes last.
class TListaDePastas : public QListWidget {
    Q_OBJECT
  public:
    void Escolhe(const QString& pasta) {
        clear();
        for (QDir acima(pasta); count() == 0 || acima.cdUp();) insertItem(0, acima.dirName());
        emit Escolhida(pasta);
    }

  signals:
    void Escolhida(const QString& pasta);
};

}  // namespace wkd
