#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/xml/encoding.h"

namespace testing {

/// What a document says, apart from how it is written.
struct Element {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;
    std::vector<Element> children;
};

/// In the form of describeTree.
std::string describe(const Element& root);

/// Draws documents and everything in them; the same seed draws the same in every run of a build.
class RandomDocument {
  public:
    explicit RandomDocument(std::uint32_t seed) : engine_(seed) {}

    std::size_t roll(std::size_t sides) { return engine_() % sides; }
    bool chance(std::size_t of) { return roll(of) == 0; }

    /// An element with at most `depth` generations below it, of what `encoding` can hold in names.
    Element element(xml::Encoding encoding, std::size_t depth);
    std::string name(xml::Encoding encoding);
    /// Text of any characters that XML can hold.
    std::string text();

    /// `root` as a document in `encoding`, written in any of the ways that XML has for it.
    std::string written(const Element& root, xml::Encoding encoding);

  private:
    std::string layout(const Element& parent);
    std::string noise(xml::Encoding encoding);
    std::string tagSpace(const char* least);
    std::string tag(const Element& element, xml::Encoding encoding);
    std::string characters(std::string_view text, char quote, xml::Encoding encoding);
    std::string reference(char32_t character);
    std::string content(const Element& element, xml::Encoding encoding);
    std::string prolog(const Element& root, xml::Encoding encoding);
    void write(std::string& out, const Element& element, xml::Encoding encoding);

    std::mt19937 engine_;
    std::string lineEnd_ = "\n";
};

}  // namespace testing
