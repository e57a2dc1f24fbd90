#pragma once

#include <string_view>

namespace xml {

/// A stretch of bytes in a chain. The bytes lie in the document's text or in its arena.
struct Piece {
    std::string_view text;
    Piece* previous = nullptr;
    Piece* next = nullptr;
};

/// What stands between two elements: character data, CDATA, comments, instructions. A chain of pieces, none
/// empty, each belonging to one gap; chains are joined in constant time.
struct Gap {
    Piece* first = nullptr;
    Piece* last = nullptr;

    bool empty() const { return first == nullptr; }
    void push(Piece* piece);
    /// Takes over the pieces of `other`.
    void join(Gap& other);
    /// Cut to begin `count` bytes later, or to end as many earlier; no more than there are.
    void trimFront(std::size_t count);
    void trimBack(std::size_t count);
};

/// What a stretch of a gap is.
enum class TokenKind { text, cdata, markup };

/// A run of character data, a CDATA section with its marks, or a comment or instruction. Runs reach to the
/// end of the piece; no section, comment or reference is ever spread over two.
struct Token {
    TokenKind kind;
    std::string_view text;
};

/// Takes the next token off the front of `text`, which must not be empty.
Token nextToken(std::string_view& text);

}  // namespace xml
