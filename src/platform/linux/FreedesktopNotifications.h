#pragma once
// Desktop notifications through the session's org.freedesktop.Notifications service over D-Bus.
// Calls are asynchronous, so a slow or absent service never holds the window up; without a session
// bus, or with no service answering on it, posting does nothing.

#include "platform/Notifications.h"

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace orvan {

class FreedesktopNotifications final : public QObject, public Notifications {
    Q_OBJECT
public:
    // The program's name as the notification server shows it. The bus is opened on the first post:
    // most runs post nothing, and an open connection keeps a thread and its buffers for good.
    explicit FreedesktopNotifications(QString appName,
                                      std::function<QDBusConnection()> openBus = [] { return QDBusConnection::sessionBus(); });
    ~FreedesktopNotifications() override;

    void post(const std::string& tag, const Notice& notice, std::function<void()> chosen) override;
    void withdraw(const std::string& tag) override;

private slots:
    void actionInvoked(uint id, const QString& action);
    void notificationClosed(uint id, uint reason);

private:
    struct Posted {
        uint id = 0; // 0 until the server answered
        std::function<void()> chosen;
        bool withdrawn = false;
    };
    bool connected();
    void close(uint id);

    QString appName_;
    std::function<QDBusConnection()> openBus_;
    std::optional<QDBusConnection> bus_;
    std::map<std::string, Posted> posted_;
    // Guards the asynchronous answers against a destroyed adapter.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace orvan
