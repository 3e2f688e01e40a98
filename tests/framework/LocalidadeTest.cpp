// What a program takes over from the user's Windows.
#include <windows.h>

#include <gtest/gtest.h>

#include <cmath>

#include "values/TextoDeData.h"
#include "values/Valor.h"

namespace wkd {
namespace {

/// A setting of the user's, which is as it was afterwards.
class TAjuste {
  public:
    TAjuste(LCTYPE qual, const wchar_t* valor) : qual_(qual) {
        GetLocaleInfoW(LOCALE_USER_DEFAULT, qual, antes_, static_cast<int>(std::size(antes_)));
        SetLocaleInfoW(LOCALE_USER_DEFAULT, qual, valor);
    }
    ~TAjuste() { SetLocaleInfoW(LOCALE_USER_DEFAULT, qual_, antes_); }
    TAjuste(const TAjuste&) = delete;
    TAjuste& operator=(const TAjuste&) = delete;

  private:
    LCTYPE qual_;
    wchar_t antes_[16] = L"";
};

TEST(Localidade, DatesOfTheLogHaveTheSeparatorsOfTheUser) {
    const TAjuste data(LOCALE_SDATE, L"-"), hora(LOCALE_STIME, L".");
    EXPECT_EQ(PadraoDoUsuario("dd/mm/yyyy hh:mm:ss"), "dd-mm-yyyy hh.mm.ss");
}

TEST(Localidade, NowIsWhatTheClockOnTheWallShows) {
    SYSTEMTIME relogio;
    GetLocalTime(&relogio);
    const TDataHora parede{DataDe(relogio.wYear, relogio.wMonth, relogio.wDay),
                           *LeHora(std::to_string(relogio.wHour) + ":" + (relogio.wMinute < 10 ? "0" : "") +
                                   std::to_string(relogio.wMinute))};
    const TDataHora agora = Agora();
    const auto tiques = [](TDataHora quando) {
        return quando.data.dias * 864e9 + static_cast<double>(quando.hora.tiques);
    };
    EXPECT_LT(std::abs(tiques(agora) - tiques(parede)), 120e7) << TextoDaDataHora(agora);
}

}  // namespace
}  // namespace wkd
