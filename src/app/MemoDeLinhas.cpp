#include "MemoDeLinhas.h"

#include <QScrollBar>

namespace wkd {

TMemoDeLinhas::TMemoDeLinhas(QWidget* pai) : QPlainTextEdit(pai) {
    setReadOnly(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void TMemoDeLinhas::Acrescenta(const QString& linha) {
    if (pendentes_.isEmpty())
        QMetaObject::invokeMethod(
            this, [this] { Descarrega(); }, Qt::QueuedConnection);
    pendentes_ += linha;
}

void TMemoDeLinhas::Descarrega() {
    if (pendentes_.isEmpty()) return;
    appendPlainText(pendentes_.join('\n'));
    pendentes_.clear();
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

}  // namespace wkd
