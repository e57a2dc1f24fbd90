#pragma once

#include <iostream>
#include <streambuf>
#include <string>
#include <utility>

#include "platform/base/log.h"

/// As long as it lives, what the tool's operations print goes nowhere, and their last log entry is kept.
class Quiet {
  public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    /// The last log entry, "" without one; it is then forgotten.
    std::string takeLogEntry() { return std::exchange(entry_, {}); }

  private:
    /// Takes everything and keeps nothing.
    class Nowhere : public std::streambuf {
      protected:
        int_type overflow(int_type character) override { return traits_type::not_eof(character); }
        std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    };

    static zStatus keep(void* receiver, const zLogEntry* entry);

    Nowhere nowhere_;
    std::streambuf* out_;
    std::streambuf* err_;
    std::string entry_;
};
