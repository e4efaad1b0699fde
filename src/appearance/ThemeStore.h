#pragma once
// The program's look: the scheme and the palette choice, kept in user defaults, and the ink set
// that follows from them and from the system's own light or dark setting. Setting the scheme or
// the choice saves it, puts it on screen and recomputes the ink.
//
// The companion library draws nothing, so putting the look on screen is handed to an applier
// that the windowing side installs (the Qt one sets the application's palette and style sheet).
// The same side tells the store the system's setting, at launch and whenever it changes.

#include "appearance/Appearance.h"
#include "appearance/AppearanceSettings.h"
#include "appearance/InkSet.h"
#include "appearance/ThemeChoice.h"
#include "foundation/Observable.h"
#include "foundation/UserDefaults.h"

#include <functional>
#include <memory>

namespace orvan {

class ThemeStore : public Observable {
public:
    using Applier = std::function<void(const ThemeStore&)>;

    // Reads the settings from `defaults` and follows later changes made to them by others.
    explicit ThemeStore(std::shared_ptr<UserDefaults> defaults);

    // The one store of the program, over the program's own defaults domain.
    static ThemeStore& shared();

    Appearance scheme() const { return scheme_; }
    const ThemeChoice& choice() const { return choice_; }
    const InkSet& ink() const { return ink_; }
    const std::shared_ptr<UserDefaults>& defaults() const { return defaults_; }
    AppearanceSettings settings() const { return {scheme_, choice_}; }

    void setScheme(Appearance scheme);
    void setChoice(ThemeChoice choice);

    // The system's light or dark setting, which `system` follows.
    void setSystemDark(bool dark);
    bool systemDark() const { return systemDark_; }
    // Whether the program looks dark now.
    bool isDark() const;

    void save();
    // Puts the present look on screen through the applier; without one it does nothing.
    void applyToApp();
    void setApplier(Applier applier);

private:
    void reload();
    void recompute();

    std::shared_ptr<UserDefaults> defaults_;
    Appearance scheme_ = Appearance::system;
    ThemeChoice choice_;
    InkSet ink_;
    bool systemDark_ = false;
    bool saving_ = false;
    Applier applier_;
    UserDefaults::Subscription watching_;
};

} // namespace orvan
