#pragma once

#include <algorithm>

#include "dialect/Dialeto.h"

namespace wkd {

/// SQL Server. The catalogue's part stands in CatalogoSqlServer.cpp.
class TDialetoSqlServer : public TDialeto {
  public:
    std::string AjustaQuery(std::string_view comando) const override;
    std::string ChaveAlteraColuna(std::string_view coluna) const override;
    std::string AjustaCriaTabela(std::string_view comando) const override;
    std::string ApagaIndice(const TIndice& indice, std::string_view tabela) const override;
    std::string ExigeValor(std::string_view tabela, const TColunaFisica& coluna) const override;
    std::string DispensaValor(std::string_view tabela, const TColunaFisica& coluna) const override;
    std::string ColunaCalculada(const TColunaFisica& coluna) const override;
    std::string NomeDeEnsaio(std::string_view tabela) const override;
    /// It takes 1,000 rows and 2,100 parameters.
    std::size_t LinhasPorInsercao(const std::vector<TColunaFisica>& colunas) const override {
        return colunas.empty() ? 1 : std::min<std::size_t>(1000, 2000 / colunas.size());
    }
    std::string Caracteres(const std::string& texto) const override;
    std::string Bytes(const std::string& valor) const override { return "datalength(" + valor + ")"; }
    std::string Trecho(const std::string& texto, int de, int letras) const override;
    std::string Emenda(const std::string& um, const std::string& outro) const override { return um + " + " + outro; }
    /// It turns no Unicode text into an image by itself.
    std::string ParaBlob(const std::string& texto) const override { return "cast(" + texto + " as varbinary(max))"; }
    std::string Agrupavel(const TColunaFisica& coluna) const override;

    bool ComparaConteudo() const override { return true; }
    bool NulosRepetem() const override { return false; }
    bool ChaveExigeValor() const override { return true; }
    bool AlteracaoDispensaValor() const override { return true; }
    bool CopiaFaixas() const override { return true; }
    /// Servers before 2016 make a hash of no more.
    std::size_t BytesDaSoma() const override { return 8000; }
    bool ColunaPresa(const TErroBanco& erro) const override;

    bool SoNoCliente(const TColunaFisica& b, const TColunaFisica& t) const override;
    /// Texts are compared by their bytes, so that letter case, accents and blanks at the end count whatever the
    /// collation says.
    TComparacao Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                           const std::string& nomeT) const override;
    std::string Diferem(const TComparacao& par) const override;
    std::string ContaValores(const std::string& expressao) const override;
    std::string Soma(const TComparacao& par, const std::string& expressao) const override;

    std::map<std::string, TIndiceComoEra> IndicesComoEram(TConnection& conexao,
                                                          const std::string& tabela) const override;
    std::vector<std::string> Restricoes(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Permissoes(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Comentarios(TConnection& conexao, const std::string& tabela) const override;
    std::vector<TFonte> Gatilhos(TConnection& conexao, const std::string& tabela) const override;
    std::vector<TFonte> Propriedades(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Dependentes(TConnection& conexao, const std::string& tabela) const override;
    TContorno Padrao(TConnection& conexao, const std::string& tabela, std::string_view coluna) const override;

    std::string_view ComandoObjetos() const override;
    std::string_view ComandoConectados() const override;
    TSaude Saude(TConnection& conexao) const override;

    std::string Marca(TConnection& conexao, const std::string& tabela) const override;
    void GravaMarca(TConnection& conexao, const std::string& tabela, std::string_view marca) const override;
    std::vector<std::string> TabelasMarcadas(TConnection& conexao, std::string_view marca) const override;
    std::vector<std::string> Notas(TConnection& conexao, const std::string& tabela) const override;
    void GravaNotas(TConnection& conexao, const std::string& tabela,
                    const std::vector<std::string>& notas) const override;

  protected:
    /// It takes every name in quotes.
    bool Regular(std::string_view /*nome*/) const override { return false; }
};

}  // namespace wkd
