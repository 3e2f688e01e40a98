#include "Preferencias.h"

namespace wkd {

#ifdef _WIN32
TPreferencias::TPreferencias() : ajustes_("HKEY_CURRENT_USER\\AtualizaWKD", QSettings::NativeFormat) {}
#else
TPreferencias::TPreferencias() : ajustes_(QSettings::NativeFormat, QSettings::UserScope, "AtualizaWKD") {}
#endif

}  // namespace wkd
