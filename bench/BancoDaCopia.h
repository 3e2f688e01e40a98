#pragma once

#include <memory>
#include <string>

#include "Bancada.h"
#include "TelaMuda.h"
#include "context/Contexto.h"

namespace wkd {

/// A database whose table TCLI has twelve columns (a blob of 200 bytes among them), its stored dictionary, and a
/// package in memory that has it rebuilt.
class TBancoDaCopia {
  public:
    TBancoDaCopia(const TLugar& lugar, int linhas);

    TContexto& Contexto() { return ctx_; }
    TConnection& Conexao() { return dm_.SQLConnection1; }
    void Executa(std::string_view sql) { Conexao().ExecuteDirect(sql); }
    std::int64_t Conta(const std::string& tabela);
    /// Throws std::runtime_error with what was reported since the beginning.
    void ConfereSemErros() const;

    /// An empty table of the same columns, with its key or without.
    void CriaVazia(const std::string& tabela, bool comChave);

  private:
    std::unique_ptr<TConnection> NovaConexao() const;
    void CriaBanco(const TLugar& lugar);
    void Enche(int linhas);
    void CarregaPacote();

    const TTipoBanco tipo_;
    TPastaTemporaria pasta_;
    std::unique_ptr<TBancoSqlServer> sqlServer_;  // or, on Firebird,
    TParametrosConexao parametros_;
    TAliases aliases_;
    TTelaMuda tela_;
    TDataModulo dm_;
    TOpcoes opcoes_;
    TEstado estado_;
    TContexto ctx_;
};

}  // namespace wkd
