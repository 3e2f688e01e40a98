#include "FontesDoSistema.h"

#ifdef WKD_FONTCONFIG
#include <fontconfig/fontconfig.h>
#endif

namespace wkd {

std::jthread LeFontesDoSistema() {
#ifdef WKD_FONTCONFIG
    return std::jthread([] { FcInit(); });  // the toolkit finds it done, or waits for the rest
#else
    return {};
#endif
}

}  // namespace wkd
