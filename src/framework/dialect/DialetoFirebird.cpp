#include "dialect/DialetoFirebird.h"

#include <algorithm>
#include <unordered_set>

#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kPalavras =
    " ADD ADMIN ALL ALTER AND ANY AS AT AVG BEGIN BETWEEN BIGINT BINARY BIT_LENGTH BLOB BOOLEAN BOTH BY CASE CAST"
    " CHAR CHARACTER CHARACTER_LENGTH CHAR_LENGTH CHECK CLOSE COLLATE COLUMN COMMIT CONNECT CONSTRAINT CORR COUNT"
    " COVAR_POP COVAR_SAMP CREATE CROSS CURRENT CURRENT_CONNECTION CURRENT_DATE CURRENT_ROLE CURRENT_TIME"
    " CURRENT_TIMESTAMP CURRENT_TRANSACTION CURRENT_USER CURSOR DATE DAY DEC DECFLOAT DECIMAL DECLARE DEFAULT DELETE"
    " DELETING DETERMINISTIC DISCONNECT DISTINCT DOUBLE DROP ELSE END ESCAPE EXECUTE EXISTS EXTERNAL EXTRACT FALSE"
    " FETCH FILTER FLOAT FOR FOREIGN FROM FULL FUNCTION GDSCODE GLOBAL GRANT GROUP HAVING HOUR IN INDEX INNER"
    " INSENSITIVE INSERT INSERTING INT INT128 INTEGER INTO IS JOIN LATERAL LEADING LEFT LIKE LOCAL LOCALTIME"
    " LOCALTIMESTAMP LONG LOWER MAX MAXIMUM_SEGMENT MERGE MIN MINUTE MONTH NATIONAL NATURAL NCHAR NO NOT NULL NUMERIC "
    "OCTET_LENGTH"
    " OF OFFSET ON ONLY OPEN OR ORDER OUTER OVER PARAMETER PLAN POSITION POST_EVENT PRECISION PRIMARY PROCEDURE"
    " PUBLICATION RDB$DB_KEY RDB$ERROR RDB$GET_CONTEXT RDB$GET_TRANSACTION_CN RDB$RECORD_VERSION RDB$ROLE_IN_USE"
    " RDB$SET_CONTEXT RDB$SYSTEM_PRIVILEGE REAL RECORD_VERSION RECREATE RECURSIVE REFERENCES REGR_AVGX REGR_AVGY"
    " REGR_COUNT REGR_INTERCEPT REGR_R2 REGR_SLOPE REGR_SXX REGR_SXY REGR_SYY RELEASE RESETTING RETURN"
    " RETURNING_VALUES RETURNS REVOKE RIGHT ROLLBACK ROW ROWS ROW_COUNT SAVEPOINT SCROLL SECOND SELECT SENSITIVE SET"
    " SIMILAR SMALLINT SOME SQLCODE SQLSTATE START STDDEV_POP STDDEV_SAMP SUM TABLE THEN TIME TIMESTAMP"
    " TIMEZONE_HOUR TIMEZONE_MINUTE TO TRAILING TRIGGER TRIM TRUE UNBOUNDED UNION UNIQUE UNKNOWN UPDATE UPDATING"
    " UPPER USER USING VALUE VALUES VARBINARY VARCHAR VARIABLE VARYING VAR_POP VAR_SAMP VIEW WHEN WHERE WHILE WINDOW"
    " WITH WITHOUT YEAR ";

/// Reserved from 4.0 on. Names of types are left out: a statement that has them means the types.
constexpr std::string_view kPalavrasDo4 =
    " LATERAL LOCAL PUBLICATION RESETTING TIMEZONE_HOUR TIMEZONE_MINUTE UNBOUNDED WINDOW WITHOUT ";

bool DeNome(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$';
}

/// End of what stands from there on: a text or a name in quotes, a comment, a word, or one character.
std::size_t FimDoPedaco(std::string_view sql, std::size_t de) {
    const auto apos = [&](std::string_view fim, std::size_t onde) {
        const auto achado = sql.find(fim, onde);
        return achado == std::string_view::npos ? sql.size() : achado + fim.size();
    };
    if (sql[de] == '\'' || sql[de] == '"') return apos(sql.substr(de, 1), de + 1);
    if (sql.substr(de, 2) == "--") return apos("\n", de);
    if (sql.substr(de, 2) == "/*") return apos("*/", de + 2);
    auto fim = de + 1;
    while (DeNome(sql[de]) && fim < sql.size() && DeNome(sql[fim])) ++fim;
    return fim;
}

