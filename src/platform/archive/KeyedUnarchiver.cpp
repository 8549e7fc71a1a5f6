// SPDX-License-Identifier: MIT
#include "platform/archive/KeyedUnarchiver.hpp"

#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/ArchiveFormat.hpp"
#include "platform/archive/ArchivedValues.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Exception.hpp"

#include <algorithm>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

namespace estatebook::platform {

namespace {

// A set of a thousand lists of ten members each is below this, and it is reached within a second.
constexpr std::uint64_t MostWork = std::uint64_t{1} << 24;
constexpr std::uint64_t BytesComparedInAStep = 32;

std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) {
    return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max()
                                                             : a + b;
}

std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max() : product;
}

[[noreturn]] void refuse(const std::string& reason) {
    throw InvalidUnarchiveOperationException(reason);
}

/// The part of a property list under a key, which must be of a certain class.
template <class T>
Ref<T> part(const Dictionary& list, std::string_view key) {
    auto found = list.find(key).as<T>();
    if (!found) refuse("\"" + std::string(key) + "\" is missing, or not what it should be");
    return found;
}

void requireText(const Value& value, std::string_view text) {
    const auto found = value.string();
    if (!found || *found != text) refuse("\"" + std::string(text) + "\" is missing");
}

} // namespace

/// All objects, read and not yet read.
class KeyedUnarchiver::Graph {
public:
    Graph(const Dictionary& archive, std::span<const ArchivedClass> classes)
        : classes_(classes), entries_(part<Array>(archive, detail::ObjectsKey)), objects_(entries_->count()) {
        requireText(archive.find(detail::ArchiverKey), detail::ArchiverName);
        if (!archive.find(detail::VersionKey).isIdentical(detail::ArchiveVersion))
            refuse("its version is unknown");
        if (entries_->empty()) refuse("it has no objects");
        requireText(entries_->at(0), detail::NullEntry);
        root_ = part<PropertyListUid>(*part<Dictionary>(archive, detail::TopKey), detail::RootKey);
    }

    Value root() { return object(*root_).value; }

    struct Decoded {
        enum class State : std::uint8_t { Untouched, Open, Done } state = State::Untouched;
        Value value;
        std::uint64_t weight = 1;
    };

    const Decoded& object(const PropertyListUid& uid) {
        if (uid.number() >= objects_.size()) refuse("a reference leads nowhere");
        if (uid.number() == 0) return absent_;
        Decoded& object = objects_[uid.number()];
        if (object.state == Decoded::State::Open) refuse("an object contains itself");
        if (object.state == Decoded::State::Untouched) {
            object.state = Decoded::State::Open;
            decode(entries_->at(uid.number()), object);
            object.state = Decoded::State::Done;
        }
        return object;
    }

    void charge(std::uint64_t steps) {
        if (steps > work_) refuse("it takes too much work");
        work_ -= steps;
    }

private:
    void decode(const Value& entry, Decoded& object) {
        if (detail::isPropertyList(entry)) {
            object.value = entry;
            object.weight += detail::bytesIn(entry) / BytesComparedInAStep;
            return;
        }
        const auto encoded = entry.as<Dictionary>();
        if (!encoded) refuse("an object is of no known form");
        if (depth_ == DeepestArchive) refuse("it is nested too deeply");
        const ArchivedClass& archivedClass = classOf(*part<PropertyListUid>(*encoded, detail::ClassKey));
        KeyedUnarchiver coder(*this, encoded);
        ++depth_;
        object.value = archivedClass.decode(coder);
        --depth_;
        object.weight = coder.weight_;
    }

    const ArchivedClass& classOf(const PropertyListUid& uid) {
        const auto [known, isNew] = classesByNumber_.try_emplace(uid.number());
        if (isNew) known->second = &findClass(uid);
        return *known->second;
    }

