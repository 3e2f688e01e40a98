#include "alter/DicionarioDaTabela.h"

#include <algorithm>
#include <bit>
#include <map>
#include <span>
#include <vector>

#include "copy/ColunasDaCopia.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// A field of the package's column dictionary that SATRIB has, too.
struct TCampoComum {
    std::size_t doPacote;
    const TColunaFisica* destino;
};

using TCamposComuns = std::vector<TCampoComum>;

TCamposComuns CamposComuns(TContexto& ctx) {
    TCamposComuns comuns;
    for (const TColunaFisica& coluna : ctx.dm.ColunasFisicas("SATRIB"))
        if (const int indice = ctx.dm.SatribNovo.IndiceDoCampo(coluna.nome); indice >= 0 && coluna.expressao.empty())
            comuns.push_back({static_cast<std::size_t>(indice), &coluna});
    return comuns;
}

std::optional<std::size_t> LugarDoCampo(const TCamposComuns& campos, std::string_view nome) {
    const auto achado = std::ranges::find_if(
        campos, [&](const TCampoComum& campo) { return IgualSemCaixa(campo.destino->nome, nome); });
    if (achado == campos.end()) return std::nullopt;
    return static_cast<std::size_t>(achado - campos.begin());
}

std::string ComandoInclui(const TCamposComuns& campos) {
    std::vector<std::string> nomes, parametros;
    for (const TCampoComum& campo : campos) {
        nomes.push_back(campo.destino->nome);
        parametros.push_back(":" + campo.destino->nome);
    }
    return ComandoInsere("SATRIB", nomes, std::move(parametros));
}

/// A row without these describes no column, or another one.
bool Essencial(std::string_view campo) {
    static constexpr std::string_view kEssenciais[] = {"ARQUIVO", "NOME", "TIPO", "CALCULO"};
    return std::ranges::any_of(kEssenciais, [&](std::string_view nome) { return IgualSemCaixa(nome, campo); });
}

/// Value of one field of the current row as SATRIB takes it. Throws TErroConversao.
TValor ValorDoCampo(TContexto& ctx, const TCampoComum& campo, bool preencheObrigatorios) {
    TValor valor = ctx.dm.SatribNovo.Valor(campo.doPacote);
    if (preencheObrigatorios && campo.destino->requerido && (valor.Vazio() || SemValor(valor, *campo.destino)))
        valor = ValorObrigatorio(*campo.destino);
    return ConverteParaColuna(valor.Converte(campo.destino->tipo), *campo.destino);
}

/// Entry about a row that SATRIB takes in part, or not at all.
void LogDaColuna(TContexto& ctx, const std::string& coluna, const TErroConhecido& erro) {
    TErro daColuna = erro.Dados();
    daColuna.mensagem = "Coluna " + coluna + " em SATRIB: " + erro.what();
    ctx.Log(std::move(daColuna));
}

/// What does not fit is logged and stays NULL, unless the row would not do without it.
TValor ValorOuNulo(TContexto& ctx, const TCampoComum& campo, bool preencheObrigatorios) {
    try {
        return ValorDoCampo(ctx, campo, preencheObrigatorios);
    } catch (const TErroConversao& erro) {
        if (Essencial(campo.destino->nome)) throw;
        LogDaColuna(ctx, ctx.dm.SatribNovo.Texto("NOME"), erro);
        return {};
    }
}

/// False, and an entry of the run log, when the row was refused by something that may have passed already. The server
/// takes back a refused row alone; the rows before and behind it stay.
bool Executa(TContexto& ctx, TComando& inclui, const std::string& coluna) {
    try {
        inclui.Executa();
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        ctx.repeteTabela = true;
        LogDaColuna(ctx, coluna, erro);
        return !erro.Passageiro();
    }
}

/// The package's rows of the table as SATRIB takes them; one that it cannot take is logged and left out.
std::vector<TLinha> LinhasNovas(TContexto& ctx, const std::string& nome, const TCamposComuns& campos,
                                bool preencheObrigatorios) {
    const auto arquivo = LugarDoCampo(campos, "ARQUIVO");
    std::vector<TLinha> linhas;
    TClientDataSet& novo = ctx.dm.SatribNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) {
        try {
            TLinha linha;
            for (const TCampoComum& campo : campos) linha.push_back(ValorOuNulo(ctx, campo, preencheObrigatorios));
            if (arquivo) linha[*arquivo] = nome;
            linhas.push_back(std::move(linha));
        } catch (const TErroConversao& erro) {
            LogDaColuna(ctx, novo.Texto("NOME"), erro);
        }
    }
    return linhas;
}

