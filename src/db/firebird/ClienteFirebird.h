#pragma once

#include <ibase.h>

#include <filesystem>
#include <span>

namespace wkd {

// Every function in use; they keep their own names.
#define WKD_FUNCOES_DO_FIREBIRD(FUNCAO) \
    FUNCAO(fb_cancel_operation)         \
    FUNCAO(fb_interpret)                \
    FUNCAO(fb_sqlstate)                 \
    FUNCAO(isc_attach_database)         \
    FUNCAO(isc_cancel_blob)             \
    FUNCAO(isc_close_blob)              \
    FUNCAO(isc_commit_transaction)      \
    FUNCAO(isc_create_blob2)            \
    FUNCAO(isc_create_database)         \
    FUNCAO(isc_database_info)           \
    FUNCAO(isc_detach_database)         \
    FUNCAO(isc_drop_database)           \
    FUNCAO(isc_dsql_allocate_statement) \
    FUNCAO(isc_dsql_describe)           \
    FUNCAO(isc_dsql_describe_bind)      \
    FUNCAO(isc_dsql_execute)            \
    FUNCAO(isc_dsql_execute2)           \
    FUNCAO(isc_dsql_fetch)              \
    FUNCAO(isc_dsql_free_statement)     \
    FUNCAO(isc_dsql_prepare)            \
    FUNCAO(isc_dsql_sql_info)           \
    FUNCAO(isc_get_client_version)      \
    FUNCAO(isc_get_segment)             \
    FUNCAO(isc_open_blob2)              \
    FUNCAO(isc_portable_integer)        \
    FUNCAO(isc_put_segment)             \
    FUNCAO(isc_rollback_transaction)    \
    FUNCAO(isc_service_attach)          \
    FUNCAO(isc_service_detach)          \
    FUNCAO(isc_service_query)           \
    FUNCAO(isc_service_start)           \
    FUNCAO(isc_start_transaction)       \
    FUNCAO(isc_vax_integer)

/// Firebird's client library, which also loads the embedded engine. It is loaded, not linked: an installation of SQL
/// Server has none.
struct TClienteFirebird {
// A name that is declared takes no parentheses. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define WKD_PONTEIRO(nome) decltype(&::nome) nome = nullptr;
    WKD_FUNCOES_DO_FIREBIRD(WKD_PONTEIRO)
#undef WKD_PONTEIRO
};

/// The one of the process, loaded at the first call and kept. Throws TErroConfiguracao, with what to install, as long
/// as there is none; what has a handle of it may call it anywhere.
const TClienteFirebird& Cliente();

/// From the first of the files that can be loaded and has every function; a bare name is looked for by the system.
TClienteFirebird CarregaClienteFirebird(std::span<const std::filesystem::path> lugares);

}  // namespace wkd
