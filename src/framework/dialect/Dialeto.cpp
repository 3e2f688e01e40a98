#include "dialect/Dialeto.h"

#include <algorithm>

#include "dialect/DialetoFirebird.h"
#include "dialect/DialetoSqlServer.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool Longa(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }

/// Servers without a driver yet: their texts alone are known.
class TDialetoMySQL : public TDialeto {
  public:
    std::string_view ComandoCommit() const override { return "commit;"; }
    std::string_view ComandoRollback() const override { return "ROLLBACK;"; }
    std::string ChaveAlteraColuna(std::string_view coluna) const override { return " modify  " + std::string(coluna); }
};

class TDialetoOracle : public TDialeto {
  public:
    std::string_view ComandoCommit() const override { return "commit"; }
    std::string_view ComandoRollback() const override { return "ROLLBACK"; }
    std::string ChaveAlteraColuna(std::string_view coluna) const override { return " modify  " + std::string(coluna); }
    bool ListaTabela(std::string_view tabela) const override {
        const std::string inicial = Maiusculas(tabela.substr(0, 1));
        return !inicial.empty() && std::string_view("BCST").find(inicial) != std::string_view::npos;
    }
};

}  // namespace

const TDialeto& Dialeto(TTipoBanco banco) {
    static const TDialetoFirebird firebird;
    static const TDialetoMySQL mySql;
    static const TDialetoOracle oracle;
    static const TDialetoSqlServer sqlServer;
    static const TDialeto outro;
    switch (banco) {
        case TTipoBanco::tbInterbase:
            return firebird;
        case TTipoBanco::tbMySQL:
            return mySql;
        case TTipoBanco::tbOracle:
            return oracle;
        case TTipoBanco::tbSQLServer:
            return sqlServer;
        default:
            return outro;
    }
}

const TDialeto& Dialeto(const TConnection& conexao) {
    const TDialeto* doServidor = conexao.DialetoDoServidor();
    return doServidor ? *doServidor : Dialeto(conexao.TipoBanco());
}

std::string TDialeto::ChaveAlteraColuna(std::string_view /*coluna*/) const { return ""; }

bool TDialeto::Regular(std::string_view nome) const {
    const bool minusculas = !DobraNomes();
    const auto letra = [&](char c) { return (c >= 'A' && c <= 'Z') || (minusculas && c >= 'a' && c <= 'z'); };
    const auto resto = [&](char c) { return letra(c) || (c >= '0' && c <= '9') || c == '_' || c == '$'; };
    return !nome.empty() && (letra(nome.front()) || (minusculas && nome.front() == '_')) &&
           std::ranges::all_of(nome, resto) && !PalavraReservada(nome);
}

std::string TDialeto::Identificador(std::string_view nome) const {
    return Regular(nome) ? std::string(nome) : '"' + Troca(nome, "\"", "\"\"") + '"';
}

std::string TDialeto::CriaIndice(const TIndice& indice, std::string_view tabela) const {
    const bool antes = indice.descendente && DesceInteiro();
    std::vector<std::string> colunas;
    for (const auto& coluna : indice.colunas)
        colunas.push_back(Identificador(coluna) + (indice.descendente && !antes ? " desc" : ""));
    return std::string("create ") + (indice.unico ? "unique " : "") + (antes ? "descending " : "") + "index " +
           Identificador(indice.nome) + " on " + std::string(tabela) +
           (indice.expressao.empty() ? " (" + Junta(colunas, ",") + ")" : " computed by (" + indice.expressao + ")");
}

std::string TDialeto::ApagaIndice(const TIndice& indice, std::string_view /*tabela*/) const {
    return "drop index " + Identificador(indice.nome);
}

std::string TDialeto::ExigeValor(std::string_view tabela, const TColunaFisica& coluna) const {
    return "alter table " + std::string(tabela) + " alter " + coluna.nome + " set not null";
}

std::string TDialeto::DispensaValor(std::string_view tabela, const TColunaFisica& coluna) const {
    return "alter table " + std::string(tabela) + " alter " + coluna.nome + " drop not null";
}

