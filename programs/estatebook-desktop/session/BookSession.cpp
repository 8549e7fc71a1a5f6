// SPDX-License-Identifier: MIT
#include "estatebook-desktop/session/BookSession.hpp"

#include "estatebook-desktop/session/LiveDocument.hpp"
#include "estatebook-desktop/session/Sentences.hpp"
#include "estatebook/BookObjects.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/book/DocumentFile.hpp"
#include "estatebook/book/KeptCopies.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/book/StoredDocument.hpp"
#include "estatebook/commands/Commands.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/BookWriter.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/system/Clock.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/system/NotificationCentre.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "tags/TKTag.hpp"

#include <QCoreApplication>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace estatebook::desktop {

using document::forMessage;
using platform::Clock;
using platform::Date;
using platform::ManagedObject;
using platform::NotificationCentre;
using platform::Ref;
using platform::SQLiteStore;
using platform::String;
using platform::TimeZone;
using platform::UndoManager;

namespace {

constexpr std::string_view Command = "estatebook-desktop";
constexpr std::size_t LongestName = 4096;
/// How long somebody who edits waits for somebody who reads.
constexpr std::chrono::milliseconds Patience{1000};
/// What a tenure announces when a line about it may be another.
constexpr std::array<std::string_view, 3> AnnouncedKeys{"balance", "name", "startDate"};

SQLiteStore::Options optionsFor(SQLiteStore::Access access) {
    SQLiteStore::Options options = bookOptions({});
    options.holder.program = Command;
    options.access = access;
    options.patience = Patience;
    return options;
}

bool canBeRead(const std::string& path) {
    try {
        return static_cast<bool>(SQLiteStore::open(path, bookModel(), optionsFor(SQLiteStore::Access::Read)));
    } catch (const Failure&) {
        return false;
    }
}

struct Words {
    Q_DECLARE_TR_FUNCTIONS(BookSession)
};

/// A sentence with a text in the place of its "%1".
std::string with(const QString& sentence, const std::string& text) {
    return sentence.arg(QString::fromStdString(text)).toStdString();
}

[[noreturn]] void refuseOther(const std::string& path, const std::string& file) {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw Refusal(with(Words::tr("%1: there is no such book; choose another one"), file), false);
    throw Refusal(with(Words::tr("%1: this is no book file; take a document in with Book > Import"), file),
                  false);
}

/// Registration of undo is on again when it ends, whatever was raised meanwhile.
class RegistrationKept {
public:
    explicit RegistrationKept(const Ref<UndoManager>& manager) : manager_(manager) {}
    ~RegistrationKept() {
        while (manager_ && !manager_->isUndoRegistrationEnabled()) manager_->enableUndoRegistration();
    }
    RegistrationKept(const RegistrationKept&) = delete;
    RegistrationKept& operator=(const RegistrationKept&) = delete;

private:
    Ref<UndoManager> manager_;
};

} // namespace

// -- Opening --------------------------------------------------------------------------------------------------

BookSession::BookSession(std::string path, platform::RunLoop& loop)
    : path_(std::move(path)), file_(forMessage(path_, LongestName)), loop_(loop), side_(path_),
      context_(TKManagedObjectModel::inMemoryManagedObjectContext()) {}

std::unique_ptr<BookSession> BookSession::open(const std::string& path, platform::RunLoop& loop) {
    std::unique_ptr<BookSession> session(new BookSession(path, loop));
    if (!isBookFile(path)) refuseOther(path, session->file_);
    try {
        session->openStore();
    } catch (const Failure& failure) {
        throw Refusal(sentenceOf(failure), canBeRead(path));
    }
    session->begin();
    return session;
}

std::unique_ptr<BookSession> BookSession::openForReading(const std::string& path, platform::RunLoop& loop) {
    std::unique_ptr<BookSession> session(new BookSession(path, loop));
    if (!isBookFile(path)) refuseOther(path, session->file_);
    try {
        session->readAll();
    } catch (const Failure& failure) {
        throw Refusal(sentenceOf(failure), false);
    }
    session->begin();
    return session;
}

void BookSession::openStore() {
    requireModel();
    const SQLiteStore::Options options = optionsFor(SQLiteStore::Access::Write);
    const auto& coordinator = context_->persistentStoreCoordinator();
    auto store = SQLiteStore::open(path_, coordinator->managedObjectModel(), options);
    if (!store) throw storeFailure(file_, store.error());
    store_ = *store;
    coordinator->addPersistentStore(store_);
    context_->setCommitOrigin(options.holder.author, options.holder.program, options.holder.command);
    TimeZone::setDefaultTimeZone(stored().timeZone());
    if (const auto& migration = store_->migration())
        notice_ =
            with(Words::tr(
                     "An earlier version wrote this book; it is up to date now, and is kept as it was in %1"),
                 forMessage(migration->copy, LongestName));
}

StoredBook BookSession::stored() const {
    return {file_, store_, context_};
}

