// Every statement text that a run can send to a SQL Server, in one place. The environment variable WKD_STATEMENTS names
// a file to write them into.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>

#include "Arquivos.h"
#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "CasosSqlServer.h"
#include "ConexaoTSql.h"
#include "GramaticaTSql.h"
#include "OpcoesDeTeste.h"
#include "TelaDeTeste.h"
#include "firebird/ConexaoFirebird.h"
#include "layout/Preambulo.h"
#include "odbc/LexicoSql.h"
#include "passes/CamposPersonalizados.h"
#include "plan/ConfereDicionario.h"
#include "plan/Plano.h"
#include "run/Atualizacao.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kComAspaSolta = "IDENTIFICACAO_FUNCIONARIO <> ' AND";  // as it was released

bool Contem(std::string_view texto, std::string_view parte) { return texto.find(parte) != std::string_view::npos; }

TErroBanco Recusa(std::int64_t codigo, const std::string& mensagem) {
    TErroBanco::TDados dados;
    dados.mensagem = mensagem;
    dados.codigoNativo = codigo;
    return TErroBanco(dados);
}

TTabelaEmMemoria Textos(const std::vector<std::string>& nomes, const std::vector<std::string>& valores) {
    TTabelaEmMemoria tabela;
    for (const auto& nome : nomes) tabela.campos.push_back({nome, TTipoDado::Texto, 100});
    tabela.linhas.emplace_back(valores.begin(), valores.end());
    return tabela;
}

/// The example database and the rare cases, under the alias of a SQL Server.
class TLojaTSql {
  public:
    TLojaTSql() {
        fs::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
        ini_.INIGravaString("LOJA", "TipoBanco", "tbSQLServer");
        dm_.SQLConnection1.SetAlias("LOJA");
        dm_.SQLConnection1.Open();
        dm_.AtualizaListaDeTabelas();
        AtualizaTabelasDoDicionario(dm_);
        conversa_.anota = false;
        AcrescentaCasos(dm_);
        dm_.SQLConnection1.ExecuteDirect("create index IX_PROPRIO on TCONTAS_REC (VALOR)");
        conversa_.anota = true;
        EmpacotaCasos(pasta_ / "pacote.zip");
        conversa_.catalogo = {
            {"sys.database_permissions",
             Textos({"ESTADO", "PRIVILEGIO", "FAVORECIDO", "COLUNA"}, {"W", "SELECT", "financeiro", "VALOR"})},
            {"sys.indexes i join", Textos({"NOME", "UNICO", "FILTRO", "COLUNA", "DESCE", "INCLUIDA"},
                                          {"IX_PROPRIO", "1", "([VALOR]>(0))", "VALOR", "1", "0"})},
            {"sys.foreign_keys f join", Textos({"NOME", "TIPO", "COLUNA", "OUTRA", "DELA", "FIM"},
                                               {"FK_CLIENTE", "foreign key", "CLIENTE", "TCLI_CON", "CODIGO",
                                                " on update no action on delete cascade"})},
            {"sys.check_constraints", Textos({"NOME", "FONTE"}, {"CK_VALOR", "check ([VALOR]>(0))"})},
            {"sys.extended_properties p",
             Textos({"NOME", "TEXTO", "COLUNA"}, {"MS_Description", "Valor d'oeste", "VALOR"})},
            {"sys.triggers", Textos({"NOME", "FONTE"}, {"TG_CONTAS", "create trigger TG_CONTAS ..."})},
            {"sys.default_constraints d join sys.columns c on c.object_id = d.parent_object_id and c.column_id = "
             "d.parent_column_id where d.parent",
             Textos({"NOME", "TEXTO"}, {"DF__TPRESA__C", "((1))"})},
        };
    }

