#include "firebird/ErroFirebird.h"

#include <algorithm>
#include <string>
#include <vector>

#include "firebird/ClienteFirebird.h"
#include "values/Texto.h"

namespace wkd {
namespace {

std::string TextoDoEstado(const ISC_STATUS* estado) {
    std::string texto;
    char linha[1024];
    const ISC_STATUS* resto = estado;
    while (Cliente().fb_interpret(linha, sizeof linha, &resto) > 0) {
        if (!texto.empty()) texto += '\n';
        texto += TextoDeBytes(linha);
    }
    return texto;
}

std::string SqlStateDoEstado(const ISC_STATUS* estado) {
    char sqlstate[6] = {};
    Cliente().fb_sqlstate(sqlstate, estado);
    return sqlstate;
}

/// All codes of a status vector, the first one first.
std::vector<ISC_STATUS> Codigos(const ISC_STATUS* estado) {
    std::vector<ISC_STATUS> codigos;
    for (const ISC_STATUS* p = estado; *p != isc_arg_end; p += *p == isc_arg_cstring ? 3 : 2)
        if (*p == isc_arg_gds) codigos.push_back(p[1]);
    return codigos;
}

struct TFalhaDeCodigo {
    ISC_STATUS codigo;
    TFalha falha;
};

/// "CONSTRAINT @1 does not exist." None of these has a name in the ibase.h of 3.0.
constexpr ISC_STATUS kRestricaoInexistente = 336068738;
/// "Unknown columns in index @1".
constexpr ISC_STATUS kColunaDeIndiceInexistente = 336068728;
/// "Column @1 from table @2 is referenced in view @3", and in an index.
constexpr ISC_STATUS kColunaEmVisao = 336068660, kColunaEmIndice = 336068795;

/// What the SQLSTATE alone does not tell: several kinds share 23000, 42000 and HY000.
constexpr TFalhaDeCodigo kPorCodigo[] = {
    {isc_no_priv, TFalha::SemPermissao},
    {isc_adm_task_denied, TFalha::SemPermissao},
    {isc_insufficient_svc_privileges, TFalha::SemPermissao},
    {isc_login_error, TFalha::Autenticacao},
    {isc_read_only_database, TFalha::BancoSoLeitura},
    {isc_dependency, TFalha::Dependencia},
    {isc_dyn_dependency_exists, TFalha::Dependencia},
    {kColunaEmVisao, TFalha::Dependencia},
    {kColunaEmIndice, TFalha::Dependencia},
    {isc_version_err, TFalha::VersoesDemais},
    {isc_out_of_temp_space, TFalha::DiscoCheio},
    {isc_unique_key_violation, TFalha::ChaveDuplicada},
    {isc_no_dup, TFalha::ChaveDuplicada},
    {isc_obj_in_use, TFalha::EmUso},
    {isc_lock_conflict, TFalha::EmUso},
    {isc_lock_timeout, TFalha::EmUso},
    {isc_deadlock, TFalha::EmUso},
    {isc_dsql_relation_err, TFalha::ObjetoInexistente},
    {isc_tpb_reserv_relnotfound, TFalha::ObjetoInexistente},
    {isc_dsql_procedure_err, TFalha::ObjetoInexistente},
    {isc_dsql_table_not_found, TFalha::ObjetoInexistente},
    {isc_dsql_view_not_found, TFalha::ObjetoInexistente},
    {isc_indexnotdefined, TFalha::ObjetoInexistente},
    {isc_dyn_index_not_found, TFalha::ObjetoInexistente},
    {isc_dyn_proc_not_found, TFalha::ObjetoInexistente},
    {isc_dyn_trig_not_found, TFalha::ObjetoInexistente},
    {isc_gennotdef, TFalha::ObjetoInexistente},
    {kRestricaoInexistente, TFalha::ObjetoInexistente},
    {isc_dsql_field_err, TFalha::ColunaInexistente},
    {kColunaDeIndiceInexistente, TFalha::ColunaInexistente},
    {isc_att_shutdown, TFalha::Conexao},
    {isc_lost_db_connection, TFalha::Conexao},
    {isc_net_read_err, TFalha::Conexao},
    {isc_net_write_err, TFalha::Conexao},
    {isc_bad_db_handle, TFalha::Conexao},
    {isc_bad_db_format, TFalha::Conexao},
    {isc_io_error, TFalha::Conexao},
    {isc_db_corrupt, TFalha::Conexao},
};

/// While a database is being opened, and of a service.
constexpr TFalhaDeCodigo kAoAbrir[] = {
    {isc_net_lookup_err, TFalha::ServidorDesconhecido},
    {isc_host_unknown, TFalha::ServidorDesconhecido},
    {isc_shutdown, TFalha::BancoFechado},
    {isc_instance_conflict, TFalha::EmUso},
    {isc_already_opened, TFalha::EmUso},
    {isc_bad_db_format, TFalha::NaoEBanco},
    {isc_wrong_ods, TFalha::NaoEBanco},
    {isc_conf_access_denied, TFalha::AcessoRemoto},
    {isc_io_create_err, TFalha::LugarSemAcesso},
    {isc_svcnotdef, TFalha::SemServico},
    {isc_svcnoexe, TFalha::SemServico},
    {isc_service_unknown, TFalha::SemServico},
    {isc_service_att_err, TFalha::SemServico},
    {isc_service_not_supported, TFalha::SemServico},
    {isc_wish_list, TFalha::SemServico},
    {isc_gbak_db_exists, TFalha::BancoExistente},
    {isc_gbak_missing_bkup_desc, TFalha::NaoEBackup},
    {isc_gbak_inv_bkup_ver, TFalha::NaoEBackup},
    {isc_gbak_inv_bkup_ver2, TFalha::NaoEBackup},
    {isc_gbak_read_error, TFalha::BackupCortado},
    {isc_gbak_unexp_eof, TFalha::BackupCortado},
    {isc_gbak_unk_rec_type, TFalha::BackupCortado},
    {isc_gbak_decomp_len_error, TFalha::BackupCortado},
    {isc_gbak_string_trunc, TFalha::BackupCortado},
};

struct TFalhaDeEstado {
    std::string_view prefixo;
    TFalha falha;
};

constexpr TFalhaDeEstado kPorSqlState[] = {
    {"28000", TFalha::Autenticacao},
    {"08", TFalha::Conexao},
    {"42S01", TFalha::ObjetoExistente},
    {"42S02", TFalha::ObjetoInexistente},
    {"42S22", TFalha::ColunaInexistente},
    {"42S11", TFalha::ObjetoExistente},
    {"42S21", TFalha::ObjetoExistente},
    {"22006", TFalha::Restricao},
    {"23", TFalha::Restricao},
    {"22", TFalha::Conversao},
    {"40", TFalha::EmUso},
    {"42", TFalha::Sintaxe},
};

bool Tem(const std::vector<ISC_STATUS>& codigos, ISC_STATUS codigo) {
    return std::find(codigos.begin(), codigos.end(), codigo) != codigos.end();
}

TFalha FalhaDe(const std::vector<ISC_STATUS>& codigos, std::string_view sqlstate) {
    // A second column of a name is refused as a duplicate row of the catalogue.
    if (codigos.front() == isc_no_meta_update && Tem(codigos, isc_unique_key_violation)) return TFalha::ObjetoExistente;
    for (const auto& linha : kPorCodigo)
        if (Tem(codigos, linha.codigo)) return linha.falha;
    for (const auto& linha : kPorSqlState)
        if (sqlstate.starts_with(linha.prefixo)) return linha.falha;
    return TFalha::Outra;
}

/// Whether the operating system gave one of these reasons: as each numbers them itself, or in the words that are all
/// that a server over the network sends, as an element of their own.
bool DoSistema(const ISC_STATUS* estado, std::initializer_list<ISC_STATUS> noUnix,
               std::initializer_list<ISC_STATUS> noWindows, std::initializer_list<std::string_view> ditas = {}) {
    const auto entre = [](const auto& lista, const auto& valor) {
        return std::ranges::find(lista, valor) != lista.end();
    };
    for (const ISC_STATUS* p = estado; *p != isc_arg_end; p += *p == isc_arg_cstring ? 3 : 2) {
        if (*p == isc_arg_unix && entre(noUnix, p[1])) return true;
        if (*p == isc_arg_win32 && entre(noWindows, p[1])) return true;
        if (*p == isc_arg_interpreted && entre(ditas, reinterpret_cast<const char*>(p[1]))) return true;
    }
    return false;
}

/// No room for the server's write: EFBIG, ENOSPC, EDQUOT.
bool DiscoCheio(const ISC_STATUS* estado) {
    return DoSistema(estado, {27, 28, 122}, {39, 112},
                     {"File too large", "No space left on device", "Disk quota exceeded"});
}

/// Whether "no permission for @1 access to @2 @3" is said of that access, which only databases have.
bool SemAcesso(const ISC_STATUS* estado, std::string_view acesso) {
    for (const ISC_STATUS* p = estado; *p != isc_arg_end; p += *p == isc_arg_cstring ? 3 : 2)
        if (*p == isc_arg_gds && p[1] == isc_no_priv && p[2] == isc_arg_string)
            return reinterpret_cast<const char*>(p[3]) == acesso;
    return false;
}

/// Why a database does not open, or a service fails.
TFalha FalhaAoAbrir(const ISC_STATUS* estado, const std::vector<ISC_STATUS>& codigos, TFalha falha) {
    if (SemAcesso(estado, "remote")) return TFalha::AcessoRemoto;
    if (SemAcesso(estado, "read-write")) return TFalha::BancoNegado;
    if (DoSistema(estado, {17}, {80}, {"File exists"})) return TFalha::BancoExistente;
    for (const auto& linha : kAoAbrir)
        if (Tem(codigos, linha.codigo)) return linha.falha;
    if (!Tem(codigos, isc_io_error)) return falha;
    if (DoSistema(estado, {1, 13, 30}, {5, 19})) return TFalha::BancoNegado;  // EPERM, EACCES, EROFS
    if (DoSistema(estado, {}, {32})) return TFalha::EmUso;                    // ERROR_SHARING_VIOLATION
    // What a server over the network says is left alone here: it differs from system to system.
    if (Tem(codigos, isc_io_open_err) || DoSistema(estado, {2, 20}, {2, 3, 123})) return TFalha::BancoInexistente;
    if (Tem(codigos, isc_random)) return TFalha::NaoEBanco;  // shorter than any
    return falha;
}

/// What the user can do about a database that does not open; empty when the server's text says all.
std::string_view Conselho(const std::vector<ISC_STATUS>& codigos) {
    if (Tem(codigos, isc_sys_request))
        return "O usuário do sistema não tem acesso à pasta de travas do Firebird. Defina a variável de ambiente "
               "FIREBIRD_LOCK com uma pasta sua ou inclua o usuário no grupo \"firebird\".";
    if (Tem(codigos, isc_instance_conflict) || Tem(codigos, isc_already_opened))
        return "O banco de dados está aberto por outro programa. Feche-o, ou informe o servidor em Hostname para que "
               "os dois o acessem por ele.";
    return {};
}

}  // namespace

bool TemCodigo(const ISC_STATUS* estado, ISC_STATUS codigo) { return Tem(Codigos(estado), codigo); }

TErroBanco ErroFirebird(const ISC_STATUS* estado, std::string_view comando) {
    const auto codigos = Codigos(estado);
    TErroBanco::TDados dados;
    dados.mensagem = TextoDoEstado(estado);
    if (const auto conselho = Conselho(codigos); !conselho.empty()) dados.mensagem.append("\n").append(conselho);
    dados.codigoNativo = estado[1];
    dados.sqlstate = SqlStateDoEstado(estado);
    dados.comando = comando;
    dados.falha = FalhaDe(codigos, dados.sqlstate);
    dados.conexaoPerdida = dados.falha == TFalha::Conexao && !comando.empty();
    if (comando.empty()) dados.falha = FalhaAoAbrir(estado, codigos, dados.falha);
    if (DiscoCheio(estado)) dados.falha = TFalha::DiscoCheio;
    return TErroBanco(std::move(dados));
}

}  // namespace wkd
