// SPDX-License-Identifier: MIT

// Undo, redo, rollback and refresh while the disk does not answer: told once, nothing is half done, and the next try works when the
// disk answers again.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "support/MemoryDisk.hpp"
#include "support/StoreKinds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::MemoryDisk;

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

class UnreadableUndoTest : public testing::Test {
protected:
    MemoryDisk disk;
    const std::string path = "/book.estatebook";
    Ref<ManagedObjectContext> book =
        contextOn(*SQLiteStore::create(path, bookModel(), {.fileSystem = &disk}));
    Ref<TKProperty> elm = property("Elm");
    Ref<TKProperty> ash = property("Ash");
    Ref<TKPropertyNote> note = noteOf(*elm);

    UnreadableUndoTest() {
        book->undoManager()->setGroupsByEvent(true);
        done();
        save();
    }
    static Ref<ManagedObjectContext> contextOn(const Ref<SQLiteStore>& store) {
        auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        coordinator->addPersistentStore(Ref<Store>(store));
        auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
        context->setPersistentStoreCoordinator(std::move(coordinator));
        return context;
    }
    Ref<TKProperty> property(std::string_view name) {
        const auto flat = book->insertNewObject<TKProperty>("Property");
        flat->setName(text(name));
        return flat;
    }
    Ref<TKPropertyNote> noteOf(TKProperty& flat) {
        const auto made = book->insertNewObject<TKPropertyNote>("PropertyNote");
        made->setProperty(&flat);
        return made;
    }
    /// What the user did is one step.
    void done() { book->undoManager()->endEvent(); }
    void save() {
        Ref<Error> error;
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
    }
    /// Their values and members have to be read again.
    void forgetAll() {
        for (const auto& object : std::initializer_list<Ref<ManagedObject>>{elm, ash, note})
            if (object->managedObjectContext()) book->refreshObjectMergeChanges(*object, false);
    }
    /// Once, and for good; then it works.
    void expectTried(const std::function<void()>& act, const std::function<void()>& expectUnchanged) {
        for (int attempt = 0; attempt < 2; ++attempt) {
            std::size_t failed = 0;
            disk.fault = [&](MemoryDisk::Call) {
                ++failed;
                return MemoryDisk::Fault::Fails;
            };
            try {
                act();
                ADD_FAILURE() << "nothing was told";
            } catch (const ObjectInaccessibleException& exception) {
                EXPECT_THAT(exception.reason(), testing::StartsWith(path + ": "));
            }
            disk.fault = nullptr;
            EXPECT_GT(failed, 0u);
            if (attempt == 0) expectUnchanged();
            if (attempt == 0) forgetUnchanged();
        }
        act();
    }
    /// What was looked at meanwhile.
    void forgetUnchanged() {
        for (const auto& object : std::initializer_list<Ref<ManagedObject>>{elm, ash, note})
            if (object->managedObjectContext() && !object->hasChanges())
                book->refreshObjectMergeChanges(*object, false);
    }
    [[nodiscard]] std::string state() const {
        const auto nameOf = [](const TKProperty& flat) {
            return flat.managedObjectContext() && !flat.isDeleted() && flat.name()
                       ? flat.name()->string() + std::to_string(flat.notes().count())
                       : std::string("-");
        };
        const bool isThere = note->managedObjectContext() && !note->isDeleted();
        return nameOf(*elm) + " " + nameOf(*ash) + " " +
               (!isThere                        ? "-"
                : note->property() == elm.get() ? "elm"
                : note->property() == ash.get() ? "ash"
                                                : "none");
    }
    void expectState(std::string_view expected) const { EXPECT_EQ(state(), expected); }
};

TEST_F(UnreadableUndoTest, AChangedValue) {
    elm->setName(text("Oak"));
    done();
    save();
    forgetAll();
    expectTried([&] { book->undo(); }, [&] { expectState("Oak1 Ash0 elm"); });
    expectState("Elm1 Ash0 elm");
    save();
    forgetAll();
    expectTried([&] { book->redo(); }, [&] { expectState("Elm1 Ash0 elm"); });
    expectState("Oak1 Ash0 elm");
    book->undo();
    expectState("Elm1 Ash0 elm");
}

