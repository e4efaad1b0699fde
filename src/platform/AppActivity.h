#pragma once
// Whether the program is the one the user is working in. A front end with windows tells it; a
// front end without any leaves it active for good.

#include "foundation/Observable.h"

namespace orvan {

class AppActivity final : public Observable {
public:
    bool active = true;
    void setActive(bool value) { assign(active, value); }
};

} // namespace orvan
