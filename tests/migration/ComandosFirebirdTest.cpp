// Every statement of a plan, a check and a whole update, as a Firebird of each version would get it, held to what
// docs/firebird.md says of that version: 2.5 and 5.0 cannot be tried here. What is seen: the shape of a statement,
// words that a version does not have or has for itself, columns of its catalogue, functions, lengths of names. What is
// not: the order of clauses inside a shape, types of values, what a statement does.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "Arquivos.h"
#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "ConexaoQueRepassa.h"
#include "OpcoesDeTeste.h"
#include "TelaDeTeste.h"
#include "dialect/DialetoFirebird.h"
#include "firebird/ConexaoFirebird.h"
#include "odbc/LexicoSql.h"
#include "package/Pacote.h"
#include "plan/ConfereDicionario.h"
#include "plan/Plano.h"
#include "run/Atualizacao.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

constexpr int kVersoes[] = {205, 300, 400, 500};

/// Passes for a connection to a server of that version.
class TConexaoDaVersao : public TConexaoQueRepassa {
  public:
    TConexaoDaVersao(std::unique_ptr<TConnection> outra, int versao) : TConexaoQueRepassa(std::move(outra)) {
        auto sabe = TCapacidades();
        sabe.versao = versao;
        sabe.pagina = 8192;
        dialeto_.Conhece(sabe);
    }
    const TDialeto* DialetoDoServidor() const override { return &dialeto_; }

  private:
    TDialetoFirebird dialeto_;
};

/// The example, with what its package does not bring about: names that are words of 4.0, a text that becomes long, a
/// rebuilt table with all that can hang on one, and one without key.
class TLoja {
  public:
    explicit TLoja(int versao) : versao_(versao) {
        fs::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
        ini_.INIGravaString("LOJA", "TipoBanco", "tbInterbase");
        dm_.SQLConnection1.SetAlias("LOJA");
        dm_.SQLConnection1.Open();
        for (const char* comando :
             {"alter table TVENDA add LOCAL varchar(10) default 'a' not null", "grant select on TVENDA to PUBLIC",
              "create descending index TVENDA_DESCE on TVENDA (TOTAL)",
              "create index TVENDA_CONTA on TVENDA computed by (upper(LOCAL))", "comment on table TVENDA is 'vendas'",
              "comment on column TVENDA.LOCAL is 'onde'", "alter index TVENDA_CONTA inactive",
              "create unique descending index TVENDA_UNICA on TVENDA (NUMERO)",
              "alter table TVENDA add DOBRO computed by (TOTAL * 2)",
              "alter table TVENDA add constraint UN_VENDA unique (NUMERO, TOTAL)",
              "alter table TVENDA add constraint CK_VENDA check (TOTAL >= 0)",
              "create trigger G_VENDA for TVENDA before insert as begin end",
              "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA)"
              " values ('TVENDA', 90, 'LOCAL', 'ftString', 10, 0)",
              "alter table TPRODUTO add OBS varchar(2500)",
              "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA)"
              " values ('TPRODUTO', 90, 'OBS', 'ftString', 2500, 0)"})
            dm_.SQLConnection1.ExecuteDirect(comando);
        Empacota();
    }

    /// In the words of the version.
    std::set<std::string> Comandos() {
        std::set<std::string> comandos;
        const TDialeto& dialeto = Dialeto(dm_.SQLConnection1);
        dm_.SQLConnection1.Observa([&](std::string_view sql) { comandos.insert(dialeto.ParaServidor(sql)); });
        const auto opcoes = OpcoesDeTeste(pasta_.Caminho());
        TEstado estado;
        dm_.AtualizaListaDeTabelas();
        EXPECT_TRUE(Planeja(dm_, opcoes, estado));
        ConfereDicionario(dm_, pasta_.Caminho());
        EXPECT_EQ(TAtualizacao(dm_, opcoes, estado).Executa(), TFimDaAtualizacao::Concluida);
        // What this update has no need of.
        for (const std::string_view texto :
             {std::string_view("alter table TVENDA alter LOCAL set not null"),
              std::string_view("alter table TVENDA alter LOCAL drop not null"), dialeto.ComandoConectados()})
            comandos.insert(dialeto.ParaServidor(texto));
        dm_.SQLConnection1.Observa({});
        return comandos;
    }

