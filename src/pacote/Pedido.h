#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wkd {

// What the command line of PacoteWKD asks for.

enum class TFormaDeArquivo { Xml, Binario, Json };

struct TPedeMonta {
    std::filesystem::path pacote;
    std::filesystem::path pasta;       // empty: none
    std::string alias;                 // empty: no database
    std::vector<std::string> tabelas;  // of the database, beside its dictionary
    std::string versao;                // of the files
};
struct TPedeMostra {
    std::filesystem::path pacote;
};
struct TPedeConverte {
    std::filesystem::path origem, destino;
    TFormaDeArquivo forma = TFormaDeArquivo::Binario;
};
struct TPedeRevisao {
    std::filesystem::path pacote, anterior;  // `anterior` empty: none
};
/// Text to print, of --help and --version.
struct TPedeTexto {
    std::string texto;
};
/// Arguments that ask for nothing: why.
struct TPedidoErrado {
    std::string mensagem;
};

struct TPedidoDoPacote {
    std::variant<TPedeTexto, TPedeMonta, TPedeMostra, TPedeConverte, TPedeRevisao, TPedidoErrado> comando;
    bool json = false;
};

/// Reads the arguments behind the program name.
TPedidoDoPacote LePedidoDoPacote(const std::vector<std::string>& argumentos);

}  // namespace wkd
