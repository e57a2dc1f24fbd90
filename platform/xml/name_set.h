#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace xml {

/// The attribute names of one start tag: finds a name that comes twice in linear time, however many there are
/// and whatever they are made of.
class NameSet {
  public:
    void clear() { count_ = 0; }
    /// Adds `name`, which must stay where it is; false when it is there already.
    bool add(std::string_view name) {
        if (count_ >= few) return addToTable(name);
        for (std::size_t i = 0; i < count_; ++i) {
            if (names_[i] == name) return false;
        }
        names_[count_++] = name;
        return true;
    }

  private:
    /// Up to here comparing with each is faster than hashing.
    static constexpr std::size_t few = 8;

    bool addToTable(std::string_view name);
    bool insert(std::string_view name);
    void growTable();

    std::string_view names_[few];
    std::size_t count_ = 0;
    std::vector<std::string_view> table_;  ///< Open addressing, a power of two of slots, at most 3/4 full: 64
                                           ///< bytes a name while it grows.
    std::uint64_t seed_ = 0;
};

}  // namespace xml
