#include "NomeDeEntrada.h"

#include <algorithm>

#include "Texto.h"

namespace wkd {

TNomeDeEntrada AnalisaNomeDeEntrada(std::string_view nome) {
    TNomeDeEntrada entrada;
    const auto comBarras = Troca(nome, "\\", "/");
    entrada.pasta = comBarras.ends_with('/');
    if (comBarras.starts_with('/')) entrada.recusa = "caminho absoluto";
    if (comBarras.find(':') != std::string::npos) entrada.recusa = "nome de unidade de disco";
    if (std::any_of(nome.begin(), nome.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
        entrada.recusa = "caracteres de controle no nome";
    for (auto& parte : Divide(comBarras, '/')) {
        if (parte == "..") entrada.recusa = "sai da pasta de trabalho";
        if (!parte.empty() && parte != ".") entrada.partes.push_back(std::move(parte));
    }
    if (entrada.partes.empty() && entrada.recusa.empty()) entrada.recusa = "sem nome";
    return entrada;
}

std::string RecusaDoTipo(std::uint32_t atributos) {
    constexpr std::uint32_t kTipo = 0170000, kArquivo = 0100000, kPasta = 0040000, kLink = 0120000;
    const std::uint32_t tipo = (atributos >> 16) & kTipo;
    if (tipo == kLink) return "é um link";
    return tipo == 0 || tipo == kArquivo || tipo == kPasta ? "" : "não é um arquivo comum";
}

}  // namespace wkd
