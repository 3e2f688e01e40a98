#include "copy/Conferencia.h"

#include <algorithm>
#include <span>

#include "copy/ColunasDaCopia.h"
#include "copy/ConferenciaNoCliente.h"
#include "copy/ConferenciaSqlServer.h"
#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kColunasPorConsulta = 200;  // a compiled statement has 64 KB

/// A common column: backup "b" and table "t" as expressions that compare.
struct TPar {
    std::string nome, b, t;
    bool texto = false;       // blanks at the end count
    bool bytes = false;       // zeros at the end count
    bool converte = false;    // a value of another form can make the server refuse the comparison
    bool soPresenca = false;  // only whether there is a value
    bool real = false;        // what is no number (NaN) counts as equal to itself
    std::string bCrua = b, tCrua = t;
    bool longo = false;      // of a size that has no limit
    bool noCliente = false;  // the server compares no such pair
    TColunaFisica daBackup = {}, daTabela = {};
};

bool Longo(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }
bool EhTexto(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Texto; }

bool Numerica(const TColunaFisica& coluna) {
    return coluna.tipo == TTipoDado::Inteiro || coluna.tipo == TTipoDado::Decimal ||
           coluna.tipo == TTipoDado::Flutuante;
}

/// A text in UTF-8; bytes of a column without character set are Windows-1252.
std::string EmUtf8(const std::string& expressao, const TColunaFisica& coluna) {
    const std::string largura = " as varchar(" + std::to_string(coluna.tamanho) + ") character set ";
    const std::string lida = coluna.conjunto == "NONE" ? "cast(" + expressao + largura + "WIN1252)" : expressao;
    return "cast(" + lida + largura + "UTF8)";
}

std::string SemBrancos(const std::string& expressao, const TColunaFisica& coluna) {
    const bool fixa = IgualSemCaixa(coluna.tipoSql.substr(0, 5), "char(");
    return fixa ? "trim(trailing from " + expressao + ")" : expressao;
}

TPar ParDeTextos(TPar par, const TColunaFisica& b, const TColunaFisica& t) {
    par.texto = true;
    par.b = SemBrancos(par.b, b);
    par.t = SemBrancos(par.t, t);
    if (b.conjunto == t.conjunto) return par;
    par.b = EmUtf8(par.b, b);
    par.t = EmUtf8(par.t, t);
    return par;
}

/// Texts of two character sets would be equal by their letters.
TPar ParDeBlobs(TPar par, const TColunaFisica& b, const TColunaFisica& t) {
    if (b.conjunto.empty() || t.conjunto.empty() || b.conjunto == t.conjunto) return par;
    par.b = "cast(" + par.b + " as blob sub_type 0)";
    par.t = "cast(" + par.t + " as blob sub_type 0)";
    return par;
}

std::string Lido(const std::string& texto, const TColunaFisica& como) {
    return "cast(nullif(trim(" + texto + "), '') as " + como.tipoSql + ")";
}

