#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Inventario.h"
#include "connection/Connection.h"
#include "packet/DataPacket.h"

namespace wkd {

/// Files on their way into a package. Two of the same name, letter case ignored, are an error: the second would replace
/// the first when the package is unpacked. Every packet is read before it is taken. All throw TErroPacote.
class TMontagem {
  public:
    /// Packets (".wkd", ".jsonl"), layouts (".rtm") and the packet "ARQUIVOS" of a folder; every other file of it
    /// becomes a record of ARQUIVOS with that version. Hidden files are left out, folders refused.
    void Pasta(const std::filesystem::path& pasta, const std::string& versao);
    /// Packet that was made for this package; `nome` is its file name.
    void Pacote(TDataPacket pacote, const std::string& nome);
    /// Writes the package, with an empty packet "ARQUIVOS" where there is none. Without the two packets of the
    /// dictionary there is no package; nor in the folder it is made of, whose files it would join.
    void Grava(const std::filesystem::path& pacote);

  private:
    void Arquivo(const std::filesystem::path& arquivo, std::vector<std::filesystem::path>& soltos);
    /// The file of that name, letter case ignored; empty when there is none.
    std::filesystem::path Incluido(std::string_view nome) const;
    void ExigeLivre(const std::string& nome) const;
    void Inclui(const std::filesystem::path& arquivo);
    void IncluiSoltos(const std::vector<std::filesystem::path>& soltos, const std::string& versao);

    TPastaPassageira passageira_;
    std::filesystem::path pasta_;
    std::map<std::string, std::filesystem::path> arquivos_;  // by name in capitals
};

/// Puts the dictionary of a database into a package: SARQUIVO, SATRIB and, where they exist, its other tables, without
/// the customer's additions: what "U_" names, its searches ("_P_U_" behind the table's name) and indexes over its
/// columns; then all rows of `tabelas`. Rows come in the order of their names and keys, so that equal dictionaries make
/// equal packets. Throws TErroBanco, TErroPacote.
void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem);

}  // namespace wkd
