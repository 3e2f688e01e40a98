#pragma once

#include <zip.h>

namespace wkd {

// Every function in use; they keep their own names.
#define WKD_FUNCOES_DO_ZIP(FUNCAO)                  \
    FUNCAO(zip_close)                               \
    FUNCAO(zip_discard)                             \
    FUNCAO(zip_error_fini)                          \
    FUNCAO(zip_error_init_with_code)                \
    FUNCAO(zip_error_strerror)                      \
    FUNCAO(zip_fclose)                              \
    FUNCAO(zip_file_add)                            \
    FUNCAO(zip_file_get_external_attributes)        \
    FUNCAO(zip_file_strerror)                       \
    FUNCAO(zip_fopen_index)                         \
    FUNCAO(zip_fread)                               \
    FUNCAO(zip_get_num_entries)                     \
    FUNCAO(zip_open)                                \
    FUNCAO(zip_register_cancel_callback_with_state) \
    FUNCAO(zip_source_file)                         \
    FUNCAO(zip_source_free)                         \
    FUNCAO(zip_stat_index)                          \
    FUNCAO(zip_stat_init)                           \
    FUNCAO(zip_strerror)

/// libzip. It is loaded with the first package: the library of cryptography that it brings along is nothing for a
/// window to wait for, or a command without package.
struct TBibliotecaZip {
// A name that is declared takes no parentheses. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define WKD_PONTEIRO(nome) decltype(&::nome) nome = nullptr;
    WKD_FUNCOES_DO_ZIP(WKD_PONTEIRO)
#undef WKD_PONTEIRO
};

/// The one of the process, loaded at the first call and kept. Throws TErroPacote, with what to install, as long as
/// there is none; what has a handle of it may call it anywhere.
const TBibliotecaZip& Zip();

}  // namespace wkd
