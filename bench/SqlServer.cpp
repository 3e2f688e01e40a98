#include <sql.h>
#include <sqlext.h>

#include <cstdio>

#include "BancoDaCopia.h"
#include "Casos.h"
#include "Corrida.h"
#include "Passos.h"
#include "alter/DicionarioDaTabela.h"
#include "rebuild/Nova.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr int kTabelasDoServidor = 60, kNovas = kTabelasDoServidor, kLinhas = 100'000;
const std::string kAqui(kSqlServer);

/// ODBC as it is, with nothing of ours around it. A statement commits by itself but between Comeca and Confirma.
class TOdbcCru {
  public:
    TOdbcCru() {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &ambiente_);
        SQLSetEnvAttr(ambiente_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, ambiente_, &ligacao_);
        auto cadeia = Cadeia();
        Confere(SQLDriverConnect(ligacao_, nullptr, Texto(cadeia), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
                SQL_HANDLE_DBC, ligacao_, "a conexão");
        SQLAllocHandle(SQL_HANDLE_STMT, ligacao_, &instrucao_);
    }
    ~TOdbcCru() {
        SQLFreeHandle(SQL_HANDLE_STMT, instrucao_);
        SQLDisconnect(ligacao_);
        SQLFreeHandle(SQL_HANDLE_DBC, ligacao_);
        SQLFreeHandle(SQL_HANDLE_ENV, ambiente_);
    }
    TOdbcCru(const TOdbcCru&) = delete;
    TOdbcCru& operator=(const TOdbcCru&) = delete;

    void Executa(std::string sql) {
        const auto retorno = SQLExecDirect(instrucao_, Texto(sql), SQL_NTS);
        if (retorno != SQL_NO_DATA) Confere(retorno, SQL_HANDLE_STMT, instrucao_, sql);
        SQLFreeStmt(instrucao_, SQL_CLOSE);
    }
    /// Every value of every row, as text.
    void Le(std::string sql) {
        Confere(SQLExecDirect(instrucao_, Texto(sql), SQL_NTS), SQL_HANDLE_STMT, instrucao_, sql);
        SQLSMALLINT colunas = 0;
        SQLNumResultCols(instrucao_, &colunas);
        std::vector<char> valores(static_cast<std::size_t>(colunas) * kMaior);
        std::vector<SQLLEN> tamanhos(static_cast<std::size_t>(colunas));
        for (SQLUSMALLINT i = 0; i < colunas; ++i)
            SQLBindCol(instrucao_, static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, valores.data() + i * kMaior, kMaior,
                       &tamanhos[i]);
        while (SQL_SUCCEEDED(SQLFetch(instrucao_))) continue;
        SQLFreeStmt(instrucao_, SQL_UNBIND);
        SQLFreeStmt(instrucao_, SQL_CLOSE);
    }
    /// The statement once for every range of whole numbers of that many up to the last one.
    void ExecutaPorFaixas(std::string sql, SQLINTEGER ultimo, SQLINTEGER porFaixa) {
        SQLINTEGER de = 1, ate = 0;
        Confere(SQLPrepare(instrucao_, Texto(sql), SQL_NTS), SQL_HANDLE_STMT, instrucao_, sql);
        for (SQLUSMALLINT i = 1; i <= 2; ++i)
            SQLBindParameter(instrucao_, i, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, i == 1 ? &de : &ate, 0,
                             nullptr);
        for (; de <= ultimo; de += porFaixa) {
            ate = de + porFaixa - 1;
            Confere(SQLExecute(instrucao_), SQL_HANDLE_STMT, instrucao_, sql);
            SQLFreeStmt(instrucao_, SQL_CLOSE);
        }
        SQLFreeStmt(instrucao_, SQL_RESET_PARAMS);
    }
    void Comeca() { Autocommit(SQL_AUTOCOMMIT_OFF); }
    void Confirma() {
        SQLEndTran(SQL_HANDLE_DBC, ligacao_, SQL_COMMIT);
        Autocommit(SQL_AUTOCOMMIT_ON);
    }

  private:
    static constexpr SQLLEN kMaior = 512;

    static SQLCHAR* Texto(std::string& texto) { return reinterpret_cast<SQLCHAR*>(texto.data()); }

