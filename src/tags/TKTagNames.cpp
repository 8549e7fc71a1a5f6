// SPDX-License-Identifier: MIT
#include "tags/TKTagNames.hpp"

#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/text/Text.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace estatebook {

using platform::Array;
using platform::OrderedSet;
using platform::Ref;
using platform::String;
using platform::Value;

namespace {

/// A value class is never made of nothing: a caller that tries has lost its data.
void stopUnless(bool holds, const char* operation) {
    if (holds) return;
    std::fprintf(stderr, "EstateBook_Model.TKTagNames: %s needs names\n", operation);
    std::abort();
}

std::weak_ordering compareNames(const Value& a, const Value& b) {
    const Ref<String> name = a.string();
    const Ref<String> other = b.string();
    if (name && other) return platform::compareTexts(name->view(), other->view());
    return platform::compareTexts(a.description(), b.description());
}

} // namespace

TKTagNames::TKTagNames(Ref<OrderedSet> items)
    : Object(platform::Counting::Shared), items_(std::move(items)) {}

Ref<TKTagNames> TKTagNames::initWithArray(const Ref<Array>& names) {
    stopUnless(names != nullptr, "initWithArray:");
    OrderedSet::Builder items;
    for (std::size_t index = 0; index < names->count(); ++index) items.add(names->at(index));
    return initWithOrderedSet(std::move(items).finish());
}

Ref<TKTagNames> TKTagNames::initWithOrderedSet(const Ref<OrderedSet>& names) {
    stopUnless(names != nullptr, "initWithOrderedSet:");
    return Ref<TKTagNames>(new TKTagNames(names));
}

Ref<TKTagNames> TKTagNames::initWithEditableString(std::string_view text) {
    OrderedSet::Builder items;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const std::string_view name = platform::trimWhitespace(text.substr(start, comma - start));
        if (!name.empty()) items.add(String::make(name));
        start = comma + 1;
    }
    return initWithOrderedSet(std::move(items).finish());
}

Ref<TKTagNames> TKTagNames::initWithCoder(platform::KeyedUnarchiver& coder) {
    const auto items = coder.decodeObject().as<OrderedSet>();
    stopUnless(items != nullptr, "initWithCoder:");
    return initWithOrderedSet(items);
}

void TKTagNames::encodeWithCoder(platform::KeyedArchiver& coder) const {
    coder.encodeObject(items_);
}

const platform::ArchivedClass& TKTagNames::archivedClass() noexcept {
    static constexpr std::string_view Names[] = {RuntimeName, "NSObject"};
    static constexpr platform::ArchivedClass Class{
        RuntimeName, Names,
        [](const Value& names, platform::KeyedArchiver& coder) {
            names.as<TKTagNames>()->encodeWithCoder(coder);
        },
        [](platform::KeyedUnarchiver& coder) -> Value { return initWithCoder(coder); }};
    return Class;
}

void TKTagNames::setItems(const Ref<OrderedSet>& items) {
    stopUnless(items != nullptr, "setItems:");
    items_ = items;
}

std::string TKTagNames::editableString() const {
    std::string text;
    for (const Value& name : items_->members()) {
        if (&name != &items_->members().front()) text += ", ";
        text += name.description();
    }
    return text;
}

bool TKTagNames::contains(const Ref<String>& name) const {
    return name && items_->contains(name);
}

bool TKTagNames::contains(std::string_view name) const {
    return contains(String::make(name));
}

Ref<String> TKTagNames::first() const noexcept {
    return isEmpty() ? nullptr : items_->at(0).string();
}

std::weak_ordering TKTagNames::compare(const TKTagNames& other) const {
    const auto mine = items_->members();
    const auto theirs = other.items_->members();
    for (std::size_t index = 0; index < mine.size(); ++index) {
        if (index == theirs.size()) return std::weak_ordering::greater;
        const auto order = compareNames(mine[index], theirs[index]);
        if (std::is_neq(order)) return order;
    }
    return mine.size() == theirs.size() ? std::weak_ordering::equivalent : std::weak_ordering::less;
}

} // namespace estatebook
