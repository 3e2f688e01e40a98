#include "copy/CopiaDeLinhas.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "copy/ColunasDaCopia.h"
#include "driver/ValorDoDriver.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::uintmax_t kMega = 1024 * 1024;

}  // namespace

void ExigeEspacoEmDisco(TContexto& ctx) {
    const auto livre = ctx.Conexao().EspacoLivre();
    if (!livre || *livre >= kDiscoMinimo) return;
    throw TErroConhecido(TFalha::DiscoCheio,
                         "o disco do banco de dados está quase cheio: " + std::to_string(*livre / kMega) +
                             " MB livres, são necessários pelo menos " + std::to_string(kDiscoMinimo / kMega) + " MB");
}

std::optional<std::size_t> LinhasPorCommit(const TContexto& ctx) {
    constexpr std::size_t kMais = 100'000;  // the numbers of that many rows wait in memory, and a signal for their end
    const std::string doAlias = ctx.dm.SQLConnection1.Aliases().INILeString(ctx.opcoes.alias, "LinhasPorCommit");
    const std::string_view texto = Apara(ctx.opcoes.linhasPorCommit.empty() ? doAlias : ctx.opcoes.linhasPorCommit);
    if (texto.empty()) return std::nullopt;
    std::size_t linhas = 0;
    const auto lido = std::from_chars(texto.data(), texto.data() + texto.size(), linhas);
    if (lido.ec != std::errc() || lido.ptr != texto.data() + texto.size() || linhas < 1 || linhas > kMais)
        throw TErroConfiguracao("LinhasPorCommit deve ser um número de 1 a " + std::to_string(kMais) + ", e não \"" +
                                std::string(texto) + "\": corrija a linha de comando ou o alias em WKD.ini.");
    return linhas;
}

namespace {

constexpr int kTentativas = 2;  // a failure may pass, such as a lock
/// What a copy could not store is shown so often: a run log of a hundred thousand entries takes hours to write.
constexpr std::int64_t kMostrados = 100;

/// A row that is nowhere but in the source of the copy.
class TSoNaOrigem : public TErroConhecido {
    using TErroConhecido::TErroConhecido;
};

/// What a column holds of a value that it cannot hold whole: the day of a time stamp, else nothing.
TValor ParteQueCabe(const TValor& valor, const TColunaFisica& coluna) {
    const auto* quando = valor.Se<TDataHora>();
    return quando && coluna.tipo == TTipoDado::Data ? TValor(quando->data) : TValor();
}

/// Bytes of a value in memory or in a temporary file; a blob may also stay on the server.
std::size_t BytesAqui(const TValor& valor) {
    if (const auto* texto = valor.Se<std::string>()) return texto->size();
    if (const auto* bytes = valor.Se<TBytes>()) return bytes->bytes.size();
    const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>();
    const auto* copiado = conteudo ? dynamic_cast<const TConteudoCopiado*>(conteudo->get()) : nullptr;
    return copiado ? copiado->Tamanho() : 0;
}

}  // namespace

TCopiaDeLinhas::TCopiaDeLinhas(TContexto& ctx, TCopia copia, TRenumeracao& renumeracao)
    : ctx_(ctx),
      copia_(std::move(copia)),
      renumeracao_(renumeracao),
      colunas_(ColunasDaCopia(ctx.Conexao(), copia_.origem, copia_.destino, renumeracao)),
      rejeitados_(ctx, copia_.tabela, copia_.etapa) {}

TResultadoDaCopia TCopiaDeLinhas::Executa(std::int64_t linhas) {
    IBarra& barra = ctx_.Tela().PbAtual();
    barra.Define(0, static_cast<int>(std::min<std::int64_t>(linhas, std::numeric_limits<int>::max())), 10, 0);
    const std::string lista = ListaDaOrigem(colunas_, ctx_.Dialeto());
    if (lista.empty())
        throw TErroConhecido(TFalha::Dicionario, copia_.origem + " e " + copia_.destino + " não têm colunas em comum");
    insere_ = ctx_.Conexao().Prepara(ComandoInsere(copia_.destino, colunas_, ctx_.Dialeto()));
    if (copia_.fonte.empty()) servidor_ = TCopiaNoServidor::Para(ctx_.Conexao(), copia_, colunas_);
    if (servidor_)
        PeloServidor();
    else
        PeloCliente();
    FechaLote();
    RelataDemais();
    ctx_.evidencia.copias.registros += resultado_.gravadas;
    ctx_.evidencia.copias.commitsComMuitas += (resultado_.gravadas + kMuitasPorCommit - 1) / kMuitasPorCommit;
    servidor_.reset();
    bloco_.reset();
    insere_.reset();
    return std::move(resultado_);
}