// A store that stays open for reading would hold up whoever saves it.
void BookSession::readAll() {
    const StoredBook stored = StoredBook::openForReading(path_);
    TimeZone::setDefaultTimeZone(stored.timeZone());
    const auto document = StoredDocument::of(*stored.store);
    if (!document) throw storeFailure(file_, document.error());
    static_cast<void>(BookObjects::ofDocument(document->document, *context_));
    condition_ = Condition::ReadOnly;
}

void BookSession::begin() {
    context_->setUndoManager(canEdit() ? platform::makeRef<UndoManager>() : nullptr);
    NotificationCentre::defaultCentre().addObserverSelectorNameObject(
        this, [this](const platform::Notification&) { moveToAsOf(); }, Ref<String>(TKCurrentDateChanged));
    follow();
}

BookSession::~BookSession() {
    NotificationCentre::defaultCentre().removeObserver(this);
    changed_ = nullptr;
    conditionChanged_ = nullptr;
    if (firstEdit_) save();
    if (saving_) saving_->invalidate();
    followed_.clear();
    if (hasSaved_) keepCopyOfToday(stored());
}

void BookSession::makeOfDocument(const std::string& path, std::string_view text, std::string_view name) {
    const auto reading = document::BookReader::readText(text, name);
    if (!reading.document)
        throw Failure(ExitCode::BadData, reading.error.value_or(document::BookError()).text());
    if (const auto& zone = reading.document->timeZone) TimeZone::setDefaultTimeZone(TimeZone::named(*zone));
    NewBook book(path, Command);
    book.take(*reading.document);
    book.finish();
}

void BookSession::makeEmpty(const std::string& path, const std::string& currencyCode) {
    InitOptions options;
    options.file = path;
    options.currency = currencyCode;
    initBook(options);
}

// -- The book -------------------------------------------------------------------------------------------------

std::vector<Ref<TKTenure>> BookSession::tenures() const {
    return context_->fetchAll<TKTenure>("Tenure");
}

// Accounts reckon with their tenures. None of these is to wake amid a sum.
void BookSession::wakeTenures() const {
    for (const auto& tenure : known_) wake(*tenure);
}

// Without its schedule, which a book of many would have no room for.
void BookSession::wake(TKTenure& tenure) const {
    if (tenure.isFault()) {
        static_cast<void>(reckon([&] { return tenure.startDate().has_value(); }));
        tenure.setPeriods(nullptr);
    }
    followOne(tenure);
}

std::vector<Ref<TKProperty>> BookSession::properties() const {
    wakeTenures();
    return context_->fetchAll<TKProperty>("Property");
}

std::vector<Ref<TKTenant>> BookSession::tenants() const {
    wakeTenures();
    return context_->fetchAll<TKTenant>("Tenant");
}

Reckoned<Ref<TKStatement>> BookSession::statementOf(TKTenure& tenure) const {
    const RegistrationKept kept(context_->undoManager());
    wake(tenure);
    const Schedule schedule(tenure);
    if (!schedule.row()) return schedule.row().error();
    return reckon([&] { return tenure.statement(); });
}

Ref<String> BookSession::currencyCode() const {
    return TKState::valueForNameInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName), *context_)
        .string();
}

platform::DecimalBehavior BookSession::rounding() const {
    return platform::hostOperations().currencyRoundingBehaviourForCurrencyCode(currencyCode());
}

std::vector<std::string> BookSession::tagNames() const {
    std::set<std::string> names;
    for (const char* entity : {"AccountTag", "TransactionTag", "NoteTag"})
        for (const auto& tag : context_->fetchAll<TKTag>(entity))
            if (const auto name = tag->name()) names.insert(name->string());
    return {names.begin(), names.end()};
}

// -- Editing --------------------------------------------------------------------------------------------------

void BookSession::perform(const std::string& name, const std::function<void()>& edit) {
    UndoManager& manager = *context_->undoManager();
    manager.endEvent();
    const bool hadChanges = context_->hasChanges();
    try {
        edit();
    } catch (...) {
        context_->processPendingChanges();
        manager.endEvent();
        undo();
        throw;
    }
    context_->processPendingChanges();
    manager.setActionName(name);
    manager.endEvent();
    // An edit may take back one that is not saved yet, so that there is nothing to save, but something to show.
    if (hadChanges || context_->hasChanges()) noteEdit();
}

bool BookSession::canUndo() const {
    return canEdit() && context_->undoManager()->canUndo();
}

bool BookSession::canRedo() const {
    return canEdit() && context_->undoManager()->canRedo();
}

std::string BookSession::undoName() const {
    return canEdit() ? context_->undoManager()->undoActionName() : std::string();
}

std::string BookSession::redoName() const {
    return canEdit() ? context_->undoManager()->redoActionName() : std::string();
}

// A tenure may refuse to reckon with the terms that come back; they are back all the same.
void BookSession::undo() {
    if (!canUndo()) return;
    static_cast<void>(reckon([&] { return context_->undo(), true; }));
    noteEdit();
}

void BookSession::redo() {
    if (!canRedo()) return;
    static_cast<void>(reckon([&] { return context_->redo(), true; }));
    noteEdit();
}

