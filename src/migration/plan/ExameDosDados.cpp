#include "plan/ExameDosDados.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "copy/ColunasDaCopia.h"
#include "dialect/Dialeto.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kExemplos = 5;
constexpr std::size_t kLetrasDoExemplo = 60;

TTipoDado TipoPrevisto(const std::string& tipo) {
    const auto comeca = [&](std::string_view inicio) { return tipo.starts_with(inicio); };
    if (comeca("VARCHAR") || comeca("NVARCHAR")) return TTipoDado::Texto;
    if (comeca("INT")) return TTipoDado::Inteiro;
    if (comeca("DOUBLE") || comeca("FLOAT")) return TTipoDado::Flutuante;
    if (comeca("TIMESTAMP") || comeca("DATETIME")) return TTipoDado::DataHora;
    if (comeca("DATE")) return TTipoDado::Data;
    return comeca("TIME") ? TTipoDado::Hora : TTipoDado::Blob;
}

/// The column as the server would make it of the dictionary; texts in the character set of the database.
TColunaFisica ColunaPrevista(const TColunaDicionario& nova, const std::string& conjunto, TTipoBanco banco) {
    TColunaFisica prevista;
    prevista.nome = nova.nome;
    prevista.tipoSql = Minusculas(Apara(TipoDaColuna(nova.tipo, nova.tamanho, banco)));
    prevista.tipo = TipoPrevisto(Maiusculas(prevista.tipoSql));
    if (prevista.tipo != TTipoDado::Texto) return prevista;
    prevista.tamanho = TamanhoDoTexto(nova.tamanho);
    prevista.conjunto = conjunto;
    return prevista;
}

/// Characters that the server wants a text column to have before it turns the other type into it.
int TextoMinimo(const TColunaFisica& fisica) {
    const std::string tipo = Minusculas(fisica.tipoSql);
    if (fisica.tipo == TTipoDado::Texto) return fisica.tamanho;
    if (fisica.tipo == TTipoDado::Inteiro) return tipo == "smallint" ? 6 : tipo == "bigint" ? 20 : 11;
    return 0;
}

class TExame {
  public:
    TExame(TContexto& ctx, const std::string& tabela)
        : ctx_(ctx),
          tabela_(tabela),
          fisicas_(ctx.dm.ColunasFisicas(tabela)),
          chave_(ctx.Conexao().ChavePrimaria(tabela).colunas),
          conjunto_(ctx.Dialeto().ConjuntoDoBanco(ctx.Conexao())) {}

    void Colunas(const TDecisaoDaTabela& decisao, const std::vector<TColunaDicionario>& novas);
    void Chave(const TDecisaoDaTabela& decisao, const std::vector<TColunaDicionario>& novas);
    void Indices(const std::vector<TIndiceDicionario>& indices, const std::vector<TColunaDicionario>& novas);

    TAchados achados;

  private:
    std::string Nome(const std::string& coluna) const { return ctx_.Dialeto().Identificador(coluna); }
    bool AlteradaPor(const TDecisaoDaTabela& decisao, const std::string& coluna) const;
    void Valores(const TColunaFisica& fisica, const TColunaFisica& prevista, bool guarda);
    void NaoMuda(const TColunaFisica& fisica, const TColunaFisica& prevista);
    void OutroTipo(const TColunaFisica& fisica, const TColunaFisica& prevista);
    void Recusada(const TColunaFisica& fisica, const TColunaFisica& prevista);
    void SemValor(const std::string& coluna);
    void Repetidos(std::string tipo, const std::string& nome, const std::vector<std::string>& colunas,
                   const std::string& onde);
    std::string Exemplo(TWKDQuery& q, const std::vector<std::string>& colunas);
    std::int64_t Conta(const std::string& onde) {
        return ContaRegistros(ctx_.Conexao(), "select count(*) as total from " + tabela_ + onde);
    }

    TContexto& ctx_;
    const std::string& tabela_;
    const std::vector<TColunaFisica> fisicas_;
    const std::vector<std::string> chave_;
    const std::string conjunto_;
};

