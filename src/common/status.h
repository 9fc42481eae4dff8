#pragma once
// How an operation that can fail tells its caller: success, or the message that says what went
// wrong in words a user can be shown. Result<T> carries a value on success. Both must be looked
// at ([[nodiscard]]), so that no failure is dropped on the floor.
#include <QString>

#include <optional>
#include <utility>

class [[nodiscard]] Status {
public:
    static Status Ok() { return Status(); }
    static Status Failed(QString message) {
        Status s;
        s.failed_ = true;
        s.message_ = std::move(message);
        return s;
    }

    bool ok() const { return !failed_; }
    explicit operator bool() const { return ok(); }
    // Empty after a success.
    const QString& message() const { return message_; }

private:
    bool failed_ = false;
    QString message_;
};

template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    // A failed status; an Ok one would leave the result without a value, so it counts as a
    // failure without a message.
    Result(Status failure) : failure_(failure.ok() ? Status::Failed(QString()) : std::move(failure)) {}

    bool ok() const { return value_.has_value(); }
    explicit operator bool() const { return ok(); }
    const T& value() const { return *value_; }
    T& value() { return *value_; }
    const T* operator->() const { return &*value_; }
    const T& operator*() const { return *value_; }
    const QString& message() const { return failure_.message(); }
    Status status() const { return ok() ? Status::Ok() : failure_; }

private:
    std::optional<T> value_;
    Status failure_;
};
