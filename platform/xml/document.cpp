#include "platform/xml/document.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "platform/xml/joined.h"
#include "platform/xml/parser.h"
#include "platform/xml/prolog.h"
#include "platform/xml/reader.h"

namespace xml {
namespace {

constexpr std::string_view freshText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
/// Sizes and numbers of children are kept in few bits: an element has at least four bytes.
constexpr std::size_t maxDocumentSize = std::size_t{1} << 31;
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

Block blockOf(std::string_view text, const zAllocator* allocator) {
    Block block(static_cast<char*>(zAllocator_Allocate(allocator, text.size() + 1)), Release{allocator});
    if (block == nullptr) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), block.get());
    block.get()[text.size()] = '\0';
    return block;
}

const char* endOf(std::string_view text) {
    return text.data() + text.size();
}

bool isSelfClosed(const Item& item) {
    return item.text[item.size - 2] == '/';
}

}  // namespace

void Document::startFresh() {
    replaceText(freshText);
    top_.text = text_.get();
    top_.size = static_cast<std::uint32_t>(size_);
}

void Document::replaceText(std::string_view text) {
    text_ = blockOf(text, text_.get_deleter().allocator);
    size_ = text.size();
}

void Document::read(Block bytes, std::size_t size) {
    text_ = std::move(bytes);
    size_ = size;
    const Mark mark = readMark({text_.get(), size_});
    if (mark.fault != nullptr) throw Fault{zStatus_Unsupported, joined({"1:1: ", mark.fault})};
    encoding_ = mark.encoding;

    const std::size_t body = readEncoding(mark);
    if (size_ >= maxDocumentSize)
        throw Fault{zStatus_Unsupported, "1:1: documents of 2 GiB and more are not supported"};
    top_.text = endOf(mark_);
    top_.size = static_cast<std::uint32_t>(size_ - mark_.size());
    parseDocument(top_.bytes(), top_.text + body, items_, top_);
}

/// Reads the declaration and makes the text UTF-8. Answers the size of the declaration.
std::size_t Document::readEncoding(Mark mark) {
    const auto decodeText = [&] {
        const Decoded decoded = decodeBytes({text_.get(), size_}, encoding_);
        if (!decoded.fault.empty()) {
            const char* begin = decoded.text.data() + (decoded.text.starts_with(utf8Mark) ? 3 : 0);
            throw Fault{zStatus_Malformed, position(begin, endOf(decoded.text)) + ": " + decoded.fault};
        }
        replaceText(decoded.text);
    };
    if (encoding_ != Encoding::utf8) decodeText();
    const std::size_t markSize = mark.hasByteOrderMark ? utf8Mark.size() : 0;

    const Reader reader({text_.get() + markSize, size_ - markSize});
    const Declaration declaration = readDeclaration(reader);
    const auto declarationSize = static_cast<std::size_t>(declaration.end - reader.begin());
    if (!declaration.encoding.empty()) {
        const auto named = encodingNamed(declaration.encoding, encoding_);
        const char* place = declaration.encoding.data();
        const std::string name(declaration.encoding);
        if (!named.has_value())
            reader.fail(place, joined({"the encoding \"", name, "\" is not supported"}), zStatus_Unsupported);
        if (mark.hasByteOrderMark && *named != encoding_)
            reader.fail(place, joined({"the declaration says ", name, ", the byte order mark ",
                                       encodingName(encoding_)}));
        if (*named == Encoding::utf16LittleEndian || *named == Encoding::utf16BigEndian) {
            if (!mark.hasByteOrderMark)
                reader.fail(place, joined({"the declaration says ", name, ", which the document is not"}));
        } else if (*named != Encoding::utf8) {
            encoding_ = *named;
            decodeText();
        }
    }
    mark_ = {text_.get(), markSize};
    return declarationSize;
}

std::string_view Document::lineEnd() {
    if (!lineEnd_.empty()) return lineEnd_;
    const std::string_view text(text_.get(), size_);
    const std::size_t place = text.find_first_of("\r\n");
    lineEnd_ = "\n";
    if (place != std::string_view::npos)
        lineEnd_ = text.substr(place, text.substr(place, 2) == "\r\n" ? 2 : 1);
    return lineEnd_;
}

const char* Document::internedName(std::string_view name) {
    auto place = names_.find(name);
    if (place == names_.end()) place = names_.emplace(name).first;
    return place->c_str();
}

std::string_view Document::keep(std::string_view text, std::size_t capacity) {
    if (text.size() >= maxDocumentSize) throw std::bad_alloc();
    const std::size_t size = std::max(text.size(), capacity) + 1;
    auto* copy = static_cast<char*>(arena_.allocate(size, 1));
    std::copy(text.begin(), text.end(), copy);
    copy[text.size()] = '\0';
    return {copy, text.size()};
}

Piece* Document::piece(std::string_view text) {
    return new (arena_.allocate(sizeof(Piece), alignof(Piece))) Piece{text};
}

Edit& Document::edit(Item& item) {
    if (item.edit == nullptr) item.edit = new (arena_.allocate(sizeof(Edit), alignof(Edit))) Edit();
    return *item.edit;
}

Gap& Document::lead(Item& item) {
    Edit& known = edit(item);
    if (!known.ownsLead) {
        const std::string_view text = textLead(item);
        if (!text.empty()) known.lead.push(piece(text));
        known.ownsLead = true;
    }
    return known.lead;
}

Gap& Document::tail(Item& item) {
    Edit& known = edit(item);
    if (!known.ownsTail) {
        const std::string_view text = textTail(item);
        if (!text.empty()) known.tail.push(piece(text));
        known.ownsTail = true;
    }
    return known.tail;
}

void Document::touch(Item& item) {
    for (Item* at = &item; at != nullptr && !at->isDirty; at = at->parent) at->isDirty = 1;
}

std::string_view startTag(const Item& item) {
    if (item.edit != nullptr && !item.edit->tag.empty()) return item.edit->tag;
    return between(item.text, startTagEnd(item.text));
}

std::string_view textContent(const Item& item) {
    if (item.parent == nullptr) return item.bytes();
    const char* begin = startTagEnd(item.text);
    if (isSelfClosed(item)) return between(begin, begin);
    return between(begin, item.text + item.bytes().rfind('<'));
}

std::string_view textLead(const Item& item) {
    const Item* before = item.before();
    const char* begin = before != nullptr ? endOf(before->bytes()) : textContent(*item.parent).data();
    return between(begin, item.text);
}

std::string_view textTail(const Item& item) {
    const std::string_view content = textContent(item);
    const Item* last = item.lastChild();
    return last == nullptr ? content : between(endOf(last->bytes()), endOf(content));
}

}  // namespace xml
