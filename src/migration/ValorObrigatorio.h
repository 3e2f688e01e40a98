#pragma once

#include "Metadados.h"
#include "Texto.h"
#include "Valor.h"

namespace wkd {

/// What a required column gets when its value is missing: date and time when it is named "DATA" or "DT...", else "0";
/// a column that holds a date or a time, which "0" is not, gets them whatever its name.
inline TValor ValorObrigatorio(const TColunaFisica& coluna) {
    const std::string nome = Maiusculas(coluna.nome);
    const TDataHora agora = Agora();
    switch (coluna.tipo) {
        case TTipoDado::Data:
            return agora.data;
        case TTipoDado::Hora:
            return agora.hora;
        case TTipoDado::DataHora:
            return agora;
        case TTipoDado::Texto:
        case TTipoDado::Memo:
        case TTipoDado::Blob:
            if (nome != "DATA" && !nome.starts_with("DT")) return "0";
            return coluna.tamanho > 0 ? TValor(agora).ComoTexto().substr(0, static_cast<std::size_t>(coluna.tamanho))
                                      : TValor(agora).ComoTexto();
        default:
            return TValor("0").Converte(coluna.tipo);
    }
}

/// Whether a required column is without a value; blanks are one in a text.
inline bool SemValor(const TValor& valor, const TColunaFisica& coluna) {
    const bool texto = coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Memo ||
                       coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Bytes;
    return texto ? valor.Nulo() : valor.EmBranco();
}

}  // namespace wkd