void BookSession::noteEdit() {
    const double now = Clock::uptime();
    if (!firstEdit_) firstEdit_ = now;
    isAheadOfSideFile_ = true;
    if (condition_ != Condition::Stuck) setCondition(Condition::Edited);
    scheduleSave(std::min(SecondsOfRest, *firstEdit_ + SecondsUnsaved - now));
    follow();
    announce();
}

// -- Saving ---------------------------------------------------------------------------------------------------

void BookSession::scheduleSave(double seconds) {
    if (saving_) saving_->invalidate();
    saving_ = platform::Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        seconds, nullptr, [this](platform::Timer&) { save(); }, {}, false);
    loop_.addTimer(saving_);
}

bool BookSession::save() {
    if (!canEdit() || !firstEdit_) return true;
    context_->undoManager()->endEvent();
    Ref<platform::Error> error;
    std::string reason;
    try {
        if (!context_->save(&error)) reason = reasonOf(*error);
    } catch (const platform::Exception& exception) {
        reason = sentenceOf(file_, exception);
    }
    if (reason.empty()) {
        firstEdit_.reset();
        isAheadOfSideFile_ = false;
        hasSaved_ = true;
        if (saving_) saving_->invalidate();
        side_.remove();
        setCondition(Condition::Saved);
        return true;
    }
    setCondition(Condition::Stuck, reason + putAside());
    // Whoever reads the book may be done by then, and there may be room on the disk again.
    firstEdit_ = Clock::uptime();
    scheduleSave(SecondsUnsaved);
    return false;
}

std::string BookSession::reasonOf(const platform::Error& error) const {
    const auto ends = std::ranges::find_if(
        known_, [](const auto& tenure) { return !tenure->isFault() && !tenure->validateDuration(nullptr); });
    if (ends != known_.end())
        return with(
            Words::tr("\"%1\" ends before it starts, so that the book cannot be saved; correct its dates"),
            forMessage((*ends)->name()->view(), 200));
    return sentenceOf(storeFailure(file_, *store_, error));
}

/// What is to be added to the reason.
std::string BookSession::putAside() {
    std::string kept =
        with(Words::tr(". Until then the edits are kept in %1"), forMessage(side_.path(), LongestName));
    if (!isAheadOfSideFile_) return kept;
    try {
        side_.write(document::BookWriter::write(liveDocument(*context_)).text);
    } catch (const Failure& failure) {
        return with(Words::tr(". The edits are only in memory: %1"), sentenceOf(failure));
    } catch (const platform::Exception& exception) {
        return with(Words::tr(". The edits are only in memory: %1"), sentenceOf(file_, exception));
    }
    isAheadOfSideFile_ = false;
    return kept;
}

void BookSession::setCondition(Condition condition, std::string trouble) {
    if (condition == condition_ && trouble == trouble_) return;
    condition_ = condition;
    trouble_ = std::move(trouble);
    if (conditionChanged_) conditionChanged_();
}

void BookSession::takePutAside() {
    const DocumentFile content = DocumentFile::read(side_.path());
    try {
        keepCopyBefore(platform::BookCopies::Occasion::Import, stored());
    } catch (const StoreRefusal& refusal) {
        const std::string why = sentenceOf(storeFailure(file_, refusal.error()));
        throw Failure(refusal.code(),
                      with(Words::tr("No copy can be kept, so that nothing was done. %1"), why));
    }
    try {
        clearBook();
        BookObjects::keptOfDocument(content.document, *context_);
        context_->processPendingChanges();
    } catch (...) {
        context_->rollback();
        throw;
    }
    context_->undoManager()->removeAllActions();
    noteEdit();
}

// Tenures first: an account that has one stays, and settings are followed by tenures.
void BookSession::clearBook() {
    followed_.clear();
    known_.clear();
    for (const char* entity : {"Tenure", "Account", "State"}) {
        for (const auto& object : context_->fetchAll<ManagedObject>(entity)) context_->deleteObject(*object);
        context_->processPendingChanges();
    }
}

// -- Being told -----------------------------------------------------------------------------------------------

void BookSession::follow() {
    known_ = tenures();
    std::unordered_set<const TKTenure*> here;
    for (const auto& tenure : known_) {
        here.insert(tenure.get());
        if (!tenure->isFault()) followOne(*tenure);
    }
    std::erase_if(followed_, [&](const auto& each) { return !here.contains(each.first); });
}

void BookSession::followOne(TKTenure& tenure) const {
    auto& announcements = followed_[&tenure];
    if (!announcements.empty()) return;
    for (const std::string_view key : AnnouncedKeys)
        announcements.push_back(tenure.observe(key, [this] { announce(); }));
}

void BookSession::announce() const {
    if (changed_) changed_();
}

// -- The day --------------------------------------------------------------------------------------------------

Date BookSession::today() const {
    return TKCurrentDateController::sharedInstance().currentDate().value_or(Clock::now());
}

void BookSession::setAsOf(std::optional<Date> day) {
    asOf_ = day;
    if (asOf_)
        moveToAsOf();
    else
        TKCurrentDateController::sharedInstance().dailyUpdate();
}

void BookSession::moveToAsOf() {
    if (asOf_) TKCurrentDateController::sharedInstance().setCurrentDate(asOf_);
    announce();
}

} // namespace estatebook::desktop