    static std::string Cadeia() {
        const auto p = TBancoSqlServer::Parametros();
        const std::string servidor = p.Valor("Server"), driver = p.Valor("Driver");
        const auto virgula = servidor.find(',');
        const bool freeTds = driver.find("FreeTDS") != std::string::npos && virgula != std::string::npos;
        const std::string onde = freeTds ? servidor.substr(0, virgula) + ";PORT=" + servidor.substr(virgula + 1) +
                                               ";TDS_Version=7.4;ClientCharset=UTF-8"
                                         : servidor + ";TrustServerCertificate=yes";
        return "DRIVER={" + driver + "};SERVER=" + onde + ";UID=" + p.Valor("User_Name") +
               ";PWD=" + p.Valor("Password") + ";DATABASE=" + p.Valor("Database");
    }

    static void Confere(SQLRETURN retorno, SQLSMALLINT tipo, SQLHANDLE handle, const std::string& oque) {
        if (SQL_SUCCEEDED(retorno)) return;
        SQLCHAR estado[6] = {}, texto[512] = {};
        SQLINTEGER codigo = 0;
        SQLGetDiagRec(tipo, handle, 1, estado, &codigo, texto, sizeof texto, nullptr);
        throw std::runtime_error(oque + ": " + reinterpret_cast<const char*>(texto));
    }

    void Autocommit(SQLULEN modo) {
        SQLSetConnectAttr(ligacao_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(modo), SQL_IS_UINTEGER);
    }

    SQLHENV ambiente_ = nullptr;
    SQLHDBC ligacao_ = nullptr;
    SQLHSTMT instrucao_ = nullptr;
};

constexpr const char* kTodasAsColunas =
    "select o.name, c.name, t.name, c.max_length, c.precision, c.scale, c.is_nullable from sys.columns c join "
    "sys.objects o on o.object_id = c.object_id join sys.types t on t.user_type_id = c.user_type_id where o.type = 'U' "
    "order by o.name, c.column_id";

/// The floor connects as the run has to, which the first questions to a server's catalogue are a part of.
TMedida MedeNada(const TBancoGrande& banco) {
    int comandos = 0;
    const auto corre = [&] { return CorreTabelas(banco.Aliases(), banco.Opcoes(), "", comandos); };
    corre();  // brings the dictionary tables to their layout
    TMedida medida = Alterna({.trabalho = "nada a mudar, " + banco.Tamanho() + ", até o fim das tabelas, " + kAqui,
                              .piso = "uma conexão, dicionário e colunas lidos uma vez, ODBC cru",
                              .limite = 1.3},
                             3, corre, [] {
                                 TOdbcCru cru;
                                 cru.Le("select * from SARQUIVO");
                                 cru.Le("select * from SATRIB");
                                 cru.Le(kTodasAsColunas);
                             });
    medida.comandos = comandos;
    return medida;
}

/// The statements that the passes are made of, each once.
void PassesCrus(TOdbcCru& cru) {
    for (const std::string tabela : {"satrib", "slookup"})
        cru.Executa("delete from " + tabela +
                    " where not exists (select nome_arquivo from sarquivo where nome_arquivo = " + tabela +
                    ".ARQUIVO)");
    for (const char* consulta :
         {"select arquivo,nome,valor_padrao,tipo from satrib where (valor_padrao is not null) and (valor_padrao <> '')",
          "select * from tini WHERE CHAVE = 'LOOKUPFISICO' AND SESSAO = 'HBN4'",
          "select arquivo,cod_plugin from satrib_user group by arquivo,cod_plugin",
          "select o.name, i.name, c.name from sys.indexes i join sys.objects o on o.object_id = i.object_id join "
          "sys.index_columns x on x.object_id = i.object_id and x.index_id = i.index_id join sys.columns c on "
          "c.object_id = x.object_id and c.column_id = x.column_id where i.is_primary_key = 1 and o.type = 'U'",
          "select nome_arquivo, cod_modulo from sarquivo", "select count(*) as total from sarquivo",
          "select count(*) as total from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))"})
        cru.Le(consulta);
    for (const auto& [apaga, enche] :
         {std::pair("delete from trbtable",
                    "insert into TRBTABLE (TableName, TableAlias) select nome_arquivo, nome_arquivo from sarquivo"),
          std::pair("delete from trbfield",
                    "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, Sortable, "
                    "Selectable, AutoSearch, Mandatory) select arquivo, nome, discriminacao, 'd' + substring(tipo, 2, "
                    "99), 'T', 'T', 'T', 'F', 'F' from satrib where lookup_arquivo is null or lookup_arquivo = ''")}) {
        cru.Comeca();
        cru.Executa(apaga);
        cru.Executa(enche);
        cru.Confirma();
    }
}

