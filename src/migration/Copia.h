#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace wkd {

/// One copy of all rows of a table into another one.
struct TCopia {
    std::string tabela;  // business table: the one that reports name
    std::string origem, destino;
    std::vector<std::string> chave;  // columns that tell a row in reports
    std::string etapa;               // of the rejects
    std::string rotulo = {};         // of every row; empty leaves the label alone
    std::string inicioDoErro = {};   // before the text of a row that failed
    // Shows also what fails of a single field, asks whether to go on without a refused row that was shown, and ends
    // when what is missing cannot be written into the rejects file.
    bool exigente = false;
    std::size_t linhasPorLote = 100;
    std::size_t bytesPorLote = 64 * 1024 * 1024;  // that the values of a batch take on this machine, or one row more
    std::string condicao = {};                    // behind the source's name: alias and where clause
    std::string fonte = {};                       // query in parentheses to read instead of the source
    std::int64_t pula = 0;                        // rows of the source that an earlier copy has done
    std::function<void(std::int64_t)> aoGravar = nullptr;  // in each transaction: rows of the source done by then
};

}  // namespace wkd
