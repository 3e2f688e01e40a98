#include "Instantaneo.h"

#include <set>

#include "copy/ColunasDaCopia.h"
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

/// The server names the index of a constraint by itself, anew at every restore.
std::string Descreve(const TIndice& indice, bool inativo) {
    std::string texto = indice.restricao.empty() ? "índice " + indice.nome : "restrição " + indice.restricao;
    if (indice.unico) texto += " único";
    if (indice.descendente) texto += " descendente";
    if (inativo) texto += " inativo";
    return texto + " (" + (indice.expressao.empty() ? Junta(indice.colunas, ",") : TextoDeBytes(indice.expressao)) +
           ")";
}

/// A restore that finds a key twice leaves its index inactive.
std::set<std::string> IndicesInativos(TConnection& conexao) {
    std::set<std::string> nomes;
    if (conexao.TipoBanco() != TTipoBanco::tbInterbase) return nomes;
    const auto comando = conexao.Prepara("select rdb$index_name from rdb$indices where rdb$index_inactive = 1");
    for (comando->Abre(); comando->Proximo();) nomes.emplace(AparaFim(comando->Valor(0).ComoTexto()));
    return nomes;
}

/// A text as its bytes, so that letters which its character set does not have are read, too.
std::string Expressao(const TColunaFisica& coluna, TTipoBanco banco) {
    if (banco != TTipoBanco::tbInterbase || coluna.tipo != TTipoDado::Texto) return Lida(coluna, Dialeto(banco));
    const int porLetra = coluna.conjunto == "UTF8" ? 4 : coluna.conjunto == "UNICODE_FSS" ? 3 : 1;
    return "cast(" + Dialeto(banco).Identificador(coluna.nome) + " as varchar(" +
           std::to_string(std::min(coluna.tamanho * porLetra, 32765)) + ") character set octets)";
}

class TLeitura {
  public:
    TLeitura(TConnection& conexao, const TAcompanha& acompanha)
        : conexao_(conexao), acompanha_(acompanha), inativos_(IndicesInativos(conexao)) {}

    TInstantaneo Le();

  private:
    void Estrutura(const std::string& tabela, const std::vector<TColunaFisica>& colunas, TTabelaNoInstantaneo& lida);
    void Registros(const std::string& tabela, const std::vector<TColunaFisica>& colunas, TTabelaNoInstantaneo& lida);
    void Avisa(const std::string& tabela, std::int64_t registros) {
        acompanha_({"Lendo " + tabela + ": " + ComMilhares(registros) + " registros", -1});
    }

    TConnection& conexao_;
    const TAcompanha& acompanha_;
    const std::set<std::string> inativos_;
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
    for (const auto& indice : conexao_.Indices(tabela))
        indices.insert(Descreve(indice, inativos_.contains(indice.nome)));
    lida.estrutura.insert(lida.estrutura.end(), indices.begin(), indices.end());
}

void TLeitura::Registros(const std::string& tabela, const std::vector<TColunaFisica>& colunas,
                         TTabelaNoInstantaneo& lida) {
    std::vector<std::string> lidas;
    for (const auto& coluna : colunas)
        if (coluna.expressao.empty()) lidas.push_back(Expressao(coluna, conexao_.TipoBanco()));
    if (lidas.empty()) return;
    const auto comando =
        conexao_.Prepara("select " + Junta(lidas, ", ") + " from " + Dialeto(conexao_).Identificador(tabela));
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
