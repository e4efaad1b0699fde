#include "platform/linux/LogindPower.h"

#include "platform/linux/PowerSupplies.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <unistd.h>

namespace orvan {

namespace {
// The call runs on the main thread; a login manager that doesn't answer soon is no lock at all.
constexpr int callTimeoutMs = 2000;
} // namespace

LogindPower::LogindPower(std::filesystem::path supplies) : supplies_(std::move(supplies)) {}

LogindPower::~LogindPower() { letGo(); }

bool LogindPower::hold() {
    if (lock_ >= 0) return true;
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) return false;
    QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                                       "org.freedesktop.login1.Manager", "Inhibit");
    call << QStringLiteral("handle-lid-switch:sleep:idle") << QStringLiteral("Orvan Companion")
         << QStringLiteral("Orvan Companion stays on while the lid is closed") << QStringLiteral("block");
    QDBusReply<QDBusUnixFileDescriptor> reply = bus.call(call, QDBus::Block, callTimeoutMs);
    if (!reply.isValid() || !reply.value().isValid()) return false;
    // The reply's descriptor closes with the reply; the lock is our own copy of it.
    lock_ = ::fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0);
    return lock_ >= 0;
}

void LogindPower::letGo() {
    if (lock_ < 0) return;
    ::close(lock_);
    lock_ = -1;
}

std::optional<std::vector<PowerSource>> LogindPower::sources() { return PowerSupplies::read(supplies_); }

} // namespace orvan
