// SPDX-License-Identifier: MIT
#pragma once

/// Signals of Qt beside our announcements, where the build has found Qt.

#if ESTATEBOOK_BENCH_QT

#include <QObject>
#include <QVariant>

namespace estatebook::bench {

class QtCounter final : public QObject {
    Q_OBJECT
public:
    quint64 told = 0;
public slots:
    void tell() { ++told; }
};

/// A property, and five that are derived from it one after another.
class QtObject final : public QObject {
    Q_OBJECT
    Q_PROPERTY(qulonglong amount READ amount WRITE setAmount NOTIFY amountChanged)
public:
    [[nodiscard]] qulonglong amount() const { return amount_; }
    void setAmount(qulonglong amount) {
        amount_ = amount;
        emit amountChanged();
    }
    /// The counter hears of the last of the five.
    void chain(QtCounter* counter) {
        connect(this, &QtObject::amountChanged, this, &QtObject::firstChanged);
        connect(this, &QtObject::firstChanged, this, &QtObject::secondChanged);
        connect(this, &QtObject::secondChanged, this, &QtObject::thirdChanged);
        connect(this, &QtObject::thirdChanged, this, &QtObject::fourthChanged);
        connect(this, &QtObject::fourthChanged, this, &QtObject::fifthChanged);
        connect(this, &QtObject::fifthChanged, counter, &QtCounter::tell);
    }

signals:
    void amountChanged();
    void firstChanged();
    void secondChanged();
    void thirdChanged();
    void fourthChanged();
    void fifthChanged();

private:
    qulonglong amount_ = 0;
};

} // namespace estatebook::bench

#endif
