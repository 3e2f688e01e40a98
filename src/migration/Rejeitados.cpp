#include "Rejeitados.h"

#include <filesystem>
#include <stdexcept>

#include "EscritaSegura.h"
#include "Json.h"

namespace wkd {

namespace {

std::filesystem::path Arquivo(const TContexto& ctx) {
    return ctx.opcoes.pastaPrograma / "AtualizaWKD.rejeitados.jsonl";
}

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

bool TRejeitados::Acrescenta(const TPares& chave, std::string_view erro,
                             const std::function<void(std::ostream&)>& resto) {
    const auto caminho = Arquivo(ctx_);
    if (!arquivo_.is_open()) arquivo_.open(caminho, std::ios::binary | std::ios::app);
    if (!arquivo_) {  // the one before could not be written whole
        arquivo_.clear();
        arquivo_ << '\n';
    }
    std::string motivo;
    try {
        arquivo_ << "{\"tabela\": ";
        EscreveJson(arquivo_, std::string_view(tabela_));
        arquivo_ << ", \"etapa\": ";
        EscreveJson(arquivo_, std::string_view(etapa_));
        arquivo_ << ", \"chave\": ";
        EscrevePares(arquivo_, chave);
        arquivo_ << ", \"erro\": ";
        EscreveJson(arquivo_, erro);
        arquivo_ << ", ";
        resto(arquivo_);
        arquivo_ << "}\n";
    } catch (const std::runtime_error& falha) {  // a blob that cannot be read
        arquivo_ << '\n';
        motivo = falha.what();
    }
    arquivo_.flush();
    const bool gravado = arquivo_.good() && motivo.empty();
    if (!gravado && !avisado_) {
        ctx_.Tela().Memo2("Tabela " + tabela_ + ": não foi possível gravar " + caminho.string() + " " + motivo);
        avisado_ = true;
    }
    return gravado;
}

void LevaRejeitadosAoDisco(const TContexto& ctx) {
    std::error_code ignorado;
    if (const auto caminho = Arquivo(ctx); std::filesystem::exists(caminho, ignorado)) LevaAoDisco(caminho);
}

}  // namespace wkd
