// SPDX-License-Identifier: MIT
// Random books go into a store and come out as the same document, and are reckoned the same from either form.
#include "estatebook/OpenBook.hpp"
#include "estatebook/ValuesDocument.hpp"
#include "estatebook/book/BookFindings.hpp"
#include "estatebook/book/ImpliedSettings.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/book/StoredDocument.hpp"
#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/BookWriter.hpp"

#include "platform/persistence/store/InMemoryStore.hpp"
#include "platform/system/Clock.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "support/Book.hpp"
#include "support/RandomBook.hpp"
#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace estatebook {
namespace {

using bookkit::BookMaker;
using bookkit::DefaultZone;
using bookkit::Random;
using document::BookDocument;
using document::BookReader;
using document::BookWriter;
using platform::Ref;
using testing::IsEmpty;
using testkit::writeFile;

constexpr std::string_view Example = ESTATEBOOK_EXAMPLES "/harbour-street.json";

std::string contentOf(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return std::move(text).str();
}

/// What comes out of a store; whatever is left out is named in the text.
std::string exported(const platform::Store& store) {
    const auto stored = StoredDocument::of(store);
    if (!stored) return stored.error().message;
    const document::WrittenBook written = BookWriter::write(stored->document);
    std::string text = written.text;
    for (const auto* leftOut : {&stored->leftOut, &written.leftOut})
        for (const document::LeftOut& each : *leftOut) text += each.path + ": " + each.reason + '\n';
    return text;
}

/// A document through a store in memory and out again.
std::string throughMemory(const BookDocument& document) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    context->setUndoManager(nullptr);
    const auto& coordinator = context->persistentStoreCoordinator();
    const auto store = coordinator->addPersistentStore("InMemory", "");
    if (const auto failed = takeDocument(document, *context, *store, {})) return failed->message;
    Ref<platform::Error> error;
    if (!context->save(&error)) return error->localizedDescription();
    return exported(*store);
}

void importInto(const std::string& path, const BookDocument& document) {
    NewBook book(path, "import");
    book.take(document);
    book.finish();
}

class StoredBookProperties : public testing::Test {
protected:
    ~StoredBookProperties() override { platform::Clock::setNow({}); }

    const DefaultZone zone{"Europe/London"};
    const testkit::TemporaryFolder folder;
};

TEST_F(StoredBookProperties, everyDocumentComesBackFromAStoreInMemory) {
    Random random;
    for (int i = 0; i < 1000; ++i) {
        const BookDocument book = BookMaker(random).make();
        ASSERT_EQ(throughMemory(book), BookWriter::write(book).text);
    }
}

TEST_F(StoredBookProperties, everyDocumentComesBackFromABookFileThatIsSound) {
    Random random;
    for (int i = 0; i < 50; ++i) {
        const BookDocument document = BookMaker(random).make();
        const std::string path = folder / (std::to_string(i) + ".estatebook");
        importInto(path, document);
        const StoredBook book = StoredBook::openForReading(path);
        ASSERT_EQ(exported(*book.store), BookWriter::write(document).text);
        ASSERT_THAT(findingsIn(book), IsEmpty()) << BookWriter::write(document).text;
        ASSERT_EQ(book.timeZone()->name(), document.timeZone.value_or("Europe/London"));
        ASSERT_FALSE(book.setting("TimeZone").isAbsent());
        ASSERT_FALSE(book.setting("BillingMode").isAbsent());
    }
}

TEST_F(StoredBookProperties, theExampleComesBackByteForByte) {
    const auto reading = BookReader::readFile(std::string(Example));
    EXPECT_EQ(throughMemory(*reading.document), contentOf(Example));
    importInto(folder / "example.estatebook", *reading.document);
    EXPECT_EQ(exported(*StoredBook::openForReading(folder / "example.estatebook").store), contentOf(Example));
}

std::string valuesOf(const std::string& path) {
    std::ostringstream text;
    testing::internal::CaptureStderr(); // a document warns of odd terms
    writeValues(OpenBook::open(path, "2025-11-21T12:00"), text);
    testing::internal::GetCapturedStderr();
    return std::move(text).str();
}

TEST_F(StoredBookProperties, aBookIsReckonedTheSameFromEitherForm) {
    Random random;
    for (int i = 0; i < 40; ++i) {
        const BookDocument document = BookMaker(random).make();
        const std::string name = std::to_string(i);
        writeFile(folder / (name + ".json"), BookWriter::write(document).text);
        importInto(folder / (name + ".estatebook"), document);
        ASSERT_EQ(valuesOf(folder / (name + ".estatebook")), valuesOf(folder / (name + ".json")));
    }
}

} // namespace
} // namespace estatebook
