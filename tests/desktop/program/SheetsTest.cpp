// SPDX-License-Identifier: MIT
#include "desktop/program/MainWindowTestCase.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::click;
using estatebook::test::settle;
using platform::Decimal;
using platform::Number;
using platform::String;
using testing::HasSubstr;

/// The sheets of an empty book to which a test gives what it needs.
class SheetsTest : public MainWindowTestCase {
protected:
    SheetsTest() { open(makeEmpty()); }

    TKProperty& addProperty(const std::function<void(TKProperty&)>& prepare) {
        platform::Ref<TKProperty> property;
        session().perform("New", [&] {
            property = session().context().insertNewObject<TKProperty>("Property");
            property->setName(String::make("Flat 2"));
            prepare(*property);
        });
        EXPECT_TRUE(session().save());
        settle();
        return *property;
    }
    void editProperty() {
        choose(Page::Properties);
        selectRowOf(Page::Properties, "Flat 2");
        press(*window_, Qt::Key_E, Qt::ControlModifier);
    }
    void expectNothingEdited() {
        EXPECT_FALSE(window_->sheet());
        EXPECT_EQ(session().condition(), BookSession::Condition::Saved);
    }
    [[nodiscard]] std::string faultShown() const {
        const auto& label = in<QLabel>("fault");
        return label.isVisible() ? label.text().toStdString() : std::string();
    }
    void add(Page page) {
        choose(page);
        press(*window_, Qt::Key_N, Qt::ControlModifier);
    }
};

TEST_F(SheetsTest, APropertyThatIsOnlyLookedAtIsNotEdited) {
    addProperty([](TKProperty& property) {
        property.setSublease(String::make(" Top floor "));
        property.setRentalAmount(Decimal::parse("1000.005"));
        property.setRentalPeriod(Number(2U));
        property.setRentalBillingCycle(Number(TKBillingCycleWeek));
        property.setTagNames(TKTagNames::initWithEditableString("b, a"));
    });
    editProperty();
    EXPECT_EQ(in<QLineEdit>("rent").text().toStdString(), "1000.005");
    EXPECT_EQ(in<QSpinBox>("period").value(), 2);
    EXPECT_EQ(in<QComboBox>("cycle").currentIndex(), 1);
    confirm();
    expectNothingEdited();
}

TEST_F(SheetsTest, APropertyWithoutARentHasNoPeriodEither) {
    TKProperty& property = addProperty([](TKProperty&) {});
    editProperty();
    type(in<QLineEdit>("bond"), "500");
    confirm();
    EXPECT_EQ(property.bondAmount(), Decimal(500));
    EXPECT_FALSE(property.rentalPeriod());
    EXPECT_FALSE(property.rentalBillingCycle());
    editProperty();
    type(in<QLineEdit>("rent"), "1,000.50");
    confirm();
    EXPECT_EQ(property.rentalAmount(), Decimal::parse("1000.5"));
    EXPECT_EQ(property.rentalPeriod(), Number(1));
    EXPECT_EQ(property.rentalBillingCycle(), Number(TKBillingCycleMonth));
    editProperty();
    type(in<QLineEdit>("rent"), "");
    press(in<QLineEdit>("rent"), Qt::Key_Delete);
    confirm();
    EXPECT_FALSE(property.rentalAmount());
}

TEST_F(SheetsTest, EachFieldOfAPropertyIsTakenIn) {
    add(Page::Properties);
    type(in<QLineEdit>("name"), "  Shop ");
    type(in<QLineEdit>("sublease"), "Cellar");
    type(in<QLineEdit>("tags"), "Harbour, Shop");
    in<QSpinBox>("period").setValue(3);
    in<QComboBox>("cycle").setCurrentIndex(0);
    click(in<QCheckBox>("available"));
    confirm();
    ASSERT_FALSE(window_->sheet());
    ASSERT_EQ(session().properties().size(), 1U);
    const auto shop = session().properties().front();
    EXPECT_EQ(shop->fullName()->view(), "Shop - Cellar");
    EXPECT_EQ(shop->tagNames()->editableString(), "Harbour, Shop");
    EXPECT_EQ(shop->rentalPeriod(), Number(3));
    EXPECT_EQ(shop->rentalBillingCycle(), Number(TKBillingCycleDay));
    EXPECT_EQ(shop->available(), Number(true));
    EXPECT_EQ(session().undoName(), "New Property");
}

