// A stand-in for the login manager on a private bus, for the lid lock's tests. It answers Inhibit
// with the write end of a pipe, like the real one, and writes to a log what it was asked and when
// each lock it handed out was closed. It refuses while a file named "refuse" stands beside the log.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <unistd.h>

namespace {

class Manager final : public QDBusVirtualObject {
public:
    explicit Manager(QString log) : log_(std::move(log)) {}

    void note(const QString& line) {
        QFile file(log_);
        if (file.open(QIODevice::Append)) file.write((line + "\n").toUtf8());
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != "org.freedesktop.login1.Manager" || message.member() != "Inhibit") return false;
        QStringList args;
        for (const auto& a : message.arguments()) args << a.toString();
        if (QFileInfo::exists(QFileInfo(log_).dir().filePath("refuse"))) {
            note("refused " + args.join(' '));
            connection.send(message.createErrorReply("org.freedesktop.DBus.Error.AccessDenied", "Not allowed."));
            return true;
        }
        int ends[2];
        if (::pipe(ends) != 0) return false;
        int number = ++handed_;
        note(QString("inhibit %1 %2").arg(number).arg(args.join('|')));
        auto* watch = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
        QObject::connect(watch, &QSocketNotifier::activated, [this, watch, number, readEnd = ends[0]] {
            char byte;
            if (::read(readEnd, &byte, 1) > 0) return;
            // Every copy of the write end is closed: the lock is over.
            note(QString("closed %1").arg(number));
            watch->setEnabled(false);
            ::close(readEnd);
        });
        connection.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))));
        ::close(ends[1]);
        return true;
    }

private:
    QString log_;
    int handed_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) return 2;
    Manager manager(QString::fromLocal8Bit(argv[1]));
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected() || !bus.registerVirtualObject("/org/freedesktop/login1", &manager) ||
        !bus.registerService("org.freedesktop.login1"))
        return 1;
    manager.note("ready");
    return app.exec();
}
