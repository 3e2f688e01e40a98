#include "copy/ConferenciaSqlServer.h"

#include "values/Texto.h"

namespace wkd {

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

std::string Lido(const std::string& texto, const TColunaFisica& como) {
    return Como("nullif(ltrim(rtrim(" + texto + ")), '')", como.tipoSql);
}

}  // namespace

TExpressoes ExpressoesSqlServer(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                const std::string& nomeT) {
    const bool longos = b.tipo == TTipoDado::Memo || t.tipo == TTipoDado::Memo;
    if (EhTexto(b) && EhTexto(t)) return {BytesDoTexto(nomeB, b), BytesDoTexto(nomeT, t), false, false, true};
    if (EhBinaria(b) && EhBinaria(t))
        return {Como(nomeB, "varbinary(max)"), Como(nomeT, "varbinary(max)"), false, false, true};
    const bool inteiros = b.tipo == TTipoDado::Inteiro && t.tipo == TTipoDado::Inteiro;
    if (const std::string comum = inteiros ? "bigint" : "float"; NumerosDiversos(b, t))
        return {Como(nomeB, comum), Como(nomeT, comum)};
    if (DeDia(b) && DeDia(t) && b.tipoSql != t.tipoSql) return {Como(nomeB, "datetime"), Como(nomeT, "datetime")};
    if (EhTexto(b) != EhTexto(t) && !EhBinaria(b) && !EhBinaria(t) && !longos)
        return {EhTexto(b) ? Lido(nomeB, t) : nomeB, EhTexto(b) ? nomeT : Lido(nomeT, b), true};
    return {nomeB, nomeT, false, b.tipo != t.tipo};
}

std::string DiferemSqlServer(const std::string& b, const std::string& t, bool bytes) {
    const std::string tamanho = bytes ? "datalength(" + b + ") <> datalength(" + t + ") or " : "";
    return "(" + tamanho + b + " <> " + t + " or " + b + " is null and " + t + " is not null or " + b +
           " is not null and " + t + " is null)";
}

std::string SomaSqlServer(const std::string& expressao) {
    const auto bytes = "cast(" + expressao + " as varbinary(max))";
    return "sum(cast(cast(substring(hashbytes('MD5', substring(" + bytes + ", 1, " + std::to_string(kBytesDoHash) +
           ")), 1, 4) as int) as bigint) +" + " datalength(" + bytes + "))";
}

}  // namespace wkd