/// A statement on the rows of one table, ready to run; the same one for all tables in turn. A name that ARQUIVO cannot
/// hold, which no parameter would take, stands in the text.
std::shared_ptr<TComando> DasLinhas(TContexto& ctx, std::string_view tabela, const std::string& comando) {
    const TColunaFisica* arquivo = ColunaDeNome(ctx.dm.ColunasFisicas("SATRIB"), "ARQUIVO");
    const bool cabe = arquivo && tabela.size() <= static_cast<std::size_t>(std::max(arquivo->tamanho, 0));
    auto daTabela = ctx.dm.Atualiza.Dicionario().Prepara(
        tabela, comando + " where arquivo = " + (cabe ? ":arquivo" : Aspas(tabela)));
    if (cabe) daTabela->Atribui(0, tabela);
    return daTabela;
}

void ApagaLinhas(TContexto& ctx, const std::string& nome, const std::string& antes, bool reconstrucao) {
    constexpr const char* kApaga = "delete from satrib";
    if (reconstrucao)
        ctx.Conexao().Prepara(kApaga + (" where upper(arquivo) = " + Aspas(Maiusculas(nome))))->Executa();
    else
        DasLinhas(ctx, nome, kApaga)->Executa();
    if (antes != nome) DasLinhas(ctx, antes, kApaga)->Executa();
}

using TLinhas = std::span<const TLinha>;

void IncluiUmaAUma(TContexto& ctx, std::string_view tabela, const TCamposComuns& campos, TLinhas linhas) {
    const auto inclui = ctx.dm.Atualiza.Dicionario().Prepara(tabela, ComandoInclui(campos));
    const auto nome = LugarDoCampo(campos, "NOME");
    for (const TLinha& linha : linhas) {
        const std::string coluna = nome ? linha[*nome].ComoTexto() : std::string();
        try {
            for (std::size_t i = 0; i < linha.size(); ++i) inclui->Atribui(i, linha[i]);
            if (!Executa(ctx, *inclui, coluna)) Executa(ctx, *inclui, coluna);
        } catch (const TErroConversao& erro) {  // a text that the connection cannot hold
            LogDaColuna(ctx, coluna, erro);
        }
    }
}

/// All of them with one statement, which over a network is one turn to the server; false, and none is stored, where one
/// is refused.
bool IncluiJuntas(TContexto& ctx, std::string_view tabela, const std::vector<TColunaFisica>& colunas, TLinhas linhas) {
    try {
        const auto inclui =
            ctx.dm.Atualiza.Dicionario().Prepara(tabela, ctx.Dialeto().InsereLinhas("SATRIB", colunas, linhas.size()));
        std::size_t parametro = 0;
        for (const TLinha& linha : linhas)
            for (const TValor& valor : linha) inclui->Atribui(parametro++, valor);
        inclui->Executa();
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
    } catch (const TErroConversao&) {
    }
    return false;
}

/// Rows that a statement is to store. An engine in this process has no turns to spare, and takes twice as long for
/// them; a text blob is turned into its character set by an insert of its own alone.
std::size_t LinhasPorComando(const TDialeto& dialeto, const std::vector<TColunaFisica>& colunas) {
    const bool textoLongo = std::ranges::any_of(colunas, [](const auto& c) { return c.tipo == TTipoDado::Memo; });
    if (textoLongo || dialeto.Capacidades().embarcado) return 1;
    return std::max<std::size_t>(dialeto.LinhasPorInsercao(colunas), 1);
}

