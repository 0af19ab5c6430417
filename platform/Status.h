#pragma once

#include <optional>
#include <string>
#include <utility>

namespace letterloft {

// How an operation ended: well, or with one plain sentence for the log. No exception crosses a service's interface.
// The sentence is UTF-8 where its parts are, names the paths concerned and the system's reason, and is not yet escaped.
class [[nodiscard]] Status {
public:
    static Status ok() { return Status{}; }
    static Status failure(std::string sentence) { return Status{std::move(sentence)}; }

    bool isOk() const { return !sentence_; }
    explicit operator bool() const { return isOk(); }

    // Empty when the operation ended well.
    std::string sentence() const { return sentence_.value_or(std::string{}); }

private:
    Status() = default;
    explicit Status(std::string sentence) : sentence_{std::move(sentence)} {}

    std::optional<std::string> sentence_;
};

// A value, or the sentence that says why there is none.
template <typename Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : value_{std::move(value)}, status_{Status::ok()} {} // NOLINT(google-explicit-constructor)
    Result(Status failure) : status_{std::move(failure)} {}                  // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return value_.has_value(); }
    const Value& operator*() const { return *value_; }
    Value& operator*() { return *value_; }
    const Value* operator->() const { return &*value_; }
    const Status& status() const { return status_; }

private:
    std::optional<Value> value_;
    Status status_;
};

} // namespace letterloft
