#pragma once

#include <QComboBox>
#include <QFocusEvent>

namespace wkd {

/// Pick-only list that tells when it was closed or left.
class TListaDeAlias : public QComboBox {
    Q_OBJECT
  public:
    void hidePopup() override {
        QComboBox::hidePopup();
        // The clicked line becomes the current one only after the list is closed.
        QMetaObject::invokeMethod(this, &TListaDeAlias::CloseUp, Qt::QueuedConnection);
    }

  signals:
    void CloseUp();
    void Exit();

  protected:
    void focusOutEvent(QFocusEvent* evento) override {
        QComboBox::focusOutEvent(evento);
        const Qt::FocusReason motivo = evento->reason();
        if (motivo != Qt::PopupFocusReason && motivo != Qt::ActiveWindowFocusReason) emit Exit();
    }
};

}  // namespace wkd