std::string Aparado(const TValor& valor) {
    if (valor.Nulo()) return "(sem valor)";
    std::string texto = valor.ComoTexto();
    if (texto.size() <= kLetrasDoExemplo) return texto;
    std::size_t fim = kLetrasDoExemplo;
    while (fim > 0 && (static_cast<unsigned char>(texto[fim]) & 0xC0) == 0x80) --fim;
    return texto.substr(0, fim) + "…";
}

std::string TExame::Exemplo(TWKDQuery& q, const std::vector<std::string>& colunas) {
    std::vector<std::string> partes;
    for (std::size_t i = 0; i < colunas.size(); ++i) partes.push_back(colunas[i] + "=" + Aparado(q.Comando().Valor(i)));
    return Junta(partes, ", ");
}

/// Whether a value of the physical column may be lost in the other one.
bool PodePerder(const TColunaFisica& fisica, const TColunaFisica& prevista) {
    if (prevista.tipo == TTipoDado::Blob) return false;
    if (fisica.tipo != prevista.tipo) return true;
    if (fisica.tipo == TTipoDado::Inteiro) return IgualSemCaixa(fisica.tipoSql, "bigint");
    if (fisica.tipo != TTipoDado::Texto) return false;
    const bool outroConjunto = prevista.conjunto != fisica.conjunto && prevista.conjunto != "UTF8";
    return fisica.tamanho > prevista.tamanho || (outroConjunto && !prevista.conjunto.empty());
}

/// `guarda`: what the copy leaves out is kept beside the log.
void TExame::Valores(const TColunaFisica& fisica, const TColunaFisica& prevista, bool guarda) {
    if (!PodePerder(fisica, prevista)) return;
    const bool texto = fisica.tipo == TTipoDado::Texto && prevista.tipo == TTipoDado::Texto;
    std::vector<std::string> lidas = chave_;
    if (std::ranges::find(lidas, fisica.nome) == lidas.end()) lidas.push_back(fisica.nome);
    std::vector<std::string> nomes;
    std::ranges::transform(lidas, std::back_inserter(nomes), [&](const auto& coluna) {
        return coluna == fisica.nome ? Lida(fisica, ctx_.Dialeto()) : Nome(coluna);
    });
    const std::string longo = ctx_.Dialeto().Caracteres(Nome(fisica.nome)) + " > " + std::to_string(prevista.tamanho);
    const bool soLongos = texto && fisica.conjunto == prevista.conjunto;
    TWKDQuery q(ctx_.Conexao(), "select " + Junta(nomes, ",") + " from " + tabela_ + " where " +
                                    (soLongos ? longo : Nome(fisica.nome) + " is not null"));
    TAchado achado{texto ? "texto-longo" : "nao-converte", fisica.nome, "", 0, {}};
    for (q.Open(); !q.Eof(); q.Next()) {
        try {
            ConverteParaColuna(ValorNaPassagem(q.Campo(fisica.nome), fisica, prevista), prevista);
        } catch (const TErroConversao&) {
            if (++achado.quantos <= static_cast<std::int64_t>(kExemplos)) achado.exemplos.push_back(Exemplo(q, lidas));
        }
    }
    if (achado.quantos == 0) return;
    achado.texto =
        "não cabe em " + prevista.tipoSql + (guarda ? ": o valor ficaria fora, guardado no arquivo de rejeitados" : "");
    achados.push_back(std::move(achado));
}

/// The run leaves the column as it is, and the dictionary says something else from then on.
void TExame::NaoMuda(const TColunaFisica& fisica, const TColunaFisica& prevista) {
    const bool menor = fisica.tipo == TTipoDado::Texto && prevista.tipo == TTipoDado::Texto;
    if (fisica.tipo == prevista.tipo && !(menor && prevista.tamanho < fisica.tamanho)) return;
    achados.push_back({"coluna-nao-muda",
                       fisica.nome,
                       "a coluna continua " + fisica.tipoSql + "; o dicionário passa a dizer " + prevista.tipoSql,
                       0,
                       {}});
    if (menor) Valores(fisica, prevista, false);
}

