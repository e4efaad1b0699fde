#include "phones/InviteLink.h"

#include "foundation/Text.h"

#include <QUrl>

namespace orvan {

std::optional<std::string> InviteLink::shareable(std::string_view text) {
    const std::string link = Text::trimmed(text);
    // A link is plain ASCII with nothing to escape: spaces, control characters and raw non-ASCII
    // (a look-alike international host) would be shown one way and opened another.
    for (unsigned char c : link)
        if (c <= 0x20 || c >= 0x7f) return std::nullopt;
    if (!link.starts_with("https:")) return std::nullopt;
    const QUrl url(QString::fromStdString(link), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QStringLiteral("https")) return std::nullopt;
    if (url.host().isEmpty()) return std::nullopt;
    // Someone's name before an "@" makes a link read as another host than the one it opens.
    if (!url.userInfo().isEmpty() || link.find('@') < link.find('#')) return std::nullopt;
    if (!url.hasFragment() || !url.fragment(QUrl::FullyEncoded).startsWith(QStringLiteral("v1."))) return std::nullopt;
    return link;
}

} // namespace orvan
