#pragma once

#include <QPlainTextEdit>
#include <QStringList>

namespace wkd {

/// Read-only list of lines that takes them in batches: lines added while the program computes are drawn together
/// when it next serves its messages. The newest line is in view.
class TMemoDeLinhas : public QPlainTextEdit {
  public:
    explicit TMemoDeLinhas(QWidget* pai = nullptr);

    void Acrescenta(const QString& linha);
    /// Puts the waiting lines into the text now.
    void Descarrega();

  private:
    QStringList pendentes_;
};

}  // namespace wkd
