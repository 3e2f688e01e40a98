#pragma once

#include <string>
#include <string_view>

namespace wkd {

/// What a work in a process of its own took.
struct TGasto {
    double segundos = 0, megabytes = 0;  // the peak of its memory
};

/// Option of such a process: "work:argument".
inline constexpr std::string_view kProcesso = "--processo";

/// Runs a work of kTrabalhos in another process, whose memory is then that of the work. Throws std::runtime_error.
TGasto EmOutroProcesso(std::string_view trabalho, const std::string& argumento);

/// The other process: does it and prints what it took.
void TrabalhaEInforma(std::string_view pedido);

// The works; each gives its seconds.
double Reconstroi(const std::string& linhas);   // a table of so many rows
double CorreNaPasta(const std::string& pasta);  // the update of a TBancoGrande's folder
double AbreEEspera(const std::string& pasta);   // nothing: its database is opened

struct TTrabalho {
    std::string_view nome;
    double (*faz)(const std::string& argumento);
};

inline constexpr TTrabalho kTrabalhos[] = {
    {"reconstroi", Reconstroi}, {"corre", CorreNaPasta}, {"espera", AbreEEspera}};

}  // namespace wkd
