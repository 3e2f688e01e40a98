#include "copy/FormaDaCopia.h"

#include "values/Texto.h"

namespace wkd {

namespace {

/// SQL Server's varchar is left out: its letters are those of a code page, which the target may not share.
bool TextoVariavel(const TColunaFisica& coluna) {
    const std::string tipo = Minusculas(coluna.tipoSql);
    const bool comConjunto = tipo.starts_with("varchar(") && !coluna.conjunto.empty();
    return coluna.tipo == TTipoDado::Texto && (comConjunto || tipo.starts_with("nvarchar("));
}

/// Between bytes and whatever else a blob holds, the server turns nothing into another character set.
bool BlobsComoEstao(const TColunaFisica& origem, const TColunaFisica& destino) {
    const auto longa = [](const TColunaFisica& c) { return c.tipo == TTipoDado::Blob || c.tipo == TTipoDado::Memo; };
    const auto deBytes = [](const TColunaFisica& c) { return IgualSemCaixa(c.tipoSql, "blob sub_type 0"); };
    return longa(origem) && longa(destino) && (deBytes(origem) || deBytes(destino));
}

}  // namespace

int BytesDoInteiro(const TColunaFisica& coluna) {
    const std::string tipo = Minusculas(coluna.tipoSql);
    return tipo == "smallint" ? 2 : tipo == "integer" || tipo == "int" ? 4 : tipo == "bigint" ? 8 : 0;
}

bool MesmaForma(const TColunaFisica& origem, const TColunaFisica& destino) {
    if (!origem.tipoSql.empty() && IgualSemCaixa(origem.tipoSql, destino.tipoSql)) return true;
    if (BlobsComoEstao(origem, destino)) return true;
    if (TextoVariavel(origem) && TextoVariavel(destino)) return origem.conjunto == destino.conjunto;
    return BytesDoInteiro(origem) > 0 && BytesDoInteiro(origem) <= BytesDoInteiro(destino);
}

std::string TextoNaoCabe(const TColunaFisica& origem, const TColunaFisica& destino, const TDialeto& dialeto) {
    if (!TextoVariavel(destino) || destino.tamanho >= origem.tamanho) return "";
    return dialeto.Caracteres(dialeto.Identificador(origem.nome)) + " > " + std::to_string(destino.tamanho);
}

}  // namespace wkd