    /// Those of a plan, a check, a run and a plug-in's table. The run's first statement of that beginning is refused.
    std::vector<std::string> Comandos(const std::string& recusado, const TErroBanco& recusa) {
        const auto opcoes = OpcoesDeTeste(pasta_.Caminho());
        TEstado estado;
        EXPECT_TRUE(Planeja(dm_, opcoes, estado));
        ConfereDicionario(dm_, pasta_.Caminho());
        bool falta = true;
        conversa_.antes = [&](const std::string& sql) {
            if (sql.starts_with("Create Table TCONTAS_REC ("))  // the new table has nothing of the old one's
                std::erase_if(conversa_.catalogo, [](const auto& c) { return !Contem(c.first, "default_const"); });
            if (sql.starts_with(recusado) && std::exchange(falta, false)) throw recusa;
        };
        TAtualizacao(dm_, opcoes, estado).Executa();
        TContexto ctx{dm_, opcoes, estado, {}, {}};
        InstalaCamposPlugin(ctx, "TVENDEDOR", true, "P1");
        return conversa_.enviados;
    }

    /// Of tables, columns and indexes, in capitals.
    std::set<std::string> Nomes() {
        std::set<std::string> nomes;
        for (const auto& [tabela, colunas] : dm_.SQLConnection1.TodasAsColunas()) {
            nomes.insert({tabela, "#" + tabela, "PK_" + tabela});
            for (const auto& coluna : colunas) nomes.insert(ChaveDeNome(coluna.nome));
            for (const auto& indice : dm_.SQLConnection1.Indices(tabela)) nomes.insert(ChaveDeNome(indice.nome));
        }
        return nomes;
    }

    TTelaDeTeste& Tela() { return tela_; }

  private:
    TPastaTemporaria pasta_;
    TAliases ini_{pasta_ / "WKD.ini"};
    TTelaDeTeste tela_;
    TConversaTSql conversa_;
    TDataModulo dm_{ini_, tela_, [this](auto...) {
                        auto parametros = ParametrosFirebird(pasta_ / "loja.fdb");
                        parametros.Adiciona("CharacterSet", "WIN1252");
                        return std::make_unique<TConexaoTSql>(CriaConexaoFirebird(parametros), conversa_);
                    }};
};

struct TColetados {
    std::vector<std::string> comandos;
    std::set<std::string> nomes;  // of tables, columns and indexes, in capitals
};

const TColetados& Coletados() {
    static const auto coletados = [] {
        TLojaTSql loja;
        const auto recusa = Recusa(5074, "The object is dependent on column 'C'.");
        return TColetados{loja.Comandos("alter table TPRESA alter COLUMN C", recusa), loja.Nomes()};
    }();
    return coletados;
}

const std::vector<std::string>& Comandos() { return Coletados().comandos; }

/// The statement in small letters without its quoted texts.
std::string SemTextos(const std::string& comando) {
    std::string palavras;
    for (const auto& lexema : Lexemas(comando))
        palavras += lexema.classe == TLexema::TClasse::Texto ? "''" : Minusculas(lexema.texto);
    return palavras;
}

/// As a batch of its own: a parameter is a variable.
std::string ComoLote(const std::string& comando) {
    std::string lote;
    for (const auto& lexema : Lexemas(comando)) lote += lexema.Sinal('?') ? "@p" : lexema.texto;
    return lote;
}

/// The pieces of a statement in small letters, without what differs from table to table.
std::vector<std::string> Pecas(const std::string& comando) {
    std::vector<std::string> pecas;
    for (const auto& lexema : Lexemas(comando)) {
        const bool nome =
            lexema.classe == TLexema::TClasse::Nome || Coletados().nomes.contains(ChaveDeNome(lexema.texto));
        if (lexema.classe == TLexema::TClasse::Branco) continue;
        const bool numero = lexema.texto.front() >= '0' && lexema.texto.front() <= '9';
        const bool texto = lexema.classe == TLexema::TClasse::Texto;
        pecas.push_back(nome ? "nome" : numero ? "9" : texto ? "''" : Minusculas(lexema.texto));
    }
    return pecas;
}

