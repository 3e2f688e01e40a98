#include "values/Erros.h"

#include <system_error>

#include "values/Texto.h"

namespace wkd {

TErro JuntaErros(const std::vector<TErro>& erros) {
    std::vector<std::string> textos;
    for (const TErro& erro : erros) textos.push_back(erro.mensagem);
    TErro todos = erros.front();
    todos.mensagem = Junta(textos, "\n");
    return todos;
}

TErro ErroDe(const std::exception& erro) {
    if (const auto* conhecido = dynamic_cast<const TErroConhecido*>(&erro)) return conhecido->Dados();
    TErro dados{.mensagem = erro.what()};
    if (const auto* doSistema = dynamic_cast<const std::system_error*>(&erro)) {
        const auto codigo = doSistema->code();
        const bool cheio = codigo == std::errc::no_space_on_device || codigo == std::errc::file_too_large;
        dados.falha = cheio ? TFalha::DiscoCheio : TFalha::Arquivo;
        dados.codigoNativo = codigo.value();
    }
    return dados;
}

}  // namespace wkd
