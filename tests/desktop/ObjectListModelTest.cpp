// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/ObjectListModel.hpp"

#include "desktop/QtUser.hpp"
#include "platform/system/Log.hpp"
#include "platform/toolkit/NumberFieldFormatter.hpp"
#include "support/ObservedPerson.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QColor>
#include <QSortFilterProxyModel>
#include <QTableView>

#include <random>

namespace estatebook::platform {
namespace {

using test::Person;
using test::settle;
using test::text;
using testing::ElementsAre;
using testing::IsEmpty;

/// Counts how often its name is read.
class CountingPerson final : public Person {
public:
    static inline int reads = 0;
    [[nodiscard]] Value valueForKey(Key key) const override {
        ++reads;
        return Person::valueForKey(key);
    }
};

class ObjectListModelTest : public testing::Test {
protected:
    ObjectListModelTest() {
        Log::setSink([this](std::string_view line) { logged.emplace_back(line); });
    }
    ~ObjectListModelTest() override { Log::setSink({}); }

    static Ref<Person> person(const std::string& name) {
        const auto made = makeRef<Person>();
        made->setName(text(name));
        made->setAmount(Decimal(static_cast<int>(name.size())));
        return made;
    }
    std::vector<ObjectListModel::Row> rows() const { return {people.begin(), people.end()}; }
    static std::vector<ObjectListColumn> columns() {
        const auto whole = makeRef<NumberFieldFormatter>();
        whole->setLocale(Locale::named("en_US"));
        whole->setMinimumFractionDigits(2);
        return {{.title = QStringLiteral("Name"), .keyPath = "name"},
                {.title = QStringLiteral("Amount"),
                 .keyPath = "amount",
                 .formatter = whole,
                 .alignment = Qt::AlignRight | Qt::AlignVCenter}};
    }
    static std::vector<std::string> names(const QAbstractItemModel& model) {
        std::vector<std::string> all;
        for (int row = 0; row < model.rowCount(); ++row)
            all.push_back(model.index(row, 0).data().toString().toStdString());
        return all;
    }

