
#include <algorithm>
#include <iterator>
#include <set>

#include "dialect/Dialeto.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "tables/TB.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// A created table gets its defaults in capitals.
std::string Definicao(TColunaDicionario coluna, TTipoBanco banco) {
    coluna.valorPadrao = Maiusculas(coluna.valorPadrao);
    return coluna.nome + DefinicaoCampo(coluna, banco);
}

/// Whether a column of the dictionary's type, texts as wide as they need to be, holds every value of the physical one.
bool Comporta(const TColunaDicionario& coluna, const TColunaFisica& fisica, TTipoBanco banco) {
    const std::string tipo = Maiusculas(Apara(TipoDaColuna(coluna.tipo, coluna.tamanho, banco)));
    const auto comeca = [&](std::string_view texto) { return tipo.starts_with(texto); };
    switch (fisica.tipo) {
        case TTipoDado::Texto:
            return (comeca("VARCHAR") || comeca("NVARCHAR")) && fisica.tamanho > 0;
        case TTipoDado::Inteiro:
            return comeca("INT") && !IgualSemCaixa(fisica.tipoSql, "bigint");
        case TTipoDado::Flutuante:
            return comeca("DOUBLE") || comeca("FLOAT");
        case TTipoDado::Data:
            return comeca("DATE");
        case TTipoDado::Hora:
            return comeca("TIME") && !comeca("TIMESTAMP");
        case TTipoDado::DataHora:
            return (comeca("TIMESTAMP") || comeca("DATETIME")) &&
                   !IgualSemCaixa(fisica.tipoSql.substr(0, 9), "datetime2");
        case TTipoDado::Blob:
            return comeca("BLOB") || comeca("IMAGE") || comeca("LONGBLOB");
        default:
            return false;
    }
}

std::string DefinicaoNaBackup(TColunaDicionario coluna, const TColunaFisica* fisica, TTipoBanco banco) {
    if (fisica && !Comporta(coluna, *fisica, banco))
        return coluna.nome + " " + fisica->tipoSql + (coluna.chave == 1 ? " not null " : "");
    if (fisica && fisica->tipo == TTipoDado::Texto)
        coluna.tamanho = std::to_string(std::max(TamanhoDoTexto(coluna.tamanho), fisica->tamanho));
    return Definicao(std::move(coluna), banco);
}

std::vector<std::string> DefinicoesDaBackup(const std::vector<TColunaDicionario>& dicionario,
                                            const std::vector<TColunaFisica>& fisicas, TTipoBanco banco) {
    std::vector<std::string> linhas;
    std::set<std::string> nomes;
    for (const auto& coluna : dicionario) {
        linhas.push_back(DefinicaoNaBackup(coluna, ColunaDeNome(fisicas, coluna.nome), banco));
        nomes.insert(ChaveDeNome(coluna.nome));
    }
    for (const auto& fisica : fisicas)
        if (fisica.expressao.empty() && !nomes.contains(ChaveDeNome(fisica.nome)))
            linhas.push_back(Dialeto(banco).Identificador(fisica.nome) + " " + fisica.tipoSql);
    return linhas;
}

std::vector<std::string> Definicoes(const std::vector<TColunaDicionario>& dicionario, TTipoBanco banco) {
    std::vector<std::string> linhas;
    for (const auto& coluna : dicionario) linhas.push_back(Definicao(coluna, banco));
    return linhas;
}

std::string Comando(std::string_view inicio, const std::vector<std::string>& linhas) {
    return std::string(inicio) + "\n" + Junta(linhas, ",\n") + "\n )";
}

std::vector<TLargura> Larguras(const std::vector<TColunaDicionario>& colunas, TTipoBanco banco) {
    std::vector<TLargura> larguras;
    for (const auto& coluna : colunas)
        if (ColunaFisica(coluna))
            larguras.push_back(
                {TipoNormal(TipoDaColuna(coluna.tipo, coluna.tamanho, banco)), TamanhoDoTexto(coluna.tamanho), {}});
    return larguras;
}

