#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "package/Pacote.h"
#include "package/Trava.h"
#include "packet/DataPacket.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

/// A package and its files, extracted for as long as the object lives.
class TPacoteAberto {
  public:
    /// Throws TErroPacote for a package that the update could not unpack either.
    explicit TPacoteAberto(const std::filesystem::path& pacote);

    const TPastaDeTrabalho& Pasta() const { return *pasta_; }
    std::uint64_t Bytes() const { return bytes_; }
    /// Entries that were refused or replaced, in words.
    const std::vector<std::string>& Relatos() const { return relatos_; }

  private:
    TPastaPassageira temporaria_;
    std::optional<TPastaDeTrabalho> pasta_;
    std::uint64_t bytes_ = 0;
    std::vector<std::string> relatos_;
};

/// Reads a packet with the content of its blobs, so that a damaged one is found now. Throws TErroPacote.
TDataPacket LePacoteInteiro(const std::filesystem::path& arquivo);
/// Length of the content, all of which is read. Throws TErroPacote when it is damaged.
std::uint64_t BytesDoConteudo(const TValor& valor);

// What a package holds, as a reviewer looks at it.

struct TTabelaDoPacote {
    std::string modulo, nome, descricao;
    std::int64_t versao = 0;
    std::vector<TColunaDicionario> colunas;  // in their order
    std::vector<TIndiceDicionario> indices;
};

/// Packet file whose rows refill a table; `erro` says why it cannot be read.
struct TPacoteDeTabela {
    std::string arquivo, tabela, erro;
    TFormaPacote forma = TFormaPacote::Xml;
    std::uint64_t bytes = 0;
    std::size_t linhas = 0;
    std::vector<std::string> campos;
};

/// File of a package, or inside its packet "ARQUIVOS".
struct TArquivoDoPacote {
    std::string nome, versao;
    std::uint64_t bytes = 0;
};

struct TInventario {
    std::uint64_t bytes = 0;  // of the package
    std::vector<TTabelaDoPacote> tabelas;
    std::vector<TTabelaDoPacote> semTabela;  // columns and indexes of tables that SARQUIVO lacks
    std::vector<TPacoteDeTabela> sistema;
    std::vector<TArquivoDoPacote> layouts, arquivos, outros;
    bool temArquivos = false;          // the packet "ARQUIVOS", empty or not
    std::vector<std::string> relatos;  // entries that would not be extracted
};

/// Throws TErroPacote when the package, or its SARQUIVO, SATRIB or ARQUIVOS packet, cannot be used: the update would
/// end there too. Other packets are listed with what is wrong about them.
TInventario LeInventario(const std::filesystem::path& pacote);

}  // namespace wkd
