#include "rebuild/Devolucoes.h"

#include <algorithm>
#include <optional>

#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Stands between the statements, each of which may have lines of its own, and before what goes on with the last one.
constexpr char kMarca = '\x1f';
/// Firebird keeps them in the comments of the backup table, behind its mark, and of its columns: a literal has at most
/// 65,535 bytes.
constexpr std::size_t kBytesDoComentario = 30'000;
/// On SQL Server they are extended properties of the backup table: one holds at most 7,500 bytes.
constexpr std::size_t kBytesDaPropriedade = 3'000;
constexpr std::string_view kPropriedade = "WKD_DEVOLUCAO_";

/// The text in whole characters.
std::vector<std::string> Pedacos(std::string_view texto, std::size_t bytes) {
    std::vector<std::string> pedacos;
    while (!texto.empty()) {
        const auto fim = texto.size() <= bytes ? texto.size() : CaracteresInteiros(texto.substr(0, bytes));
        pedacos.emplace_back(texto.substr(0, fim));
        texto.remove_prefix(fim);
    }
    return pedacos;
}

/// The table's own behind its mark, then those of its columns in their order.
std::vector<std::string> Comentarios(TContexto& ctx, const std::string& backup) {
    std::vector<std::string> textos = {Junta(ComentarioDaBackup(ctx.Conexao(), backup), std::string(1, kMarca))};
    TWKDQuery q(ctx.Conexao(),
                "select cast(rdb$description as blob sub_type 0) as TEXTO from rdb$relation_fields"
                " where rdb$relation_name = :tabela and rdb$description is not null order by rdb$field_position");
    q.Param("tabela", backup).Open();
    for (; !q.Eof(); q.Next()) textos.push_back(TextoDeBytes(q.Campo("TEXTO").ComoBytes()));
    return textos;
}

void ComentaColuna(TContexto& ctx, const std::string& backup, const TColunaFisica& coluna, const std::string& texto) {
    ctx.Conexao()
        .Prepara("comment on column " + backup + "." + Identificador(coluna.nome, ctx.Banco()) + " is " +
                 (texto.empty() ? "null" : Aspas(texto)))
        ->Executa();
}

void GuardaComentarios(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    auto pedacos = Pedacos(Junta(comandos, std::string(1, kMarca)), kBytesDoComentario);
    const auto colunas = ctx.Conexao().Colunas(backup);
    if (pedacos.size() > colunas.size() + 1)
        throw TErroConhecido(TFalha::Conversao, "comentários, índices e permissões demais para guardar em " + backup);
    pedacos.resize(std::max(pedacos.size(), Comentarios(ctx, backup).size()));
    TTransacao transacao(ctx.Conexao());
    ComentaBackup(ctx.Conexao(), backup, {pedacos.begin(), pedacos.begin() + (pedacos.front().empty() ? 0 : 1)});
    for (std::size_t i = 1; i < pedacos.size(); ++i) ComentaColuna(ctx, backup, colunas.at(i - 1), pedacos[i]);
    transacao.Commit();
}

std::string NumeroDaPropriedade(std::size_t numero) {
    const auto texto = std::to_string(numero);
    return std::string(kPropriedade) + std::string(6 - std::min<std::size_t>(6, texto.size()), '0') + texto;
}

std::vector<std::string> Propriedades(TContexto& ctx, const std::string& backup) {
    std::vector<std::string> textos;
    TWKDQuery q(ctx.Conexao(),
                "select cast(value as nvarchar(4000)) as NOME from sys.extended_properties where class = 1"
                " and major_id = object_id(:tabela) and minor_id = 0 and name like '" +
                    std::string(kPropriedade) + "%' order by name");
    q.Param("tabela", backup).Open();
    for (; !q.Eof(); q.Next()) textos.push_back(q.Texto("NOME"));
    return textos;
}

void GuardaPropriedades(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    std::vector<std::string> pedacos;
    for (const auto& comando : comandos)
        for (bool continua = false; auto& pedaco : Pedacos(comando, kBytesDaPropriedade))
            pedacos.push_back((std::exchange(continua, true) ? std::string(1, kMarca) : std::string()) + pedaco);
    const std::size_t antes = Propriedades(ctx, backup).size();
    const std::string tabela =
        ", @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE',"
        " @level1name = N" +
        Aspas(backup);
    const std::string esquema = "declare @esquema sysname = schema_name() exec ";
    TTransacao transacao(ctx.Conexao());
    for (std::size_t i = 0; i < antes; ++i)
        ctx.Conexao()
            .Prepara(esquema + "sp_dropextendedproperty @name = N" + Aspas(NumeroDaPropriedade(i)) + tabela)
            ->Executa();
    for (std::size_t i = 0; i < pedacos.size(); ++i)
        ctx.Conexao()
            .Prepara(esquema + "sp_addextendedproperty @name = N" + Aspas(NumeroDaPropriedade(i)) + ", @value = N" +
                     Aspas(pedacos[i]) + tabela)
            ->Executa();
    transacao.Commit();
}

}  // namespace

void GuardaDevolucoes(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos) {
    if (comandos == DevolucoesGuardadas(ctx, backup)) return;
    if (ctx.Banco() == TTipoBanco::tbSQLServer) return GuardaPropriedades(ctx, backup, comandos);
    if (ctx.Banco() == TTipoBanco::tbInterbase) GuardaComentarios(ctx, backup, comandos);
}

std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup) {
    std::vector<std::string> comandos;
    if (ctx.Banco() == TTipoBanco::tbInterbase) {
        const auto texto = Junta(Comentarios(ctx, backup), "");
        return texto.empty() ? comandos : Divide(texto, kMarca);
    }
    if (ctx.Banco() != TTipoBanco::tbSQLServer) return comandos;
    for (const auto& pedaco : Propriedades(ctx, backup)) {
        if (pedaco.starts_with(kMarca) && !comandos.empty())
            comandos.back() += pedaco.substr(1);
        else
            comandos.push_back(pedaco);
    }
    return comandos;
}

}  // namespace wkd
