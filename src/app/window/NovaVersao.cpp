#include "window/NovaVersao.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>
#include <QVersionNumber>

#include "process/Programa.h"
#include "widgets/Dialogos.h"

namespace wkd {

namespace {

constexpr int kEsperaMaximaMs = 15'000;

QNetworkRequest Pedido(const QUrl& url) {
    QNetworkRequest pedido(url);
    pedido.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-zip");
    pedido.setRawHeader("Accept", "*/zip");
    pedido.setTransferTimeout(kEsperaMaximaMs);
    return pedido;
}

}  // namespace

void TClienteHttp::Busca(const QUrl& url, TRecebido recebido) {
    if (!rede_) rede_ = new QNetworkAccessManager(this);
    QNetworkReply* resposta = rede_->get(Pedido(url));
    connect(resposta, &QNetworkReply::metaDataChanged, this,
            [this, resposta] { tamanhoEsperado_ = resposta->header(QNetworkRequest::ContentLengthHeader).toDouble(); });
    connect(resposta, &QNetworkReply::finished, this, [this, resposta, recebido = std::move(recebido)] {
        tamanhoEsperado_ = 0;
        if (resposta->error() == QNetworkReply::NoError) recebido(resposta->readAll());
        resposta->deleteLater();
    });
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
