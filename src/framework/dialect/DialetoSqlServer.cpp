#include "dialect/DialetoSqlServer.h"

#include "values/Texto.h"

namespace wkd {

std::string TDialetoSqlServer::AjustaQuery(std::string_view comando) const {
    return Troca(comando, " FIRST ", " TOP ");
}

std::string TDialetoSqlServer::ChaveAlteraColuna(std::string_view coluna) const {
    return " alter COLUMN " + std::string(coluna);
}

std::string TDialetoSqlServer::AjustaCriaTabela(std::string_view comando) const {
    return Troca(Troca(comando, "BLOB", "IMAGE"), "TIMESTAMP", "datetime");
}

std::string TDialetoSqlServer::ApagaIndice(const TIndice& indice, std::string_view tabela) const {
    return TDialeto::ApagaIndice(indice, tabela) + " on " + std::string(tabela);
}

std::string TDialetoSqlServer::ExigeValor(std::string_view tabela, const TColunaFisica& coluna) const {
    return "alter table " + std::string(tabela) + " alter column " + coluna.nome + " " + coluna.tipoSql + " not null";
}

std::string TDialetoSqlServer::DispensaValor(std::string_view tabela, const TColunaFisica& coluna) const {
    return "alter table " + std::string(tabela) + " alter column " + coluna.nome + " " + coluna.tipoSql + " null";
}

std::string TDialetoSqlServer::ColunaCalculada(const TColunaFisica& coluna) const {
    return Identificador(coluna.nome) + " as (" + coluna.expressao + ")";
}

/// The server looks at types and sizes only when it runs the statement. A local temporary table stands in a database of
/// its own: nothing of this one is changed or locked, and it may be read-only.
std::string TDialetoSqlServer::NomeDeEnsaio(std::string_view tabela) const { return "#" + std::string(tabela); }

/// len() passes over blanks at the end.
std::string TDialetoSqlServer::Caracteres(const std::string& texto) const {
    return "len(cast(" + texto + " as nvarchar(max)) + 'x') - 1";
}

std::string TDialetoSqlServer::Trecho(const std::string& texto, int de, int letras) const {
    return "substring(" + texto + "," + std::to_string(de) + "," + std::to_string(letras) + ")";
}

std::string TDialetoSqlServer::Agrupavel(const TColunaFisica& coluna) const {
    const std::string nome = Identificador(coluna.nome);
    const bool longa = coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo;
    return longa ? "cast(" + nome + " as varbinary(max))" : nome;
}

/// An object depends on the column, and what was to be done to it failed therefore.
bool TDialetoSqlServer::ColunaPresa(const TErroBanco& erro) const {
    constexpr std::int64_t kDepende = 5074, kNaoMudou = 4922;
    return erro.CodigoNativo() == kDepende || erro.CodigoNativo() == kNaoMudou;
}

namespace {

bool EhTexto(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Memo; }

bool EhBinaria(const TColunaFisica& coluna) {
    return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Bytes;
}

bool Numerica(const TColunaFisica& coluna) {
    return coluna.tipo == TTipoDado::Inteiro || coluna.tipo == TTipoDado::Decimal ||
           coluna.tipo == TTipoDado::Flutuante;
}

bool DeDia(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Data || coluna.tipo == TTipoDado::DataHora; }

/// Of another type or width, which has other bytes for the same number.
bool NumerosDiversos(const TColunaFisica& b, const TColunaFisica& t) {
    return Numerica(b) && Numerica(t) && (b.tipo != t.tipo || !IgualSemCaixa(b.tipoSql, t.tipoSql));
}

std::string Como(const std::string& expressao, const std::string& tipo) {
    return "cast(" + expressao + " as " + tipo + ")";
}

std::string BytesDoTexto(const std::string& expressao, const TColunaFisica& coluna) {
    const auto tipo = Minusculas(coluna.tipoSql);
    const bool fixa = tipo.starts_with("char") || tipo.starts_with("nchar");
    const auto largo = Como(expressao, "nvarchar(max)");
    return Como(fixa ? "rtrim(" + largo + ")" : largo, "varbinary(max)");
}

TComparacao DeBytes(std::string b, std::string t) {
    TComparacao par{std::move(b), std::move(t)};
    par.bytes = true;
    return par;
}

std::string Lido(const std::string& texto, const TColunaFisica& como) {
    return Como("nullif(ltrim(rtrim(" + texto + ")), '')", como.tipoSql);
}

}  // namespace

bool TDialetoSqlServer::SoNoCliente(const TColunaFisica& b, const TColunaFisica& t) const {
    return (EhTexto(b) && t.tipo == TTipoDado::Blob) || (EhTexto(t) && b.tipo == TTipoDado::Blob);
}

TComparacao TDialetoSqlServer::Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                          const std::string& nomeT) const {
    const bool longos = b.tipo == TTipoDado::Memo || t.tipo == TTipoDado::Memo;
    if (EhTexto(b) && EhTexto(t)) return DeBytes(BytesDoTexto(nomeB, b), BytesDoTexto(nomeT, t));
    if (EhBinaria(b) && EhBinaria(t)) return DeBytes(Como(nomeB, "varbinary(max)"), Como(nomeT, "varbinary(max)"));
    const bool inteiros = b.tipo == TTipoDado::Inteiro && t.tipo == TTipoDado::Inteiro;
    if (const std::string comum = inteiros ? "bigint" : "float"; NumerosDiversos(b, t))
        return {Como(nomeB, comum), Como(nomeT, comum)};
    if (DeDia(b) && DeDia(t) && b.tipoSql != t.tipoSql) return {Como(nomeB, "datetime"), Como(nomeT, "datetime")};
    TComparacao par{nomeB, nomeT};
    if (EhTexto(b) != EhTexto(t) && !EhBinaria(b) && !EhBinaria(t) && !longos) {
        (EhTexto(b) ? par.b : par.t) = EhTexto(b) ? Lido(nomeB, t) : Lido(nomeT, b);
        par.converte = true;
    } else {
        par.soPresenca = b.tipo != t.tipo;
    }
    return par;
}

/// Of bytes the server takes those for equal that differ in zeros at the end alone, so that their number counts, too.
std::string TDialetoSqlServer::Diferem(const TComparacao& par) const {
    const std::string difere = TDialeto::Diferem(par);
    return par.bytes ? "(" + Bytes(par.b) + " <> " + Bytes(par.t) + " or " + difere.substr(1) : difere;
}

std::string TDialetoSqlServer::ContaValores(const std::string& expressao) const {
    return "count(case when " + expressao + " is null then null else 1 end)";
}

/// Of the first bytes of each content and of their number.
std::string TDialetoSqlServer::Soma(const TComparacao& /*par*/, const std::string& expressao) const {
    const auto bytes = "cast(" + expressao + " as varbinary(max))";
    return "sum(cast(cast(substring(hashbytes('MD5', substring(" + bytes + ", 1, " + std::to_string(BytesDaSoma()) +
           ")), 1, 4) as int) as bigint) +" + " datalength(" + bytes + "))";
}

}  // namespace wkd
