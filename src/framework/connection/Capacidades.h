#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What a Firebird can do from some version on. A statement that needs one asks for it, not for the version.
enum class TRecurso {
    MonitorCompleto,    // MON$ATTACHMENTS tells the computer, and who of the server's own is connected
    NotNullPorComando,  // ALTER TABLE makes a column NOT NULL, and nullable again
    Identidade,         // columns that number themselves
    Logico,             // the type BOOLEAN
    TiposDo4,           // INT128, DECFLOAT, TIME ZONE
    PalavrasDo4,        // LATERAL, LOCAL, WINDOW and others are words of the language
    IdentificadorDe63,  // letters; before, 31 bytes
    PulaBloqueadas,     // SKIP LOCKED
};

/// What a server, its database and the client library are: told by the driver as the connection is opened, without a
/// statement. A zero or an empty text is what the driver cannot tell.
struct TCapacidades {
    int versao = 0;             // of the server: 205 is 2.5, 300 is 3.0; of SQL Server 1300 is 2016
    std::string servidor = {};  // the version as the server writes it: "3.0.11", "13.00.5026"
    std::string cliente = {};   // of the client library or the ODBC driver, with its version
    int versaoDoCliente = 0;
    int estrutura = 0;            // on-disk structure of the database (ODS): 1200 is 12.0
    int estruturaDoServidor = 0;  // that a database has which this server makes
    int pagina = 0;               // bytes
    int dialeto = 0;              // SQL dialect of the database
    std::string arquivo = {};     // of the database, as its server knows it
    bool embarcado = false;       // the engine works in this process

    /// Of a server that is not known it is supposed what 3.0 can.
    bool Tem(TRecurso recurso) const;
};

/// How a database fares. Nothing is what was not asked, or what the server does not tell this user.
struct TSaude {
    // Told by the driver without a statement
    std::optional<bool> escritasForcadas = {};
    std::optional<std::int64_t> maisAntiga = {}, ativaMaisAntiga = {}, proxima = {};  // transactions, by number
    std::optional<std::int64_t> intervaloDeSweep = {};                                // 0: none by itself
    std::optional<std::int64_t> emLimbo = {};                                         // transactions
    std::optional<std::int64_t> livresNoArquivo = {};                                 // bytes of its free pages

    // Asked of the catalogue
    std::optional<bool> umSoUsuario = {};
    std::optional<int> compatibilidade = {};  // of SQL Server: 130 is 2016's
    std::string recuperacao = {};             // its model: "FULL"
    std::optional<double> logUsado = {};      // percent
    std::optional<bool> instantaneo = {};     // whether transactions may read the database as it was at their beginning
    std::vector<std::string> semAcentos = {};  // columns of unique indexes that take "é" for "e"
    std::vector<std::string> naoSabidos = {};  // what the server does not tell
};

/// A capability in people's words, and whether it is there.
struct TRecursoParaLer {
    std::string_view nome;
    bool tem;
};
std::vector<TRecursoParaLer> RecursosParaLer(const TCapacidades& capacidades);

/// The number of a version text: its first two numbers, "3.0.11" is 300 and "13.00.5026" 1300; 0 without any.
int NumeroDaVersao(std::string_view texto);

/// On-disk structure of the databases that a Firebird of that version makes; 0 where that is not known.
int EstruturaDoFirebird(int versao);

/// A version or structure as it is written: 205 is "2.5".
std::string TextoDaVersao(int numero);

}  // namespace wkd
