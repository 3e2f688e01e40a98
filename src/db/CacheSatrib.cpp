#include "CacheSatrib.h"

#include <algorithm>

#include "ClientDataSet.h"
#include "Connection.h"
#include "Texto.h"

namespace wkd {

void TCacheSatrib::Carrega(TConnection& conexao) {
    Esquece();
    const auto tabelas = conexao.NomesDeTabelas();
    const auto satrib = [](const std::string& nome) { return IgualSemCaixa(nome, "SATRIB"); };
    if (std::ranges::any_of(tabelas, satrib)) {
        const auto comando = conexao.Prepara("select * from satrib order by arquivo,sequencia");
        comando->Abre();
        campos_ = comando->Campos();
        const auto arquivo = static_cast<std::size_t>(IndiceDoCampo(campos_, "ARQUIVO"));
        while (comando->Proximo()) {
            TLinha linha;
            for (std::size_t i = 0; i < campos_.size(); ++i) linha.push_back(comando->Valor(i));
            linhas_[ChaveDeNome(linha.at(arquivo).ComoTexto())].push_back(std::move(linha));
        }
    }
    carregado_ = true;
}

void TCacheSatrib::Esquece() {
    carregado_ = false;
    campos_.clear();
    linhas_.clear();
}

void TCacheSatrib::Copia(std::string_view tabela, TClientDataSet& alvo) const {
    alvo.Close();
    if (campos_.empty()) return;
    const auto achada = linhas_.find(ChaveDeNome(tabela));
    alvo.Carrega({campos_, achada == linhas_.end() ? std::vector<TLinha>{} : achada->second});
}

}  // namespace wkd