/// Batches have few sizes, so that the tables share their statements.
void IncluiLinhas(TContexto& ctx, std::string_view tabela, const TCamposComuns& campos, TLinhas linhas) {
    std::vector<TColunaFisica> colunas;
    for (const TCampoComum& campo : campos) colunas.push_back(*campo.destino);
    std::size_t cabem = LinhasPorComando(ctx.Dialeto(), colunas);
    while (!linhas.empty()) {
        const TLinhas juntas = linhas.first(std::bit_floor(std::min(linhas.size(), cabem)));
        linhas = linhas.subspan(juntas.size());
        if (juntas.size() > 1 && IncluiJuntas(ctx, tabela, colunas, juntas)) continue;
        cabem = 1;
        IncluiUmaAUma(ctx, tabela, campos, juntas);
    }
}

/// Columns of SATRIB that the package does not have.
std::vector<TColunaFisica> OutrasColunas(TContexto& ctx) {
    std::vector<TColunaFisica> outras;
    for (const TColunaFisica& coluna : ctx.dm.ColunasFisicas("SATRIB"))
        if (coluna.expressao.empty() && ctx.dm.SatribNovo.IndiceDoCampo(coluna.nome) < 0) outras.push_back(coluna);
    return outras;
}

/// Whether the stored row is the new one, with nothing in the fields that the package does not have.
bool Igual(TComando& gravada, const TLinha& nova) {
    for (std::size_t i = 0; i < gravada.Campos().size(); ++i)
        if (gravada.Valor(i) != (i < nova.size() ? nova[i] : TValor())) return false;
    return true;
}

/// Open as long as it lives: the statement stays prepared, but reads no longer.
class TCursor {
  public:
    explicit TCursor(TComando& comando) : comando_(comando) { comando_.Abre(); }
    ~TCursor() { comando_.Fecha(); }
    TCursor(const TCursor&) = delete;
    TCursor& operator=(const TCursor&) = delete;

  private:
    TComando& comando_;
};

/// Whether SATRIB has these rows of the table and no others.
bool TemAsLinhas(TContexto& ctx, std::string_view tabela, const TCamposComuns& campos,
                 const std::vector<TLinha>& linhas, std::size_t nome) {
    std::map<std::string, const TLinha*> esperadas;
    for (const TLinha& linha : linhas) esperadas.emplace(linha[nome].ComoTexto(), &linha);
    if (esperadas.size() != linhas.size()) return false;

    std::vector<std::string> nomes;
    for (const TCampoComum& campo : campos) nomes.push_back(ctx.Dialeto().Identificador(campo.destino->nome));
    for (const TColunaFisica& outra : OutrasColunas(ctx)) {
        if (!outra.padrao.empty()) return false;  // an inserted row would have it
        nomes.push_back(ctx.Dialeto().Identificador(outra.nome));
    }
    const auto gravada = DasLinhas(ctx, tabela, "select " + Junta(nomes, ", ") + " from SATRIB");
    const TCursor cursor(*gravada);
    while (gravada->Proximo()) {
        const auto esperada = esperadas.extract(gravada->Valor(nome).ComoTexto());
        if (!esperada || !Igual(*gravada, *esperada.mapped())) return false;
    }
    return esperadas.empty();
}

/// The same; false when it cannot be told.
bool Gravadas(TContexto& ctx, std::string_view tabela, const TCamposComuns& campos, const std::vector<TLinha>& linhas) {
    const auto nome = LugarDoCampo(campos, "NOME");
    try {
        return nome && TemAsLinhas(ctx, tabela, campos, linhas, *nome);
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
    } catch (const TErroConversao&) {  // the writing says what it is
    }
    return false;
}

/// The merge takes out "U_" columns that the package itself brings.
bool TemPersonalizadas(const TCamposComuns& campos, const std::vector<TLinha>& linhas) {
    const auto nome = LugarDoCampo(campos, "NOME");
    const auto personalizada = [&](const TLinha& linha) { return DoCliente(linha[*nome].ComoTexto()); };
    return !nome || std::ranges::any_of(linhas, personalizada);
}

/// The package may spell a table's name in other letter case. SARQUIVO and the customer's columns then take that over:
/// to whoever compares names exactly, rows under two spellings belong to two tables. Returns the spelling from before.
std::string SegueGrafia(TContexto& ctx, const std::string& nome) {
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    const std::string antes(Apara(velho.Texto("nome_arquivo")));
    if (antes == nome || !IgualSemCaixa(antes, nome)) return nome;
    velho.Edit();
    velho.SetValor("nome_arquivo", nome);
    velho.Post();
    if (!AplicaEmTransacao(velho)) return nome;
    ctx.dm.Executa("update satrib_user set arquivo = " + Aspas(nome) + " where arquivo = " + Aspas(antes));
    return antes;
}

