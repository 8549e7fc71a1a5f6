// SPDX-License-Identifier: MIT
#include "platform/archive/KeyedArchiver.hpp"

#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/ArchiveFormat.hpp"
#include "platform/archive/ArchivedValues.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace estatebook::platform {

/// All objects written so far.
class KeyedArchiver::Graph {
public:
    explicit Graph(std::span<const ArchivedClass> classes) : classes_(classes) {
        objects_.emplace_back(String::make(detail::NullEntry));
    }

    Ref<Dictionary> archive(const Value& root) {
        const Value top = reference(root);
        return Dictionary::make({
            {std::string(detail::ArchiverKey), String::make(detail::ArchiverName)},
            {std::string(detail::VersionKey), detail::ArchiveVersion},
            {std::string(detail::TopKey), Dictionary::make({{std::string(detail::RootKey), top}})},
            {std::string(detail::ObjectsKey), Array::make(std::move(objects_))},
        });
    }

    /// The UID of an object. It is written when it is met for the first time.
    Value reference(const Value& value) {
        if (value.isAbsent()) return PropertyListUid::make(0);
        const Ref<Object> object = value.object();
        if (const auto known = numbers_.find(object); object && known != numbers_.end()) {
            if (open_.contains(known->second))
                throw InvalidArchiveOperationException("an object contains itself");
            return PropertyListUid::make(known->second);
        }
        const std::size_t number = objects_.size();
        objects_.emplace_back();
        if (object) numbers_.emplace(object, number);
        objects_[number] = detail::isPropertyList(value) ? value : encoded(value, number);
        return PropertyListUid::make(number);
    }

private:
    Value encoded(const Value& value, std::size_t number) {
        if (open_.size() == DeepestArchive) throw InvalidArchiveOperationException("it is nested too deeply");
        const ArchivedClass& archivedClass = classOf(value);
        open_.insert(number);
        KeyedArchiver coder(*this);
        archivedClass.encode(value, coder);
        open_.erase(number);
        coder.entries_.emplace_back(detail::ClassKey, classRecord(archivedClass));
        return Dictionary::make(std::move(coder.entries_));
    }

    const ArchivedClass& classOf(const Value& value) const {
        const std::string_view name = detail::runtimeNameOf(value);
        for (const auto classes : {classes_, detail::archivedValueClasses()}) {
            const auto found = std::ranges::find(classes, name, &ArchivedClass::runtimeName);
            if (found != classes.end()) return *found;
        }
        throw InvalidArchiveOperationException("no objects of the class \"" + std::string(name) +
                                               "\" are archived");
    }

    Value classRecord(const ArchivedClass& archivedClass) {
        const auto [known, isNew] = classNumbers_.try_emplace(archivedClass.names.front(), objects_.size());
        if (isNew) {
            std::vector<Value> names;
            for (const std::string_view name : archivedClass.names) names.emplace_back(String::make(name));
            const Value own = names.front();
            objects_.emplace_back(
                Dictionary::make({{std::string(detail::ClassNameKey), own},
                                  {std::string(detail::ClassesKey), Array::make(std::move(names))}}));
        }
        return PropertyListUid::make(known->second);
    }

    std::span<const ArchivedClass> classes_;
    std::vector<Value> objects_;
    // Held, so that no other object comes to stand where one stood.
    std::unordered_map<Ref<Object>, std::size_t> numbers_;
    std::unordered_map<std::string_view, std::size_t> classNumbers_;
    std::unordered_set<std::size_t> open_;
};

Ref<Data> KeyedArchiver::archivedData(const Value& root, std::span<const ArchivedClass> classes,
                                      Ref<Error>* error) {
    try {
        return BinaryPropertyList::write(Graph(classes).archive(root), error);
    } catch (const Exception& exception) {
        if (error)
            *error =
                Error::make(ArchiveErrorDomain, static_cast<std::int64_t>(ArchiveErrorCode::InvalidValue),
                            "The archive cannot be written: " + std::string(exception.reason()));
        return nullptr;
    }
}

void KeyedArchiver::encodeObject(const Value& object) {
    std::string key = detail::keyOfKeyless(keylessObjects_++);
    entries_.emplace_back(std::move(key), graph_.reference(object));
}

void KeyedArchiver::encodeObjectForKey(const Value& object, std::string_view key) {
    entries_.emplace_back(detail::escapedKey(key), graph_.reference(object));
}

void KeyedArchiver::encodeObjectsForKey(std::span<const Value> objects, std::string_view key) {
    std::vector<Value> references;
    references.reserve(objects.size());
    for (const Value& object : objects) references.push_back(graph_.reference(object));
    entries_.emplace_back(detail::escapedKey(key), Array::make(std::move(references)));
}

void KeyedArchiver::encodePlainForKey(const Value& plain, std::string_view key) {
    if (!detail::isPropertyList(plain) || plain.string())
        throw InvalidArchiveOperationException("only numbers and data are encoded as plain values");
    entries_.emplace_back(detail::escapedKey(key), plain);
}

} // namespace estatebook::platform
