#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace recorder {

// A JSON value that is built once and written out; objects keep their keys in insertion order.
class Json {
public:
    using Array = std::vector<Json>;
    using Object = std::vector<std::pair<std::string, Json>>;

    Json() = default;  // null
    Json(bool value) : value_(value) {}
    Json(int value) : value_(int64_t{value}) {}
    Json(int64_t value) : value_(value) {}
    Json(uint64_t value) : value_(static_cast<int64_t>(value)) {}
    Json(double value) : value_(value) {}
    Json(std::string value) : value_(std::move(value)) {}
    Json(const char* value) : value_(std::string(value)) {}
    Json(Array value) : value_(std::move(value)) {}
    Json(Object value) : value_(std::move(value)) {}

    // Compact on one line when `indent` is negative, else pretty with that many spaces a level.
    std::string dump(int indent = -1) const;

private:
    void write(std::string& out, int indent, int depth) const;

    std::variant<std::nullptr_t, bool, int64_t, double, std::string, Array, Object> value_;
};

}  // namespace recorder
