#include "copy/CopiaNoServidor.h"

#include <algorithm>
#include <stdexcept>

#include "dialect/Dialeto.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kBytesDaChave = 8;
const std::string kDaChave = " where rdb$db_key = ";

bool TextoVariavel(const TColunaFisica& coluna) {
    return coluna.tipo == TTipoDado::Texto && Minusculas(coluna.tipoSql).starts_with("varchar(");
}

/// Bytes of a whole number without scale; 0 for another type.
int BytesDoInteiro(const TColunaFisica& coluna) {
    const std::string tipo = Minusculas(coluna.tipoSql);
    return tipo == "smallint" ? 2 : tipo == "integer" ? 4 : tipo == "bigint" ? 8 : 0;
}

/// Between bytes and whatever else a blob holds, the server turns nothing into another character set.
bool BlobsComoEstao(const TColunaFisica& origem, const TColunaFisica& destino) {
    const auto longa = [](const TColunaFisica& c) { return c.tipo == TTipoDado::Blob || c.tipo == TTipoDado::Memo; };
    const auto deBytes = [](const TColunaFisica& c) { return IgualSemCaixa(c.tipoSql, "blob sub_type 0"); };
    return longa(origem) && longa(destino) && (deBytes(origem) || deBytes(destino));
}

/// Whether the server gives every value the same form in the target that the client would.
bool MesmaForma(const TColunaFisica& origem, const TColunaFisica& destino) {
    if (!origem.tipoSql.empty() && IgualSemCaixa(origem.tipoSql, destino.tipoSql)) return true;
    if (BlobsComoEstao(origem, destino)) return true;
    if (TextoVariavel(origem) && TextoVariavel(destino)) return origem.conjunto == destino.conjunto;
    return BytesDoInteiro(origem) > 0 && BytesDoInteiro(origem) <= BytesDoInteiro(destino);
}

/// What makes a row need the client because of this column; empty for nothing.
std::string Excecao(const TColunaDaCopia& coluna, const TDialeto& dialeto) {
    const std::string nome = dialeto.Identificador(coluna.origem->nome);
    if (coluna.numerada) return "coalesce(" + nome + ", 0) = 0";
    std::vector<std::string> excecoes;
    if (coluna.destino.requerido) excecoes.push_back(nome + " is null");
    if (TextoVariavel(coluna.destino) && coluna.destino.tamanho < coluna.origem->tamanho)
        excecoes.push_back("char_length(" + nome + ") > " + std::to_string(coluna.destino.tamanho));
    return Junta(excecoes, " or ");
}

std::string ConsultaDasChaves(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas,
                              const TDialeto& dialeto) {
    std::vector<std::string> excecoes;
    for (const auto& coluna : colunas) {
        if (!coluna.origem) continue;
        if (auto excecao = Excecao(coluna, dialeto); !excecao.empty()) excecoes.push_back(std::move(excecao));
    }
    const std::string precisa = excecoes.empty() ? "0" : "case when " + Junta(excecoes, " or ") + " then 1 else 0 end";
    return "select rdb$db_key, " + precisa + " from " + copia.origem + copia.condicao;
}

/// Whether the column counts the rows.
bool Contada(const TColunaDaCopia& coluna) {
    return coluna.numerada && !coluna.origem && coluna.fixo.ComoInteiro() == 0;
}

/// One insert for each record number. Columns that the source lacks come as parameters P0, P1, ..., the last number
/// given of one that counts.
std::string Bloco(const TCopia& copia, const std::vector<TColunaDaCopia>& colunas, const TDialeto& dialeto) {
    const std::string bytes = std::to_string(kBytesDaChave);
    std::string fixos;
    std::vector<std::string> nomes, valores;
    for (std::size_t i = 0; i < colunas.size(); ++i) {
        const auto& [doDestino, daOrigem, lugar, fixo, numerada] = colunas[i];
        const std::string numero = std::to_string(i);
        nomes.push_back(dialeto.Identificador(doDestino.nome));
        valores.push_back(daOrigem ? dialeto.Identificador(daOrigem->nome) : ":p" + numero);
        if (Contada(colunas[i])) valores.back() += " + :lugar + 1";
        if (!daOrigem) fixos += ", p" + numero + " " + doDestino.tipoSql + " = :P" + numero;
    }
    return "execute block (quantas integer = :QUANTAS, chaves varchar(" +
           std::to_string(kBytesDaChave * std::min(copia.linhasPorLote, kLinhasPorComando)) +
           ") character set octets = :CHAVES" + fixos +
           ") as declare lugar integer = 0; begin while (lugar < quantas) do begin insert into " + copia.destino +
           " (" + Junta(nomes, ",") + ") select " + Junta(valores, ",") + " from " + copia.origem + kDaChave +
           "substring(:chaves from :lugar * " + bytes + " + 1 for " + bytes + "); lugar = lugar + 1; end end";
}

bool ServeAoServidor(const std::vector<TColunaDaCopia>& colunas) {
    for (const auto& coluna : colunas) {
        if (!coluna.origem) continue;
        if (!MesmaForma(*coluna.origem, coluna.destino)) return false;
        if (coluna.numerada && BytesDoInteiro(*coluna.origem) == 0) return false;
    }
    return true;
}

}  // namespace

std::unique_ptr<TCopiaNoServidor> TCopiaNoServidor::Para(TConnection& conexao, const TCopia& copia,
                                                         const std::vector<TColunaDaCopia>& colunas) {
    const TDialeto& dialeto = Dialeto(conexao);
    if (!dialeto.NumeraRegistros() || !ServeAoServidor(colunas)) return nullptr;
    std::unique_ptr<TCopiaNoServidor> servidor(new TCopiaNoServidor);
    try {
        servidor->chaves_ = conexao.Prepara(ConsultaDasChaves(copia, colunas, dialeto));
        servidor->linha_ = conexao.Prepara("select " + ListaDaOrigem(colunas, dialeto) + " from " + copia.origem +
                                           kDaChave + ":CHAVE");
        servidor->copia_ = conexao.Prepara(Bloco(copia, colunas, dialeto));
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return nullptr;
    }
    for (std::size_t i = 0; i < colunas.size(); ++i) {
        if (colunas[i].origem) continue;
        const std::string parametro = "P" + std::to_string(i);
        servidor->copia_->Atribui(parametro, colunas[i].fixo);
        if (Contada(colunas[i])) servidor->contadas_.emplace_back(parametro, colunas[i].destino.nome);
    }
    return servidor;
}

void TCopiaNoServidor::Copia(std::string_view chaves, TRenumeracao& renumeracao) {
    const auto quantas = static_cast<std::int64_t>(chaves.size() / kBytesDaChave);
    copia_->Atribui("QUANTAS", quantas);
    copia_->Atribui("CHAVES", TBytes{std::string(chaves)});
    for (const auto& [parametro, coluna] : contadas_) copia_->Atribui(parametro, renumeracao.Ultimo(coluna));
    copia_->Executa();
    for (const auto& [parametro, coluna] : contadas_) renumeracao.Avanca(coluna, quantas);
}

TComando& TCopiaNoServidor::Linha(std::string_view chave) {
    linha_->Atribui("CHAVE", TBytes{std::string(chave)});
    linha_->Abre();
    if (!linha_->Proximo()) throw std::runtime_error("um registro sumiu durante a cópia");
    return *linha_;
}

}  // namespace wkd