std::string TDialeto::ColunaCalculada(const TColunaFisica& coluna) const {
    return Identificador(coluna.nome) + " computed by (" + coluna.expressao + ")";
}

std::string TDialeto::Batizada(const std::string& nome) const { return "constraint " + Identificador(nome) + " "; }

std::string TDialeto::ApagaColuna(std::string_view tabela, std::string_view coluna) const {
    return "alter table " + std::string(tabela) + " drop column " + std::string(coluna);
}

std::string TDialeto::InsereLinhas(std::string_view tabela, const std::vector<TColunaFisica>& colunas,
                                   std::size_t linhas) const {
    std::vector<std::string> nomes, valores;
    for (const auto& coluna : colunas) nomes.push_back(Identificador(coluna.nome));
    for (std::size_t linha = 0, parametro = 0; linha < linhas; ++linha) {
        std::vector<std::string> daLinha;
        for (const auto& coluna : colunas) daLinha.push_back(EmBytes(coluna, ":P" + std::to_string(parametro++)));
        valores.push_back("(" + Junta(daLinha, ", ") + ")");
    }
    return "insert into " + std::string(tabela) + " (" + Junta(nomes, ", ") + ") values " + Junta(valores, ", ");
}

std::string TDialeto::EmBytes(const TColunaFisica& /*coluna*/, const std::string& valor) const { return valor; }

std::string TDialeto::Agrupavel(const TColunaFisica& coluna) const { return Identificador(coluna.nome); }

bool TDialeto::SoNoCliente(const TColunaFisica& b, const TColunaFisica& t) const {
    const auto mistas = [](const TColunaFisica& um, const TColunaFisica& outro) {
        return um.tipo == TTipoDado::Texto && Longa(outro);
    };
    return mistas(b, t) || mistas(t, b);
}

TComparacao TDialeto::Comparacao(const TColunaFisica& b, const std::string& nomeB, const TColunaFisica& t,
                                 const std::string& nomeT) const {
    TComparacao par{nomeB, nomeT};
    par.soPresenca = b.tipo != t.tipo;
    return par;
}

std::string TDialeto::Diferem(const TComparacao& par) const {
    const std::string presenca =
        par.b + " is null and " + par.t + " is not null or " + par.b + " is not null and " + par.t + " is null)";
    return (par.soPresenca ? "(" : "(" + par.b + " <> " + par.t + " or ") + presenca;
}

std::map<std::string, TIndiceComoEra> TDialeto::IndicesComoEram(TConnection& /*conexao*/,
                                                                const std::string& /*tabela*/) const {
    return {};
}

std::vector<std::string> TDialeto::Restricoes(TConnection& /*conexao*/, const std::string& /*tabela*/) const {
    return {};
}

std::vector<std::string> TDialeto::Permissoes(TConnection& /*conexao*/, const std::string& /*tabela*/) const {
    return {};
}

std::vector<std::string> TDialeto::Comentarios(TConnection& /*conexao*/, const std::string& /*tabela*/) const {
    return {};
}

std::vector<TFonte> TDialeto::Gatilhos(TConnection& /*conexao*/, const std::string& /*tabela*/) const { return {}; }

std::vector<TFonte> TDialeto::Propriedades(TConnection& /*conexao*/, const std::string& /*tabela*/) const { return {}; }

std::vector<std::string> TDialeto::Dependentes(TConnection& /*conexao*/, const std::string& /*tabela*/) const {
    return {};
}

TContorno TDialeto::Padrao(TConnection& /*conexao*/, const std::string& /*tabela*/, std::string_view /*coluna*/) const {
    return {};
}

std::map<std::string, std::int64_t> TDialeto::Formatos(TConnection& /*conexao*/) const { return {}; }

std::vector<std::string> TDialeto::TabelasMarcadas(TConnection& /*conexao*/, std::string_view /*marca*/) const {
    return {};
}

std::vector<std::string> TDialeto::Notas(TConnection& /*conexao*/, const std::string& /*tabela*/) const { return {}; }

