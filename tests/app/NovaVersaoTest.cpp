#include "window/NovaVersao.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QTcpServer>
#include <QTcpSocket>

#include "JanelaApoio.h"

namespace wkd {
namespace {

TEST(NovaVersaoTest, OnlyANewerVersionCounts) {
    EXPECT_EQ(VersaoMaisNova("7.18\r\n"), "7.18");
    EXPECT_EQ(VersaoMaisNova("10.0 notas"), "10.0");
    for (const char* texto : {"7.17", "7.9", "", "<html>", "7.17\n9.9"}) EXPECT_FALSE(VersaoMaisNova(texto)) << texto;
}

TEST(NovaVersaoTest, TheWindowAsksTheConfiguredAddressAndTellsWhatItFinds) {
    TInstalacao instalacao;
    QTcpServer servidor;
    Aplicacao();
    ASSERT_TRUE(servidor.listen(QHostAddress::LocalHost));
    const auto espera = [](const std::function<bool()>& chegou) {
        QElapsedTimer relogio;
        for (relogio.start(); !chegou() && relogio.elapsed() < 5'000;) QApplication::processEvents();
    };
    const auto aberta = [&] {
        auto janela = std::make_unique<TJanelaDeTeste>(instalacao);
        janela->Mostra();
        return janela;
    };
    {
        const auto janela = aberta();
        EXPECT_FALSE(servidor.hasPendingConnections()) << "contacted without an address";
    }
    instalacao.Aliases().INIGravaString("MENU", "UrlVersao",
                                        "http://127.0.0.1:" + std::to_string(servidor.serverPort()) + "/versao");
    const auto janela = aberta();
    espera([&] { return servidor.hasPendingConnections(); });
    ASSERT_TRUE(servidor.hasPendingConnections());
    QTcpSocket* cliente = servidor.nextPendingConnection();
    espera([&] { return cliente->bytesAvailable() > 0; });
    const QByteArray pedido = cliente->readAll().toLower();
    EXPECT_TRUE(pedido.contains("accept: */zip") && pedido.contains("content-type: application/x-zip"));
    cliente->write("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n7.");
    espera([&] { return janela->Janela().Http().TamanhoEsperado() > 0; });
    EXPECT_EQ(janela->Janela().Http().TamanhoEsperado(), 5);
    cliente->write("99\n");
    auto& aviso = janela->C<QLabel>("lblNovaVersao");
    espera([&] { return !aviso.text().isEmpty(); });
    EXPECT_EQ(aviso.text(), "Versão 7.99 disponível");
    EXPECT_EQ(janela->Janela().Http().TamanhoEsperado(), 0);
}

}  // namespace
}  // namespace wkd
