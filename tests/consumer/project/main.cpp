// SPDX-License-Identifier: MIT
#include <store/EstateBook_ModelVersion.hpp>
#include <store/TKManagedObjectModel.hpp>
#include <store/TKProperty.hpp>

#include <cstdio>

using namespace estatebook;

int main() {
    std::fputs(reinterpret_cast<const char*>(EstateBook_ModelVersionString), stdout);

    // An entity exists only when the model's resource was found where it was installed.
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto flat = context->insertNewObject<TKProperty>("Property");
    flat->setName(platform::String::make("Flat 2"));
    std::puts(flat->name()->string().c_str());
}
