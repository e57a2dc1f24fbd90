#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/archive/zip_format.h"

namespace zip {

/// What an extra field says: a list of records, of which only the ZIP64 one means anything to us.
struct ExtraField {
    std::span<const std::uint8_t> whole;
    std::span<const std::uint8_t> zip64;  ///< Content of the ZIP64 record, empty without one.
    bool hasZip64 = false;
};

/// Takes an extra field apart. Null, or what is wrong with it.
const char* parseExtra(std::span<const std::uint8_t> bytes, ExtraField& field);

/// Reads the values of a ZIP64 record, which stand there in a fixed order, those alone whose plain field
/// holds the mark.
class Zip64Values {
  public:
    explicit Zip64Values(const ExtraField& field) : left_(field.zip64), present_(field.hasZip64) {}

    /// The value of a field that says `plain`: the next of the record when that is the mark and there is a
    /// record, else itself.
    std::uint64_t wide(std::uint32_t plain);
    std::uint32_t disk(std::uint16_t plain);

    /// True when the record ended before its values.
    bool tooShort() const { return tooShort_; }

  private:
    const std::uint8_t* take(std::size_t size);

    std::span<const std::uint8_t> left_;
    bool present_;
    bool tooShort_ = false;
};

}  // namespace zip
