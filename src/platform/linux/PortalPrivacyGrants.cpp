#include "platform/linux/PortalPrivacyGrants.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace orvan {

namespace {
// Asked on the main thread while judging the grants; a portal this slow counts as none.
constexpr int callTimeoutMs = 1000;
// The portal's bits: a monitor among the source types, a keyboard or pointer among the devices.
constexpr unsigned monitorSource = 1;
constexpr unsigned keyboardOrPointer = 1 | 2;

std::string variable(const Environment& environment, const char* name) {
    auto it = environment.find(name);
    return it == environment.end() ? std::string() : it->second;
}
} // namespace

PortalPrivacyGrants::PortalPrivacyGrants(Environment environment) : environment_(std::move(environment)) {}

PortalPrivacyGrants::Session PortalPrivacyGrants::session(const Environment& environment) {
    const std::string type = variable(environment, "XDG_SESSION_TYPE");
    if (type == "wayland") return Session::wayland;
    if (type == "x11") return Session::x11;
    return variable(environment, "WAYLAND_DISPLAY").empty() ? Session::x11 : Session::wayland;
}

bool PortalPrivacyGrants::offers(AccessKind kind, std::optional<unsigned> available) {
    if (!available) return true;
    return (*available & (kind == AccessKind::screen ? monitorSource : keyboardOrPointer)) != 0;
}

std::optional<unsigned> PortalPrivacyGrants::available(AccessKind kind) {
    if (auto it = asked_.find(kind); it != asked_.end()) return it->second;
    std::optional<unsigned> answer;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        const bool screen = kind == AccessKind::screen;
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        call << (screen ? QStringLiteral("org.freedesktop.portal.ScreenCast")
                        : QStringLiteral("org.freedesktop.portal.RemoteDesktop"))
             << (screen ? QStringLiteral("AvailableSourceTypes") : QStringLiteral("AvailableDeviceTypes"));
        QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMs);
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
            answer = reply.arguments().first().value<QDBusVariant>().variant().toUInt();
        } else if (reply.type() == QDBusMessage::ErrorMessage) {
            // A portal that answers but has no such interface offers nothing of the kind; a
            // portal that isn't there, or doesn't answer in time, decides nothing.
            const QString error = reply.errorName();
            if (error == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface") ||
                error == QLatin1String("org.freedesktop.DBus.Error.UnknownProperty") ||
                error == QLatin1String("org.freedesktop.DBus.Error.InvalidArgs"))
                answer = 0u;
        }
    }
    asked_[kind] = answer;
    return answer;
}

bool PortalPrivacyGrants::allows(AccessKind kind) {
    if (session(environment_) == Session::x11) return true;
    return offers(kind, available(kind));
}

bool PortalPrivacyGrants::ask(AccessKind kind) {
    // Nothing can be granted ahead here: the portal asks when the helper starts to share.
    if (allows(kind)) return true;
    std::string why;
    open(kind, why);
    return false;
}

bool PortalPrivacyGrants::open(AccessKind kind, std::string& why) {
    why = "This desktop has no settings page for " + AccessKinds::pane(kind) +
          "; it asks each time the screen is shared.";
    return false;
}

} // namespace orvan
