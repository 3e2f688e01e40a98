/* Firebird's client library for programs under Wine: every function goes on to this machine's own libfbclient. Compiled
   as a program of this machine; only the calls that come in follow the rules of Windows. */
#include <ibase.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define WINDOWS __attribute__((ms_abi, visibility("default")))

/* "C:\pasta\loja.fdb" as this machine calls it, in `lugar`, also behind "host:"; other names as they are. */
static const char* NomeDaqui(const char* nome, char lugar[8192]) {
    const char* prefixo = getenv("WINEPREFIX");
    const char* barra = nome ? strstr(nome, ":\\") : NULL;
    char unidade[2048], pasta[4096];
    if (!barra || barra == nome || !prefixo) return nome;
    snprintf(unidade, sizeof unidade, "%s/dosdevices/%c:", prefixo, barra[-1] | 0x20);
    if (!realpath(unidade, pasta)) return nome;
    const size_t inicio = strlen(pasta) > 1 ? strlen(pasta) : 0;
    snprintf(pasta + inicio, sizeof pasta - inicio, "%s", barra + 1);
    for (char* p = pasta; *p; ++p)
        if (*p == '\\') *p = '/';
    snprintf(lugar, 8192, "%.*s%s", (int)(barra - 1 - nome), nome, pasta);
    return lugar;
}

#define E ISC_STATUS* e
#define PASSA(nome, recebe, da) \
    WINDOWS ISC_STATUS w_##nome recebe { return nome da; }

WINDOWS ISC_STATUS w_isc_attach_database(E, short n, const char* banco, isc_db_handle* h, short t, const char* b) {
    char lugar[8192];
    return isc_attach_database(e, n, NomeDaqui(banco, lugar), h, t, b);
}
WINDOWS ISC_STATUS w_isc_create_database(E, short n, const char* banco, isc_db_handle* h, short t, const char* b,
                                         short tipo) {
    char lugar[8192];
    return isc_create_database(e, n, NomeDaqui(banco, lugar), h, t, b, tipo);
}
/* The only variadic one in use, always for one database. */
WINDOWS ISC_STATUS w_isc_start_transaction(E, isc_tr_handle* h, short quantos, isc_db_handle* banco, int tamanho,
                                           const char* bloco) {
    struct {
        isc_db_handle* banco;
        ISC_LONG tamanho;
        const char* bloco;
    } um = {banco, tamanho, bloco};
    return isc_start_multiple(e, h, quantos, &um);
}

PASSA(isc_cancel_blob, (E, isc_blob_handle* b), (e, b))
PASSA(isc_close_blob, (E, isc_blob_handle* b), (e, b))
PASSA(isc_commit_transaction, (E, isc_tr_handle* t), (e, t))
PASSA(isc_create_blob2, (E, isc_db_handle* d, isc_tr_handle* t, isc_blob_handle* b, ISC_QUAD* id, short n, const char* p),
      (e, d, t, b, id, n, p))
PASSA(isc_database_info, (E, isc_db_handle* d, short n, const char* i, short m, char* r), (e, d, n, i, m, r))
PASSA(isc_detach_database, (E, isc_db_handle* d), (e, d))
PASSA(isc_drop_database, (E, isc_db_handle* d), (e, d))
PASSA(isc_dsql_allocate_statement, (E, isc_db_handle* d, isc_stmt_handle* s), (e, d, s))
PASSA(isc_dsql_describe, (E, isc_stmt_handle* s, unsigned short v, XSQLDA* a), (e, s, v, a))
PASSA(isc_dsql_describe_bind, (E, isc_stmt_handle* s, unsigned short v, XSQLDA* a), (e, s, v, a))
PASSA(isc_dsql_execute, (E, isc_tr_handle* t, isc_stmt_handle* s, unsigned short v, const XSQLDA* a), (e, t, s, v, a))
PASSA(isc_dsql_execute2,
      (E, isc_tr_handle* t, isc_stmt_handle* s, unsigned short v, const XSQLDA* a, const XSQLDA* b), (e, t, s, v, a, b))
PASSA(isc_dsql_fetch, (E, isc_stmt_handle* s, unsigned short v, const XSQLDA* a), (e, s, v, a))
PASSA(isc_dsql_free_statement, (E, isc_stmt_handle* s, unsigned short como), (e, s, como))
PASSA(isc_dsql_prepare,
      (E, isc_tr_handle* t, isc_stmt_handle* s, unsigned short n, const char* q, unsigned short v, XSQLDA* a),
      (e, t, s, n, q, v, a))
PASSA(isc_dsql_sql_info, (E, isc_stmt_handle* s, short n, const char* i, short m, char* r), (e, s, n, i, m, r))
PASSA(isc_get_segment, (E, isc_blob_handle* b, unsigned short* lidos, unsigned short n, char* p), (e, b, lidos, n, p))
PASSA(isc_open_blob2,
      (E, isc_db_handle* d, isc_tr_handle* t, isc_blob_handle* b, ISC_QUAD* id, ISC_USHORT n, const ISC_UCHAR* p),
      (e, d, t, b, id, n, p))
PASSA(isc_put_segment, (E, isc_blob_handle* b, unsigned short n, const char* p), (e, b, n, p))
PASSA(isc_rollback_transaction, (E, isc_tr_handle* t), (e, t))
PASSA(isc_service_attach, (E, unsigned short n, const char* nome, isc_svc_handle* s, unsigned short t, const char* b),
      (e, n, nome, s, t, b))
PASSA(isc_service_detach, (E, isc_svc_handle* s), (e, s))
PASSA(isc_service_query,
      (E, isc_svc_handle* s, isc_resv_handle* v, unsigned short a, const char* b, unsigned short c, const char* d,
       unsigned short f, char* g),
      (e, s, v, a, b, c, d, f, g))
PASSA(isc_service_start, (E, isc_svc_handle* s, isc_resv_handle* v, unsigned short n, const char* b), (e, s, v, n, b))
PASSA(fb_cancel_operation, (E, isc_db_handle* d, ISC_USHORT como), (e, d, como))

WINDOWS ISC_LONG w_fb_interpret(char* texto, unsigned tamanho, const ISC_STATUS** e) {
    return fb_interpret(texto, tamanho, e);
}
WINDOWS void w_fb_sqlstate(char* texto, const ISC_STATUS* e) { fb_sqlstate(texto, e); }
WINDOWS void w_isc_get_client_version(char* texto) { isc_get_client_version(texto); }
WINDOWS ISC_INT64 w_isc_portable_integer(const ISC_UCHAR* p, short n) { return isc_portable_integer(p, n); }
WINDOWS ISC_LONG w_isc_vax_integer(const char* p, short n) { return isc_vax_integer(p, n); }
