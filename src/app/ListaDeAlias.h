#pragma once

#include <QComboBox>
#include <QFocusEvent>
#include <utility>

namespace wkd {

/// Pick-only list that tells when it was closed or left.
class TListaDeAlias : public QComboBox {
    Q_OBJECT
  public:
    void showPopup() override {
        aberta_ = true;
        QComboBox::showPopup();
    }
    /// Called by the toolkit also where no list is open, such as when the page or the window goes out of sight.
    void hidePopup() override {
        QComboBox::hidePopup();
        if (!std::exchange(aberta_, false)) return;
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

  private:
    bool aberta_ = false;
};

}  // namespace wkd
