// SPDX-License-Identifier: MIT
// The program with windows on a book of 10,000 lettings and a million payments, on no screen: its first screen against opening the
// same book and reading the rows that are in sight, without a window; the whole list of arrears against a bare reading of all
// transactions by the plain C interface of SQLite; screens of a long list against as many of a short one; and ten thousand
// announcements against one, with what it costs to make them where nobody looks.
//
// Books are made in the folder of the benchmark when they are not there yet, and kept. ESTATEBOOK_BENCH_TENURES says how many
// lettings; a letting has a hundred payments.

#include "estatebook-desktop/window/MainWindow.hpp"

#include "estatebook/book/StoredBook.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/system/Clock.hpp"
#include "platform/toolkit/qt/QtToolkit.hpp"
#include "reports/RentRoll.hpp"
#include "store/TKCurrentDateController.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::desktop;
using namespace estatebook::platform;
using Page = MainWindow::Page;

constexpr const char* Zone = "Europe/London";
constexpr std::int64_t PaymentsOfTenure = 100;
constexpr std::int64_t MonthsOfRent = 60;
constexpr std::int64_t ScreensScrolled = 25;
constexpr std::int64_t Announcements = 10'000;

std::int64_t tenureCount() {
    const char* given = std::getenv("ESTATEBOOK_BENCH_TENURES");
    return given ? std::strtoll(given, nullptr, 10) : 10'000;
}

Date dayOf(std::int64_t year, int month, int day) {
    return Calendar::current().startOfCivilDay(CivilDay::fromYearMonthDay(year, month, day));
}

// The book

void addTenure(ManagedObjectContext& context, std::int64_t number) {
    const auto text = [&](const char* word) { return String::make(word + std::to_string(number)); };
    const auto property = context.insertNewObject<TKProperty>("Property");
    property->setName(text("House "));
    const auto tenant = context.insertNewObject<TKTenant>("Tenant");
    tenant->setName(text("Tenant "));
    const auto tenure = context.insertNewObject<TKTenure>("Tenure");
    tenure->setProperty(property.get());
    tenure->setTenant(tenant.get());
    tenure->setStartDate(dayOf(2021, 1, 1));
    tenure->setRentalBillingCycle(Number(30U));
    tenure->setRentalPeriod(Number(1U));
    tenure->setRentalAmount(Decimal(600));
    for (std::int64_t payment = 0; payment < PaymentsOfTenure; ++payment) {
        const std::int64_t month = payment * MonthsOfRent / PaymentsOfTenure;
        TKTenureTransaction& transaction = *tenure->createTransaction();
        transaction.setAmount(Decimal(30000 + (number * 31 + payment * 7) % 9000) / 100);
        transaction.setWhat(String::make("Payment"));
        transaction.setWhen(dayOf(2021 + month / 12, static_cast<int>(1 + month % 12),
                                  static_cast<int>(1 + (7 * payment + number) % 28)));
    }
}

/// A book of that many lettings, made when it is not there.
std::string bookOf(std::int64_t tenures) {
    constexpr std::int64_t SavedAtOnce = 200;
    const std::string path = ESTATEBOOK_BENCH_FOLDER "/desktop-" + std::to_string(tenures) + ".estatebook";
    if (std::filesystem::exists(path)) return path;
    const std::string draft = path + ".draft";
    std::filesystem::remove(draft);
    BookSession::makeEmpty(draft, "GBP");
    for (std::int64_t number = 0; number < tenures;) {
        const StoredBook book = StoredBook::openForWriting(draft, "bench");
        for (const std::int64_t end = std::min(number + SavedAtOnce, tenures); number < end; ++number)
            addTenure(*book.context, number);
        book.save();
    }
    std::filesystem::rename(draft, path);
    return path;
}

// The program

/// What an application has, nothing of it the user's own.
class Desktop {
public:
    Desktop() {
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        TimeZone::setDefaultTimeZone(TimeZone::named(Zone));
        Clock::setNow([today = dayOf(2025, 12, 31)] { return today; });
        TKCurrentDateController::sharedInstance().dailyUpdate();
        Toolkit::setCurrent(&toolkit_);
    }
    ~Desktop() { Toolkit::setCurrent(nullptr); }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

private:
    QTemporaryDir settings_;
    QtToolkit toolkit_;
};

struct Window {
    DesktopLoop loop;
    MainWindow window{loop};

    Window() {
        window.show();
        QApplication::processEvents();
    }
    explicit Window(const std::string& book) : Window() { open(book); }

    void open(const std::string& book) {
        if (!window.openBook(QString::fromStdString(book)))
            throw std::runtime_error(book + " is refused; delete it, so that it is made anew");
    }
    [[nodiscard]] QTableView& table(Page page) const { return window.list(page).table(); }
    [[nodiscard]] int rowsInSight(Page page) const {
        return table(page).viewport()->height() / table(page).rowHeight(0) + 1;
    }
};

// The first screen

void firstScreen(benchmark::State& state) {
    const std::string book = bookOf(tenureCount());
    std::size_t rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        {
            Window shown;
            state.ResumeTiming();
            shown.open(book);
            shown.window.grab();
            state.PauseTiming();
            rows = shown.window.list(Page::Tenures).model().readRows();
        }
        state.ResumeTiming();
    }
    state.counters["rows"] = static_cast<double>(rows);
}

