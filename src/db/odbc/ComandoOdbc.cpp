#include "odbc/ComandoOdbc.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "odbc/ErroOdbc.h"
#include "odbc/LexicoSql.h"
#include "tables/MarcaDaBackup.h"

namespace wkd {
namespace {

/// A result of no more rows is read at once, so that the server keeps no lock for its reader.
constexpr std::size_t kLinhasAdiante = 64;

}  // namespace

TComandoOdbc::TComandoOdbc(std::shared_ptr<TSessaoOdbc> sessao, std::string_view sql)
    : sessao_(std::move(sessao)),
      sql_(sql),
      analise_(AnalisaComando(sql)),
      texto_(SemSequenciasOdbc(analise_.texto)),
      alvos_(AlvosDosParametros(texto_)),
      valores_(analise_.parametros.size()),
      posicoes_(analise_.posicoes.size()) {
    if (alvos_.alvos.size() != posicoes_.size())
        throw std::invalid_argument("o comando tem parâmetros sem nome: " + sql_);
}

void TComandoOdbc::Atribui(std::size_t parametro, const TValor& valor) { valores_.at(parametro) = {valor}; }

void TComandoOdbc::AtribuiFluxo(std::size_t parametro, TLeitorBytes& fonte) {
    valores_.at(parametro) = {TValor(), &fonte, false};
}

template <class TOperacao>
void TComandoOdbc::Tenta(TOperacao operacao) {
    try {
        operacao();
    } catch (const TErroConversao&) {
        throw;  // nothing has been sent
    } catch (const TErroBanco& erro) {
        Falhou(erro);
        throw;
    } catch (const std::exception& erro) {
        Falhou(TErroBanco({erro.what(), 0, "", sql_, TFalha::Outra, false}));
        throw;
    }
}

std::int64_t TComandoOdbc::Executa() {
    Fecha();
    std::int64_t linhas = 0;
    Tenta([&] {
        const auto [ligacao, sozinho] = sessao_->ParaExecutar(sql_);
        PreparaEm(ligacao);
        Roda(sozinho);
        linhas = instrucao_->Esgota(sql_);
        instrucao_->FechaCursor();
        if (sozinho || sessao_->Comecada()) return;
        sessao_->Observa("commit");
        ligacao_->Termina(SQL_COMMIT, sql_);
    });
    return linhas;
}

void TComandoOdbc::Abre() {
    Fecha();
    Tenta([&] {
        PreparaEm(sessao_->ParaLer());
        Roda(false);
        DescreveColunas();
        Adianta();
    });
}

bool TComandoOdbc::Proximo() {
    atual_.clear();
    naLinha_ = guardadas_.empty() && Busca();
    if (guardadas_.empty()) return naLinha_;
    atual_ = std::move(guardadas_.front());
    guardadas_.pop_front();
    return true;
}

TValor TComandoOdbc::Valor(std::size_t campo) {
    CompletaAte(campo);
    return atual_.at(campo);
}

void TComandoOdbc::Fecha() noexcept {
    if (ligacao_ && ligacao_->cursor == this) ligacao_->cursor = nullptr;
    if (std::exchange(aberto_, false)) instrucao_->FechaCursor();
    guardadas_.clear();
    naLinha_ = false;
}

void TComandoOdbc::GuardaLinhas() {
    if (std::exchange(naLinha_, false)) CompletaAte(campos_.size() - 1);
    auto atual = std::move(atual_);
    while (Busca()) guardadas_.push_back(LinhaInteira());
    atual_ = std::move(atual);
}

/// The statement stays prepared on its connection as long as it runs on the same one.
void TComandoOdbc::PreparaEm(const std::shared_ptr<TLigacaoOdbc>& ligacao) {
    DescreveAlvos();
    if (instrucao_ && ligacao_ == ligacao && !posicoes_.empty()) return;
    instrucao_ = std::make_unique<TInstrucaoOdbc>(ligacao);
    ligacao_ = ligacao;
    EsqueceLigacoes();
    if (posicoes_.empty()) return;
    TTextoOdbc texto(texto_);
    const auto chamada = instrucao_->Chamada();
    instrucao_->Confere(SQLPrepareW(instrucao_->Handle(), texto.Dados(), texto.Tamanho<SQLINTEGER>()), sql_);
}

void TComandoOdbc::DescreveAlvos() {
    if (std::exchange(alvosLidos_, true)) return;
    const bool algum = std::ranges::any_of(alvos_.alvos, &TAlvo::Conhecido);
    if (!algum) return;
    auto achado = sessao_->Alvos().find(alvos_.tabela);
    if (achado == sessao_->Alvos().end()) {
        auto colunas = TMetadadosOdbc(sessao_).Colunas(alvos_.tabela);
        achado = sessao_->Alvos().emplace(alvos_.tabela, std::move(colunas)).first;
    }
    colunasDaTabela_ = achado->second;
}

/// A driver other than SQL Server's may forget, behind an empty value, where the next one is (SQLite's 0.9998 does).
void TComandoOdbc::LigaParametros() {
    if (!sessao_->SqlServer()) EsqueceLigacoes();
    for (std::size_t i = 0; i < posicoes_.size(); ++i) {
        auto& [valor, fluxo, fluxoLido] = valores_[analise_.posicoes[i]];
        const auto& alvo = alvos_.alvos[i];
        const TColunaFisica* coluna = nullptr;
        if (!alvo.posicao)
            coluna = ColunaDeNome(colunasDaTabela_, alvo.coluna);
        else if (*alvo.posicao < colunasDaTabela_.size())
            coluna = &colunasDaTabela_[*alvo.posicao];
        if (fluxoLido) throw std::logic_error("o fluxo do parâmetro já foi lido: " + sql_);
        try {
            if (fluxo)
                posicoes_[i].DefineFluxo(*fluxo, coluna);
            else
                posicoes_[i].Define(valor, coluna);
        } catch (const TErroConversao& erro) {
            throw TErroConversao("parâmetro " + analise_.parametros[analise_.posicoes[i]] + ": " + erro.what());
        }
        fluxoLido = fluxo != nullptr;
        posicoes_[i].Liga(*instrucao_, static_cast<SQLUSMALLINT>(i + 1), sql_);
    }
}

void TComandoOdbc::Roda(bool sozinho) {
    LigaParametros();
    sessao_->Observa(sql_, sozinho);
    const auto chamada = instrucao_->Chamada();
    SQLRETURN retorno;
    if (posicoes_.empty()) {
        TTextoOdbc texto(texto_);
        retorno = SQLExecDirectW(instrucao_->Handle(), texto.Dados(), texto.Tamanho<SQLINTEGER>());
    } else {
        retorno = SQLExecute(instrucao_->Handle());
    }
    while (retorno == SQL_NEED_DATA) {
        SQLPOINTER qual = nullptr;
        retorno = SQLParamData(instrucao_->Handle(), &qual);
        if (retorno == SQL_NEED_DATA) static_cast<TParametroOdbc*>(qual)->EnviaConteudo(*instrucao_, sql_);
    }
    instrucao_->Confere(retorno, sql_);
}

/// Describes the first result that has columns.
void TComandoOdbc::DescreveColunas() {
    const auto chamada = instrucao_->Chamada();
    campos_.clear();
    descricoes_.clear();
    SQLSMALLINT colunas = 0;
    for (SQLNumResultCols(instrucao_->Handle(), &colunas); colunas == 0;
         SQLNumResultCols(instrucao_->Handle(), &colunas)) {
        const auto retorno = SQLMoreResults(instrucao_->Handle());
        if (retorno == SQL_NO_DATA) throw std::logic_error("o comando não devolve linhas: " + sql_);
        instrucao_->Confere(retorno, sql_);
    }
    for (SQLUSMALLINT i = 1; i <= colunas; ++i) {
        SQLWCHAR nome[256];
        SQLSMALLINT tamanho = 0, anulavel = 0;
        TDescricaoOdbc d;
        instrucao_->Confere(
            SQLDescribeColW(instrucao_->Handle(), i, nome, 256, &tamanho, &d.tipo, &d.tamanho, &d.escala, &anulavel),
            sql_);
        auto& campo = campos_.emplace_back(TipoDe(d));
        campo.nome = TextoLido(nome, std::min<SQLLEN>(tamanho, 255));
        campo.requerido = anulavel == SQL_NO_NULLS;
        descricoes_.push_back(d);
    }
    aberto_ = true;
    ligacao_->cursor = this;
}

void TComandoOdbc::Adianta() {
    const bool longos = std::ranges::any_of(
        campos_, [](const TCampo& c) { return c.tipo == TTipoDado::Blob || c.tipo == TTipoDado::Memo; });
    if (longos) return;
    while (guardadas_.size() < kLinhasAdiante && Busca()) guardadas_.push_back(LinhaInteira());
    atual_.clear();
}

/// The next row from the driver, nothing of it read yet; false behind the last one.
bool TComandoOdbc::Busca() {
    if (!aberto_) return false;
    atual_.clear();
    const auto retorno = [&] {
        const auto chamada = instrucao_->Chamada();
        return SQLFetch(instrucao_->Handle());
    }();
    TInterrupcao::Confere(true);
    if (SQL_SUCCEEDED(retorno)) return true;
    const auto erro = retorno == SQL_NO_DATA ? std::nullopt : std::optional(instrucao_->Erro(sql_));
    aberto_ = false;
    ligacao_->cursor = nullptr;
    instrucao_->FechaCursor();
    if (!erro) return false;
    Falhou(*erro);
    throw *erro;
}

TLinha TComandoOdbc::LinhaInteira() {
    CompletaAte(campos_.size() - 1);
    return std::move(atual_);
}

void TComandoOdbc::CompletaAte(std::size_t campo) {
    if (atual_.size() > campo || !aberto_) return;
    const auto chamada = instrucao_->Chamada();
    while (atual_.size() <= campo && aberto_)
        atual_.push_back(
            LeValor(*instrucao_, static_cast<SQLUSMALLINT>(atual_.size() + 1), descricoes_[atual_.size()], sql_));
}

/// A broken statement is prepared anew, and a reading connection that is lost is given up.
void TComandoOdbc::Falhou(const TErroBanco& erro) noexcept {
    Fecha();
    const bool naPrincipal = sessao_->EhPrincipal(ligacao_);
    instrucao_.reset();
    if (naPrincipal)
        sessao_->DepoisDoErro(erro);
    else if (erro.ConexaoPerdida() && ligacao_)
        ligacao_->Desliga();
    ligacao_.reset();
}

}  // namespace wkd