    /// Of another update, by which nothing changes any more.
    std::vector<std::string> ComandosDaSegunda() {
        std::vector<std::string> comandos;
        const auto opcoes = OpcoesDeTeste(pasta_.Caminho());
        TEstado estado;
        TAtualizacao(dm_, opcoes, estado).Executa();
        dm_.SQLConnection1.Observa([&](std::string_view sql) { comandos.emplace_back(sql); });
        TAtualizacao(dm_, opcoes, estado).Executa();
        dm_.SQLConnection1.Observa({});
        return comandos;
    }

    /// Of tables, columns and indexes, in capitals.
    std::set<std::string> Nomes() {
        std::set<std::string> nomes;
        for (const auto& [tabela, colunas] : dm_.SQLConnection1.TodasAsColunas()) {
            nomes.insert(tabela);
            for (const auto& coluna : colunas) nomes.insert(ChaveDeNome(coluna.nome));
        }
        return nomes;
    }

  private:
    /// The stored column LOCAL stays in the new dictionary; TVENDA is rebuilt for another one.
    void Empacota() {
        fs::copy(fs::path(WKD_EXEMPLOS) / "pacote", pasta_ / "fontes");
        const fs::path satrib = pasta_ / "fontes" / "SAtrib.WKD";
        std::string texto = LeArquivo(satrib);
        const std::string linha =
            "<ROW ARQUIVO=\"TVENDA\" SEQUENCIA=\"90\" NOME=\"LOCAL\" TIPO=\"ftString\" TAMANHO=\"10\" "
            "CHAVE_DE_PESQUISA=\"0\"/>";
        texto.insert(texto.find("<ROW "), linha);
        EscreveArquivo(satrib, texto);
        std::vector<fs::path> arquivos;
        for (const auto& entrada : fs::directory_iterator(pasta_ / "fontes")) arquivos.push_back(entrada.path());
        CompactaZip(arquivos, pasta_ / "pacote.zip");
    }

    const int versao_;
    TPastaTemporaria pasta_;
    TAliases ini_{pasta_ / "WKD.ini"};
    TTelaDeTeste tela_;
    TDataModulo dm_{ini_, tela_, [this](auto...) {
                        return std::make_unique<TConexaoDaVersao>(
                            CriaConexaoFirebird(ParametrosFirebird(pasta_ / "loja.fdb")), versao_);
                    }};
};

/// Pieces without blanks; a name behind a table's and a point is one of its own.
std::vector<TLexema> SemBrancos(std::string_view comando) {
    std::vector<TLexema> lexemas;
    for (auto [classe, texto] : Lexemas(comando)) {
        const bool nome = classe == TLexema::TClasse::Palavra && (texto[0] < '0' || texto[0] > '9');
        for (auto ponto = texto.find('.'); nome && ponto != std::string_view::npos; ponto = texto.find('.')) {
            lexemas.push_back({classe, texto.substr(0, ponto)});
            lexemas.push_back({TLexema::TClasse::Sinal, texto.substr(ponto, 1)});
            texto.remove_prefix(ponto + 1);
        }
        if (classe != TLexema::TClasse::Branco && !texto.empty()) lexemas.push_back({classe, texto});
    }
    return lexemas;
}

/// Statement shapes of the page: words, with a name in place of a single capital, and the versions that take them.
struct TForma {
    std::vector<std::string> palavras;
    std::set<int> versoes;

    bool Serve(const std::vector<TLexema>& comando) const {
        if (comando.size() < palavras.size()) return false;
        for (std::size_t i = 0; i < palavras.size(); ++i)
            if (palavras[i].size() > 1 && !comando[i].Palavra(palavras[i])) return false;
        return true;
    }
};

std::vector<TForma> FormasDaPagina() {
    std::vector<TForma> formas;
    std::istringstream linhas(LeArquivo(WKD_DOCS "/firebird.md"));
    for (std::string linha; std::getline(linhas, linha);) {
        if (!linha.starts_with("| `")) continue;
        const auto colunas = Divide(linha, '|');
        const std::string forma(Apara(colunas.at(1)));
        TForma lida{Divide(forma.substr(1, forma.size() - 2), ' '), {}};
        for (std::size_t i = 0; i < std::size(kVersoes); ++i)
            if (Apara(colunas.at(i + 2)) != "não") lida.versoes.insert(kVersoes[i]);
        formas.push_back(std::move(lida));
    }
    return formas;
}

