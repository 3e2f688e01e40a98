#include "EstadoDaReconstrucao.h"

#include <charconv>
#include <stdexcept>

#include "Texto.h"
#include "Tini.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = "ReconstroiTabela";
constexpr std::string_view kGuardada = "GUARDADA";
constexpr std::string_view kRestaurando = "RESTAURANDO";  // a count may follow

std::string Marca(TContexto& ctx, std::string_view tabela) {
    if (!ctx.dm.ExisteTabela("TINI")) return "";
    return LeParametro(kSecao, Maiusculas(tabela), "", &ctx.Conexao());
}

}  // namespace

bool ReconstrucaoPendente(TContexto& ctx, std::string_view tabela) {
    return ContaRegistros(ctx.Conexao(),
                          "select count(*) as total from SARQUIVO where VERSAO = " + std::to_string(kVersaoPendente) +
                              " and Upper(NOME_ARQUIVO) = " + Aspas(Maiusculas(tabela))) > 0;
}

void MarcaReconstrucao(TContexto& ctx, std::string_view tabela) {
    TClientDataSet& velho = ctx.dm.SarquivoVelho;
    if (velho.IsEmpty()) throw std::runtime_error("A tabela " + std::string(tabela) + " não está em SARQUIVO");
    velho.Edit();
    velho.SetValor("versao", kVersaoPendente);
    if (velho.Texto("nome_arquivo").empty()) ctx.Tela().Informacao("6");
    velho.Post();
    if (!AplicaEmTransacao(velho))
        throw std::runtime_error("Não foi possível marcar a tabela " + std::string(tabela) + " em SARQUIVO");
}

TEtapaDaReconstrucao EtapaDaReconstrucao(TContexto& ctx, std::string_view tabela) {
    const std::string marca = Marca(ctx, tabela);
    if (marca == kGuardada) return TEtapaDaReconstrucao::Guardada;
    return marca.starts_with(kRestaurando) ? TEtapaDaReconstrucao::Restaurando : TEtapaDaReconstrucao::Desconhecida;
}

void GravaEtapa(TContexto& ctx, std::string_view tabela, TEtapaDaReconstrucao etapa) {
    if (!ctx.dm.ExisteTabela("TINI")) return;
    const std::string chave = Maiusculas(tabela);
    if (etapa == TEtapaDaReconstrucao::Desconhecida) {
        TWKDQuery q(ctx.Conexao(), "delete from tini where sessao = :pSESSAO and chave = :pCHAVE");
        q.Param("pSESSAO", kSecao).Param("pCHAVE", chave).ExecSQL();
        return;
    }
    const bool guardada = etapa == TEtapaDaReconstrucao::Guardada;
    GravaParametro(kSecao, chave, guardada ? kGuardada : kRestaurando, &ctx.Conexao());
}

std::optional<std::int64_t> LinhasRestauradas(TContexto& ctx, std::string_view tabela) {
    const std::string marca = Marca(ctx, tabela);
    if (!marca.starts_with(kRestaurando)) return std::nullopt;
    const std::string_view numero = Apara(std::string_view(marca).substr(kRestaurando.size()));
    std::int64_t linhas = 0;
    const auto lido = std::from_chars(numero.data(), numero.data() + numero.size(), linhas);
    return lido.ec == std::errc() ? std::optional(linhas) : std::nullopt;
}

TContagemDaRestauracao::TContagemDaRestauracao(TContexto& ctx, std::string_view tabela) {
    if (!ctx.dm.ExisteTabela("TINI")) return;
    grava_ = ctx.Conexao().Prepara("update tini set valor = :pVALOR where sessao = :pSESSAO and chave = :pCHAVE");
    grava_->Atribui("pSESSAO", kSecao);
    grava_->Atribui("pCHAVE", Maiusculas(tabela));
}

void TContagemDaRestauracao::Grava(std::int64_t linhas) {
    if (!grava_) return;
    grava_->Atribui("pVALOR", std::string(kRestaurando) + " " + std::to_string(linhas));
    grava_->Executa();
}

}  // namespace wkd
