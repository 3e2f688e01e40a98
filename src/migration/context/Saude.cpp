#include "context/Saude.h"

#include <algorithm>

#include "dialect/Dialeto.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

constexpr std::int64_t kSweepDeFabrica = 20'000;

/// Twice what the server lets pass until it sweeps by itself.
void Transacoes(TAvisos& avisos, const TSaude& saude) {
    if (!saude.maisAntiga || !saude.proxima || !saude.ativaMaisAntiga) return;
    const auto intervalo = saude.intervaloDeSweep.value_or(0);
    const auto limite = 2 * (intervalo > 0 ? intervalo : kSweepDeFabrica);
    const auto atraso = *saude.proxima - *saude.maisAntiga;
    if (atraso <= limite) return;
    const bool presa = *saude.proxima - *saude.ativaMaisAntiga > limite;
    avisos.push_back({"transacoes-paradas",
                      "a transação mais antiga está " + ComMilhares(atraso) + " atrás da próxima" +
                          (presa ? ": há uma transação aberta desde então; feche os programas que usam o banco"
                                 : ": limpe as versões antigas dos registros com gfix -sweep"),
                      TPeso::Alerta});
}

void Limbo(TAvisos& avisos, const TSaude& saude) {
    if (saude.emLimbo.value_or(0) == 0) return;
    avisos.push_back({"transacoes-em-limbo",
                      "transações em duas fases sem desfecho: " + ComMilhares(*saude.emLimbo) +
                          "; o que elas mudaram não se lê. Veja-as com gfix -list e resolva com gfix -commit ou "
                          "-rollback",
                      TPeso::Impede});
}

void Estrutura(TAvisos& avisos, const TCapacidades& capacidades) {
    if (capacidades.estrutura == 0 || capacidades.estrutura >= capacidades.estruturaDoServidor) return;
    avisos.push_back({"estrutura-antiga", "o arquivo tem a estrutura (ODS) " + TextoDaVersao(capacidades.estrutura) +
                                              " e o servidor faz a " + TextoDaVersao(capacidades.estruturaDoServidor) +
                                              ": um backup com restauração neste servidor o põe em dia"});
}

void Cliente(TAvisos& avisos, const TCapacidades& capacidades) {
    if (capacidades.versaoDoCliente == 0 || capacidades.versaoDoCliente >= capacidades.versao) return;
    avisos.push_back({"cliente-antigo", "a biblioteca cliente é do Firebird " +
                                            TextoDaVersao(capacidades.versaoDoCliente) + " e o servidor é o " +
                                            capacidades.servidor + ": instale o cliente da versão do servidor"});
}

void SqlServer(TAvisos& avisos, const TSaude& saude, const TCapacidades& capacidades) {
    constexpr double kLogCheio = 80;
    const int doServidor = capacidades.versao / 100 * 10;
    if (saude.compatibilidade && *saude.compatibilidade < doServidor)
        avisos.push_back({"nivel-de-compatibilidade", "o banco está no nível de compatibilidade " +
                                                          std::to_string(*saude.compatibilidade) +
                                                          ", e o servidor é do " + std::to_string(doServidor)});
    const bool completa = saude.recuperacao == "FULL" || saude.recuperacao == "BULK_LOGGED";
    if (saude.logUsado.value_or(0) >= kLogCheio)
        avisos.push_back({"log-cheio",
                          "o log de transações está usado em " + ComMilhares(std::int64_t(*saude.logUsado)) + " %" +
                              (completa ? ", e só um backup do log o libera: faça-o antes" : ": aumente-o antes"),
                          TPeso::Alerta});
    if (completa)
        avisos.push_back({"recuperacao-completa", "o modelo de recuperação é " + saude.recuperacao +
                                                      ": cada registro copiado fica no log até o backup dele"});
    if (saude.instantaneo && !*saude.instantaneo)
        avisos.push_back({"sem-instantaneo",
                          "o isolamento de instantâneo está desligado (ALLOW_SNAPSHOT_ISOLATION): o que outros gravam "
                          "durante um backup ou uma conferência aparece como diferença"});
    if (!saude.semAcentos.empty())
        avisos.push_back({"chaves-sem-acentos",
                          "nestas chaves \"José\" e \"Jose\" são o mesmo valor: " + Junta(saude.semAcentos, ", ")});
}

}  // namespace

TAvisos AvisosDaSaude(const TSaude& saude, const TCapacidades& capacidades) {
    TAvisos avisos;
    Limbo(avisos, saude);
    if (saude.umSoUsuario.value_or(false) && !capacidades.embarcado)
        avisos.push_back({"um-so-usuario",
                          "o banco só aceita uma conexão, e a atualização precisa de outra para a trava. Abra-o "
                          "(Firebird: gfix -online; SQL Server: ALTER DATABASE ... SET MULTI_USER)",
                          TPeso::Impede});
    Transacoes(avisos, saude);
    if (saude.escritasForcadas && !*saude.escritasForcadas)
        avisos.push_back(
            {"escritas-nao-forcadas",
             "as escritas não são forçadas: uma queda da máquina pode estragar o banco. gfix -write sync"});
    Estrutura(avisos, capacidades);
    Cliente(avisos, capacidades);
    SqlServer(avisos, saude, capacidades);
    if (!saude.naoSabidos.empty())
        avisos.push_back({"nao-sabido", "o servidor não diz a este usuário: " + Junta(saude.naoSabidos, ", ")});
    return avisos;
}

TAvisos AvisosDoDriver(TConnection& conexao) {
    constexpr std::uintmax_t kMega = 1024 * 1024;
    auto avisos = AvisosDaSaude(conexao.Saude(), Dialeto(conexao).Capacidades());
    if (const auto livre = conexao.EspacoLivre(); livre && *livre < kDiscoMinimo)
        avisos.push_back({"disco-cheio",
                          "o disco do banco tem " + std::to_string(*livre / kMega) +
                              " MB livres, e a atualização não " + "toca em nenhuma tabela com menos de " +
                              std::to_string(kDiscoMinimo / kMega) + " MB",
                          TPeso::Impede});
    return avisos;
}

TAvisos AvisosDoCatalogo(TConnection& conexao) {
    TCapacidades servidor = Dialeto(conexao).Capacidades();
    servidor.versaoDoCliente = servidor.estrutura = 0;  // told with what the driver knows
    return AvisosDaSaude(Dialeto(conexao).Saude(conexao), servidor);
}

TAvisos AvisosDosFormatos(const std::map<std::string, std::int64_t>& formatos) {
    std::vector<std::string> perto;
    for (const auto& [tabela, quantos] : formatos)
        if (quantos >= kFormatosPerto) perto.push_back(tabela + " " + std::to_string(quantos));
    if (perto.empty()) return {};
    return {{"versoes-perto-do-fim",
             "tabelas que quase esgotaram as " + std::to_string(kFormatos) +
                 " versões que o banco guarda: " + Junta(perto, ", ") + "; um backup com restauração as zera",
             TPeso::Alerta}};
}

}  // namespace wkd
