// SPDX-License-Identifier: MIT
#pragma once

/// Contexts over the library's own model resource in which some entities are served by classes that report
/// every hook.

#include "model/TKPropertyNoteProperties.hpp"
#include "model/TKStateProperties.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/system/Bundle.hpp"
#include "store/ModelClasses.hpp"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::test {

/// What the probes of a test report, and what they are to do.
struct Hooks {
    /// "hook NUMBER", where NUMBER is the object's place in the order of creation.
    std::vector<std::string> log;
    std::function<void(platform::ManagedObject&, std::string_view hook)> react;
    /// Null is valid; asked for insertions and updates.
    std::function<platform::Ref<platform::Error>(platform::ManagedObject&)> judge;

    Hooks() { current = this; }
    ~Hooks() { current = nullptr; }
    Hooks(const Hooks&) = delete;
    Hooks& operator=(const Hooks&) = delete;

    [[nodiscard]] std::size_t count(std::string_view entry) const {
        return static_cast<std::size_t>(std::ranges::count(log, entry));
    }

    /// Without a store all numbers are counted from a far one on.
    static std::uint64_t numberOf(const platform::ManagedObject& object) {
        return object.creationNumber() % (std::uint64_t{1} << 62);
    }

    static inline Hooks* current = nullptr;
    static void call(platform::ManagedObject& object, std::string_view hook) {
        if (!current) return;
        current->log.push_back(std::string(hook) + " " + std::to_string(numberOf(object)));
        if (const auto reaction = current->react) reaction(object, hook);
    }
    static bool validate(platform::ManagedObject& object, std::string_view hook,
                         platform::Ref<platform::Error>* error) {
        call(object, hook);
        const auto failure = current && current->judge ? current->judge(object) : nullptr;
        if (failure && error) *error = failure;
        return !failure;
    }
};

template <class Base>
class Probe final : public Base {
public:
    using Base::Base;
    void awakeFromInsert() override {
        Base::awakeFromInsert();
        Hooks::call(*this, "awakeFromInsert");
    }
    void awakeFromFetch() override {
        Base::awakeFromFetch();
        Hooks::call(*this, "awakeFromFetch");
    }
    void awakeFromSnapshotEvents(unsigned events) override {
        Base::awakeFromSnapshotEvents(events);
        Hooks::call(*this, "awakeFromSnapshotEvents:" + std::to_string(events));
    }
    void willTurnIntoFault() override {
        Hooks::call(*this, "willTurnIntoFault");
        Base::willTurnIntoFault();
    }
    void prepareForDeletion() override {
        Hooks::call(*this, "prepareForDeletion");
        Base::prepareForDeletion();
    }
    void willSave() override {
        Base::willSave();
        Hooks::call(*this, "willSave");
    }
    void didSave() override {
        Base::didSave();
        Hooks::call(*this, "didSave");
    }
    bool validateForInsert(platform::Ref<platform::Error>* error) override {
        return Base::validateForInsert(error) && Hooks::validate(*this, "validateForInsert", error);
    }
    bool validateForUpdate(platform::Ref<platform::Error>* error) override {
        return Base::validateForUpdate(error) && Hooks::validate(*this, "validateForUpdate", error);
    }
    bool validateForDelete(platform::Ref<platform::Error>* error) override {
        Hooks::call(*this, "validateForDelete");
        return Base::validateForDelete(error);
    }

protected:
    ~Probe() override = default;
};

using ProbeState = Probe<TKStateProperties>;
using ProbeNote = Probe<TKPropertyNoteProperties>;

/// The classes of the model, "State" and "PropertyNote" served by probes.
inline std::span<const platform::ManagedClass> probedClasses() {
    static const std::vector<platform::ManagedClass> classes = [] {
        std::vector<platform::ManagedClass> all(modelClasses().begin(), modelClasses().end());
        for (platform::ManagedClass& each : all) {
            if (each.name == "TKState") each.make = platform::makeManagedObject<ProbeState>;
            if (each.name == "TKPropertyNote") each.make = platform::makeManagedObject<ProbeNote>;
        }
        return all;
    }();
    return classes;
}

/// Where the compiled model stands.
inline std::string modelResourcePath() {
    const auto path =
        platform::Bundle::containing(modelClasses().data()).pathForResourceOfType("EstateBook", "momd");
    if (!path) throw std::runtime_error("the model resource is missing");
    return *path;
}

inline platform::Ref<platform::ManagedObjectContext> probedContext() {
    using namespace platform;
    auto model = ManagedObjectModel::modelWithContentsOfFile(modelResourcePath(), probedClasses());
    auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    context->setPersistentStoreCoordinator(makeRef<PersistentStoreCoordinator>(std::move(model)));
    return context;
}

} // namespace estatebook::test
