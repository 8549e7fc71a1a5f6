// SPDX-License-Identifier: MIT
#include "platform/toolkit/BindableObject.hpp"

#include "platform/values/Exception.hpp"
#include "support/ObservedPerson.hpp"
#include "tags/TKNegateValueTransformer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

using test::Person;
using test::text;
using testing::ElementsAre;

/// Shows an amount and counts how often it is set.
class Field final : public BindableObject {
public:
    static const ClassDescription Class;
    [[nodiscard]] const ClassDescription& classDescription() const noexcept override { return Class; }

    [[nodiscard]] Value value() const { return value_; }
    void setValue(const Value& value) {
        change(keys::value, [&] { value_ = value; });
        taken.push_back(value.description());
    }
    std::vector<std::string> taken;

private:
    Value value_;
};

constexpr Property fieldProperties[] = {writable<&Field::value, &Field::setValue>(keys::value)};
constinit const ClassDescription Field::Class("Field", nullptr, fieldProperties, {}, noDependents,
                                              announcing<Field>);

class OneWay final : public ValueTransformer {
public:
    [[nodiscard]] bool allowsReverseTransformation() const noexcept override { return false; }
};

class Nulling final : public ValueTransformer {
public:
    [[nodiscard]] Value reverseTransformedValue(const Value&) const override { return NullObject{}; }
};

class BindableObjectTest : public testing::Test {
protected:
    Ref<Person> model = makeRef<Person>();
    Ref<Field> field = makeRef<Field>();
};

TEST_F(BindableObjectTest, ABoundKeyFollowsTheModel) {
    model->setAmount(Decimal(1));
    field->bindToObjectWithKeyPath("value", model, "amount");
    model->setAmount(Decimal(2));
    model->setAmount(std::nullopt);
    EXPECT_THAT(field->taken, ElementsAre("1", "2", "(null)"));
}

TEST_F(BindableObjectTest, APathIsFollowedAndAnObjectInItsMiddleReplaced) {
    const auto owner = makeRef<Person>();
    field->bindToObjectWithKeyPath("value", model, "owner.name");
    owner->setName(text("Ann"));
    model->setOwner(owner);
    owner->setName(text("Bea"));
    model->setOwner(nullptr);
    EXPECT_THAT(field->taken, ElementsAre("(null)", "Ann", "Bea", "(null)"));
}

TEST_F(BindableObjectTest, WhatIsWrittenBackReachesTheModelAndComesBackOnce) {
    field->bindToObjectWithKeyPath("value", model, "amount");
    propagateValueForBinding(*field, Decimal(5), "value");
    EXPECT_EQ(model->amount(), Decimal(5));
    EXPECT_THAT(field->taken, ElementsAre("(null)", "5"));
}

TEST_F(BindableObjectTest, ATransformerStandsBetweenBothWays) {
    field->bindToObjectWithKeyPath("value", model, "amount", makeRef<TKNegateValueTransformer>());
    model->setAmount(Decimal(3));
    EXPECT_EQ(field->value(), Value(Decimal(-3)));
    propagateValueForBinding(*field, Decimal(-8), "value");
    EXPECT_EQ(model->amount(), Decimal(8));
}

TEST_F(BindableObjectTest, ATransformerWithoutAWayBackWritesNothing) {
    model->setAmount(Decimal(3));
    field->bindToObjectWithKeyPath("value", model, "amount", makeRef<OneWay>());
    propagateValueForBinding(*field, Decimal(5), "value");
    EXPECT_EQ(model->amount(), Decimal(3));
}

TEST_F(BindableObjectTest, ANullMarkerOfTheTransformerIsHandedOn) {
    model->setValue(7);
    field->bindToObjectWithKeyPath("value", model, "value", makeRef<Nulling>());
    propagateValueForBinding(*field, {}, "value");
    EXPECT_TRUE(model->value().isNullObject());
}

TEST_F(BindableObjectTest, WhatIsNotBoundWritesNothing) {
    propagateValueForBinding(*field, Decimal(5), "value");
    propagateValueForBinding(*field, Decimal(5), "nothing");
    EXPECT_FALSE(model->amount());
    EXPECT_TRUE(field->taken.empty());
}

TEST_F(BindableObjectTest, AKeyThatIsBoundAnewLeavesTheFirstModel) {
    const auto other = makeRef<Person>();
    field->bindToObjectWithKeyPath("value", model, "amount");
    field->bindToObjectWithKeyPath("value", other, "name");
    model->setAmount(Decimal(5));
    other->setName(text("Ann"));
    EXPECT_THAT(field->taken, ElementsAre("(null)", "(null)", "Ann"));
    EXPECT_EQ(field->infoForBinding("value")->observedObject, other);
    EXPECT_EQ(field->infoForBinding("value")->keyPath, "name");
    EXPECT_EQ(model->referenceCount(), 1u);
}

TEST_F(BindableObjectTest, UnboundItKeepsItsValue) {
    model->setAmount(Decimal(1));
    field->bindToObjectWithKeyPath("value", model, "amount");
    field->unbind("value");
    field->unbind("value");
    model->setAmount(Decimal(2));
    EXPECT_EQ(field->value(), Value(Decimal(1)));
    EXPECT_FALSE(field->infoForBinding("value"));
    EXPECT_EQ(model->referenceCount(), 1u);
}

TEST_F(BindableObjectTest, NoModelIsNoBinding) {
    field->bindToObjectWithKeyPath("value", nullptr, "amount");
    EXPECT_FALSE(field->infoForBinding("value"));
}

TEST_F(BindableObjectTest, TheModelIsHeldAndTheFieldIsNot) {
    field->bindToObjectWithKeyPath("value", model, "amount");
    EXPECT_GT(model->referenceCount(), 1u);
    EXPECT_EQ(field->referenceCount(), 1u);
    field = nullptr;
    EXPECT_EQ(model->referenceCount(), 1u);
    model->setAmount(Decimal(2));
}

TEST_F(BindableObjectTest, AKeyThatTheModelDoesNotHaveIsRefused) {
    EXPECT_THROW(field->bindToObjectWithKeyPath("value", model, "nowhere"), UndefinedKeyException);
    EXPECT_THROW(field->bindToObjectWithKeyPath("nowhere", model, "amount"), UndefinedKeyException);
}

TEST_F(BindableObjectTest, TheHostMayWriteInTheLibrarysPlace) {
    static std::vector<std::string> written;
    setPropagateValueForBinding([](BindableObject&, const Value& value, std::string_view binding) {
        written.push_back(std::string(binding) + " " + value.description());
    });
    propagateValueForBinding(*field, 5, "value");
    setPropagateValueForBinding(nullptr);
    propagateValueForBinding(*field, 6, "value");
    EXPECT_THAT(written, ElementsAre("value 5"));
}

} // namespace
} // namespace estatebook::platform
