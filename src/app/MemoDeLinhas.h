#pragma once

#include <QPlainTextEdit>

namespace wkd {

/// Read-only list of lines, the newest one in view.
class TMemoDeLinhas : public QPlainTextEdit {
  public:
    explicit TMemoDeLinhas(QWidget* pai = nullptr);

    /// Adds lines at the end, many at once faster than one by one.
    void Acrescenta(const QStringList& linhas);
};

}  // namespace wkd
