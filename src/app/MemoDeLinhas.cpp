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

void TMemoDeLinhas::Acrescenta(const QStringList& linhas) {
    if (linhas.isEmpty()) return;
    appendPlainText(linhas.join('\n'));
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

}  // namespace wkd
