#include "Rede.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

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

void BuscaNaRede(QObject* dono, const QUrl& url, const wkd::TOuvinteDaBusca& ouvinte) {
    auto* rede = dono->findChild<QNetworkAccessManager*>();
    if (!rede) rede = new QNetworkAccessManager(dono);
    QNetworkReply* resposta = rede->get(Pedido(url));
    QObject::connect(resposta, &QNetworkReply::metaDataChanged, dono,
                     [=] { ouvinte.tamanho(resposta->header(QNetworkRequest::ContentLengthHeader).toDouble()); });
    QObject::connect(resposta, &QNetworkReply::finished, dono, [=] {
        ouvinte.tamanho(0);
        if (resposta->error() == QNetworkReply::NoError) ouvinte.recebido(resposta->readAll());
        resposta->deleteLater();
    });
}
