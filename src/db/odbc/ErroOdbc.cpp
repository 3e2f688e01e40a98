#include "odbc/ErroOdbc.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace wkd {
namespace {

std::vector<TRegistroOdbc> Registros(SQLSMALLINT tipo, SQLHANDLE handle) {
    std::vector<TRegistroOdbc> registros;
    for (SQLSMALLINT i = 1; i < 100; ++i) {
        SQLWCHAR estado[6] = {}, texto[4096] = {};
        SQLINTEGER codigo = 0;
        SQLSMALLINT tamanho = 0;
        if (!SQL_SUCCEEDED(SQLGetDiagRecW(tipo, handle, i, estado, &codigo, texto, 4096, &tamanho))) break;
        registros.push_back({TextoLido(estado, 5), TextoLido(texto, std::min<SQLLEN>(tamanho, 4095)), codigo});
    }
    return registros;
}

struct TFalhaDeCodigo {
    SQLINTEGER codigo;
    TFalha falha;
};

/// Message numbers of SQL Server, where the SQLSTATE alone does not tell.
constexpr TFalhaDeCodigo kPorCodigo[] = {
    {2627, TFalha::ChaveDuplicada},
    {2601, TFalha::ChaveDuplicada},
    {1505, TFalha::ChaveDuplicada},
    {547, TFalha::Restricao},
    {515, TFalha::Restricao},
    {8111, TFalha::Restricao},
    {208, TFalha::ObjetoInexistente},
    {3701, TFalha::ObjetoInexistente},
    {3727, TFalha::ObjetoInexistente},
    {3728, TFalha::ObjetoInexistente},
    {4902, TFalha::ObjetoInexistente},
    {1088, TFalha::ObjetoInexistente},
    {207, TFalha::ColunaInexistente},
    {1911, TFalha::ColunaInexistente},
    {4924, TFalha::ColunaInexistente},
    {2714, TFalha::ObjetoExistente},
    {2705, TFalha::ObjetoExistente},
    {1913, TFalha::ObjetoExistente},
    {1779, TFalha::ObjetoExistente},
    {8152, TFalha::Conversao},
    {2628, TFalha::Conversao},
    {245, TFalha::Conversao},
    {8114, TFalha::Conversao},
    {8115, TFalha::Conversao},
    {220, TFalha::Conversao},
    {241, TFalha::Conversao},
    {242, TFalha::Conversao},
    {206, TFalha::Conversao},
    {257, TFalha::Conversao},
    {529, TFalha::Conversao},
    {1205, TFalha::EmUso},
    {1222, TFalha::EmUso},
    {3702, TFalha::EmUso},
    {229, TFalha::SemPermissao},
    {230, TFalha::SemPermissao},
    {262, TFalha::SemPermissao},
    {297, TFalha::SemPermissao},
    {300, TFalha::SemPermissao},
    {3704, TFalha::SemPermissao},
    {15247, TFalha::SemPermissao},
    {3726, TFalha::Dependencia},
    {3729, TFalha::Dependencia},
    {4922, TFalha::Dependencia},
    {5074, TFalha::Dependencia},
    {1101, TFalha::DiscoCheio},
    {1105, TFalha::DiscoCheio},
    {3202, TFalha::DiscoCheio},
    {3257, TFalha::DiscoCheio},
    {5149, TFalha::DiscoCheio},
    {9002, TFalha::DiscoCheio},
    {3101, TFalha::EmUso},
    {5061, TFalha::EmUso},
    {5064, TFalha::EmUso},
    {5070, TFalha::EmUso},
    {3110, TFalha::SemPermissao},
    {1801, TFalha::BancoExistente},
    {1834, TFalha::BancoExistente},
    {3142, TFalha::BancoExistente},
    {5170, TFalha::BancoExistente},
    {3906, TFalha::BancoSoLeitura},
    {3201, TFalha::LugarSemAcesso},
    {5123, TFalha::LugarSemAcesso},
    {5133, TFalha::LugarSemAcesso},
    {40510, TFalha::SemServico},
    {3241, TFalha::NaoEBackup},
    {3242, TFalha::NaoEBackup},
    {3243, TFalha::NaoEBackup},
    {3254, TFalha::NaoEBackup},
    {3183, TFalha::BackupCortado},
    {3189, TFalha::BackupCortado},
    {3203, TFalha::BackupCortado},
    {18456, TFalha::Autenticacao},
    {18452, TFalha::Autenticacao},
    {18486, TFalha::Autenticacao},
    {18487, TFalha::Autenticacao},
    {18488, TFalha::Autenticacao},
    {20014, TFalha::Autenticacao},
    {911, TFalha::BancoInexistente},
    {4060, TFalha::BancoInexistente},
    {916, TFalha::BancoNegado},
    {4064, TFalha::BancoNegado},
    {18470, TFalha::BancoNegado},
    {922, TFalha::BancoFechado},
    {927, TFalha::BancoFechado},
    {942, TFalha::BancoFechado},
    {924, TFalha::EmUso},
    {11001, TFalha::ServidorDesconhecido},
    {11004, TFalha::ServidorDesconhecido},
    {20012, TFalha::ServidorDesconhecido},
    {20013, TFalha::ServidorDesconhecido},
    {102, TFalha::Sintaxe},
    {156, TFalha::Sintaxe},
};

struct TFalhaDeEstado {
    std::string_view prefixo;
    TFalha falha;
};

constexpr TFalhaDeEstado kPorSqlState[] = {
    {"28000", TFalha::Autenticacao},
    {"08", TFalha::Conexao},
    {"HYT01", TFalha::Conexao},
    {"IM002", TFalha::SemDriver},
    {"IM003", TFalha::SemDriver},
    {"IM00", TFalha::Conexao},
    {"42S01", TFalha::ObjetoExistente},
    {"42S11", TFalha::ObjetoExistente},
    {"42S21", TFalha::ObjetoExistente},
    {"42S02", TFalha::ObjetoInexistente},
    {"42S12", TFalha::ObjetoInexistente},
    {"42S22", TFalha::ColunaInexistente},
    {"23", TFalha::Restricao},
    {"22", TFalha::Conversao},
    {"40001", TFalha::EmUso},
    {"HYT00", TFalha::EmUso},
    {"42", TFalha::Sintaxe},
    {"37", TFalha::Sintaxe},
};

/// A connection that is gone, in codes of the FreeTDS library itself; of the server, which ended the session (596) or
/// is being shut down (6005); and of the network as Windows counts.
constexpr SQLINTEGER kDesligada[] = {20003, 20004, 20006, 20009, 20017, 20047, 596, 6005, 10053, 10054, 10060};

std::optional<TFalha> PorCodigo(SQLINTEGER codigo) {
    if (std::ranges::find(kDesligada, codigo) != std::end(kDesligada)) return TFalha::Conexao;
    const auto* achada = std::ranges::find(kPorCodigo, codigo, &TFalhaDeCodigo::codigo);
    if (achada == std::end(kPorCodigo)) return std::nullopt;
    return achada->falha;
}

TFalha PorSqlState(std::string_view sqlstate) {
    for (const auto& linha : kPorSqlState)
        if (sqlstate.starts_with(linha.prefixo)) return linha.falha;
    return TFalha::Outra;
}

TFalha FalhaDe(const TRegistroOdbc& registro) {
    return PorCodigo(registro.codigo).value_or(PorSqlState(registro.sqlstate));
}

/// Whether it says of an opening more than that it failed.
bool DizPorque(const TRegistroOdbc& registro) {
    const auto falha = FalhaDe(registro);
    return falha == TFalha::Autenticacao || (falha > TFalha::Conexao && falha <= TFalha::SemDriver);
}

/// The record that tells what happened: the loss of the connection, if there is one; others say only that the statement
/// has been ended.
const TRegistroOdbc& Principal(const std::vector<TRegistroOdbc>& registros, bool aoAbrir) {
    if (aoAbrir)
        if (const auto porque = std::ranges::find_if(registros, DizPorque); porque != registros.end()) return *porque;
    auto achado = std::ranges::find(registros, TFalha::Conexao, FalhaDe);
    if (achado == registros.end())
        achado = std::ranges::find_if(registros, [](const auto& r) { return PorCodigo(r.codigo).has_value(); });
    return achado == registros.end() ? registros.front() : *achado;
}

/// FreeTDS says no more than "Unknown error" when the other side has hung up.
bool Morta(SQLHDBC ligacao) {
    SQLUINTEGER morta = SQL_CD_FALSE;
    return ligacao != SQL_NULL_HDBC &&
           SQL_SUCCEEDED(SQLGetConnectAttr(ligacao, SQL_ATTR_CONNECTION_DEAD, &morta, SQL_IS_UINTEGER, nullptr)) &&
           morta == SQL_CD_TRUE;
}

std::string Textos(const std::vector<TRegistroOdbc>& registros) {
    std::vector<std::string> textos;
    for (const auto& registro : registros)
        if (std::ranges::find(textos, registro.texto) == textos.end()) textos.push_back(registro.texto);
    return Junta(textos, "\n");
}

}  // namespace