TPar Par(const TColunaFisica& b, const TColunaFisica& t, TTipoBanco banco) {
    TPar par{t.nome, "b." + Identificador(b.nome, banco), "t." + Identificador(t.nome, banco)};
    par.longo = Longo(b) && Longo(t);
    par.noCliente = SoNoCliente(b, t, banco);
    par.daBackup = b;
    par.daTabela = t;
    if (par.noCliente) return par;
    if (banco == TTipoBanco::tbSQLServer) {
        auto expressoes = ExpressoesSqlServer(b, par.b, t, par.t);
        par.b = std::move(expressoes.b);
        par.t = std::move(expressoes.t);
        par.converte = expressoes.converte;
        par.soPresenca = expressoes.soPresenca;
        par.bytes = expressoes.bytes;
        return par;
    }
    if (par.longo) return ParDeBlobs(std::move(par), b, t);
    if (EhTexto(b) && EhTexto(t)) return ParDeTextos(std::move(par), b, t);
    par.real = Numerica(b) && Numerica(t) && (b.tipo == TTipoDado::Flutuante || t.tipo == TTipoDado::Flutuante);
    const bool datas = (b.tipo == TTipoDado::Data && t.tipo == TTipoDado::DataHora) ||
                       (b.tipo == TTipoDado::DataHora && t.tipo == TTipoDado::Data);
    // The same value has another check sum as float than as double precision.
    const bool larguras = b.tipo == TTipoDado::Flutuante && !IgualSemCaixa(b.tipoSql, t.tipoSql);
    if (Numerica(b) && Numerica(t) && (b.tipo != t.tipo || larguras)) {
        par.b = "cast(" + par.b + " as double precision)";
        par.t = "cast(" + par.t + " as double precision)";
    } else if (datas) {
        par.b = "cast(" + par.b + " as timestamp)";
        par.t = "cast(" + par.t + " as timestamp)";
    } else if (EhTexto(b) != EhTexto(t) && !Longo(b) && !Longo(t)) {
        par.converte = true;
        (EhTexto(b) ? par.b : par.t) = EhTexto(b) ? Lido(par.b, t) : Lido(par.t, b);
    } else if (b.tipo != t.tipo) {
        par.soPresenca = true;
    }
    return par;
}

std::vector<TPar> Pares(const std::vector<TColunaFisica>& daBackup, const std::vector<TColunaFisica>& daTabela,
                        const std::set<std::string>& ignoradas, TTipoBanco banco) {
    std::vector<TPar> pares;
    for (const TColunaFisica& t : daTabela) {
        const TColunaFisica* b = ColunaDeNome(daBackup, t.nome);
        if (b && !ignoradas.contains(ChaveDeNome(t.nome))) pares.push_back(Par(*b, t, banco));
    }
    return pares;
}

std::string Difere(const TPar& par, TTipoBanco banco) {
    if (par.soPresenca)
        return "(" + par.b + " is null and " + par.t + " is not null or " + par.b + " is not null and " + par.t +
               " is null)";
    if (banco == TTipoBanco::tbSQLServer) return DiferemSqlServer(par.b, par.t, par.bytes);
    std::string difere = par.b + " is distinct from " + par.t;
    if (par.real)
        return difere + " and (" + par.b + " = " + par.b + " or " + par.t + " = " + par.t + " or " + par.b +
               " is null or " + par.t + " is null)";
    if (par.longo)  // blanks at the end do not count for blobs of bytes either
        difere = "octet_length(" + par.b + ") is distinct from octet_length(" + par.t + ") or " + difere;
    if (!par.texto) return difere;
    return difere + " or char_length(" + par.b + ") is distinct from char_length(" + par.t + ")";
}

/// Whether a column of the backup has NaN, which equals no other value on Firebird, nor itself.
bool TemNaN(TConnection& conexao, const std::string& backup, const TColunaFisica& coluna) {
    if (coluna.tipo != TTipoDado::Flutuante || conexao.TipoBanco() != TTipoBanco::tbInterbase) return false;
    const std::string nome = Identificador(coluna.nome, TTipoBanco::tbInterbase);
    return ContaRegistros(conexao, "select count(*) as total from " + backup + " where " + nome + " <> " + nome) > 0;
}

/// How rows are paired through the table's primary key.
struct TPareamento {
    std::string condicao;  // empty: it cannot be used
    std::string coluna;    // of the table's key
};

