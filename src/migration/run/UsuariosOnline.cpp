#include "run/UsuariosOnline.h"

#include <algorithm>

#include "rows/WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kColunas[] = {"NOME_COMPLETO", "DEPARTAMENTO", "EMAIL"};

bool GeracaoAnterior(const TErroBanco& erro) {
    return erro.Falha() == TFalha::ObjetoInexistente || erro.Falha() == TFalha::ColunaInexistente;
}

bool TemAsColunas(const TWKDQuery& q) {
    return std::ranges::all_of(kColunas, [&](auto coluna) { return IndiceDoCampo(q.Campos(), coluna) >= 0; });
}

}  // namespace

std::optional<std::int64_t> ContaUsuariosOnline(TConnection& conexao) {
    try {
        return ContaRegistros(conexao, "select count(codigo) as total from csenha where flag1 > 0");
    } catch (const TErroBanco& erro) {
        if (!GeracaoAnterior(erro)) throw;
        return std::nullopt;
    }
}

std::optional<std::vector<TUsuarioOnline>> ListaUsuariosOnline(TConnection& conexao) {
    try {
        std::vector<TUsuarioOnline> usuarios;
        TWKDQuery q(conexao,
                    "select *\r\n"
                    "from   csenha\r\n"
                    "where  flag1 > 0");
        q.Open();
        if (!TemAsColunas(q)) return std::nullopt;
        for (; !q.Eof(); q.Next())
            usuarios.push_back({q.Texto(kColunas[0]), q.Texto(kColunas[1]), q.Texto(kColunas[2]), q.Campo("CODIGO")});
        return usuarios;
    } catch (const TErroBanco& erro) {
        if (!GeracaoAnterior(erro)) throw;
        return std::nullopt;
    }
}

std::int64_t LiberaUsuarios(TConnection& conexao, const std::vector<TValor>& codigos) {
    std::int64_t liberados = 0;
    TTransacao transacao(conexao);
    TWKDQuery libera(conexao, "update csenha set flag1 = 0 where codigo = :pCODIGO and flag1 > 0");
    for (const TValor& codigo : codigos) liberados += libera.Param("pCODIGO", codigo).ExecSQL();
    transacao.Commit();
    return liberados;
}

}  // namespace wkd
