#pragma once

class QApplication;

namespace wkd {

/// Makes the toolkit's own texts (file dialogs, menus of edit boxes) Portuguese.
void FalaPortugues(QApplication& aplicacao);

}  // namespace wkd
