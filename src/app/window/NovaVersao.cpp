#include "window/NovaVersao.h"

#ifdef WKD_REDE
#include <dlfcn.h>
#endif

#include <QCoreApplication>
#include <QFile>
#include <QUrl>
#include <QVersionNumber>

#include "Rede.h"
#include "process/Programa.h"
#include "widgets/Dialogos.h"

namespace wkd {

namespace {

#ifdef WKD_REDE
/// Of the file beside the program, else, for one that was copied alone, of the folder where it was built; null where
/// there is neither.
decltype(&BuscaNaRede) Rede() {
    const QByteArray aoLado = QFile::encodeName(QCoreApplication::applicationDirPath() + "/" WKD_REDE);
    void* biblioteca = dlopen(aoLado.constData(), RTLD_NOW | RTLD_LOCAL);
    if (biblioteca == nullptr) biblioteca = dlopen(WKD_REDE, RTLD_NOW | RTLD_LOCAL);
    if (biblioteca == nullptr) return nullptr;
    return reinterpret_cast<decltype(&BuscaNaRede)>(dlsym(biblioteca, "BuscaNaRede"));
}
#else
decltype(&BuscaNaRede) Rede() { return &BuscaNaRede; }
#endif

}  // namespace

void TClienteHttp::Busca(const QUrl& url, TRecebido recebido) {
    const auto busca = Rede();
    if (busca) busca(this, url, {[this](double bytes) { tamanhoEsperado_ = bytes; }, std::move(recebido)});
}

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
