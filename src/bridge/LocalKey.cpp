#include "bridge/LocalKey.h"

#include "foundation/Files.h"
#include "foundation/Text.h"

namespace orvan::LocalKey {

std::string value(const Environment& environment) {
    auto bytes = Files::read(DataFolder::bridge(environment) / "local.key");
    // A file that is not UTF-8 can't be read as text, which is the same as no file.
    if (!bytes || !Text::isValidUtf8(*bytes)) return {};
    return Text::trimmed(*bytes);
}

std::string value() { return value(Carryover::processEnvironment()); }

} // namespace orvan::LocalKey
