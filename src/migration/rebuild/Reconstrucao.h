#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "alter/ObjetosDaTabela.h"
#include "context/Contexto.h"
#include "copy/Conferencia.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rebuild/VoltaBackup.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

/// One rebuild. Up to the drop every error leaves the table as it is; behind it the rows are in the backup table, and
/// VERSAO -1 stays until they are back.
///
///     Inteira ------------------------------------------------------------------ drop --> Apagada
///     Retomando --+-- rows back, the package wants another layout --> Devolvida -- drop --> Apagada
///                 +-- the same, and the backup lacks something ----> Superada --- drop --> Apagada
///                 +-- rows back, or not: the rebuild ends ---------> Terminada
class TReconstrucao {
  public:
    TReconstrucao(TContexto& ctx, std::string_view nome)
        : ctx_(ctx), nome_(nome), tabela_(Maiusculas(nome)), backup_(NomeDaBackup(tabela_)) {}

    void Executa();

  private:
    enum class TFase {
        Inteira,    // the table is as the run found it
        Retomando,  // an earlier run dropped it: the rows are in the backup table, and some in the table, in use
        Devolvida,  // an earlier run's rows are back: table and backup are united, and the rebuild begins
        Superada,   // the same, but the table alone counts: the backup gives way
        Apagada,    // this run dropped it: the rows are in the backup table
        Terminada   // an earlier run's rebuild went to its end, or could not go on
    };
    bool RegistrosNaBackup() const { return fase_ == TFase::Retomando || fase_ == TFase::Apagada; }

    /// False when `passo` failed, which is reported and counts as a table that could not be dropped. A lost connection
    /// is thrown on.
    template <class TPasso, class TDesfaz>
    bool Tenta(TPasso&& passo, TDesfaz&& desfaz);
    void Falhou(TErro erro);
    /// What the rebuild leaves to be done by hand.
    void Avisa(TFalha falha, const std::string& linha);
    void Desiste();

    void Guarda();
    void GuardaObjetos();
    void GuardaOQueVolta();
    // Statements that bring back what goes with the table, kept at the backup table until they have run.
    std::vector<std::string> Devolucoes() { return ctx_.Dialeto().Notas(ctx_.Conexao(), backup_); }
    void GuardaDevolucoes(const std::vector<std::string>& comandos);
    std::vector<std::string> GuardaFontes(std::string_view tipo, const std::vector<TFonte>& fontes);
    bool Apaga();
    void ApagaEMarca();
    void RelataPerdas();

    void Ergue();
    void RegravaDicionarioNovo();
    std::vector<std::string> ColunasForaDoDicionario();
    bool Restaura(const TRestante& restante);
    TConferencia Confere();
    void CompletaIndices();
    void DevolveObjetos();
    void Termina(bool confere);
    std::vector<std::string> ColunasSoDe(const std::string& uma, const std::string& outra);
    void RelataColunas(const std::vector<std::string>& ficaram);

    // Retomada.cpp
    void Retoma();
    void RelataRetorno(const TRestante& restante);
    bool ColunasDoPacote();
    bool TemColunas(const std::vector<TColunaDicionario>& colunas);
    void DispensaBackup();

    TContexto& ctx_;
    std::string nome_;  // as the package writes it
    std::string tabela_, backup_;
    std::vector<std::string> chave_, chaveAntiga_, gatilhos_, propriedades_, comentarios_;
    std::set<std::string> alteradas_;
    std::unique_ptr<TReserva> reserva_;  // from before the first row is saved until the table is gone
    TFase fase_ = TFase::Inteira;
    bool existe_ = false;  // there is a table to save
    std::int64_t antes_ = 0;
};

}  // namespace wkd