/// Statements that together have every two pieces in a row that any of them has, the short ones first: the grammar
/// takes seconds for a long one that only repeats.
std::vector<std::string> Amostra(std::vector<std::string> comandos) {
    std::set<std::pair<std::string, std::string>> vistas;
    std::ranges::stable_sort(comandos, {}, &std::string::size);
    std::erase_if(comandos, [&](const std::string& comando) {
        bool nova = false;
        std::string anterior;
        for (const auto& peca : Pecas(comando)) {
            nova |= vistas.insert({anterior, peca}).second;
            anterior = peca;
        }
        return !nova;
    });
    return comandos;
}

TEST(ComandosTSql, NoneIsInTheWordsOfAnotherServer) {
    constexpr std::string_view kDeOutro[] = {
        "execute block",    "rdb$",        "||",           " starting ",  " containing ", "{",           " first ",
        "char_length",      "sub_type",    "octet_",       "double prec", " timestamp",   " from 1 for", "returning",
        "descending index", "computed by", " desc on",     "set term",    "comment on",   "mod(",        "is distinct",
        "trim(leading",     "trim(trail",  "character set"};
    for (const auto& comando : Comandos()) {
        const auto palavras = SemTextos(comando);
        for (const auto palavra : kDeOutro) EXPECT_FALSE(Contem(palavras, palavra)) << palavra << ": " << comando;
        EXPECT_EQ(std::ranges::count(comando, '\'') % 2, Contem(comando, kComAspaSolta) ? 1 : 0) << comando;
    }
    if (const char* arquivo = std::getenv("WKD_STATEMENTS"))
        for (std::ofstream saida(arquivo); const auto& comando : Comandos()) saida << ComoLote(comando) << "\nGO\n";
}

TEST(ComandosTSql, EveryKindOfWorkIsAmongThem) {
    if (!ServidorDosTestes().empty()) GTEST_SKIP() << "which statements fail and are followed by others is 3.0's";
    constexpr std::string_view kTrabalhos[] = {
        "set dateformat mdy",
        "CREATE TABLE SATRIB_USER( ARQUIVO VARCHAR(50) NOT NULL",
        "alter table SARQUIVO add COD_PLUGIN varchar(50)",
        "alter table TCLI_CON alter COLUMN NOME Nvarchar (60)",
        "alter table TCLI_CON ADD EMAIL  Nvarchar (100)",
        "alter table TNULA alter column CODIGO int not null",
        "alter table TPRESA drop constraint \"DF__TPRESA__C\"",
        "alter table TPRESA add constraint \"DF__TPRESA__C\" default ((1)) for \"C\"",
        "update  TVIRABLOB set TEXTO_TMP = TEXTO",
        "alter table TVIRABLOB drop column TEXTO_TMP",
        "alter table TLONGA add  CAMPO_MIGRA_WKD NVARCHAR(1998)",
        "with (tablock, holdlock)",
        "Create Table BTCONTAS_REC(",
        "insert into BTCONTAS_REC (",
        "insert into BTCHAVE (\"FOTO\", \"QUANTO\", \"CODIGO\", \"ORDER\") values (?, ?, ?, ?)",
        "sp_addextendedproperty",
        "grant select (\"VALOR\") on TCONTAS_REC to \"financeiro\" with grant option",
        "create unique index \"IX_PROPRIO\" on TCONTAS_REC (\"VALOR\" desc) where ([VALOR]>(0))",
        "alter table TCONTAS_REC add constraint \"FK_CLIENTE\" foreign key (\"CLIENTE\") references \"TCLI_CON\""
        " (\"CODIGO\") on update no action on delete cascade",
        "alter table TCONTAS_REC add constraint \"CK_VALOR\" check ([VALOR]>(0))",
        "@value = N'Valor d''oeste', @level0type = N'SCHEMA', @level0name = @esquema, @level1type = N'TABLE', "
        "@level1name"
        " = N'TCONTAS_REC', @level2type = N'COLUMN', @level2name = N'VALOR'",
        "select d.collation_name from sys.databases d where d.name = db_name()",
        "drop table TCONTAS_REC",
        "Create Table TCONTAS_REC (",
        "alter table TCONTAS_REC  add constraint PK_TCONTAS_REC primary key(DOCUMENTO,PARCELA)",
        "CREATE UNIQUE INDEX TNOTA_FISCAL_CHAVE ON TNOTA_FISCAL(CHAVE_ACESSO)",
        "drop index \"TVENDA_CLIENTE\" on TVENDA",
        "hashbytes('MD5'",
        "b where not exists (select 1 from TMEIO t where",
        "SAVE TRANSACTION MESCLA",
        "DELETE FROM SATRIB WHERE NOME LIKE 'U\\_%' ESCAPE '\\' AND ARQUIVO = ",
        "delete from sarquivo where (cod_modulo = '001') and (nome_arquivo = 'TSOBRA')",
        "insert into TRBFIELD",
        "insert into TRELATORIOS (",
        "insert into TARQ_VER (",
        "PRIMARY KEY CLUSTERED",
        "create NONCLUSTERED INDEX",
        "SELECT TOP 1 COD_FUNCION_SAIDA_AUTO_PA",
        "ALTER TABLE TSAIDA_FATURADO ALTER COLUMN COD_INTERNO nvarchar(25) not null",
        "create index \"TSAIDA_A_MAO\" on TSAIDA_FATURADO (\"COD_INTERNO\")",
    };
    for (const auto trabalho : kTrabalhos)
        EXPECT_TRUE(std::ranges::any_of(Comandos(), [&](const auto& c) { return Contem(c, trabalho); })) << trabalho;
}

