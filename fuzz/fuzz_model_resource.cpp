// SPDX-License-Identifier: MIT
// Any bytes are read as a model resource, as they stand and once more with length and sum set right, since a sum
// is no protection against bytes that somebody made. What is loaded is whole, and its objects can be made.
#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/ModelClasses.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace estatebook::platform;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void seal(std::vector<std::byte>& bytes) {
    constexpr std::size_t Header = 24;
    if (bytes.size() < Header) bytes.resize(Header);
    std::memcpy(bytes.data(), "EBMODEL\n\2\0\0", 12);
    std::uint64_t sum = 0xcbf29ce484222325u;
    for (const std::byte each : std::span(bytes).subspan(Header))
        sum = (sum ^ static_cast<std::uint8_t>(each)) * 0x100000001b3u;
    const std::size_t length = bytes.size() - Header;
    for (std::size_t index = 0; index < 4; ++index)
        bytes[12 + index] = static_cast<std::byte>(length >> (8 * index));
    for (std::size_t index = 0; index < 8; ++index)
        bytes[16 + index] = static_cast<std::byte>(sum >> (8 * index));
}

void use(const Ref<ManagedObjectModel>& model) {
    const auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    context->setPersistentStoreCoordinator(makeRef<PersistentStoreCoordinator>(model));
    for (const auto& entity : model->entities()) {
        require(model->entityNamed(entity->name()) == entity.get(), "an entity is not found by its name");
        for (const auto& relationship : entity->relationships())
            require(relationship.destinationEntity != nullptr, "a relationship leads nowhere");
        if (entity->isAbstract()) continue;
        const auto object =
            ManagedObject::initWithEntityInsertIntoManagedObjectContext(*entity, context.get());
        object->forEachModelledProperty([&](const ModelledProperty& property) {
            static_cast<void>(object->primitiveValueForKey(property.key));
        });
    }
}

void load(std::span<const std::byte> bytes) {
    Ref<Error> error;
    const auto model = ManagedObjectModel::modelWithBytes(bytes, estatebook::modelClasses(), &error);
    require(!model == static_cast<bool>(error), "neither a model nor a reason");
    if (model) use(model);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::byte> bytes(size);
    if (size > 0) std::memcpy(bytes.data(), data, size);
    load(bytes);
    seal(bytes);
    load(bytes);
    return 0;
}
