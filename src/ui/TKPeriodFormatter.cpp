// SPDX-License-Identifier: MIT
#include "ui/TKPeriodFormatter.hpp"

#include "platform/values/FirstException.hpp"

#include <string>

namespace estatebook {

using namespace platform;

namespace {

Key suffixKey() {
    static const Key key = Key::named("suffix");
    return key;
}

} // namespace

TKPeriodFormatter::~TKPeriodFormatter() = default;

const ClassDescription& TKPeriodFormatter::classDescription() const noexcept {
    static const Property properties[] = {
        writable<&TKPeriodFormatter::suffix, &TKPeriodFormatter::setSuffix>(suffixKey()),
    };
    static const ClassDescription description("TKPeriodFormatter", nullptr, properties, {}, noDependents,
                                              announcing<TKPeriodFormatter>);
    return description;
}

void TKPeriodFormatter::setSuffix(const Ref<String>& suffix) {
    FirstException exceptions;
    exceptions.keep([&] { change(suffixKey(), [&] { suffix_ = suffix; }); });
    const std::string following = " " + Value(suffix_).description();
    setPositiveSuffix(following);
    setNegativeSuffix(following);
    exceptions.rethrow();
}

} // namespace estatebook