TEST_F(UnreadableUndoTest, AChangedLink) {
    note->setProperty(ash.get());
    done();
    save();
    forgetAll();
    expectTried([&] { book->undo(); }, [&] { expectState("Elm0 Ash1 ash"); });
    expectState("Elm1 Ash0 elm");
    save();
    forgetAll();
    expectTried([&] { book->redo(); }, [&] { expectState("Elm1 Ash0 elm"); });
    expectState("Elm0 Ash1 ash");
}

TEST_F(UnreadableUndoTest, AnInsertion) {
    note = noteOf(*ash);
    done();
    save();
    forgetAll();
    expectTried([&] { book->undo(); }, [&] { expectState("Elm1 Ash1 ash"); });
    expectState("Elm1 Ash0 -");
    save();
    forgetAll();
    expectTried([&] { book->redo(); }, [&] { expectState("Elm1 Ash0 -"); });
    expectState("Elm1 Ash1 ash");
    save();
}

TEST_F(UnreadableUndoTest, ADeletion) {
    book->deleteObject(*note);
    book->processPendingChanges();
    done();
    save();
    forgetAll();
    expectTried([&] { book->undo(); }, [&] { expectState("Elm0 Ash0 -"); });
    expectState("Elm1 Ash0 elm");
    save();
    forgetAll();
    expectTried([&] { book->redo(); }, [&] { expectState("Elm1 Ash0 elm"); });
    expectState("Elm0 Ash0 -");
}

TEST_F(UnreadableUndoTest, ARollback) {
    note->setProperty(ash.get());
    elm->setName(text("Oak"));
    book->refreshObjectMergeChanges(*ash, false);
    ASSERT_TRUE(ash->isFault());
    expectTried([&] { book->rollback(); }, [&] { expectState("Oak0 Ash1 ash"); });
    expectState("Elm1 Ash0 elm");
    EXPECT_FALSE(book->hasChanges());
}

TEST_F(UnreadableUndoTest, ARollbackOfADeletionThatWasNotCarriedOutYetNeedsNoReading) {
    forgetAll();
    EXPECT_EQ(elm->name()->view(), "Elm");
    book->deleteObject(*elm);
    disk.fault = [](MemoryDisk::Call) { return MemoryDisk::Fault::Fails; };
    book->rollback();
    disk.fault = nullptr;
    EXPECT_FALSE(book->hasChanges());
    expectState("Elm1 Ash0 elm");
}

TEST_F(UnreadableUndoTest, ADeletionThatCannotBeCarriedOutYetStaysAStepToUndo) {
    forgetAll();
    EXPECT_EQ(elm->name()->view(), "Elm");
    book->deleteObject(*elm);
    disk.fault = [](MemoryDisk::Call) { return MemoryDisk::Fault::Fails; };
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_THROW(book->processPendingChanges(), ObjectInaccessibleException);
    disk.fault = nullptr;
    done();
    expectState("- Ash0 -");
    book->undo();
    expectState("Elm1 Ash0 elm");
}

TEST_F(UnreadableUndoTest, ARefreshThatDropsChanges) {
    note->setProperty(ash.get());
    book->refreshObjectMergeChanges(*ash, false);
    ASSERT_TRUE(ash->isFault());
    expectTried([&] { book->refreshObjectMergeChanges(*note, false); },
                [&] {
                    expectState("Elm0 Ash1 ash");
                    EXPECT_TRUE(note->isUpdated());
                });
    expectState("Elm1 Ash0 elm");
    EXPECT_FALSE(note->hasChanges());
}

TEST_F(UnreadableUndoTest, ARefreshThatKeepsChanges) {
    elm->setName(text("Oak"));
    expectTried([&] { book->refreshObjectMergeChanges(*elm, true); }, [&] { expectState("Oak1 Ash0 elm"); });
    expectState("Oak1 Ash0 elm");
    EXPECT_TRUE(elm->isUpdated());
    save();
}

} // namespace
} // namespace estatebook::platform
