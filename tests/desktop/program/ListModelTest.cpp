// SPDX-License-Identifier: MIT
#include "desktop/QtUser.hpp"
#include "desktop/program/DesktopTestCase.hpp"

#include "estatebook-desktop/lists/ListPage.hpp"
#include "estatebook-desktop/lists/Slices.hpp"
#include "store/TKManagedObjectModel.hpp"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QSortFilterProxyModel>
#include <QTableView>

#include <algorithm>
#include <random>

namespace estatebook::desktop::test {

namespace {

using platform::ManagedObject;
using platform::Ref;
using platform::String;

class ListModelTest : public DesktopTestCase {
protected:
    ListModelTest() {
        context_->setUndoManager(nullptr);
        for (int i = 0; i < 100; ++i) {
            auto tenant = context_->insertNewObject<TKTenant>("Tenant");
            tenant->setName(String::make("T" + std::to_string(i)));
            tenants_.push_back(tenant);
        }
    }
    [[nodiscard]] static ListModel::Row rowOf(ManagedObject& object) {
        auto& tenant = static_cast<TKTenant&>(object);
        return {{{textOf(tenant.name())}, {QStringLiteral("1"), 1, platform::Decimal(1)}}};
    }
    [[nodiscard]] static std::unique_ptr<ListModel> makeModel() {
        return std::make_unique<ListModel>(
            std::vector<ListModel::Column>{{QStringLiteral("Name")}, {QStringLiteral("One"), true, true}},
            rowOf);
    }
    [[nodiscard]] ListModel::Objects objects(std::size_t first, std::size_t count) const {
        return {tenants_.begin() + static_cast<std::ptrdiff_t>(first),
                tenants_.begin() + static_cast<std::ptrdiff_t>(first + count)};
    }
    static std::string nameIn(const QAbstractItemModel& model, int row) {
        return model.index(row, 0).data().toString().toStdString();
    }

