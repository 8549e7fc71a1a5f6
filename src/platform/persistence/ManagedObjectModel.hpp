// SPDX-License-Identifier: MIT
#pragma once

/// ManagedObjectModel: the entities of a compiled model resource, bound to the classes that stand behind them.
///
/// The resource is not trusted: its sum, every count and every name are checked, and it must agree with the
/// classes it names. What is wrong is told in one Error of the domain "Persistence".

#include "platform/persistence/EntityDescription.hpp"
#include "platform/values/Error.hpp"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <typeindex>
#include <typeinfo>
#include <utility>
#include <vector>

namespace estatebook::platform {

/// Why a model could not be loaded.
enum class ModelErrorCode : std::int64_t {
    Missing = 134001,
    Unreadable = 134002,
    Damaged = 134003,
    Newer = 134004,
    Mismatched = 134005,
};

class ESTATEBOOK_API ManagedObjectModel final : public Object {
public:
    /// Null on failure, with the reason stored through `error` unless that is null. The largest resource read is 1 MiB.
    [[nodiscard]] static Ref<ManagedObjectModel>
    modelWithContentsOfFile(const std::string& path, std::span<const ManagedClass> classes,
                            Ref<Error>* error = nullptr);
    [[nodiscard]] static Ref<ManagedObjectModel> modelWithBytes(std::span<const std::byte> bytes,
                                                                std::span<const ManagedClass> classes,
                                                                Ref<Error>* error = nullptr);

    [[nodiscard]] std::string_view name() const noexcept { return name_; }
    /// Null when there is none of this name.
    [[nodiscard]] const EntityDescription* entityNamed(std::string_view name) const noexcept;
    /// In the order of the resource.
    [[nodiscard]] std::span<const std::unique_ptr<EntityDescription>> entities() const noexcept {
        return entities_;
    }

    /// A T made of the model when it is first asked for, and kept as long as the model is.
    template <class T>
    [[nodiscard]] const T& derived() const {
        for (const auto& [type, known] : derived_)
            if (type == typeid(T)) return *static_cast<const T*>(known.get());
        auto made = std::make_shared<const T>(*this);
        derived_.emplace_back(typeid(T), made);
        return *made;
    }

private:
    friend class ModelReader;
    ManagedObjectModel() noexcept : Object(Counting::Local) {}
    std::string name_;
    std::vector<std::unique_ptr<EntityDescription>> entities_;
    mutable std::vector<std::pair<std::type_index, std::shared_ptr<const void>>> derived_;
};

} // namespace estatebook::platform
