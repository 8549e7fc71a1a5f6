#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a table of decimal operations and their results, worked out by Python's own decimal module.

    decimal_table.py FILE

The library's decimals are tested against it. The table is the same on every run. A line is one of

    add|subtract|multiply|divide A B RESULT
    compare A B -1|0|1
    round A MODE SCALE RESULT

with MODE one of plain, down, up, bankers, and RESULT a number or one of overflow, underflow, divide-by-zero.
Python rounds the exact result to 38 digits; the range is then applied to the result without its trailing zeros,
where only an exponent above 127 may leave some of them in the mantissa.
"""
import decimal
import random
import sys
from decimal import Decimal

ROWS = 100_000
SEED = 20240229
DIGITS = 38
LEAST_EXPONENT = -128
GREATEST_EXPONENT = 127

CONTEXT = decimal.Context(prec=DIGITS, rounding=decimal.ROUND_HALF_UP, Emin=-99999, Emax=99999,
                          traps=[decimal.DivisionByZero, decimal.InvalidOperation])
WIDE = decimal.Context(prec=1000, Emin=-99999, Emax=99999, traps=[decimal.InvalidOperation])
MODES = {
    "plain": decimal.ROUND_HALF_UP,
    "down": decimal.ROUND_FLOOR,
    "up": decimal.ROUND_CEILING,
    "bankers": decimal.ROUND_HALF_EVEN,
}
OPERATIONS = {
    "add": CONTEXT.add,
    "subtract": CONTEXT.subtract,
    "multiply": CONTEXT.multiply,
    "divide": CONTEXT.divide,
}


def number(negative, digits, exponent):
    return Decimal((1 if negative else 0, tuple(int(digit) for digit in digits), exponent))


def condition(value):
    """The condition a result raises, or None."""
    if value.is_zero():
        return None
    _, digits, exponent = WIDE.normalize(value).as_tuple()
    if exponent < LEAST_EXPONENT:
        return "underflow"
    if exponent > GREATEST_EXPONENT and len(digits) + exponent - GREATEST_EXPONENT > DIGITS:
        return "overflow"
    return None


def text(value):
    if value.is_zero():
        return "0"
    sign, digits, exponent = value.as_tuple()
    return "-" * sign + "".join(map(str, digits)) + (f"e{exponent}" if exponent else "")


class Numbers:
    """Numbers of many shapes, every one of them in range."""

    def __init__(self, source):
        self.source = source
        self.shapes = [self.money, self.money, self.round_money, self.short, self.long, self.full, self.word_edge,
                       self.power, self.nines, self.far, self.zero]

    def sign(self):
        return self.source.random() < 0.5

    def digits(self, count):
        return str(self.source.randrange(10 ** (count - 1), 10 ** count))

    def money(self):
        return number(self.sign(), self.digits(self.source.randint(1, 8)), -2)

    def round_money(self):
        return number(self.sign(), self.digits(self.source.randint(1, 3)), self.source.randint(0, 4))

    def short(self):
        return number(self.sign(), self.digits(self.source.randint(1, 19)), self.source.randint(-25, 25))

    def long(self):
        return number(self.sign(), self.digits(self.source.randint(20, DIGITS)), self.source.randint(-40, 10))

    def full(self):
        return number(self.sign(), self.digits(DIGITS), self.source.randint(-DIGITS, 2))

    def word_edge(self):
        edge = 2 ** self.source.choice([31, 32, 53, 62, 63, 64, 65, 96, 126]) + self.source.randint(-2, 2)
        return number(self.sign(), str(edge), self.source.randint(-20, 3))

    def power(self):
        return number(self.sign(), "1", self.source.randint(-60, 60))

    def nines(self):
        return number(self.sign(), "9" * self.source.randint(1, DIGITS), self.source.randint(-DIGITS, 5))

    def far(self):
        return number(self.sign(), self.digits(self.source.randint(1, DIGITS)),
                      self.source.randint(LEAST_EXPONENT, GREATEST_EXPONENT))

    def zero(self):
        return Decimal(0)

    def any(self):
        return self.source.choice(self.shapes)()

    def near(self, other):
        """A number that has to do with the other: the same exponent, its last digit, what fills it up to 10^38."""
        _, digits, exponent = other.as_tuple()
        kind = self.source.randrange(5)
        if kind == 0:
            return number(self.sign(), self.digits(len(digits)), exponent)
        if kind == 1:
            return WIDE.copy_negate(other)
        if kind == 2:
            magnitude = int("".join(map(str, digits)))
            return number(self.sign(), str(10 ** len(digits) - magnitude or 1), exponent)
        if kind == 3:
            return number(self.sign(), self.source.choice(["4999", "5", "5001", "1"]),
                          max(LEAST_EXPONENT, min(GREATEST_EXPONENT, exponent - self.source.randint(0, 5))))
        return other

    def pair(self):
        first = self.any()
        return first, self.near(first) if self.source.random() < 0.3 else self.any()

    def tie(self, scale):
        """A number whose dropped digits are a half at the scale, or just beside it."""
        tail = self.source.choice(["5", "50", "4" + "9" * 9, "5" + "0" * 9 + "1", "0", "00001"])
        whole = self.source.choice(["", self.digits(self.source.randint(1, 20))])
        return number(self.sign(), whole + tail, -scale - len(tail))


def arithmetic(numbers, name):
    first, second = numbers.pair()
    try:
        result = OPERATIONS[name](first, second)
        answer = condition(result) or text(result)
    except (decimal.DivisionByZero, decimal.InvalidOperation):
        answer = "divide-by-zero"
    return f"{name} {text(first)} {text(second)} {answer}"


def comparison(numbers):
    first, second = numbers.pair()
    return f"compare {text(first)} {text(second)} {int(WIDE.compare(first, second))}"


def rounding(numbers):
    source = numbers.source
    scale = source.choice([0, 2, source.randint(-6, 12), source.randint(-170, 130)])
    value = numbers.tie(scale) if source.random() < 0.5 else numbers.any()
    if condition(value):
        value = numbers.money()
    mode = source.choice(list(MODES))
    result = value
    if value.as_tuple().exponent < -scale:
        result = value.quantize(Decimal((0, (1,), -scale)), rounding=MODES[mode], context=WIDE)
    return f"round {text(value)} {mode} {scale} {condition(result) or text(result)}"


def rows():
    numbers = Numbers(random.Random(SEED))
    for _ in range(ROWS):
        name = numbers.source.choice([*OPERATIONS, *OPERATIONS, "compare", "round", "round"])
        if name == "compare":
            yield comparison(numbers)
        elif name == "round":
            yield rounding(numbers)
        else:
            yield arithmetic(numbers, name)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "w", encoding="ascii") as file:
        file.writelines(row + "\n" for row in rows())


if __name__ == "__main__":
    main()
