// SPDX-License-Identifier: MIT
#include "platform/observation/ClassDescription.hpp"

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Exception.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <unordered_map>

namespace estatebook::platform {

constinit std::uint64_t ClassDescription::additionsMade = 0;

namespace {
constexpr ClassDescription rootDescription("ObservableObject", nullptr, {}, {}, noDependents,
                                           Announces::ToObservers);
}

// Here, as the callers would otherwise try this one first.
const ClassDescription& ObservableObject::classDescription() const noexcept {
    return rootDescription;
}

struct ClassDescription::Additions {
    std::vector<Property> properties;
    std::vector<DependencyRow> rows; // one affecting key each
    std::vector<std::unique_ptr<PathDependency>> paths;
};

// Properties by the number of their key; and, once rows were added, the closure of all rows of the class.
struct ClassDescription::Index {
    std::array<const Property*, SmallKeys> byNumber{};
    std::unordered_map<Key, const Property*> others;
    bool hasAddedRows = false;
    struct Followers {
        std::vector<Key> keys;
        KeySet set;
    };
    std::unordered_map<Key, Followers> dependents;
    // An announcement may still be walking the stale one.
    const Index* stale = nullptr;
};

ClassDescription::Additions& ClassDescription::additions() const {
    if (!additions_)
        additions_ = new Additions; // lives as long as the class, which is as long as the program
    return *additions_;
}

const ClassDescription::Index& ClassDescription::index() const {
    if (indexMadeAt_ == additionsMade) return *index_;
    auto made = std::make_unique<Index>();
    const auto enter = [&](const Property& property) {
        const Property*& place = property.key.number() < made->byNumber.size()
                                     ? made->byNumber[property.key.number()]
                                     : made->others[property.key];
        if (!place) place = &property;
    };
    std::vector<DependencyRow> rows(rows_.begin(), rows_.end());
    for (const ClassDescription* each = this; each; each = each->parent_) {
        if (each->additions_) {
            for (const Property& property : each->additions_->properties) enter(property);
            rows.insert(rows.end(), each->additions_->rows.begin(), each->additions_->rows.end());
            made->hasAddedRows = made->hasAddedRows || !each->additions_->rows.empty();
        }
        for (const Property& property : each->properties_) enter(property);
    }
    if (made->hasAddedRows) {
        // Breadth first as at compile time, but a way back to the start simply ends.
        const auto follow = [&](Key start) {
            Index::Followers found;
            const auto visit = [&](Key cause) {
                for (const DependencyRow& row : rows) {
                    if (!row.isAffectedBy(cause) || row.dependent == start) continue;
                    if (std::ranges::find(found.keys, row.dependent) != found.keys.end()) continue;
                    found.keys.push_back(row.dependent);
                    found.set.insert(row.dependent);
                }
            };
            visit(start);
            for (std::size_t next = 0; next < found.keys.size(); ++next) visit(found.keys[next]);
            return found;
        };
        for (const DependencyRow& row : rows)
            for (const Key key : row.affecting())
                if (!made->dependents.contains(key)) made->dependents.emplace(key, follow(key));
    }
    made->stale = index_;
    propertiesByNumber_ = made->byNumber.data();
    index_ = made.release();
    indexMadeAt_ = additionsMade;
    return *index_;
}

const Property* ClassDescription::findProperty(Key key) const {
    const Index& table = index();
    if (key.number() < table.byNumber.size()) return table.byNumber[key.number()];
    const auto found = table.others.find(key);
    return found == table.others.end() ? nullptr : found->second;
}

DependentKeys ClassDescription::dependentKeysWithAdded(Key key) const {
    const Index& table = index();
    if (!table.hasAddedRows) return dependents_.find(key);
    const auto found = table.dependents.find(key);
    if (found == table.dependents.end()) return {};
    return {found->second.keys, found->second.set};
}

std::vector<std::string> ClassDescription::keyPathsForValuesAffecting(Key key) const {
    std::vector<std::string> paths;
    for (const DependencyRow& row : rows_)
        if (row.dependent == key)
            for (const Key each : row.affecting()) paths.emplace_back(each.name());
    for (const ClassDescription* each = this; each; each = each->parent_) {
        if (!each->additions_) continue;
        for (const DependencyRow& row : each->additions_->rows)
            if (row.dependent == key) paths.emplace_back(row.affectingKeys[0].name());
        for (const auto& path : each->additions_->paths) {
            if (path->dependent != key) continue;
            std::string text;
            for (const Key step : path->path) text += (text.empty() ? "" : ".") + std::string(step.name());
            paths.push_back(std::move(text));
        }
    }
    return paths;
}

void ClassDescription::addProperty(const Property& property) const {
    auto& properties = additions().properties;
    properties.insert(properties.begin(), property); // the latest is found first
    ++additionsMade;
}

void ClassDescription::addDependency(Key dependent, std::string_view keyPath) const {
    std::vector<Key> path;
    for (std::string_view rest = keyPath;;) {
        const std::size_t point = rest.find('.');
        path.push_back(Key::named(rest.substr(0, point)));
        if (point == std::string_view::npos) break;
        rest.remove_prefix(point + 1);
    }
    if (path.size() == 1)
        additions().rows.emplace_back(dependent, std::initializer_list<Key>{path.front()});
    else
        additions().paths.push_back(
            std::make_unique<PathDependency>(PathDependency{dependent, std::move(path)}));
    ++additionsMade;
}

std::vector<const ClassDescription::PathDependency*> ClassDescription::pathDependencies() const {
    std::vector<const PathDependency*> found;
    for (const ClassDescription* each = this; each; each = each->parent_)
        if (each->additions_)
            for (const auto& path : each->additions_->paths) found.push_back(path.get());
    return found;
}

namespace detail {

void refuseValue(Key key, const Value& value) {
    throw InvalidArgumentException(
        "the value " + value.description() + " is of a kind that " +
        (key ? "\"" + std::string(key.name()) + "\"" : std::string("the property")) + " does not take");
}

} // namespace detail

} // namespace estatebook::platform
