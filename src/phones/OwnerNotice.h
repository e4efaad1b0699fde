#pragma once
#include "foundation/Time.h"

#include <string>

namespace orvan {

namespace AccountWords {
struct Place;
}

// One line saying that someone else became an owner of this computer.
struct OwnerNotice {
    std::string id;
    std::string name;  // "iPhone" when the device had none
    std::string since; // the owner time as the bridge gave it
    TimePoint at;
    bool operator==(const OwnerNotice&) const = default;

    std::string line(TimePoint now, const AccountWords::Place& place) const;
};

} // namespace orvan