/// Words of the language, and names of functions, from that version on (appendix "Reserved Words and Keywords" of the
/// Language References). Those of 2.5 are not here.
constexpr std::pair<int, std::string_view> kPalavras[] = {
    {300,
     " ABSOLUTE ACOSH ASINH ATANH BODY BOOLEAN CONTINUE CORR COVAR_POP COVAR_SAMP DB_KEY DDL DECRYPT DENSE_RANK"
     " DETERMINISTIC ENCRYPT ENGINE FALSE FIRST_VALUE IDENTITY INCREMENT LAG LAST_VALUE LEAD LINGER LOCALTIME"
     " LOCALTIMESTAMP NAME NTH_VALUE OFFSET OVER PACKAGE PARTITION PLUGIN PRIOR RANK RDB$RECORD_VERSION REGR_AVGX"
     " REGR_AVGY REGR_COUNT REGR_INTERCEPT REGR_R2 REGR_SLOPE REGR_SXX REGR_SXY REGR_SYY RELATIVE RETURN ROW SCROLL"
     " SERVERWIDE STDDEV_POP STDDEV_SAMP TAGS TRUE TRUSTED UNKNOWN USAGE VAR_POP VAR_SAMP"
     // of its catalogue
     " MON$REMOTE_HOST MON$SYSTEM_FLAG RDB$IDENTITY_TYPE "},
    {400,
     " BASE64_DECODE BASE64_ENCODE BINARY BIND CLEAR COMPARE_DECFLOAT CONNECTIONS CONSISTENCY COUNTER CRYPT_HASH"
     " CTR_BIG_ENDIAN CTR_LENGTH CTR_LITTLE_ENDIAN CUME_DIST DEBUG DECFLOAT DEFINER DISABLE ENABLE EXCESS EXCLUDE"
     " EXTENDED FIRST_DAY FOLLOWING HEX_DECODE HEX_ENCODE IDLE INCLUDE INT128 INVOKER IV LAST_DAY LATERAL LEGACY"
     " LIFETIME LOCAL LPARAM MAKE_DBKEY MESSAGE MODE NATIVE NORMALIZE_DECFLOAT NTILE NUMBER OLDEST OTHERS OVERRIDING"
     " PERCENT_RANK PKCS_1_5 POOL PRECEDING PRIVILEGE PUBLICATION QUANTIZE RANGE RDB$ERROR RDB$GET_TRANSACTION_CN"
     " RDB$ROLE_IN_USE RDB$SYSTEM_PRIVILEGE RESET RESETTING RSA_DECRYPT RSA_ENCRYPT RSA_PRIVATE RSA_PUBLIC"
     " RSA_SIGN_HASH RSA_VERIFY_HASH SALT_LENGTH SECURITY SESSION SIGNATURE SQL SYSTEM TIES TIMEZONE_HOUR"
     " TIMEZONE_MINUTE TOTALORDER TRAPS UNBOUNDED VARBINARY WINDOW WITHOUT ZONE "},
    {500, " BLOB_APPEND LOCKED OPTIMIZE QUARTER TARGET TIMEZONE_NAME UNICODE_CHAR UNICODE_VAL "},
};

/// Of the above, those that stand for no name without quotes any more.
constexpr std::string_view kReservadasDo4 =
    " BINARY DECFLOAT INT128 LATERAL LOCAL LOCALTIME LOCALTIMESTAMP PUBLICATION RDB$ERROR RDB$GET_TRANSACTION_CN"
    " RDB$ROLE_IN_USE RDB$SYSTEM_PRIVILEGE RESETTING TIMEZONE_HOUR TIMEZONE_MINUTE UNBOUNDED VARBINARY WINDOW WITHOUT ";

