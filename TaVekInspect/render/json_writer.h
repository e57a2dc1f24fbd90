#pragma once

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

/// Writes one JSON document (RFC 8259), indented by two spaces, as its values are named one after the other.
/// Bytes that are no UTF-8 become U+FFFD.
class JsonWriter {
  public:
    explicit JsonWriter(std::ostream& out) : out_(out) {}

    /// Begins an object or an array, as the document or as the next item of an array; end() ends it.
    JsonWriter& object();
    JsonWriter& array();
    /// The same as the value of `key` in an object.
    JsonWriter& object(std::string_view key);
    JsonWriter& array(std::string_view key);
    JsonWriter& end();

    JsonWriter& value(std::string_view key, std::string_view text);
    JsonWriter& value(std::string_view key, const char* text) { return value(key, std::string_view(text)); }
    JsonWriter& value(std::string_view key, std::uint64_t number);
    JsonWriter& value(std::string_view key, bool flag);
    /// The next item of an array.
    JsonWriter& item(std::string_view text);

  private:
    void next();
    void name(std::string_view key);
    void open(char bracket, char closing);
    void quote(std::string_view text);

    struct Level {
        char closing;
        bool isEmpty;
    };

    std::ostream& out_;
    std::vector<Level> levels_;
};