TPareamento Pareamento(TConnection& conexao, const std::vector<TColunaFisica>& daBackup,
                       const std::vector<TColunaFisica>& daTabela, const std::string& backup, const std::string& tabela,
                       const std::set<std::string>& ignoradas) {
    TPareamento pareamento;
    std::vector<std::string> partes;
    for (const auto& coluna : conexao.ChavePrimaria(tabela).colunas) {
        const TColunaFisica* b = ColunaDeNome(daBackup, coluna);
        const TColunaFisica* t = ColunaDeNome(daTabela, coluna);
        // Of another type, the key's index would not serve.
        const bool serve = b && t && b->tipo == t->tipo && b->conjunto == t->conjunto;
        if (!serve || ignoradas.contains(ChaveDeNome(coluna)) || TemNaN(conexao, backup, *b)) return {};
        pareamento.coluna = "t." + Identificador(t->nome, conexao.TipoBanco());
        partes.push_back("b." + Identificador(b->nome, conexao.TipoBanco()) + " = " + pareamento.coluna);
    }
    pareamento.condicao = Junta(partes, " and ");
    return pareamento;
}

std::int64_t LinhasDiferentes(TConnection& conexao, const std::string& backup, const std::string& tabela,
                              const TPareamento& pareamento, std::span<const TPar> pares) {
    std::vector<std::string> condicoes = {pareamento.coluna + " is null"};
    for (const auto& par : pares) condicoes.push_back(Difere(par, conexao.TipoBanco()));
    return ContaRegistros(conexao, "select count(*) as total from " + backup + " b left join " + tabela + " t on " +
                                       pareamento.condicao + " where " + Junta(condicoes, " or "));
}

/// Count of values and check sum of every column, one after the other. Sixteen digits of a double take part.
std::vector<TValor> Somas(TConnection& conexao, const std::string& origem, std::span<const TPar> pares,
                          std::string TPar::*lado) {
    const bool sqlServer = conexao.TipoBanco() == TTipoBanco::tbSQLServer;
    std::vector<std::string> campos;
    for (const auto& par : pares) {
        campos.push_back(sqlServer ? "count(case when " + par.*lado + " is null then null else 1 end)"
                                   : "count(" + par.*lado + ")");
        const std::string hash = "mod(hash(" + par.*lado + "), 2147483647)";
        const auto soma = sqlServer   ? SomaSqlServer(par.*lado)
                          : par.longo ? "sum(" + hash + " + octet_length(" + par.*lado + "))"
                                      : "sum(" + hash + ")";
        campos.push_back(par.soPresenca ? "0" : soma);
    }
    const auto comando = conexao.Prepara("select " + Junta(campos, ", ") + " from " + origem);
    std::vector<TValor> somas;
    comando->Abre();
    if (comando->Proximo())
        for (std::size_t i = 0; i < campos.size(); ++i) somas.push_back(comando->Valor(i));
    return somas;
}

void ComparaSomas(TConnection& conexao, const std::string& backup, const std::string& tabela,
                  std::span<const TPar> pares, TConferencia& conferencia) {
    const auto b = Somas(conexao, backup + " b", pares, &TPar::b);
    const auto t = Somas(conexao, tabela + " t", pares, &TPar::t);
    for (std::size_t i = 0; i < pares.size(); ++i)
        if (!(b[2 * i] == t[2 * i]) || !(b[2 * i + 1] == t[2 * i + 1])) conferencia.colunas.push_back(pares[i].nome);
}

/// Reads what the server does not compare, or only by its beginning.
void ComparaNoCliente(TConnection& conexao, const std::string& backup, const std::string& tabela,
                      const TPareamento& pareamento, const std::vector<TPar>& pares, TConferencia& conferencia) {
    const bool pareia = !pareamento.condicao.empty();
    const bool soInicio = !pareia && conexao.TipoBanco() == TTipoBanco::tbSQLServer;
    const std::string juntas = backup + " b join " + tabela + " t on " + pareamento.condicao;
    for (const TPar& par : pares) {
        if (!par.noCliente && !(soInicio && par.longo && !par.soPresenca)) continue;
        const auto resto = [&](const std::string& coluna) {
            return par.noCliente ? "" : " where datalength(" + coluna + ") > " + std::to_string(kBytesDoHash);
        };
        if (!IguaisNoCliente(conexao, {pareia ? juntas : backup + " b" + resto(par.bCrua), "b.", par.daBackup},
                             {pareia ? juntas : tabela + " t" + resto(par.tCrua), "t.", par.daTabela}))
            conferencia.colunas.push_back(par.nome);
    }
}

}  // namespace

