#include "run/RegistroDaExecucao.h"

#include "process/Interrupcao.h"
#include "rows/WKDQuery.h"
#include "tables/TBComandos.h"
#include "values/Texto.h"

namespace wkd {

bool MesmoErro(std::string_view linha, std::string_view mensagem) {
    return linha.find(mensagem) != std::string_view::npos || mensagem.find(linha) != std::string_view::npos;
}

void TTelaRegistrada::Memo2(std::string_view linha) {
    tela_.Memo2(linha);
    Guarda(linha, "", "");
}

void TTelaRegistrada::Informacao(std::string_view texto) {
    tela_.Informacao(texto);
    Guarda(texto, "", "");
}

bool TTelaRegistrada::Confirmacao(std::string_view texto, bool semPessoa) {
    const bool sim = tela_.Confirmacao(texto, semPessoa);
    if (!sim) Guarda(std::string(texto) + " Não", "", "");
    return sim;
}

TAcaoReconcilia TTelaRegistrada::Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) {
    Guarda(erro, "", "");
    return tela_.Reconcilia(erro, semPessoa);
}

void TTelaRegistrada::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    tela_.SetLog(mensagem, tabela, acao);
    Guarda(mensagem, tabela, acao);
}

void TTelaRegistrada::Guarda(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    if (!erros_.empty()) {
        TErroRegistrado& ultimo = erros_.back();
        const bool mesmo = ultimo.acao.empty() && ultimo.tabela.empty() && (!tabela.empty() || !acao.empty());
        if (mesmo && MesmoErro(ultimo.mensagem, mensagem)) {
            if (mensagem.size() > ultimo.mensagem.size()) ultimo.mensagem = mensagem;
            ultimo.tabela = tabela;
            ultimo.acao = acao;
            return;
        }
    }
    erros_.push_back({Agora(), std::string(tabela), std::string(acao), std::string(mensagem)});
}

namespace {

/// Whether the step goes into the table's rows. One that only takes over the dictionary leaves a large table unread.
bool Mexe(const TDecisaoDaTabela& decisao) {
    if (decisao.acao == TAcaoDaTabela::Altera) return !decisao.comandos.empty();
    return decisao.acao != TAcaoDaTabela::Nada;
}

}  // namespace

std::string HashDoConteudo(TConnection& conexao, const std::string& tabela) {
    if (conexao.TipoBanco() != TTipoBanco::tbInterbase) return "";
    std::vector<std::string> partes;
    for (const TColunaFisica& coluna : conexao.Colunas(tabela))
        partes.push_back("coalesce(hash(" + Identificador(coluna.nome, conexao.TipoBanco()) + "), 'n')");
    if (partes.empty()) return "";
    TWKDQuery q(conexao, "select coalesce(sum(mod(hash(" + Junta(partes, " || '.' || ") +
                             "), 2147483647)), 0) as TOTAL from " + tabela);
    q.Open();
    return q.Texto("TOTAL");
}

TRegistroDaTabela::TRegistroDaTabela(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao)
    : ctx_(ctx), tabela_(tabela), mexe_(Mexe(decisao)) {
    TTabelaRegistrada registrada;
    registrada.nome = tabela;
    registrada.acao = decisao.acao;
    registrada.motivo = decisao.motivo;
    if (mexe_ && ctx.dm.ExisteTabela(tabela))
        registrada.antes = Conta(tabela);
    else if (decisao.acao == TAcaoDaTabela::Reconstroi)
        registrada.antes = Conta(NomeDaBackup(tabela));
    else if (mexe_)
        registrada.antes = 0;
    ctx.evidencia.tabelas.push_back(std::move(registrada));
}

TRegistroDaTabela::~TRegistroDaTabela() {
    TTabelaRegistrada& registrada = ctx_.evidencia.tabelas.back();
    registrada.segundos = std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio_).count();
    try {
        Mede(registrada);
    } catch (const TInterrompida&) {  // the next statement ends the run
    }
}

void TRegistroDaTabela::Mede(TTabelaRegistrada& registrada) {
    if (!mexe_ || !ctx_.dm.ExisteTabela(tabela_)) return;
    registrada.depois = Conta(tabela_);
    if (registrada.depois.value_or(0) == 0 || *registrada.depois > kLinhasDoHash) return;
    try {
        registrada.hash = HashDoConteudo(ctx_.Conexao(), tabela_);
    } catch (const std::exception&) {
        registrada.hash.clear();
    }
}

std::optional<std::int64_t> TRegistroDaTabela::Conta(const std::string& tabela) {
    try {
        return ContaRegistros(ctx_.Conexao(), "select count(*) as total from " + tabela);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace wkd
