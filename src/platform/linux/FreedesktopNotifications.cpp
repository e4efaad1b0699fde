#include "platform/linux/FreedesktopNotifications.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace orvan {

namespace {
const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString interface = QStringLiteral("org.freedesktop.Notifications");
// The action's key; "default" is also what a click on the notice's body invokes.
const QString actionKey = QStringLiteral("default");
// Left to the server: the notice stays until withdrawn or dismissed.
constexpr int serverDefaultTimeout = -1;
} // namespace

FreedesktopNotifications::FreedesktopNotifications(QString appName, std::function<QDBusConnection()> openBus)
    : appName_(std::move(appName)), openBus_(std::move(openBus)) {}

bool FreedesktopNotifications::connected() {
    if (!bus_) {
        bus_ = openBus_();
        if (bus_->isConnected()) {
            bus_->connect(service, path, interface, QStringLiteral("ActionInvoked"), this,
                          SLOT(actionInvoked(uint, QString)));
            bus_->connect(service, path, interface, QStringLiteral("NotificationClosed"), this,
                          SLOT(notificationClosed(uint, uint)));
        }
    }
    return bus_->isConnected();
}

FreedesktopNotifications::~FreedesktopNotifications() { *alive_ = false; }

void FreedesktopNotifications::post(const std::string& tag, const Notice& notice, std::function<void()> chosen) {
    if (!connected()) return;
    uint replaces = 0;
    if (auto it = posted_.find(tag); it != posted_.end()) replaces = it->second.id;
    posted_[tag] = Posted{replaces, std::move(chosen), false};
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Notify"));
    QStringList actions;
    if (!notice.action.empty()) actions << actionKey << QString::fromStdString(notice.action);
    QVariantMap hints;
    hints.insert(QStringLiteral("category"), QStringLiteral("device"));
    call << appName_ << replaces << QString() << QString::fromStdString(notice.title)
         << QString::fromStdString(notice.body) << actions << hints << serverDefaultTimeout;
    auto* watcher = new QDBusPendingCallWatcher(bus_->asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, tag, alive = alive_](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        if (!*alive) return;
        QDBusPendingReply<uint> reply = *w;
        auto it = posted_.find(tag);
        // No service, or one that refused: nothing was shown, so nothing is left to withdraw.
        if (reply.isError()) {
            if (it != posted_.end() && it->second.id == 0) posted_.erase(it);
            return;
        }
        if (it == posted_.end()) return;
        it->second.id = reply.value();
        if (it->second.withdrawn) {
            close(it->second.id);
            posted_.erase(it);
        }
    });
}

void FreedesktopNotifications::withdraw(const std::string& tag) {
    auto it = posted_.find(tag);
    if (it == posted_.end()) return;
    if (it->second.id == 0) {
        // The server hasn't told the id yet: closed when it does.
        it->second.withdrawn = true;
        return;
    }
    close(it->second.id);
    posted_.erase(it);
}

void FreedesktopNotifications::close(uint id) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("CloseNotification"));
    call << id;
    // Only what was posted is closed, so the bus is open by now.
    if (bus_) bus_->asyncCall(call);
}

void FreedesktopNotifications::actionInvoked(uint id, const QString& action) {
    if (action != actionKey) return;
    for (auto& [tag, posted] : posted_) {
        if (posted.id != id || posted.withdrawn) continue;
        if (auto chosen = posted.chosen) chosen();
        return;
    }
}

void FreedesktopNotifications::notificationClosed(uint id, uint) {
    // Dismissed by the owner or expired: a later withdraw has nothing to close.
    for (auto it = posted_.begin(); it != posted_.end(); ++it) {
        if (it->second.id == id) {
            posted_.erase(it);
            return;
        }
    }
}

} // namespace orvan
