#include "appearance/ThemeStore.h"

#include "appearance/ThemeKeys.h"
#include "bridge/Carryover.h"

namespace orvan {

ThemeStore::ThemeStore(std::shared_ptr<UserDefaults> defaults) : defaults_(std::move(defaults)) {
    const auto settings = AppearanceSettings::read([this](const std::string& key) { return defaults_->string(key); });
    scheme_ = settings.scheme;
    choice_ = settings.choice;
    ink_ = InkSet::from(choice_.tones(isDark()), isDark());
    // Another model, or the settings carried over at launch, may write these keys after we read them.
    watching_ = defaults_->observe([this](const std::string& key) {
        if (saving_) return;
        if (key == Appearance::key || key == ThemeKeys::light || key == ThemeKeys::dark) reload();
    });
}

ThemeStore& ThemeStore::shared() {
    static ThemeStore store(UserDefaults::domain(Carryover::bundle));
    return store;
}

bool ThemeStore::isDark() const {
    switch (scheme_) {
    case Appearance::system: return systemDark_;
    case Appearance::light: return false;
    case Appearance::dark: return true;
    }
    return systemDark_;
}

void ThemeStore::setScheme(Appearance scheme) {
    assign(scheme_, scheme);
    save();
    // The ink first: the applier draws with it.
    recompute();
    applyToApp();
}

void ThemeStore::setChoice(ThemeChoice choice) {
    assign(choice_, std::move(choice));
    save();
    recompute();
    applyToApp();
}

void ThemeStore::setSystemDark(bool dark) {
    if (dark == systemDark_) return;
    systemDark_ = dark;
    if (scheme_ != Appearance::system) return;
    recompute();
    applyToApp();
}

void ThemeStore::save() {
    // Our own writes are not news to us.
    saving_ = true;
    for (const auto& [key, text] : settings().stored()) defaults_->set(key, text);
    saving_ = false;
}

void ThemeStore::applyToApp() {
    if (applier_) applier_(*this);
}

void ThemeStore::setApplier(Applier applier) { applier_ = std::move(applier); }

void ThemeStore::reload() {
    const auto settings = AppearanceSettings::read([this](const std::string& key) { return defaults_->string(key); });
    if (settings == this->settings()) return;
    scheme_ = settings.scheme;
    assign(choice_, settings.choice);
    recompute();
    applyToApp();
}

void ThemeStore::recompute() { assign(ink_, InkSet::from(choice_.tones(isDark()), isDark())); }

} // namespace orvan