TMedida MedePasses(const TBancoGrande& banco, TPassos& passos, TOdbcCru& cru) {
    passos.Observa(TodosOsPasses);  // what is done once a database
    std::size_t comandos = 0;
    TMedida medida = Alterna(
        {.trabalho = "passos finais, " + banco.Tamanho() + ", " + kAqui,
         .piso = "os comandos de que são feitos, ODBC cru",
         .limite = 1.3},
        2, [&] { comandos = passos.Observa(TodosOsPasses).size(); }, [&] { PassesCrus(cru); });
    medida.comandos = static_cast<int>(comandos);
    return medida;
}

/// The tables are dropped and made again; the floor makes others by the very statements that were sent.
TMedida MedeNovas(TPassos& passos, TOdbcCru& cru) {
    TMedida medida{.trabalho = "criar " + std::to_string(kNovas) + " tabelas com chave, " + kAqui,
                   .piso = "os mesmos comandos, ODBC cru, um commit cada",
                   .limite = 1.3};
    TTempo nosso, piso;
    const auto lembra = passos.Modulo().Atualiza.Dicionario().Lembra();
    for (int i = 0; i < kNovas; ++i) {
        const std::string tabela = "TAB" + std::to_string(1000 + i);
        cru.Executa("drop table " + tabela);
        passos.Modulo().AtualizaListaDeTabelas();
        std::vector<std::string> comandos;
        nosso +=
            Cronometra([&] { comandos = passos.Observa([&](TContexto& ctx) { CriaTabelaComIndices(ctx, tabela); }); });
        piso += Cronometra([&] {
            for (const std::string& comando : comandos)
                if (const std::string minusculo = Minusculas(comando);
                    minusculo.starts_with("create") || minusculo.starts_with("alter"))
                    cru.Executa(Troca(comando, tabela, "CRU" + std::to_string(i)));
        });
    }
    medida.Nosso(nosso);
    medida.DoPiso(piso);
    return medida;
}

/// Rows of one table into another by their keys, so many in a commit.
void CopiaCrua(TOdbcCru& cru, const std::string& origem, const std::string& destino, int porLote) {
    const std::string colunas = "CODIGO,NOME,FANTASIA,CIDADE,UF,DATA,VALOR,LIMITE,ATIVO,VENDEDOR,OBS,FOTO";
    cru.ExecutaPorFaixas("insert into " + destino + " (" + colunas + ") select " + colunas + " from " + origem +
                             " where CODIGO between ? and ?",
                         kLinhas, porLote);
}

TMedida MedeNova() {
    TMedida medida{.trabalho = "reconstrução de " + std::to_string(kLinhas) + " registros, " + kAqui,
                   .piso = "as linhas para a backup e de volta, com os mesmos commits, ODBC cru",
                   .limite = 1.3};
    TBancoDaCopia banco({kAqui, kAqui}, kLinhas);
    banco.CriaVazia("IDA", false);
    banco.CriaVazia("VOLTA", true);
    TOdbcCru cru;
    medida.DoPiso(Cronometra([&] {
        CopiaCrua(cru, "TCLI", "IDA", 100);
        cru.Executa("create index IDA_CHAVE on IDA (CODIGO)");
        CopiaCrua(cru, "IDA", "VOLTA", 11);
    }));
    if (banco.Conta("VOLTA") != kLinhas) throw std::runtime_error("a cópia crua perdeu registros");
    medida.Nosso(Cronometra([&] { Nova(banco.Contexto(), "TCLI"); }));
    banco.ConfereSemErros();
    if (banco.Conta("TCLI") != kLinhas) throw std::runtime_error("a reconstrução perdeu registros");
    return medida;
}

}  // namespace

std::vector<TMedida> MedeSqlServer(TBancada&) {
    if (!TBancoSqlServer::Instalado()) {
        std::puts("| sql-server | pulado: WKD_SQLSERVER não diz onde há um |");
        return {};
    }
    std::vector<TMedida> medidas;
    {
        const TBancoGrande banco(kAqui, kTabelasDoServidor);
        medidas.push_back(MedeNada(banco));
        TOdbcCru cru;
        TPassos passos(banco);
        medidas.push_back(MedePasses(banco, passos, cru));
        medidas.push_back(MedeNovas(passos, cru));
    }
    medidas.push_back(MedeNova());
    return medidas;
}

}  // namespace wkd
