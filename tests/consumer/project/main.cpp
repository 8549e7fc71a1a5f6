// SPDX-License-Identifier: MIT
#include <platform/values/String.hpp>
#include <store/EstateBook_ModelVersion.hpp>

#include <cstdio>

int main() {
    const auto greeting = estatebook::platform::String::make("linked and running");
    std::puts(greeting->string().c_str());
    std::fputs(reinterpret_cast<const char*>(EstateBook_ModelVersionString), stdout);
}
