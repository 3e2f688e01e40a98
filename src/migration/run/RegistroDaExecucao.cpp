#include "run/RegistroDaExecucao.h"

#include <algorithm>
#include <exception>
#include <span>

#include "dialect/Dialeto.h"
#include "process/Interrupcao.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Whether the step goes into the table's rows. One that only takes over the dictionary leaves a large table unread.
bool Mexe(const TDecisaoDaTabela& decisao) {
    if (decisao.acao == TAcaoDaTabela::Altera) return !decisao.comandos.empty();
    return decisao.acao != TAcaoDaTabela::Nada;
}

/// Whether something of the table is missing after this error; others only tell what a person might want back.
bool Falta(const TErroDaExecucao& erro) {
    return erro.erro.falha != TFalha::SobraNoBackup && erro.erro.falha != TFalha::NaoRecriado;
}

}  // namespace

std::string HashDoConteudo(TConnection& conexao, const std::string& tabela) {
    const std::string soma = Dialeto(conexao).SomaDasLinhas(conexao.Colunas(tabela));
    if (soma.empty()) return "";
    TWKDQuery q(conexao, "select " + soma + " as TOTAL from " + tabela);
    q.Open();
    return q.Texto("TOTAL");
}

TRegistroDaTabela::TRegistroDaTabela(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao)
    : ctx_(ctx),
      tabela_(tabela),
      mexe_(Mexe(decisao)),
      erros_(ctx.Tela().Erros().size()),
      excecoes_(std::uncaught_exceptions()) {
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
    registrada.desfecho = Desfecho(registrada);
    try {
        Mede(registrada);
    } catch (const TInterrompida&) {  // the next statement ends the run
    }
}

/// Decided from what was reported and what statements ran.
TDesfecho TRegistroDaTabela::Desfecho(const TTabelaRegistrada& registrada) const {
    const std::span erros(ctx_.Tela().Erros());
    const bool acabou = std::uncaught_exceptions() == excecoes_;
    const bool nada = registrada.acao == TAcaoDaTabela::Nada;
    if (acabou && std::ranges::none_of(erros.subspan(std::min(erros_, erros.size())), Falta))
        return nada ? TDesfecho::NaoSeAplica : TDesfecho::Feito;
    const bool correu = std::ranges::any_of(registrada.comandos, [](const auto& c) { return c.erro.empty(); });
    const bool soDicionario = registrada.acao == TAcaoDaTabela::Altera && registrada.comandos.empty() && acabou;
    const bool aberta = registrada.acao == TAcaoDaTabela::Reconstroi && ctx_.abertas.contains(ChaveDeNome(tabela_));
    return correu || soDicionario || aberta ? TDesfecho::PelaMetade : TDesfecho::NaoFeito;
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
