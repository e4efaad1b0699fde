#pragma once
// The power lock through the login manager on the system bus: Inhibit answers with a file
// descriptor, and the lock lasts exactly as long as that descriptor is open. The kernel closes it
// when the process ends, however it ends, so nothing outlives a crash.

#include "platform/Power.h"

#include <filesystem>

namespace orvan {

class LogindPower final : public Power {
public:
    explicit LogindPower(std::filesystem::path supplies = "/sys/class/power_supply");
    ~LogindPower() override;
    LogindPower(const LogindPower&) = delete;
    LogindPower& operator=(const LogindPower&) = delete;

    bool hold() override;
    void letGo() override;
    bool holding() const override { return lock_ >= 0; }
    std::optional<std::vector<PowerSource>> sources() override;

private:
    std::filesystem::path supplies_;
    int lock_ = -1;
};

} // namespace orvan
