// SPDX-License-Identifier: MIT
#include "ui/QBDateFormatter.hpp"

#include <utility>

namespace estatebook {

using namespace platform;

QBDateFormatter::~QBDateFormatter() = default;

const ClassDescription& QBDateFormatter::classDescription() const noexcept {
    static const Property properties[] = {
        writable<&QBDateFormatter::nilSymbol, &QBDateFormatter::setNilSymbol>(Key::named("nilSymbol")),
    };
    static const ClassDescription description("QBDateFormatter", nullptr, properties, {}, noDependents,
                                              announcing<QBDateFormatter>);
    return description;
}

Ref<String> QBDateFormatter::nilSymbol() const {
    const std::lock_guard lock(mutex_);
    return nilSymbol_;
}

void QBDateFormatter::setNilSymbol(const Ref<String>& symbol) {
    Ref<String> former = symbol; // let go outside the lock
    const std::lock_guard lock(mutex_);
    std::swap(nilSymbol_, former);
}

bool QBDateFormatter::getObjectValueForStringRangeError(Value& object, const Ref<String>& string,
                                                        TextRange* range, Ref<Error>* error) const {
    if (DateFieldFormatter::getObjectValueForStringRangeError(object, string, range, error)) return true;
    const Ref<String> symbol = nilSymbol();
    if (string && !(symbol && *string == *symbol)) return false;
    object = Value();
    return true;
}

} // namespace estatebook
