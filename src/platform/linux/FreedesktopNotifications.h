#pragma once
// Desktop notifications through the session's org.freedesktop.Notifications service over D-Bus.
// Calls are asynchronous, so a slow or absent service never holds the window up; without a session
// bus, or with no service answering on it, posting does nothing.

#include "platform/Notifications.h"

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <map>
#include <string>

namespace orvan {

class FreedesktopNotifications final : public QObject, public Notifications {
    Q_OBJECT
public:
    // The program's name as the notification server shows it.
    explicit FreedesktopNotifications(QString appName, QDBusConnection bus = QDBusConnection::sessionBus());
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
    void close(uint id);

    QString appName_;
    QDBusConnection bus_;
    std::map<std::string, Posted> posted_;
    // Guards the asynchronous answers against a destroyed adapter.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace orvan