    std::vector<std::string> logged;
    std::vector<Ref<Person>> people{person("Ann"), person("Bea"), person("Cleo")};
    ObjectListModel model{columns(), [this] { return rows(); }};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ObjectListModelTest, AnObjectIsARowAndAPathAColumn) {
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.columnCount(), 2);
    EXPECT_THAT(names(model), ElementsAre("Ann", "Bea", "Cleo"));
    EXPECT_EQ(model.index(2, 1).data(), QVariant(QStringLiteral("4.00")));
    EXPECT_EQ(model.index(2, 1).data(ObjectListModel::SortRole), QVariant(4.0));
    EXPECT_EQ(model.index(0, 0).data(ObjectListModel::SortRole), QVariant(QStringLiteral("Ann")));
    EXPECT_EQ(model.index(0, 1).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
    EXPECT_EQ(model.headerData(1, Qt::Horizontal, Qt::DisplayRole), QVariant(QStringLiteral("Amount")));
    EXPECT_EQ(model.objectAt(1), ObjectListModel::Row(people[1]));
    EXPECT_EQ(model.rowOf(*people[2]), 2);
}

TEST_F(ObjectListModelTest, WhatIsNotThereIsNothing) {
    EXPECT_EQ(model.objectAt(3), nullptr);
    EXPECT_EQ(model.objectAt(-1), nullptr);
    EXPECT_EQ(model.rowOf(*person("Dora")), -1);
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.headerData(2, Qt::Horizontal, Qt::DisplayRole).isValid());
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
}

TEST_F(ObjectListModelTest, TheListIsASnapshotUntilItIsReadAgain) {
    EXPECT_THAT(names(model), ElementsAre("Ann", "Bea", "Cleo"));
    people[0]->setName(text("Abe"));
    people.pop_back();
    EXPECT_THAT(names(model), ElementsAre("Ann", "Bea", "Cleo"));
    model.readAgain();
    EXPECT_THAT(names(model), ElementsAre("Abe", "Bea"));
}

TEST_F(ObjectListModelTest, TenThousandMarksAreOneReading) {
    const auto before = model.readings();
    const auto token = people[0]->observe("name", [&] { model.markStale(); });
    for (int times = 0; times < 10'000; ++times) people[0]->setName(text(std::to_string(times)));
    EXPECT_EQ(model.readings(), before);
    settle();
    EXPECT_EQ(model.readings(), before + 1);
    EXPECT_THAT(names(model), ElementsAre("9999", "Bea", "Cleo"));
    settle();
    EXPECT_EQ(model.readings(), before + 1);
}

TEST_F(ObjectListModelTest, AListThatIsReadMeanwhileIsNotReadOnceMore) {
    model.markStale();
    model.readAgain();
    const auto before = model.readings();
    settle();
    EXPECT_EQ(model.readings(), before);
}

TEST_F(ObjectListModelTest, RowsThatStayKeepTheirSelection) {
    const QPersistentModelIndex bea = model.index(1, 0);
    const QPersistentModelIndex cleo = model.index(2, 1);
    people = {people[2], person("Dora"), people[1], person("Eve")};
    model.readAgain();
    EXPECT_THAT(names(model), ElementsAre("Cleo", "Dora", "Bea", "Eve"));
    EXPECT_EQ(bea.row(), 2);
    EXPECT_EQ(cleo.row(), 0);
    EXPECT_EQ(cleo.column(), 1);
    people.erase(people.begin());
    model.readAgain();
    EXPECT_FALSE(cleo.isValid());
    EXPECT_EQ(bea.row(), 1);
}

TEST_F(ObjectListModelTest, RandomListsFollowOneAnother) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<Ref<Person>> all;
    for (int number = 0; number < 30; ++number) all.push_back(person("Person " + std::to_string(number)));
    for (int times = 0; times < 300; ++times) {
        std::ranges::shuffle(all, random);
        people.assign(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(random() % (all.size() + 1)));
        std::vector<std::pair<QPersistentModelIndex, ObjectListModel::Row>> kept;
        for (int row = 0; row < model.rowCount(); ++row)
            kept.emplace_back(model.index(row, 1), model.objectAt(row));
        model.readAgain();
        std::vector<std::string> expected;
        for (const auto& each : people) expected.push_back(each->name()->string());
        ASSERT_EQ(names(model), expected);
        for (const auto& [index, object] : kept)
            ASSERT_EQ(index.isValid() ? index.row() : -1, model.rowOf(*object));
    }
}

TEST_F(ObjectListModelTest, AnObjectThatIsListedTwiceAndNoneAtAllHaveNoRow) {
    ObjectListModel odd(columns(), [&] {
        return std::vector<ObjectListModel::Row>{people[0], nullptr, people[0], people[1]};
    });
    EXPECT_THAT(names(odd), ElementsAre("Ann", "Bea"));
}

TEST_F(ObjectListModelTest, ASourceThatRaisesLeavesTheListAsItIs) {
    bool fails = false;
    ObjectListModel careful(columns(), [&] {
        if (fails) throw std::runtime_error("the book cannot be read");
        return rows();
    });
    fails = true;
    people.clear();
    careful.readAgain();
    EXPECT_THAT(names(careful), ElementsAre("Ann", "Bea", "Cleo"));
    EXPECT_THAT(logged, ElementsAre(testing::HasSubstr("the book cannot be read")));
}

TEST_F(ObjectListModelTest, AValueThatCannotBeReckonedLeavesItsCellEmpty) {
    people[0]->setAmount(Decimal(-1));
    ObjectListModel balances({{.title = QStringLiteral("Balance"), .keyPath = "balance"}},
                             [this] { return rows(); });
    EXPECT_THAT(names(balances), ElementsAre("", "9", "12"));
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(ObjectListModelTest, OnlyCellsThatAreLookedAtAreReckonedAndThatOnce) {
    people.clear();
    for (int number = 0; number < 10'000; ++number) people.push_back(makeRef<CountingPerson>());
    model.readAgain();
    QTableView view;
    view.setModel(&model);
    view.resize(300, 200);
    CountingPerson::reads = 0;
    view.show();
    settle();
    view.grab();
    const int shown = CountingPerson::reads;
    EXPECT_GT(shown, 0);
    EXPECT_LT(shown, 200);
    view.grab();
    EXPECT_EQ(CountingPerson::reads, shown);
}

TEST_F(ObjectListModelTest, AColumnMayAnswerForOtherRoles) {
    auto coloured = columns();
    coloured[0].data = [](const ObservableObject& object, int role) -> QVariant {
        if (role != Qt::ForegroundRole) return {};
        return object.valueForKey("name").string()->view() == "Bea" ? QVariant(QColor(Qt::red)) : QVariant();
    };
    ObjectListModel list(coloured, [this] { return rows(); });
    EXPECT_EQ(list.index(1, 0).data(Qt::ForegroundRole), QVariant(QColor(Qt::red)));
    EXPECT_FALSE(list.index(0, 0).data(Qt::ForegroundRole).isValid());
    EXPECT_EQ(list.index(1, 0).data(), QVariant(QStringLiteral("Bea")));
}

TEST_F(ObjectListModelTest, AProxySortsByTheValuesThemselves) {
    people[1]->setAmount(Decimal(100));
    model.readAgain();
    QSortFilterProxyModel proxy;
    proxy.setSortRole(ObjectListModel::SortRole);
    proxy.setSourceModel(&model);
    proxy.sort(1);
    EXPECT_THAT(names(proxy), ElementsAre("Ann", "Cleo", "Bea"));
}

TEST_F(ObjectListModelTest, AListMayGoBeforeTheTurnThatWouldReadIt) {
    auto gone = std::make_unique<ObjectListModel>(columns(), [this] { return rows(); });
    gone->markStale();
    gone = nullptr;
    settle();
}

} // namespace
} // namespace estatebook::platform
