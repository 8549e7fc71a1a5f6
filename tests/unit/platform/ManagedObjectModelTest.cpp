// SPDX-License-Identifier: MIT

// The compiled model: loaded, or refused with one named error, whatever its bytes are.

#include "support/ProbedContext.hpp"

#include "model/Keys.hpp"
#include "store/ModelClasses.hpp"
#include "store/TKManagedObjectModel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace estatebook::platform {
namespace {

using testing::HasSubstr;
using Bytes = std::vector<std::byte>;

Bytes realResource() {
    std::ifstream file(test::modelResourcePath(), std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const auto* first = reinterpret_cast<const std::byte*>(content.data());
    return {first, first + content.size()};
}

/// Sets length and sum right for whatever payload there is.
void seal(Bytes& bytes) {
    std::uint64_t sum = 0xcbf29ce484222325u;
    for (std::size_t index = 24; index < bytes.size(); ++index)
        sum = (sum ^ static_cast<std::uint8_t>(bytes[index])) * 0x100000001b3u;
    const auto length = static_cast<std::uint32_t>(bytes.size() - 24);
    for (std::size_t index = 0; index < 4; ++index)
        bytes[12 + index] = static_cast<std::byte>(length >> (8 * index));
    for (std::size_t index = 0; index < 8; ++index)
        bytes[16 + index] = static_cast<std::byte>(sum >> (8 * index));
}

/// A payload written piece by piece.
class Writer {
public:
    Writer& number(unsigned value, unsigned size) {
        for (unsigned index = 0; index < size; ++index)
            bytes_.push_back(static_cast<std::byte>(value >> (8 * index)));
        return *this;
    }
    Writer& text(std::string_view text) {
        number(static_cast<unsigned>(text.size()), 2);
        for (const char each : text) bytes_.push_back(static_cast<std::byte>(each));
        return *this;
    }
    Writer& entity(std::string_view name, std::string_view parent = "",
                   std::string_view className = "TKState") {
        return text(name).text(className).text(parent).number(0, 1);
    }
    [[nodiscard]] Bytes finish() const {
        Bytes bytes(24 + bytes_.size());
        std::memcpy(bytes.data(), "EBMODEL\n\2\0\0", 12);
        std::ranges::copy(bytes_, bytes.begin() + 24);
        seal(bytes);
        return bytes;
    }

private:
    Bytes bytes_;
};

ModelErrorCode codeOf(const Bytes& bytes, std::span<const ManagedClass> classes = modelClasses()) {
    Ref<Error> error;
    EXPECT_FALSE(ManagedObjectModel::modelWithBytes(bytes, classes, &error));
    EXPECT_TRUE(error);
    if (!error) return {};
    EXPECT_EQ(error->domain(), "Persistence");
    EXPECT_THAT(std::string(error->localizedDescription()), HasSubstr("The object model cannot be used: "));
    EXPECT_EQ(error->localizedDescription().find('\n'), std::string::npos) << "one line";
    return static_cast<ModelErrorCode>(error->code());
}

/// Two models of the same entities and properties.
bool equalModels(const ManagedObjectModel& a, const ManagedObjectModel& b) {
    const auto properties = [](const EntityDescription& entity) {
        std::vector<std::string> all{std::string(entity.name()), std::string(entity.managedObjectClassName()),
                                     std::to_string(entity.isAbstract()),
                                     entity.superentity() ? std::string(entity.superentity()->name()) : ""};
        for (const auto& each : entity.attributes()) all.emplace_back(each.name.name());
        for (const auto& each : entity.relationships())
            all.push_back(std::string(each.name.name()) + each.destination +
                          std::to_string(int(each.deleteRule)));
        return all;
    };
    return a.name() == b.name() &&
           std::ranges::equal(
               a.entities(), b.entities(), {}, [&](const auto& entity) { return properties(*entity); },
               [&](const auto& entity) { return properties(*entity); });
}

TEST(ManagedObjectModelTest, TheRealResourceIsLoadedFromBesideTheLibrary) {
    Ref<Error> error;
    const auto model =
        ManagedObjectModel::modelWithContentsOfFile(test::modelResourcePath(), modelClasses(), &error);
    ASSERT_TRUE(model) << error->localizedDescription();
    EXPECT_FALSE(error);
    EXPECT_EQ(model->name(), "EstateBook");
    EXPECT_EQ(model->entities().size(), 16u);
    EXPECT_EQ(model->entityNamed("Castle"), nullptr);
    const auto& property = *model->entityNamed("Property");
    EXPECT_EQ(property.superentity(), model->entityNamed("Account"));
    EXPECT_TRUE(property.isKindOfEntity(*model->entityNamed("Account")));
    EXPECT_FALSE(model->entityNamed("Account")->isKindOfEntity(property));
    EXPECT_EQ(property.relationship(keys::tenures)->destinationEntity, model->entityNamed("Tenure"));
    EXPECT_EQ(property.relationship(keys::name), nullptr);
    EXPECT_EQ(property.attributes()[0].name, keys::name) << "inherited ones first";
    EXPECT_FALSE(property.attributes()[0].isIndexed);
    EXPECT_TRUE(model->entityNamed("State")->attributes()[0].isIndexed);
    EXPECT_FALSE(TKManagedObjectModel::modelError());
}

TEST(ManagedObjectModelTest, AMissingFileIsNamed) {
    Ref<Error> error;
    EXPECT_FALSE(
        ManagedObjectModel::modelWithContentsOfFile("/nowhere/EstateBook.momd", modelClasses(), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(static_cast<ModelErrorCode>(error->code()), ModelErrorCode::Missing);
    EXPECT_THAT(std::string(error->localizedDescription()), HasSubstr("/nowhere/EstateBook.momd"));
    EXPECT_FALSE(ManagedObjectModel::modelWithContentsOfFile("/nowhere/EstateBook.momd", modelClasses()));
}

TEST(ManagedObjectModelTest, AFolderOrAHugeFileIsUnreadable) {
    Ref<Error> error;
    EXPECT_FALSE(ManagedObjectModel::modelWithContentsOfFile("/", modelClasses(), &error));
    EXPECT_EQ(static_cast<ModelErrorCode>(error->code()), ModelErrorCode::Unreadable);
    const auto path = std::filesystem::temp_directory_path() / ("huge-model-" + std::to_string(::getpid()));
    std::ofstream(path) << std::string((std::size_t{1} << 20) + 1, 'x');
    EXPECT_FALSE(ManagedObjectModel::modelWithContentsOfFile(path, modelClasses(), &error));
    EXPECT_EQ(static_cast<ModelErrorCode>(error->code()), ModelErrorCode::Unreadable);
    std::ofstream(path) << "EBMODEL";
    EXPECT_FALSE(ManagedObjectModel::modelWithContentsOfFile(path, modelClasses(), &error));
    EXPECT_EQ(static_cast<ModelErrorCode>(error->code()), ModelErrorCode::Damaged);
    EXPECT_THAT(std::string(error->localizedDescription()), HasSubstr(path.string()));
    std::filesystem::remove(path);
}

TEST(ManagedObjectModelTest, EveryTruncationIsRefused) {
    const Bytes whole = realResource();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Ref<Error> error;
        ASSERT_FALSE(ManagedObjectModel::modelWithBytes(std::span(whole).first(size), modelClasses(), &error))
            << size;
        ASSERT_TRUE(error) << size;
    }
}

TEST(ManagedObjectModelTest, EverySingleFlippedByteIsRefused) {
    const Bytes whole = realResource();
    for (std::size_t index = 0; index < whole.size(); ++index) {
        for (const unsigned mask : {0x01u, 0x80u, 0xffu}) {
            Bytes flipped = whole;
            flipped[index] ^= static_cast<std::byte>(mask);
            ASSERT_FALSE(ManagedObjectModel::modelWithBytes(flipped, modelClasses())) << index << " " << mask;
        }
    }
}

// A sum does not protect against a resource that somebody made.
TEST(ManagedObjectModelTest, ASealedResourceWithAFlippedByteIsRefusedOrDescribesAWholeModel) {
    const Bytes whole = realResource();
    const auto real = ManagedObjectModel::modelWithBytes(whole, modelClasses());
    std::size_t loaded = 0;
    for (std::size_t index = 24; index < whole.size(); ++index) {
        Bytes flipped = whole;
        flipped[index] ^= std::byte{1};
        seal(flipped);
        const auto model = ManagedObjectModel::modelWithBytes(flipped, modelClasses());
        if (!model) continue;
        ++loaded;
        ASSERT_EQ(model->entities().size(), real->entities().size());
        for (const auto& entity : model->entities())
            for (const auto& relationship : entity->relationships())
                ASSERT_TRUE(relationship.destinationEntity);
    }
    EXPECT_LT(loaded, whole.size() / 4) << "names, rules of deletion and abstract marks may differ";
}

TEST(ManagedObjectModelTest, ANewerFormatIsNamedAsSuch) {
    Bytes bytes = realResource();
    bytes[8] = std::byte{3};
    EXPECT_EQ(codeOf(bytes), ModelErrorCode::Newer);
    bytes[8] = std::byte{1};
    EXPECT_EQ(codeOf(bytes), ModelErrorCode::Damaged);
}

TEST(ManagedObjectModelTest, WhatFollowsTheLastEntityIsRefused) {
    Bytes bytes = realResource();
    bytes.push_back(std::byte{0});
    EXPECT_EQ(codeOf(bytes), ModelErrorCode::Damaged);
    seal(bytes);
    EXPECT_EQ(codeOf(bytes), ModelErrorCode::Damaged);
}

TEST(ManagedObjectModelTest, AModelThatItsClassesWereNotBuiltForIsRefused) {
    const Bytes bytes = realResource();
    EXPECT_EQ(codeOf(bytes, {}), ModelErrorCode::Mismatched);
    EXPECT_EQ(codeOf(bytes, modelClasses().first(3)), ModelErrorCode::Mismatched);
    std::vector<ManagedClass> classes(modelClasses().begin(), modelClasses().end());
    for (ManagedClass& each : classes)
        if (each.name == "TKState") each.properties = {};
    EXPECT_EQ(codeOf(bytes, classes), ModelErrorCode::Mismatched);

    const auto withAttribute = [](std::string_view name, unsigned type, unsigned transient,
                                  unsigned indexed = 0) {
        return Writer()
            .text("EstateBook")
            .number(1, 2)
            .entity("State")
            .number(2, 2)
            .text("name")
            .number(1, 1)
            .number(0, 3)
            .text(name)
            .number(type, 1)
            .number(transient, 1)
            .number(0, 1)
            .number(indexed, 1)
            .number(0, 2)
            .finish();
    };
    EXPECT_TRUE(ManagedObjectModel::modelWithBytes(withAttribute("value", 5, 0), modelClasses()))
        << "one entity can be a model";
    EXPECT_EQ(codeOf(withAttribute("value", 4, 0)), ModelErrorCode::Mismatched);
    EXPECT_EQ(codeOf(withAttribute("value", 5, 1)), ModelErrorCode::Mismatched);
    EXPECT_EQ(codeOf(withAttribute("amount", 5, 0)), ModelErrorCode::Mismatched);
    EXPECT_EQ(codeOf(withAttribute("name", 1, 0)), ModelErrorCode::Mismatched);
    EXPECT_EQ(codeOf(withAttribute("value", 7, 0)), ModelErrorCode::Damaged);
    EXPECT_EQ(codeOf(withAttribute("value", 5, 2)), ModelErrorCode::Damaged);
    EXPECT_EQ(codeOf(withAttribute("value", 5, 0, 1)), ModelErrorCode::Damaged)
        << "nobody looks things up by any value";
    EXPECT_EQ(codeOf(withAttribute("value", 5, 0, 2)), ModelErrorCode::Damaged);
}

TEST(ManagedObjectModelTest, NamesOfAForeignResourceMakeNoKeys) {
    const auto bytes = Writer()
                           .text("M")
                           .number(1, 2)
                           .entity("State")
                           .number(1, 2)
                           .text("modelTestForeignName")
                           .number(1, 1)
                           .number(0, 3)
                           .number(0, 2)
                           .finish();
    EXPECT_EQ(codeOf(bytes), ModelErrorCode::Mismatched);
    EXPECT_FALSE(Key::find("modelTestForeignName"));
}

TEST(ManagedObjectModelTest, AFamilyWithoutEndIsRefused) {
    const auto family = [](std::initializer_list<std::pair<const char*, const char*>> members) {
        Writer writer;
        writer.text("M").number(static_cast<unsigned>(members.size()), 2);
        for (const auto& [name, parent] : members) writer.entity(name, parent).number(0, 2).number(0, 2);
        return writer.finish();
    };
    EXPECT_EQ(codeOf(family({{"A", "A"}})), ModelErrorCode::Damaged);
    EXPECT_EQ(codeOf(family({{"A", "B"}, {"B", "A"}})), ModelErrorCode::Damaged);
    EXPECT_EQ(codeOf(family({{"A", "B"}})), ModelErrorCode::Damaged) << "a parent that is not there";
    EXPECT_EQ(codeOf(family({{"A", ""}, {"A", ""}})), ModelErrorCode::Damaged);
    EXPECT_EQ(codeOf(family({{"", ""}})), ModelErrorCode::Damaged);
}

TEST(ManagedObjectModelTest, AResourceMadeToExhaustUsEndsSoon) {
    Writer chain;
    chain.text("M").number(65535, 2);
    for (unsigned index = 0; index < 60000; ++index)
        chain.entity("E" + std::to_string(index), "E" + std::to_string(index + 1)).number(0, 2).number(0, 2);
    EXPECT_EQ(codeOf(chain.finish()), ModelErrorCode::Damaged);

    Writer wide;
    wide.text("M").number(1, 2).entity("State").number(65535, 2);
    for (unsigned index = 0; index < 65535; ++index) wide.text("name").number(1, 1).number(0, 3);
    wide.number(0, 2);
    EXPECT_EQ(codeOf(wide.finish()), ModelErrorCode::Damaged);
}

TEST(ManagedObjectModelTest, LoadingTwiceGivesEqualModels) {
    const auto first = ManagedObjectModel::modelWithBytes(realResource(), modelClasses());
    const auto second = ManagedObjectModel::modelWithBytes(realResource(), modelClasses());
    EXPECT_TRUE(equalModels(*first, *second));
    EXPECT_NE(first, second);
}

} // namespace
} // namespace estatebook::platform
