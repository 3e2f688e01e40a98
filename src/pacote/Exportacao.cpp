#include "Exportacao.h"

#include <algorithm>
#include <set>

#include "dialect/Dialeto.h"
#include "packet/DataPacket.h"
#include "tables/TBComandos.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

namespace {

struct TTabelaDoDicionario {
    const char *nome, *arquivo;
    std::vector<std::string> ordem;      // columns that the table may lack
    std::vector<const char*> doCliente;  // columns whose name marks a row as the customer's
    bool obrigatoria = false, indices = false;
};

const std::vector<TTabelaDoDicionario>& Dicionario() {
    static const std::vector<TTabelaDoDicionario> tabelas = {
        {"SARQUIVO", "SARQUIVO.WKD", {"COD_MODULO", "NOME_ARQUIVO"}, {"NOME_ARQUIVO"}, true},
        {"SATRIB", "SAtrib.WKD", {"ARQUIVO", "SEQUENCIA", "NOME"}, {"ARQUIVO", "NOME"}, true},
        {"SINDSEC", "SINDSEC.WKD", {"ARQUIVO", "NOME"}, {"ARQUIVO"}, false, true},
        {"SINDSECA", "SINDSECA.WKD", {"ARQUIVO", "NOME", "SEQUENCIA", "CAMPO"}, {"ARQUIVO"}, false, true},
        {"SLOOKUP", "SLOOKUP.WKD", {"ARQUIVO", "CAMPO", "AUT_", "CAMPOPAI", "CAMPOFILHO"}, {"ARQUIVO", "CAMPO"}},
        {"SPESQ", "SPESQ.WKD", {"ARQUIVO", "NOMEPESQUISA", "SEQ"}, {"ARQUIVO", "NOMEPESQUISA"}},
        {"SPESQAUX", "SPESQAUX.WKD", {"ARQUIVO", "NOME", "SEQ", "CAMPOS", "AUT_"}, {"ARQUIVO", "NOME"}},
        {"SADMMOD", "SADMMOD.WKD", {"COD_MODULO"}, {}},
        {"SRELATOR", "SRELATOR.WKD", {"ARQUIVO"}, {"ARQUIVO"}},
        {"SARQ_RELACIONA_PAI",
         "SARQ_RELACIONA_PAI.WKD",
         {"ARQUIVO_PAI", "ARQUIVO_FILHO", "CAMPO_PAI", "CAMPO_FILHO"},
         {"ARQUIVO_PAI", "ARQUIVO_FILHO"}},
        {"SLISTA_CONTROLE", "SLISTA_CONTROLE.WKD", {"ARQUIVO", "CAMPO", "VALOR", "TEXTO"}, {"ARQUIVO", "CAMPO"}},
    };
    return tabelas;
}

bool Existe(const std::vector<std::string>& nomes, std::string_view nome) {
    return std::ranges::any_of(nomes, [&](const auto& outro) { return IgualSemCaixa(outro, nome); });
}

/// Order by the columns of this list that the table has, then by its key.
std::string Ordem(TConnection& conexao, const std::string& tabela, std::vector<std::string> colunas) {
    const auto fisicas = conexao.Colunas(tabela);
    std::erase_if(colunas, [&](const auto& coluna) { return !ColunaDeNome(fisicas, coluna); });
    for (const auto& coluna : conexao.ChavePrimaria(tabela).colunas)
        if (!Existe(colunas, coluna)) colunas.push_back(Dialeto(conexao).Identificador(coluna));
    return colunas.empty() ? "" : " order by " + Junta(colunas, ", ");
}

TDataPacket Linhas(TConnection& conexao, const std::string& sql) {
    TDataPacket pacote;
    const auto consulta = conexao.Prepara(sql);
    consulta->Abre();
    for (const auto& campo : consulta->Campos()) pacote.campos.push_back(CampoDePacote(campo));
    while (consulta->Proximo()) {
        TLinha linha;
        for (std::size_t i = 0; i < pacote.campos.size(); ++i) linha.push_back(consulta->Valor(i));
        pacote.linhas.push_back(std::move(linha));
    }
    return pacote;
}

/// Names in a column of a packet; empty where the packet lacks the column.
class TNomes {
  public:
    TNomes(const TDataPacket& pacote, std::string_view coluna)
        : posicao_(IndiceDoCampo({pacote.campos.begin(), pacote.campos.end()}, coluna)) {}
    std::string operator()(const TLinha& linha) const {
        return posicao_ < 0 ? "" : ChaveDeNome(linha[static_cast<std::size_t>(posicao_)].ComoTexto());
    }

  private:
    int posicao_;
};

using TIndices = std::set<std::pair<std::string, std::string>>;  // table and index

/// The indexes that have a column of the customer's. Without that column each would be another index, unique in too
/// little.
TIndices IndicesDoCliente(const TDataPacket& sindseca) {
    const TNomes arquivo(sindseca, "ARQUIVO"), nome(sindseca, "NOME"), campo(sindseca, "CAMPO");
    TIndices indices;
    for (const auto& linha : sindseca.linhas)
        if (campo(linha).starts_with("U_")) indices.emplace(arquivo(linha), nome(linha));
    return indices;
}

void TiraDoCliente(TDataPacket& pacote, const TTabelaDoDicionario& tabela, const TIndices& indices) {
    const TNomes arquivo(pacote, "ARQUIVO"), indice(pacote, "NOME");
    std::vector<TNomes> nomes;
    for (const char* coluna : tabela.doCliente) nomes.emplace_back(pacote, coluna);
    std::erase_if(pacote.linhas, [&](const TLinha& linha) {
        const std::string pesquisa = arquivo(linha) + "_P_U_";
        const auto doCliente = [&](const TNomes& nome) {
            return nome(linha).starts_with("U_") || nome(linha).starts_with(pesquisa);
        };
        return std::ranges::any_of(nomes, doCliente) ||
               (tabela.indices && indices.contains({arquivo(linha), indice(linha)}));
    });
}

}  // namespace

void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem) {
    const auto existentes = conexao.NomesDeTabelas();
    const auto exige = [&](const std::string& nome) {
        if (!Existe(existentes, nome)) throw TErroPacote("O banco não tem a tabela '" + nome + "'.");
    };
    const auto linhas = [&](const std::string& tabela, const std::vector<std::string>& ordem) {
        return Linhas(conexao, "select * from " + tabela + Ordem(conexao, tabela, ordem));
    };
    const auto indices = Existe(existentes, "SINDSECA") ? IndicesDoCliente(linhas("SINDSECA", {})) : TIndices();
    for (const auto& tabela : Dicionario()) {
        if (tabela.obrigatoria) exige(tabela.nome);
        if (!Existe(existentes, tabela.nome)) continue;
        auto pacote = linhas(tabela.nome, tabela.ordem);
        TiraDoCliente(pacote, tabela, indices);
        montagem.Pacote(pacote, tabela.arquivo);
    }
    for (const auto& tabela : tabelas) {
        exige(tabela);
        montagem.Pacote(linhas(tabela, {}), Maiusculas(tabela) + ".WKD");
    }
}

}  // namespace wkd