void openAndReadRows(benchmark::State& state) {
    const std::string path = bookOf(tenureCount());
    int rows = 0;
    {
        const Window shown(path);
        rows = shown.rowsInSight(Page::Tenures);
    }
    for (auto _ : state) {
        const StoredBook book = StoredBook::openForWriting(path, "bench");
        const auto tenures = book.context->fetchAll<TKTenure>("Tenure");
        for (int row = 0; row < rows; ++row) {
            const auto& tenure = tenures[static_cast<std::size_t>(row)];
            benchmark::DoNotOptimize(tenure->name());
            benchmark::DoNotOptimize(RentRollEntry::ofTenure(tenure).balance);
        }
    }
    state.counters["rows"] = rows;
}

// All arrears

void wholeArrears(benchmark::State& state) {
    const std::string book = bookOf(tenureCount());
    double longest = 0, turns = 0, rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        {
            Window shown(book);
            QApplication::processEvents();
            QElapsedTimer time;
            state.ResumeTiming();
            shown.window.showPage(Page::Arrears);
            while (shown.window.isLookingForArrears()) {
                time.start();
                QApplication::processEvents();
                longest = std::max(longest, static_cast<double>(time.nsecsElapsed()) / 1e6);
                ++turns;
            }
            state.PauseTiming();
            rows = shown.window.list(Page::Arrears).shownRows();
        }
        state.ResumeTiming();
    }
    state.counters["longest_slice_ms"] = longest;
    state.counters["slices"] = turns / static_cast<double>(state.iterations());
    state.counters["rows"] = rows;
}

void readAllPlainly(benchmark::State& state) {
    const std::string book = bookOf(tenureCount());
    std::int64_t rows = 0;
    for (auto _ : state) {
        sqlite3* database = nullptr;
        sqlite3_stmt* statement = nullptr;
        const char* sql = "SELECT * FROM \"Transaction\" ORDER BY \"_key\"";
        if (sqlite3_open_v2(book.c_str(), &database, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) ||
            sqlite3_prepare_v2(database, sql, -1, &statement, nullptr))
            throw std::runtime_error(sqlite3_errmsg(database));
        rows = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                switch (sqlite3_column_type(statement, column)) {
                case SQLITE_INTEGER:
                    benchmark::DoNotOptimize(sqlite3_column_int64(statement, column));
                    break;
                case SQLITE_FLOAT:
                    benchmark::DoNotOptimize(sqlite3_column_double(statement, column));
                    break;
                default:
                    benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
                }
            }
            ++rows;
        }
        sqlite3_finalize(statement);
        sqlite3_close(database);
    }
    state.counters["rows"] = static_cast<double>(rows);
}

// Scrolling

void scroll(benchmark::State& state, std::int64_t tenures) {
    const std::string book = bookOf(tenures);
    double rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        {
            Window shown(book);
            shown.window.grab();
            QTableView& table = shown.table(Page::Tenures);
            QScrollBar& bar = *table.verticalScrollBar();
            state.ResumeTiming();
            for (std::int64_t screen = 0; screen < ScreensScrolled; ++screen) {
                bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
                table.viewport()->repaint();
            }
            state.PauseTiming();
            rows = static_cast<double>(shown.window.list(Page::Tenures).model().readRows());
        }
        state.ResumeTiming();
    }
    state.counters["rows"] = rows;
}

// Announcements

void announce(TKTenure& tenure, std::int64_t count) {
    for (std::int64_t each = 1; each <= count; ++each) tenure.setBondAmount(Decimal(each));
}

/// A window that shows the book, with its first letting.
struct Announcing {
    Window shown{bookOf(tenureCount())};
    Ref<TKTenure> tenure;

    Announcing() {
        shown.window.grab();
        shown.window.refreshNow();
        shown.window.session()->context().undoManager()->disableUndoRegistration();
        tenure = shown.window.session()->tenures().front();
    }
    void waitForRefresh() {
        const std::size_t before = shown.window.refreshes();
        while (shown.window.refreshes() == before) QApplication::processEvents();
    }
};

void tenThousandAnnouncements(benchmark::State& state) {
    Announcing announcing;
    const std::size_t before = announcing.shown.window.refreshes();
    for (auto _ : state) {
        announce(*announcing.tenure, Announcements);
        announcing.waitForRefresh();
    }
    state.counters["refreshes"] = static_cast<double>(announcing.shown.window.refreshes() - before) /
                                  static_cast<double>(state.iterations());
}

void announcementsNobodyHears(benchmark::State& state) {
    Announcing announcing;
    for (auto _ : state) {
        announcing.shown.window.session()->whenChanged([] {});
        announce(*announcing.tenure, Announcements - 1);
        announcing.shown.window.session()->whenChanged([&] { announcing.shown.window.refreshLater(); });
        announce(*announcing.tenure, 1);
        announcing.waitForRefresh();
    }
}

/// A list of a tenth as many lettings.
void scrollLong(benchmark::State& state) {
    scroll(state, tenureCount());
}
void scrollShort(benchmark::State& state) {
    scroll(state, tenureCount() / 10);
}

constexpr int Times = 5;

BENCHMARK(firstScreen)->Name("DesktopFirstScreen/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(openAndReadRows)->Name("DesktopFirstScreen/limit")->Unit(benchmark::kMillisecond);
BENCHMARK(wholeArrears)
    ->Name("DesktopArrears/ours")
    ->Iterations(1)
    ->Repetitions(Times)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(readAllPlainly)
    ->Name("DesktopArrears/limit")
    ->Iterations(1)
    ->Repetitions(Times)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(scrollLong)->Name("DesktopScroll/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(scrollShort)->Name("DesktopScroll/peer_short_list")->Unit(benchmark::kMillisecond);
BENCHMARK(tenThousandAnnouncements)->Name("DesktopAnnouncements/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(announcementsNobodyHears)
    ->Name("DesktopAnnouncements/peer_one_heard")
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argumentCount, char** arguments) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 1;
    const QApplication application(argumentCount, arguments);
    const Desktop desktop;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