void RelataCriacao(TContexto& ctx, const std::string& linha, std::string_view tabela, std::string_view acao) {
    ctx.Tela().Memo1(linha);
    ctx.Tela().Erro(TErroDaExecucao::NoLog(ctx.dm.Atualiza.Erro(), tabela, acao));
}

}  // namespace

void RegravaDicionario(TContexto& ctx, std::string_view tabela, bool reconstrucao) {
    const std::string nome(tabela), antes = SegueGrafia(ctx, nome);
    const TCamposComuns campos = CamposComuns(ctx);
    const std::vector<TLinha> linhas = LinhasNovas(ctx, nome, campos, reconstrucao);
    TLeituraDoDicionario& dicionario = ctx.dm.Atualiza.Dicionario();
    const bool mescla = reconstrucao || TemPersonalizadas(campos, linhas) || dicionario.ClienteTem(nome);
    if (!mescla && antes == nome && Gravadas(ctx, nome, campos, linhas)) return;

    TTransacao transacao(ctx.Conexao());
    ApagaLinhas(ctx, nome, antes, reconstrucao);
    IncluiLinhas(ctx, nome, campos, linhas);
    if (mescla) ctx.dm.MesclaCamposPersonalizados(nome);
    transacao.Commit();
    dicionario.Anota(nome);
    ctx.desatualizadas.insert(ChaveDeNome(nome));
}

std::optional<TErro> ColunaForaDoDicionario(TContexto& ctx) {
    TCamposComuns campos = CamposComuns(ctx);
    std::erase_if(campos, [](const TCampoComum& campo) { return !Essencial(campo.destino->nome); });
    TClientDataSet& novo = ctx.dm.SatribNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) {
        try {
            for (const TCampoComum& campo : campos) ValorDoCampo(ctx, campo, true);
        } catch (const TErroConversao& erro) {
            return TErro{.mensagem = "A coluna " + novo.Texto("NOME") + " não cabe em SATRIB: " + erro.what(),
                         .falha = TFalha::Dicionario};
        }
    }
    return std::nullopt;
}

bool CriaTabelaComChave(TContexto& ctx, std::string_view tabela) {
    TTB& tb = ctx.dm.Atualiza;
    const std::string nome(tabela);
    const bool criada = tb.CriaTabela(nome, false);
    if (!tb.UltimaCriacao().empty()) ctx.evidencia.Comando({tb.UltimaCriacao(), "", tb.Erro().mensagem});
    if (!criada) {
        ctx.Tela().Erro(TErroDaExecucao::NoLog(tb.Erro(), nome, "Criando tabela: " + nome));
        ctx.dm.AtualizaListaDeTabelas();
        return false;
    }
    ctx.dm.IncluiNaLista(nome);

    if (!tb.CriaIndicePrimario(nome, false, TTB::TIdade::Nova)) {
        RelataCriacao(ctx, "Erro criando indice primário do arquivo :" + nome, nome, "Criando indice primário");
        ctx.repeteTabela = ctx.repeteTabela || !tb.ColunasDaChave(nome).empty();  // none was told
    }
    ctx.dm.Commit("Criando indice primário: " + nome);
    return true;
}

void CriaIndicesDaNova(TContexto& ctx, std::string_view tabela, TTB::TQuais quais) {
    TTB& tb = ctx.dm.Atualiza;
    const std::string nome(tabela);
    if (!tb.CriaIndiceSecundarios(nome, TTB::TIdade::Nova, quais)) {
        RelataCriacao(ctx, "Erro criando indices secundários do arquivo :" + nome + " " + tb.Erro().mensagem, nome,
                      "Criando indice secundário");
        ctx.repeteTabela = true;
    }
    ctx.dm.Commit("Criando indice secundário: " + nome);
}

bool CriaTabelaComIndices(TContexto& ctx, std::string_view tabela) {
    if (!CriaTabelaComChave(ctx, tabela)) return false;
    CriaIndicesDaNova(ctx, tabela, TTB::TQuais::Todos);
    return true;
}

}  // namespace wkd
