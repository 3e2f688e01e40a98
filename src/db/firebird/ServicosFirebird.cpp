#include "firebird/ServicosFirebird.h"

#include <ibase.h>

#include <algorithm>
#include <array>

#include "firebird/ClienteFirebird.h"
#include "firebird/ErroFirebird.h"
#include "firebird/SessaoFirebird.h"

namespace wkd {

namespace {

constexpr std::size_t kResposta = 60'000;
constexpr std::size_t kEnvio = 32'000;

void AdicionaTexto(std::string& pedido, char item, std::string_view texto) {
    pedido += item;
    pedido += static_cast<char>(texto.size() & 0xFF);
    pedido += static_cast<char>(texto.size() >> 8);
    pedido += texto;
}

void AdicionaNumero(std::string& pedido, char item, std::uint32_t numero) {
    pedido += item;
    for (int i = 0; i < 4; ++i) pedido += static_cast<char>(numero >> 8 * i);
}

/// Where the host ends; one letter before ":" is a drive.
std::size_t FimDoServidor(std::string_view banco) {
    const auto doisPontos = banco.find(':');
    return doisPontos == std::string_view::npos || doisPontos < 2 ? 0 : doisPontos + 1;
}

/// An answer is waited for no longer than a second, so that a wish to end is heard.
std::string ComPrazo(std::string envia) {
    AdicionaTexto(envia, isc_info_svc_timeout, std::string_view("\1\0\0\0", 4));
    return envia + static_cast<char>(isc_info_end);
}

/// Without sign: an answer may have more than 32,767 bytes.
std::size_t Inteiro(const char* bytes, int quantos) {
    std::size_t numero = 0;
    while (quantos-- > 0) numero = numero << 8 | static_cast<unsigned char>(bytes[quantos]);
    return numero;
}

/// Begins the line that the service writes once it has made the database; it has no code. Names stand behind it.
constexpr std::string_view kCriou = "gbak:created database ";

/// Items of an answer, one by one.
struct TResposta {
    std::string_view texto;   // lines or bytes of the service
    std::size_t entrada = 0;  // bytes that the service waits for
    bool continua = false;    // it has not ended yet
};

TResposta Interpreta(const std::string& bytes) {
    TResposta resposta;
    for (const char* p = bytes.data(); p < bytes.data() + bytes.size() && *p != isc_info_end;) {
        switch (*p++) {
            case isc_info_svc_stdin:
                resposta.entrada = Inteiro(p, 4);
                p += 4;
                break;
            case isc_info_svc_line:
            case isc_info_svc_to_eof: {
                const auto tamanho = Inteiro(p, 2);
                resposta.texto = {p + 2, tamanho};
                p += 2 + tamanho;
                break;
            }
            default:  // time is up, or there is more to come
                resposta.continua = true;
        }
    }
    resposta.continua = resposta.continua || resposta.entrada > 0 || !resposta.texto.empty();
    return resposta;
}

}  // namespace

std::string SemServidor(std::string_view banco) { return std::string(banco.substr(FimDoServidor(banco))); }

TServicosFirebird::TServicosFirebird(const TParametrosConexao& parametros)
    : usuario_(parametros.Valor("User_Name")), senha_(parametros.Valor("Password")), resposta_(kResposta, '\0') {
    const std::string banco = parametros.Valor("Database");
    servico_ = banco.substr(0, FimDoServidor(banco)) + "service_mgr";
    banco_ = SemServidor(banco);
}

void TServicosFirebird::Liga() {
    std::string bloco{isc_spb_version, isc_spb_current_version};
    AdicionaAoBloco(bloco, isc_spb_user_name, usuario_);
    AdicionaAoBloco(bloco, isc_spb_password, senha_);
    AdicionaAoBloco(bloco, isc_spb_utf8_filename, "");
    TEstadoFirebird estado;
    Cliente().isc_service_attach(estado, 0, servico_.c_str(), &ligacao_, static_cast<unsigned short>(bloco.size()),
                                 bloco.data());
    try {
        Confere(estado, "");
    } catch (const TErroBanco& erro) {
        TErro dados = erro.Dados();
        if (dados.falha == TFalha::Conexao || dados.falha == TFalha::Outra) dados.falha = TFalha::SemServico;
        throw TErroBanco(std::move(dados));
    }
}

void TServicosFirebird::Desliga() noexcept {
    TEstadoFirebird estado;
    if (ligacao_ != 0) Cliente().isc_service_detach(estado, &ligacao_);
    ligacao_ = 0;
}

std::string TServicosFirebird::Pedido(char acao, std::string_view arquivo) const {
    std::string pedido(1, acao);
    AdicionaTexto(pedido, isc_spb_dbname, banco_);
    AdicionaTexto(pedido, isc_spb_bkp_file, arquivo);
    return pedido;
}

void TServicosFirebird::Comeca(const std::string& pedido) {
    Liga();
    TEstadoFirebird estado;
    Cliente().isc_service_start(estado, &ligacao_, nullptr, static_cast<unsigned short>(pedido.size()), pedido.data());
    Confere(estado, "");
}

void TServicosFirebird::Pergunta(const std::string& envia, const std::string& itens) {
    TEstadoFirebird estado;
    Cliente().isc_service_query(estado, &ligacao_, nullptr, static_cast<unsigned short>(envia.size()), envia.data(),
                                static_cast<unsigned short>(itens.size()), itens.data(),
                                static_cast<unsigned short>(resposta_.size()), resposta_.data());
    criou_ = criou_ || (TemCodigo(estado, isc_gbak_db_create_failed) && TemCodigo(estado, isc_io_write_err));
    Confere(estado, "");
}

void TServicosFirebird::FazBackup(const TRecebe& recebe, bool soEsquema) {
    std::string pedido = Pedido(isc_action_svc_backup, "stdout");
    AdicionaNumero(pedido, isc_spb_options,
                   isc_spb_bkp_no_garbage_collect | (soEsquema ? isc_spb_bkp_metadata_only : 0));
    Comeca(pedido);
    const std::string itens(1, isc_info_svc_to_eof), espera = ComPrazo({});
    for (;;) {
        Pergunta(espera, itens);
        const TResposta resposta = Interpreta(resposta_);
        recebe(resposta.texto);
        if (!resposta.continua) break;
    }
    Desliga();
}

void TServicosFirebird::Restaura(TLeitorBytes& fonte, const TLinha& linha) {
    std::string pedido = Pedido(isc_action_svc_restore, "stdin");
    AdicionaNumero(pedido, isc_spb_options, isc_spb_res_create | isc_spb_res_no_shadow);
    pedido += isc_spb_verbose;
    Comeca(pedido);
    try {
        Alimenta(fonte, linha);
    } catch (const TErroBanco&) {
        throw;
    } catch (...) {
        EncerraEntrada();
        throw;
    }
    Desliga();
}

void TServicosFirebird::Alimenta(TLeitorBytes& fonte, const TLinha& linha) {
    const std::string itens{isc_info_svc_stdin, isc_info_svc_line};
    std::array<char, kEnvio> pedaco;
    std::string envia;
    for (;;) {
        Pergunta(ComPrazo(envia), itens);
        const TResposta resposta = Interpreta(resposta_);
        criou_ = criou_ || resposta.texto.starts_with(kCriou);
        linha(resposta.texto);
        if (!resposta.continua) return;
        envia.clear();
        if (resposta.entrada == 0) continue;
        const auto lidos = fonte.Le(std::span(pedaco).first(std::min(resposta.entrada, pedaco.size())));
        AdicionaTexto(envia, isc_info_svc_line, {pedaco.data(), lidos});
    }
}

/// The service has let go of the database when it has met the end of its input.
void TServicosFirebird::EncerraEntrada() noexcept {
    class TNada : public TLeitorBytes {
        std::size_t Le(std::span<char>) override { return 0; }
    } nada;
    try {
        Alimenta(nada, [](std::string_view) {});
    } catch (const std::exception&) {  // that there was no more
    }
    Desliga();
}

void ApagaBancoFirebird(const TParametrosConexao& parametros) {
    const auto bloco = BlocoDeConexao(parametros, "UTF8");
    const auto arquivo = parametros.Valor("Database");
    isc_db_handle banco = 0;
    TEstadoFirebird estado;
    Cliente().isc_attach_database(estado, 0, arquivo.c_str(), &banco, static_cast<short>(bloco.size()), bloco.data());
    Confere(estado, "");
    Cliente().isc_drop_database(estado, &banco);
    if (banco == 0) return Confere(estado, "drop database");
    const TErroBanco erro = ErroFirebird(estado, "drop database");
    TEstadoFirebird ignorado;
    Cliente().isc_detach_database(ignorado, &banco);
    throw erro;
}

}  // namespace wkd
