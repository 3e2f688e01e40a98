// What a session asks of its attachment, without a statement: what server and database are, and how the database fares.
#include <algorithm>
#include <array>
#include <cctype>

#include "firebird/ClienteFirebird.h"
#include "firebird/ConexaoFirebird.h"
#include "firebird/ErroFirebird.h"
#include "firebird/SessaoFirebird.h"

namespace wkd {

namespace {

using TChamada = TRelogioDeEspera::TChamada;

std::int64_t NumeroDosBytes(std::string_view bytes) {
    return Cliente().isc_portable_integer(reinterpret_cast<const ISC_UCHAR*>(bytes.data()),
                                          static_cast<short>(bytes.size()));
}

/// The first of the texts that an item holds: how many there are, and each with its length before it.
std::string PrimeiroTexto(std::string_view bytes) {
    return bytes.size() < 2 ? "" : std::string(bytes.substr(2, static_cast<unsigned char>(bytes[1])));
}

/// "3.0.11" of "LI-V3.0.11.33703 Firebird 3.0".
std::string VersaoNoTexto(std::string_view texto) {
    const auto de = std::min(texto.find_first_of("0123456789"), texto.size());
    auto ate = de;
    for (int pontos = 0;
         ate < texto.size() && (std::isdigit(static_cast<unsigned char>(texto[ate])) || texto[ate] == '.'); ++ate)
        if (texto[ate] == '.' && ++pontos == 3) break;
    return std::string(texto.substr(de, ate - de));
}

/// "3.0" of "LI-V6.3.11.33703 Firebird 3.0": the number before the name is another one.
std::string_view DepoisDoNome(std::string_view texto) {
    constexpr std::string_view kNome = "Firebird ";
    const auto nome = texto.find(kNome);
    return nome == std::string_view::npos ? "" : texto.substr(nome + kNome.size());
}

}  // namespace

std::multimap<char, std::string> TSessaoFirebird::Informacoes(std::string_view itens) {
    std::multimap<char, std::string> lidas;
    TEstadoFirebird estado;
    std::array<char, 4096> resposta = {};
    const TChamada chamada(relogio_);
    if (Cliente().isc_database_info(estado, &banco_, static_cast<short>(itens.size()), itens.data(),
                                    static_cast<short>(resposta.size()), resposta.data()) != 0)
        return lidas;
    const std::string_view bytes(resposta.data(), resposta.size());
    for (std::size_t aqui = 0;
         aqui + 3 <= bytes.size() && bytes[aqui] != isc_info_end && bytes[aqui] != isc_info_truncated;) {
        const auto tamanho = static_cast<std::size_t>(Cliente().isc_vax_integer(&resposta.at(aqui + 1), 2));
        if (bytes[aqui] != isc_info_error) lidas.emplace(bytes[aqui], bytes.substr(aqui + 3, tamanho));
        aqui += 3 + tamanho;
    }
    return lidas;
}

std::int64_t TSessaoFirebird::Informacao(char qual) {
    const auto lidas = Informacoes({&qual, 1});
    return lidas.empty() ? 0 : NumeroDosBytes(lidas.begin()->second);
}

std::string TSessaoFirebird::Servidor() const {
    const std::string banco = parametros_.Valor("Database"), servidor = banco.substr(0, banco.find(':'));
    const bool embarcado = servidor.size() == banco.size() || servidor.size() == 1;
    return embarcado ? "" : servidor.substr(0, servidor.find('/'));
}

/// What does not change while the connection lasts, in one question.
TCapacidades TSessaoFirebird::Capacidades() {
    constexpr char kItens[] = {isc_info_attachment_id, isc_info_ods_version,    isc_info_ods_minor_version,
                               isc_info_page_size,     isc_info_db_sql_dialect, isc_info_firebird_version,
                               isc_info_db_id};
    const auto lidas = Informacoes({kItens, sizeof kItens});
    const auto bytes = [&](char item) {
        const auto achado = lidas.find(item);
        return achado == lidas.end() ? std::string() : achado->second;
    };
    const auto numero = [&](char item) { return static_cast<int>(NumeroDosBytes(bytes(item))); };
    numero_ = NumeroDosBytes(bytes(isc_info_attachment_id));
    TCapacidades capacidades;
    capacidades.servidor = VersaoNoTexto(PrimeiroTexto(bytes(isc_info_firebird_version)));
    capacidades.versao = NumeroDaVersao(capacidades.servidor);
    capacidades.cliente = VersaoDoClienteFirebird();
    capacidades.versaoDoCliente = NumeroDaVersao(DepoisDoNome(capacidades.cliente));
    capacidades.estrutura = 100 * numero(isc_info_ods_version) + numero(isc_info_ods_minor_version);
    capacidades.estruturaDoServidor = EstruturaDoFirebird(capacidades.versao);
    capacidades.pagina = numero(isc_info_page_size);
    capacidades.dialeto = numero(isc_info_db_sql_dialect);
    capacidades.embarcado = Servidor().empty();
    capacidades.arquivo = PrimeiroTexto(bytes(isc_info_db_id));
    return capacidades;
}

/// The second question reads the state of every transaction from the oldest on.
TSaude TSessaoFirebird::Saude() {
    constexpr char kItens[] = {isc_info_forced_writes,  isc_info_oldest_transaction,
                               isc_info_oldest_active,  isc_info_next_transaction,
                               isc_info_sweep_interval, static_cast<char>(fb_info_pages_free)};
    const auto lidas = Informacoes({kItens, sizeof kItens});
    const auto numero = [&](int item) -> std::optional<std::int64_t> {
        const auto achado = lidas.find(static_cast<char>(item));
        return achado == lidas.end() ? std::nullopt : std::optional(NumeroDosBytes(achado->second));
    };
    TSaude saude;
    if (const auto forcadas = numero(isc_info_forced_writes)) saude.escritasForcadas = *forcadas != 0;
    saude.maisAntiga = numero(isc_info_oldest_transaction);
    saude.ativaMaisAntiga = numero(isc_info_oldest_active);
    saude.proxima = numero(isc_info_next_transaction);
    saude.intervaloDeSweep = numero(isc_info_sweep_interval);
    if (const auto livres = numero(fb_info_pages_free)) saude.livresNoArquivo = *livres * dialeto_.Capacidades().pagina;
    if (!lidas.empty())
        saude.emLimbo = static_cast<std::int64_t>(Informacoes(std::string(1, isc_info_limbo)).count(isc_info_limbo));
    return saude;
}

}  // namespace wkd
