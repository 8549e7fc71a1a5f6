// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: a counter that is one higher while a scope lasts.

namespace estatebook::platform {

class Raised {
public:
    explicit Raised(unsigned& counter) noexcept : counter_(counter) { ++counter_; }
    ~Raised() { --counter_; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    unsigned& counter_;
};

} // namespace estatebook::platform