TEST_F(SheetsTest, AFieldThatCannotBeReadIsToldOfAndHasTheKeyboard) {
    add(Page::Properties);
    type(in<QLineEdit>("bond"), "much");
    type(in<QLineEdit>("name"), "   ");
    confirm();
    EXPECT_THAT(faultShown(), HasSubstr("needs a name"));
    type(in<QLineEdit>("name"), "Shop");
    confirm();
    EXPECT_THAT(faultShown(), HasSubstr("usual bond is no amount"));
    EXPECT_TRUE(in<QLineEdit>("bond").hasFocus());
    EXPECT_TRUE(session().properties().empty());
    type(in<QLineEdit>("bond"), "12");
    confirm();
    EXPECT_FALSE(window_->sheet());
}

TEST_F(SheetsTest, ATenantNeedsAName) {
    add(Page::Tenants);
    confirm();
    EXPECT_THAT(faultShown(), HasSubstr("needs a name"));
    type(in<QLineEdit>("name"), "A. Smith");
    confirm();
    ASSERT_EQ(session().tenants().size(), 1U);
    EXPECT_EQ(session().tenants().front()->name()->view(), "A. Smith");
}

TEST_F(SheetsTest, MoneyOfAPropertyMayHaveNoDay) {
    addProperty([](TKProperty&) {});
    choose(Page::Properties);
    selectRowOf(Page::Properties, "Flat 2");
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    EXPECT_FALSE(in<QCheckBox>("adjustment").isVisible());
    EXPECT_TRUE(in<QDateEdit>("date").isEnabled());
    confirm();
    EXPECT_THAT(faultShown(), HasSubstr("needs an amount"));
    type(in<QLineEdit>("amount"), "-45.5");
    EXPECT_THAT(in<QLabel>("direction").text().toStdString(), HasSubstr("Spent"));
    type(in<QLineEdit>("receipt"), " 17 ");
    click(in<QCheckBox>("hasDate"));
    confirm();
    ASSERT_FALSE(window_->sheet());
    const auto property = session().properties().front();
    const TKTransaction& spent = property->transactions()[0];
    EXPECT_EQ(spent.amount(), Decimal::parse("-45.5"));
    EXPECT_EQ(spent.receipt()->view(), "17");
    EXPECT_FALSE(spent.what());
    EXPECT_FALSE(spent.when());
    EXPECT_FALSE(spent.adjustment()) << "nobody said that it is none";
}

class PaymentTest : public MainWindowTestCase {
protected:
    /// The first payment of M. Jones, in a sheet, after the statement was opened.
    void editFirstPayment() {
        selectRowOf(Page::Tenures, "M. Jones");
        press(*window_, Qt::Key_Return, Qt::ControlModifier);
        const auto& page = window_->statementPage();
        for (int row = 0; row < page.model().rowCount(); ++row)
            if (page.model().transaction(row)) {
                payment_ = page.model().transaction(row);
                page.table().setCurrentIndex(page.model().index(row, 0));
                press(page.table(), Qt::Key_Return);
                return settle();
            }
        FAIL() << "no payment";
    }
    TKTransaction* payment_ = nullptr;
};

TEST_F(PaymentTest, AnInstantAmidTheDayIsKeptAsLongAsTheDayIsNotEdited) {
    openExample();
    editFirstPayment();
    ASSERT_TRUE(window_->sheet());
    press(sheetWidget(), Qt::Key_Escape);
    ASSERT_TRUE(payment_->when());
    const auto noon = platform::Date(payment_->when()->secondsSinceReferenceDate + 12 * 3600 + 34.5);
    session().perform("Noon", [&] { payment_->setWhen(noon); });
    ASSERT_TRUE(session().save());
    settle();
    press(window_->statementPage().table(), Qt::Key_Return);
    ASSERT_TRUE(window_->sheet());
    confirm();
    EXPECT_EQ(payment_->when(), noon);
    EXPECT_EQ(session().condition(), BookSession::Condition::Saved);
    ASSERT_FALSE(window_->sheet());
    press(window_->statementPage().table(), Qt::Key_Return);
    ASSERT_TRUE(window_->sheet()) << "the same line, after the statement was read anew";
    type(in<QLineEdit>("amount"), "77");
    in<QDateEdit>("date").setDate(QDate(2025, 5, 6));
    settle();
    confirm();
    EXPECT_EQ(payment_->amount(), Decimal(77));
    EXPECT_EQ(payment_->when(), day(2025, 5, 6));
    EXPECT_EQ(session().undoName(), "Change of Payment");
}

} // namespace

} // namespace estatebook::desktop::test
