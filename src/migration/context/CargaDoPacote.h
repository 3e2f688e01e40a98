#pragma once

#include <string>
#include <vector>

#include "context/Contexto.h"
#include "package/Pacote.h"
#include "packet/DicionarioDoPacote.h"

namespace wkd {

/// The table names among the lines of a list: blank ones are none.
std::vector<std::string> NomesListados(const std::vector<std::string>& linhas);

// First steps of whatever works with a package. Those that answer false have said why.

/// What the connection's server is. A connection found dead is opened again: nothing has been begun on it.
std::string ServidorVivo(TConnection& conexao);
/// Whether the database has the dictionary; reads the table-name list.
bool TemDicionario(TContexto& ctx);
/// Extracts the package of the options into the working directory.
bool Desempacota(TContexto& ctx, TPastaDeTrabalho& pasta);
/// Loads the package's dictionary, into SArquivoNovo and SatribNovo as well, but the rows that it answers with, which
/// are reported. Throws TErroPacote when it cannot be used.
std::vector<TLinhaRecusada> CarregaDicionarios(TContexto& ctx, const TPastaDeTrabalho& pasta);
/// Makes the package's dictionary of the rows of SArquivoNovo and SatribNovo.
void LeDicionarioNovo(TContexto& ctx);
/// Reads the stored dictionary, of its columns what decides, and opens SarquivoVelho, and SatribVelho without rows.
/// Throws TErroBanco.
void LeDicionarioGravado(TContexto& ctx);
/// A table's negative version in the package, which would say that its rebuild is open, counts as the stored one and is
/// reported. Expects the stored dictionary read.
void DesconsideraVersoesNegativas(TContexto& ctx);
/// Those of the tables that the package lacks, whose dictionary is unpacked below the temporary folder and read. Throws
/// TErroPacote when it cannot be.
std::vector<std::string> TabelasForaDoPacote(const std::filesystem::path& pacote,
                                             const std::filesystem::path& temporaria,
                                             const std::vector<std::string>& tabelas);
/// From now on SArquivoNovo and the package's dictionary show the tables that the options select.
void Seleciona(TContexto& ctx);
/// The current table of SArquivoNovo; null where it has no name.
const TTabelaDicionario* TabelaAtual(const TContexto& ctx);

}  // namespace wkd
