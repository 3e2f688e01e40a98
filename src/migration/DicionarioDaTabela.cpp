#include "DicionarioDaTabela.h"

#include <algorithm>
#include <vector>

#include "ColunasDaCopia.h"
#include "Texto.h"
#include "ValorObrigatorio.h"

namespace wkd {

namespace {

/// A field of the package's column dictionary that SATRIB has, too.
struct TCampoComum {
    std::size_t doPacote;
    const TColunaFisica* destino;
};

std::vector<TCampoComum> CamposComuns(TContexto& ctx) {
    std::vector<TCampoComum> comuns;
    for (const TColunaFisica& coluna : ctx.dm.ColunasFisicas("SATRIB"))
        if (const int indice = ctx.dm.SatribNovo.IndiceDoCampo(coluna.nome); indice >= 0 && coluna.expressao.empty())
            comuns.push_back({static_cast<std::size_t>(indice), &coluna});
    return comuns;
}

std::string ComandoInclui(const std::vector<TCampoComum>& campos) {
    std::vector<std::string> nomes, parametros;
    for (const TCampoComum& campo : campos) {
        nomes.push_back(campo.destino->nome);
        parametros.push_back(":" + campo.destino->nome);
    }
    return "INSERT INTO SATRIB (" + Junta(nomes, ", ") + ") VALUES (" + Junta(parametros, ", ") + ")";
}

/// A row without these describes no column, or another one.
bool Essencial(std::string_view campo) {
    static constexpr std::string_view kEssenciais[] = {"ARQUIVO", "NOME", "TIPO", "CALCULO"};
    return std::ranges::any_of(kEssenciais, [&](std::string_view nome) { return IgualSemCaixa(nome, campo); });
}

/// Value of one field of the current row as SATRIB takes it. Throws TErroConversao.
TValor ValorDoCampo(TContexto& ctx, const TCampoComum& campo, bool preencheObrigatorios) {
    TValor valor = ctx.dm.SatribNovo.Valor(campo.doPacote);
    if (preencheObrigatorios && campo.destino->requerido && valor.Vazio())
        valor = ValorObrigatorio(campo.destino->nome);
    return ConverteParaColuna(valor.Converte(campo.destino->tipo), *campo.destino);
}

/// What does not fit is logged and stays NULL, unless the row would not do without it.
TValor ValorOuNulo(TContexto& ctx, const TCampoComum& campo, bool preencheObrigatorios) {
    try {
        return ValorDoCampo(ctx, campo, preencheObrigatorios);
    } catch (const TErroConversao& erro) {
        if (Essencial(campo.destino->nome)) throw;
        ctx.Log(erro.what());
        return {};
    }
}

/// False, and an entry of the run log, when the row was refused by something that may have passed already. The server
/// takes back a refused row alone; the rows before and behind it stay.
bool Executa(TContexto& ctx, TComando& inclui) {
    try {
        inclui.Executa();
        return true;
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        ctx.Falhou(erro);
        ctx.Log(erro.what());
        return !erro.Passageiro();
    }
}

void IncluiLinha(TContexto& ctx, TComando& inclui, const std::vector<TCampoComum>& campos, bool preencheObrigatorios) {
    try {
        for (std::size_t i = 0; i < campos.size(); ++i)
            inclui.Atribui(i, ValorOuNulo(ctx, campos[i], preencheObrigatorios));
        if (!Executa(ctx, inclui)) Executa(ctx, inclui);
    } catch (const TErroConversao& erro) {
        ctx.Log(erro.what());
    }
}

void IncluiLinhas(TContexto& ctx, bool preencheObrigatorios) {
    const std::vector<TCampoComum> campos = CamposComuns(ctx);
    const auto inclui = ctx.Conexao().Prepara(ComandoInclui(campos));
    TClientDataSet& novo = ctx.dm.SatribNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) IncluiLinha(ctx, *inclui, campos, preencheObrigatorios);
}

void RelataCriacao(TContexto& ctx, const std::string& linha, std::string_view tabela, std::string_view acao) {
    ctx.repeteTabela = ctx.repeteTabela || ctx.dm.Atualiza.ErroPassageiro();
    ctx.Tela().Memo1(linha);
    ctx.Tela().SetLog(ctx.dm.Atualiza.Erro(), tabela, acao);
}

}  // namespace

void RegravaDicionario(TContexto& ctx, std::string_view tabela, bool reconstrucao) {
    TTransacao transacao(ctx.Conexao());
    const std::string daTabela =
        reconstrucao ? "upper(arquivo) = " + Aspas(Maiusculas(tabela)) : "arquivo = " + Aspas(tabela);
    ctx.Conexao().Prepara("delete from satrib where " + daTabela)->Executa();
    IncluiLinhas(ctx, reconstrucao);
    ctx.dm.MesclaCamposPersonalizados(tabela);
    transacao.Commit();
    ctx.desatualizadas.insert(ChaveDeNome(tabela));
}

std::optional<std::string> ColunaForaDoDicionario(TContexto& ctx) {
    std::vector<TCampoComum> campos = CamposComuns(ctx);
    std::erase_if(campos, [](const TCampoComum& campo) { return !Essencial(campo.destino->nome); });
    TClientDataSet& novo = ctx.dm.SatribNovo;
    for (novo.First(); !novo.Eof(); novo.Next()) {
        try {
            for (const TCampoComum& campo : campos) ValorDoCampo(ctx, campo, true);
        } catch (const TErroConversao& erro) {
            return "A coluna " + novo.Texto("NOME") + " não cabe em SATRIB: " + erro.what();
        }
    }
    return std::nullopt;
}

bool CriaTabelaComIndices(TContexto& ctx, std::string_view tabela) {
    TTB& tb = ctx.dm.Atualiza;
    const std::string nome(tabela);
    const bool criada = tb.CriaTabela(nome, false);
    ctx.evidencia.Comando({tb.ComandoCriaTabela(nome, false), "", tb.Erro()});
    if (!criada) {
        ctx.Tela().SetLog(tb.Erro(), nome, "Criando tabela: " + nome);
        ctx.dm.AtualizaListaDeTabelas();
        return false;
    }
    ctx.dm.IncluiNaLista(nome);

    if (!tb.CriaIndicePrimario(nome, false))
        RelataCriacao(ctx, "Erro criando indice primário do arquivo :" + nome, nome, "Criando indice primário");
    ctx.dm.Commit("Criando indice primário: " + nome);
    if (!tb.CriaIndiceSecundarios(nome))
        RelataCriacao(ctx, "Erro criando indices secundários do arquivo :" + nome + " " + tb.Erro(), nome,
                      "Criando indice secundário");
    ctx.dm.Commit("Criando indice secundário: " + nome);
    return true;
}

}  // namespace wkd