void TCopiaDeLinhas::PeloCliente() {
    std::vector<TColunaFisica> destino;
    for (const auto& coluna : colunas_) destino.push_back(coluna.destino);
    bloco_ = std::make_unique<TInsercaoEmBloco>(ctx_.Conexao(), copia_.destino, destino, copia_.linhasPorLote);
    const auto cursor = ctx_.Conexao().Prepara("select " + ListaDaOrigem(colunas_, ctx_.Dialeto()) + " from " +
                                               (copia_.fonte.empty() ? copia_.origem + copia_.condicao : copia_.fonte));
    cursor->Abre();
    for (std::int64_t feita = 0; feita < copia_.pula && cursor->Proximo();) ++feita;
    for (; cursor->Proximo(); Avanca()) {
        Anuncia();
        TLinhaDoLote linha{Numero(), {}, {}, Le(*cursor)};
        if (!Guardada([&] { return Arruma(linha.valores) && (PeloBloco() || Posta(linha.valores)); })) continue;
        aEnviar_ += PeloBloco();
        PoeNoLote(std::move(linha));
    }
}

void TCopiaDeLinhas::PeloServidor() {
    servidor_->Abre();
    for (std::int64_t feita = 0; feita < copia_.pula && servidor_->Proxima();) ++feita;
    for (; servidor_->Proxima(); Avanca()) {
        Anuncia();
        TLinhaDoLote linha{Numero(), servidor_->Chave(), servidor_->Faltas(), {}};
        const bool peloServidor = servidor_->VaiComoEsta();
        if (!peloServidor) Envia();
        aEnviar_ += peloServidor;
        if (peloServidor || Guardada([&] { return Refaz(linha); })) PoeNoLote(std::move(linha));
    }
}

void TCopiaDeLinhas::Anuncia() {
    ctx_.Tela().ProcessaMensagens();
    if (!copia_.rotulo.empty()) ctx_.Tela().LblAtual(copia_.rotulo);
    ++resultado_.lidas;
}

void TCopiaDeLinhas::PoeNoLote(TLinhaDoLote linha) {
    for (const TValor& valor : linha.valores) bytesNoLote_ += BytesAqui(valor);
    lote_.push_back(std::move(linha));
    if (aEnviar_ == (servidor_ ? kLinhasPorComando : bloco_->Lugares())) Envia();
}

void TCopiaDeLinhas::Avanca() {
    if (lote_.size() >= copia_.linhasPorLote || bytesNoLote_ >= copia_.bytesPorLote) FechaLote();
    IBarra& barra = ctx_.Tela().PbAtual();
    barra.Posicao(barra.Posicao() + 1);
}

/// What the server refuses as a whole is done row by row, so that only an unfit row is missing.
void TCopiaDeLinhas::Envia(bool sozinho) {
    if (aEnviar_ == 0) return;
    ExigeEspacoEmDisco(ctx_);
    const std::size_t primeira = lote_.size() - std::exchange(aEnviar_, 0);
    if (!transacao_ && !sozinho) transacao_.emplace(ctx_.Conexao());
    try {
        return EnviaJuntas(primeira);
    } catch (const TErroBanco& falha) {
        if (falha.ConexaoPerdida()) throw;
    } catch (const TErroConversao&) {
    }
    FicamNoLote(primeira, [this](TLinhaDoLote& linha) { return Refaz(linha); });
}

void TCopiaDeLinhas::EnviaJuntas(std::size_t primeira) {
    std::string faltas;
    std::vector<std::string_view> chaves;
    std::vector<const TLinha*> linhas;
    for (std::size_t i = primeira; i < lote_.size(); ++i) {
        chaves.push_back(lote_[i].chave);
        faltas += lote_[i].faltas;
        linhas.push_back(&lote_[i].valores);
    }
    if (servidor_)
        resultado_.alteradas.merge(servidor_->Copia(chaves, faltas, renumeracao_));
    else
        bloco_->Grava(linhas);
}

/// Of the batch from `primeira` on, the rows that `guarda` stores; each is asked once, in its turn.
template <class TGuarda>
void TCopiaDeLinhas::FicamNoLote(std::size_t primeira, TGuarda&& guarda) {
    std::size_t fica = primeira;
    for (std::size_t i = primeira; i < lote_.size(); ++i) {
        if (!Guardada([&] { return guarda(lote_[i]); })) continue;
        if (fica != i) lote_[fica] = std::move(lote_[i]);
        ++fica;
    }
    lote_.resize(fica);
}