/// The stored dictionary does not know the type that somebody gave the column, and a rebuild takes the package's.
void TExame::OutroTipo(const TColunaFisica& fisica, const TColunaFisica& prevista) {
    const auto* gravada = ctx_.gravado.Coluna(tabela_, fisica.nome);
    const std::string tipo = TipoNormal(fisica.tipoSql);
    const bool textos = fisica.tipo == TTipoDado::Texto && prevista.tipo == TTipoDado::Texto;
    if (!gravada || textos || tipo == TipoNormal(prevista.tipoSql) ||
        tipo == TipoNormal(TipoDaColuna(gravada->tipo, gravada->tamanho, ctx_.Banco())))
        return;
    achados.push_back({"tipo-fisico",
                       fisica.nome,
                       "é " + fisica.tipoSql + " no banco, e não o que diz o dicionário dele: a reconstrução a faz " +
                           prevista.tipoSql,
                       0,
                       {}});
}

/// The server narrows no text and makes no text too small for all values of another type.
void TExame::Recusada(const TColunaFisica& fisica, const TColunaFisica& prevista) {
    const bool paraTexto = prevista.tipo == TTipoDado::Texto && prevista.tamanho < TextoMinimo(fisica);
    if (!paraTexto) return Valores(fisica, prevista, false);
    achados.push_back({"alteracao-recusada",
                       fisica.nome,
                       "o servidor não muda " + fisica.tipoSql + " para " + prevista.tipoSql + " numa tabela existente",
                       0,
                       {}});
}

bool TExame::AlteradaPor(const TDecisaoDaTabela& decisao, const std::string& coluna) const {
    const std::string inicio = "alter table " + tabela_ + ctx_.Dialeto().ChaveAlteraColuna(coluna);
    return std::ranges::any_of(decisao.comandos, [&](const auto& c) { return c.texto.starts_with(inicio); });
}

void TExame::Colunas(const TDecisaoDaTabela& decisao, const std::vector<TColunaDicionario>& novas) {
    for (const auto& nova : novas) {
        const TColunaFisica* fisica = ColunaDeNome(fisicas_, nova.nome);
        if (!fisica || !ColunaFisica(nova) || !TipoConhecido(nova.tipo)) continue;
        const TColunaFisica prevista = ColunaPrevista(nova, conjunto_, ctx_.Banco());
        if (decisao.acao == TAcaoDaTabela::Reconstroi) {
            OutroTipo(*fisica, prevista);
            Valores(*fisica, prevista, true);
        } else if (AlteradaPor(decisao, nova.nome))
            Recusada(*fisica, prevista);
        else
            NaoMuda(*fisica, prevista);
    }
}

void TExame::SemValor(const std::string& coluna) {
    const std::string onde = " where " + Nome(coluna) + " is null";
    const auto quantos = Conta(onde);
    if (quantos > 0) achados.push_back({"sem-valor", coluna, "coluna de chave sem valor", quantos, {}});
}

void TExame::Repetidos(std::string tipo, const std::string& nome, const std::vector<std::string>& colunas,
                       const std::string& onde) {
    std::vector<std::string> nomes;
    for (const auto& coluna : colunas) nomes.push_back(Nome(coluna));
    const std::string lista = Junta(nomes, ",");
    TWKDQuery q(ctx_.Conexao(), "select " + lista + ", count(*) as TOTAL from " + tabela_ + onde + " group by " +
                                    lista + " having count(*) > 1");
    TAchado achado{std::move(tipo), nome, "", 0, {}};
    for (q.Open(); !q.Eof(); q.Next())
        if (++achado.quantos <= static_cast<std::int64_t>(kExemplos))
            achado.exemplos.push_back(Exemplo(q, colunas) + " (" + q.Texto("TOTAL") + " registros)");
    if (achado.quantos == 0) return;
    achado.texto = "valores repetidos em " + Junta(colunas, ", ") + ": não seria criado";
    achados.push_back(std::move(achado));
}