/// Names of the catalogue that 2.5 has already, those of the statements collected here; looked up in the appendices
/// "System Tables" and "Monitoring Tables". One that is in neither list is to be looked up first.
constexpr std::string_view kCatalogoDo25 =
    " MON$ATTACHMENTS MON$ATTACHMENT_ID MON$CONTEXT_VARIABLES MON$DATABASE MON$IO_STATS MON$OLDEST_ACTIVE"
    " MON$PAGES MON$PAGE_FETCHES MON$PAGE_READS MON$PAGE_SIZE MON$PAGE_WRITES MON$REMOTE_ADDRESS"
    " MON$REMOTE_PROCESS MON$SHUTDOWN_MODE MON$STATE MON$STAT_ID MON$TIMESTAMP MON$TRANSACTIONS"
    " MON$TRANSACTION_ID MON$USER MON$VARIABLE_NAME MON$VARIABLE_VALUE RDB$BYTES_PER_CHARACTER"
    " RDB$CHARACTER_LENGTH RDB$CHARACTER_SETS RDB$CHARACTER_SET_ID RDB$CHARACTER_SET_NAME"
    " RDB$CHECK_CONSTRAINTS RDB$COLLATIONS RDB$COLLATION_ID RDB$COLLATION_NAME RDB$COMPUTED_SOURCE"
    " RDB$CONSTRAINT_NAME RDB$CONSTRAINT_TYPE RDB$CONST_NAME_UQ RDB$DATABASE RDB$DB_KEY"
    " RDB$DEFAULT_COLLATE_NAME RDB$DEFAULT_SOURCE RDB$DELETE_RULE RDB$DEPENDED_ON_NAME RDB$DEPENDENCIES"
    " RDB$DEPENDENT_NAME RDB$DEPENDENT_TYPE RDB$DESCRIPTION RDB$EXPRESSION_SOURCE RDB$FIELDS"
    " RDB$FIELD_LENGTH RDB$FIELD_NAME RDB$FIELD_POSITION RDB$FIELD_PRECISION RDB$FIELD_SCALE"
    " RDB$FIELD_SOURCE RDB$FIELD_SUB_TYPE RDB$FIELD_TYPE RDB$FORMAT RDB$GET_CONTEXT RDB$GRANT_OPTION"
    " RDB$INDEX_INACTIVE RDB$INDEX_NAME RDB$INDEX_SEGMENTS RDB$INDEX_TYPE RDB$INDICES RDB$NULL_FLAG"
    " RDB$OBJECT_TYPE RDB$OWNER_NAME RDB$PRIVILEGE RDB$REF_CONSTRAINTS RDB$RELATIONS"
    " RDB$RELATION_CONSTRAINTS RDB$RELATION_FIELDS RDB$RELATION_NAME RDB$RELATION_TYPE RDB$SET_CONTEXT"
    " RDB$SYSTEM_FLAG RDB$TRIGGERS RDB$TRIGGER_INACTIVE RDB$TRIGGER_NAME RDB$TRIGGER_SEQUENCE"
    " RDB$TRIGGER_SOURCE RDB$TRIGGER_TYPE RDB$UNIQUE_FLAG RDB$UPDATE_RULE RDB$USER RDB$USER_PRIVILEGES"
    " RDB$USER_TYPE RDB$VIEW_BLR ";
/// Functions of 2.5, and words of statements that stand before "(" as well.
constexpr std::string_view kAntesDeParenteseDo25 =
    " AND BLOCK BY CAST CHAR_LENGTH CHECK COALESCE COUNT EXISTS HASH IF IIF IN KEY LOWER MAX MOD NOT"
    " OCTET_LENGTH ON OR SUBSTRING SUM TRIM UNIQUE UPPER VALUES VARCHAR WHERE WHILE ";

bool Tem(std::string_view lista, std::string_view palavra) {
    return lista.find(' ' + std::string(palavra) + ' ') != std::string_view::npos;
}

int Desde(const std::string& palavra) {
    for (const auto& [versao, palavras] : kPalavras)
        if (Tem(palavras, palavra)) return versao;
    return 0;
}