TErroBanco ErroDosRegistros(std::vector<TRegistroOdbc> registros, std::string_view comando, bool morta) {
    TErroBanco::TDados dados;
    if (registros.empty()) registros.push_back({"HY000", "o driver ODBC não disse o motivo da falha", 0});
    const auto& principal = Principal(registros, comando.empty());
    dados.mensagem = (morta ? "A conexão com o servidor acabou.\n" : "") + Textos(registros);
    dados.codigoNativo = principal.codigo;
    dados.sqlstate = principal.sqlstate;
    dados.comando = comando;
    dados.falha = morta ? TFalha::Conexao : FalhaDe(principal);
    const bool semMotivo = dados.falha == TFalha::Outra || principal.sqlstate == "HYT00";  // a time-out, while it opens
    const bool semBiblioteca = registros.size() == 1 && principal.sqlstate == "01000";     // the driver manager's word
    if (comando.empty() && semMotivo) dados.falha = semBiblioteca ? TFalha::SemDriver : TFalha::Conexao;
    dados.conexaoPerdida = dados.falha == TFalha::Conexao && !comando.empty();
    return TErroBanco(std::move(dados));
}

TErroBanco ErroOdbc(SQLSMALLINT tipo, SQLHANDLE handle, std::string_view comando, SQLHDBC ligacao) {
    return ErroDosRegistros(Registros(tipo, handle), comando, Morta(ligacao));
}

}  // namespace wkd
