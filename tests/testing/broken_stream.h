#pragma once

#include <ostream>
#include <stdexcept>
#include <streambuf>

namespace testing {

/// As long as it lives, writing to `stream` throws a std::logic_error, which no part of the tool expects.
class BrokenStream : private std::streambuf {
  public:
    explicit BrokenStream(std::ostream& stream)
        : stream_(stream), former_(stream.rdbuf(this)), formerExceptions_(stream.exceptions()) {
        stream_.exceptions(std::ios_base::badbit);
    }
    ~BrokenStream() override {
        stream_.exceptions(std::ios_base::goodbit);
        stream_.rdbuf(former_);
        stream_.clear();
        stream_.exceptions(formerExceptions_);
    }
    BrokenStream(const BrokenStream&) = delete;
    BrokenStream& operator=(const BrokenStream&) = delete;

  private:
    int_type overflow(int_type) override { throw std::logic_error("broken"); }

    std::ostream& stream_;
    std::streambuf* const former_;
    const std::ios_base::iostate formerExceptions_;
};

}  // namespace testing
