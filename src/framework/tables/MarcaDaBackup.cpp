#include "tables/MarcaDaBackup.h"

#include <algorithm>
#include <iterator>

#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kNomes[] = {"", "guardando", "restaurando", "terminado"};  // of TMarcaDaBackup
constexpr std::string_view kInicio = "AtualizaWKD: backup ";
constexpr std::string_view kPropriedade = "WKD_BACKUP";
constexpr char kEntrePedacos = '\x1f';

TMarcaDaBackup MarcaDoNome(std::string_view nome) {
    const auto achado = std::ranges::find(kNomes, nome);
    return achado == std::end(kNomes) ? TMarcaDaBackup::Nenhuma
                                      : static_cast<TMarcaDaBackup>(achado - std::begin(kNomes));
}

std::string_view NomeDaMarca(TMarcaDaBackup marca) { return kNomes[static_cast<std::size_t>(marca)]; }

/// The comment, from the mark on, in its pieces.
std::vector<std::string> Pedacos(TConnection& conexao, const std::string& backup) {
    TWKDQuery q(conexao,
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relations"
                " where rdb$relation_name = :tabela");
    q.Param("tabela", Maiusculas(backup)).Open();
    return q.Eof() ? std::vector<std::string>() : Divide(TextoDeBytes(q.Campo("TEXTO").ComoBytes()), kEntrePedacos);
}

bool TemMarca(const std::vector<std::string>& pedacos) {
    return !pedacos.empty() && pedacos.front().starts_with(kInicio);
}

void GravaComentario(TConnection& conexao, const std::string& backup, const std::vector<std::string>& pedacos) {
    conexao
        .Prepara("comment on table " + backup + " is " +
                 (pedacos.empty() ? "null" : Aspas(Junta(pedacos, std::string(1, kEntrePedacos)))))
        ->Executa();
}

std::string NomeDaPropriedade(TConnection& conexao, const std::string& backup) {
    TWKDQuery q(conexao,
                "select cast(value as nvarchar(4000)) as NOME from sys.extended_properties where class = 1"
                " and major_id = object_id(" +
                    Aspas(backup) + ") and minor_id = 0 and name = '" + std::string(kPropriedade) + "'");
    q.Open();
    return q.Eof() ? "" : q.Texto("NOME");
}

void GravaPropriedade(TConnection& conexao, const std::string& backup, TMarcaDaBackup marca) {
    const bool existe = !NomeDaPropriedade(conexao, backup).empty();
    conexao
        .Prepara("declare @esquema sysname = schema_name() exec " +
                 std::string(existe ? "sp_updateextendedproperty" : "sp_addextendedproperty") + " @name = N" +
                 Aspas(kPropriedade) + ", @value = N" + Aspas(NomeDaMarca(marca)) +
                 ", @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE', @level1name = N" +
                 Aspas(backup))
        ->Executa();
}

}  // namespace

TMarcaDaBackup MarcaDaBackup(TConnection& conexao, const std::string& backup) {
    if (conexao.TipoBanco() == TTipoBanco::tbSQLServer) return MarcaDoNome(NomeDaPropriedade(conexao, backup));
    if (conexao.TipoBanco() != TTipoBanco::tbInterbase) return TMarcaDaBackup::Nenhuma;
    const auto pedacos = Pedacos(conexao, backup);
    return TemMarca(pedacos) ? MarcaDoNome(std::string_view(pedacos.front()).substr(kInicio.size()))
                             : TMarcaDaBackup::Nenhuma;
}

void MarcaBackup(TConnection& conexao, const std::string& backup, TMarcaDaBackup marca) {
    if (conexao.TipoBanco() == TTipoBanco::tbSQLServer) return GravaPropriedade(conexao, backup, marca);
    if (conexao.TipoBanco() != TTipoBanco::tbInterbase) return;
    auto pedacos = Pedacos(conexao, backup);
    if (!TemMarca(pedacos)) pedacos.emplace(pedacos.begin());
    pedacos.front() = std::string(kInicio) + std::string(NomeDaMarca(marca));
    GravaComentario(conexao, backup, pedacos);
}

std::vector<std::string> BackupsQueGuardam(TConnection& conexao) {
    const std::string nome(NomeDaMarca(TMarcaDaBackup::Restaurando));
    std::string sql;
    if (conexao.TipoBanco() == TTipoBanco::tbInterbase)
        sql = "select rdb$relation_name as NOME from rdb$relations where rdb$description starting with '" +
              std::string(kInicio) + nome + "'";
    else if (conexao.TipoBanco() == TTipoBanco::tbSQLServer)
        sql =
            "select object_name(major_id) as NOME from sys.extended_properties where class = 1 and minor_id = 0"
            " and name = '" +
            std::string(kPropriedade) + "' and cast(value as nvarchar(4000)) = '" + nome + "'";
    std::vector<std::string> nomes;
    if (sql.empty()) return nomes;
    TWKDQuery q(conexao, sql);
    for (q.Open(); !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

std::vector<std::string> ComentarioDaBackup(TConnection& conexao, const std::string& backup) {
    auto pedacos = Pedacos(conexao, backup);
    if (TemMarca(pedacos)) pedacos.erase(pedacos.begin());
    return pedacos;
}

void ComentaBackup(TConnection& conexao, const std::string& backup, const std::vector<std::string>& pedacos) {
    auto todos = Pedacos(conexao, backup);
    todos.resize(TemMarca(todos) ? 1 : 0);
    todos.insert(todos.end(), pedacos.begin(), pedacos.end());
    GravaComentario(conexao, backup, todos);
}

}  // namespace wkd