/// What `guarda` answers; false also for a row that stays in the source alone, when the copy may go on.
template <class TGuarda>
bool TCopiaDeLinhas::Guardada(TGuarda&& guarda) {
    try {
        return guarda();
    } catch (const TSoNaOrigem&) {
        if (copia_.exigente || copia_.aoGravar) throw;
        ++resultado_.soNaOrigem;
        return false;
    }
}

/// Stores one row by itself, in the open transaction; one that the server should have moved is read first.
bool TCopiaDeLinhas::Refaz(TLinhaDoLote& linha) {
    if (servidor_) linha.valores = LePelaChave(linha.chave);
    if (servidor_ && !Arruma(linha.valores)) return false;
    return Posta(linha.valores);
}

TLinha TCopiaDeLinhas::LePelaChave(const std::string& chave) {
    TComando& linha = servidor_->Linha(chave);
    TLinha valores = Le(linha);
    linha.Fecha();
    return valores;
}

TLinha TCopiaDeLinhas::Le(TComando& linha) {
    TLinha valores;
    valores.reserve(colunas_.size());
    for (const auto& coluna : colunas_) valores.push_back(coluna.origem ? LeCampo(linha, coluna) : coluna.fixo);
    return valores;
}

TValor TCopiaDeLinhas::LeCampo(TComando& linha, const TColunaDaCopia& coluna) {
    return ValorNaPassagem(linha.Valor(coluna.lugar), *coluna.origem, coluna.destino);
}

/// Required columns without value get one, and auto-increment columns their number.
void TCopiaDeLinhas::AplicaRegras(TLinha& linha) {
    for (std::size_t i = 0; i < colunas_.size(); ++i) {
        const TColunaFisica& destino = colunas_[i].destino;
        const bool falta = colunas_[i].origem && destino.requerido && SemValor(linha[i], destino);
        if (!falta && !colunas_[i].numerada) continue;
        const TValor antes = linha[i];
        if (falta) linha[i] = ValorObrigatorio(destino);
        if (colunas_[i].numerada) linha[i] = renumeracao_.Numera(destino.nome, linha[i]);
        if (colunas_[i].origem && !(antes == linha[i])) resultado_.alteradas.insert(ChaveDeNome(destino.nome));
    }
}

/// False for a row whose numbered column holds what is no number.
bool TCopiaDeLinhas::Arruma(TLinha& linha) {
    try {
        AplicaRegras(linha);
        return true;
    } catch (const TErroConversao& falha) {
        RejeitaLinha(linha, falha.Dados());
        return false;
    }
}

/// True when the row is stored in the open transaction. A failed statement is undone by the server alone, so it is
/// tried a second time, without the values that the target cannot hold.
bool TCopiaDeLinhas::Posta(TLinha& linha) {
    if (!transacao_) transacao_.emplace(ctx_.Conexao());
    TErro erro;
    bool incompleta = false;
    for (int tentativa = 1; tentativa <= kTentativas; ++tentativa) {
        try {
            Insere(linha);
            resultado_.incompletas += incompleta;
            return true;
        } catch (const TErroBanco& falha) {
            if (falha.ConexaoPerdida()) throw;
            erro = falha.Dados();
        } catch (const TErroConversao& falha) {
            erro = falha.Dados();
        }
        if (tentativa == 1) incompleta = IsolaCampos(linha);
    }
    RejeitaLinha(linha, erro);
    return false;
}

void TCopiaDeLinhas::Insere(const TLinha& linha) {
    for (std::size_t i = 0; i < linha.size(); ++i) insere_->Atribui(i, linha[i]);
    insere_->Executa();
}

/// Takes the values that do not fit their columns out of the row; false when all do.
bool TCopiaDeLinhas::IsolaCampos(TLinha& linha) {
    bool isolou = false;
    for (std::size_t i = 0; i < linha.size(); ++i) {
        try {
            ConverteParaColuna(linha[i], colunas_[i].destino);
        } catch (const TErroConversao& falha) {
            RejeitaCampo(linha, falha.Dados(), i);
            linha[i] = ParteQueCabe(linha[i], colunas_[i].destino);
            isolou = true;
        }
    }
    return isolou;
}

/// A batch of one statement may commit itself.
void TCopiaDeLinhas::FechaLote() {
    const bool deUmComando = !transacao_ && aEnviar_ == lote_.size();
    Envia(deUmComando && servidor_ && servidor_->Sozinho() && !ctx_.opcoes.medeCommits);
    if (transacao_) Confirma();
    resultado_.gravadas += static_cast<std::int64_t>(lote_.size());
    lote_.clear();
    bytesNoLote_ = 0;
}