/// A key column that comes with the change has the same value in every row.
void TExame::Chave(const TDecisaoDaTabela& decisao, const std::vector<TColunaDicionario>& novas) {
    std::vector<std::string> colunas, existentes;
    for (const auto& nova : novas)
        if (nova.chave == 1 && ColunaFisica(nova)) colunas.push_back(nova.nome);
    if (colunas.empty() || std::ranges::equal(colunas, chave_, IgualSemCaixa)) return;
    for (const auto& coluna : colunas)
        if (ColunaDeNome(fisicas_, coluna)) existentes.push_back(coluna);
    for (const auto& coluna : existentes) SemValor(coluna);
    if (!existentes.empty()) return Repetidos("chave-repetida", "PK_" + tabela_, existentes, "");
    if (decisao.acao == TAcaoDaTabela::Reconstroi && Conta("") > 1)
        achados.push_back({"chave-repetida",
                           "PK_" + tabela_,
                           "todos os registros teriam a mesma chave: " + Junta(colunas, ", "),
                           1,
                           {}});
}

void TExame::Indices(const std::vector<TIndiceDicionario>& indices, const std::vector<TColunaDicionario>& novas) {
    const auto fisicos = ctx_.Conexao().Indices(tabela_);
    for (const auto& indice : indices) {
        std::vector<std::string> existentes, faltam;
        for (const auto& coluna : indice.colunas) {
            const bool prevista =
                std::ranges::any_of(novas, [&](const auto& nova) { return IgualSemCaixa(nova.nome, coluna); });
            if (ColunaDeNome(fisicas_, coluna))
                existentes.push_back(coluna);
            else if (!prevista)
                faltam.push_back(coluna);
        }
        const bool ja = std::ranges::any_of(fisicos, [&](const TIndice& fisico) {
            return fisico.unico && std::ranges::equal(fisico.colunas, indice.colunas, IgualSemCaixa);
        });
        if (!faltam.empty() || indice.colunas.empty())
            achados.push_back({"indice-sem-coluna",
                               indice.nome,
                               indice.colunas.empty() ? "o dicionário não diz as colunas do índice"
                                                      : "a tabela não tem " + Junta(faltam, ", "),
                               0,
                               {}});
        else if (indice.unico && !ja && existentes.size() == indice.colunas.size())
            Repetidos(
                "indice-repetido", indice.nome, existentes,
                ctx_.Dialeto().NulosRepetem() ? " where not (" + Junta(existentes, " is null and ") + " is null)" : "");
    }
}

}  // namespace

TAchados ExaminaDados(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao,
                      const std::vector<TColunaDicionario>& novas, const std::vector<TIndiceDicionario>& indices) {
    TExame exame(ctx, tabela);
    exame.Colunas(decisao, novas);
    exame.Chave(decisao, novas);
    exame.Indices(indices, novas);
    return std::move(exame.achados);
}

TVolume VolumeDaTabela(TContexto& ctx, const std::string& tabela) {
    std::int64_t fixos = 0;
    std::vector<std::string> partes = {"0"};
    for (const TColunaFisica& coluna : ctx.Conexao().Colunas(tabela)) {
        const bool longo = coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Blob ||
                           coluna.tipo == TTipoDado::Memo || coluna.tipo == TTipoDado::Bytes;
        if (longo && coluna.expressao.empty())
            partes.push_back("coalesce(" + ctx.Dialeto().Bytes(ctx.Dialeto().Identificador(coluna.nome)) + ", 0)");
        else if (coluna.expressao.empty())
            fixos += coluna.tipo == TTipoDado::Inteiro || coluna.tipo == TTipoDado::Data ? 4 : 8;
    }
    TWKDQuery q(ctx.Conexao(), "select count(*) as TOTAL, cast(sum(cast(" + Junta(partes, " + ") +
                                   " as bigint)) as bigint) as BYTES from " + tabela);
    q.Open();
    const auto registros = q.Inteiro("TOTAL");
    return {registros, q.Inteiro("BYTES") + registros * fixos};
}

}  // namespace wkd
