#include "UsuariosOnline.h"

#include "WKDQuery.h"

namespace wkd {

std::int64_t ContaUsuariosOnline(TConnection& conexao) {
    return ContaRegistros(conexao, "select count(codigo) as total from csenha where flag1 > 0");
}

std::vector<TUsuarioOnline> ListaUsuariosOnline(TConnection& conexao) {
    std::vector<TUsuarioOnline> usuarios;
    TWKDQuery q(conexao,
                "select *\r\n"
                "from   csenha\r\n"
                "where  flag1 > 0");
    for (q.Open(); !q.Eof(); q.Next())
        usuarios.push_back({q.Texto("NOME_COMPLETO"), q.Texto("DEPARTAMENTO"), q.Texto("EMAIL")});
    return usuarios;
}

}  // namespace wkd
