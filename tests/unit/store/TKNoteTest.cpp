// SPDX-License-Identifier: MIT
#include "store/TKNote.hpp"

#include "platform/system/UserName.hpp"
#include "platform/values/AttributedString.hpp"
#include "support/Book.hpp"
#include "support/HeldClock.hpp"

#include <gtest/gtest.h>

#include <string>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::Listener;
using bookkit::onDay;
using bookkit::shownText;
using bookkit::text;

class TKNoteTest : public testing::Test {
protected:
    const DefaultZone zone{"Europe/Berlin"};
    testkit::HeldClock clock{onDay(2025, 2, 16, 11, 30)};
    const Book book;
    const Ref<TKProperty> house = book.property("Elm Street");
    const Ref<TKTenant> cafe = book.tenant("North Cafe");
    const Ref<TKTenure> tenure = book.tenure();
};

TEST_F(TKNoteTest, ANewNoteIsDatedAndSignedAndHasAnEmptyText) {
    clock.pass(0.25);
    for (TKNote* note : {static_cast<TKNote*>(house->createNote()), static_cast<TKNote*>(cafe->createNote()),
                         static_cast<TKNote*>(tenure->createNote())}) {
        EXPECT_EQ(note->createdDate(), clock.now());
        EXPECT_EQ(shownText(note->createdBy()), fullUserName());
        const auto content = note->content().as<AttributedString>();
        ASSERT_TRUE(content);
        EXPECT_TRUE(content->text()->empty());
        EXPECT_TRUE(content->runs().empty());
        EXPECT_FALSE(note->subject());
        EXPECT_FALSE(note->tagNames());
        EXPECT_TRUE(note->tags().empty());
    }
}

TEST_F(TKNoteTest, ItsDateStaysWhenTheDayMovesOn) {
    const auto* note = house->createNote();
    clock.pass(86400);
    EXPECT_EQ(note->createdDate(), onDay(2025, 2, 16, 11, 30));
}

TEST_F(TKNoteTest, WhatANoteSetsItselfIsPartOfTheBook) {
    ASSERT_TRUE(book->save());
    const auto* note = house->createNote();
    EXPECT_TRUE(note->isInserted());
    ASSERT_TRUE(book->save());
    EXPECT_EQ(note->createdDate(), clock.now());
}

TEST_F(TKNoteTest, ANoteOutsideEveryContextIsNeitherDatedNorSigned) {
    const auto* inside = house->createNote();
    const auto loose = refCast<TKNote>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(inside->entity(), nullptr));
    EXPECT_FALSE(loose->createdDate());
    EXPECT_FALSE(loose->createdBy());
    EXPECT_TRUE(loose->content().isAbsent());
}

TEST_F(TKNoteTest, APropertyNoteIsRegardingTheFullName) {
    const auto* note = house->createNote();
    EXPECT_EQ(shownText(note->regarding()), "Property: Elm Street");
    house->setSublease(text("Unit 2"));
    EXPECT_EQ(shownText(note->regarding()), "Property: Elm Street - Unit 2");
    EXPECT_EQ(shownText(note->valueForKey("regarding").string()), "Property: Elm Street - Unit 2");
}

TEST_F(TKNoteTest, ATenantNoteIsRegardingTheName) {
    const auto* note = cafe->createNote();
    EXPECT_EQ(shownText(note->regarding()), "Tenant: North Cafe");
    EXPECT_EQ(shownText(note->valueForKey("regarding").string()), "Tenant: North Cafe");
}

TEST_F(TKNoteTest, ATenureNoteIsRegardingTheTenuresName) {
    const auto* note = tenure->createNote();
    tenure->setProperty(house.get());
    tenure->setTenant(cafe.get());
    EXPECT_EQ(shownText(note->regarding()), "Tenure: " + shownText(tenure->name()));
    EXPECT_EQ(shownText(note->valueForKey("regarding").string()),
              "Tenure: Elm Street - North Cafe ((null) → ...)");
}

TEST_F(TKNoteTest, WithoutItsSubjectANoteIsRegardingWhatIsAbsent) {
    auto* ofHouse = house->createNote();
    auto* ofTenant = cafe->createNote();
    auto* ofTenure = tenure->createNote();
    ofHouse->setProperty(nullptr);
    ofTenant->setTenant(nullptr);
    ofTenure->setTenure(nullptr);
    EXPECT_EQ(shownText(ofHouse->regarding()), "Property: (null)");
    EXPECT_EQ(shownText(ofTenant->regarding()), "Tenant: (null)");
    EXPECT_EQ(shownText(ofTenure->regarding()), "Tenure: (null)");
}

TEST_F(TKNoteTest, WithoutANameOfItsSubjectLikewise) {
    const auto nameless = book.insert<TKTenant>("Tenant");
    EXPECT_EQ(shownText(nameless->createNote()->regarding()), "Tenant: (null)");
    EXPECT_EQ(shownText(book.insert<TKProperty>("Property")->createNote()->regarding()), "Property: (null)");
}

TEST_F(TKNoteTest, ANoteOfAnotherKindIsRegardingItsEntity) {
    class PlainNote final : public TKPropertyNoteProperties {
    public:
        using TKPropertyNoteProperties::TKPropertyNoteProperties;
    };
    const auto birth = ManagedObjectBirth::withoutContext(house->createNote()->entity());
    EXPECT_EQ(shownText(makeRef<PlainNote>(birth)->regarding()), "PropertyNote");
}

TEST_F(TKNoteTest, NobodyIsToldWhenTheNameOfTheSubjectChanges) {
    auto* note = house->createNote();
    const auto listener = makeRef<Listener>();
    listener->listenTo(*note, "regarding");
    house->setName(text("Oak Street"));
    note->setSubject(text("Roof"));
    EXPECT_TRUE(listener->heard().empty());
    EXPECT_EQ(shownText(note->regarding()), "Property: Oak Street");
}

} // namespace
} // namespace estatebook