std::string ComandoDaTabela(std::string_view tabela, const std::vector<TColunaDicionario>& colunas, TTipoBanco banco) {
    return Comando("Create Table " + std::string(tabela) + " (", Definicoes(colunas, banco));
}

}  // namespace

std::string TTB::ComandoCriaTabela(std::string_view tabela, bool backup) {
    const auto colunas = ColunasDoDicionario(tabela);
    if (!backup) return ComandoDaTabela(tabela, colunas, conexao_.TipoBanco());
    return Comando("Create Table " + NomeDaBackup(tabela) + "(",
                   DefinicoesDaBackup(colunas, conexao_.Colunas(tabela), conexao_.TipoBanco()));
}

std::string TTB::ComandoCriaTabela(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) const {
    std::vector<TColunaDicionario> fisicas;
    std::ranges::copy_if(colunas, std::back_inserter(fisicas), ColunaFisica);
    return ComandoDaTabela(tabela, fisicas, conexao_.TipoBanco());
}

/// Throws what the server has against the statement; nothing stays of it.
void TTB::Ensaia(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) {
    const std::string ensaio = Dialeto(conexao_).NomeDeEnsaio(tabela);
    const auto comando = conexao_.Prepara(ComandoCriaTabela(ensaio.empty() ? tabela : ensaio, colunas));
    if (ensaio.empty()) return;
    const TTransacao desfeita(conexao_);
    comando->Executa();
}

std::optional<TErro> TTB::ImpedimentoParaCriar(std::string_view tabela, const std::vector<TColunaDicionario>& colunas) {
    const auto doDicionario = [](std::string texto) {
        return TErro{.mensagem = std::move(texto), .falha = TFalha::Dicionario};
    };
    std::set<std::string> nomes;
    for (const auto& coluna : colunas) {
        if (!ColunaFisica(coluna)) continue;
        if (!TipoConhecido(coluna.tipo))
            return doDicionario("Tipo desconhecido na coluna " + coluna.nome + ": " + coluna.tipo);
        if (!nomes.insert(ChaveDeNome(coluna.nome)).second)
            return doDicionario("Coluna repetida no dicionário: " + coluna.nome);
    }
    if (nomes.empty()) return doDicionario("O dicionário não tem colunas da tabela " + std::string(tabela));
    try {
        Ensaia(tabela, colunas);
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return erro.Dados();
    }
    const std::int64_t limite = Dialeto(conexao_).LimiteDoRegistro();
    const std::int64_t bytes =
        limite == 0 ? 0 : Dialeto(conexao_).BytesDoRegistro(conexao_, Larguras(colunas, conexao_.TipoBanco()));
    if (bytes <= limite) return std::nullopt;
    return doDicionario("O registro da tabela " + std::string(tabela) + " teria " + std::to_string(bytes) +
                        " bytes; o servidor aceita até " + std::to_string(limite));
}

std::int64_t TTB::BytesDaChave(const std::vector<TColunaDicionario>& colunas,
                               const std::vector<TColunaFisica>& fisicas) {
    auto larguras = Larguras(colunas, conexao_.TipoBanco());
    for (std::size_t i = 0; i < larguras.size(); ++i)
        if (const auto* fisica = ColunaDeNome(fisicas, colunas[i].nome)) larguras[i].conjunto = fisica->conjunto;
    return larguras.empty() ? 0 : Dialeto(conexao_).BytesDaChave(conexao_, larguras);
}

