#include "Instantaneo.h"

#include <set>

#include "dialect/Dialeto.h"
#include "values/SomaDeValores.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

constexpr std::int64_t kLinhasPorAviso = 2000;

std::string Descreve(const TColunaFisica& coluna) {
    std::string texto = coluna.nome + " " + coluna.tipoSql;
    if (coluna.requerido) texto += " not null";
    if (!coluna.padrao.empty()) texto += " default " + coluna.padrao;
    if (!coluna.expressao.empty()) texto += " computed by " + coluna.expressao;
    return TextoDeBytes(texto);
}

/// The server names the index of a constraint by itself, anew at every restore. One that finds a key twice leaves its
/// index inactive.
std::string Descreve(const TIndice& indice) {
    std::string texto = indice.restricao.empty() ? "índice " + indice.nome : "restrição " + indice.restricao;
    if (indice.unico) texto += " único";
    if (indice.descendente) texto += " descendente";
    if (indice.inativo) texto += " inativo";
    return texto + " (" + (indice.expressao.empty() ? Junta(indice.colunas, ",") : TextoDeBytes(indice.expressao)) +
           ")";
}

class TLeitura {
  public:
    TLeitura(TConnection& conexao, const TAcompanha& acompanha) : conexao_(conexao), acompanha_(acompanha) {}

    TInstantaneo Le();

  private:
    void Estrutura(const std::string& tabela, const std::vector<TColunaFisica>& colunas, TTabelaNoInstantaneo& lida);
    void Registros(const std::string& tabela, const std::vector<TColunaFisica>& colunas, TTabelaNoInstantaneo& lida);
    void Avisa(const std::string& tabela, std::int64_t registros) {
        acompanha_({"Lendo " + tabela + ": " + ComMilhares(registros) + " registros", -1});
    }

    TConnection& conexao_;
    const TAcompanha& acompanha_;
};

TInstantaneo TLeitura::Le() {
    TInstantaneo instantaneo;
    const auto colunas = conexao_.TodasAsColunas();
    for (const std::string& tabela : conexao_.NomesDeTabelas()) {
        const auto suas = colunas.find(Maiusculas(tabela));
        if (suas == colunas.end()) continue;
        TTabelaNoInstantaneo& lida = instantaneo[std::string(AparaFim(tabela))];
        Estrutura(tabela, suas->second, lida);
        Registros(tabela, suas->second, lida);
    }
    return instantaneo;
}

void TLeitura::Estrutura(const std::string& tabela, const std::vector<TColunaFisica>& colunas,
                         TTabelaNoInstantaneo& lida) {
    for (const auto& coluna : colunas) lida.estrutura.push_back(Descreve(coluna));
    if (const auto chave = conexao_.ChavePrimaria(tabela).colunas; !chave.empty())
        lida.estrutura.push_back("chave primária (" + Junta(chave, ",") + ")");
    std::set<std::string> indices;
    for (const auto& indice : conexao_.Indices(tabela)) indices.insert(Descreve(indice));
    lida.estrutura.insert(lida.estrutura.end(), indices.begin(), indices.end());
}

void TLeitura::Registros(const std::string& tabela, const std::vector<TColunaFisica>& colunas,
                         TTabelaNoInstantaneo& lida) {
    const TDialeto& dialeto = Dialeto(conexao_);
    std::vector<std::string> lidas;
    for (const auto& coluna : colunas)
        if (coluna.expressao.empty()) lidas.push_back(dialeto.ComoEsta(coluna));
    if (lidas.empty()) return;
    const auto comando = conexao_.Prepara("select " + Junta(lidas, ", ") + " from " + dialeto.Identificador(tabela));
    std::uint64_t soma = 0;
    Avisa(tabela, 0);
    for (comando->Abre(); comando->Proximo();) {
        THash hash;
        for (std::size_t i = 0; i < lidas.size(); ++i) SomaValor(hash, comando->Valor(i));
        soma += hash.Valor();
        if (++lida.registros % kLinhasPorAviso == 0) Avisa(tabela, lida.registros);
    }
    lida.hash = std::to_string(soma);
}

}  // namespace

TInstantaneo TiraInstantaneo(TConnection& conexao, const TAcompanha& acompanha) {
    return TLeitura(conexao, acompanha).Le();
}

}  // namespace wkd
