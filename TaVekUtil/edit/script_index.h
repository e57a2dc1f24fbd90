#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/xml/xml.h"

/// Finds the entries of a start-up script by name without walking the script for each question. A package of
/// thousands of files asks once or twice per file; walking would make its cost the product of both sizes.
///
/// The index answers just as the walks would that it stands for: in document order, over the root's children
/// as they are now. Whoever adds or deletes children of the root must tell it.
class ScriptIndex {
  public:
    /// Longest name, terminator included, that injection and removal read. A longer one is unreadable to
    /// them.
    static constexpr std::size_t injectionNameCapacity = 512;
    static constexpr std::size_t removalNameCapacity = 256;

    /// Indexes the children of the root of `document`, which must outlive the index.
    explicit ScriptIndex(zHandle document);

    /// The first child named `File`; null when there is none.
    zXmlItem firstFile() const;

    /// The children from the first `File` on, of any element name, whose `name` equals `name` but for letter
    /// case, in document order.
    std::vector<zXmlItem> namedFromFirstFile(const char* name) const;

    /// The `File` child that a search from the first on for exactly `name` stops at: the match, or an entry
    /// before it whose name cannot be read. Null when the search runs through.
    zXmlItem fileSearchStop(const char* name) const;

    /// `item` has become the last child of the root, its `name` set.
    void added(zXmlItem item);

    /// `item` is about to be deleted.
    void removed(zXmlItem item);

  private:
    /// Position of a child among all that the root has or had; grows in document order.
    using Position = std::size_t;
    using Positions = std::deque<Position>;

    void skipRemovedFiles();

    zHandle document_;
    std::vector<zXmlItem> children_;  // by position; null where the child is gone
    std::unordered_map<zXmlItem, Position> positions_;
    Positions files_;                                        // the living `File` children start at its front
    Positions unreadableFiles_;                              // those of them whose name removal cannot read
    std::unordered_map<std::string, Positions> lowerNames_;  // name in lower case: its living bearers
};
