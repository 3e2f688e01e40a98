#include "firebird/ConteudoFirebird.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "driver/ValorDoDriver.h"
#include "firebird/ClienteFirebird.h"
#include "firebird/ErroFirebird.h"
#include "values/Texto.h"

namespace wkd {
namespace {

/// Above 65,535 bytes the network protocol cuts a segment silently.
constexpr std::size_t kSegmento = 32 * 1024;
constexpr std::string_view kLeitura = "leitura de um blob";
/// Bytes, whatever the blob holds. Otherwise the server turns a text into the connection's character set, also when the
/// statement has cast it to bytes: that changes the description and not the blob.
constexpr ISC_UCHAR kComoEsta[] = {isc_bpb_version1, isc_bpb_source_type, 1, isc_blob_untyped, isc_bpb_target_type, 1,
                                   isc_blob_untyped};

using TChamada = TRelogioDeEspera::TChamada;

/// Open blob of a transaction; one that was being written is gone unless Fecha() was called.
class TBlobAberto {
  public:
    explicit TBlobAberto(TSessaoFirebird& sessao) : sessao_(sessao) {}
    ~TBlobAberto() {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        if (handle_ != 0) Cliente().isc_cancel_blob(estado, &handle_);
    }
    TBlobAberto(const TBlobAberto&) = delete;
    TBlobAberto& operator=(const TBlobAberto&) = delete;

    void Abre(TTransacaoFirebird& transacao, ISC_QUAD id, TTipoBlob tipo) {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        const ISC_USHORT bytes = tipo.texto ? 0 : sizeof kComoEsta;
        Cliente().isc_open_blob2(estado, sessao_.Banco(), transacao.Handle(), &handle_, &id, bytes, kComoEsta);
        sessao_.Confere(estado, kLeitura);
    }

    /// Next bytes; 0 at the end.
    std::size_t Le(std::span<char> destino) {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        unsigned short lidos = 0;
        const auto cabem = static_cast<unsigned short>(std::min(destino.size(), kSegmento));
        while (lidos == 0) {
            const auto codigo = Cliente().isc_get_segment(estado, &handle_, &lidos, cabem, destino.data());
            if (codigo == isc_segstr_eof) return 0;
            if (codigo != isc_segment) sessao_.Confere(estado, kLeitura);
        }
        return lidos;
    }

    ISC_QUAD Cria(TTransacaoFirebird& transacao, std::string_view comando) {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        ISC_QUAD id{};
        Cliente().isc_create_blob2(estado, sessao_.Banco(), transacao.Handle(), &handle_, &id, 0, nullptr);
        sessao_.Confere(estado, comando);
        return id;
    }

    void Escreve(std::string_view bytes, std::string_view comando) {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kSegmento))) {
            const auto parte = static_cast<unsigned short>(std::min(bytes.size(), kSegmento));
            Cliente().isc_put_segment(estado, &handle_, parte, bytes.data());
            sessao_.Confere(estado, comando);
        }
    }

    void Fecha(std::string_view comando) {
        const TChamada chamada(sessao_.Relogio());
        TEstadoFirebird estado;
        Cliente().isc_close_blob(estado, &handle_);
        sessao_.Confere(estado, comando);
    }

  private:
    TSessaoFirebird& sessao_;
    isc_blob_handle handle_ = 0;
};

/// Reads a blob; both its handle and the transaction made for it end with the last byte.
class TLeitorDeBlob : public TLeitorBytes {
  public:
    TLeitorDeBlob(std::shared_ptr<TSessaoFirebird> sessao, TTransacaoFirebird* transacao, ISC_QUAD id, TTipoBlob tipo)
        : sessao_(std::move(sessao)), conjunto_(ConjuntoDoNumero(tipo.conjunto)) {
        if (!transacao) propria_.emplace(*sessao_, TTransacaoFirebird::TModo::Leitura);
        blob_.emplace(*sessao_);
        blob_->Abre(transacao ? *transacao : *propria_, id, tipo);
    }

    std::size_t Le(std::span<char> destino) override {
        if (conjunto_ == TConjunto::Utf8 || conjunto_ == TConjunto::Octetos) return LeDoServidor(destino);
        if (entregue_ == convertido_.size() && !Converte()) return 0;
        const auto quantos = std::min(destino.size(), convertido_.size() - entregue_);
        std::memcpy(destino.data(), convertido_.data() + entregue_, quantos);
        entregue_ += quantos;
        return quantos;
    }

