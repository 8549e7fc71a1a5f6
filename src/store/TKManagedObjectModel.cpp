// SPDX-License-Identifier: MIT
#include "store/TKManagedObjectModel.hpp"

#include "platform/system/Bundle.hpp"
#include "store/ModelClasses.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr char placeOfThisLibrary = 0;

Ref<ManagedObjectModel> loadModel(Ref<Error>* error) {
    const Bundle bundle = Bundle::containing(&placeOfThisLibrary);
    const auto path = bundle.pathForResourceOfType("EstateBook", "momd");
    if (!path) {
        if (error)
            *error = Error::make("Persistence", static_cast<std::int64_t>(ModelErrorCode::Missing),
                                 "The object model EstateBook.momd is not beside the library in " +
                                     bundle.folder() + ". Install the library again.");
        return nullptr;
    }
    return ManagedObjectModel::modelWithContentsOfFile(*path, modelClasses(), error);
}

} // namespace

Ref<ManagedObjectContext> TKManagedObjectModel::inMemoryManagedObjectContext() {
    const auto model = loadModel(nullptr);
    const auto coordinator = makeRef<PersistentStoreCoordinator>(model);
    auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    context->setPersistentStoreCoordinator(coordinator);
    return context;
}

Ref<Error> TKManagedObjectModel::modelError() {
    Ref<Error> error;
    return loadModel(&error) ? nullptr : error;
}

} // namespace estatebook
