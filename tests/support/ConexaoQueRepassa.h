#pragma once

#include <memory>

#include "connection/Connection.h"

namespace wkd {

/// Hands everything on to another connection: a test overrides what is to be different.
class TConexaoQueRepassa : public TConnection {
  public:
    explicit TConexaoQueRepassa(std::unique_ptr<TConnection> outra) : outra_(std::move(outra)) {}

    void Open() override { outra_->Open(); }
    void Close() noexcept override { outra_->Close(); }
    bool Connected() const override { return outra_->Connected(); }
    TTipoBanco TipoBanco() const override { return outra_->TipoBanco(); }
    std::string VersaoServidor() override { return outra_->VersaoServidor(); }
    const TDialeto* DialetoDoServidor() const override { return outra_->DialetoDoServidor(); }
    void StartTransaction() override { outra_->StartTransaction(); }
    void StartInstantaneo() override { outra_->StartInstantaneo(); }
    void Commit() override { outra_->Commit(); }
    void Rollback() noexcept override { outra_->Rollback(); }
    bool InTransaction() const override { return outra_->InTransaction(); }
    void MarcaPonto(std::string_view nome) override { outra_->MarcaPonto(nome); }
    void VoltaAoPonto(std::string_view nome) override { outra_->VoltaAoPonto(nome); }
    std::unique_ptr<TReserva> Reserva(std::string_view tabela) override { return outra_->Reserva(tabela); }
    bool Trava(std::string_view anuncio) override { return outra_->Trava(anuncio); }
    void Anuncia(std::string_view anuncio) override { outra_->Anuncia(anuncio); }
    std::optional<std::string> QuemTrava() override { return outra_->QuemTrava(); }
    bool Perdida() const override { return outra_->Perdida(); }
    std::string Numero() const override { return outra_->Numero(); }
    bool SoLeitura() override { return outra_->SoLeitura(); }
    TSaude Saude() override { return outra_->Saude(); }
    std::optional<std::uintmax_t> EspacoLivre() override { return outra_->EspacoLivre(); }
    void ExecuteDirect(std::string_view sql) override { outra_->ExecuteDirect(sql); }
    std::unique_ptr<TComando> Prepara(std::string_view sql) override { return outra_->Prepara(sql); }
    std::vector<std::string> NomesDeTabelas() override { return outra_->NomesDeTabelas(); }
    bool ExisteTabela(std::string_view tabela) override { return outra_->ExisteTabela(tabela); }
    std::vector<TColunaFisica> Colunas(std::string_view tabela) override { return outra_->Colunas(tabela); }
    TColunasPorTabela TodasAsColunas() override { return outra_->TodasAsColunas(); }
    std::optional<TColunasPorTabela> ColunasDe(const std::vector<std::string>& tabelas) override {
        return outra_->ColunasDe(tabelas);
    }
    TChavePrimaria ChavePrimaria(std::string_view tabela) override { return outra_->ChavePrimaria(tabela); }
    TChavesPorTabela TodasAsChaves() override { return outra_->TodasAsChaves(); }
    std::vector<TIndice> Indices(std::string_view tabela) override { return outra_->Indices(tabela); }
    void Observa(TObservador observador) override { outra_->Observa(std::move(observador)); }

  private:
    std::unique_ptr<TConnection> outra_;
};

}  // namespace wkd