/// What the version has against the statement; empty when nothing.
std::string Recusa(const std::string& comando, int versao, const std::vector<TForma>& formas,
                   const std::set<std::string>& nomes) {
    const auto lexemas = SemBrancos(comando);
    if (std::ranges::none_of(formas,
                             [&](const auto& forma) { return forma.Serve(lexemas) && forma.versoes.contains(versao); }))
        return "no shape of the page";
    for (std::size_t i = 0; i < lexemas.size(); ++i) {
        const std::size_t letras = lexemas[i].texto.size();
        if (lexemas[i].classe == TLexema::TClasse::Texto && letras > 32'000)
            return "a text of " + std::to_string(letras);
        if (lexemas[i].classe != TLexema::TClasse::Palavra) continue;
        const std::string palavra = Maiusculas(lexemas[i].texto);
        if (palavra == "IF" && i + 1 < lexemas.size() &&
            (lexemas[i + 1].Palavra("not") || lexemas[i + 1].Palavra("exists")))
            return "IF EXISTS";
        const bool daTabela = nomes.contains(palavra), chama = i + 1 < lexemas.size() && lexemas[i + 1].Sinal('(');
        if (!daTabela && Desde(palavra) > versao) return palavra;
        if (versao >= 400 && Tem(kReservadasDo4, palavra)) return palavra + " without quotes";
        if (versao < 400 && letras > 31) return palavra + " of " + std::to_string(letras) + " letters";
        const bool doCatalogo = palavra.starts_with("RDB$") || palavra.starts_with("MON$");
        if (doCatalogo && Desde(palavra) == 0 && !Tem(kCatalogoDo25, palavra)) return palavra + " is not looked up";
        if (chama && !daTabela && Desde(palavra) == 0 && !doCatalogo && !Tem(kAntesDeParenteseDo25, palavra))
            return palavra + "( is not looked up";
    }
    return "";
}

TEST(ComandosFirebird, EachVersionHasEveryWordOfThem) {
    const auto formas = FormasDaPagina();
    std::set<std::string> usadas;
    for (const int versao : kVersoes) {
        TLoja loja(versao);
        const auto comandos = loja.Comandos();
        const auto nomes = loja.Nomes();
        for (const auto& comando : comandos)
            for (const auto& forma : formas)
                if (forma.Serve(SemBrancos(comando))) usadas.insert(Junta(forma.palavras, " "));
        EXPECT_GT(comandos.size(), 250u);
        for (const auto& comando : comandos)
            if (const auto recusa = Recusa(comando, versao, formas, nomes); !recusa.empty())
                ADD_FAILURE() << TextoDaVersao(versao) << ", " << recusa << ": " << comando;
    }
    usadas.insert("rollback to savepoint P");  // behind an error alone
    for (const auto& forma : formas)
        EXPECT_TRUE(usadas.contains(Junta(forma.palavras, " "))) << Junta(forma.palavras, " ") << " never comes";
}

TEST(ComandosFirebird, AnUpdateThatChangesNoTableAsksNothingAboutTheDatabase) {
    const auto comandos = TLoja(300).ComandosDaSegunda();
    EXPECT_GT(comandos.size(), 40u);
    for (const auto& comando : comandos)
        for (const char* pergunta : {"mon$shutdown_mode", "rdb$format"})
            EXPECT_EQ(comando.find(pergunta), std::string::npos) << comando;
}

TEST(ComandosFirebird, TheTestSeesWhatAVersionLacks) {
    const auto formas = FormasDaPagina();
    const struct {
        int versao;
        const char *comando, *recusa;
    } casos[] = {
        {205, "alter table T alter C set not null", "no shape of the page"},
        {300, "alter table T alter C set not null", ""},
        {205, "select A from T where B is true", "TRUE"},
        {205, "select A from T offset 5 rows", "OFFSET"},
        {300, "select LOCAL from T", ""},
        {400, "select LOCAL from T", "LOCAL without quotes"},
        {400, "select t.LOCAL from T t", "LOCAL without quotes"},
        {500, "select \"LOCAL\" from T", ""},
        {205, "select mon$remote_host from mon$attachments", "MON$REMOTE_HOST"},
        {500, "select rdb$condition_source from rdb$indices", "RDB$CONDITION_SOURCE is not looked up"},
        {300, "select crypt_hash(A) from T", "CRYPT_HASH"},
        {205, "select A from TABELA_COM_NOME_DE_TRINTA_E_DUAS_LETRAS",
         "TABELA_COM_NOME_DE_TRINTA_E_DUAS_LETRAS of 39 letters"},
        {500, "drop table if exists T", "IF EXISTS"},
        {500, "merge into T using U on T.A = U.A", "no shape of the page"},
    };
    for (const auto& caso : casos)
        EXPECT_EQ(Recusa(caso.comando, caso.versao, formas, {"T", "A", "B", "C", "LOCAL"}), caso.recusa)
            << caso.comando;
}

}  // namespace
}  // namespace wkd
