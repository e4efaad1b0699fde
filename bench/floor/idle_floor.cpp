// The least a program can do to watch the bridge: the companion's status request, every 2 s, over
// one kept-alive connection, with the local key, the answer read and dropped. bench/idle.sh runs it
// beside the companion so that the companion's idle cost is read against what Qt alone costs.
// Never part of the product.
//
// Usage: bench_idle_floor [--widgets] KEYFILE [URL]   (URL defaults to the bridge's status path)
// With --widgets it is a widgets application showing one empty window, the floor for the GUI.

#include <QApplication>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <cstring>
#include <memory>

int main(int argc, char** argv) {
    const bool widgets = argc > 1 && std::strcmp(argv[1], "--widgets") == 0;
    std::unique_ptr<QCoreApplication> app =
        widgets ? std::make_unique<QApplication>(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);
    QStringList args = app->arguments();
    if (widgets) args.removeAt(1);
    if (args.size() < 2) {
        std::fputs("usage: bench_idle_floor [--widgets] KEYFILE [URL]\n", stderr);
        return 2;
    }
    std::unique_ptr<QWidget> window;
    if (widgets) {
        window = std::make_unique<QWidget>();
        window->resize(760, 780);
        window->show();
    }
    QFile keyFile(args[1]);
    if (!keyFile.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "bench_idle_floor: cannot read %s\n", qPrintable(args[1]));
        return 1;
    }
    const QByteArray key = keyFile.read(4096).trimmed();
    const QUrl url(args.size() > 2 ? args[2] : QStringLiteral("http://127.0.0.1:8787/companion/status"));

    QNetworkAccessManager network;
    QNetworkRequest request(url);
    request.setRawHeader("X-Tulm-Local", key);
    auto poll = [&] {
        QNetworkReply* reply = network.get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply] {
            reply->readAll();
            reply->deleteLater();
        });
    };
    QTimer timer;
    timer.setInterval(2000);
    QObject::connect(&timer, &QTimer::timeout, app.get(), poll);
    timer.start();
    poll();
    return app->exec();
}
