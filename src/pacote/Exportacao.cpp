#include "Exportacao.h"

#include <algorithm>

#include "DataPacket.h"
#include "Erros.h"
#include "Texto.h"

namespace wkd {

namespace {

struct TTabelaDoDicionario {
    const char *nome, *arquivo, *ordem;
    std::vector<const char*> doCliente;  // columns whose "U_" marks a row as the customer's
    bool obrigatoria = false;
};

const std::vector<TTabelaDoDicionario>& Dicionario() {
    static const std::vector<TTabelaDoDicionario> tabelas = {
        {"SARQUIVO", "SARQUIVO.WKD", "COD_MODULO, NOME_ARQUIVO", {"NOME_ARQUIVO"}, true},
        {"SATRIB", "SAtrib.WKD", "ARQUIVO, SEQUENCIA, NOME", {"ARQUIVO", "NOME"}, true},
        {"SINDSEC", "SINDSEC.WKD", "ARQUIVO, NOME", {"ARQUIVO"}},
        {"SINDSECA", "SINDSECA.WKD", "ARQUIVO, NOME, SEQUENCIA", {"ARQUIVO", "CAMPO"}},
        {"SLOOKUP", "SLOOKUP.WKD", "ARQUIVO, CAMPO", {"ARQUIVO", "CAMPO"}},
        {"SPESQ", "SPESQ.WKD", "ARQUIVO, NOMEPESQUISA", {"ARQUIVO"}},
        {"SPESQAUX", "SPESQAUX.WKD", "ARQUIVO, NOME", {"ARQUIVO"}},
        {"SADMMOD", "SADMMOD.WKD", "COD_MODULO", {}},
        {"SRELATOR", "SRELATOR.WKD", "ARQUIVO", {"ARQUIVO"}},
        {"SARQ_RELACIONA_PAI",
         "SARQ_RELACIONA_PAI.WKD",
         "ARQUIVO_PAI, ARQUIVO_FILHO",
         {"ARQUIVO_PAI", "ARQUIVO_FILHO"}},
        {"SLISTA_CONTROLE", "SLISTA_CONTROLE.WKD", "ARQUIVO, CAMPO", {"ARQUIVO", "CAMPO"}},
    };
    return tabelas;
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

void TiraDoCliente(TDataPacket& pacote, const std::vector<const char*>& colunas) {
    for (const char* coluna : colunas) {
        const int posicao = IndiceDoCampo({pacote.campos.begin(), pacote.campos.end()}, coluna);
        if (posicao < 0) continue;
        std::erase_if(pacote.linhas, [&](const TLinha& linha) {
            return Maiusculas(linha[static_cast<std::size_t>(posicao)].ComoTexto()).starts_with("U_");
        });
    }
}

bool Existe(const std::vector<std::string>& tabelas, std::string_view nome) {
    return std::ranges::any_of(tabelas, [&](const auto& tabela) { return IgualSemCaixa(tabela, nome); });
}

}  // namespace

void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem) {
    const auto existentes = conexao.NomesDeTabelas();
    const auto exige = [&](const std::string& nome) {
        if (!Existe(existentes, nome)) throw TErroPacote("O banco não tem a tabela '" + nome + "'.");
    };
    for (const auto& tabela : Dicionario()) {
        if (tabela.obrigatoria) exige(tabela.nome);
        if (!Existe(existentes, tabela.nome)) continue;
        auto pacote = Linhas(conexao, std::string("select * from ") + tabela.nome + " order by " + tabela.ordem);
        TiraDoCliente(pacote, tabela.doCliente);
        montagem.Pacote(pacote, tabela.arquivo);
    }
    for (const auto& tabela : tabelas) {
        exige(tabela);
        const auto chave = Junta(conexao.ChavePrimaria(tabela).colunas, ", ");
        const auto ordem = chave.empty() ? "" : " order by " + chave;
        montagem.Pacote(Linhas(conexao, "select * from " + tabela + ordem), Maiusculas(tabela) + ".WKD");
    }
}

}  // namespace wkd