bool Longa(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }
bool EhTexto(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Texto; }

std::int64_t BytesPorLetraDe(std::string_view conjunto) {
    return conjunto == "UTF8" ? 4 : conjunto == "UNICODE_FSS" ? 3 : 1;
}

bool Numerica(const TColunaFisica& coluna) {
    return coluna.tipo == TTipoDado::Inteiro || coluna.tipo == TTipoDado::Decimal ||
           coluna.tipo == TTipoDado::Flutuante;
}

}  // namespace

bool PalavraReservada(std::string_view nome) {
    static const auto kTodas = [] {
        const auto palavras = Divide(kPalavras, ' ');
        return std::unordered_set<std::string>(palavras.begin(), palavras.end());
    }();
    return kTodas.contains(std::string(nome));
}

namespace {

/// The flag of the catalogue in place of "alter table T alter C set not null" and "... drop not null"; empty for any
/// other statement.
std::string NotNullNoCatalogo(std::string_view sql) {
    std::vector<std::string> palavras = Divide(sql, ' ');
    std::erase(palavras, "");
    constexpr std::size_t kTabela = 2, kColuna = 4;
    std::string molde;
    for (std::size_t i = 0; i < palavras.size(); ++i)
        molde += i == kTabela || i == kColuna ? ". " : Maiusculas(palavras[i]) + " ";
    const bool exige = molde == "ALTER TABLE . ALTER . SET NOT NULL ";
    if (!exige && molde != "ALTER TABLE . ALTER . DROP NOT NULL ") return "";
    return std::string("update rdb$relation_fields set rdb$null_flag = ") + (exige ? "1" : "null") +
           " where rdb$relation_name = " + Aspas(Maiusculas(palavras[kTabela])) +
           " and rdb$field_name = " + Aspas(Maiusculas(palavras[kColuna]));
}

}  // namespace

std::string TDialetoFirebird::ParaServidor(std::string_view sql) const {
    if (!Capacidades().Tem(TRecurso::NotNullPorComando))
        if (auto noCatalogo = NotNullNoCatalogo(sql); !noCatalogo.empty()) return noCatalogo;
    if (!Capacidades().Tem(TRecurso::PalavrasDo4)) return std::string(sql);
    std::string texto;
    for (std::size_t de = 0, ate = 0; de < sql.size(); de = ate) {
        ate = FimDoPedaco(sql, de);
        const auto pedaco = sql.substr(de, ate - de);
        const auto capitais = Maiusculas(pedaco);
        const bool nome = DeNome(pedaco[0]) && kPalavrasDo4.find(' ' + capitais + ' ') != std::string_view::npos;
        texto += nome ? '"' + capitais + '"' : std::string(pedaco);
    }
    return texto;
}

std::string TDialetoFirebird::AjustaQuery(std::string_view comando) const { return Troca(comando, " TOP ", " FIRST "); }

std::string TDialetoFirebird::ChaveAlteraColuna(std::string_view coluna) const {
    return " alter " + std::string(coluna) + " type ";
}

std::string TDialetoFirebird::Batizada(const std::string& nome) const {
    return nome.starts_with("INTEG_") ? "" : TDialeto::Batizada(nome);
}

std::string TDialetoFirebird::ApagaColuna(std::string_view tabela, std::string_view coluna) const {
    return "alter table " + std::string(tabela) + " drop " + std::string(coluna);
}

std::string TDialetoFirebird::Trecho(const std::string& texto, int de, int letras) const {
    return "substring(" + texto + " from " + std::to_string(de) + " for " + std::to_string(letras) + ")";
}

/// A block, since an insert stores one row. Its parameters have the columns' types, as those of an insert.
std::string TDialetoFirebird::InsereLinhas(std::string_view tabela, const std::vector<TColunaFisica>& colunas,
                                           std::size_t linhas) const {
    std::vector<std::string> nomes, parametros;
    for (const auto& coluna : colunas) nomes.push_back(Identificador(coluna.nome));
    const std::string inicio = "insert into " + std::string(tabela) + " (" + Junta(nomes, ",") + ") values (";
    std::string corpo;
    for (std::size_t linha = 0; linha < linhas; ++linha) {
        std::vector<std::string> valores;
        for (const auto& coluna : colunas) {
            const std::string p = "P" + std::to_string(parametros.size());
            parametros.push_back(p + " " + (Longa(coluna) ? "blob sub_type 0" : coluna.tipoSql) + "=:" + p);
            valores.push_back(":" + p);
        }
        corpo += inicio + Junta(valores, ",") + "); ";
    }
    return "execute block (" + Junta(parametros, ",") + ") as begin " + corpo + "end";
}