TEST(ComandosTSql, ATableIsDroppedOnlyBehindTheRehearsalOfItsSuccessor) {
    const auto lugar = [](std::string_view inicio) {
        return std::ranges::find_if(Comandos(), [&](const auto& c) { return c.starts_with(inicio); }) -
               Comandos().begin();
    };
    for (const std::string tabela : {"TVENDA", "TCONTAS_REC", "TCHAVE", "TSEMCHAVE", "TVENDEDOR"}) {
        const auto apaga = lugar("drop table " + tabela);
        EXPECT_LT(apaga, std::ssize(Comandos())) << tabela;
        EXPECT_LT(lugar("Create Table #" + tabela + " ("), apaga) << tabela;
    }
}

TEST(ComandosTSql, ATableThatTheServerWouldNotCreateStays) {
    TLojaTSql loja;
    const auto comandos = loja.Comandos("Create Table #TVENDA (", Recusa(2717, "The size (5000) is too large."));
    const auto apaga = [&](const char* tabela) {
        return std::ranges::count(comandos, "drop table " + std::string(tabela));
    };
    EXPECT_EQ(apaga("TVENDA"), 0);
    EXPECT_EQ(apaga("TCONTAS_REC"), 1);
    EXPECT_TRUE(TTelaDeTeste::Contem(loja.Tela().memo2, "The size (5000)"));
}

/// What the grammar refuses, and why that is no fault of the statement, or a known one.
constexpr std::pair<std::string_view, const char*> kRecusadosPelaGramatica[] = {
    {"set textsize", "a setting that the grammar lacks"},
    {"set lock_timeout", "a setting that the grammar lacks"},
    {"set dateformat", "a setting that the grammar lacks"},
    {kComAspaSolta, "the server refuses it, too"},
};

TEST(ComandosTSql, AGrammarOfTSqlTakesThem) {
    std::vector<std::string> lotes;
    for (const auto& comando : Amostra(Comandos())) lotes.push_back(ComoLote(comando));
    const auto daGramatica = RecusadosPelaGramatica(lotes);
    if (!daGramatica) GTEST_SKIP() << "sqlfluff is not installed";
    const auto& recusados = *daGramatica;
    for (const auto& recusado : recusados)
        EXPECT_TRUE(std::ranges::any_of(kRecusadosPelaGramatica, [&](const auto& conhecido) {
            return Contem(recusado, conhecido.first);
        })) << recusado;
    for (const auto& [parte, motivo] : kRecusadosPelaGramatica)
        EXPECT_TRUE(std::ranges::any_of(recusados, [&](const auto& recusado) { return Contem(recusado, parte); }))
            << parte << " is taken now; it was refused because of " << motivo;
}

}  // namespace
}  // namespace wkd
