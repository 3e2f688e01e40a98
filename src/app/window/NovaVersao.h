#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

#include "aliases/Aliases.h"

class QUrl;

namespace wkd {

/// HTTP client of the window. Keeps the size that the transfer under way is expected to have.
class TClienteHttp : public QObject {
  public:
    using TRecebido = std::function<void(const QByteArray&)>;

    explicit TClienteHttp(QObject* pai) : QObject(pai) {}

    /// Returns at once; `recebido` is called when all has come, and never when the transfer fails.
    void Busca(const QUrl& url, TRecebido recebido);
    /// In bytes; 0 when nothing is transferred or the server does not tell.
    double TamanhoEsperado() const { return tamanhoEsperado_; }

  private:
    double tamanhoEsperado_ = 0;
};

/// The version named at the start of `texto` when it is newer than this program's.
std::optional<QString> VersaoMaisNova(const QByteArray& texto);

/// Asks the address under "UrlVersao" of the settings file's section "MENU" for the newest version of the program.
/// Without address nothing is contacted, and what fails is silent. Returns at once.
void VerificaNovaVersao(const TAliases& aliases, TClienteHttp& http, std::function<void(const QString&)> achou);

}  // namespace wkd
