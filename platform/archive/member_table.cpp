#include "platform/archive/member_table.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>

namespace {

constexpr std::size_t fewestSlots = 16;

/// Two thirds of the slots at most are taken, for probing is short then.
constexpr bool isCrowded(std::size_t members, std::size_t slots) {
    return members > slots / 3 * 2;
}

std::uint64_t mixed(std::uint64_t value) {
    value = (value ^ value >> 32) * 0x9E3779B97F4A7C15u;
    value = (value ^ value >> 29) * 0xBF58476D1CE4E5B9u;
    return value ^ value >> 32;
}

}  // namespace

// The seed differs from run to run, so that nobody can make an archive whose names all share one slot.
MemberTable::MemberTable()
    : seed_(mixed(static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
                  reinterpret_cast<std::uintptr_t>(this))) {}

Member* MemberTable::at(std::size_t index) {
    return index < members_.size() && members_[index].alive ? &members_[index] : nullptr;
}

std::string_view MemberTable::nameOf(const Member& member) const {
    return {names_.data() + member.name, member.nameLength};
}

std::uint32_t MemberTable::hashOf(std::string_view name) const {
    std::uint64_t hash = seed_ ^ name.size();
    for (; name.size() >= sizeof hash; name.remove_prefix(sizeof hash)) {
        std::uint64_t word = 0;
        std::memcpy(&word, name.data(), sizeof word);
        hash = mixed(hash ^ word);
    }
    std::uint64_t rest = 0;
    if (!name.empty()) std::memcpy(&rest, name.data(), name.size());
    return static_cast<std::uint32_t>(mixed(hash ^ rest));
}

/// The slot that holds `name`, or the free one where it belongs. There always is a free one.
std::size_t MemberTable::slotOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    for (; slots_[slot].member != 0; slot = (slot + 1) & mask) {
        if (slots_[slot].hash == hash && nameOf(members_[slots_[slot].member - 1]) == name) break;
    }
    return slot;
}

std::size_t MemberTable::find(std::string_view name) const {
    if (slots_.empty()) return none;
    const std::uint32_t member = slots_[slotOf(name, hashOf(name))].member;
    return member == 0 ? none : member - 1;
}

void MemberTable::reserve(std::size_t count) {
    // A few more: an edit adds members, and must not make a full table twice as large.
    members_.reserve(count + count / 16);
    std::size_t slots = fewestSlots;
    while (isCrowded(count, slots)) slots *= 2;
    if (slots > slots_.size()) growSlots(slots);
}

Member* MemberTable::append(std::string_view name, std::uint64_t origin) {
    if (members_.size() >= std::numeric_limits<std::uint32_t>::max() - 1) throw std::length_error("members");
    if (isCrowded(alive_ + 1, slots_.size())) growSlots(std::max(fewestSlots, slots_.size() * 2));
    const std::uint32_t hash = hashOf(name);
    const std::size_t slot = slotOf(name, hash);
    if (slots_[slot].member != 0) return nullptr;

    Member member;
    member.name = names_.size();
    member.nameLength = static_cast<std::uint32_t>(name.size());
    member.origin = origin;
    member.alive = true;
    names_.insert(names_.end(), name.begin(), name.end());
    members_.push_back(std::move(member));
    slots_[slot] = {static_cast<std::uint32_t>(members_.size()), hash};
    ++alive_;
    return &members_.back();
}

void MemberTable::remove(std::size_t index) {
    Member& member = members_[index];
    const std::string_view name = nameOf(member);
    freeSlot(slotOf(name, hashOf(name)));
    member.alive = false;
    member.content.reset();
    --alive_;
    // As many steps as members were removed since the last time: constant for each.
    if (members_.size() > 2 * alive_ + fewestSlots) tidyUp();
}

/// Frees a slot and moves those behind it up, so that probing never meets a hole.
void MemberTable::freeSlot(std::size_t slot) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t hole = slot;
    for (std::size_t next = (slot + 1) & mask; slots_[next].member != 0; next = (next + 1) & mask) {
        const std::size_t home = slots_[next].hash & mask;
        // Only what would still be found from its home may move: the hole lies between the two.
        if (((next - home) & mask) < ((next - hole) & mask)) continue;
        slots_[hole] = slots_[next];
        hole = next;
    }
    slots_[hole] = {};
}

/// Lays out `count` slots, a power of two and more than there are.
void MemberTable::growSlots(std::size_t count) {
    std::vector<Slot> larger(count);
    const std::size_t mask = larger.size() - 1;
    for (const Slot& slot : slots_) {
        if (slot.member == 0) continue;
        std::size_t place = slot.hash & mask;
        while (larger[place].member != 0) place = (place + 1) & mask;
        larger[place] = slot;
    }
    slots_.swap(larger);
}

/// Drops the places and names of removed members.
void MemberTable::tidyUp() {
    std::vector<Slot> slots(slots_.size());
    slots_.swap(slots);
    std::size_t kept = 0;
    std::uint64_t nameEnd = 0;
    for (Member& member : members_) {
        if (!member.alive) continue;
        std::memmove(names_.data() + nameEnd, names_.data() + member.name, member.nameLength);
        member.name = nameEnd;
        nameEnd += member.nameLength;
        const std::uint32_t hash = hashOf(nameOf(member));
        if (&members_[kept] != &member) members_[kept] = std::move(member);
        // All names differ, so the first free place is the one; slotOf would look at names that have moved.
        const std::size_t mask = slots_.size() - 1;
        std::size_t place = hash & mask;
        while (slots_[place].member != 0) place = (place + 1) & mask;
        slots_[place] = {static_cast<std::uint32_t>(++kept), hash};
    }
    members_.resize(kept);
    names_.resize(nameEnd);
}
