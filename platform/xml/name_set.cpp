#include "platform/xml/name_set.h"

#include <chrono>
#include <cstring>
#include <utility>

namespace xml {
namespace {

std::uint64_t mixed(std::uint64_t value) {
    value = (value ^ (value >> 32)) * 0xD6E8FEB86659FD93u;
    value = (value ^ (value >> 29)) * 0xA0761D6478BD642Fu;
    return value ^ (value >> 32);
}

/// Another one in each run. A device of random numbers would do, but may fail.
std::uint64_t newSeed(const void* place) {
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return mixed(now ^ reinterpret_cast<std::uintptr_t>(place)) | 1;
}

/// Keyed, so that nobody can write a document whose names collide.
std::uint64_t hash(std::string_view name, std::uint64_t seed) {
    std::uint64_t value = seed ^ name.size();
    while (!name.empty()) {
        std::uint64_t word = 0;
        const std::size_t count = name.size() < sizeof word ? name.size() : sizeof word;
        std::memcpy(&word, name.data(), count);
        value = mixed(value + word) ^ seed;
        name.remove_prefix(count);
    }
    return mixed(value);
}

}  // namespace

bool NameSet::addToTable(std::string_view name) {
    if (count_ == few) {
        if (seed_ == 0) seed_ = newSeed(this);
        table_.assign(4 * few, {});
        for (std::string_view early : names_) insert(early);
    }
    if (4 * count_ >= 3 * table_.size()) growTable();
    if (!insert(name)) return false;
    ++count_;
    return true;
}

bool NameSet::insert(std::string_view name) {
    const std::size_t mask = table_.size() - 1;
    for (std::size_t slot = hash(name, seed_) & mask;; slot = (slot + 1) & mask) {
        if (table_[slot].empty()) {
            table_[slot] = name;
            return true;
        }
        if (table_[slot] == name) return false;
    }
}

void NameSet::growTable() {
    std::vector<std::string_view> small(2 * table_.size());
    std::swap(small, table_);
    for (std::string_view name : small) {
        if (!name.empty()) insert(name);
    }
}

}  // namespace xml