    const ArchivedClass& findClass(const PropertyListUid& uid) const {
        const auto record =
            uid.number() < entries_->count() ? entries_->at(uid.number()).as<Dictionary>() : nullptr;
        if (!record) refuse("a class is not described");
        const auto name = part<String>(*record, detail::ClassNameKey);
        const auto lineage = part<Array>(*record, detail::ClassesKey);
        if (lineage->empty() || !(lineage->at(0) == Value(name)))
            refuse("a class does not begin its own lineage");
        for (const auto classes : {classes_, detail::archivedValueClasses()}) {
            const auto found = std::ranges::find_if(
                classes, [&](const ArchivedClass& each) { return each.names.front() == name->view(); });
            if (found != classes.end()) return *found;
        }
        refuse("there is no class \"" + name->string() + "\"");
    }

    std::span<const ArchivedClass> classes_;
    Ref<Array> entries_;
    Ref<PropertyListUid> root_;
    std::vector<Decoded> objects_;
    Decoded absent_;
    std::unordered_map<std::uint64_t, const ArchivedClass*> classesByNumber_;
    std::size_t depth_ = 0;
    std::uint64_t work_ = MostWork;
};

KeyedUnarchiver::KeyedUnarchiver(Graph& graph, Ref<Dictionary> entry) noexcept
    : graph_(graph), entry_(std::move(entry)) {}

Value KeyedUnarchiver::unarchivedObject(std::span<const std::byte> bytes,
                                        std::span<const ArchivedClass> classes, Ref<Error>* error) {
    Ref<Error> reason;
    const Value list = BinaryPropertyList::read(bytes, &reason);
    if (reason) {
        if (error) *error = reason;
        return {};
    }
    try {
        const auto archive = list.as<Dictionary>();
        if (!archive) refuse("it is no dictionary");
        return Graph(*archive, classes).root();
    } catch (const Exception& exception) {
        if (error)
            *error = Error::make(ArchiveErrorDomain, static_cast<std::int64_t>(ArchiveErrorCode::ReadCorrupt),
                                 "The archive cannot be read: " + std::string(exception.reason()));
        return {};
    }
}

bool KeyedUnarchiver::containsValueForKey(std::string_view key) const {
    return !entry_->find(detail::escapedKey(key)).isAbsent();
}

Value KeyedUnarchiver::decodeObject() {
    return object(entry_->find(detail::keyOfKeyless(keylessObjects_++)));
}

Value KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
    return object(entry_->find(detail::escapedKey(key)));
}

std::optional<std::vector<Value>> KeyedUnarchiver::decodeObjectsForKey(std::string_view key) {
    const Value found = entry_->find(detail::escapedKey(key));
    if (found.isAbsent()) return std::nullopt;
    const auto references = found.as<Array>();
    if (!references) refuse("\"" + std::string(key) + "\" is no list of objects");
    std::vector<Value> objects;
    objects.reserve(references->count());
    for (std::size_t index = 0; index < references->count(); ++index)
        objects.push_back(object(references->at(index)));
    return objects;
}

Value KeyedUnarchiver::decodePlainForKey(std::string_view key) const {
    Value found = entry_->find(detail::escapedKey(key));
    if (!found.isAbsent() && !found.isNumber() && !found.as<Data>())
        refuse("\"" + std::string(key) + "\" is no plain value");
    return found;
}

void KeyedUnarchiver::requireComparable(std::span<const Value> members) {
    // Plain values differ in their hash, other members are compared each with each.
    const bool arePlain = std::ranges::all_of(
        members, [](const Value& member) { return !member.object() || detail::isPropertyList(member); });
    if (arePlain) return;
    weight_ = saturatingProduct(weight_, members.size());
    requireWork(weight_);
}

void KeyedUnarchiver::requireWork(std::uint64_t steps) {
    graph_.charge(steps);
}

Value KeyedUnarchiver::object(const Value& reference) {
    if (reference.isAbsent()) return {};
    const auto uid = reference.as<PropertyListUid>();
    if (!uid) refuse("a value stands in the place of an object");
    const Graph::Decoded& object = graph_.object(*uid);
    weight_ = saturatingSum(weight_, object.weight);
    return object.value;
}

} // namespace estatebook::platform
