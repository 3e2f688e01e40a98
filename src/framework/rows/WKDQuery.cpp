#include "rows/WKDQuery.h"

#include <algorithm>
#include <stdexcept>

#include "values/Texto.h"

namespace wkd {

namespace {

bool Letra(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool DeNome(char c) { return Letra(c) || (c >= '0' && c <= '9') || c == '$'; }

class TAnalise {
  public:
    explicit TAnalise(std::string_view sql) : sql_(sql) {}

    TComandoSql Resultado() {
        while (lido_ < sql_.size()) Pedaco();
        return std::move(comando_);
    }

  private:
    void Pedaco() {
        const char c = sql_[lido_];
        const char seguinte = lido_ + 1 < sql_.size() ? sql_[lido_ + 1] : '\0';
        if (c == '\'' || c == '"') return Copia(Apos(c, 1));
        if (c == '[') return Copia(Apos(']', 1));
        if (c == '-' && seguinte == '-') return Copia(Apos('\n', 2));
        if (c == '/' && seguinte == '*') return Copia(FimDoComentario());
        if (c == ':' && seguinte == ':') return Copia(lido_ + 2);
        if (c == ':' && Letra(seguinte) && !corpo_) return Parametro();
        if (DeNome(c)) return Palavra();
        nivel_ += c == '(' ? 1 : c == ')' ? -1 : 0;
        Copia(lido_ + 1);
    }

    std::size_t Apos(char fim, std::size_t salto) const {
        const auto onde = sql_.find(fim, lido_ + salto);
        return onde == std::string_view::npos ? sql_.size() : onde + 1;
    }

    std::size_t FimDoComentario() const {
        const auto onde = sql_.find("*/", lido_ + 2);
        return onde == std::string_view::npos ? sql_.size() : onde + 2;
    }

    std::size_t FimDoNome(std::size_t inicio) const {
        while (inicio < sql_.size() && DeNome(sql_[inicio])) ++inicio;
        return inicio;
    }

    void Copia(std::size_t ate) {
        comando_.texto += sql_.substr(lido_, ate - lido_);
        lido_ = ate;
    }

    void Palavra() {
        const auto fim = FimDoNome(lido_);
        const auto palavra = sql_.substr(lido_, fim - lido_);
        ++palavras_;
        if (palavras_ == 1) executa_ = IgualSemCaixa(palavra, "execute");
        if (palavras_ == 2) bloco_ = executa_ && IgualSemCaixa(palavra, "block");
        if (bloco_ && nivel_ == 0 && IgualSemCaixa(palavra, "as")) corpo_ = true;
        Copia(fim);
    }

    void Parametro() {
        const auto fim = FimDoNome(lido_ + 1);
        const auto nome = sql_.substr(lido_ + 1, fim - lido_ - 1);
        auto& nomes = comando_.parametros;
        const auto igual = [&](const std::string& outro) { return IgualSemCaixa(outro, nome); };
        const auto onde = std::find_if(nomes.begin(), nomes.end(), igual) - nomes.begin();
        if (onde == static_cast<std::ptrdiff_t>(nomes.size())) nomes.emplace_back(nome);
        comando_.posicoes.push_back(static_cast<std::size_t>(onde));
        comando_.texto += '?';
        lido_ = fim;
    }

    std::string_view sql_;
    std::size_t lido_ = 0;
    TComandoSql comando_;
    int palavras_ = 0;
    int nivel_ = 0;         // of parentheses
    bool executa_ = false;  // the first word is "execute"
    bool bloco_ = false;
    bool corpo_ = false;  // behind the AS of an "execute block"
};

}  // namespace

TComandoSql AnalisaComando(std::string_view sql) { return TAnalise(sql).Resultado(); }

TWKDQuery::TWKDQuery(TConnection& conexao, std::string_view sql) : comando_(conexao.Prepara(sql)) {}

TWKDQuery& TWKDQuery::Param(std::string_view nome, const TValor& valor) {
    comando_->Atribui(nome, valor);
    return *this;
}

void TWKDQuery::Open() {
    fim_ = true;
    comando_->Abre();
    Next();
}

void TWKDQuery::Close() {
    comando_->Fecha();
    fim_ = true;
}

void TWKDQuery::Next() { fim_ = !comando_->Proximo(); }

TValor TWKDQuery::Campo(std::string_view nome) {
    const int indice = IndiceDoCampo(comando_->Campos(), nome);
    if (indice < 0) throw std::invalid_argument("Campo inexistente na consulta: " + std::string(nome));
    return comando_->Valor(static_cast<std::size_t>(indice));
}

void ExecutaComando(TConnection& conexao, std::string_view sql) {
    TTransacao transacao(conexao);
    conexao.Prepara(sql)->Executa();
    transacao.Commit();
}

std::int64_t ContaRegistros(TConnection& conexao, std::string_view sql) {
    TWKDQuery consulta(conexao, sql);
    consulta.Open();
    return consulta.Eof() ? 0 : consulta.Comando().Valor(0).ComoInteiro();
}

}  // namespace wkd
