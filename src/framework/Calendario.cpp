// Calendar and clock of Valor.h.
#include <chrono>
#include <ctime>

#include "Valor.h"

namespace wkd {

TData DataDe(int ano, int mes, int dia) {
    if (mes <= 2) --ano;
    const int era = (ano >= 0 ? ano : ano - 399) / 400;
    const int anoDaEra = ano - era * 400;
    const int diaDoAno = (153 * (mes + (mes > 2 ? -3 : 9)) + 2) / 5 + dia - 1;  // the year begins on 1 March
    const int diaDaEra = anoDaEra * 365 + anoDaEra / 4 - anoDaEra / 100 + diaDoAno;
    return {era * 146097 + diaDaEra - 719468};
}

TCalendario CalendarioDe(TData data) {
    const int dias = data.dias + 719468;
    const int era = (dias >= 0 ? dias : dias - 146096) / 146097;
    const int diaDaEra = dias - era * 146097;
    const int anoDaEra = (diaDaEra - diaDaEra / 1460 + diaDaEra / 36524 - diaDaEra / 146096) / 365;
    const int diaDoAno = diaDaEra - (365 * anoDaEra + anoDaEra / 4 - anoDaEra / 100);
    const int mesDesdeMarco = (5 * diaDoAno + 2) / 153;
    const int mes = mesDesdeMarco + (mesDesdeMarco < 10 ? 3 : -9);
    return {anoDaEra + era * 400 + (mes <= 2), mes, diaDoAno - (153 * mesDesdeMarco + 2) / 5 + 1};
}

TDataHora Agora() {
    using namespace std::chrono;
    const auto agora = system_clock::now();
    const std::time_t segundos = system_clock::to_time_t(floor<std::chrono::seconds>(agora));
    const auto milissegundos = floor<milliseconds>(agora - floor<std::chrono::seconds>(agora)).count();
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &segundos);
#else
    localtime_r(&segundos, &local);
#endif
    const int segundo = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return {DataDe(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
            THora{segundo * kTiquesPorSegundo + milissegundos * (kTiquesPorSegundo / 1000)}};
}

}  // namespace wkd