namespace {

/// Runs every statement, then throws one error that names those that failed.
void ExecutaTodos(TConnection& conexao, const std::vector<std::string>& comandos) {
    std::vector<TErro> falhas;
    for (const auto& comando : comandos) {
        try {
            ExecutaComando(conexao, comando);
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
            falhas.push_back(erro.Dados());
            falhas.back().mensagem = comando + ": " + erro.what();
        }
    }
    if (!falhas.empty()) throw TErroBanco(JuntaErros(falhas));
}

/// How many groups of rows the query answers with.
std::size_t ContaGrupos(TConnection& conexao, const std::string& consulta) {
    std::size_t grupos = 0;
    TWKDQuery q(conexao, consulta);
    for (q.Open(); !q.Eof(); q.Next()) ++grupos;
    return grupos;
}

std::string Repetidos(std::size_t grupos) {
    return std::to_string(grupos) + (grupos == 1 ? " valor repetido" : " valores repetidos");
}

/// Groups of rows that a unique index would refuse.
std::size_t GruposRepetidos(TConnection& conexao, const std::string& tabela, const std::vector<std::string>& colunas) {
    const std::string lista = Junta(colunas, ",");
    const std::string fim = " GROUP BY " + lista + " HAVING COUNT(*) > 1";
    const std::size_t grupos = ContaGrupos(conexao, "SELECT COUNT(*) AS TOTAL FROM " + tabela + fim);
    if (grupos == 0 || !Dialeto(conexao).NulosRepetem()) return grupos;
    return ContaGrupos(conexao, "SELECT COUNT(*) AS TOTAL FROM " + tabela + " WHERE NOT (" +
                                    Junta(colunas, " IS NULL AND ") + " IS NULL)" + fim);
}

}  // namespace

void TTB::ApagaInidices(std::string_view tabela, bool primario) {
    if (!primario) return ApagaIndices(tabela, conexao_.Indices(tabela));
    const auto chave = conexao_.ChavePrimaria(tabela);
    if (chave.nome.empty()) return;
    ExecutaTodos(conexao_, {"alter table " + std::string(tabela) + " drop constraint " +
                            Dialeto(conexao_).Identificador(chave.nome)});
}

std::vector<TIndice> TTB::IndicesDoDicionario(std::string_view tabela, const std::set<std::string>& outros) {
    std::set<std::string> nomes = outros;
    for (const auto& indice : dicionario_.Indices(tabela)) nomes.insert(ChaveDeNome(indice.nome));
    if (nomes.empty()) return {};
    auto indices = conexao_.Indices(tabela);
    std::erase_if(indices, [&](const TIndice& indice) {
        return !indice.restricao.empty() || !nomes.contains(ChaveDeNome(indice.nome));
    });
    return indices;
}

bool TTB::MudaNoDicionario(std::string_view tabela, const TIndice& indice) {
    for (const auto& [nome, unico, colunas] : dicionario_.Indices(tabela)) {
        if (!IgualSemCaixa(nome, indice.nome)) continue;
        TIndice pedido;
        pedido.nome = Maiusculas(nome);
        pedido.unico = unico;
        for (const auto& coluna : dicionario_.ColunasDoIndice(tabela, nome))
            pedido.colunas.push_back(Maiusculas(coluna));
        const auto comando = [&](const TIndice& i) { return Maiusculas(Dialeto(conexao_).CriaIndice(i, tabela)); };
        return comando(pedido) != comando(indice);
    }
    return false;
}

void TTB::ApagaIndices(std::string_view tabela, const std::vector<TIndice>& indices) {
    std::vector<std::string> comandos;
    for (const auto& indice : indices)
        if (indice.restricao.empty()) comandos.push_back(Dialeto(conexao_).ApagaIndice(indice, tabela));
    ExecutaTodos(conexao_, comandos);
}

bool TTB::ExisteIndicePrimario(std::string_view tabela) { return !conexao_.ChavePrimaria(tabela).nome.empty(); }

bool TTB::ExigeValores(const std::string& tabela, const std::vector<std::string>& chave) {
    std::vector<std::string> comandos;
    const auto fisicas = conexao_.Colunas(tabela);
    for (const auto& nome : chave) {
        const TColunaFisica* coluna = ColunaDeNome(fisicas, nome);
        if (!coluna)
            return Falha(TFalha::ColunaInexistente, "A tabela " + tabela + " não tem a coluna " + nome + " da chave");
        if (coluna->requerido) continue;
        const auto vazias =
            ContaRegistros(conexao_, "select count(*) as total from " + tabela + " where " + nome + " is null");
        if (vazias > 0)
            return Falha(TFalha::SemValor, "A coluna " + nome + " da chave de " + tabela + " está sem valor em " +
                                               std::to_string(vazias) + " registro(s)");
        comandos.push_back(Dialeto(conexao_).ExigeValor(tabela, *coluna));
    }
    if (Dialeto(conexao_).ChaveExigeValor()) ExecutaTodos(conexao_, comandos);
    return true;
}

