#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/content.h"

/// One member of a container, in 32 bytes plus its name, for archives have millions of them.
struct Member {
    std::uint64_t name = 0;  ///< Where its name begins among the names.
    /// Where the codec finds the member in the loaded file; noOrigin for an added one.
    std::uint64_t origin = 0;
    /// Of an added member what it holds, of a loaded one its decoded bytes once somebody has looked.
    std::unique_ptr<Content> content;
    std::uint32_t nameLength = 0;
    bool alive = false;  ///< False for a removed member, whose place stays until the table is tidied up.

    static constexpr std::uint64_t noOrigin = std::numeric_limits<std::uint64_t>::max();
    bool isAdded() const { return origin == noOrigin; }
};

/// The members of a container, in order, found by name in constant time.
class MemberTable {
  public:
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    MemberTable();

    /// Places in the table, removed members included: indices run from 0 to this.
    std::size_t places() const { return members_.size(); }
    /// Members in the table.
    std::size_t count() const { return alive_; }
    /// The member at `index`, null when there is none.
    Member* at(std::size_t index);
    std::string_view nameOf(const Member& member) const;

    /// Index of the member `name`, `none` without one.
    std::size_t find(std::string_view name) const;

    /// Makes place for `count` members in all and some more, which spares growing step by step.
    void reserve(std::size_t count);

    /// Appends a member; null when there is one of that name. Pointers to members go invalid. Throws
    /// std::length_error beyond some four thousand million members. A throw leaves the table as it was.
    Member* append(std::string_view name, std::uint64_t origin);

    /// Removes the member at `index`. Indices and pointers to members go invalid.
    void remove(std::size_t index);

  private:
    /// A place of the hash table: the member's index plus one (0: free), and its hash.
    struct Slot {
        std::uint32_t member = 0;
        std::uint32_t hash = 0;
    };

    std::uint32_t hashOf(std::string_view name) const;
    std::size_t slotOf(std::string_view name, std::uint32_t hash) const;
    void freeSlot(std::size_t slot);
    void growSlots(std::size_t count);
    void tidyUp();

    std::vector<Member> members_;
    std::vector<char> names_;
    std::vector<Slot> slots_;  // open addressing, linear probing; a power of two
    std::size_t alive_ = 0;
    std::uint64_t seed_;
};
