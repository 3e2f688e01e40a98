#include "FichasXml.h"

#include <algorithm>
#include <cstddef>

#include "FontePacote.h"
#include "Texto.h"

namespace wkd {

namespace {

bool Branco(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

}  // namespace

void TFichasXml::PulaAte(std::string_view fim, const char* causa) {
    const auto achado = texto_.find(fim, posicao_);
    if (achado == std::string_view::npos) throw TErroTrecho{Onde(), causa};
    posicao_ = achado + fim.size();
}

void TFichasXml::PulaBrancos() {
    while (posicao_ < texto_.size() && Branco(texto_[posicao_])) ++posicao_;
}

std::string_view TFichasXml::LeNome() {
    const auto inicio = posicao_;
    while (posicao_ < texto_.size()) {
        const char c = texto_[posicao_];
        if (Branco(c) || c == '=' || c == '>' || c == '/' || c == '<' || c == '"' || c == '\'') break;
        ++posicao_;
    }
    return texto_.substr(inicio, posicao_ - inicio);
}

bool TFichasXml::Proxima() {
    Termina();
    for (;;) {
        posicao_ = texto_.find('<', posicao_);
        if (posicao_ == std::string_view::npos) {
            posicao_ = texto_.size();
            return false;
        }
        const auto resto = texto_.substr(posicao_);
        if (resto.starts_with("<?")) {
            PulaAte("?>", "instrução sem fim");
        } else if (resto.starts_with("<!--")) {
            PulaAte("-->", "comentário sem fim");
        } else if (resto.starts_with("<![CDATA[")) {
            PulaAte("]]>", "CDATA sem fim");
        } else if (resto.starts_with("<!")) {
            PulaAte(">", "declaração sem fim");
        } else {
            break;
        }
    }
    ++posicao_;
    fecha_ = posicao_ < texto_.size() && texto_[posicao_] == '/';
    if (fecha_) ++posicao_;
    nome_ = LeNome();
    if (nome_.empty()) throw TErroTrecho{Onde(), "marca sem nome"};
    dentro_ = true;
    return true;
}

bool TFichasXml::Atributo(std::string_view& nome, std::string_view& valor) {
    if (!dentro_) return false;
    PulaBrancos();
    if (texto_.substr(posicao_).starts_with("/>") || texto_.substr(posicao_).starts_with(">")) {
        posicao_ += texto_[posicao_] == '/' ? 2 : 1;
        dentro_ = false;
        return false;
    }
    nome = LeNome();
    PulaBrancos();
    const bool igual = posicao_ < texto_.size() && texto_[posicao_] == '=';
    if (nome.empty() || !igual)
        throw TErroTrecho{Onde(), "marca '" + TextoDeBytes(nome_.substr(0, 40)) + "' incompleta"};
    ++posicao_;
    PulaBrancos();
    const char aspas = posicao_ < texto_.size() ? texto_[posicao_] : '\0';
    if (aspas != '"' && aspas != '\'') throw TErroTrecho{Onde(), "atributo sem aspas"};
    const auto inicio = ++posicao_;
    PulaAte(std::string_view(&aspas, 1), "atributo sem fim");
    valor = texto_.substr(inicio, posicao_ - 1 - inicio);
    return true;
}

void TFichasXml::Termina() {
    std::string_view nome, valor;
    while (Atributo(nome, valor)) continue;
}

std::string_view CodificacaoDeclarada(std::string_view texto) {
    while (!texto.empty() && Branco(texto.front())) texto.remove_prefix(1);
    if (!texto.starts_with("<?xml")) return {};
    const auto declaracao = texto.substr(0, texto.find("?>"));
    const auto chave = declaracao.find("encoding");
    if (chave == std::string_view::npos) return {};
    const auto abre = declaracao.find_first_of("\"'", chave);
    if (abre == std::string_view::npos) return {};
    const auto fecha = declaracao.find(declaracao[abre], abre + 1);
    return declaracao.substr(abre + 1, std::min(fecha, declaracao.size()) - abre - 1);
}

}  // namespace wkd