/// A new table has no rows that could stand against its key, and mostly columns that take it.
bool TTB::AceitaChave(const std::string& comando) {
    try {
        ExecutaComando(conexao_, comando);
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.Passageiro()) throw;
        return false;
    }
}

bool TTB::CriaIndicePrimario(std::string_view tabela, bool backup, TIdade idade) {
    return Tenta([&] {
        const std::string fisica = backup ? NomeDaBackup(tabela) : std::string(tabela);
        if (idade == TIdade::Antiga && ExisteIndicePrimario(fisica)) return true;
        const auto chave = ColunasDaChave(tabela);
        if (chave.empty())
            return Falha(TFalha::Dicionario, "O dicionário não tem chave da tabela " + std::string(tabela));

        const std::string chaves = Junta(chave, ",");
        const std::string comando =
            "alter table " + fisica + "  add constraint PK_" + fisica + " primary key(" + chaves + ")";
        if (idade == TIdade::Nova && AceitaChave(comando)) return true;
        const auto grupos = ContaGrupos(
            conexao_, " select count(*) as total from " + fisica + " group by " + chaves + " having count(*) > 1");
        if (grupos > 0)
            return Falha(TFalha::ChaveDuplicada, "A chave " + chaves + " de " + fisica + " tem " + Repetidos(grupos));
        if (!ExigeValores(fisica, chave)) return false;
        ExecutaComando(conexao_, comando);
        return true;
    });
}

bool TTB::CriaSecundario(std::string_view tabela, const std::string& nome, bool unico, TErro& falha) {
    const std::string fisica(tabela);
    try {
        const auto colunas = dicionario_.ColunasDoIndice(tabela, nome);
        const auto grupos = unico && !colunas.empty() ? GruposRepetidos(conexao_, fisica, colunas) : 0;
        if (colunas.empty())
            falha = {.mensagem = "sem colunas no dicionário", .falha = TFalha::Dicionario};
        else if (grupos > 0)
            falha = {.mensagem = Repetidos(grupos), .falha = TFalha::ChaveDuplicada};
        else
            ExecutaComando(conexao_, "CREATE " + std::string(unico ? "UNIQUE " : "") + "INDEX " + nome + " ON " +
                                         fisica + "(" + Junta(colunas, ",") + ")");
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        falha = erro.Dados();
    }
    return falha.mensagem.empty();
}

bool TTB::CriaIndiceSecundarios(std::string_view tabela, TIdade idade, TQuais quais) {
    return Tenta([&] {
        std::vector<TErro> falhas;
        auto doDicionario = dicionario_.Indices(tabela);
        if (quais != TQuais::Todos)
            std::erase_if(doDicionario, [&](const auto& indice) { return indice.unico != (quais == TQuais::Unicos); });
        if (doDicionario.empty()) return true;
        const auto fisicos = idade == TIdade::Nova ? std::vector<TIndice>() : conexao_.Indices(tabela);
        for (const auto& [nome, unico, colunas] : doDicionario) {
            if (std::ranges::any_of(fisicos, [&, &procurado = nome](const auto& fisico) {
                    return IgualSemCaixa(fisico.nome, procurado);
                }))
                continue;
            TErro falha;
            if (CriaSecundario(tabela, nome, unico, falha)) continue;
            falha.mensagem = "Erro criando indice secundario " + std::string(unico ? "UNIQUE " : "") + nome +
                             " do arquivo:" + std::string(tabela) + " " + falha.mensagem;
            falhas.push_back(std::move(falha));
        }
        return falhas.empty() || Falha(JuntaErros(falhas));
    });
}

}  // namespace wkd