    Ref<platform::ManagedObjectContext> context_ = TKManagedObjectModel::inMemoryManagedObjectContext();
    ListModel::Objects tenants_;
};

TEST_F(ListModelTest, ARowIsReadWhenItIsShown) {
    const auto model = makeModel();
    model->take(objects(0, 100));
    EXPECT_EQ(model->readRows(), 0U);
    EXPECT_EQ(nameIn(*model, 40), "T40");
    EXPECT_EQ(nameIn(*model, 40), "T40");
    EXPECT_EQ(model->readRows(), 1U);
}

TEST_F(ListModelTest, ARowIsASnapshotUntilTheListIsTakenAnew) {
    const auto model = makeModel();
    model->take(objects(0, 10));
    EXPECT_EQ(nameIn(*model, 3), "T3");
    static_cast<TKTenant&>(*tenants_[3]).setName(String::make("Another"));
    EXPECT_EQ(nameIn(*model, 3), "T3");
    model->take(objects(0, 10));
    EXPECT_EQ(nameIn(*model, 3), "Another");
}

TEST_F(ListModelTest, AnyListFollowsAnyOther) {
    const auto model = makeModel();
    const QAbstractItemModelTester tester(model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int times = 0; times < 200; ++times) {
        auto some = objects(0, 100);
        std::shuffle(some.begin(), some.end(), random);
        some.erase(some.begin() + static_cast<std::ptrdiff_t>(random() % 100), some.end());
        if (random() % 2)
            std::ranges::sort(some, {}, [](const auto& each) { return each->creationNumber(); });
        const auto wanted = some;
        model->take(std::move(some));
        ASSERT_EQ(model->rowCount(), static_cast<int>(wanted.size()));
        for (int row = 0; row < model->rowCount(); ++row)
            ASSERT_EQ(&model->object(row), wanted[static_cast<std::size_t>(row)].get());
    }
}

TEST_F(ListModelTest, RowsThatAreThereAlreadyAreFoundByASearchAsTheyCome) {
    ListModel model({{QStringLiteral("Name")}, {QStringLiteral("One"), true, true}},
                    [](ManagedObject&) { return ListModel::Row(); });
    QSortFilterProxyModel shown;
    shown.setSourceModel(&model);
    shown.setFilterKeyColumn(-1);
    shown.setFilterFixedString(QStringLiteral("T1"));
    shown.sort(0, Qt::DescendingOrder);
    const auto take = [&](std::size_t first, std::size_t count) {
        const auto some = objects(first, count);
        std::vector<ListModel::Row> rows;
        for (const auto& each : some) rows.push_back(rowOf(*each));
        model.take(some, std::move(rows));
    };
    take(0, 12);
    ASSERT_EQ(shown.rowCount(), 3);
    EXPECT_EQ(nameIn(shown, 0), "T11");
    EXPECT_EQ(nameIn(shown, 2), "T1");
    take(10, 10);
    EXPECT_EQ(shown.rowCount(), 10);
    EXPECT_EQ(model.readRows(), 0U);
}

TEST_F(ListModelTest, TheSelectionOutlivesAChangeElsewhere) {
    platform::RunLoop loop;
    const auto session = BookSession::open(makeEmpty(), loop);
    const Figures figures = Figures::of(*session);
    ListPage page(QStringLiteral("Tenants"), makeModel(), {QStringLiteral("None"), QStringLiteral("None")},
                  [&]() -> const Figures& { return figures; });
    page.model().take(objects(0, 50));
    page.select(*tenants_[20]);
    ASSERT_EQ(page.selected(), tenants_[20].get());
    auto fewer = objects(0, 50);
    fewer.erase(fewer.begin() + 10);
    page.model().take(fewer);
    EXPECT_EQ(page.selected(), tenants_[20].get());
    page.model().take(objects(0, 60));
    EXPECT_EQ(page.selected(), tenants_[20].get());
    auto reversed = objects(0, 60);
    std::ranges::reverse(reversed);
    page.model().take(reversed);
    EXPECT_EQ(page.selected(), tenants_[20].get());
    page.model().take(objects(30, 10));
    EXPECT_NE(page.selected(), tenants_[20].get());
}

TEST_F(ListModelTest, AListThatIsScrolledReadsWhatIsInSight) {
    auto model = makeModel();
    const ListModel& rows = *model;
    QTableView view;
    view.setModel(model.get());
    view.resize(300, 200);
    model->take(objects(0, 100));
    view.show();
    // Not every window system shows it at once.
    EXPECT_TRUE(QTest::qWaitFor([&] { return rows.readRows() > 0; }, estatebook::test::Patience));
    estatebook::test::settle();
    EXPECT_LT(rows.readRows(), 30U);
}

TEST(SlicesTest, TheEventLoopHasItsTurnsAmidTheWork) {
    Slices slices;
    int steps = 0, turns = 0;
    slices.begin([&] { return ++steps < 1'000'000; });
    while (slices.isAtWork()) {
        QCoreApplication::processEvents();
        ++turns;
    }
    EXPECT_EQ(steps, 1'000'000);
    EXPECT_GT(turns, 1);
}

TEST_F(ListModelTest, SumsWaitUntilTheListIsSeen) {
    platform::RunLoop loop;
    const auto session = BookSession::open(makeEmpty(), loop);
    const Figures figures = Figures::of(*session);
    ListPage page(QStringLiteral("Tenants"), makeModel(), {QStringLiteral("None"), QStringLiteral("None")},
                  [&]() -> const Figures& { return figures; });
    page.model().take(objects(0, 100));
    const auto turn = [] {
        for (int times = 0; times < 3; ++times) QCoreApplication::processEvents();
    };
    turn();
    EXPECT_EQ(page.model().readRows(), 0U);
    page.show();
    while (page.isSummingUp()) QCoreApplication::processEvents();
    EXPECT_EQ(page.model().readRows(), 100U);
    EXPECT_EQ(page.totals().item(0, 1)->text().toStdString(), "100.00");
    page.hide();
    page.model().take(objects(0, 60));
    turn();
    EXPECT_EQ(page.model().readRows(), 0U);
    page.finishTotals();
    EXPECT_EQ(page.totals().item(0, 1)->text().toStdString(), "60.00");
}

TEST(SlicesTest, WorkThatWaitsIsGoneOnWithLater) {
    Slices slices;
    int steps = 0;
    slices.setWaiting(true);
    slices.begin([&] { return ++steps < 5; });
    for (int times = 0; times < 3; ++times) QCoreApplication::processEvents();
    EXPECT_EQ(steps, 0);
    EXPECT_TRUE(slices.isAtWork());
    slices.setWaiting(false);
    while (slices.isAtWork()) QCoreApplication::processEvents();
    EXPECT_EQ(steps, 5);
    slices.setWaiting(true);
    slices.setWaiting(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(steps, 5) << "there was nothing left";
}

TEST(SlicesTest, WorkThatIsBegunAnewForgetsTheFormer) {
    Slices slices;
    int first = 0, second = 0;
    slices.begin([&] { return ++first < 5; });
    slices.begin([&] { return ++second < 3; });
    slices.finish();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 3);
    EXPECT_FALSE(slices.isAtWork());
}

} // namespace

} // namespace estatebook::desktop::test