TConferencia ConfereComBackup(TConnection& conexao, const std::string& backup, const std::string& tabela,
                              const std::set<std::string>& ignoradas) {
    TConferencia conferencia;
    conferencia.naBackup = ContaRegistros(conexao, "select count(*) as total from " + backup);
    conferencia.naTabela = ContaRegistros(conexao, "select count(*) as total from " + tabela);
    const bool comparavel =
        conexao.TipoBanco() == TTipoBanco::tbInterbase || conexao.TipoBanco() == TTipoBanco::tbSQLServer;
    conferencia.emParte = !comparavel || !ignoradas.empty();
    if (!comparavel) return conferencia;

    const auto daBackup = conexao.Colunas(backup);
    const auto daTabela = conexao.Colunas(tabela);
    const auto todos = Pares(daBackup, daTabela, ignoradas, conexao.TipoBanco());
    auto pares = todos;
    std::erase_if(pares, [](const TPar& par) { return par.noCliente; });
    const TPareamento pareamento = Pareamento(conexao, daBackup, daTabela, backup, tabela, ignoradas);
    const auto compara = [&] {
        conferencia.diferentes = 0;
        conferencia.colunas.clear();
        for (std::size_t i = 0; i < pares.size(); i += kColunasPorConsulta) {
            const auto parte = std::span(pares).subspan(i, std::min(kColunasPorConsulta, pares.size() - i));
            if (pareamento.condicao.empty())
                ComparaSomas(conexao, backup, tabela, parte, conferencia);
            else
                conferencia.diferentes =
                    std::max(conferencia.diferentes, LinhasDiferentes(conexao, backup, tabela, pareamento, parte));
        }
    };
    try {
        compara();
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida() || std::ranges::none_of(pares, &TPar::converte)) throw;
        for (auto& par : pares) {
            if (par.converte) par = {par.nome, par.bCrua, par.tCrua, false, false, false, true};
        }
        compara();
    }
    ComparaNoCliente(conexao, backup, tabela, pareamento, todos, conferencia);
    conferencia.emParte = conferencia.emParte || std::ranges::any_of(pares, &TPar::soPresenca);
    return conferencia;
}

std::vector<std::string> ConsultasDasDiferentes(TConnection& conexao, const std::string& backup,
                                                const std::string& tabela, const std::set<std::string>& ignoradas) {
    const auto daBackup = conexao.Colunas(backup);
    const auto daTabela = conexao.Colunas(tabela);
    const TPareamento pareamento = Pareamento(conexao, daBackup, daTabela, backup, tabela, ignoradas);
    std::vector<std::string> consultas;
    if (pareamento.condicao.empty()) return consultas;
    auto pares = Pares(daBackup, daTabela, ignoradas, conexao.TipoBanco());
    for (auto& par : pares) par.soPresenca = par.soPresenca || par.noCliente;
    std::vector<std::string> lidas;
    for (const auto& coluna : daBackup) lidas.push_back(Lida(coluna, conexao.TipoBanco(), "b."));
    for (std::size_t i = 0; i < pares.size(); i += kColunasPorConsulta) {
        std::vector<std::string> condicoes;
        for (const auto& par : std::span(pares).subspan(i, std::min(kColunasPorConsulta, pares.size() - i)))
            condicoes.push_back(Difere(par, conexao.TipoBanco()));
        consultas.push_back("select " + Junta(lidas, ",") + " from " + backup + " b join " + tabela + " t on " +
                            pareamento.condicao + " where " + Junta(condicoes, " or "));
    }
    return consultas;
}

}  // namespace wkd
