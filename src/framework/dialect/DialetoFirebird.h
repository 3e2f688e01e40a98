#pragma once

#include "dialect/Dialeto.h"

namespace wkd {

/// Whether Firebird takes the name, in capitals, for a word of its language unless it stands in quotes. The words are
/// those of 2.5 to 5.0.
bool PalavraReservada(std::string_view nome);

/// Firebird. The catalogue's part stands in CatalogoFirebird.cpp.
class TDialetoFirebird : public TDialeto {
  public:
    /// Names that are words of the language from 4.0 on are in quotes there: in a dictionary they stand as ever, and in
    /// the statements that are made of it. Before 3.0 only the catalogue makes a column NOT NULL.
    std::string ParaServidor(std::string_view comando) const override;
    std::string_view ComandoCommit() const override { return "commit;"; }
    std::string_view ComandoRollback() const override { return "ROLLBACK;"; }
    std::string AjustaQuery(std::string_view comando) const override;
    std::string ChaveAlteraColuna(std::string_view coluna) const override;
    std::string Batizada(const std::string& nome) const override;
    std::string ApagaColuna(std::string_view tabela, std::string_view coluna) const override;
    std::string Trecho(const std::string& texto, int de, int letras) const override;
    std::string Emenda(const std::string& um, const std::string& outro) const override { return um + " || " + outro; }
    std::string InsereLinhas(std::string_view tabela, const std::vector<TColunaFisica>& colunas,
                             std::size_t linhas) const override;
    std::size_t LinhasPorInsercao(const std::vector<TColunaFisica>& colunas) const override;
    std::string EmBytes(const TColunaFisica& coluna, const std::string& valor) const override;
    std::string ComoEsta(const TColunaFisica& coluna) const override;
    std::string Agrupavel(const TColunaFisica& coluna) const override;

    bool ComparaConteudo() const override { return true; }
    bool ChaveExigeValor() const override { return true; }
    bool NumeraRegistros() const override { return true; }
    bool TransacaoVaziaGrava() const override { return true; }
    std::int64_t BytesDoRegistro(TConnection& conexao, const std::vector<TLargura>& colunas) const override;
    /// It refuses a table whose rows need more, but only when the creation is committed.
    std::int64_t LimiteDoRegistro() const override { return 65'535; }
    std::int64_t BytesDaChave(TConnection& conexao, const std::vector<TLargura>& colunas) const override;
    std::int64_t LimiteDaChave(int pagina) const override { return pagina / 4 - 8; }

    TComparacao Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                           const std::string& nomeT) const override;
    std::string Diferem(const TComparacao& par) const override;
    std::string Soma(const TComparacao& par, const std::string& expressao) const override;
    std::string IgualANenhum(const TColunaFisica& coluna) const override;
    std::string SomaDasLinhas(const std::vector<TColunaFisica>& colunas) const override;

    std::vector<std::string> Restricoes(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Permissoes(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Comentarios(TConnection& conexao, const std::string& tabela) const override;
    std::vector<TFonte> Gatilhos(TConnection& conexao, const std::string& tabela) const override;
    std::vector<TFonte> Propriedades(TConnection& conexao, const std::string& tabela) const override;
    std::vector<std::string> Dependentes(TConnection& conexao, const std::string& tabela) const override;
    std::string_view ComandoObjetos() const override;
    std::string_view ComandoConectados() const override;
    std::string ConjuntoDoBanco(TConnection& conexao) const override;
    TSaude Saude(TConnection& conexao) const override;
    std::map<std::string, std::int64_t> Formatos(TConnection& conexao) const override;

    std::string Marca(TConnection& conexao, const std::string& tabela) const override;
    void GravaMarca(TConnection& conexao, const std::string& tabela, std::string_view marca) const override;
    std::vector<std::string> TabelasMarcadas(TConnection& conexao, std::string_view marca) const override;
    std::vector<std::string> Notas(TConnection& conexao, const std::string& tabela) const override;
    void GravaNotas(TConnection& conexao, const std::string& tabela,
                    const std::vector<std::string>& notas) const override;

  protected:
    bool DobraNomes() const override { return true; }
    bool DesceInteiro() const override { return true; }
};

}  // namespace wkd
