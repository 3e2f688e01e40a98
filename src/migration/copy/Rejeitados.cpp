#include "copy/Rejeitados.h"

#include <filesystem>
#include <stdexcept>

#include "copy/Reposicao.h"
#include "values/Json.h"

namespace wkd {

namespace {

std::filesystem::path Arquivo(const TContexto& ctx) { return ArquivoDeRejeitados(ctx.opcoes.pastaPrograma); }

void EscrevePares(std::ostream& saida, const TPares& pares) {
    std::string_view separador = "{";
    for (const auto& [nome, valor] : pares) {
        saida << separador;
        EscreveJson(saida, std::string_view(nome));
        saida << ": ";
        EscreveJson(saida, valor);
        separador = ", ";
    }
    saida << (pares.empty() ? "{}" : "}");
}

}  // namespace

TRejeitados::TRejeitados(TContexto& ctx, std::string_view tabela, std::string_view etapa)
    : ctx_(ctx), tabela_(tabela), etapa_(etapa) {}

bool TRejeitados::Linha(const TPares& chave, std::string_view erro, const TPares& valores) {
    return Acrescenta(chave, erro, [&](std::ostream& saida) {
        saida << "\"valores\": ";
        EscrevePares(saida, valores);
    });
}

bool TRejeitados::Valor(const TPares& chave, std::string_view erro, std::string_view campo, const TValor& valor) {
    return Acrescenta(chave, erro, [&](std::ostream& saida) {
        saida << "\"campo\": ";
        EscreveJson(saida, campo);
        saida << ", \"valor\": ";
        EscreveJson(saida, valor);
    });
}

void TRejeitados::Abre() { arquivo_.emplace(AbreEmLinhaNova(Arquivo(ctx_))); }

bool TRejeitados::Acrescenta(const TPares& chave, std::string_view erro,
                             const std::function<void(std::ostream&)>& resto) {
    std::string motivo;
    try {
        if (!arquivo_) Abre();
        if (!*arquivo_) {  // the one before could not be written whole
            arquivo_->clear();
            *arquivo_ << '\n';
        }
        Escreve(*arquivo_, chave, erro, resto);
    } catch (const std::runtime_error& falha) {  // a blob that cannot be read, a file that is no ordinary one
        if (arquivo_) *arquivo_ << '\n';
        motivo = falha.what();
    }
    const bool gravado = motivo.empty() && arquivo_->flush().good();
    if (!gravado && !avisado_) {
        const std::string linha =
            "Tabela " + tabela_ + ": não foi possível gravar " + Arquivo(ctx_).string() + " " + motivo;
        ctx_.Tela().Erro(TErroDaExecucao::NaLista({.mensagem = linha, .falha = TFalha::Arquivo}, tabela_));
        avisado_ = true;
    }
    return gravado;
}

void TRejeitados::Escreve(std::ostream& saida, const TPares& chave, std::string_view erro,
                          const std::function<void(std::ostream&)>& resto) const {
    saida << "{\"alias\": ";
    EscreveJson(saida, std::string_view(ctx_.opcoes.alias));
    saida << ", \"tabela\": ";
    EscreveJson(saida, std::string_view(tabela_));
    saida << ", \"etapa\": ";
    EscreveJson(saida, std::string_view(etapa_));
    saida << ", \"chave\": ";
    EscrevePares(saida, chave);
    saida << ", \"erro\": ";
    EscreveJson(saida, erro);
    saida << ", ";
    resto(saida);
    saida << "}\n";
}

void LevaRejeitadosAoDisco(const TContexto& ctx) {
    std::error_code ignorado;
    if (const auto caminho = Arquivo(ctx); std::filesystem::exists(caminho, ignorado)) LevaAoDisco(caminho);
}

}  // namespace wkd