  private:
    std::size_t LeDoServidor(std::span<char> destino) {
        const auto lidos = blob_ ? blob_->Le(destino) : 0;
        if (lidos == 0) {
            blob_.reset();
            propria_.reset();
        }
        return lidos;
    }

    bool Converte() {
        std::array<char, 8192> pedaco;
        convertido_ = ParaUtf8(conjunto_, {pedaco.data(), LeDoServidor(pedaco)});
        entregue_ = 0;
        return !convertido_.empty();
    }

    std::shared_ptr<TSessaoFirebird> sessao_;
    TConjunto conjunto_;
    std::optional<TTransacaoFirebird> propria_;
    std::optional<TBlobAberto> blob_;  // after the transaction: closed before it ends
    std::string convertido_;
    std::size_t entregue_ = 0;
};

/// Blob of a table.
class TConteudoNoServidor : public TConteudo {
  public:
    TConteudoNoServidor(std::shared_ptr<TSessaoFirebird> sessao, ISC_QUAD id, TTipoBlob tipo)
        : sessao_(std::move(sessao)), id_(id), tipo_(tipo) {}

    std::unique_ptr<TLeitorBytes> Abre() const override {
        return std::make_unique<TLeitorDeBlob>(sessao_, sessao_->transacao.get(), id_, tipo_);
    }

    const ISC_QUAD* Id(const TSessaoFirebird& sessao, TTipoBlob tipo) const {
        return &sessao == sessao_.get() && tipo == tipo_ ? &id_ : nullptr;
    }

  private:
    std::shared_ptr<TSessaoFirebird> sessao_;
    ISC_QUAD id_;
    TTipoBlob tipo_;
};

/// The relation number in a blob's id is 0 until the blob belongs to a row of a table.
bool Temporario(const ISC_QUAD& id) { return (id.gds_quad_high & 0xFFFF) == 0; }

void EscreveTexto(TBlobAberto& blob, TLeitorBytes& fonte, TTipoBlob tipo, std::string_view comando) {
    std::array<char, kSegmento / 2> pedaco;
    std::string resto;
    while (const auto lidos = fonte.Le(pedaco)) {
        resto.append(pedaco.data(), lidos);
        const auto inteiros = CaracteresInteiros(resto);
        blob.Escreve(BytesDoBlob(tipo, std::string_view(resto).substr(0, inteiros)), comando);
        resto.erase(0, inteiros);
    }
    blob.Escreve(BytesDoBlob(tipo, resto), comando);
}

}  // namespace

TTipoBlob TipoDoBlob(const XSQLVAR& var) {
    if (var.sqlsubtype != isc_blob_text) return {};
    return {true, var.sqlscale};
}

std::shared_ptr<const TConteudo> ConteudoDoBlob(const std::shared_ptr<TSessaoFirebird>& sessao, const XSQLVAR& var,
                                                TTransacaoFirebird& transacao) {
    ISC_QUAD id;
    std::memcpy(&id, var.sqldata, sizeof id);
    if (!Temporario(id)) return std::make_shared<TConteudoNoServidor>(sessao, id, TipoDoBlob(var));
    TLeitorDeBlob leitor(sessao, &transacao, id, TipoDoBlob(var));
    return std::make_shared<TConteudoCopiado>(leitor);
}

const ISC_QUAD* IdDoConteudo(const TConteudo& conteudo, const TSessaoFirebird& sessao, TTipoBlob tipo) {
    const auto* noServidor = dynamic_cast<const TConteudoNoServidor*>(&conteudo);
    return noServidor ? noServidor->Id(sessao, tipo) : nullptr;
}

std::string BytesDoBlob(TTipoBlob tipo, std::string_view bytes) {
    const auto conjunto = ConjuntoDoNumero(tipo.conjunto);
    return conjunto == TConjunto::Octetos ? std::string(bytes) : DeUtf8(conjunto, TextoDeBytes(bytes));
}

ISC_QUAD CriaBlob(TSessaoFirebird& sessao, TTransacaoFirebird& transacao, TLeitorBytes& fonte, TTipoBlob tipo,
                  std::string_view comando) {
    TBlobAberto blob(sessao);
    const auto id = blob.Cria(transacao, comando);
    if (ConjuntoDoNumero(tipo.conjunto) != TConjunto::Octetos) {
        EscreveTexto(blob, fonte, tipo, comando);
    } else {
        std::array<char, kSegmento> pedaco;
        while (const auto lidos = fonte.Le(pedaco)) blob.Escreve({pedaco.data(), lidos}, comando);
    }
    blob.Fecha(comando);
    return id;
}

}  // namespace wkd
