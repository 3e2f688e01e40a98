#include "DesviosEmTexto.h"

#include <nlohmann/json.hpp>

#include "Formato.h"
#include "Versao.h"

namespace wkd {

std::string DesviosEmTexto(const std::string& alias, const std::vector<TDesvio>& desvios) {
    if (desvios.empty()) return "O banco de " + alias + " é o que o dicionário diz.\n";
    std::string texto;
    for (const auto& desvio : desvios)
        texto += desvio.tabela + (desvio.objeto.empty() ? "" : "." + desvio.objeto) + ": " + desvio.tipo + ": " +
                 desvio.texto + "\n";
    return texto + "\n" + ComMilhares(static_cast<std::int64_t>(desvios.size())) +
           (desvios.size() == 1 ? " desvio" : " desvios") + " do dicionário em " + alias + ".\n";
}

std::string DesviosEmJson(const std::string& alias, const std::vector<TDesvio>& desvios) {
    using TJson = nlohmann::ordered_json;
    TJson json = {{"programa", "AtualizaWKD " + std::string(kVersao)}, {"alias", alias}, {"desvios", TJson::array()}};
    for (const auto& desvio : desvios)
        json["desvios"].push_back(
            {{"tipo", desvio.tipo}, {"tabela", desvio.tabela}, {"objeto", desvio.objeto}, {"texto", desvio.texto}});
    return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace wkd