void TDialeto::GravaNotas(TConnection& /*conexao*/, const std::string& /*tabela*/,
                          const std::vector<std::string>& /*notas*/) const {}

std::vector<std::string> NomesDoCatalogo(TConnection& conexao, std::string_view sql, const std::string& tabela) {
    std::vector<std::string> nomes;
    TWKDQuery q(conexao, sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next()) nomes.emplace_back(AparaFim(q.Texto("NOME")));
    return nomes;
}

std::vector<TFonte> FontesDoCatalogo(TConnection& conexao, std::string_view sql, const std::string& tabela) {
    std::vector<TFonte> fontes;
    TWKDQuery q(conexao, sql);
    q.Param("tabela", tabela).Open();
    for (; !q.Eof(); q.Next())
        fontes.push_back({std::string(AparaFim(q.Texto("NOME"))), TextoDeBytes(q.Campo("FONTE").ComoBytes())});
    return fontes;
}

namespace {

struct TChave {
    std::string nome, tipo, outra, fim;
    std::vector<std::string> colunas, delas;
};

std::vector<TChave> ChavesDoCatalogo(TConnection& conexao, std::string_view sql, const std::string& tabela) {
    std::vector<TChave> chaves;
    TWKDQuery q(conexao, sql);
    q.Param("tabela", tabela).Open();
    const auto lido = [&](std::string_view campo) { return std::string(AparaFim(q.Texto(campo))); };
    for (; !q.Eof(); q.Next()) {
        if (chaves.empty() || chaves.back().nome != lido("NOME"))
            chaves.push_back({lido("NOME"), lido("TIPO"), lido("OUTRA"), q.Texto("FIM"), {}, {}});
        chaves.back().colunas.push_back(Dialeto(conexao).Identificador(lido("COLUNA")));
        chaves.back().delas.push_back(Dialeto(conexao).Identificador(lido("DELA")));
    }
    return chaves;
}

}  // namespace

std::vector<TConectado> Conectados(TConnection& conexao) {
    constexpr std::size_t kAteOMinuto = 16;
    const auto sql = Dialeto(conexao).ComandoConectados();
    std::vector<TConectado> conectados;
    if (sql.empty()) return conectados;
    TWKDQuery q(conexao, sql);
    const auto lido = [&](std::string_view campo) { return std::string(Apara(q.Texto(campo))); };
    for (q.Open(); !q.Eof(); q.Next())
        conectados.push_back(
            {lido("USUARIO"), lido("COMPUTADOR"), lido("PROGRAMA"), lido("DESDE").substr(0, kAteOMinuto)});
    return conectados;
}

std::vector<std::string> RestricoesDoCatalogo(TConnection& conexao, const std::string& tabela,
                                              std::span<const std::string_view> chaves, std::string_view conferidas) {
    const TDialeto& dialeto = Dialeto(conexao);
    const std::string inicio = "alter table " + tabela + " add ";
    std::vector<std::string> comandos;
    for (const auto sql : chaves)
        for (const auto& chave : ChavesDoCatalogo(conexao, sql, tabela)) {
            const std::string referencia = chave.outra.empty() ? ""
                                                               : " references " + dialeto.Identificador(chave.outra) +
                                                                     " (" + Junta(chave.delas, ",") + ")" + chave.fim;
            comandos.push_back(inicio + dialeto.Batizada(chave.nome) + chave.tipo + " (" + Junta(chave.colunas, ",") +
                               ")" + referencia);
        }
    for (const auto& [nome, fonte] : FontesDoCatalogo(conexao, conferidas, tabela))
        comandos.push_back(inicio + dialeto.Batizada(nome) + fonte);
    return comandos;
}

std::vector<std::string> PedacosDoTexto(std::string_view texto, std::size_t bytes) {
    std::vector<std::string> pedacos;
    while (!texto.empty()) {
        const auto fim = texto.size() <= bytes ? texto.size() : CaracteresInteiros(texto.substr(0, bytes));
        pedacos.emplace_back(texto.substr(0, fim));
        texto.remove_prefix(fim);
    }
    return pedacos;
}

}  // namespace wkd
