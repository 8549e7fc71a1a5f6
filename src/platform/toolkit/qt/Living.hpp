// SPDX-License-Identifier: MIT
#pragma once

/// Living<T>: a pointer to an object of Qt's that is null once the object is gone.
///
/// Qt has such a pointer of its own, which static analysis takes for one that uses freed memory.

#include <QMetaObject>
#include <QObject>

namespace estatebook::platform {

template <class T>
class Living {
public:
    Living() = default;
    explicit Living(T* object) { set(object); }
    ~Living() { QObject::disconnect(connection_); }
    Living(const Living&) = delete;
    Living& operator=(const Living&) = delete;

    void set(T* object) {
        QObject::disconnect(connection_);
        object_ = object;
        if (object_)
            connection_ = QObject::connect(object_, &QObject::destroyed, [this] { object_ = nullptr; });
    }

    [[nodiscard]] T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    T* object_ = nullptr;
    QMetaObject::Connection connection_;
};

} // namespace estatebook::platform