void TCopiaDeLinhas::Confirma() {
    ExigeEspacoEmDisco(ctx_);
    try {
        Conta(Numero());
        Commit();
    } catch (const TErroBanco& falha) {
        transacao_.reset();
        if (falha.ConexaoPerdida()) throw;
        RefazLote();
    }
}

void TCopiaDeLinhas::Commit() {
    const auto inicio = std::chrono::steady_clock::now();
    transacao_->Commit();
    transacao_.reset();
    TCopiasConfirmadas& copias = ctx_.evidencia.copias;
    copias.segundos += std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
    ++copias.commits;
}

/// Row by row, so that only an unfit one is missing.
void TCopiaDeLinhas::RefazLote() {
    FicamNoLote(0, [this](TLinhaDoLote& linha) { return GravaSozinha(linha); });
}

bool TCopiaDeLinhas::GravaSozinha(TLinhaDoLote& linha) {
    if (linha.valores.empty()) {
        linha.valores = LePelaChave(linha.chave);
        AplicaRegras(linha.valores);
    }
    TErro erro;
    for (int tentativa = 1; tentativa <= kTentativas; ++tentativa) {
        try {
            TTransacao transacao(ctx_.Conexao());
            Insere(linha.valores);
            Conta(linha.numero);
            transacao.Commit();
            return true;
        } catch (const TErroBanco& falha) {
            if (falha.ConexaoPerdida()) throw;
            erro = falha.Dados();
        } catch (const TErroConversao& falha) {
            erro = falha.Dados();
        }
    }
    RejeitaLinha(linha.valores, erro);
    return false;
}

void TCopiaDeLinhas::Conta(std::int64_t ate) {
    if (copia_.aoGravar) copia_.aoGravar(ate);
}

/// False for what is only counted.
bool TCopiaDeLinhas::Mostra(TErro erro) {
    if (mostrados_ == kMostrados) {
        ++calados_;
        return false;
    }
    ++mostrados_;
    erro.falha = TFalha::LinhaRecusada;
    ctx_.Tela().Erro(TErroDaExecucao::NaCaixa(std::move(erro), copia_.tabela));
    return true;
}

void TCopiaDeLinhas::RelataDemais() {
    if (calados_ == 0) return;
    const std::string linha = "Tabela " + copia_.tabela + ": mais " + std::to_string(calados_) +
                              " registros ou valores não gravados em " + copia_.destino +
                              ", todos no arquivo de rejeitados";
    ctx_.Tela().Erro(TErroDaExecucao::NosDois({.mensagem = linha, .falha = TFalha::LinhaRecusada}, ctx_.tabelaAtual,
                                              ctx_.acaoAtual));
}

void TCopiaDeLinhas::RejeitaLinha(const TLinha& linha, const TErro& erro) {
    ++resultado_.recusadas;
    TErro mostrado = erro;
    mostrado.mensagem.insert(0, copia_.inicioDoErro);
    const bool mostrada = Mostra(std::move(mostrado));
    TPares valores;
    for (std::size_t i = 0; i < linha.size(); ++i) valores.emplace_back(colunas_[i].destino.nome, linha[i]);
    ConfereGuardado(rejeitados_.Linha(Chave(linha), erro.mensagem, valores));
    if (copia_.exigente && mostrada &&
        ctx_.Tela().Reconcilia(erro.mensagem, TAcaoReconcilia::Pula) == TAcaoReconcilia::Aborta)
        throw TErroConhecido(TFalha::LinhaRecusada, "cópia de " + copia_.origem + " interrompida: " + erro.mensagem);
}

void TCopiaDeLinhas::RejeitaCampo(const TLinha& linha, const TErro& erro, std::size_t coluna) {
    if (copia_.exigente) Mostra(erro);
    ConfereGuardado(rejeitados_.Valor(Chave(linha), erro.mensagem, colunas_[coluna].destino.nome, linha[coluna]));
}

void TCopiaDeLinhas::ConfereGuardado(bool guardado) {
    if (!guardado)
        throw TSoNaOrigem(TFalha::Arquivo, "há dados que não puderam ser gravados nem em " + copia_.destino +
                                               " nem no arquivo de rejeitados");
}

TPares TCopiaDeLinhas::Chave(const TLinha& linha) const {
    TPares chave;
    for (std::size_t i = 0; i < linha.size(); ++i) {
        const std::string& nome = colunas_[i].destino.nome;
        if (std::ranges::any_of(copia_.chave, [&](const std::string& coluna) { return IgualSemCaixa(coluna, nome); }))
            chave.emplace_back(nome, linha[i]);
    }
    return chave;
}

}  // namespace wkd
