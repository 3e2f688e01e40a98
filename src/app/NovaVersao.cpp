#include "NovaVersao.h"

#include <QUrl>
#include <QVersionNumber>

#include "TextoQt.h"
#include "Versao.h"

namespace wkd {

std::optional<QString> VersaoMaisNova(const QByteArray& texto) {
    const auto versao = QVersionNumber::fromString(QString::fromLatin1(texto.left(40)).trimmed());
    if (versao <= QVersionNumber::fromString(Q(kVersao))) return {};
    return versao.toString();
}

void VerificaNovaVersao(const TAliases& aliases, TClienteHttp& http, std::function<void(const QString&)> achou) {
    const QUrl url(Q(aliases.INILeString("MENU", "UrlVersao")));
    if (url.isEmpty() || !url.isValid()) return;
    http.Busca(url, [achou = std::move(achou)](const QByteArray& texto) {
        if (const auto versao = VersaoMaisNova(texto)) achou(*versao);
    });
}

}  // namespace wkd