/// Of a block, the parameters have 64 KB, and so has what it is compiled to; a short blob goes among them.
std::size_t TDialetoFirebird::LinhasPorInsercao(const std::vector<TColunaFisica>& colunas) const {
    constexpr std::size_t kBytes = 60'000, kInsercoes = 200, kDoBlob = 1040, kDeOutro = 24, kCompilada = 48;
    std::size_t valores = 1, compilada = 1;
    for (const auto& coluna : colunas) {
        const bool texto = coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Bytes;
        valores += Longa(coluna) ? kDoBlob : kDeOutro + (texto ? 4 * static_cast<std::size_t>(coluna.tamanho) : 0);
        compilada += kCompilada + coluna.nome.size();
    }
    return std::min({kInsercoes, kBytes / valores, kBytes / compilada});
}

std::string TDialetoFirebird::EmBytes(const TColunaFisica& coluna, const std::string& valor) const {
    return coluna.tipo == TTipoDado::Memo ? "cast(" + valor + " as blob sub_type 0)" : valor;
}

std::string TDialetoFirebird::ComoEsta(const TColunaFisica& coluna) const {
    const std::string nome = Identificador(coluna.nome);
    if (coluna.tipo != TTipoDado::Texto) return EmBytes(coluna, nome);
    const auto bytes = std::min<std::int64_t>(coluna.tamanho * BytesPorLetraDe(coluna.conjunto), 32765);
    return "cast(" + nome + " as varchar(" + std::to_string(bytes) + ") character set octets)";
}

/// The server groups no blobs. Its hash adds each byte to sixteen times what was before, so that "1A" is "21" to it;
/// another content has to agree with it from the end as well.
std::string TDialetoFirebird::Agrupavel(const TColunaFisica& coluna) const {
    const std::string nome = Identificador(coluna.nome);
    if (!Longa(coluna)) return nome;
    return "hash(" + nome + ") || ' ' || hash(reverse(cast(" + nome + " as blob sub_type 0))) || ' ' || octet_length(" +
           nome + ")";
}

namespace {

std::int64_t BytesPorLetra(TConnection& conexao) {
    return std::max<std::int64_t>(1, ContaRegistros(conexao,
                                                    "select max(c.rdb$bytes_per_character) as total from rdb$database d"
                                                    " join rdb$character_sets c on c.rdb$character_set_name ="
                                                    " d.rdb$character_set_name"));
}

/// Where a value ends that begins at the next multiple of `passo`.
std::int64_t Depois(std::int64_t onde, std::int64_t passo, std::int64_t bytes) {
    return (onde + passo - 1) / passo * passo + bytes;
}

}  // namespace

/// In an index of several columns five bytes stand for every four of a column; a text that is the only one has one byte
/// more. Of texts by their letters alone: another collation may make longer keys.
std::int64_t TDialetoFirebird::BytesDaChave(TConnection& conexao, const std::vector<TLargura>& colunas) const {
    constexpr std::int64_t kNumero = 8, kDiaOuHora = 4, kPedaco = 4;
    std::int64_t doBanco = 0;
    const auto porLetra = [&](const std::string& conjunto) {
        if (!conjunto.empty()) return BytesPorLetraDe(conjunto);
        return doBanco ? doBanco : doBanco = BytesPorLetra(conexao);
    };
    std::int64_t chave = 0;
    for (const auto& [tipo, letras, conjunto] : colunas) {
        const bool texto = tipo.starts_with("varchar");
        const auto bytes = texto                              ? letras * porLetra(conjunto)
                           : tipo == "date" || tipo == "time" ? kDiaOuHora
                                                              : kNumero;
        if (colunas.size() == 1) return bytes + (texto ? 1 : 0);
        chave += (bytes + kPedaco - 1) / kPedaco * (kPedaco + 1);
    }
    return chave;
}

/// The database's character set gives the width of a letter.
std::int64_t TDialetoFirebird::BytesDoRegistro(TConnection& conexao, const std::vector<TLargura>& colunas) const {
    const std::int64_t letra = BytesPorLetra(conexao);
    const auto quantas = static_cast<std::int64_t>(colunas.size());
    std::int64_t bytes = (quantas + 32) / 32 * 4;  // a bit a column says that it is NULL
    for (const auto& [tipo, letras, conjunto] : colunas) {
        if (tipo.starts_with("varchar"))
            bytes = Depois(bytes, 2, 2 + letra * letras);
        else if (tipo == "integer" || tipo == "date" || tipo == "time")
            bytes = Depois(bytes, 4, 4);
        else
            bytes = Depois(bytes, 8, 8);
    }
    return bytes;
}

namespace {

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

TComparacao ParDeTextos(TComparacao par, const TColunaFisica& b, const TColunaFisica& t) {
    par.texto = true;
    par.b = SemBrancos(par.b, b);
    par.t = SemBrancos(par.t, t);
    if (b.conjunto == t.conjunto) return par;
    par.b = EmUtf8(par.b, b);
    par.t = EmUtf8(par.t, t);
    return par;
}

/// Texts of two character sets would be equal by their letters.
TComparacao ParDeBlobs(TComparacao par, const TColunaFisica& b, const TColunaFisica& t) {
    if (b.conjunto.empty() || t.conjunto.empty() || b.conjunto == t.conjunto) return par;
    par.b = "cast(" + par.b + " as blob sub_type 0)";
    par.t = "cast(" + par.t + " as blob sub_type 0)";
    return par;
}

std::string Lido(const std::string& texto, const TColunaFisica& como) {
    return "cast(nullif(trim(" + texto + "), '') as " + como.tipoSql + ")";
}

}  // namespace

TComparacao TDialetoFirebird::Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                         const std::string& nomeT) const {
    TComparacao par{nomeB, nomeT};
    par.longo = Longa(b) && Longa(t);
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
    } else if (EhTexto(b) != EhTexto(t) && !Longa(b) && !Longa(t)) {
        par.converte = true;
        (EhTexto(b) ? par.b : par.t) = EhTexto(b) ? Lido(par.b, t) : Lido(par.t, b);
    } else if (b.tipo != t.tipo) {
        par.soPresenca = true;
    }
    return par;
}

std::string TDialetoFirebird::Diferem(const TComparacao& par) const {
    if (par.soPresenca) return TDialeto::Diferem(par);
    std::string difere = par.b + " is distinct from " + par.t;
    if (par.real)
        return difere + " and (" + par.b + " = " + par.b + " or " + par.t + " = " + par.t + " or " + par.b +
               " is null or " + par.t + " is null)";
    if (par.longo)  // blanks at the end do not count for blobs of bytes either
        difere = "octet_length(" + par.b + ") is distinct from octet_length(" + par.t + ") or " + difere;
    if (!par.texto) return difere;
    return difere + " or char_length(" + par.b + ") is distinct from char_length(" + par.t + ")";
}

namespace {

/// Sums of whole numbers have the next wider type.
std::string EmBigint(const std::string& soma) { return "cast(" + soma + " as bigint)"; }

}  // namespace

/// Sixteen digits of a double take part.
std::string TDialetoFirebird::Soma(const TComparacao& par, const std::string& expressao) const {
    const std::string hash = "mod(hash(" + expressao + "), 2147483647)";
    return EmBigint("sum(" + hash + (par.longo ? " + octet_length(" + expressao + "))" : ")"));
}

/// NaN, which equals no other value, nor itself.
std::string TDialetoFirebird::IgualANenhum(const TColunaFisica& coluna) const {
    const std::string nome = Identificador(coluna.nome);
    return coluna.tipo == TTipoDado::Flutuante ? nome + " <> " + nome : "";
}

std::string TDialetoFirebird::SomaDasLinhas(const std::vector<TColunaFisica>& colunas) const {
    std::vector<std::string> partes;
    for (const TColunaFisica& coluna : colunas)
        partes.push_back("coalesce(hash(" + Identificador(coluna.nome) + "), 'n')");
    return partes.empty() ? ""
                          : EmBigint("coalesce(sum(mod(hash(" + Junta(partes, " || '.' || ") + "), 2147483647)), 0)");
}

}  // namespace wkd
